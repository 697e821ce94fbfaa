#include "view/SnapSettings.h"

#include "view/Viewport.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

namespace {

// The finest grid lines are at least this many pixels apart.
constexpr double cMinSpacingPixels = 5.0;

// The finest lines fade in over two thirds of a decade of zoom above the minimum spacing.
constexpr double cFadePerDecade = 1.5;

const char* OnOff(bool iOn)
{
    return iOn ? "on" : "off";
}

void WriteIncrement(std::ostream& oStream, double iIncrement)
{
    if (iIncrement == SnapSettings::cSnapToGrid)
        oStream << "auto";
    else
        oStream << iIncrement;
}

} // namespace

void SnapSettings::copy(const SnapSettings& iOther)
{
    *this = iOther;
}

bool SnapSettings::operator==(const SnapSettings& iOther) const
{
    return mSnappingX == iOther.mSnappingX && mSnappingY == iOther.mSnappingY && mIncrementX == iOther.mIncrementX
        && mIncrementY == iOther.mIncrementY;
}

double SnapSettings::getIncrement(double iIncrement, double iPixelSize) const
{
    if (iIncrement != cSnapToGrid)
        return iIncrement;
    double spacing = 0.0;
    double fade = 0.0;
    int decimals = 0;
    GetGridMetrics(iPixelSize, spacing, fade, decimals);
    return spacing;
}

std::string SnapSettings::str() const
{
    std::ostringstream out;
    out << "SnapSettings: x " << OnOff(mSnappingX) << ", x inc=";
    WriteIncrement(out, mIncrementX);
    out << ", y " << OnOff(mSnappingY) << ", y inc=";
    WriteIncrement(out, mIncrementY);
    return out.str();
}

void SnapSettings::Snap(Vector& ioPoint, const SnapSettings& iSettings, const Vector& iPixelSize)
{
    if (iSettings.mSnappingX)
        ioPoint.x = Round(ioPoint.x, iSettings.getIncrementX(iPixelSize.x));
    if (iSettings.mSnappingY)
        ioPoint.y = Round(ioPoint.y, iSettings.getIncrementY(iPixelSize.y));
}

void SnapSettings::Snap(Vector& ioPoint, const SnapSettings& iSettings, const Viewport& iViewport)
{
    Snap(ioPoint, iSettings, iViewport.pixelSize());
}

double SnapSettings::Round(double iValue, double iIncrement)
{
    double whole = 0.0;
    const float fraction = static_cast<float>(std::modf(iValue / iIncrement, &whole));
    const double base = iValue - static_cast<double>(fraction) * iIncrement;
    if (iIncrement * 0.5 > std::fabs(fraction) * iIncrement)
        return base;
    return fraction > 0.0f ? base + iIncrement : base - iIncrement;
}

void SnapSettings::GetGridMetrics(double iPixelSize, double& oSpacing, double& oFade, int& oDecimals)
{
    // The decade of the smallest power of ten that spans cMinSpacingPixels.
    const double decade = std::log10(iPixelSize * cMinSpacingPixels);
    const double ceiling = std::ceil(decade);
    oSpacing = std::pow(10.0, ceiling);
    // A view of no size, or of no finite size, has no decade: no spacing, fade or decimals worth
    // the name, and an exponent that must not be forced into an int.
    if (!std::isfinite(ceiling)) {
        oFade = 0.0;
        oDecimals = 0;
        return;
    }
    oFade = std::clamp((ceiling - decade) * cFadePerDecade, 0.0, 1.0);
    const int exponent = static_cast<int>(std::clamp(ceiling, -300.0, 300.0));
    oDecimals = exponent < 0 ? 1 - exponent : 0;
}

std::ostream& operator<<(std::ostream& oStream, const SnapSettings& iSettings)
{
    return oStream << iSettings.str();
}

std::ostream& operator<<(std::ostream& oStream, const SnapSettings* iSettings)
{
    return oStream << *iSettings;
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
