#pragma once

#include "splinorlib/Interpolator.h"

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

/// The interpolator types by name, in sorted order: "bezier()", "constant()", "linear()", and
/// whatever a host registers. The walk from begin() to end() gives (name, maker) pairs.
class InterpolatorFactory
{
public:
    using Maker = std::function<std::shared_ptr<Interpolator>()>;
    using Registry = std::map<std::string, Maker>;
    using const_iterator = Registry::const_iterator;

    static const_iterator begin();
    static const_iterator end();

    /// A new interpolator of that name; null for an unknown name or a null pointer.
    static std::shared_ptr<Interpolator> create(const char* iExpression);

    /// Adds or replaces a type. Not thread-safe, like the rest of the model.
    static void registerType(const std::string& iExpression, Maker iMaker);

private:
    static Registry& registry();
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
