#include "splinorlib/SplinorContainer.h"

#include "splinorlib/Splinor.h"

#include <algorithm>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

std::shared_ptr<SplinorContainer> SplinorContainer::create()
{
    auto container = std::make_shared<SplinorContainer>(Key{});
    container->setShared(container);
    return container;
}

bool SplinorContainer::contains(const Splinor& iCurve) const
{
    return std::any_of(mCurves.begin(), mCurves.end(), [&](const auto& curve) { return curve.get() == &iCurve; });
}

void SplinorContainer::addCurve(std::shared_ptr<Splinor> iCurve)
{
    if (!iCurve || contains(*iCurve))
        return;
    mCurves.push_back(std::move(iCurve));
    mObservers.notify(&ContainerObserver::containerChanged, *this);
}

void SplinorContainer::clear()
{
    if (mCurves.empty())
        return;
    // Observers may look at the container; let them see it empty before the curves may die.
    List curves;
    curves.swap(mCurves);
    mObservers.notify(&ContainerObserver::containerChanged, *this);
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
