#pragma once

#include "splinorlib/Vector2D.h"

#include <ostream>
#include <string>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

class Viewport;

/// Whether positions snap on each axis, and to what increment.
///
/// It also owns the grid formula, so that the lines the grid draws and the values a drag snaps
/// to are the same. An increment of exactly cSnapToGrid follows the grid at the current zoom;
/// a fixed increment of one curve unit therefore cannot be expressed.
class SnapSettings
{
public:
    using Vector = SplinorLib::v19::Vector2D<double>;

    static constexpr double cSnapToGrid = 1.0;

    SnapSettings() = default;
    SnapSettings(const SnapSettings&) = default;
    SnapSettings& operator=(const SnapSettings&) = default;
    void copy(const SnapSettings& iOther);

    /// Doubles compare by plain ==.
    bool operator==(const SnapSettings& iOther) const;
    bool operator!=(const SnapSettings& iOther) const { return !(*this == iOther); }

    void setSnappingX(bool iSnapping) { mSnappingX = iSnapping; }
    void setSnappingY(bool iSnapping) { mSnappingY = iSnapping; }
    bool isSnappingX() const { return mSnappingX; }
    bool isSnappingY() const { return mSnappingY; }

    /// Not validated.
    void setIncrementX(double iIncrement) { mIncrementX = iIncrement; }
    void setIncrementY(double iIncrement) { mIncrementY = iIncrement; }

    /// The increment in force for curve units per pixel iPixelSize on that axis, whether or not
    /// snapping is on there.
    double getIncrementX(double iPixelSize) const { return getIncrement(mIncrementX, iPixelSize); }
    double getIncrementY(double iPixelSize) const { return getIncrement(mIncrementY, iPixelSize); }

    /// E.g. "SnapSettings: x on, x inc=0.25, y off, y inc=auto".
    std::string str() const;

    /// Rounds each axis that snaps to its increment in force; the other axis keeps its value
    /// bit for bit. iPixelSize holds the curve units per pixel on x and on y.
    static void Snap(Vector& ioPoint, const SnapSettings& iSettings, const Vector& iPixelSize);
    static void Snap(Vector& ioPoint, const SnapSettings& iSettings, const Viewport& iViewport);

    /// The multiple of iIncrement nearest to iValue, halves away from zero. The fraction is
    /// worked in single precision, so the result may be off the exact multiple by some parts in
    /// 1e8 of the increment; callers rely on these exact bits, so keep the arithmetic as it is.
    static double Round(double iValue, double iIncrement);

    /// For curve units per pixel iPixelSize on one axis: the grid spacing, the smallest power of
    /// ten at least 5 pixels wide (so below 50); how far the finest lines have faded in, from
    /// 0 at 5 pixels to 1 from about 23 pixels on; and one decimal more than the spacing needs.
    static void GetGridMetrics(double iPixelSize, double& oSpacing, double& oFade, int& oDecimals);

private:
    double getIncrement(double iIncrement, double iPixelSize) const;

    bool mSnappingX = false;
    bool mSnappingY = false;
    double mIncrementX = cSnapToGrid;
    double mIncrementY = cSnapToGrid;
};

/// Both write str() as one string, so that the stream's width and fill apply.
std::ostream& operator<<(std::ostream& oStream, const SnapSettings& iSettings);
/// Prints the settings pointed to, not the address; iSettings must not be null.
std::ostream& operator<<(std::ostream& oStream, const SnapSettings* iSettings);

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
