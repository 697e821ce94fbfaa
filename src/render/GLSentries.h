#pragma once

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

/// Keeps the GL attribute groups named by a mask for the life of a scope: glPushAttrib on
/// construction, glPopAttrib on destruction. A push that raises a GL error throws GLException
/// and leaves nothing to pop; an error already pending before the push is dropped, not thrown.
class GLAttributeSentry
{
public:
    explicit GLAttributeSentry(unsigned int iMask);
    ~GLAttributeSentry();
    GLAttributeSentry(const GLAttributeSentry&) = delete;
    GLAttributeSentry& operator=(const GLAttributeSentry&) = delete;
};

/// The same guard for the current matrix stack, around glPushMatrix and glPopMatrix. The
/// matrix mode must be the same at both ends of the scope.
class GLMatrixSentry
{
public:
    GLMatrixSentry();
    ~GLMatrixSentry();
    GLMatrixSentry(const GLMatrixSentry&) = delete;
    GLMatrixSentry& operator=(const GLMatrixSentry&) = delete;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
