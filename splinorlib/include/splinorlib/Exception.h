#pragma once

#include <exception>
#include <string>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

/// The model's one exception type. Bad input never raises it: the model leaves things as they
/// are instead. It is kept for hosts that wrap the model and want a type of its own to throw.
class Exception : public std::exception
{
public:
    explicit Exception(std::string iWhat) : mWhat(std::move(iWhat)) {}
    const char* what() const noexcept override { return mWhat.c_str(); }

private:
    std::string mWhat;
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
