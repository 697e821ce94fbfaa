#pragma once

#include <gtest/gtest.h>

#include <QImage>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>

#include <memory>

namespace EditorTest {

/// A real GL context, current on an off-screen surface and drawing into a framebuffer of the
/// given size, with a viewport over all of it.
class OffscreenGL
{
public:
    /// Fails the test under way if any step fails. With iSamples above 0 the framebuffer is
    /// multisampled, and image() gives it resolved.
    void create(int iWidth, int iHeight, int iSamples = 0,
        QOpenGLFramebufferObject::Attachment iAttachment = QOpenGLFramebufferObject::CombinedDepthStencil)
    {
        ASSERT_TRUE(mContext.create());
        mSurface.setFormat(mContext.format());
        mSurface.create();
        ASSERT_TRUE(mContext.makeCurrent(&mSurface));
        QOpenGLFramebufferObjectFormat format;
        format.setSamples(iSamples);
        format.setAttachment(iAttachment); // by default, as a widget has
        mFramebuffer = std::make_unique<QOpenGLFramebufferObject>(iWidth, iHeight, format);
        ASSERT_TRUE(mFramebuffer->bind());
        glViewport(0, 0, iWidth, iHeight);
    }

    /// Projection and model-view that put one unit on a pixel, from the framebuffer's lower left
    /// corner: pixel (i, j) covers [i, i + 1] x [j, j + 1].
    void usePixelUnits()
    {
        const QSize size = mFramebuffer->size();
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(0.0, size.width(), 0.0, size.height(), -1.0, 1.0);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
    }

    QOpenGLContext& context() { return mContext; }
    const QOpenGLFramebufferObject& framebuffer() const { return *mFramebuffer; }
    /// What was drawn; drawing goes on into the framebuffer, which resolving a multisampled one
    /// would otherwise leave unbound.
    QImage image() const
    {
        const QImage image = mFramebuffer->toImage();
        mFramebuffer->bind();
        return image;
    }

private:
    // Destroyed bottom up: the framebuffer while its context is current, the context before
    // the surface it is current on.
    QOffscreenSurface mSurface;
    QOpenGLContext mContext;
    std::unique_ptr<QOpenGLFramebufferObject> mFramebuffer;
};

/// The pixels where two images of one size differ.
inline int DifferentPixels(const QImage& iA, const QImage& iB)
{
    int count = 0;
    for (int y = 0; y < iA.height(); ++y)
        for (int x = 0; x < iA.width(); ++x)
            count += iA.pixel(x, y) != iB.pixel(x, y);
    return count;
}

} // namespace EditorTest
