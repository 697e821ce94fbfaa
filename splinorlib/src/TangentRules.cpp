#include "TangentRules.h"

#include "splinorlib/Numeric.h"
#include "splinorlib/Tangent.h"

#include <algorithm>
#include <cmath>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
namespace Private {
namespace {

double Secant(const Vector2D<double>& a, const Vector2D<double>& b)
{
    return (b.y - a.y) / (b.x - a.x);
}

/// Limits a slope so that a handle of a third of either span cannot pass the neighbour's value
/// on that side: the Bezier segment then stays within the values of its keys.
double WithoutOvershoot(double iSlope, double iPreviousSecant, double iNextSecant)
{
    double limit = 3.0 * std::min(std::fabs(iPreviousSecant), std::fabs(iNextSecant));
    return std::clamp(iSlope, -limit, limit);
}

bool IsExtreme(double iPreviousSecant, double iNextSecant)
{
    return iPreviousSecant * iNextSecant <= 0.0;
}

} // namespace

double AutomaticSlope(unsigned char iType, bool iInTangent, const Vector2D<double>* iPrevious,
                      const Vector2D<double>& iKey, const Vector2D<double>* iNext)
{
    if (iType == cTangentFixed || iType == cTangentFlat || iType >= cTangentTypeCount)
        return 0.0;

    const bool both = iPrevious && iNext;
    const double before = iPrevious ? Secant(*iPrevious, iKey) : 0.0;
    const double after = iNext ? Secant(iKey, *iNext) : 0.0;
    // At an end key, every smooth type takes the one secant there is.
    const double oneSided = iPrevious ? before : after;

    switch (iType) {
    case cTangentLinear:
        if (iInTangent)
            return iPrevious ? before : after;
        return iNext ? after : before;

    case cTangentSmooth:
        return both ? Secant(*iPrevious, *iNext) : oneSided;

    case cTangentSmoothNormal: {
        if (!both)
            return oneSided;
        // The slope of the parabola through the three keys: each secant weighted by the span
        // on the other side, so that the shorter, steeper side is not pulled past its key.
        const double h0 = iKey.x - iPrevious->x;
        const double h1 = iNext->x - iKey.x;
        const double slope = (h1 * before + h0 * after) / (h0 + h1);
        return IsExtreme(before, after) ? slope : WithoutOvershoot(slope, before, after);
    }

    case cTangentClamped:
        if ((iPrevious && NearEqual(iPrevious->y, iKey.y)) || (iNext && NearEqual(iNext->y, iKey.y)))
            return 0.0;
        return both ? Secant(*iPrevious, *iNext) : oneSided;

    case cTangentPlateau:
        if (!both || IsExtreme(before, after))
            return 0.0;
        return WithoutOvershoot(Secant(*iPrevious, *iNext), before, after);
    }
    return 0.0;
}

} // namespace Private
} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
