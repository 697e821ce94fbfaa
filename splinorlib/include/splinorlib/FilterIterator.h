#pragma once

#include <iterator>
#include <utility>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

/// Walks the elements of [current, end) that the filter accepts, skipping the others whenever
/// it is made or moved. Two iterators are equal when their positions are.
template <class Filter, class Iterator>
class FilterIterator
{
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = typename std::iterator_traits<Iterator>::value_type;
    using difference_type = typename std::iterator_traits<Iterator>::difference_type;
    using pointer = typename std::iterator_traits<Iterator>::pointer;
    using reference = typename std::iterator_traits<Iterator>::reference;

    FilterIterator() = default;
    FilterIterator(Iterator iCurrent, Iterator iEnd, Filter iFilter = Filter())
        : mCurrent(std::move(iCurrent)), mEnd(std::move(iEnd)), mFilter(std::move(iFilter))
    {
        skipForward();
    }

    reference operator*() const { return *mCurrent; }
    pointer operator->() const { return &*mCurrent; }

    FilterIterator& operator++()
    {
        ++mCurrent;
        skipForward();
        return *this;
    }
    FilterIterator operator++(int)
    {
        FilterIterator old = *this;
        ++*this;
        return old;
    }

    /// Like any bidirectional iterator, this must not be moved before the first accepted element.
    FilterIterator& operator--()
    {
        do {
            --mCurrent;
        } while (!mFilter(*mCurrent));
        return *this;
    }
    FilterIterator operator--(int)
    {
        FilterIterator old = *this;
        --*this;
        return old;
    }

    bool operator==(const FilterIterator& o) const { return mCurrent == o.mCurrent; }
    bool operator!=(const FilterIterator& o) const { return !(*this == o); }

    const Iterator& base() const { return mCurrent; }
    const Iterator& end() const { return mEnd; }

private:
    void skipForward()
    {
        while (mCurrent != mEnd && !mFilter(*mCurrent))
            ++mCurrent;
    }

    Iterator mCurrent{};
    Iterator mEnd{};
    Filter mFilter{};
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
