#pragma once

#include "splinorlib/HitRecord.h"

#include <cstddef>
#include <iterator>
#include <memory>
#include <set>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Segment;
class SplinorContainer;

namespace Private {
/// Orders segments by the x of their left key, read live: keys never change their order in
/// place, so a set under this order stays sorted while keys move.
struct ByLeftKey
{
    bool operator()(const Segment* a, const Segment* b) const;
};
using SelectedSegments = std::set<Segment*, ByLeftKey>;
} // namespace Private

/// Walks the candidates of a selection over a container: for each curve, in container order,
/// the curve's record, then the selected items of the curve in x order (a key, its out tangent,
/// the segment that starts there, and the in tangent at the segment's end). Only curves are
/// offered whether selected or not; Private::SelectionFilter passes over those that are not.
/// The walk visits what is selected plus one record per curve, never the whole curve.
class HitRecordIterator
{
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = HitRecord;
    using difference_type = std::ptrdiff_t;
    using pointer = const HitRecord*;
    using reference = const HitRecord&;

    HitRecordIterator() = default;
    /// At the first candidate of the curve at iCurveIndex; at the end for the container's size.
    HitRecordIterator(const SplinorContainer* iContainer, std::size_t iCurveIndex);

    reference operator*() const { return mRecord; }
    pointer operator->() const { return &mRecord; }

    HitRecordIterator& operator++();
    HitRecordIterator& operator--();
    HitRecordIterator operator++(int)
    {
        HitRecordIterator old = *this;
        ++*this;
        return old;
    }
    HitRecordIterator operator--(int)
    {
        HitRecordIterator old = *this;
        --*this;
        return old;
    }

    bool operator==(const HitRecordIterator& o) const
    {
        return mCurve == o.mCurve && mPart == o.mPart && (mPart < 0 || mEntry == o.mEntry);
    }
    bool operator!=(const HitRecordIterator& o) const { return !(*this == o); }

private:
    // The parts of one listed segment, in x order.
    enum Part : int { cCurvePart = -1, cKeyPart = 0, cOutPart = 1, cSegmentPart = 2, cInPart = 3, cPartCount = 4 };

    const Private::SelectedSegments* entries() const;
    bool partIsSelected() const;
    bool stepForward();  // one raw step; false at the end
    bool stepBackward(); // one raw step; false at the very beginning
    void load();

    const SplinorContainer* mContainer = nullptr;
    std::size_t mCurve = 0;
    int mPart = cCurvePart;
    Private::SelectedSegments::const_iterator mEntry{};
    HitRecord mRecord;
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
