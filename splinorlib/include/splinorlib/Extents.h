#pragma once

#include "splinorlib/Rectangle.h"

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Selection;
class Splinor;
class SplinorContainer;

/// Bounds to frame, in curve space: the keys and the exact highs and lows of the curve between
/// them. Tangent handles do not count: they are not the animation, and a long handle would
/// otherwise shrink the curve it belongs to. Each function gives false, and leaves oExtents
/// alone, when there is nothing to frame.

/// The interior of every visible curve of the container: from its first key to its last.
bool GetVisibleExtents(const SplinorContainer& iCurves, const Selection& iSelection, Rectangle<double>& oExtents);
/// What is selected: selected keys (a selected tangent counts as its key), selected interior
/// segments whole, and the interior of a selected curve of which nothing else is selected.
bool GetSelectedExtents(const Selection& iSelection, Rectangle<double>& oExtents);
/// The curve from its first key to its last.
bool GetInteriorExtents(const Splinor& iCurve, Rectangle<double>& oExtents);

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
