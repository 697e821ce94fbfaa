#include "EditorTestUtil.h"

#include "tools/DragConstraints.h"
#include "tools/DragDelay.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace EditorTest;

namespace {

using V = Vector2D<double>;

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

V DeadZoneDelta(const V& iMove)
{
    return { std::clamp(iMove.x, -cDeadZone, cDeadZone), std::clamp(iMove.y, -cDeadZone, cDeadZone) };
}

/// An out tangent (of the first key) and an in tangent (of the second key) of a real curve.
struct TwoKeyCurve
{
    std::shared_ptr<Splinor> curve = Splinor::create();
    Keyframe* first = curve->insertSegment(Keyframe(0, 0), Bezier::create())->getLeftKey();
    Keyframe* second = curve->insertSegment(Keyframe(1, 1), Bezier::create())->getLeftKey();
    std::shared_ptr<Tangent> out = first->getOutTangent()->getShared();
    std::shared_ptr<Tangent> in = second->getInTangent()->getShared();
};

// A key in window pixels, and where in its handle the press landed.
const V cKey(4.0, 8.0);
const V cPressOffset(1.0, -2.0);

struct RowName
{
    template <class Case> std::string operator()(const ::testing::TestParamInfo<Case>& iInfo) const
    {
        return iInfo.param.name;
    }
};

} // namespace

struct DeadZoneCase
{
    const char* name;
    V move;
    bool dragging;
    V delta;
};

using DragDelayDeadZone = ::testing::TestWithParam<DeadZoneCase>;

TEST_P(DragDelayDeadZone, is_a_box_whose_swallowed_motion_is_clamped_per_axis)
{
    const DeadZoneCase& c = GetParam();
    const V press(50.0, 40.0);
    CountingDelay delay(press, cDeadZone);

    delay.nextPoint(press + c.move);

    EXPECT_EQ(delay.isDragging(), c.dragging);
    EXPECT_EQ(delay.getThresholdDelta(), c.delta);
    EXPECT_EQ(delay.calls, c.dragging ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(DragDelay, DragDelayDeadZone,
    ::testing::Values(DeadZoneCase { "corner_of_the_box_is_inside", { 3, -3 }, false, { 0, 0 } },
        DeadZoneCase { "one_pixel_past_on_x", { 4, 0 }, true, { 3, 0 } },
        DeadZoneCase { "past_on_y_only", { 2.5, -3.5 }, true, { 2.5, -3 } },
        DeadZoneCase { "far_left_keeps_y", { -10, 2 }, true, { -3, 2 } }),
    RowName());

TEST(DragDelay, hook_runs_once_and_dragging_never_falls_back_but_zero_threshold_skips_it)
{
    const V press(50.0, 40.0);
    CountingDelay delay(press, cDeadZone), immediate(V(5, 5), 0.0);

    for (const V& move : { V(1, 1), V(5, -1), V(0, 0), V(-20, 20) })
        delay.nextPoint(press + move);
    immediate.nextPoint(V(50, 50));

    EXPECT_TRUE(delay.isDragging());
    EXPECT_EQ(delay.calls, 1);
    EXPECT_EQ(delay.getThresholdDelta(), V(3, -1));
    EXPECT_EQ(delay.getOriginalPoint(), press);
    EXPECT_TRUE(immediate.isDragging());
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
    const V leftwardOut = ConstrainedAt(leftward, press + V(-10, 2));
    const V insideWide = ConstrainedAt(wide, press + V(-10, 2));

    EXPECT_EQ(inside, press);
    EXPECT_EQ(firstOut, press + V(1, 0));
    EXPECT_EQ(later, press + V(7, 10));
    EXPECT_EQ(leftwardOut, press + V(-7, 0));
    EXPECT_EQ(insideWide, press);
}

struct AxisCase
{
    const char* name;
    V firstMove;
    int axis;
    V expected; // for a later move by (20, 30), against the first choice
};

using XYDragConstraintAxis = ::testing::TestWithParam<AxisCase>;

TEST_P(XYDragConstraintAxis, first_motion_picks_the_axis_for_good)
{
    const AxisCase& c = GetParam();
    const V press(200.0, 100.0);
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

INSTANTIATE_TEST_SUITE_P(XYDragConstraint, XYDragConstraintAxis,
    ::testing::Values(AxisCase { "wider_than_tall_runs_along_x", { 10, 2 }, 1, { 17, 0 } },
        AxisCase { "leftward_runs_along_x", { -5, 4 }, 1, { 23, 0 } },
        AxisCase { "taller_than_wide_runs_along_y", { 2, -10 }, 2, { 0, 33 } },
        AxisCase { "diagonal_tie_runs_along_y", { 4, 4 }, 2, { 0, 27 } }),
    RowName());

struct ModeCase
{
    const char* name;
    V direction;
    V firstMove;
    V pointer; // relative to the key plus the press offset, after the dead zone
    V expected; // relative to the key plus the press offset
};

using AngleDragConstraintMode = ::testing::TestWithParam<ModeCase>;

TEST_P(AngleDragConstraintMode, along_keeps_the_angle_and_across_keeps_the_length)
{
    const ModeCase& c = GetParam();
    TwoKeyCurve curve;
    const V press = cKey + c.direction + cPressOffset;
    AngleDragConstraint constraint(curve.out, press, cKey, c.direction);

    ConstrainedAt(constraint, press + c.firstMove);
    const V result = ConstrainedAt(constraint, cKey + cPressOffset + c.pointer + DeadZoneDelta(c.firstMove));

    EXPECT_NEAR(result.x, (cKey + cPressOffset + c.expected).x, cTrig);
    EXPECT_NEAR(result.y, (cKey + cPressOffset + c.expected).y, cTrig);
}

// (10, 20) at length 30 is 6 sqrt(5) * (1, 2). Keeping the angle stops at the key instead of passing it.
const V cAcross(6 * std::sqrt(5.0), 12 * std::sqrt(5.0));
INSTANTIATE_TEST_SUITE_P(AngleDragConstraint, AngleDragConstraintMode,
    ::testing::Values(ModeCase { "along_a_level_handle", { 30, 0 }, { 5, 0 }, { 10, 20 }, { 10, 0 } },
        ModeCase { "across_a_level_handle", { 30, 0 }, { 0, 5 }, { 10, 20 }, cAcross },
        ModeCase { "diagonal_tie_keeps_the_angle", { 30, 0 }, { 4, 4 }, { 10, 20 }, { 10, 0 } },
        ModeCase { "along_a_slanted_handle", { 18, 24 }, { 3, 4 }, { 10, 20 }, { 13.2, 17.6 } },
        ModeCase { "across_a_slanted_handle", { 18, 24 }, { -4, 3 }, { 10, 20 }, cAcross },
        ModeCase { "along_stops_at_the_key_instead_of_passing_it", { 30, 0 }, { -5, 0 }, { -47, 7 }, { 0, 0 } }),
    RowName());

struct LimitCase
{
    const char* name;
    bool in;
    V pointer; // relative to the key plus the press offset, after the dead zone
    double angle;
};

using AngleDragConstraintLimit = ::testing::TestWithParam<LimitCase>;

TEST_P(AngleDragConstraintLimit, keeping_the_length_stays_on_the_tangent_side)
{
    const LimitCase& c = GetParam();
    TwoKeyCurve curve;
    const V direction(c.in ? -30.0 : 30.0, 0.0);
    const V press = cKey + direction + cPressOffset;
    AngleDragConstraint constraint(c.in ? curve.in : curve.out, press, cKey, direction);
    ConstrainedAt(constraint, press + V(0, 5)); // across the handle: keep the length

    const V result = ConstrainedAt(constraint, cKey + cPressOffset + c.pointer + V(0, cDeadZone));

    EXPECT_NEAR(result.x, cKey.x + cPressOffset.x + 30.0 * std::cos(c.angle), cTrig);
    EXPECT_NEAR(result.y, cKey.y + cPressOffset.y + 30.0 * std::sin(c.angle), cTrig);
}

// Window pixels: y runs down, so 1.5707963267949 is straight down and 4.7123889803847 straight up.
INSTANTIATE_TEST_SUITE_P(AngleDragConstraint, AngleDragConstraintLimit,
    ::testing::Values(LimitCase { "out_follows_on_the_right", false, { 20, 20 }, std::atan2(1.0, 1.0) },
        LimitCase { "out_dragged_left_below_sticks_down", false, { -20, 10 }, 1.5707963267949 },
        LimitCase { "out_dragged_left_above_sticks_up", false, { -20, -10 }, -1.5707963267949 },
        // Turned into [0, 2 pi) with the literal, which is 1.4e-14 above 2 pi.
        LimitCase { "in_follows_on_the_left", true, { -20, -20 }, std::atan2(-1.0, -1.0) + 6.2831853071796 },
        LimitCase { "in_dragged_right_below_sticks_down", true, { 20, 10 }, 1.5707963267949 },
        LimitCase { "in_dragged_right_above_sticks_up", true, { 20, -10 }, 4.7123889803847 }),
    RowName());
