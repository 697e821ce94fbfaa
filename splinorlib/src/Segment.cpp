#include "splinorlib/Segment.h"

#include "CurveContent.h"
#include "splinorlib/Interpolator.h"

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

Segment::Segment(Key) : mOut(this, false), mIn(this, true)
{
    mLeftKey.mSegment = this;
}

Segment::~Segment() = default;

std::shared_ptr<Segment> Segment::make(Private::CurveContent* iContent, bool iHasLeftKey)
{
    // One allocation holds the segment, its key and both tangents; each item hands out
    // shared pointers that alias the segment's, so any of them keeps the whole block alive.
    auto segment = std::make_shared<Segment>(Key{});
    segment->mContent = iContent;
    segment->mHasLeftKey = iHasLeftKey;
    segment->setShared(segment);
    segment->mLeftKey.setShared(std::shared_ptr<Keyframe>(segment, &segment->mLeftKey));
    segment->mOut.setShared(std::shared_ptr<Tangent>(segment, &segment->mOut));
    segment->mIn.setShared(std::shared_ptr<Tangent>(segment, &segment->mIn));
    segment->mKeepAlive = segment;
    return segment;
}

void Segment::copyValuesFrom(const Segment& iOther)
{
    mInterpolator = iOther.mInterpolator;
    if (iOther.mProperties)
        mProperties = std::make_unique<std::map<std::string, std::string>>(*iOther.mProperties);
    else
        mProperties.reset();
    mHasLeftKey = iOther.mHasLeftKey;
    mLeftKey.mPosition = iOther.mLeftKey.mPosition;
    mLeftKey.mFlags = iOther.mLeftKey.mFlags;
    mOut.copyStateFrom(iOther.mOut);
    mIn.copyStateFrom(iOther.mIn);
    mSelected = iOther.mSelected;
}

void Segment::setInterpolator(std::shared_ptr<Interpolator> iInterpolator)
{
    if (!iInterpolator || iInterpolator == mInterpolator)
        return;
    mInterpolator = std::move(iInterpolator);
    if (Splinor* curve = getOwningCurve())
        curve->announce(&SplinorObserver::segmentChanged, *this);
}

const char* Segment::getProperty(const char* iKey) const
{
    if (!mProperties || !iKey)
        return "";
    auto found = mProperties->find(iKey);
    return found == mProperties->end() ? "" : found->second.c_str();
}

void Segment::setProperty(const char* iKey, const char* iValue)
{
    if (!iKey)
        return;
    if (!iValue || !*iValue) {
        if (!mProperties || mProperties->erase(iKey) == 0)
            return;
        if (mProperties->empty())
            mProperties.reset();
    } else {
        if (!mProperties)
            mProperties = std::make_unique<std::map<std::string, std::string>>();
        std::string& value = (*mProperties)[iKey];
        if (value == iValue)
            return;
        value = iValue;
    }
    if (Splinor* curve = getOwningCurve())
        curve->announce(&SplinorObserver::segmentChanged, *this);
}

Splinor* Segment::getOwningCurve() const
{
    return mContent ? mContent->owner : nullptr;
}

void Segment::detach()
{
    mSelected = 0;
    mContent = nullptr;
    mPrevious = nullptr;
    mNext = nullptr;
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
