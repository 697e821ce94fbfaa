#pragma once

#include "splinorlib/HitRecord.h"
#include "splinorlib/Rectangle.h"
#include "splinorlib/Vector2D.h"

#include <vector>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
class Segment;
class Selection;
class SplinorContainer;
class Tangent;
} // namespace v19
} // namespace SplinorLib

namespace SplinorEditorQtLib {
namespace v22 {

class Viewport;

// Picking works in window pixels, y downward, so that the feel of the editor does not change
// with the zoom. None of these functions changes a curve or the selection.

/// The single item under a point. On the first selected curve that has anything there, in this
/// priority: tangent handle, keyframe, segment, tangent line. Selected curves are searched before
/// any unselected one, and an unselected curve only ever yields a curve record. Between curves
/// of the same kind the container's order decides. ioHit must come in empty; true if it names
/// an item. A point outside the window bounds leaves it as it came.
bool PickPoint(const SplinorLib::v19::SplinorContainer& iContainer, SplinorLib::v19::Selection& iSelection,
    const Viewport& iViewport, const SplinorLib::v19::Vector2D<double>& iPoint, SplinorLib::v19::HitRecord& ioHit);

/// Every item of a visible curve, selected or not, that a rectangle touches: tangents (whether
/// on show or not, by their true end), segments, keys, and one record per curve. oHits is
/// cleared first; true if it is not empty.
bool PickRegion(const SplinorLib::v19::SplinorContainer& iContainer, SplinorLib::v19::Selection& iSelection,
    const Viewport& iViewport, const SplinorLib::v19::Rectangle<double>& iRegion, SplinorLib::v19::HitSet& oHits);

/// Whether a tangent is on show: itself, its segment, one of its segment's keys, the other
/// tangent of its segment or that tangent's opposite, or its own opposite is selected. The
/// tangent drawing asks the same question, so what is drawn and what can be picked agree.
bool IsTangentVisible(const SplinorLib::v19::Tangent& iTangent, const SplinorLib::v19::Selection& iSelection);

/// The x span of a segment that lies in the world bounds, and how many samples draw it: about
/// one per pixel and at least 2, or 0 when the segment is wholly outside.
struct SampleSpan
{
    double x0 = 0.0;
    double x1 = 0.0;
    int count = 0;
};
SampleSpan SampleCount(const SplinorLib::v19::Segment& iSegment, const Viewport& iViewport);

/// Curve-space samples of the visible part of a segment; empty when nothing of it is visible or
/// it has no interpolator. The caller converts them to window pixels.
void SampleSegment(const SplinorLib::v19::Segment& iSegment, const Viewport& iViewport,
    std::vector<SplinorLib::v19::Vector2D<double>>& oPoints);

/// The squared distance from a point to the line segment a-b, in single precision.
float DistanceToLineSquared(const SplinorLib::v19::Vector2D<double>& iPoint,
    const SplinorLib::v19::Vector2D<double>& iA, const SplinorLib::v19::Vector2D<double>& iB);

/// Whether a point lies within the tolerance of a polyline; never with fewer than two points.
bool IsNearPolyline(const SplinorLib::v19::Vector2D<double>& iPoint,
    const std::vector<SplinorLib::v19::Vector2D<double>>& iPoints, double iTolerance);

/// Whether the line segment a-b has an end in the rectangle (half open) or crosses one of its
/// edges (ends of the edge included).
bool LineTouchesRectangle(const SplinorLib::v19::Vector2D<double>& iA, const SplinorLib::v19::Vector2D<double>& iB,
    const SplinorLib::v19::Rectangle<double>& iRectangle);

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
