#include "EditorTestUtil.h"
#include "render/OffscreenGL.h"

#include <gtest/gtest.h>

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <qopengl.h>

#include <array>
#include <list>
#include <memory>
#include <utility>
#include <vector>

using namespace EditorTest;
namespace SE = Ovantis::SplinorEditorQtLib::v22; // the fixtures below take the names of the routines

namespace {

// A flat fill: a colour given as n/255 and drawn opaque comes back as n, but a blend at half
// opacity is rounded to eight bits per channel, which may go either way.
constexpr int cFlatTolerance = 1;
// An interpolated colour: one step for the rasteriser's own rounding, one for the truncation
// of the mixed bevel colours, which the expected values below take as exact thirds.
constexpr int cGradientTolerance = 2;

QColor Mix(const QColor& iFrom, const QColor& iTo, double iT)
{
    const auto mix = [iT](int iA, int iB) { return static_cast<int>(iA + (iB - iA) * iT + 0.5); };
    return QColor(mix(iFrom.red(), iTo.red()), mix(iFrom.green(), iTo.green()), mix(iFrom.blue(), iTo.blue()));
}

std::array<float, 4> CurrentColor()
{
    std::array<float, 4> color {};
    glGetFloatv(GL_CURRENT_COLOR, color.data());
    return color;
}

GLint GetInteger(GLenum iName)
{
    GLint value = 0;
    glGetIntegerv(iName, &value);
    return value;
}

/// A real GL context drawing into a square framebuffer, with the projection of the view: one
/// world unit per pixel, y upward, so that pixel (i, j) covers [i, i + 1] x [j, j + 1].
class GLCanvas : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(mGL.create(128, 128));
        mGL.usePixelUnits();
        // The state every test starts from, and expects back from the routines under test.
        glDisable(GL_BLEND);
        glColor4f(0.25f, 0.5f, 0.75f, 1.0f);
        ASSERT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    }

    static void clear(const QColor& iColor)
    {
        glClearColor(static_cast<float>(iColor.redF()), static_cast<float>(iColor.greenF()),
            static_cast<float>(iColor.blueF()), 1);
        glClear(GL_COLOR_BUFFER_BIT);
    }

    static QColor pixel(int iX, int iY)
    {
        std::array<GLubyte, 4> rgba {};
        glReadPixels(iX, iY, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
        return QColor(rgba[0], rgba[1], rgba[2]);
    }

    static void expectStateAsSetUp()
    {
        EXPECT_FALSE(glIsEnabled(GL_BLEND));
        EXPECT_EQ(CurrentColor(), (std::array<float, 4> { 0.25f, 0.5f, 0.75f, 1.0f }));
    }

private:
    OffscreenGL mGL;
};

// --- Sentries ---------------------------------------------------------------------------------

using GLSentries = GLCanvas;

// Their pops are checked by the drawing routines below, which must give the state back, and by
// the widget's paint, which must leave the projection stack as it found it.
TEST_F(GLSentries, push_past_the_attribute_stack_throws_overflow_but_an_error_pending_before_the_push_does_not)
{
    const GLint maxDepth = GetInteger(GL_MAX_ATTRIB_STACK_DEPTH);
    std::list<GLAttributeSentry> sentries;
    unsigned int error = GL_NO_ERROR;
    glEnable(0xFFFF);
    ASSERT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_ENUM)) << "the driver must flag the bad enable";

    glEnable(0xFFFF);
    EXPECT_NO_THROW({ GLMatrixSentry sentry; });
    glEnable(0xFFFF);
    // Caught as the library's exception, which is what a host catches.
    try {
        while (static_cast<GLint>(sentries.size()) <= maxDepth)
            sentries.emplace_back(GL_CURRENT_BIT);
    } catch (const Exception& e) {
        error = dynamic_cast<const GLException&>(e).getError();
    }
    const auto built = static_cast<GLint>(sentries.size());
    sentries.clear();

    EXPECT_EQ(error, static_cast<unsigned int>(GL_STACK_OVERFLOW));
    EXPECT_EQ(built, maxDepth) << "the first sentry must not throw the pending error, the last must pop nothing";
    // One pop too many would leave GL_STACK_UNDERFLOW behind.
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

// --- Drawing ----------------------------------------------------------------------------------

using DrawBevelledRectangle = GLCanvas;

// x0 = 10, x1 = 20, x2 = 100, x3 = 110; y0 = 20, y1 = 50, y2 = 80, y3 = 110.
const Rect cBar(10.0, 20.0, 100.0, 90.0);
constexpr float cBevel = 10.0f;

TEST_F(DrawBevelledRectangle, bar_is_dark_below_and_left_and_light_above_and_right_unless_the_colour_stays_flat)
{
    const QColor color(40, 120, 200);
    const QColor light = color.lighter(150);
    const QColor dark = color.darker(150);
    const QColor midDark = Mix(dark, light, 1.0 / 3.0);
    const QColor midLight = Mix(dark, light, 2.0 / 3.0);
    clear(Qt::black);

    SE::DrawBevelledRectangle(cBar, cBevel, color, 150);

    EXPECT_TRUE(NearColor(pixel(12, 65), dark, cFlatTolerance)) << "left strip";
    EXPECT_TRUE(NearColor(pixel(107, 65), light, cFlatTolerance)) << "right strip";
    // Along x = 60 the colour runs dark -> midDark -> midLight -> light, linear in y per band.
    EXPECT_TRUE(NearColor(pixel(60, 20), Mix(dark, midDark, 0.5 / 30.0), cGradientTolerance)) << "lower edge";
    EXPECT_TRUE(NearColor(pixel(60, 64), Mix(midDark, midLight, 14.5 / 30.0), cGradientTolerance)) << "centre";
    EXPECT_TRUE(NearColor(pixel(60, 109), Mix(midLight, light, 29.5 / 30.0), cGradientTolerance)) << "upper edge";
    EXPECT_TRUE(NearColor(pixel(9, 65), Qt::black, 0));
    EXPECT_TRUE(NearColor(pixel(60, 110), Qt::black, 0));
    expectStateAsSetUp();

    // A colour that neither lightens nor darkens fills one flat quad. The bevel's middle colours
    // weigh the channels by a little under one in all, so a bevel of a colour with itself would
    // come out one step darker in the centre: exact comparison tells the flat quad from it.
    for (const auto& [flat, factor] : { std::pair { QColor(90, 160, 30), 100 }, { QColor(Qt::black), 150 } }) {
        clear(Qt::white);
        SE::DrawBevelledRectangle(cBar, cBevel, flat, factor);
        for (const QPoint p : { QPoint(12, 65), QPoint(60, 65), QPoint(60, 109) })
            EXPECT_TRUE(NearColor(pixel(p.x(), p.y()), flat, 0)) << p.x() << ", " << p.y();
    }
}

using DrawTranslucentRectangle = GLCanvas;

TEST_F(DrawTranslucentRectangle, blends_at_the_given_alpha_inside_the_rectangle_only)
{
    const QColor background(20, 40, 60);
    // The colour's own alpha is zero: only the alpha argument may count.
    const QColor color(220, 140, 100, 0);
    const QColor halfway(120, 90, 80);
    clear(background);

    SE::DrawTranslucentRectangle(Rect(30.0, 40.0, 50.0, 20.0), color, 0.5f);

    EXPECT_TRUE(NearColor(pixel(30, 40), halfway, cFlatTolerance)) << "lower left corner";
    EXPECT_TRUE(NearColor(pixel(79, 59), halfway, cFlatTolerance)) << "upper right corner";
    EXPECT_TRUE(NearColor(pixel(29, 49), background, 0));
    EXPECT_TRUE(NearColor(pixel(80, 49), background, 0));
    EXPECT_TRUE(NearColor(pixel(54, 60), background, 0));
    EXPECT_TRUE(NearColor(pixel(54, 39), background, 0));
    expectStateAsSetUp();
}

// --- Vertex arrays ----------------------------------------------------------------------------

using VertexArrays = GLCanvas;

// Long enough to be drawn in several pieces, which must join without a gap or a stray line.
TEST_F(VertexArrays, long_strip_is_unbroken_across_its_draws)
{
    // A serpentine of one-pixel steps along rows 2 px apart: every step lights a pixel of its own.
    // Rows of 110 points put the joints of the draws inside rows.
    constexpr int cRows = 9;
    std::vector<PlainVertex> strip;
    for (int row = 0; row < cRows; ++row)
        for (int step = 0; step < 110; ++step) {
            const int x = row % 2 == 0 ? 4 + step : 113 - step;
            strip.push_back({ GLfloat(x + 0.5), GLfloat(10 + 2 * row + 0.5) });
        }
    clear(Qt::black);
    glColor3f(1.0f, 1.0f, 1.0f);

    DrawLineStrip(strip);

    int dark = 0;
    for (int row = 0; row < cRows; ++row)
        for (int x = 6; x < 112; ++x)
            dark += pixel(x, 10 + 2 * row) != Qt::white;
    EXPECT_EQ(dark, 0);
    for (int x = 6; x < 112; ++x)
        ASSERT_EQ(pixel(x, 11), Qt::black) << "nothing between the rows, at x " << x;
    EXPECT_FALSE(glIsEnabled(GL_VERTEX_ARRAY));
}

TEST_F(VertexArrays, coloured_primitives_keep_their_vertices_across_draws_and_a_bound_buffer_is_bypassed)
{
    // 200 one-pixel quads, 800 vertices, each quad in a colour of its own.
    std::vector<ColouredVertex> quads;
    const auto colourOf = [](int i) { return QColor(i, 255 - i, (i * 7) % 256); };
    for (int i = 0; i < 200; ++i) {
        const GLfloat x = GLfloat(4 + (i % 100)), y = GLfloat(20 + 4 * (i / 100));
        const QColor c = colourOf(i);
        const ColouredVertex v { 0, 0, GLubyte(c.red()), GLubyte(c.green()), GLubyte(c.blue()), 255 };
        for (const auto& [dx, dy] : { std::pair { 0, 0 }, { 1, 0 }, { 1, 1 }, { 0, 1 } }) {
            ColouredVertex corner = v;
            corner.x = x + GLfloat(dx);
            corner.y = y + GLfloat(dy);
            quads.push_back(corner);
        }
    }
    quads.push_back(quads.front()); // a stray vertex, no primitive: left out
    QOpenGLFunctions& gl = *QOpenGLContext::currentContext()->functions();
    GLuint buffer = 0;
    gl.glGenBuffers(1, &buffer);
    gl.glBindBuffer(GL_ARRAY_BUFFER, buffer);
    clear(Qt::black);

    DrawColouredVertices(GL_QUADS, quads);

    for (int i = 0; i < 200; ++i)
        ASSERT_TRUE(NearColor(pixel(4 + (i % 100), 20 + 4 * (i / 100)), colourOf(i), cFlatTolerance)) << "quad " << i;
    EXPECT_EQ(GetInteger(GL_ARRAY_BUFFER_BINDING), GLint(buffer));
    EXPECT_FALSE(glIsEnabled(GL_COLOR_ARRAY));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    gl.glBindBuffer(GL_ARRAY_BUFFER, 0);
    gl.glDeleteBuffers(1, &buffer);
}

} // namespace
