#include "splinorlib/InterpolatorFactory.h"

#include "splinorlib/Interpolators.h"

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

InterpolatorFactory::Registry& InterpolatorFactory::registry()
{
    static Registry types{
        {"bezier()", &Bezier::create},
        {"constant()", &Constant::create},
        {"linear()", &Linear::create},
    };
    return types;
}

InterpolatorFactory::const_iterator InterpolatorFactory::begin()
{
    return registry().cbegin();
}

InterpolatorFactory::const_iterator InterpolatorFactory::end()
{
    return registry().cend();
}

std::shared_ptr<Interpolator> InterpolatorFactory::create(const char* iExpression)
{
    if (!iExpression)
        return nullptr;
    auto found = registry().find(iExpression);
    return found == registry().end() ? nullptr : found->second();
}

void InterpolatorFactory::registerType(const std::string& iExpression, Maker iMaker)
{
    if (iMaker)
        registry()[iExpression] = std::move(iMaker);
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
