#pragma once

#include "CurveContent.h"
#include "splinorlib/Segment.h"
#include "splinorlib/Splinor.h"

#include <cstdint>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
namespace Private {

/// The selected state of items, kept in the items themselves so that it travels with
/// Splinor::createCopy and Splinor::swap. A segment carries one bit for itself and one for each
/// item it owns; the curve's content lists the segments with any bit set, in x order, so that a
/// walk over the selection costs what is selected, not what the curve holds.
struct SelectionAccess
{
    enum Bit : std::uint8_t { cSegmentBit = 1, cKeyBit = 2, cOutBit = 4, cInBit = 8 };

    static bool isSet(const Segment& iSegment, Bit iBit) { return iSegment.mSelected & iBit; }
    static std::uint8_t bits(const Segment& iSegment) { return iSegment.mSelected; }

    /// Sets or clears one bit and keeps the content's list in step; true if anything changed.
    static bool set(Segment& iSegment, Bit iBit, bool iOn)
    {
        const std::uint8_t before = iSegment.mSelected;
        const std::uint8_t after = iOn ? std::uint8_t(before | iBit) : std::uint8_t(before & ~iBit);
        if (before == after)
            return false;
        iSegment.mSelected = after;
        if (CurveContent* content = iSegment.mContent) {
            if (before == 0)
                content->selectedSegments.insert(&iSegment);
            else if (after == 0)
                content->selectedSegments.erase(&iSegment);
        }
        return true;
    }

    /// Clears every bit of the segment; true if anything changed.
    static bool clear(Segment& iSegment)
    {
        if (iSegment.mSelected == 0)
            return false;
        if (CurveContent* content = iSegment.mContent)
            content->selectedSegments.erase(&iSegment);
        iSegment.mSelected = 0;
        return true;
    }

    /// Clears the bits of every listed segment of a curve; true if any was listed.
    static bool clearAll(CurveContent& iContent)
    {
        if (iContent.selectedSegments.empty())
            return false;
        for (Segment* segment : iContent.selectedSegments)
            segment->mSelected = 0;
        iContent.selectedSegments.clear();
        return true;
    }

    /// Sets all the bits of the items that exist, in a segment that comes after every
    /// segment listed so far; for selecting whole curves in order.
    static void selectAllInOrder(Segment& iSegment)
    {
        std::uint8_t all = cSegmentBit;
        if (iSegment.getLeftKey())
            all |= cKeyBit | cOutBit;
        if (iSegment.getRightKey())
            all |= cInBit;
        if (iSegment.mSelected == 0 && iSegment.mContent)
            iSegment.mContent->selectedSegments.insert(iSegment.mContent->selectedSegments.end(), &iSegment);
        iSegment.mSelected = all;
    }

    static CurveContent& content(const Splinor& iCurve) { return *iCurve.mContent; }
    static Bit tangentBit(bool iIn) { return iIn ? cInBit : cOutBit; }
};

} // namespace Private
} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
