#include "splinorlib/Interpolators.h"

#include "splinorlib/Keyframe.h"
#include "splinorlib/Segment.h"
#include "splinorlib/Tangent.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

// --- Constant -------------------------------------------------------------------------------

std::shared_ptr<Interpolator> Constant::create()
{
    return std::make_shared<Constant>();
}

Constant::Constant() : Interpolator("constant()") {}

double Constant::evalInterior(const Segment& iSegment, double, int iOrder) const
{
    return iOrder == 0 ? iSegment.getLeftKey()->getY() : 0.0;
}

// --- Linear ---------------------------------------------------------------------------------

std::shared_ptr<Interpolator> Linear::create()
{
    return std::make_shared<Linear>();
}

Linear::Linear() : Interpolator("linear()") {}

double Linear::evalInterior(const Segment& iSegment, double iX, int iOrder) const
{
    const Vector2D<double>& a = iSegment.getLeftKey()->get();
    const Vector2D<double>& b = iSegment.getRightKey()->get();
    const double slope = (b.y - a.y) / (b.x - a.x);
    switch (iOrder) {
    case 0: {
        // Interpolate from the nearer key so that both keys are met exactly.
        const double u = (iX - a.x) / (b.x - a.x);
        return u <= 0.5 ? a.y + (b.y - a.y) * u : b.y - (b.y - a.y) * (1.0 - u);
    }
    case 1:
        return slope;
    default:
        return 0.0;
    }
}

// --- Bezier ---------------------------------------------------------------------------------

namespace {

struct Cubic
{
    // Power basis: c0 + c1 t + c2 t^2 + c3 t^3, for x and for y.
    double x[4];
    double y[4];

    explicit Cubic(const Bezier::ControlPoints& iP)
    {
        set(x, iP.p[0].x, iP.p[1].x, iP.p[2].x, iP.p[3].x);
        set(y, iP.p[0].y, iP.p[1].y, iP.p[2].y, iP.p[3].y);
    }

    static void set(double* c, double p0, double p1, double p2, double p3)
    {
        c[0] = p0;
        c[1] = 3.0 * (p1 - p0);
        c[2] = 3.0 * (p0 - 2.0 * p1 + p2);
        c[3] = p3 - p0 + 3.0 * (p1 - p2);
    }
    static double value(const double* c, double t) { return c[0] + t * (c[1] + t * (c[2] + t * c[3])); }
    static double first(const double* c, double t) { return c[1] + t * (2.0 * c[2] + t * 3.0 * c[3]); }
    static double second(const double* c, double t) { return 2.0 * c[2] + 6.0 * c[3] * t; }
};

/// Solves x(t) = x on [0, 1] for a monotonic x(t): Newton's method, kept inside a shrinking
/// bracket and replaced by bisection whenever it would leave it, so that it converges for any
/// control points, including those where x'(t) vanishes.
double SolveMonotonic(const Cubic& iCubic, double iX, double iGuess)
{
    const double x0 = iCubic.x[0];
    const double x3 = Cubic::value(iCubic.x, 1.0);
    if (iX <= x0)
        return 0.0;
    if (iX >= x3)
        return 1.0;
    const double tolerance = 4.0 * std::numeric_limits<double>::epsilon() * std::max({std::fabs(x0), std::fabs(x3), x3 - x0});

    double low = 0.0;
    double high = 1.0;
    double t = (iGuess > 0.0 && iGuess < 1.0) ? iGuess : (iX - x0) / (x3 - x0);
    for (int iteration = 0; iteration < 100; ++iteration) {
        const double error = Cubic::value(iCubic.x, t) - iX;
        if (std::fabs(error) <= tolerance)
            return t;
        if (error < 0.0)
            low = t;
        else
            high = t;
        if (high - low <= std::numeric_limits<double>::epsilon())
            break;
        const double slope = Cubic::first(iCubic.x, t);
        double next = slope > 0.0 ? t - error / slope : -1.0;
        if (!(next > low && next < high))
            next = 0.5 * (low + high);
        t = next;
    }
    return t;
}

/// Derivatives in x of y(x) = y(t(x)), at a parameter t.
double DerivativeAt(const Cubic& iCubic, double iT, int iOrder)
{
    double dx = Cubic::first(iCubic.x, iT);
    // Where x'(t) vanishes (a vertical handle at a key, or both handles reaching across the
    // span) the slope is unbounded; read it just inside the segment instead.
    const double span = iCubic.x[1] + iCubic.x[2] + iCubic.x[3];
    if (std::fabs(dx) <= 1.0e-12 * span) {
        iT = iT < 0.5 ? iT + 1.0e-6 : iT - 1.0e-6;
        dx = Cubic::first(iCubic.x, iT);
    }
    if (dx == 0.0)
        return 0.0;
    const double dy = Cubic::first(iCubic.y, iT);
    if (iOrder == 1)
        return dy / dx;
    const double ddx = Cubic::second(iCubic.x, iT);
    const double ddy = Cubic::second(iCubic.y, iT);
    return (ddy * dx - dy * ddx) / (dx * dx * dx);
}

double EvalAt(const Cubic& iCubic, double iT, int iOrder)
{
    return iOrder == 0 ? Cubic::value(iCubic.y, iT) : DerivativeAt(iCubic, iT, iOrder);
}

} // namespace

std::shared_ptr<Interpolator> Bezier::create()
{
    return std::make_shared<Bezier>();
}

Bezier::Bezier() : Interpolator("bezier()") {}

Bezier::ControlPoints Bezier::getControlPoints(const Segment& iSegment)
{
    const Vector2D<double>& a = iSegment.getLeftKey()->get();
    const Vector2D<double>& b = iSegment.getRightKey()->get();
    Vector2D<double> outHandle = a + iSegment.getOutTangent()->get();
    Vector2D<double> inHandle = b + iSegment.getInTangent()->get();
    // Inner control points within the span keep x(t) monotonic, whatever the tangents.
    outHandle.x = std::clamp(outHandle.x, a.x, b.x);
    inHandle.x = std::clamp(inHandle.x, a.x, b.x);
    return ControlPoints{{a, outHandle, inHandle, b}};
}

double Bezier::solveT(const ControlPoints& iPoints, double iX, double iGuess)
{
    return SolveMonotonic(Cubic(iPoints), iX, iGuess);
}

Vector2D<double> Bezier::pointAt(const ControlPoints& iPoints, double iT)
{
    const Cubic cubic(iPoints);
    return {Cubic::value(cubic.x, iT), Cubic::value(cubic.y, iT)};
}

double Bezier::evalInterior(const Segment& iSegment, double iX, int iOrder) const
{
    const ControlPoints points = getControlPoints(iSegment);
    if (iX == points.p[3].x && iOrder == 0)
        return points.p[3].y;
    const Cubic cubic(points);
    return EvalAt(cubic, SolveMonotonic(cubic, iX, -1.0), iOrder);
}

void Bezier::sampleInterior(const Segment& iSegment, double iX0, double iX1, int iCount, int iOrder,
                            std::vector<Vector2D<double>>& oPoints) const
{
    const Cubic cubic(getControlPoints(iSegment));
    oPoints.reserve(std::size_t(iCount));
    // Samples run forward in x, so each solution starts from the previous one, a step away.
    double t = -1.0;
    double previousT = 0.0;
    for (int i = 0; i < iCount; ++i) {
        const double x = sampleX(iX0, iX1, i, iCount);
        const double guess = i < 2 ? t : std::min(t + (t - previousT), 1.0);
        previousT = t;
        t = SolveMonotonic(cubic, x, guess);
        oPoints.emplace_back(x, EvalAt(cubic, t, iOrder));
    }
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
