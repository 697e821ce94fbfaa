#include "splinorlib/Tangent.h"

#include "CurveContent.h"
#include "TangentRules.h"
#include "splinorlib/Keyframe.h"
#include "splinorlib/Segment.h"

#include <cmath>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
namespace {

/// Beyond this slope an unweighted direction counts as vertical.
constexpr double cMaxSlope = 1.0e12;

/// The x span of a segment with both keys; 0 for an exterior segment.
double InteriorSpan(const Segment* iSegment)
{
    if (!iSegment || !iSegment->getLeftKey() || !iSegment->getRightKey())
        return 0.0;
    return iSegment->getRightKey()->getX() - iSegment->getLeftKey()->getX();
}

} // namespace

Tangent::Tangent(Segment* iSegment, bool iIn) : mSegment(iSegment), mFlags(iIn ? cIn : 0)
{
    resetState();
}

void Tangent::resetState()
{
    mValue = isInTangent() ? Vector2D<double>(-1.0, 0.0) : Vector2D<double>(1.0, 0.0);
    mType = cTangentSmooth;
    mFlags &= cIn;
}

void Tangent::copyStateFrom(const Tangent& iOther)
{
    mValue = iOther.mValue;
    mType = iOther.mType;
    mFlags = std::uint8_t((mFlags & cIn) | (iOther.mFlags & ~cIn));
}

Keyframe* Tangent::getOwningKeyframe() const
{
    return isInTangent() ? mSegment->getRightKey() : mSegment->getLeftKey();
}

Tangent* Tangent::getOppositeTangent() const
{
    Keyframe* key = getOwningKeyframe();
    if (!key)
        return nullptr;
    return isInTangent() ? key->getOutTangent() : key->getInTangent();
}

Splinor* Tangent::getOwningCurve() const
{
    return mSegment->getOwningCurve();
}

double Tangent::getSpan() const
{
    double span = InteriorSpan(mSegment);
    if (span > 0.0)
        return span;
    // A tangent on an open end has no span of its own; it borrows the one across its key.
    span = InteriorSpan(isInTangent() ? mSegment->getNext() : mSegment->getPrevious());
    return span > 0.0 ? span : 1.0;
}

double Tangent::getAutomaticSlope() const
{
    const Keyframe* key = getOwningKeyframe();
    if (!key || mType == cTangentFixed)
        return 0.0;
    const Segment* left = key->getLeftSegment();
    const Segment* right = key->getRightSegment();
    const Keyframe* previous = left ? left->getLeftKey() : nullptr;
    const Keyframe* next = right ? right->getRightKey() : nullptr;
    return Private::AutomaticSlope(mType, isInTangent(), previous ? &previous->get() : nullptr, key->get(),
                                   next ? &next->get() : nullptr);
}

Vector2D<double> Tangent::get() const
{
    if (!getOwningKeyframe())
        return mValue;
    const double side = isInTangent() ? -1.0 : 1.0;
    if (mType != cTangentFixed) {
        const double length = side * getSpan() / 3.0;
        return {length, length * getAutomaticSlope()};
    }
    if (isWeighted())
        return mValue;

    // Unweighted: only the direction is kept, and the length in x is a third of the span.
    const double length = getSpan() / 3.0;
    if (std::fabs(mValue.x) * cMaxSlope > std::fabs(mValue.y))
        return mValue * (length / std::fabs(mValue.x));
    if (mValue.y == 0.0)
        return {side * length, 0.0};
    return {0.0, std::copysign(length, mValue.y)};
}

void Tangent::set(const Vector2D<double>& iValue)
{
    if (!IsFinite(iValue))
        return;
    Vector2D<double> value = iValue;
    if (isInTangent())
        value.x = std::min(value.x, 0.0);
    else
        value.x = std::max(value.x, 0.0);

    if (isWeightLocked()) {
        const double length = Length(value);
        if (length == 0.0)
            return;
        value *= Length(get()) / length;
    }

    Tangent* opposite = nullptr;
    const Keyframe* key = getOwningKeyframe();
    if (key && key->isTangentsUnified())
        opposite = getOppositeTangent();

    mValue = value;
    mType = cTangentFixed;

    const double length = Length(value);
    if (opposite && length > 0.0) {
        opposite->mValue = value * (-Length(opposite->get()) / length);
        opposite->mType = cTangentFixed;
    }

    announce();
    if (opposite)
        opposite->announce();
}

void Tangent::setType(unsigned char iType)
{
    if (iType >= cTangentTypeCount || iType == mType)
        return;
    if (iType == cTangentFixed)
        mValue = get();
    mType = iType;
    announce();
}

void Tangent::setFlag(Flag iFlag, bool iOn)
{
    std::uint8_t flags = iOn ? std::uint8_t(mFlags | iFlag) : std::uint8_t(mFlags & ~iFlag);
    if (flags == mFlags)
        return;
    mFlags = flags;
    announce();
}

void Tangent::setWeighted(bool iWeighted)
{
    if (iWeighted == isWeighted())
        return;
    // Weighting keeps the handle where it is on screen: the derived length becomes the stored one.
    if (iWeighted)
        mValue = get();
    setFlag(cWeighted, iWeighted);
}

void Tangent::setWeightLocked(bool iLocked)
{
    setFlag(cWeightLocked, iLocked);
}

void Tangent::announce()
{
    if (Splinor* curve = getOwningCurve())
        curve->announce(&SplinorObserver::tangentChanged, *this);
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
