#pragma once

#include "splinorlib/SharedFromThis.h"
#include "splinorlib/SubjectBase.h"
#include "splinorlib/TrackedObserver.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Splinor;
class SplinorContainer;

/// Observer of a container: told after curves were added or the container was cleared.
class ContainerObserver : public TrackedObserver
{
public:
    virtual void containerChanged(SplinorContainer&) {}
};

/// An ordered list of curves that are shown or edited together. It holds its curves by shared
/// pointer; a curve may stand in several containers at once.
class SplinorContainer : public SharedFromThis<SplinorContainer>,
                         public Private::SubjectBase<ContainerObserver>
{
    struct Key
    {
    };

public:
    using List = std::vector<std::shared_ptr<Splinor>>;
    using const_iterator = List::const_iterator;
    using iterator = const_iterator;

    static std::shared_ptr<SplinorContainer> create();
    explicit SplinorContainer(Key) {}
    SplinorContainer(const SplinorContainer&) = delete;
    SplinorContainer& operator=(const SplinorContainer&) = delete;

    /// A null curve, or one that is already here, is ignored.
    void addCurve(std::shared_ptr<Splinor> iCurve);
    void clear();

    std::size_t size() const { return mCurves.size(); }
    bool empty() const { return mCurves.empty(); }
    const_iterator begin() const { return mCurves.begin(); }
    const_iterator end() const { return mCurves.end(); }
    const std::shared_ptr<Splinor>& at(std::size_t iIndex) const { return mCurves[iIndex]; }
    bool contains(const Splinor& iCurve) const;

private:
    List mCurves;
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
