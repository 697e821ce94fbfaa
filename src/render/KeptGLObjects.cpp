#include "render/KeptGLObjects.h"

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QThread>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

namespace {

constexpr std::size_t cBlockAlignment = 16;

/// A binding of the host's, put back as it was at the end of a scope.
class BindingKept
{
public:
    BindingKept(GLenum iQuery, void (*iRebind)(GLuint))
        : mRebind(iRebind)
    {
        glGetIntegerv(iQuery, &mBound);
    }
    ~BindingKept() { mRebind(GLuint(mBound)); }
    BindingKept(const BindingKept&) = delete;
    BindingKept& operator=(const BindingKept&) = delete;

private:
    void (*mRebind)(GLuint);
    GLint mBound = 0;
};

QOpenGLExtraFunctions& Functions()
{
    return *QOpenGLContext::currentContext()->extraFunctions();
}

} // namespace

KeptGLObjects* KeptGLObjects::current()
{
    QOpenGLContext* context = QOpenGLContext::currentContext();
    if (!context || context->thread() != QThread::currentThread())
        return nullptr;
    if (auto* kept = context->findChild<KeptGLObjects*>(QString(), Qt::FindDirectChildrenOnly))
        return kept;
    return new KeptGLObjects(*context);
}

KeptGLObjects::KeptGLObjects(QOpenGLContext& ioContext)
    : QObject(&ioContext)
    , mContext(ioContext)
{
    // Once the context is gone its names mean nothing, and in a share group that outlives it
    // they would stay taken.
    connect(
        &ioContext, &QOpenGLContext::aboutToBeDestroyed, this, [this] { release(); }, Qt::DirectConnection);
}

GLuint KeptGLObjects::fillVertexBuffer(
    std::size_t iIndex, const void* const* iBlocks, const std::size_t* iSizes, int iCount, std::size_t* oOffsets)
{
    std::size_t total = 0;
    for (int i = 0; i < iCount; ++i) {
        oOffsets[i] = total;
        total += (iSizes[i] + cBlockAlignment - 1) / cBlockAlignment * cBlockAlignment;
    }
    QOpenGLExtraFunctions& gl = Functions();
    if (iIndex >= mVertexBuffers.size()) {
        const std::size_t first = mVertexBuffers.size();
        mVertexBuffers.resize(iIndex + 1, 0);
        mVertexCapacities.resize(iIndex + 1, 0);
        gl.glGenBuffers(GLsizei(iIndex + 1 - first), &mVertexBuffers[first]);
    }
    const GLuint buffer = mVertexBuffers[iIndex];
    std::size_t& capacity = mVertexCapacities[iIndex];
    const BindingKept bound(
        GL_ARRAY_BUFFER_BINDING, [](GLuint iBuffer) { Functions().glBindBuffer(GL_ARRAY_BUFFER, iBuffer); });
    gl.glBindBuffer(GL_ARRAY_BUFFER, buffer);
    if (total > capacity) {
        // A little room to spare, so that a drawing that grows a few vertices a paint doesn't
        // make new storage each time.
        const std::size_t room = total + total / 4;
        glGetError(); // whatever was pending is not ours
        gl.glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(room), nullptr, GL_STREAM_DRAW);
        capacity = glGetError() == GL_NO_ERROR ? room : 0;
        if (!capacity)
            return 0;
    }
    for (int i = 0; i < iCount; ++i)
        if (iSizes[i] > 0)
            gl.glBufferSubData(GL_ARRAY_BUFFER, GLintptr(oOffsets[i]), GLsizeiptr(iSizes[i]), iBlocks[i]);
    return buffer;
}

KeptGLObjects::PixelBlock KeptGLObjects::pixelBlock(int iWidth, int iHeight)
{
    QOpenGLExtraFunctions& gl = Functions();
    const bool made = mBlock.framebuffer != 0;
    if (!made) {
        glGenTextures(1, &mBlock.colours);
        glGenTextures(1, &mBlock.depthStencils);
        gl.glGenFramebuffers(1, &mBlock.framebuffer);
    }
    if (!made || iWidth != mBlockWidth || iHeight != mBlockHeight) {
        const BindingKept texture(
            GL_TEXTURE_BINDING_2D, [](GLuint iTexture) { glBindTexture(GL_TEXTURE_2D, iTexture); });
        glBindTexture(GL_TEXTURE_2D, mBlock.colours);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, iWidth, iHeight, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        glBindTexture(GL_TEXTURE_2D, mBlock.depthStencils);
        glTexImage2D(
            GL_TEXTURE_2D, 0, GL_DEPTH24_STENCIL8, iWidth, iHeight, 0, GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8, nullptr);
        mBlockWidth = iWidth;
        mBlockHeight = iHeight;
    }
    if (!made) {
        const BindingKept read(GL_READ_FRAMEBUFFER_BINDING,
            [](GLuint iFramebuffer) { Functions().glBindFramebuffer(GL_READ_FRAMEBUFFER, iFramebuffer); });
        gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, mBlock.framebuffer);
        gl.glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mBlock.colours, 0);
        gl.glFramebufferTexture2D(
            GL_READ_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_TEXTURE_2D, mBlock.depthStencils, 0);
    }
    return mBlock;
}

void KeptGLObjects::release()
{
    QOpenGLContext* const before = QOpenGLContext::currentContext();
    QSurface* const beforeSurface = before ? before->surface() : nullptr;
    const bool switched = before != &mContext;
    const auto forget = [this] {
        mVertexBuffers.clear();
        mVertexCapacities.clear();
        mBlock = {};
        mBlockWidth = mBlockHeight = 0;
    };
    // Without a way to make the context current the names go with it, or stay in its group.
    if (switched && !(mContext.surface() && mContext.makeCurrent(mContext.surface()))) {
        forget();
        return;
    }
    QOpenGLExtraFunctions& gl = Functions();
    if (!mVertexBuffers.empty())
        gl.glDeleteBuffers(GLsizei(mVertexBuffers.size()), mVertexBuffers.data());
    if (mBlock.framebuffer) {
        gl.glDeleteFramebuffers(1, &mBlock.framebuffer);
        const GLuint textures[2] = { mBlock.colours, mBlock.depthStencils };
        glDeleteTextures(2, textures);
    }
    forget();
    if (!switched)
        return;
    if (before && beforeSurface)
        before->makeCurrent(beforeSurface);
    else
        mContext.doneCurrent();
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
