#include "splinorlib/HitRecordIterator.h"

#include "SelectionAccess.h"
#include "splinorlib/Keyframe.h"
#include "splinorlib/Segment.h"
#include "splinorlib/Splinor.h"
#include "splinorlib/SplinorContainer.h"
#include "splinorlib/Tangent.h"

#include <iterator>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

using Private::SelectionAccess;

HitRecordIterator::HitRecordIterator(const SplinorContainer* iContainer, std::size_t iCurveIndex)
    : mContainer(iContainer), mCurve(iCurveIndex)
{
    load();
}

const Private::SelectedSegments* HitRecordIterator::entries() const
{
    return &SelectionAccess::content(*mContainer->at(mCurve)).selectedSegments;
}

bool HitRecordIterator::partIsSelected() const
{
    static constexpr SelectionAccess::Bit cBits[cPartCount] = {SelectionAccess::cKeyBit, SelectionAccess::cOutBit,
                                                                SelectionAccess::cSegmentBit, SelectionAccess::cInBit};
    return SelectionAccess::isSet(**mEntry, cBits[mPart]);
}

bool HitRecordIterator::stepForward()
{
    if (!mContainer || mCurve >= mContainer->size())
        return false;
    if (mPart == cCurvePart) {
        mEntry = entries()->begin();
        if (mEntry == entries()->end())
            ++mCurve;
        else
            mPart = cKeyPart;
        return true;
    }
    if (++mPart < cPartCount)
        return true;
    if (++mEntry != entries()->end()) {
        mPart = cKeyPart;
        return true;
    }
    ++mCurve;
    mPart = cCurvePart;
    return true;
}

bool HitRecordIterator::stepBackward()
{
    if (!mContainer)
        return false;
    if (mPart == cCurvePart) {
        if (mCurve == 0)
            return false;
        --mCurve;
        if (!entries()->empty()) {
            mEntry = std::prev(entries()->end());
            mPart = cInPart;
        }
        return true;
    }
    if (--mPart >= 0)
        return true;
    if (mEntry != entries()->begin()) {
        --mEntry;
        mPart = cInPart;
    }
    // Otherwise mPart is now the curve's own record.
    return true;
}

HitRecordIterator& HitRecordIterator::operator++()
{
    while (stepForward() && mPart != cCurvePart && !partIsSelected()) {
    }
    load();
    return *this;
}

HitRecordIterator& HitRecordIterator::operator--()
{
    while (stepBackward() && mPart != cCurvePart && !partIsSelected()) {
    }
    load();
    return *this;
}

void HitRecordIterator::load()
{
    if (!mContainer || mCurve >= mContainer->size()) {
        mRecord.reset();
        return;
    }
    if (mPart == cCurvePart) {
        mRecord.reset(mContainer->at(mCurve));
        return;
    }
    Segment& segment = **mEntry;
    switch (mPart) {
    case cKeyPart: mRecord.reset(segment.getLeftKey()->getShared()); break;
    case cOutPart: mRecord.reset(segment.getOutTangent()->getShared(), true); break;
    case cSegmentPart: mRecord.reset(segment.getShared()); break;
    default: mRecord.reset(segment.getInTangent()->getShared(), true); break;
    }
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
