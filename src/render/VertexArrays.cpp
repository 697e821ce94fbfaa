#include "render/VertexArrays.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <algorithm>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

namespace {

// A multiple of 1, 2, 3 and 4, so that a draw always ends on a whole primitive.
constexpr int cVerticesPerDraw = 480;

/// Client arrays for the life of a scope, read from client memory whatever buffer was bound.
class ClientArrays
{
public:
    explicit ClientArrays(bool iColoured)
    {
        glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
        if (QOpenGLContext* context = QOpenGLContext::currentContext())
            context->functions()->glBindBuffer(GL_ARRAY_BUFFER, 0);
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

void DrawColouredVertices(GLenum iMode, const ColouredVertex* iVertices, int iCount)
{
    const int perPrimitive = VerticesPerPrimitive(iMode);
    const int count = iCount / perPrimitive * perPrimitive;
    if (count <= 0)
        return;
    ClientArrays arrays(true);

    glVertexPointer(2, GL_FLOAT, sizeof(ColouredVertex), &iVertices->x);
    glColorPointer(4, GL_UNSIGNED_BYTE, sizeof(ColouredVertex), &iVertices->r);
    for (int first = 0; first < count; first += cVerticesPerDraw)
        glDrawArrays(iMode, first, std::min(cVerticesPerDraw, count - first));
}

void DrawLineStrip(const PlainVertex* iPoints, int iCount)
{
    const int count = iCount;
    if (count < 2)
        return;
    ClientArrays arrays(false);
    glVertexPointer(2, GL_FLOAT, sizeof(PlainVertex), &iPoints->x);
    // Each draw starts on the last point of the one before, so the strip stays unbroken.
    for (int first = 0; first < count - 1; first += cVerticesPerDraw - 1)
        glDrawArrays(GL_LINE_STRIP, first, std::min(cVerticesPerDraw, count - first));
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
