#include "splinorlib/CurveQueries.h"

#include "splinorlib/Interpolators.h"
#include "splinorlib/Splinor.h"

#include <cmath>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
namespace {

Vector2D<double> Lerp(const Vector2D<double>& a, const Vector2D<double>& b, double t)
{
    return a + (b - a) * t;
}

} // namespace

double GetFirstDerivative(const Splinor& iCurve, double iX)
{
    const Segment& segment = *iCurve.findSegment(iX);
    return segment.getInterpolator()->evalFirstDerivative(iX, segment);
}

double GetSecondDerivative(const Splinor& iCurve, double iX)
{
    const Segment& segment = *iCurve.findSegment(iX);
    return segment.getInterpolator()->evalSecondDerivative(iX, segment);
}

bool GetNewKeyframe(const Splinor& iCurve, double iX, Vector2D<double>& oPosition)
{
    if (!std::isfinite(iX))
        return false;
    oPosition = {iX, iCurve.eval(iX)};
    return true;
}

bool ComputeBezierInsertion(const Splinor& iCurve, double iX, Vector2D<double>& oPoint,
                            Vector2D<double>& oLeftOut, Vector2D<double>& oLeftIn,
                            Vector2D<double>& oRightOut, Vector2D<double>& oRightIn)
{
    if (!std::isfinite(iX))
        return false;
    const Segment& segment = *iCurve.findSegment(iX);
    if (segment.isExterior() || !dynamic_cast<const Bezier*>(segment.getInterpolator().get()))
        return false;
    if (!(segment.getLeftKey()->getX() < iX && iX < segment.getRightKey()->getX()))
        return false;

    // de Casteljau at the t of x: the two halves' control polygons are exact sub-curves.
    const Bezier::ControlPoints c = Bezier::getControlPoints(segment);
    const double t = Bezier::solveT(c, iX);
    const Vector2D<double> p01 = Lerp(c.p[0], c.p[1], t);
    const Vector2D<double> p12 = Lerp(c.p[1], c.p[2], t);
    const Vector2D<double> p23 = Lerp(c.p[2], c.p[3], t);
    const Vector2D<double> p012 = Lerp(p01, p12, t);
    const Vector2D<double> p123 = Lerp(p12, p23, t);
    const Vector2D<double> point(iX, Lerp(p012, p123, t).y);

    oPoint = point;
    oLeftOut = p01 - c.p[0];
    oLeftIn = p012 - point;
    oRightOut = p123 - point;
    oRightIn = p23 - c.p[3];
    return true;
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
