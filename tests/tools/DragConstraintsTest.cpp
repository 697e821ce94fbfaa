#include "EditorTestUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace EditorTest;

namespace {

constexpr double cDeadZone = 3.0;
// Results are a cosine, a sine or a projection of a 30-pixel handle near a key at (4, 8): a few
// ulps of values below 64 (7e-15 each). The limit literals differ from full-precision pi by
// about 1e-13 at that length, which this still tells apart.
constexpr double cTrig = 2e-14;

class CountingDelay : public DragDelay
{
public:
    using DragDelay::DragDelay;
    int calls = 0;

private:
    void thresholdExceeded(const V&) override { ++calls; }
};

V ConstrainedAt(DragConstraint& ioConstraint, V iPoint)
{
    ioConstraint.constrain(iPoint);
    return iPoint;
}

/// The out tangent of a key and the in tangent of the next, on a real curve.
struct TwoKeyCurve
{
    std::shared_ptr<Splinor> curve = MakeCurve({ { 0, 0 }, { 1, 1 } }, true);
    std::shared_ptr<Tangent> out = curve->findSegment(0.5)->getOutTangent()->getShared();
    std::shared_ptr<Tangent> in = curve->findSegment(0.5)->getInTangent()->getShared();
};

// A key in window pixels, and where in its handle the press landed.
const V cKey(4.0, 8.0);
const V cPressOffset(1.0, -2.0);

} // namespace

TEST(DragDelay, dead_zone_is_a_box_whose_swallowed_motion_is_clamped_per_axis_once_for_good)
{
    const struct
    {
        const char* name;
        V move;
        bool dragging;
        V delta;
    } cases[] = {
        { "corner of the box is inside", { 3, -3 }, false, { 0, 0 } },
        { "one pixel past on x", { 4, 0 }, true, { 3, 0 } },
        { "past on y only", { 2.5, -3.5 }, true, { 2.5, -3 } },
        { "far left keeps y", { -10, 2 }, true, { -3, 2 } },
    };
    const V press(50.0, 40.0);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CountingDelay delay(press, cDeadZone);

        delay.nextPoint(press + c.move);

        EXPECT_EQ(delay.isDragging(), c.dragging);
        EXPECT_EQ(delay.getThresholdDelta(), c.delta);
        EXPECT_EQ(delay.calls, c.dragging ? 1 : 0);
        if (!c.dragging)
            continue;
        // Once dragging, it never falls back, and neither the hook nor the delta change again.
        for (const V& move : { V(0, 0), V(-20, 20) })
            delay.nextPoint(press + move);
        EXPECT_TRUE(delay.isDragging());
        EXPECT_EQ(delay.calls, 1);
        EXPECT_EQ(delay.getThresholdDelta(), c.delta);
        EXPECT_EQ(delay.getOriginalPoint(), press);
    }
    CountingDelay immediate(press, 0.0);
    immediate.nextPoint(press + V(1, 1));
    EXPECT_TRUE(immediate.isDragging()) << "a zero threshold drags at once, and runs no hook";
    EXPECT_EQ(immediate.calls, 0);
    EXPECT_EQ(immediate.getThresholdDelta(), V(0, 0));
}

TEST(DelayDragConstraint, result_moves_on_from_the_press_point_without_a_jump)
{
    const V press(100.0, 50.0);
    DelayDragConstraint standard(press), wide(press, 10.0), leftward(press);

    const V inside = ConstrainedAt(standard, press + V(2, 1));
    const V firstOut = ConstrainedAt(standard, press + V(4, 0));
    const V later = ConstrainedAt(standard, press + V(10, 10));

    EXPECT_EQ(inside, press);
    EXPECT_EQ(firstOut, press + V(1, 0));
    EXPECT_EQ(later, press + V(7, 10));
    EXPECT_EQ(ConstrainedAt(leftward, press + V(-10, 2)), press + V(-7, 0));
    EXPECT_EQ(ConstrainedAt(wide, press + V(-10, 2)), press);
}

TEST(XYDragConstraint, first_motion_out_of_the_dead_zone_picks_the_axis_for_good)
{
    const struct
    {
        const char* name;
        V firstMove;
        int axis;
        V expected; // for a later move by (20, 30), against the first choice
    } cases[] = {
        { "wider than tall runs along x", { 10, 2 }, 1, { 17, 0 } },
        { "leftward runs along x", { -5, 4 }, 1, { 23, 0 } },
        { "taller than wide runs along y", { 2, -10 }, 2, { 0, 33 } },
        { "diagonal tie runs along y", { 4, 4 }, 2, { 0, 27 } },
    };
    const V press(200.0, 100.0);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        XYDragConstraint constraint(press);

        const V undecided = ConstrainedAt(constraint, press + V(1, -2));
        const int axisBefore = constraint.getAxis();
        ConstrainedAt(constraint, press + c.firstMove);
        const V result = ConstrainedAt(constraint, press + V(20, 30));

        EXPECT_EQ(undecided, press);
        EXPECT_EQ(axisBefore, 0);
        EXPECT_EQ(constraint.getAxis(), c.axis);
        EXPECT_EQ(result, press + c.expected);
    }
}

TEST(AngleDragConstraint, along_the_handle_keeps_the_angle_and_across_it_keeps_the_length)
{
    // (10, 20) at length 30 is 6 sqrt(5) * (1, 2).
    const V across(6 * std::sqrt(5.0), 12 * std::sqrt(5.0));
    const struct
    {
        const char* name;
        // The pointer after the dead zone, and the result, relative to the key plus the press offset.
        V direction, firstMove, pointer, expected;
    } cases[] = {
        { "along a level handle", { 30, 0 }, { 5, 0 }, { 10, 20 }, { 10, 0 } },
        { "across a level handle", { 30, 0 }, { 0, 5 }, { 10, 20 }, across },
        { "diagonal tie keeps the angle", { 30, 0 }, { 4, 4 }, { 10, 20 }, { 10, 0 } },
        { "along a slanted handle", { 18, 24 }, { 3, 4 }, { 10, 20 }, { 13.2, 17.6 } },
        { "across a slanted handle", { 18, 24 }, { -4, 3 }, { 10, 20 }, across },
        { "along stops at the key instead of passing it", { 30, 0 }, { -5, 0 }, { -47, 7 }, { 0, 0 } },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TwoKeyCurve curve;
        const V press = cKey + c.direction + cPressOffset;
        AngleDragConstraint constraint(curve.out, press, cKey, c.direction);
        const V swallowed(
            std::clamp(c.firstMove.x, -cDeadZone, cDeadZone), std::clamp(c.firstMove.y, -cDeadZone, cDeadZone));

        ConstrainedAt(constraint, press + c.firstMove);
        const V result = ConstrainedAt(constraint, cKey + cPressOffset + c.pointer + swallowed);

        EXPECT_NEAR(result.x, (cKey + cPressOffset + c.expected).x, cTrig);
        EXPECT_NEAR(result.y, (cKey + cPressOffset + c.expected).y, cTrig);
    }
}

// Window pixels: y runs down, so 1.5707963267949 is straight down and 4.7123889803847 straight up.
TEST(AngleDragConstraint, keeping_the_length_stays_on_the_tangent_side)
{
    const struct
    {
        const char* name;
        bool in;
        V pointer; // relative to the key plus the press offset, after the dead zone
        double angle;
    } cases[] = {
        { "out follows on the right", false, { 20, 20 }, std::atan2(1.0, 1.0) },
        { "out dragged left below sticks down", false, { -20, 10 }, 1.5707963267949 },
        { "out dragged left above sticks up", false, { -20, -10 }, -1.5707963267949 },
        // Turned into [0, 2 pi) with the literal, which is 1.4e-14 above 2 pi.
        { "in follows on the left", true, { -20, -20 }, std::atan2(-1.0, -1.0) + 6.2831853071796 },
        { "in dragged right below sticks down", true, { 20, 10 }, 1.5707963267949 },
        { "in dragged right above sticks up", true, { 20, -10 }, 4.7123889803847 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TwoKeyCurve curve;
        const V direction(c.in ? -30.0 : 30.0, 0.0);
        const V press = cKey + direction + cPressOffset;
        AngleDragConstraint constraint(c.in ? curve.in : curve.out, press, cKey, direction);
        ConstrainedAt(constraint, press + V(0, 5)); // across the handle: keep the length

        const V result = ConstrainedAt(constraint, cKey + cPressOffset + c.pointer + V(0, cDeadZone));

        EXPECT_NEAR(result.x, cKey.x + cPressOffset.x + 30.0 * std::cos(c.angle), cTrig);
        EXPECT_NEAR(result.y, cKey.y + cPressOffset.y + 30.0 * std::sin(c.angle), cTrig);
    }
}
