#include "render/GLException.h"

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

namespace {
const char* const cWhat = "Ovantis::SplinorLib::GLException";
}

GLException::GLException(unsigned int iError)
    : Exception(cWhat)
    , mError(iError)
{
}

GLException::GLException(const GLException& iOther) = default;
GLException& GLException::operator=(const GLException& iOther) = default;
GLException::~GLException() = default;

const char* GLException::what() const noexcept
{
    return cWhat;
}

unsigned int GLException::getError() const
{
    return mError;
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
