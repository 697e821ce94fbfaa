#pragma once

#include <algorithm>
#include <cmath>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

/// The tolerance of NearZero and NearEqual. Curve values and pixel distances in this system are
/// many orders of magnitude above it, while it stays far above the rounding error of the double
/// arithmetic that produces them (evaluation, splitting, coordinate conversion).
constexpr double cNearTolerance = 1.0e-9;

inline bool NearZero(double iValue)
{
    return std::fabs(iValue) <= cNearTolerance;
}

/// Equal within cNearTolerance, relative to the magnitude of the values when they exceed 1.
inline bool NearEqual(double iA, double iB)
{
    return std::fabs(iA - iB) <= cNearTolerance * std::max({1.0, std::fabs(iA), std::fabs(iB)});
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
