#pragma once

#include <qopengl.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

/// A position in the current GL coordinates with its colour, as batches of glyphs hold them.
/// The colour has 8 bits a channel, as the framebuffer does: a dense paint moves hundreds of
/// thousands of these through memory several times, and float channels would double that.
struct ColouredVertex
{
    GLfloat x, y;
    GLubyte r, g, b, a;

    bool isOpaque() const { return a == 255; }
};

/// A position for a line strip, whose colour is the current one.
struct PlainVertex
{
    GLfloat x, y;

    bool operator==(const PlainVertex& iOther) const { return x == iOther.x && y == iOther.y; }
};

// Both routines draw in draws of a few hundred vertices. Mesa's software
// rasteriser, which draws smoothed lines through a pipeline whose per-flush work grows with the
// vertices of the whole draw, takes quadratic time on one large draw, and a call per primitive
// costs more than the primitive; a few hundred vertices a draw sits between. They leave the
// client array state as they found it.

/// Where a draw reads its first vertex: at an address in client memory (buffer 0), or at a byte
/// offset in a buffer object.
struct VertexSource
{
    GLuint buffer;
    std::uintptr_t start;

    static VertexSource InClientMemory(const void* iStart) { return { 0, reinterpret_cast<std::uintptr_t>(iStart) }; }
    static VertexSource InBuffer(GLuint iBuffer, std::size_t iOffset) { return { iBuffer, iOffset }; }
    /// Where GL is to read the byte iByte from the start, as it takes addresses and offsets alike.
    const void* at(std::size_t iByte) const { return reinterpret_cast<const void*>(start + iByte); }
};

/// Independent primitives of iMode (GL_POINTS, GL_LINES, GL_TRIANGLES or GL_QUADS), each vertex coloured.
void DrawColouredVertices(GLenum iMode, VertexSource iVertices, int iCount);
inline void DrawColouredVertices(GLenum iMode, const ColouredVertex* iVertices, int iCount)
{
    DrawColouredVertices(iMode, VertexSource::InClientMemory(iVertices), iCount);
}
inline void DrawColouredVertices(GLenum iMode, const std::vector<ColouredVertex>& iVertices)
{
    DrawColouredVertices(iMode, iVertices.data(), int(iVertices.size()));
}

/// A line strip in the current colour; fewer than two points draw nothing.
void DrawLineStrip(VertexSource iPoints, int iCount);
inline void DrawLineStrip(const PlainVertex* iPoints, int iCount)
{
    DrawLineStrip(VertexSource::InClientMemory(iPoints), iCount);
}
inline void DrawLineStrip(const std::vector<PlainVertex>& iPoints)
{
    DrawLineStrip(iPoints.data(), int(iPoints.size()));
}

/// The vertices of one primitive of iMode: 1 for points, 2 for lines, 3 for triangles, 4 for quads.
int VerticesPerPrimitive(GLenum iMode);

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
