#include "render/OffscreenGL.h"

#include "render/OcclusionMask.h"
#include "render/PaintedFills.h"

#include <gtest/gtest.h>

#include <QImage>
#include <qopengl.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace EditorTest;
using namespace Ovantis::SplinorEditorQtLib::v22;

namespace {

constexpr int cWidth = 96;
constexpr int cHeight = 64;
constexpr std::uint32_t cRed = 0xff0000ffu; // bytes red, green, blue, alpha
constexpr std::uint32_t cBlue = 0xffff0000u;

using Point = PaintedFills::Point;
using Polygon = std::vector<Point>;

/// Polygons painted here and drawn by GL into one framebuffer, whose pixels are compared.
class Painting : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(mGL.create(cWidth, cHeight));
        mGL.usePixelUnits(); // as the mask and the painter take positions
        glDisable(GL_BLEND);
        glDisable(GL_POLYGON_SMOOTH);
        glDisable(GL_DEPTH_TEST);
    }

    static void clear()
    {
        glClearColor(0, 0, 0, 1);
        glClearDepth(1.0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    }

    /// What GL lights of a polygon in red.
    QImage drawnByGL(const Polygon& iPolygon)
    {
        clear();
        glColor3f(1, 0, 0);
        glBegin(GL_POLYGON);
        for (const Point& corner : iPolygon)
            glVertex2d(corner.x, corner.y);
        glEnd();
        return mGL.image();
    }

    /// What the painter lights of polygons, the first painted over the rest.
    QImage painted(const std::vector<std::pair<Polygon, std::uint32_t>>& iPolygons)
    {
        clear();
        mFills.reset(cWidth, cHeight);
        mMask.reset(cWidth, cHeight);
        for (const auto& [polygon, colour] : iPolygons)
            EXPECT_TRUE(mFills.paint(polygon.data(), int(polygon.size()), colour, 0.5f, mMask));
        EXPECT_TRUE(mFills.draw(0, 0));
        return mGL.image();
    }

    /// Expects the painter to leave each polygon alone, lighting nothing.
    void expectLeftToGL(const std::vector<Polygon>& iPolygons)
    {
        mFills.reset(cWidth, cHeight);
        mMask.reset(cWidth, cHeight);
        for (const Polygon& polygon : iPolygons)
            EXPECT_FALSE(mFills.paint(polygon.data(), int(polygon.size()), cRed, 0.5f, mMask));
        EXPECT_TRUE(mFills.empty());
    }

    /// Expects the painter to light every polygon as GL does, and says which one it doesn't.
    void expectLitAsByGL(const std::vector<Polygon>& iPolygons)
    {
        for (std::size_t i = 0; i < iPolygons.size(); ++i) {
            const QImage byGL = drawnByGL(iPolygons[i]);
            const QImage byPainter = painted({ { iPolygons[i], cRed } });
            std::string corners;
            for (const Point& corner : iPolygons[i])
                corners += " (" + std::to_string(corner.x) + ", " + std::to_string(corner.y) + ")";
            ASSERT_EQ(DifferentPixels(byGL, byPainter), 0) << "polygon" << corners;
        }
    }

    OffscreenGL mGL;
    PaintedFills mFills;
    OcclusionMask mMask;
};

/// Corners about a centre, going round either way, reaching iReach from it at most, on a grid of
/// iGrid pixels: a coarse grid puts corners and edges on pixel centres.
Polygon RandomCorners(std::mt19937& ioRandom, Point iCentre, double iReach, double iGrid)
{
    std::uniform_real_distribution<double> angle(0.0, 2.0 * M_PI), radius(0.3 * iReach, iReach);
    const int corners = std::uniform_int_distribution<int>(3, 4)(ioRandom);
    std::vector<double> angles(std::size_t(corners), 0.0);
    for (double& a : angles)
        a = angle(ioRandom);
    std::sort(angles.begin(), angles.end());
    if (std::bernoulli_distribution(0.5)(ioRandom))
        std::reverse(angles.begin(), angles.end()); // either way round
    Polygon polygon;
    for (const double a : angles) {
        const double r = radius(ioRandom);
        polygon.push_back({ std::round((iCentre.x + r * std::cos(a)) / iGrid) * iGrid,
            std::round((iCentre.y + r * std::sin(a)) / iGrid) * iGrid });
    }
    return polygon;
}

/// Whether every corner turns the same way, and none goes straight on.
bool IsConvex(const Polygon& iPolygon)
{
    int left = 0, right = 0;
    const std::size_t count = iPolygon.size();
    for (std::size_t i = 0; i < count; ++i) {
        const Point& a = iPolygon[i];
        const Point& b = iPolygon[(i + 1) % count];
        const Point& c = iPolygon[(i + 2) % count];
        const double turn = (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
        left += turn > 0;
        right += turn < 0;
    }
    return left == int(count) || right == int(count);
}

/// A triangle or a convex quadrilateral, as RandomCorners() makes them.
Polygon RandomPolygon(std::mt19937& ioRandom, Point iCentre, double iReach, double iGrid)
{
    for (;;) {
        Polygon polygon = RandomCorners(ioRandom, iCentre, iReach, iGrid);
        if (IsConvex(polygon))
            return polygon;
    }
}

} // namespace

// Glyph-sized polygons take one way through the painter and larger ones another; both must light
// what GL lights, pixel centres on edges and corners included.
TEST_F(Painting, polygons_light_the_pixels_gl_lights_small_or_large_on_or_off_the_grid)
{
    std::mt19937 random(7);
    std::vector<Polygon> polygons;
    for (const double grid : { 0.5, 0.25, 1.0 / 256.0, 1e-6 })
        for (const double reach : { 2.0, 4.5, 9.0, 30.0 }) {
            std::uniform_real_distribution<double> x(reach, cWidth - reach), y(reach, cHeight - reach);
            for (int i = 0; i < 40; ++i)
                polygons.push_back(RandomPolygon(random, { x(random), y(random) }, reach, grid));
        }
    // Upright squares and diamonds, as keys are drawn, some at the viewport's borders.
    polygons.push_back({ { 10.5, 10.5 }, { 10.5, 16.5 }, { 16.5, 16.5 }, { 16.5, 10.5 } });
    polygons.push_back({ { 0.0, 7.0 }, { 3.75, 7.0 }, { 3.75, 13.0 }, { 0.0, 13.0 } });
    polygons.push_back({ { 90.0, 60.5 }, { 96.0, 60.5 }, { 96.0, 64.0 }, { 90.0, 64.0 } });
    polygons.push_back({ { 23.0, 17.0 }, { 26.0, 20.0 }, { 23.0, 23.0 }, { 20.0, 20.0 } });
    polygons.push_back({ { 33.5, 17.5 }, { 36.5, 20.5 }, { 33.5, 23.5 }, { 30.5, 20.5 } });
    expectLitAsByGL(polygons);
}

TEST_F(Painting, each_pixel_takes_the_colour_of_the_first_polygon_painted_over_it)
{
    const Polygon top { { 10, 10 }, { 30, 10 }, { 30, 30 }, { 10, 30 } };
    const Polygon under { { 20, 20 }, { 40, 20 }, { 40, 40 }, { 20, 40 } };
    const QImage image = painted({ { top, cRed }, { under, cBlue } });
    auto at = [&](int iColumn, int iRow) { return image.pixelColor(iColumn, cHeight - 1 - iRow); };
    EXPECT_EQ(at(25, 25), QColor(Qt::red));
    EXPECT_EQ(at(35, 35), QColor(Qt::blue));
    EXPECT_EQ(at(15, 35), QColor(Qt::black));
    EXPECT_EQ(at(50, 50), QColor(Qt::black));
}

// GL clips what reaches out of the viewport, and the corners it makes are rounded: the pixels a
// polygon lights there are GL's to find. Nor is anything lit by a polygon of no area.
TEST_F(Painting, polygons_reaching_out_of_the_viewport_or_not_finite_are_left_to_gl)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    expectLeftToGL({
        { { -6.5, 45.5 }, { -2.0, 38.0 }, { 17.5, 33.5 } },
        { { 90.0, 10.0 }, { 96.5, 10.0 }, { 93.0, 14.0 } },
        { { 10.0, -0.5 }, { 14.0, 3.0 }, { 10.0, 3.0 } },
        { { 10.0, 60.0 }, { 14.0, 64.25 }, { 10.0, 62.0 } },
        { { nan, 5 }, { 20, 5 }, { 20, 20 } },
        { { 5, 5 }, { inf, 5 }, { 20, 20 } },
        { { 5, 5 }, { 20, 5 }, { 20, -inf } },
    });
    // A viewport of no size holds nothing.
    mFills.reset(0, cHeight);
    mMask.reset(0, cHeight);
    const Polygon square { { 1, 1 }, { 9, 1 }, { 9, 9 }, { 1, 9 } };
    EXPECT_FALSE(mFills.paint(square.data(), 4, cRed, 0.5f, mMask));
    EXPECT_TRUE(mFills.empty());

    mFills.reset(cWidth, cHeight);
    mMask.reset(cWidth, cHeight);
    const std::vector<Polygon> flat { { { 5, 5 }, { 20, 20 }, { 35, 35 } }, { { 5, 5 }, { 5, 5 }, { 5, 5 }, { 5, 5 } } };
    for (const Polygon& polygon : flat)
        EXPECT_TRUE(mFills.paint(polygon.data(), int(polygon.size()), cRed, 0.5f, mMask));
    EXPECT_TRUE(mFills.empty());
}

/// The framebuffers pixels are written into: with 24 bits of depth and 8 of stencil, as a widget
/// has, they are copied as a block; without stencil, drawn.
class Writing : public ::testing::TestWithParam<QOpenGLFramebufferObject::Attachment>
{
};

// Over a viewport inset in the framebuffer, with a host's scissor box across it: only lit
// pixels in both change, to their colours and depths, and the stencil and GL's bindings stay.
TEST_P(Writing, lit_pixels_take_their_colours_and_depths_and_nothing_else_changes)
{
    OffscreenGL gl;
    ASSERT_NO_FATAL_FAILURE(gl.create(cWidth, cHeight, 0, GetParam()));
    gl.usePixelUnits();
    glClearColor(0, 1, 0, 1);
    glClearDepth(1.0);
    glClearStencil(0x5a);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);

    const int x = 8, y = 4, scissorRight = x + 60;
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, scissorRight, cHeight);
    PaintedFills fills;
    OcclusionMask mask;
    fills.reset(cWidth - 16, cHeight - 8);
    mask.reset(cWidth - 16, cHeight - 8);
    fills.clearDepth(x, y);
    struct Square
    {
        int left, bottom, side;
        std::uint32_t colour;
        float depth;
    };
    // The first painted keeps where they overlap; the last reaches past the scissor box.
    const Square squares[] = { { 10, 10, 20, cRed, 0.75f }, { 20, 20, 20, cBlue, 0.25f }, { 50, 10, 20, cRed, 0.5f } };
    for (const Square& square : squares) {
        const double l = square.left, b = square.bottom, r = l + square.side, t = b + square.side;
        const Point corners[] = { { l, b }, { r, b }, { r, t }, { l, t } };
        ASSERT_TRUE(fills.paint(corners, 4, square.colour, square.depth, mask));
    }
    ASSERT_TRUE(fills.draw(x, y));

    GLint scissor[4], textureBound = 0, readBound = 0;
    glGetIntegerv(GL_SCISSOR_BOX, scissor);
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &textureBound);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &readBound);
    EXPECT_TRUE(glIsEnabled(GL_SCISSOR_TEST));
    EXPECT_EQ(scissor[2], scissorRight);
    EXPECT_EQ(GLuint(textureBound), texture);
    EXPECT_EQ(readBound, GLint(gl.framebuffer().handle()));
    glDisable(GL_SCISSOR_TEST);
    glDeleteTextures(1, &texture);

    std::vector<float> depths(std::size_t(cWidth * cHeight));
    std::vector<GLubyte> stencils(depths.size());
    glReadPixels(0, 0, cWidth, cHeight, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
    glReadPixels(0, 0, cWidth, cHeight, GL_STENCIL_INDEX, GL_UNSIGNED_BYTE, stencils.data());
    const QImage image = gl.image();
    int wrongColours = 0, wrongDepths = 0, wrongStencils = 0;
    for (int row = 0; row < cHeight; ++row)
        for (int column = 0; column < cWidth; ++column) {
            QColor colour = Qt::green;
            float depth = 1.0f;
            const bool inViewport = column >= x && column < cWidth - 8 && row >= y && row < cHeight - 4;
            if (inViewport && column < scissorRight) {
                depth = 0.0f;
                const int u = column - x, v = row - y; // pixel centres at u + 0.5, v + 0.5
                for (const Square& square : squares)
                    if (u >= square.left && u < square.left + square.side && v >= square.bottom
                        && v < square.bottom + square.side) {
                        colour = square.colour == cRed ? QColor(Qt::red) : QColor(Qt::blue);
                        depth = square.depth;
                        break;
                    }
            }
            const std::size_t at = std::size_t(row * cWidth + column);
            wrongColours += image.pixelColor(column, cHeight - 1 - row) != colour;
            wrongDepths += std::abs(depths[at] - depth) > 1.0f / 65536.0f;
            wrongStencils += GetParam() == QOpenGLFramebufferObject::CombinedDepthStencil && stencils[at] != 0x5a;
        }
    EXPECT_EQ(wrongColours, 0);
    EXPECT_EQ(wrongDepths, 0);
    EXPECT_EQ(wrongStencils, 0);
}

INSTANTIATE_TEST_SUITE_P(CopiedOrDrawn, Writing,
    ::testing::Values(QOpenGLFramebufferObject::CombinedDepthStencil, QOpenGLFramebufferObject::Depth));
