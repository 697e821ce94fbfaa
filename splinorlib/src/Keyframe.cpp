#include "splinorlib/Keyframe.h"

#include "CurveContent.h"
#include "splinorlib/Segment.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
namespace {

// The nearest x to a neighbour that keeps the separation as a difference: x - neighbour can
// round below getMinSeparation() even when x was computed as neighbour + getMinSeparation().
double SeparatedAbove(double iNeighbour)
{
    double x = iNeighbour + Keyframe::getMinSeparation();
    while (x - iNeighbour < Keyframe::getMinSeparation())
        x = std::nextafter(x, std::numeric_limits<double>::infinity());
    return x;
}

double SeparatedBelow(double iNeighbour)
{
    double x = iNeighbour - Keyframe::getMinSeparation();
    while (iNeighbour - x < Keyframe::getMinSeparation())
        x = std::nextafter(x, -std::numeric_limits<double>::infinity());
    return x;
}

} // namespace

Keyframe::Keyframe(const Keyframe& iOther)
    : SharedFromThis<Keyframe>(), mPosition(iOther.mPosition), mFlags(iOther.mFlags)
{
}

Keyframe& Keyframe::operator=(const Keyframe& iOther)
{
    mPosition = iOther.mPosition;
    mFlags = iOther.mFlags;
    return *this;
}

void Keyframe::set(double iX, double iY)
{
    set(Vector2D<double>(iX, iY));
}

void Keyframe::set(const Vector2D<double>& iPosition)
{
    if (!IsFinite(iPosition))
        return;
    Vector2D<double> position = iPosition;
    Splinor* curve = getOwningCurve();
    if (curve) {
        // Stop short of the neighbours: the order of keys never changes in place.
        double low = -std::numeric_limits<double>::infinity();
        double high = std::numeric_limits<double>::infinity();
        if (const Keyframe* previous = mSegment->mPrevious ? mSegment->mPrevious->getLeftKey() : nullptr)
            low = SeparatedAbove(previous->getX());
        if (const Keyframe* next = mSegment->getRightKey())
            high = SeparatedBelow(next->getX());
        position.x = std::clamp(position.x, low, high);
    }
    if (position == mPosition)
        return;
    if (curve && position.x != mPosition.x)
        mSegment->mContent->keys.update(mPosition.x, position.x);
    mPosition = position;
    if (curve)
        curve->announce(&SplinorObserver::valueChanged, *this);
}

void Keyframe::setFlag(Flag iFlag, bool iOn)
{
    std::uint8_t flags = iOn ? std::uint8_t(mFlags | iFlag) : std::uint8_t(mFlags & ~iFlag);
    if (flags == mFlags)
        return;
    mFlags = flags;
    if (Splinor* curve = getOwningCurve())
        curve->announce(&SplinorObserver::keyframeChanged, *this);
}

void Keyframe::setBreakdown(bool iBreakdown)
{
    setFlag(cBreakdown, iBreakdown);
}

void Keyframe::setTangentsUnified(bool iUnified)
{
    setFlag(cUnified, iUnified);
}

Segment* Keyframe::getLeftSegment() const
{
    return mSegment ? mSegment->mPrevious : nullptr;
}

Segment* Keyframe::getRightSegment() const
{
    return mSegment;
}

Tangent* Keyframe::getInTangent() const
{
    Segment* left = getLeftSegment();
    return left ? left->getInTangent() : nullptr;
}

Tangent* Keyframe::getOutTangent() const
{
    return mSegment ? mSegment->getOutTangent() : nullptr;
}

Splinor* Keyframe::getOwningCurve() const
{
    return mSegment ? mSegment->getOwningCurve() : nullptr;
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
