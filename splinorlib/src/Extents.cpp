#include "splinorlib/Extents.h"

#include "SelectionAccess.h"
#include "splinorlib/CurveFlags.h"
#include "splinorlib/Interpolators.h"
#include "splinorlib/Selection.h"
#include "splinorlib/Splinor.h"
#include "splinorlib/SplinorContainer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
namespace {

using Private::SelectionAccess;

class Bounds
{
public:
    void add(const Vector2D<double>& iPoint)
    {
        mLow = {std::min(mLow.x, iPoint.x), std::min(mLow.y, iPoint.y)};
        mHigh = {std::max(mHigh.x, iPoint.x), std::max(mHigh.y, iPoint.y)};
    }
    bool isEmpty() const { return mLow.x > mHigh.x; }
    bool write(Rectangle<double>& oExtents) const
    {
        if (isEmpty())
            return false;
        oExtents = {mLow.x, mLow.y, mHigh.x - mLow.x, mHigh.y - mLow.y};
        return true;
    }

private:
    static constexpr double cInf = std::numeric_limits<double>::infinity();
    Vector2D<double> mLow{cInf, cInf};
    Vector2D<double> mHigh{-cInf, -cInf};
};

/// The keys of an interior segment and the highs and lows between them. A Bezier segment's
/// extremes lie where y'(t) = 0; the other built-in types stay between their keys' values.
void AddSegment(const Segment& iSegment, Bounds& ioBounds)
{
    const Keyframe* left = iSegment.getLeftKey();
    const Keyframe* right = iSegment.getRightKey();
    if (left)
        ioBounds.add(left->get());
    if (right)
        ioBounds.add(right->get());
    if (!left || !right || !dynamic_cast<const Bezier*>(iSegment.getInterpolator().get()))
        return;

    const Bezier::ControlPoints c = Bezier::getControlPoints(iSegment);
    // Find the roots of the first derivative of y: a t^2 + b t + k = 0 (over 3).
    const double p0 = c.p[0].y, p1 = c.p[1].y, p2 = c.p[2].y, p3 = c.p[3].y;
    const double a = -p0 + 3.0 * p1 - 3.0 * p2 + p3;
    const double b = 2.0 * (p0 - 2.0 * p1 + p2);
    const double k = p1 - p0;
    double roots[2];
    int count = 0;
    if (std::fabs(a) < 1e-12 * (std::fabs(b) + std::fabs(k) + 1e-300)) {
        if (b != 0.0)
            roots[count++] = -k / b;
    } else {
        const double discriminant = b * b - 4.0 * a * k;
        if (discriminant >= 0.0) {
            const double root = std::sqrt(discriminant);
            roots[count++] = (-b + root) / (2.0 * a);
            roots[count++] = (-b - root) / (2.0 * a);
        }
    }
    for (int i = 0; i < count; ++i)
        if (roots[i] > 0.0 && roots[i] < 1.0)
            ioBounds.add(Bezier::pointAt(c, roots[i]));
}

void AddInterior(const Splinor& iCurve, Bounds& ioBounds)
{
    for (const Segment& segment : iCurve)
        if (segment.getLeftKey() && segment.getRightKey())
            AddSegment(segment, ioBounds);
    if (iCurve.size() == 2) // a single key: its point is the interior
        ioBounds.add(iCurve.begin()->getRightKey()->get());
}

void AddSelectedParts(const Splinor& iCurve, Bounds& ioBounds)
{
    for (const Segment* segment : SelectionAccess::content(iCurve).selectedSegments) {
        if (SelectionAccess::isSet(*segment, SelectionAccess::cKeyBit) ||
            SelectionAccess::isSet(*segment, SelectionAccess::cOutBit))
            ioBounds.add(segment->getLeftKey()->get());
        if (SelectionAccess::isSet(*segment, SelectionAccess::cInBit))
            ioBounds.add(segment->getRightKey()->get());
        if (SelectionAccess::isSet(*segment, SelectionAccess::cSegmentBit))
            AddSegment(*segment, ioBounds);
    }
}

} // namespace

bool GetInteriorExtents(const Splinor& iCurve, Rectangle<double>& oExtents)
{
    Bounds bounds;
    AddInterior(iCurve, bounds);
    return bounds.write(oExtents);
}

bool GetVisibleExtents(const SplinorContainer& iCurves, const Selection&, Rectangle<double>& oExtents)
{
    Bounds bounds;
    for (const auto& curve : iCurves)
        if (IsVisible(*curve))
            AddInterior(*curve, bounds);
    return bounds.write(oExtents);
}

bool GetSelectedExtents(const Selection& iSelection, Rectangle<double>& oExtents)
{
    Bounds bounds;
    for (const auto& curve : *iSelection.getContainer()) {
        const Private::CurveContent& content = SelectionAccess::content(*curve);
        if (!content.selectedSegments.empty())
            AddSelectedParts(*curve, bounds);
        else if (content.selected)
            AddInterior(*curve, bounds);
    }
    return bounds.write(oExtents);
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
