#pragma once

#include "splinorlib/Vector2D.h"

#include <string>
#include <vector>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Segment;

/// How a segment gets from its left key to its right key.
///
/// An interpolator is stateless with respect to the curve: it reads the keys and tangents of
/// the segment it is given, so one object may serve any number of segments. Whatever the type,
/// an exterior segment holds the value of its one key (0 without keys), its derivatives are 0,
/// and an x outside the segment's span is taken at the nearer end.
///
/// Samples are (x, value) pairs at `count` evenly spaced x from x0 to x1, both included.
///
/// Its const operations only read, and may be called from a thread other than the one that
/// edits the curve, though never while the curve is edited: an editor's paint samples on a
/// thread of its own. An interpolator of one's own keeps no state that belongs to one thread.
class Interpolator
{
public:
    explicit Interpolator(std::string iExpression);
    virtual ~Interpolator();
    Interpolator(const Interpolator&) = delete;
    Interpolator& operator=(const Interpolator&) = delete;

    /// The name of the type, as InterpolatorFactory knows it, for example "bezier()".
    const char* getExpression() const { return mExpression.c_str(); }

    /// Whether the segment's shape follows its tangents.
    virtual bool usesTangents() const = 0;
    virtual void sampleValues(const Segment& iSegment, double iX0, double iX1, int iCount,
                              std::vector<Vector2D<double>>& oPoints) const;
    /// dy/dx at x.
    virtual double evalFirstDerivative(double iX, const Segment& iSegment) const;
    virtual void sampleFirstDerivative(const Segment& iSegment, double iX0, double iX1, int iCount,
                                       std::vector<Vector2D<double>>& oPoints) const;
    virtual void sampleSecondDerivative(const Segment& iSegment, double iX0, double iX1, int iCount,
                                        std::vector<Vector2D<double>>& oPoints) const;
    virtual double eval(double iX, const Segment& iSegment) const;
    /// d2y/dx2 at x.
    virtual double evalSecondDerivative(double iX, const Segment& iSegment) const;

protected:
    /// The value (order 0) or a derivative (order 1 or 2) at x, for a segment with both keys
    /// and x inside its span.
    virtual double evalInterior(const Segment& iSegment, double iX, int iOrder) const = 0;
    /// Samples of an interior segment, iX0 <= iX1 inside its span; the default evaluates each
    /// sample by itself.
    virtual void sampleInterior(const Segment& iSegment, double iX0, double iX1, int iCount, int iOrder,
                                std::vector<Vector2D<double>>& oPoints) const;

    /// The x of sample i of count from x0 to x1.
    static double sampleX(double iX0, double iX1, int iIndex, int iCount);

private:
    double evalOrder(const Segment& iSegment, double iX, int iOrder) const;
    void sampleOrder(const Segment& iSegment, double iX0, double iX1, int iCount, int iOrder,
                     std::vector<Vector2D<double>>& oPoints) const;

    std::string mExpression;
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
