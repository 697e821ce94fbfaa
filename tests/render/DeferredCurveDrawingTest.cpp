#include "EditorTestUtil.h"
#include "render/OffscreenGL.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <qopengl.h>

#include <array>
#include <functional>
#include <stdexcept>
#include <vector>
#include <cmath>
#include <iterator>
#include <limits>
#include <memory>
#include <random>

using namespace EditorTest;

namespace {

constexpr int cWidth = 240;
constexpr int cHeight = 160;

/// Bezier keys a unit apart along a random walk: at about a pixel a key, each selected key's
/// square, tangents and handles overlap its neighbours', as in a framed view of a long curve.
std::shared_ptr<Splinor> DenseCurve(unsigned iSeed, int iKeys, double iX0, double iY0)
{
    std::mt19937 random(iSeed);
    std::uniform_real_distribution<double> step(-1.5, 1.5);
    auto curve = Splinor::create();
    double y = iY0;
    for (int i = 0; i < iKeys; ++i, y += step(random))
        curve->insertSegment(Keyframe(iX0 + i, y), Bezier::create());
    return curve;
}

/// The curves of a view drawn by the glyph routines into a framebuffer of the view's size, with
/// the projection and GL state of the curve layer.
class CurveCanvas : public ::testing::Test
{
protected:
    void SetUp() override { open(0); }

    void open(int iSamples)
    {
        mGL = std::make_unique<OffscreenGL>();
        ASSERT_NO_FATAL_FAILURE(mGL->create(cWidth, cHeight, iSamples));
        mViewport.setWindowBounds(Rect(0, 0, cWidth, cHeight));
    }

    /// A scene with each kind of pass, the first three crossing: a bare line; a curve selected whole; one selected
    /// whole with locked keys in another colour, a breakdown and Fixed tangents; one with only some keys selected,
    /// whose other keys are hollow; and a hovered item on top.
    void buildScene(double iX0)
    {
        mCurves = SplinorContainer::create();
        mSelection = std::make_shared<Selection>(mCurves);
        for (unsigned i = 0; i < 4; ++i)
            mCurves->addCurve(DenseCurve(i + 1, 260, iX0 - 10, i < 3 ? 65.0 : 90.0));
        auto it = mCurves->begin();
        ++it; // left unselected
        Splinor& whole = **it++;
        Splinor& mixed = **it++;
        Splinor& partly = **it++;
        SelectCurveCompletely(*mSelection, whole);
        SelectCurveCompletely(*mSelection, mixed);
        int index = 0;
        for (Segment& segment : mixed) {
            if (Keyframe* key = segment.getLeftKey()) {
                SetLocked(*key, index % 5 == 0);
                key->setBreakdown(index == 90);
                if (index % 7 == 0 && key->getOutTangent())
                    key->getOutTangent()->setType(cTangentFixed);
            }
            ++index;
        }
        mSelection->select(partly);
        index = 0;
        for (Segment& segment : partly)
            if (index++ % 3 == 0 && segment.getLeftKey())
                mSelection->select(*segment.getLeftKey());

        mViewport.setWorldBounds(Rect(iX0, 0.0, cWidth, cHeight));
        const V onKey = mViewport.worldToWindow(std::next(whole.begin(), 100)->getLeftKey()->get());
        mHover = HitRecord();
        PickPoint(*mCurves, *mSelection, mViewport, onKey, mHover);
    }

    /// A cleared framebuffer, with the view's projection and the curve layer's GL state.
    void prepare()
    {
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        const Rect& world = mViewport.getWorldBounds();
        glOrtho(world.x, world.x + world.width, world.y, world.y + world.height, 0.0, 1.0);
        glClearColor(0.1f, 0.1f, 0.1f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        BeginCurveStage();
    }

    /// Drawn at once; held back and drawn at the end; or the same, with all but the first curve
    /// drawn in steps that run on another thread.
    enum Mode { cImmediate, cDeferred, cInSteps };

    /// The scene as the curve layer draws it: unselected curves, selected ones, the hover.
    QImage draw(Mode iMode)
    {
        prepare();
        QOpenGLExtraFunctions& gl = *mGL->context().extraFunctions();
        GLuint query = 0;
        gl.glGenQueries(1, &query);
        gl.glBeginQuery(GL_PRIMITIVES_GENERATED, query);
        {
            std::vector<std::function<void()>> steps;
            for (const auto& curve : *mCurves)
                if (!mSelection->isSelected(*curve))
                    steps.push_back([this, curve] { DrawUnselectedCurve(*curve, mViewport, mColours, mHover); });
            for (const auto& curve : *mCurves)
                if (mSelection->isSelected(*curve))
                    steps.push_back(
                        [this, curve] { DrawSelectedCurve(*curve, *mSelection, mViewport, mColours, mHover); });
            steps.push_back([this] { DrawHoverItem(mHover, *mSelection, mViewport, mColours); });
            if (iMode == cInSteps) {
                DeferredCurveDrawing deferred;
                steps.front()();
                deferred.finish({ steps.begin() + 1, steps.end() });
            } else {
                std::unique_ptr<DeferredCurveDrawing> deferred(iMode == cDeferred ? new DeferredCurveDrawing : nullptr);
                for (const auto& step : steps)
                    step();
                if (deferred)
                    deferred->finish();
            }
        }
        gl.glEndQuery(GL_PRIMITIVES_GENERATED);
        gl.glGetQueryObjectuiv(query, GL_QUERY_RESULT, &mPrimitives);
        gl.glDeleteQueries(1, &query);
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
        return mGL->image();
    }

    QImage image() const { return mGL->image(); }
    QOpenGLContext& context() { return mGL->context(); }

    /// Whether nothing has been drawn since prepare().
    bool blank() const
    {
        const QImage image = this->image();
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixel(x, y) != image.pixel(0, 0))
                    return false;
        return true;
    }

    Viewport mViewport;
    GraphViewColors mColours;
    std::shared_ptr<Selection> mSelection;
    std::shared_ptr<SplinorContainer> mCurves;
    HitRecord mHover;
    GLuint mPrimitives = 0;

private:
    std::unique_ptr<OffscreenGL> mGL;
};

} // namespace

// The pixels must not change at all: every primitive left out lies under opaque glyphs drawn
// after it. Far from the origin GL's float placement strays, and the slack must grow with it.
TEST_F(CurveCanvas, deferred_drawing_leaves_out_most_primitives_of_a_dense_view_and_not_one_pixel)
{
    for (const double x0 : { 0.0, 2.0e5, 4.0e6 }) {
        SCOPED_TRACE(x0);
        buildScene(x0);
        ASSERT_NE(mHover.getType(), HitRecord::cNothing) << "a handle or key under the pointer";

        const QImage immediate = draw(cImmediate);
        const GLuint all = mPrimitives;
        const QImage deferred = draw(cDeferred);
        const GLuint kept = mPrimitives;
        EXPECT_EQ(DifferentPixels(immediate, deferred), 0);
        // The two threads share out the last of the work by who comes first: a few runs meet at
        // different places.
        for (int run = 0; run < 4; ++run) {
            const QImage inSteps = draw(cInSteps);
            EXPECT_EQ(DifferentPixels(immediate, inSteps), 0) << "run " << run;
            EXPECT_EQ(mPrimitives, kept) << "steps on another thread leave out what a single one does";
        }
        // Away from the origin GL's rounding leaves less sure, and at 4e6 a float's step is a
        // quarter of a pixel.
        if (x0 == 0.0)
            EXPECT_LT(mPrimitives, all * 2 / 3) << "of " << all;
        else
            EXPECT_LE(mPrimitives, all);
    }
}

// Keys two pixels apart across the view, each square four wide: every other one covers those
// between, whichever is drawn first, as long as they are of one colour, and all of them cover the
// line. A locked key, in another colour, shows between its neighbours and must stay so; so must a
// translucent tangent line drawn over keys of its own colour.
TEST_F(CurveCanvas, fills_of_one_colour_leave_out_those_their_neighbours_on_both_sides_cover)
{
    mCurves = SplinorContainer::create();
    mSelection = std::make_shared<Selection>(mCurves);
    auto curve = Splinor::create();
    constexpr int cKeys = cWidth / 2 + 1;
    for (int i = 0; i < cKeys; ++i)
        curve->insertSegment(Keyframe(2.0 * i, 80.0), Linear::create());
    mCurves->addCurve(curve);
    SelectCurveCompletely(*mSelection, *curve);
    mViewport.setWorldBounds(Rect(0.0, 0.0, cWidth, cHeight));
    mHover = HitRecord();

    const QImage immediate = draw(cImmediate);
    EXPECT_EQ(DifferentPixels(immediate, draw(cDeferred)), 0);
    // Beside every other key, the curve's ends keep a few lines and a handle.
    EXPECT_LE(mPrimitives, GLuint(cKeys + 1) / 2 + 4);

    // A Fixed tangent's line runs 24 pixels level over a dozen keys, its handle at the far end.
    std::next(curve->begin(), 40)->setInterpolator(Bezier::create());
    Tangent* fixed = std::next(curve->begin(), 40)->getLeftKey()->getOutTangent();
    ASSERT_TRUE(fixed);
    fixed->setType(cTangentFixed);
    const QImage crossed = draw(cImmediate);
    ASSERT_GT(DifferentPixels(immediate, crossed), 20);
    EXPECT_EQ(DifferentPixels(crossed, draw(cDeferred)), 0);

    SetLocked(*std::next(curve->begin(), 61)->getLeftKey(), true);
    const QImage locked = draw(cImmediate);
    ASSERT_GT(DifferentPixels(crossed, locked), 0);
    EXPECT_EQ(DifferentPixels(locked, draw(cDeferred)), 0);
}

// Multisampled, an opaque glyph's edge pixels are only partly covered, and do not hide.
TEST_F(CurveCanvas, deferred_drawing_leaves_multisampled_pixels_as_they_are)
{
    ASSERT_NO_FATAL_FAILURE(open(4));
    buildScene(0.0);

    const QImage immediate = draw(cImmediate);

    EXPECT_EQ(DifferentPixels(immediate, draw(cDeferred)), 0);
    EXPECT_EQ(DifferentPixels(immediate, draw(cInSteps)), 0);
}

TEST_F(CurveCanvas, a_drawing_dropped_before_its_end_draws_nothing_and_an_inner_one_defers_to_the_outer)
{
    buildScene(0.0);
    Splinor& selected = **std::next(mCurves->begin());
    prepare();

    {
        DeferredCurveDrawing dropped; // as when a GL error cuts a paint short
        DrawSelectedCurve(selected, *mSelection, mViewport, mColours, mHover);
    }
    EXPECT_TRUE(blank());

    DeferredCurveDrawing outer;
    {
        DeferredCurveDrawing inner;
        DrawSelectedCurve(selected, *mSelection, mViewport, mColours, mHover);
        inner.finish();
    }
    DeferredCurveDrawing().finish({ [&] { DrawSelectedCurve(selected, *mSelection, mViewport, mColours, mHover); } });
    EXPECT_TRUE(blank());
    outer.finish();
    EXPECT_FALSE(blank());
    // Fills were drawn unblended and flat; the stage's state is as it was.
    EXPECT_TRUE(glIsEnabled(GL_BLEND));
    GLint shadeModel = 0;
    glGetIntegerv(GL_SHADE_MODEL, &shadeModel);
    EXPECT_EQ(shadeModel, GL_SMOOTH);
}

TEST_F(CurveCanvas, a_step_that_throws_ends_the_drawing_with_nothing_drawn_and_the_next_draws_as_ever)
{
    buildScene(0.0);
    Splinor& selected = **std::next(mCurves->begin());
    const auto draws = [&] { DrawSelectedCurve(selected, *mSelection, mViewport, mColours, mHover); };
    const auto throws = [] { throw std::runtime_error("a step failed"); };
    prepare();

    EXPECT_THROW(DeferredCurveDrawing().finish({ draws, throws, draws }), std::runtime_error);
    EXPECT_TRUE(blank());
    EXPECT_THROW(DeferredCurveDrawing().finish({ throws }), std::runtime_error) << "one step runs on this thread";
    EXPECT_TRUE(blank());

    DeferredCurveDrawing().finish({ draws, draws });
    EXPECT_FALSE(blank());
}

// A filled square goes to GL as one point where it can, and as its corners where the point
// would reach past the viewport: GL drops a point whose centre is outside, and may light pixels
// beyond the viewport around one inside. Either way, and for a breakdown's diamond, a key lights
// the pixels whose centres lie inside both its glyph and the viewport, and leaves GL's point
// state as it found it.
TEST_F(CurveCanvas, a_filled_key_lights_the_pixel_centres_inside_its_glyph_and_the_view_wherever_it_lies)
{
    constexpr double cPixel = 0.1, cHalf = 2.2, cEdgeTolerance = 1.0 / 64.0;
    constexpr int cInset = 12, cViewWidth = cWidth - 2 * cInset, cViewHeight = cHeight - 2 * cInset;
    mViewport.setWorldBounds(Rect(0.0, 0.0, cViewWidth * cPixel, cViewHeight * cPixel));
    glPointSize(3.0f);
    const auto drawKey = [&](const V& iCentre, bool iBreakdown) {
        prepare();
        glViewport(cInset, cInset, cViewWidth, cViewHeight); // a host's view within a larger framebuffer
        DrawKeyframeGlyph(iCentre * cPixel, Qt::red, V(cPixel, cPixel), true, iBreakdown);
    };

    std::mt19937 random(7);
    std::uniform_real_distribution<double> across(-cHalf - 0.5, cHalf + 0.5), inside(0.0, cViewHeight);
    for (int trial = 0; trial < 160; ++trial) {
        const bool breakdown = trial % 5 == 0;
        // Most keys straddle an edge of the view, on either axis; the rest lie within it.
        V centre(inside(random) * cViewWidth / cViewHeight, inside(random));
        if (trial % 4 == 1)
            centre.x = (trial % 8 == 1 ? 0.0 : cViewWidth) + across(random);
        else if (trial % 4 == 2)
            centre.y = (trial % 8 == 2 ? 0.0 : cViewHeight) + across(random);
        drawKey(centre, breakdown);
        const QImage drawn = image();

        int wrong = 0;
        for (int row = 0; row < cHeight; ++row)
            for (int column = 0; column < cWidth; ++column) {
                const double x = column - cInset + 0.5, y = row - cInset + 0.5;
                const double dx = std::abs(x - centre.x), dy = std::abs(y - centre.y);
                const double reach = breakdown ? (dx + dy) / 1.414 : std::max(dx, dy);
                if (std::abs(reach - cHalf) < cEdgeTolerance)
                    continue; // on the edge, where GL's rounding decides
                const bool inView = x > 0.0 && x < cViewWidth && y > 0.0 && y < cViewHeight;
                const bool lit = drawn.pixelColor(column, cHeight - 1 - row) == QColor(Qt::red);
                wrong += lit != (inView && reach < cHalf);
            }
        EXPECT_EQ(wrong, 0) << "key at " << centre.x << ", " << centre.y << (breakdown ? ", a diamond" : "");
    }
    EXPECT_FALSE(glIsEnabled(GL_POINT_SPRITE));
    GLfloat pointSize = 0.0f;
    glGetFloatv(GL_POINT_SIZE, &pointSize);
    EXPECT_EQ(pointSize, 3.0f);

    // What reaches GL, where it can count it: one vertex for a key well inside, four at an edge.
    if (!context().hasExtension("GL_ARB_pipeline_statistics_query"))
        return;
    QOpenGLExtraFunctions& gl = *context().extraFunctions();
    const auto verticesOf = [&](const V& iCentre) {
        GLuint query = 0, vertices = 0;
        gl.glGenQueries(1, &query);
        gl.glBeginQuery(GL_VERTICES_SUBMITTED_ARB, query);
        drawKey(iCentre, false);
        gl.glEndQuery(GL_VERTICES_SUBMITTED_ARB);
        gl.glGetQueryObjectuiv(query, GL_QUERY_RESULT, &vertices);
        gl.glDeleteQueries(1, &query);
        return vertices;
    };
    EXPECT_EQ(verticesOf(V(40.0, 30.0)), 1u);
    EXPECT_EQ(verticesOf(V(1.0, 30.0)), 4u);
}

// --- The mask ---------------------------------------------------------------------------------

namespace {

using Point = OcclusionMask::Point;

std::array<Point, 4> Box(double iLeft, double iBottom, double iRight, double iTop)
{
    return { Point(iLeft, iBottom), Point(iRight, iBottom), Point(iRight, iTop), Point(iLeft, iTop) };
}

constexpr double cSlack = 1.0 / 32.0;

} // namespace

TEST(OcclusionMask, hides_only_what_lies_on_pixel_centres_an_opaque_polygon_surely_covers)
{
    OcclusionMask mask;
    mask.reset(64, 48);
    const auto empty = Box(20.2, 20.2, 22.8, 22.8);
    EXPECT_FALSE(mask.hides(empty.data(), 4, cSlack)) << "nothing covers an empty mask";

    // Centres 10.5 to 29.5 lie inside; 9.5 and 30.5 do not.
    const auto block = Box(10.2, 10.2, 29.8, 29.8);
    mask.cover(block.data(), 4, cSlack);

    const auto inside = Box(10.6, 10.6, 29.4, 29.4); // touches centres 11.5 to 28.5
    const auto overEdge = Box(10.4, 12.0, 14.0, 14.0); // reaches centre 10.5, covered
    const auto pastEdge = Box(9.4, 12.0, 14.0, 14.0); // reaches centre 9.5, not covered
    const auto tooClose = Box(29.0, 12.0, 30.48, 14.0); // 30.5 lies within the slack
    const Point triangle[3] = { Point(12, 12), Point(28, 12), Point(20, 28) };
    EXPECT_TRUE(mask.hides(inside.data(), 4, cSlack));
    EXPECT_TRUE(mask.hides(overEdge.data(), 4, cSlack));
    EXPECT_FALSE(mask.hides(pastEdge.data(), 4, cSlack));
    EXPECT_FALSE(mask.hides(tooClose.data(), 4, cSlack));
    EXPECT_TRUE(mask.hides(triangle, 3, cSlack));

    // A smoothed line lights pixels a little over a pixel either side of it, and beyond its ends.
    EXPECT_TRUE(mask.hidesLine(Point(13, 14), Point(26, 25), cSlack));
    EXPECT_FALSE(mask.hidesLine(Point(10.6, 14), Point(26, 25), cSlack));
    EXPECT_FALSE(mask.hidesLine(Point(20, 27), Point(20, 29.4), cSlack));
    EXPECT_FALSE(mask.hidesLine(Point(12, 20), Point(29.4, 20), cSlack)) << "level, past the right edge";
    EXPECT_TRUE(mask.hidesLine(Point(12, 20), Point(29.3, 20), cSlack));

    // Short slanted lines beside a slanted edge: their boxes reach past it, their outlines only
    // when a pixel nearer.
    mask.reset(64, 48);
    const Point slanted[3] = { Point(0, 0), Point(40, 0), Point(0, 40) };
    mask.cover(slanted, 3, cSlack);
    EXPECT_TRUE(mask.hidesLine(Point(16, 20), Point(20, 16), cSlack));
    EXPECT_FALSE(mask.hidesLine(Point(17.5, 21.5), Point(21.5, 17.5), cSlack));
}

TEST(OcclusionMask, nothing_beyond_the_viewport_or_of_no_area_or_not_finite_is_hidden_or_covers)
{
    OcclusionMask mask;
    mask.reset(32, 32);
    const auto all = Box(-100, -100, 100, 100);
    mask.cover(all.data(), 4, cSlack);

    const auto straddling = Box(28, 10, 33, 14);
    const auto beyond = Box(40, 10, 44, 14);
    EXPECT_FALSE(mask.hides(straddling.data(), 4, cSlack)) << "GL may draw past a viewport";
    EXPECT_FALSE(mask.hides(beyond.data(), 4, cSlack));
    EXPECT_FALSE(mask.hidesLine(Point(30, 5), Point(31.5, 5), cSlack));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Point notANumber[3] = { Point(5, 5), Point(nan, 9), Point(9, 5) };
    EXPECT_FALSE(mask.hides(notANumber, 3, cSlack));
    EXPECT_FALSE(mask.hidesLine(Point(5, 5), Point(nan, 5), cSlack));

    mask.reset(32, 32);
    const Point flat[3] = { Point(2, 2), Point(30, 30), Point(16, 16) };
    const Point infinite[3] = { Point(2, 2), Point(HUGE_VAL, 2), Point(2, 30) };
    mask.cover(flat, 3, cSlack);
    mask.cover(notANumber, 3, cSlack);
    mask.cover(infinite, 3, cSlack);
    const auto small = Box(5, 5, 7, 7);
    EXPECT_FALSE(mask.hides(small.data(), 4, cSlack));
}

// Covering a pixel the polygon doesn't light would hide what shows there. Shapes are strewn over
// a mask wider and taller than 2048 pixels, so that every range of rows and columns is checked.
namespace {

/// Keyframe squares and handle triangles, either way round, of random sizes and places.
std::vector<std::vector<Point>> RandomGlyphs(int iCount, double iSide)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<double> place(2.0, iSide - 12.0), corner(0.0, 9.0);
    std::vector<std::vector<Point>> glyphs;
    for (int shape = 0; shape < iCount; ++shape) {
        const Point origin(place(random), place(random));
        if (shape % 3 == 0) {
            const double side = 1.0 + corner(random);
            glyphs.push_back({ origin, origin + Point(side, 0), origin + Point(side, side), origin + Point(0, side) });
        } else {
            glyphs.push_back({ origin, origin + Point(corner(random), corner(random)),
                origin + Point(corner(random), corner(random)) });
        }
    }
    return glyphs;
}

/// The signed distance of a point from a convex polygon's outline, positive inside, and its
/// twice signed area.
double Depth(const std::vector<Point>& iCorners, const Point& iPoint, double& oTwiceArea)
{
    const int count = int(iCorners.size());
    oTwiceArea = 0.0;
    for (int i = 0; i < count; ++i)
        oTwiceArea += iCorners[i].x * iCorners[(i + 1) % count].y - iCorners[(i + 1) % count].x * iCorners[i].y;
    double nearest = HUGE_VAL;
    for (int i = 0; i < count; ++i) {
        const Point edge = iCorners[(i + 1) % count] - iCorners[i];
        const Point toPoint = iPoint - iCorners[i];
        const double cross = edge.x * toPoint.y - edge.y * toPoint.x;
        nearest = std::min(nearest, (oTwiceArea > 0 ? cross : -cross) / std::hypot(edge.x, edge.y));
    }
    return nearest;
}

bool IsCovered(const OcclusionMask& iMask, const Point& iCentre)
{
    const auto pixel = Box(iCentre.x - 0.1, iCentre.y - 0.1, iCentre.x + 0.1, iCentre.y + 0.1);
    return iMask.hides(pixel.data(), 4, 0.0);
}

} // namespace

// The rows below a polygon are covered to some height first: it is looked at from its lowest row
// up, and filled only from the first row found uncovered, which must leave nothing deep inside it
// uncovered.
TEST(OcclusionMask, an_opaque_polygon_covers_the_centres_deep_inside_it_and_none_outside_anywhere)
{
    constexpr int cSide = 2600;
    OcclusionMask mask;
    int shape = 0;
    for (const auto& corners : RandomGlyphs(150, cSide)) {
        SCOPED_TRACE("shape " + std::to_string(shape++));
        const int column0 = int(corners[0].x) - 2, row0 = int(corners[0].y) - 2;
        for (int coveredRows = 0; coveredRows < 14; coveredRows += 3) {
            mask.reset(cSide, cSide);
            const auto below = Box(0, 0, cSide, row0 + coveredRows);
            mask.cover(below.data(), 4, 0.0);
            mask.hidesOrCovers(corners.data(), int(corners.size()), cSlack);
            for (int row = row0; row < row0 + 14; ++row)
                for (int column = column0; column < column0 + 14; ++column) {
                    const Point centre(column + 0.5, row + 0.5);
                    double twiceArea = 0.0;
                    const double inside = Depth(corners, centre, twiceArea);
                    if (!(std::abs(twiceArea) > 1.0))
                        continue;
                    if (IsCovered(mask, centre)) {
                        if (row >= row0 + coveredRows) {
                            ASSERT_GE(inside, cSlack) << "pixel " << column << ", " << row << " lies outside";
                        }
                    } else {
                        ASSERT_LT(inside, 1.5 * cSlack) << "pixel " << column << ", " << row << " lies well inside";
                    }
                }
        }
    }
}

// Culling trusts the outline the mask gives a smoothed line: every pixel the rasteriser lights
// must lie in it, for lines of any length, direction and place within a pixel.
TEST(OcclusionMask, a_smoothed_line_lights_no_pixel_outside_its_outline)
{
    constexpr int cSize = 48;
    OffscreenGL gl;
    ASSERT_NO_FATAL_FAILURE(gl.create(cSize, cSize));
    gl.usePixelUnits();
    BeginCurveStage();
    glLineWidth(1.0f);

    std::mt19937 random(3);
    std::uniform_real_distribution<double> place(18.0, 30.0), length(0.0, 12.0), angle(0.0, 2.0 * M_PI);
    int lit = 0;
    for (int line = 0; line < 400; ++line) {
        const Point from(place(random), place(random));
        const double l = line % 3 == 0 ? length(random) * 0.1 : length(random), a = angle(random);
        const Point to(from.x + l * std::cos(a), from.y + l * std::sin(a));
        glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        const ColouredVertex vertices[2] = { { GLfloat(from.x), GLfloat(from.y), 255, 255, 255, 255 },
            { GLfloat(to.x), GLfloat(to.y), 255, 255, 255, 255 } };
        DrawColouredVertices(GL_LINES, vertices, 2);
        const QImage image = gl.image();
        for (int y = 0; y < cSize; ++y)
            for (int x = 0; x < cSize; ++x) {
                if (image.pixel(x, cSize - 1 - y) == 0u)
                    continue;
                ++lit;
                // Everything but this pixel covered: the line hides only if its outline misses it.
                OcclusionMask mask;
                mask.reset(cSize, cSize);
                for (const auto& box : { Box(0, 0, x, cSize), Box(x + 1, 0, cSize, cSize), Box(x, 0, x + 1, y),
                         Box(x, y + 1, x + 1, cSize) })
                    mask.cover(box.data(), 4, 0.0);
                // The vertices lie where GL puts them: no slack but the outline's own.
                EXPECT_FALSE(mask.hidesLine(from, to, 0.0)) << "pixel " << x << ", " << y << " of the line from "
                                                           << from.x << ", " << from.y << " to " << to.x << ", " << to.y;
            }
    }
    EXPECT_GT(lit, 4000) << "the lines were drawn";
}
