#pragma once

#include "splinorlib/Vector2D.h"

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Splinor;

/// dy/dx and d2y/dx2 of the curve at x, from the segment that holds x.
double GetFirstDerivative(const Splinor& iCurve, double iX);
double GetSecondDerivative(const Splinor& iCurve, double iX);

/// Where a new key at x would sit on the curve: (x, value at x). False, with oPosition left
/// alone, for a non-finite x.
bool GetNewKeyframe(const Splinor& iCurve, double iX, Vector2D<double>& oPosition);

/// Splits the Bezier segment that holds x at x, by de Casteljau at the t where x(t) = x, and
/// gives the point there and the four tangents of the two halves that keep the curve's shape:
/// leftOut at the segment's left key, leftIn and rightOut at the split point, rightIn at the
/// right key. False, with the results left alone, unless x lies strictly inside an interior
/// segment whose interpolator is a Bezier.
bool ComputeBezierInsertion(const Splinor& iCurve, double iX, Vector2D<double>& oPoint,
                            Vector2D<double>& oLeftOut, Vector2D<double>& oLeftIn,
                            Vector2D<double>& oRightOut, Vector2D<double>& oRightIn);

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
