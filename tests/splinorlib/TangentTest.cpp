#include "CurveTestUtil.h"

#include <gtest/gtest.h>

using namespace SplinorTest;

namespace {

// Slopes below are ratios of small integers worked out by hand; only rounding separates them.
constexpr double cExact = 1e-12;

double Slope(const Tangent& iTangent)
{
    const Vector2D<double> v = iTangent.get();
    return v.y / v.x;
}

} // namespace

TEST(Tangent, automatic_types_give_the_hand_checked_slopes)
{
    struct Case
    {
        const char* name;
        unsigned char type;
        std::vector<Vector2D<double>> keys;
        std::size_t key;
        double in;
        double out;
    };
    // Keys (0,0) (1,2) (3,3): secants 2 before the middle key and 0.5 after it.
    const Case cases[] = {
        { "flat", cTangentFlat, { { 0, 0 }, { 1, 2 }, { 3, 3 } }, 1, 0.0, 0.0 },
        { "linear_toward_each_neighbour", cTangentLinear, { { 0, 0 }, { 1, 2 }, { 3, 3 } }, 1, 2.0, 0.5 },
        { "linear_end_key_continues_its_one_secant", cTangentLinear, { { 0, 0 }, { 1, 2 } }, 1, 2.0, 2.0 },
        { "smooth_through_both_neighbours", cTangentSmooth, { { 0, 0 }, { 1, 2 }, { 3, 3 } }, 1, 1.0, 1.0 },
        { "smooth_end_key_toward_its_neighbour", cTangentSmooth, { { 0, 0 }, { 1, 2 }, { 3, 3 } }, 0, 2.0, 2.0 },
        // Parabola through the three keys: (2 * 2 + 1 * 0.5) / 3 = 1.5, within 3 * 0.5.
        { "smooth_normal_weighs_by_spacing", cTangentSmoothNormal, { { 0, 0 }, { 1, 2 }, { 3, 3 } }, 1, 1.5, 1.5 },
        // Parabola slope (1 * 0.1 + 9 * 10) / 10 = 9.01 is limited to 3 * 0.1 so the long side stays under 10.
        { "smooth_normal_does_not_overshoot", cTangentSmoothNormal, { { 0, 0 }, { 9, 0.9 }, { 10, 10.9 } }, 1, 0.3,
            0.3 },
        { "clamped_is_flat_beside_an_equal_neighbour", cTangentClamped, { { 0, 2 }, { 1, 2 }, { 3, 5 } }, 1, 0.0, 0.0 },
        { "clamped_is_flat_beside_an_equal_next_neighbour", cTangentClamped, { { 0, 0 }, { 1, 2 }, { 3, 2 } }, 1, 0.0,
            0.0 },
        { "clamped_is_smooth_otherwise", cTangentClamped, { { 0, 0 }, { 1, 2 }, { 3, 3 } }, 1, 1.0, 1.0 },
        { "plateau_is_flat_at_an_extreme", cTangentPlateau, { { 0, 0 }, { 1, 2 }, { 2, 0 } }, 1, 0.0, 0.0 },
        { "plateau_is_flat_at_an_end_key", cTangentPlateau, { { 0, 0 }, { 1, 2 }, { 2, 3 } }, 2, 0.0, 0.0 },
        // Smooth would be 10 / 2 = 5; handles a third of a span long may rise at most 3 * 0.1.
        { "plateau_never_passes_a_neighbour", cTangentPlateau, { { 0, 0 }, { 1, 0.1 }, { 2, 10 } }, 1, 0.3, 0.3 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        auto curve = MakeCurve(c.keys);
        Tangent& in = *KeyAt(*curve, c.key).getInTangent();
        Tangent& out = *KeyAt(*curve, c.key).getOutTangent();

        in.setType(c.type);
        out.setType(c.type);

        EXPECT_NEAR(Slope(in), c.in, cExact);
        EXPECT_NEAR(Slope(out), c.out, cExact);
    }
}

TEST(Tangent, automatic_types_follow_moves_insertions_and_removals_of_neighbours)
{
    auto curve = MakeCurve({ { 0, 0 }, { 1, 2 }, { 3, 3 } });
    Tangent& out = *KeyAt(*curve, 1).getOutTangent();
    out.setType(cTangentSmooth);

    KeyAt(*curve, 2).set(3.0, 6.0);
    EXPECT_NEAR(Slope(out), 2.0, cExact);

    curve->insertSegment(Keyframe(2.0, 10.0), nullptr);
    EXPECT_NEAR(Slope(out), 5.0, cExact);

    curve->removeSegment(curve->findSegment(2.0));
    EXPECT_NEAR(Slope(out), 2.0, cExact);
}

TEST(Tangent, an_unweighted_fixed_tangent_keeps_its_direction_at_a_third_of_its_span)
{
    auto curve = MakeCurve({ { 0, 0 }, { 3, 3 }, { 9, 0 } });
    Tangent& out = *KeyAt(*curve, 1).getOutTangent();
    Tangent& in = *KeyAt(*curve, 1).getInTangent();
    Tangent& frozen = *KeyAt(*curve, 0).getOutTangent();
    frozen.setType(cTangentLinear); // slope 1, toward (3, 3)

    out.set(10.0, 20.0);
    in.set(-1.0, 1.0);
    frozen.setType(cTangentFixed);

    EXPECT_EQ(out.getType(), cTangentFixed) << "setting a vector makes a tangent Fixed";
    EXPECT_NEAR(out.get().x, 2.0, cExact);
    EXPECT_NEAR(out.get().y, 4.0, cExact);
    EXPECT_NEAR(in.get().x, -1.0, cExact);
    EXPECT_NEAR(in.get().y, 1.0, cExact);

    // Linear would now be flat; Fixed keeps the slope in force when it was set.
    KeyAt(*curve, 1).set(6.0, 0.0);
    KeyAt(*curve, 2).set(15.0, 0.0);
    EXPECT_NEAR(out.get().x, 3.0, cExact) << "the length follows the span";
    EXPECT_NEAR(Slope(out), 2.0, cExact);
    EXPECT_NEAR(frozen.get().x, 2.0, cExact);
    EXPECT_NEAR(Slope(frozen), 1.0, cExact);
}

TEST(Tangent, a_weighted_tangent_keeps_its_vector_and_a_weight_locked_one_its_length)
{
    auto curve = MakeCurve({ { 0, 0 }, { 6, 6 } });
    Tangent& out = *KeyAt(*curve, 0).getOutTangent();
    out.set(10.0, 20.0); // unweighted, so drawn at a third of the span: (2, 4)

    // Weighting keeps the handle where it was on screen, not where the stored vector points.
    out.setWeighted(true);
    KeyAt(*curve, 1).set(12.0, 6.0);
    EXPECT_NEAR(out.get().x, 2.0, cExact);
    EXPECT_NEAR(out.get().y, 4.0, cExact);

    out.set(3.0, 4.0);
    out.setWeightLocked(true);
    out.set(0.0, 1.0);
    EXPECT_NEAR(out.get().x, 0.0, cExact);
    EXPECT_NEAR(out.get().y, 5.0, cExact);
}

TEST(Tangent, set_never_crosses_the_key_ignores_bad_values_and_turns_the_other_tangent_of_a_unified_key)
{
    auto curve = MakeCurve({ { 0, 0 }, { 3, 0 }, { 6, 0 } });
    Keyframe& key = KeyAt(*curve, 1);
    Tangent& in = *key.getInTangent();
    Tangent& out = *key.getOutTangent();

    SetHandle(out, { -5.0, 1.0 });
    SetHandle(in, { 5.0, 1.0 });
    EXPECT_EQ(out.get(), Vector2D<double>(0.0, 1.0));
    EXPECT_EQ(in.get(), Vector2D<double>(0.0, 1.0));
    out.set(cNaN, 1.0);
    out.setType(7);
    EXPECT_EQ(out.get(), Vector2D<double>(0.0, 1.0));
    EXPECT_EQ(out.getType(), cTangentFixed);

    in.set(-2.0, 0.0);
    key.setTangentsUnified(true);
    out.set(3.0, 4.0);
    EXPECT_NEAR(in.get().x, -1.2, cExact) << "its own length of 2, along the other's line";
    EXPECT_NEAR(in.get().y, -1.6, cExact);
    in.set(-3.0, 0.0);
    EXPECT_NEAR(out.get().x, 5.0, cExact) << "and the other way round";
    EXPECT_NEAR(out.get().y, 0.0, cExact);

    key.setTangentsUnified(false);
    out.set(1.0, 1.0);
    EXPECT_EQ(in.get(), Vector2D<double>(-3.0, 0.0)) << "broken tangents move alone";
}
