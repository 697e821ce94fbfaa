#include "tools/Picking.h"

#include "view/Viewport.h"

#include "splinorlib/CurveFlags.h"
#include "splinorlib/Interpolator.h"
#include "splinorlib/Keyframe.h"
#include "splinorlib/Numeric.h"
#include "splinorlib/Segment.h"
#include "splinorlib/Selection.h"
#include "splinorlib/Splinor.h"
#include "splinorlib/SplinorContainer.h"
#include "splinorlib/Tangent.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

using SplinorLib::v19::HitRecord;
using SplinorLib::v19::HitSet;
using SplinorLib::v19::Interpolator;
using SplinorLib::v19::Keyframe;
using SplinorLib::v19::Segment;
using SplinorLib::v19::Selection;
using SplinorLib::v19::Splinor;
using SplinorLib::v19::SplinorContainer;
using SplinorLib::v19::Tangent;
using Point = SplinorLib::v19::Vector2D<double>;
using Rect = SplinorLib::v19::Rectangle<double>;

namespace {

// All in window pixels, so that picking feels the same at every zoom.

// Half the side of the square that catches a keyframe or a tangent handle: big enough to grab
// either without careful aim, small enough that keys a few pixels apart stay apart.
constexpr double cHandleHalfSize = 8.0;
// How far off a curve or a tangent line a press still lands on it; a line is thin, so it gets
// less slack than a handle.
constexpr double cLineTolerance = 5.0;
// The tangent line is tested by squared distance, which spares the square root.
constexpr double cLineToleranceSquared = cLineTolerance * cLineTolerance;
// A Fixed unweighted tangent keeps only its direction, so its true end means nothing to the
// user: its line gets this length on screen, whatever the zoom.
constexpr double cFixedTangentLength = 24.0;
// The handle sits this far beyond the end of its line, so that a short tangent's handle does not
// cover its key.
constexpr double cHandleOffset = 8.0;
// A tangent of no length still needs a direction for its handle: along x, away from its key on
// its own side. Any length far below a pixel at every sensible zoom will do.
constexpr double cZeroTangentX = 0.0001;

bool Contains(const Rect& iRect, const Point& iPoint)
{
    return iPoint.x >= iRect.x && iRect.x + iRect.width > iPoint.x && iPoint.y >= iRect.y
        && iRect.y + iRect.height > iPoint.y;
}

bool Overlaps(const Rect& iA, const Rect& iB)
{
    return std::min(iA.x + iA.width, iB.x + iB.width) > std::max(iA.x, iB.x)
        && std::min(iA.y + iA.height, iB.y + iB.height) > std::max(iA.y, iB.y);
}

bool InHandleBox(const Point& iPoint, const Point& iCentre)
{
    return std::fabs(iPoint.x - iCentre.x) <= cHandleHalfSize && std::fabs(iPoint.y - iCentre.y) <= cHandleHalfSize;
}

// One sample buffer per thread: picking runs on every mouse move, and once the buffer has grown
// to the window's width it no longer allocates.
std::vector<Point>& SampleBuffer()
{
    thread_local std::vector<Point> buffer;
    return buffer;
}

// The visible samples of a segment in window pixels, in the shared buffer.
const std::vector<Point>& SampleInWindow(const Segment& iSegment, const Viewport& iViewport)
{
    std::vector<Point>& points = SampleBuffer();
    SampleSegment(iSegment, iViewport, points);
    for (Point& point : points)
        point = iViewport.worldToWindow(point);
    return points;
}

/// Asks the processor to start loading an object's memory, for work that reads it soon.
template <class T> void Prefetch(const T& iObject)
{
#if defined(__GNUC__)
    constexpr std::size_t cCacheLine = 64;
    const char* bytes = reinterpret_cast<const char*>(&iObject);
    for (std::size_t offset = 0; offset < sizeof(T); offset += cCacheLine)
        __builtin_prefetch(bytes + offset);
#else
    (void)iObject;
#endif
}

bool UsesTangents(const Segment& iSegment)
{
    const std::shared_ptr<Interpolator>& interpolator = iSegment.getInterpolator();
    return interpolator && interpolator->usesTangents();
}

Segment* SegmentUnderPoint(Splinor& iCurve, const Viewport& iViewport, const Point& iPoint)
{
    const Splinor::iterator segment = iCurve.findSegment(iViewport.windowToWorld(iPoint).x);
    return segment == iCurve.end() ? nullptr : segment.get();
}

bool IsSegmentAtPoint(const Segment& iSegment, const Viewport& iViewport, const Point& iPoint)
{
    return IsNearPolyline(iPoint, SampleInWindow(iSegment, iViewport), cLineTolerance);
}

//  K = key, E = end of the line, H = centre of the handle, all in window pixels:
//
//      K ---------- E ---- H      |E - K| = the true tangent, or 24 for a Fixed unweighted one
//                                 |H - E| = 8
void PickTangentHandle(
    const Keyframe& iKey, Tangent& iTangent, const Viewport& iViewport, const Point& iPoint, HitRecord& ioHit)
{
    Point vector = iTangent.get();
    if (SplinorLib::v19::NearZero(Length(vector)))
        vector = Point(iTangent.isInTangent() ? -cZeroTangentX : cZeroTangentX, 0.0);

    const Point key = iViewport.worldToWindow(iKey.get());
    Point end = iViewport.worldToWindow(iKey.get() + vector);
    const Point direction = (end - key) / Length(end - key);
    if (!iTangent.isWeighted() && iTangent.getType() == SplinorLib::v19::cTangentFixed)
        end = key + cFixedTangentLength * direction;
    const Point handle = end + cHandleOffset * direction;

    if (InHandleBox(iPoint, handle))
        ioHit.reset(iTangent.getShared(), true);
    else if (cLineToleranceSquared >= DistanceToLineSquared(iPoint, key, handle))
        ioHit.reset(iTangent.getShared(), false);
}

// Stops at the first hit of either kind: a line hit on an earlier tangent hides a handle further
// along.
void PickTangentsAtPoint(
    Splinor& iCurve, const Selection& iSelection, const Viewport& iViewport, const Point& iPoint, HitRecord& ioHit)
{
    // Only handles near the point can be hit. Beyond the segment under the point and its
    // neighbours, a handle reaches at most the screen length of a Fixed line plus the handle
    // box; only a weighted handle drawn longer than that, from a key further away, is passed by.
    const double reach = (cFixedTangentLength + cHandleOffset + cHandleHalfSize + cLineTolerance) * iViewport.pixelSize().x;
    const double x = iViewport.windowToWorld(iPoint).x;
    auto it = iCurve.findSegment(x - reach);
    if (it != iCurve.begin())
        --it;
    auto last = iCurve.findSegment(x + reach);
    ++last;
    for (; it != last; ++it) {
        Segment& segment = *it;
        if (!UsesTangents(segment))
            continue;
        Keyframe* left = segment.getLeftKey();
        Tangent* out = segment.getOutTangent();
        if (left && out && IsTangentVisible(*out, iSelection)) {
            PickTangentHandle(*left, *out, iViewport, iPoint, ioHit);
            if (!ioHit.isEmpty())
                return;
        }
        Keyframe* right = segment.getRightKey();
        Tangent* in = segment.getInTangent();
        if (right && in && IsTangentVisible(*in, iSelection)) {
            PickTangentHandle(*right, *in, iViewport, iPoint, ioHit);
            if (!ioHit.isEmpty())
                return;
        }
    }
}

// The left key wins a tie.
void PickSegmentKeys(Segment& iSegment, const Viewport& iViewport, const Point& iPoint, HitRecord& ioHit)
{
    for (Keyframe* key : { iSegment.getLeftKey(), iSegment.getRightKey() }) {
        if (key && InHandleBox(iPoint, iViewport.worldToWindow(key->get()))) {
            ioHit.reset(key->getShared());
            return;
        }
    }
}

// Only the segment under the point is looked at: this keeps a mouse move to one segment's
// samples per curve, and makes its two keys the only candidates.
void PickKeyOrSegmentAtPoint(Splinor& iCurve, const Viewport& iViewport, const Point& iPoint, HitRecord& ioHit)
{
    Segment* segment = SegmentUnderPoint(iCurve, iViewport, iPoint);
    if (!segment)
        return;
    PickSegmentKeys(*segment, iViewport, iPoint, ioHit);
    if (ioHit.isEmpty() && IsSegmentAtPoint(*segment, iViewport, iPoint))
        ioHit.reset(segment->getShared());
}

// The true end of the tangent counts here, neither the fixed on-screen length nor the handle.
void PickTangentInRegion(
    const Keyframe* iKey, Tangent* iTangent, const Viewport& iViewport, const Rect& iRegion, HitSet& oHits)
{
    if (!iKey || !iTangent)
        return;
    const Point key = iViewport.worldToWindow(iKey->get());
    const Point end = iViewport.worldToWindow(iKey->get() + iTangent->get());
    if (LineTouchesRectangle(key, end, iRegion))
        oHits.insert(HitRecord(iTangent->getShared(), true));
}

// Every tangent counts, whether on show or not: a region pick is not a hover.
void PickTangentsInRegion(Splinor& iCurve, const Viewport& iViewport, const Rect& iRegion, HitSet& oHits)
{
    for (Segment& segment : iCurve) {
        if (!UsesTangents(segment))
            continue;
        PickTangentInRegion(segment.getLeftKey(), segment.getOutTangent(), iViewport, iRegion, oHits);
        PickTangentInRegion(segment.getRightKey(), segment.getInTangent(), iViewport, iRegion, oHits);
    }
}

// The segments from the one under the region's left edge to the one under its right edge.
struct SegmentRange
{
    Splinor::iterator first;
    Splinor::iterator last;
};

SegmentRange SegmentsUnderRegion(Splinor& iCurve, const Viewport& iViewport, const Rect& iRegion)
{
    const double left = iViewport.windowToWorld(Point(iRegion.x, iRegion.y)).x;
    const double right = iViewport.windowToWorld(Point(iRegion.x + iRegion.width, iRegion.y)).x;
    return { iCurve.findSegment(left), iCurve.findSegment(right) };
}

bool SegmentTouchesRegion(const Segment& iSegment, const Viewport& iViewport, const Rect& iRegion)
{
    const std::vector<Point>& points = SampleInWindow(iSegment, iViewport);
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (LineTouchesRectangle(points[i - 1], points[i], iRegion))
            return true;
    }
    return false;
}

void PickKeyInRegion(Keyframe* iKey, const Viewport& iViewport, const Rect& iRegion, HitSet& oHits)
{
    if (iKey && Contains(iRegion, iViewport.worldToWindow(iKey->get())))
        oHits.insert(HitRecord(iKey->getShared()));
}

// Each key is tested once: the left key of the first segment, then the right key of each.
void PickSegmentsAndKeysInRegion(Splinor& iCurve, const Viewport& iViewport, const Rect& iRegion, HitSet& oHits)
{
    const SegmentRange range = SegmentsUnderRegion(iCurve, iViewport, iRegion);
    for (Splinor::iterator segment = range.first; segment != iCurve.end(); ++segment) {
        if (SegmentTouchesRegion(*segment, iViewport, iRegion))
            oHits.insert(HitRecord(segment->getShared()));
        if (segment == range.first)
            PickKeyInRegion(segment->getLeftKey(), iViewport, iRegion, oHits);
        PickKeyInRegion(segment->getRightKey(), iViewport, iRegion, oHits);
        if (segment == range.last)
            break;
    }
}

void PickCurveInRegion(Splinor& iCurve, const Viewport& iViewport, const Rect& iRegion, HitSet& oHits)
{
    const SegmentRange range = SegmentsUnderRegion(iCurve, iViewport, iRegion);
    for (Splinor::iterator segment = range.first; segment != iCurve.end(); ++segment) {
        if (SegmentTouchesRegion(*segment, iViewport, iRegion)) {
            oHits.insert(HitRecord(iCurve.getShared()));
            return;
        }
        if (segment == range.last)
            break;
    }
}

} // namespace

bool PickPoint(const SplinorContainer& iContainer, Selection& iSelection, const Viewport& iViewport,
    const Point& iPoint, HitRecord& ioHit)
{
    if (!Contains(iViewport.getWindowBounds(), iPoint))
        return false;

    // Unselected curves wait until every selected one has been searched: a second pass in the
    // container's order, so that a mouse move allocates nothing.
    for (const std::shared_ptr<Splinor>& curve : iContainer) {
        if (!IsVisible(*curve) || !iSelection.isSelected(*curve))
            continue;
        HitRecord tangentHit;
        PickTangentsAtPoint(*curve, iSelection, iViewport, iPoint, tangentHit);
        if (tangentHit.getType() == HitRecord::cTangentHandle) {
            ioHit = tangentHit;
            return true;
        }
        PickKeyOrSegmentAtPoint(*curve, iViewport, iPoint, ioHit);
        if (ioHit.isEmpty())
            ioHit = tangentHit;
        if (!ioHit.isEmpty())
            return true;
    }

    // The segments under the point are looked up for a few curves at a time, and their memory
    // is asked for before any is sampled: over many long curves each lookup misses the cache,
    // and the misses then overlap instead of coming one after another.
    constexpr int cCurvesAtATime = 16;
    Splinor* curves[cCurvesAtATime];
    const Segment* segments[cCurvesAtATime];
    for (auto it = iContainer.begin(); it != iContainer.end();) {
        int count = 0;
        for (; it != iContainer.end() && count < cCurvesAtATime; ++it)
            if (IsVisible(**it) && !iSelection.isSelected(**it))
                curves[count++] = it->get();
        for (int i = 0; i < count; ++i) {
            segments[i] = SegmentUnderPoint(*curves[i], iViewport, iPoint);
            if (segments[i])
                Prefetch(*segments[i]);
        }
        for (int i = 0; i < count; ++i)
            if (segments[i] && IsSegmentAtPoint(*segments[i], iViewport, iPoint)) {
                ioHit.reset(curves[i]->getShared());
                return true;
            }
    }
    return false;
}

bool PickRegion(
    const SplinorContainer& iContainer, Selection&, const Viewport& iViewport, const Rect& iRegion, HitSet& oHits)
{
    oHits.clear();
    if (!Overlaps(iRegion, iViewport.getWindowBounds()))
        return false;
    for (const std::shared_ptr<Splinor>& curve : iContainer) {
        if (!IsVisible(*curve))
            continue;
        PickTangentsInRegion(*curve, iViewport, iRegion, oHits);
        PickSegmentsAndKeysInRegion(*curve, iViewport, iRegion, oHits);
        PickCurveInRegion(*curve, iViewport, iRegion, oHits);
    }
    return !oHits.empty();
}

bool IsTangentVisible(const Tangent& iTangent, const Selection& iSelection)
{
    if (iSelection.isSelected(iTangent))
        return true;
    const Segment* segment = iTangent.getOwningSegment();
    if (!segment)
        return false;
    if (iSelection.isSelected(*segment))
        return true;
    const Keyframe* right = segment->getRightKey();
    const Keyframe* left = segment->getLeftKey();
    if ((right && iSelection.isSelected(*right)) || (left && iSelection.isSelected(*left)))
        return true;
    if (const Tangent* other = iTangent.isInTangent() ? segment->getOutTangent() : segment->getInTangent()) {
        if (iSelection.isSelected(*other))
            return true;
        const Tangent* otherOpposite = other->getOppositeTangent();
        if (otherOpposite && iSelection.isSelected(*otherOpposite))
            return true;
    }
    const Tangent* opposite = iTangent.getOppositeTangent();
    return opposite && iSelection.isSelected(*opposite);
}

SampleSpan SampleCount(const Segment& iSegment, const Viewport& iViewport)
{
    const Rect& world = iViewport.getWorldBounds();
    const double worldRight = world.x + world.width;
    SampleSpan span;
    span.x0 = world.x;
    span.x1 = worldRight;
    if (const Keyframe* left = iSegment.getLeftKey(); left && left->getX() > span.x0)
        span.x0 = left->getX();
    if (const Keyframe* right = iSegment.getRightKey(); right && right->getX() < span.x1)
        span.x1 = right->getX();
    if (span.x0 >= worldRight || world.x >= span.x1)
        return span;

    // About one sample per pixel. The curve drawing takes its count from here too, so picking and
    // drawing sample at the same x; the widths are narrowed to single precision.
    const double count
        = (span.x1 - span.x0) * static_cast<float>(iViewport.getWindowBounds().width) / static_cast<float>(world.width);
    // A world narrower than a float can hold divides by zero here; the span never needs more
    // than a sample per pixel of the window.
    const double most = iViewport.getWindowBounds().width + 1.0;
    span.count = count > 2.0 ? static_cast<int>(std::min(count, std::max(most, 2.0))) : 2;
    return span;
}

void SampleSegment(const Segment& iSegment, const Viewport& iViewport, std::vector<Point>& oPoints)
{
    const SampleSpan span = SampleCount(iSegment, iViewport);
    const std::shared_ptr<Interpolator>& interpolator = iSegment.getInterpolator();
    if (span.count == 0 || !interpolator) {
        oPoints.clear();
        return;
    }
    interpolator->sampleValues(iSegment, span.x0, span.x1, span.count, oPoints);
}

float DistanceToLineSquared(const Point& iPoint, const Point& iA, const Point& iB)
{
    const Point ab = iB - iA;
    const double lengthSquared = LengthSquared(ab);
    Point nearest = iA;
    if (!SplinorLib::v19::NearZero(lengthSquared)) {
        // u is where the perpendicular from the point meets the line, 0 at a and 1 at b.
        const double u = Dot(iPoint - iA, ab) / lengthSquared;
        if (0.0 > u)
            nearest = iA;
        else if (u > 1.0)
            nearest = iB;
        else
            nearest = iA + u * ab;
    }
    return static_cast<float>(LengthSquared(iPoint - nearest));
}

bool IsNearPolyline(const Point& iPoint, const std::vector<Point>& iPoints, double iTolerance)
{
    for (std::size_t i = 1; i < iPoints.size(); ++i) {
        const Point& a = iPoints[i - 1];
        const Point& b = iPoints[i];
        // The bounding box rejects a piece before any distance is worked out.
        const bool inBox = iPoint.x >= std::min(a.x, b.x) - iTolerance && std::max(a.x, b.x) + iTolerance > iPoint.x
            && iPoint.y >= std::min(a.y, b.y) - iTolerance && std::max(a.y, b.y) + iTolerance > iPoint.y;
        if (inBox && iTolerance * iTolerance >= DistanceToLineSquared(iPoint, a, b))
            return true;
    }
    return false;
}

// Each edge is tested only when the ends lie on different sides of it, so the division never
// divides by zero.
bool LineTouchesRectangle(const Point& iA, const Point& iB, const Rect& iRectangle)
{
    if (Contains(iRectangle, iA) || Contains(iRectangle, iB))
        return true;

    const double left = iRectangle.x;
    const double right = iRectangle.x + iRectangle.width;
    const double top = iRectangle.y;
    const double bottom = iRectangle.y + iRectangle.height;

    for (const double x : { left, right }) {
        if ((iA.x - x > 0.0) != (iB.x - x > 0.0)) {
            const double y = iA.y - (iB.y - iA.y) * (iA.x - x) / (iB.x - iA.x);
            if (y >= top && bottom >= y)
                return true;
        }
    }
    for (const double y : { bottom, top }) {
        if ((iA.y - y > 0.0) != (iB.y - y > 0.0)) {
            const double x = iA.x - (iB.x - iA.x) * (iA.y - y) / (iB.y - iA.y);
            if (x >= left && right >= x)
                return true;
        }
    }
    return false;
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
