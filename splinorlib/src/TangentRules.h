#pragma once

#include "splinorlib/Vector2D.h"

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
namespace Private {

/// The slope that an automatic tangent type gives the tangent of a key, from the key and its
/// neighbours (null where the key has none on that side). 0 for Fixed and unknown types.
double AutomaticSlope(unsigned char iType, bool iInTangent, const Vector2D<double>* iPrevious,
                      const Vector2D<double>& iKey, const Vector2D<double>* iNext);

} // namespace Private
} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
