#pragma once

#include "splinorlib/FilterIterator.h"
#include "splinorlib/ProjectionIterator.h"

#include <cstdint>
#include <iterator>
#include <utility>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

/// A container whose elements may be erased while it is being walked, even by the code that
/// the walk calls. While any walk holds an IterationGuard, erasing only marks an element
/// invalid; the filtering iterators pass over it, and the outermost guard removes it when the
/// walk ends. Without a walk in progress, erasing removes at once.
///
/// Container is a template over the stored Data: a std::list-like sequence, or an ordered set
/// (see Private::SetWrapper). Its iterators must stay valid when other elements are inserted
/// or removed.
template <class T, template <class> class Container>
class DelayedErase
{
public:
    struct Data
    {
        Data(T iValue, bool iValid) : value(std::move(iValue)), valid(iValid) {}

        T value;
        // Mutable so that ordered containers, whose elements are const, can mark them too.
        mutable bool valid;
    };

    struct Filter
    {
        bool operator()(const Data& d) const { return d.valid; }
    };
    using CFilter = Filter;

    struct Projection
    {
        T& operator()(const Data& d) const { return const_cast<T&>(d.value); }
    };
    struct CProjection
    {
        const T& operator()(const Data& d) const { return d.value; }
    };

    using container_type = Container<Data>;
    using raw_iterator = typename container_type::iterator;
    using raw_const_iterator = typename container_type::const_iterator;
    using iterator = ProjectionIterator<Projection, FilterIterator<Filter, raw_iterator>>;
    using const_iterator = ProjectionIterator<CProjection, FilterIterator<CFilter, raw_const_iterator>>;

    /// Holds a walk open: erasures are delayed until the outermost guard ends.
    class IterationGuard
    {
    public:
        explicit IterationGuard(DelayedErase& iOwner) : mOwner(iOwner) { ++mOwner.mIterationDepth; }
        ~IterationGuard() { mOwner.flush(); }
        IterationGuard(const IterationGuard&) = delete;
        IterationGuard& operator=(const IterationGuard&) = delete;

    private:
        DelayedErase& mOwner;
    };

    DelayedErase() = default;
    DelayedErase(const DelayedErase&) = delete;
    DelayedErase& operator=(const DelayedErase&) = delete;

    raw_iterator insert(raw_const_iterator iPosition, T iValue)
    {
        return mContainer.insert(iPosition, Data(std::move(iValue), true));
    }

    void erase(raw_iterator iPosition)
    {
        if (iPosition == mContainer.end())
            return;
        if (mIterationDepth != 0) {
            iPosition->valid = false;
            mErasePending = true;
            return;
        }
        mContainer.erase(iPosition);
    }
    void erase(const iterator& iPosition) { erase(iPosition.base().base()); }

    iterator begin() { return makeIterator(mContainer.begin()); }
    iterator end() { return makeIterator(mContainer.end()); }
    const_iterator begin() const { return makeIterator(mContainer.begin()); }
    const_iterator end() const { return makeIterator(mContainer.end()); }

    iterator makeIterator(raw_iterator iPosition)
    {
        return iterator(FilterIterator<Filter, raw_iterator>(iPosition, mContainer.end()));
    }
    const_iterator makeIterator(raw_const_iterator iPosition) const
    {
        return const_iterator(FilterIterator<CFilter, raw_const_iterator>(iPosition, mContainer.cend()));
    }

    /// The stored Data, valid or not. For lookups and for code that needs to see marked elements.
    container_type& getContainer() { return mContainer; }
    const container_type& getContainer() const { return mContainer; }

    std::int32_t getIterationDepth() const { return mIterationDepth; }
    bool isErasePending() const { return mErasePending; }

protected:
    ~DelayedErase() = default;

private:
    // Kept out of line on purpose. Inlined into a walk that is left by an exception, GCC 12 at
    // -O2 drops its stores to mIterationDepth (dead-store elimination across the landing pad),
    // and the container would count as walked for ever after, never erasing again.
    [[gnu::noinline]] void flush() noexcept
    {
        --mIterationDepth;
        if (mIterationDepth != 0 || !mErasePending)
            return;
        // Destroying a value may erase further elements; the depth of 1 keeps those erasures
        // delayed so that this loop never loses its place, and the outer loop collects them.
        do {
            mIterationDepth = 1;
            mErasePending = false;
            for (auto it = mContainer.begin(); it != mContainer.end();) {
                auto next = std::next(it);
                if (!it->valid)
                    mContainer.erase(it);
                it = next;
            }
            mIterationDepth = 0;
        } while (mErasePending);
    }

    container_type mContainer;
    std::int32_t mIterationDepth = 0;
    bool mErasePending = false;
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
