#pragma once

#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

/// An iterator that dereferences to projection(*base): walks one range and shows another view
/// of each element, such as the value inside a wrapper.
template <class Projection, class Iterator>
class ProjectionIterator
{
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using reference = decltype(std::declval<const Projection&>()(*std::declval<const Iterator&>()));
    using value_type = std::remove_cv_t<std::remove_reference_t<reference>>;
    using difference_type = std::ptrdiff_t;
    using pointer = std::add_pointer_t<std::remove_reference_t<reference>>;

    ProjectionIterator() = default;
    explicit ProjectionIterator(Iterator iBase, Projection iProjection = Projection())
        : mBase(std::move(iBase)), mProjection(std::move(iProjection))
    {
    }

    reference operator*() const { return mProjection(*mBase); }
    pointer operator->() const { return std::addressof(**this); }

    ProjectionIterator& operator++()
    {
        ++mBase;
        return *this;
    }
    ProjectionIterator operator++(int)
    {
        ProjectionIterator old = *this;
        ++mBase;
        return old;
    }
    ProjectionIterator& operator--()
    {
        --mBase;
        return *this;
    }
    ProjectionIterator operator--(int)
    {
        ProjectionIterator old = *this;
        --mBase;
        return old;
    }

    bool operator==(const ProjectionIterator& o) const { return mBase == o.mBase; }
    bool operator!=(const ProjectionIterator& o) const { return !(*this == o); }

    const Iterator& base() const { return mBase; }

private:
    Iterator mBase{};
    Projection mProjection{};
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
