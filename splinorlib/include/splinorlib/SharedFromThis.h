#pragma once

#include <memory>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

namespace Private {
class SharedFromThisBase
{
};
} // namespace Private

/// A weak reference from an object to the shared_ptr that owns it.
///
/// Objects with this base are made in three steps: `new`, wrap in a std::shared_ptr, then
/// `setShared` with that pointer. Unlike std::enable_shared_from_this the owner may be any
/// shared_ptr, including an aliasing one that shares the control block of a larger object.
/// A copy does not inherit the reference: a copied object is a new object with no owner yet.
template <class T>
class SharedFromThis : public Private::SharedFromThisBase
{
public:
    SharedFromThis() = default;
    SharedFromThis(const SharedFromThis&) noexcept {}
    SharedFromThis& operator=(const SharedFromThis&) noexcept { return *this; }

    void setShared(std::shared_ptr<T> iOwner) { mWeakThis = iOwner; }

    /// Empty when setShared was never called or the owner has gone; never throws.
    std::shared_ptr<T> getShared() noexcept { return mWeakThis.lock(); }
    std::shared_ptr<const T> getShared() const noexcept { return mWeakThis.lock(); }

protected:
    ~SharedFromThis() = default;

private:
    std::weak_ptr<T> mWeakThis;
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
