#include "render/VertexArrays.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <algorithm>
#include <cstddef>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

namespace {

// A multiple of 1, 2, 3 and 4, so that a draw always ends on a whole primitive.
constexpr int cVerticesPerDraw = 480;

/// Client arrays for the life of a scope, read from the source's buffer whatever buffer was bound.
class ClientArrays
{
public:
    ClientArrays(bool iColoured, GLuint iBuffer)
    {
        glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
        if (QOpenGLContext* context = QOpenGLContext::currentContext())
            context->functions()->glBindBuffer(GL_ARRAY_BUFFER, iBuffer);
        glEnableClientState(GL_VERTEX_ARRAY);
        if (iColoured)
            glEnableClientState(GL_COLOR_ARRAY);
    }
    ~ClientArrays() { glPopClientAttrib(); }
    ClientArrays(const ClientArrays&) = delete;
    ClientArrays& operator=(const ClientArrays&) = delete;
};

} // namespace

int VerticesPerPrimitive(GLenum iMode)
{
    switch (iMode) {
    case GL_TRIANGLES:
        return 3;
    case GL_QUADS:
        return 4;
    case GL_POINTS:
        return 1;
    default:
        return 2;
    }
}

void DrawColouredVertices(GLenum iMode, VertexSource iVertices, int iCount)
{
    const int perPrimitive = VerticesPerPrimitive(iMode);
    const int count = iCount / perPrimitive * perPrimitive;
    if (count <= 0)
        return;
    ClientArrays arrays(true, iVertices.buffer);

    glVertexPointer(2, GL_FLOAT, sizeof(ColouredVertex), iVertices.at(offsetof(ColouredVertex, x)));
    glColorPointer(4, GL_UNSIGNED_BYTE, sizeof(ColouredVertex), iVertices.at(offsetof(ColouredVertex, r)));
    for (int first = 0; first < count; first += cVerticesPerDraw)
        glDrawArrays(iMode, first, std::min(cVerticesPerDraw, count - first));
}

void DrawLineStrip(VertexSource iPoints, int iCount)
{
    const int count = iCount;
    if (count < 2)
        return;
    ClientArrays arrays(false, iPoints.buffer);
    glVertexPointer(2, GL_FLOAT, sizeof(PlainVertex), iPoints.at(offsetof(PlainVertex, x)));
    // Each draw starts on the last point of the one before, so the strip stays unbroken.
    for (int first = 0; first < count - 1; first += cVerticesPerDraw - 1)
        glDrawArrays(GL_LINE_STRIP, first, std::min(cVerticesPerDraw, count - first));
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
