#include "render/KeptGLObjects.h"

#include "OffscreenGL.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

using namespace Ovantis::SplinorEditorQtLib::v22;
using EditorTest::OffscreenGL;

namespace {

/// The bytes of the buffer bound to GL_ARRAY_BUFFER, iSize of them from iOffset on.
std::vector<char> ArrayBufferBytes(std::size_t iOffset, std::size_t iSize)
{
    QOpenGLExtraFunctions& gl = *QOpenGLContext::currentContext()->extraFunctions();
    std::vector<char> bytes(iSize);
    const void* mapped = gl.glMapBufferRange(GL_ARRAY_BUFFER, GLintptr(iOffset), GLsizeiptr(iSize), GL_MAP_READ_BIT);
    if (mapped)
        std::memcpy(bytes.data(), mapped, iSize);
    gl.glUnmapBuffer(GL_ARRAY_BUFFER);
    return bytes;
}

std::vector<char> Bytes(std::size_t iCount, char iFirst)
{
    std::vector<char> bytes(iCount);
    for (std::size_t i = 0; i < iCount; ++i)
        bytes[i] = char(iFirst + i);
    return bytes;
}

} // namespace

TEST(KeptGLObjects, a_set_a_context_deleted_with_it_from_whichever_context_is_current)
{
    EXPECT_EQ(KeptGLObjects::current(), nullptr) << "no context is current";

    auto first = std::make_unique<OffscreenGL>();
    first->create(8, 8);
    KeptGLObjects* kept = KeptGLObjects::current();
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(KeptGLObjects::current(), kept);
    const std::vector<char> block = Bytes(40, 'a');
    const void* blocks[] = { block.data() };
    const std::size_t sizes[] = { block.size() };
    std::size_t offsets[1];
    const GLuint buffer = kept->fillVertexBuffer(0, blocks, sizes, 1, offsets);
    const KeptGLObjects::PixelBlock pixels = kept->pixelBlock(4, 4);
    ASSERT_NE(buffer, 0u);
    ASSERT_NE(pixels.colours, 0u);

    // A second context in the first one's share group sees the same objects, and keeps its own.
    QOpenGLContext second;
    second.setFormat(first->context().format());
    second.setShareContext(&first->context());
    ASSERT_TRUE(second.create());
    QOffscreenSurface surface;
    surface.setFormat(second.format());
    surface.create();
    ASSERT_TRUE(second.makeCurrent(&surface));
    EXPECT_NE(KeptGLObjects::current(), kept);
    QOpenGLExtraFunctions& gl = *second.extraFunctions();
    EXPECT_TRUE(gl.glIsBuffer(buffer));
    EXPECT_TRUE(glIsTexture(pixels.colours));

    // Gone with the first context, though the group lives on in the second, which stays current.
    first.reset();
    EXPECT_EQ(QOpenGLContext::currentContext(), &second);
    EXPECT_FALSE(gl.glIsBuffer(buffer));
    EXPECT_FALSE(glIsTexture(pixels.colours));
    EXPECT_FALSE(glIsTexture(pixels.depthStencils));
}

TEST(KeptGLObjects, vertex_buffers_hold_their_blocks_apart_and_leave_the_host_binding_alone)
{
    OffscreenGL gl;
    gl.create(8, 8);
    QOpenGLExtraFunctions& functions = *gl.context().extraFunctions();
    KeptGLObjects& kept = *KeptGLObjects::current();
    GLuint hostBuffer = 0;
    functions.glGenBuffers(1, &hostBuffer);
    functions.glBindBuffer(GL_ARRAY_BUFFER, hostBuffer);

    GLuint buffers[2] = {};
    for (const std::size_t grown : { 20, 3000 }) { // the second round makes new storage
        const std::vector<char> a = Bytes(grown, 'a'), c = Bytes(grown / 2 + 1, 'A');
        const void* blocks[] = { a.data(), nullptr, c.data() };
        const std::size_t sizes[] = { a.size(), 0, c.size() };
        std::size_t offsets[3];
        buffers[0] = kept.fillVertexBuffer(0, blocks, sizes, 3, offsets);
        buffers[1] = kept.fillVertexBuffer(3, blocks, sizes, 3, offsets);
        ASSERT_NE(buffers[0], 0u);
        EXPECT_NE(buffers[0], buffers[1]) << "each index has a buffer of its own";
        GLint bound = 0;
        glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &bound);
        EXPECT_EQ(GLuint(bound), hostBuffer);

        EXPECT_EQ(offsets[0], 0u);
        EXPECT_EQ(offsets[2] % 16, 0u);
        EXPECT_GE(offsets[2], a.size());
        for (const GLuint buffer : buffers) {
            functions.glBindBuffer(GL_ARRAY_BUFFER, buffer);
            EXPECT_EQ(ArrayBufferBytes(offsets[0], a.size()), a);
            EXPECT_EQ(ArrayBufferBytes(offsets[2], c.size()), c);
        }
        functions.glBindBuffer(GL_ARRAY_BUFFER, hostBuffer);
    }
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
}

TEST(KeptGLObjects, the_pixel_block_takes_each_size_asked_for_and_stays_readable)
{
    OffscreenGL gl;
    gl.create(8, 8);
    QOpenGLExtraFunctions& functions = *gl.context().extraFunctions();
    KeptGLObjects& kept = *KeptGLObjects::current();
    GLint hostRead = 0;
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &hostRead);

    const KeptGLObjects::PixelBlock small = kept.pixelBlock(5, 3);
    const KeptGLObjects::PixelBlock large = kept.pixelBlock(300, 200);
    EXPECT_EQ(large.framebuffer, small.framebuffer);
    GLint read = 0;
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &read);
    EXPECT_EQ(read, hostRead);

    for (const GLuint texture : { large.colours, large.depthStencils }) {
        glBindTexture(GL_TEXTURE_2D, texture);
        GLint width = 0, height = 0;
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
        EXPECT_EQ(width, 300);
        EXPECT_EQ(height, 200);
    }
    functions.glBindFramebuffer(GL_READ_FRAMEBUFFER, large.framebuffer);
    EXPECT_EQ(functions.glCheckFramebufferStatus(GL_READ_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
    functions.glBindFramebuffer(GL_READ_FRAMEBUFFER, GLuint(hostRead));
}
