#include "render/GLSentries.h"

#include "render/GLException.h"

#include <qopengl.h>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

namespace {

// The error flag may hold something left by code that ran before us; a sentry reports only
// what its own push raised.
void DropPendingGLError()
{
    glGetError();
}

void ThrowIfPushFailed()
{
    const GLenum error = glGetError();
    if (error != GL_NO_ERROR)
        throw GLException(error);
}

} // namespace

GLAttributeSentry::GLAttributeSentry(unsigned int iMask)
{
    DropPendingGLError();
    glPushAttrib(iMask);
    ThrowIfPushFailed();
}

GLAttributeSentry::~GLAttributeSentry()
{
    glPopAttrib();
}

GLMatrixSentry::GLMatrixSentry()
{
    DropPendingGLError();
    glPushMatrix();
    ThrowIfPushFailed();
}

GLMatrixSentry::~GLMatrixSentry()
{
    glPopMatrix();
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
