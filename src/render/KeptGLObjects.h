#pragma once

#include <QObject>
#include <qopengl.h>

#include <cstddef>
#include <vector>

class QOpenGLContext;

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

/// GL objects that paints reuse rather than make anew, one set a context, gone with it. A
/// software rasteriser keeps what it stores in the heap: objects made for one paint and deleted
/// after it hand their memory back, and the next paint pays for every page again.
///
/// Everything here works on the current context, and leaves the bindings of the host as they were.
class KeptGLObjects : public QObject
{
    Q_OBJECT

public:
    /// The set of the current context, made on first use. None without a current context, or
    /// with one that lives on another thread, as a context shared with a painting thread may:
    /// the set is a child of its context.
    static KeptGLObjects* current();

    /// Vertex buffer iIndex of a row of them, filled with the iCount blocks of iBlocks, each of
    /// iSizes[i] bytes, one after the other from offset 0; each block starts on a multiple of 16
    /// bytes, at oOffsets[i]. A buffer is never refilled within a paint, so that GL never waits
    /// for the draws that read it. 0 if GL could not store them.
    GLuint fillVertexBuffer(
        std::size_t iIndex, const void* const* iBlocks, const std::size_t* iSizes, int iCount, std::size_t* oOffsets);

    /// A framebuffer for reading, over an RGBA8 colour texture and a 24/8 depth and stencil
    /// texture of the given size, their contents undefined; all 0 if GL has none such. GL 3.0 or
    /// later, and no pixel unpack buffer bound.
    struct PixelBlock
    {
        GLuint framebuffer = 0, colours = 0, depthStencils = 0;
    };
    PixelBlock pixelBlock(int iWidth, int iHeight);

private:
    explicit KeptGLObjects(QOpenGLContext& ioContext);
    /// Deletes the objects, making the context current for it if need be.
    void release();

    QOpenGLContext& mContext;
    std::vector<GLuint> mVertexBuffers;
    std::vector<std::size_t> mVertexCapacities;
    PixelBlock mBlock;
    int mBlockWidth = 0, mBlockHeight = 0;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
