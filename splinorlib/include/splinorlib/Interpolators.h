#pragma once

#include "splinorlib/Interpolator.h"

#include <memory>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Segment;

/// The value of the left key, up to the right key.
class Constant : public Interpolator
{
public:
    static std::shared_ptr<Interpolator> create();
    Constant();
    bool usesTangents() const override { return false; }

protected:
    double evalInterior(const Segment& iSegment, double iX, int iOrder) const override;
};

/// A straight line between the keys.
class Linear : public Interpolator
{
public:
    static std::shared_ptr<Interpolator> create();
    Linear();
    bool usesTangents() const override { return false; }

protected:
    double evalInterior(const Segment& iSegment, double iX, int iOrder) const override;
};

/// The cubic Bezier curve through the keys, with its inner control points at the left key plus
/// its out tangent and at the right key plus its in tangent. The control points' x is clamped
/// into the span, which keeps x(t) monotonic, so that the curve is a function of x; values are
/// found by solving x(t) = x to double precision.
class Bezier : public Interpolator
{
public:
    static std::shared_ptr<Interpolator> create();
    Bezier();
    bool usesTangents() const override { return true; }

    /// The four control points of an interior segment as used for evaluation.
    struct ControlPoints
    {
        Vector2D<double> p[4];
    };
    static ControlPoints getControlPoints(const Segment& iSegment);
    /// The parameter t in [0, 1] at which x(t) = x; iGuess may speed it up.
    static double solveT(const ControlPoints& iPoints, double iX, double iGuess = -1.0);
    static Vector2D<double> pointAt(const ControlPoints& iPoints, double iT);

protected:
    double evalInterior(const Segment& iSegment, double iX, int iOrder) const override;
    void sampleInterior(const Segment& iSegment, double iX0, double iX1, int iCount, int iOrder,
                        std::vector<Vector2D<double>>& oPoints) const override;
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
