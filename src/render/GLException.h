#pragma once

#include "splinorlib/Exception.h"

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

/// A GL error met while pushing GL state. Nothing in the library catches it: it leaves the
/// paint and reaches whoever asked for it.
class GLException : public SplinorLib::v19::Exception
{
public:
    explicit GLException(unsigned int iError);
    GLException(const GLException& iOther);
    GLException& operator=(const GLException& iOther);
    ~GLException() override;

    /// The same text for every code; the code itself is in getError().
    const char* what() const noexcept override;

    /// The value glGetError gave, e.g. GL_STACK_OVERFLOW.
    unsigned int getError() const;

private:
    unsigned int mError;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
