#include "CurveTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace SplinorTest;

namespace {

// Slopes below are ratios of small integers worked out by hand; only rounding separates them.
constexpr double cExact = 1e-12;

double Slope(const Tangent& iTangent)
{
    const Vector2D<double> v = iTangent.get();
    return v.y / v.x;
}

/// The slopes of the in and out tangent of the key at iKeyIndex, with both set to iType.
std::pair<double, double> SlopesOf(const std::vector<Vector2D<double>>& iKeys, std::size_t iKeyIndex,
                                   unsigned char iType)
{
    auto curve = MakeCurve(iKeys);
    Keyframe& key = KeyAt(*curve, iKeyIndex);
    Tangent* in = key.getInTangent();
    Tangent* out = key.getOutTangent();
    in->setType(iType);
    out->setType(iType);
    return {Slope(*in), Slope(*out)};
}

} // namespace

struct TypeCase
{
    const char* name;
    unsigned char type;
    std::vector<Vector2D<double>> keys;
    std::size_t key;
    double in;
    double out;
};

void PrintTo(const TypeCase& iCase, std::ostream* oStream)
{
    *oStream << iCase.name;
}

class TangentTypes : public ::testing::TestWithParam<TypeCase>
{
};

TEST_P(TangentTypes, give_the_hand_checked_slopes)
{
    const TypeCase& c = GetParam();

    auto [in, out] = SlopesOf(c.keys, c.key, c.type);

    EXPECT_NEAR(in, c.in, cExact);
    EXPECT_NEAR(out, c.out, cExact);
}

// Keys (0,0) (1,2) (3,3): secants 2 before the middle key and 0.5 after it.
INSTANTIATE_TEST_SUITE_P(
    Tangent, TangentTypes,
    ::testing::Values(
        TypeCase{"flat", cTangentFlat, {{0, 0}, {1, 2}, {3, 3}}, 1, 0.0, 0.0},
        TypeCase{"linear_toward_each_neighbour", cTangentLinear, {{0, 0}, {1, 2}, {3, 3}}, 1, 2.0, 0.5},
        TypeCase{"linear_end_key_continues_its_one_secant", cTangentLinear, {{0, 0}, {1, 2}}, 1, 2.0, 2.0},
        TypeCase{"smooth_through_both_neighbours", cTangentSmooth, {{0, 0}, {1, 2}, {3, 3}}, 1, 1.0, 1.0},
        TypeCase{"smooth_end_key_toward_its_neighbour", cTangentSmooth, {{0, 0}, {1, 2}, {3, 3}}, 0, 2.0, 2.0},
        // Parabola through the three keys: (2 * 2 + 1 * 0.5) / 3 = 1.5, within 3 * 0.5.
        TypeCase{"smooth_normal_weighs_by_spacing", cTangentSmoothNormal, {{0, 0}, {1, 2}, {3, 3}}, 1, 1.5, 1.5},
        // Parabola slope (1 * 0.1 + 9 * 10) / 10 = 9.01 is limited to 3 * 0.1 so the long side stays under 10.
        TypeCase{"smooth_normal_does_not_overshoot", cTangentSmoothNormal, {{0, 0}, {9, 0.9}, {10, 10.9}}, 1, 0.3, 0.3},
        TypeCase{"clamped_is_flat_beside_an_equal_neighbour", cTangentClamped, {{0, 2}, {1, 2}, {3, 5}}, 1, 0.0, 0.0},
        TypeCase{"clamped_is_smooth_otherwise", cTangentClamped, {{0, 0}, {1, 2}, {3, 3}}, 1, 1.0, 1.0},
        TypeCase{"plateau_is_flat_at_an_extreme", cTangentPlateau, {{0, 0}, {1, 2}, {2, 0}}, 1, 0.0, 0.0},
        TypeCase{"plateau_is_flat_at_an_end_key", cTangentPlateau, {{0, 0}, {1, 2}, {2, 3}}, 2, 0.0, 0.0},
        // Smooth would be 10 / 2 = 5; handles a third of a span long may rise at most 3 * 0.1.
        TypeCase{"plateau_never_passes_a_neighbour", cTangentPlateau, {{0, 0}, {1, 0.1}, {2, 10}}, 1, 0.3, 0.3}),
    [](const ::testing::TestParamInfo<TypeCase>& iInfo) { return std::string(iInfo.param.name); });

TEST(Tangent, automatic_types_follow_moves_insertions_and_removals_of_neighbours)
{
    auto curve = MakeCurve({{0, 0}, {1, 2}, {3, 3}});
    Tangent& out = *KeyAt(*curve, 1).getOutTangent();
    out.setType(cTangentSmooth);

    KeyAt(*curve, 2).set(3.0, 6.0);
    EXPECT_NEAR(Slope(out), 2.0, cExact);

    curve->insertSegment(Keyframe(2.0, 10.0), nullptr);
    EXPECT_NEAR(Slope(out), 5.0, cExact);

    curve->removeSegment(curve->findSegment(2.0));
    EXPECT_NEAR(Slope(out), 2.0, cExact);
}

TEST(Tangent, an_unweighted_tangent_keeps_its_direction_at_a_third_of_its_span)
{
    auto curve = MakeCurve({{0, 0}, {3, 0}, {9, 0}});
    Tangent& out = *KeyAt(*curve, 1).getOutTangent();
    Tangent& in = *KeyAt(*curve, 1).getInTangent();

    out.set(10.0, 20.0);
    in.set(-1.0, 1.0);

    EXPECT_EQ(out.getType(), cTangentFixed) << "setting a vector makes a tangent Fixed";
    EXPECT_NEAR(out.get().x, 2.0, cExact);
    EXPECT_NEAR(out.get().y, 4.0, cExact);
    EXPECT_NEAR(in.get().x, -1.0, cExact);
    EXPECT_NEAR(in.get().y, 1.0, cExact);

    KeyAt(*curve, 2).set(15.0, 0.0);
    EXPECT_NEAR(out.get().x, 4.0, cExact) << "the length follows the span";
    EXPECT_NEAR(Slope(out), 2.0, cExact);
}

TEST(Tangent, a_weighted_tangent_keeps_its_vector_and_a_weight_locked_one_its_length)
{
    auto curve = MakeCurve({{0, 0}, {3, 0}, {9, 0}});
    Tangent& out = *KeyAt(*curve, 1).getOutTangent();
    out.setWeighted(true);

    out.set(5.0, 1.0);
    KeyAt(*curve, 2).set(20.0, 0.0);
    EXPECT_EQ(out.get(), Vector2D<double>(5.0, 1.0));

    out.set(3.0, 4.0);
    out.setWeightLocked(true);
    out.set(0.0, 1.0);
    EXPECT_NEAR(out.get().x, 0.0, cExact);
    EXPECT_NEAR(out.get().y, 5.0, cExact);
}

TEST(Tangent, weighting_an_unweighted_tangent_keeps_the_handle_where_it_was)
{
    auto curve = MakeCurve({{0, 0}, {6, 6}});
    Tangent& out = *KeyAt(*curve, 0).getOutTangent();
    out.setType(cTangentLinear);
    const Vector2D<double> before = out.get();

    out.setWeighted(true);
    out.setType(cTangentFixed);
    KeyAt(*curve, 1).set(12.0, 6.0);

    EXPECT_EQ(out.get(), before);
    EXPECT_NEAR(before.x, 2.0, cExact);
}

TEST(Tangent, setting_one_tangent_of_a_unified_key_turns_the_other_in_line)
{
    auto curve = MakeCurve({{0, 0}, {3, 0}, {6, 0}});
    Keyframe& key = KeyAt(*curve, 1);
    Tangent& in = *key.getInTangent();
    Tangent& out = *key.getOutTangent();
    in.setWeighted(true);
    in.set(-2.0, 0.0);
    key.setTangentsUnified(true);

    out.setWeighted(true);
    out.set(3.0, 4.0);

    EXPECT_EQ(in.getType(), cTangentFixed);
    EXPECT_NEAR(in.get().x, -1.2, cExact) << "its own length of 2, along the other's line";
    EXPECT_NEAR(in.get().y, -1.6, cExact);

    key.setTangentsUnified(false);
    out.set(1.0, 0.0);
    EXPECT_NEAR(in.get().y, -1.6, cExact) << "broken tangents move alone";
}

TEST(Tangent, a_tangent_never_crosses_its_key_and_ignores_bad_values)
{
    auto curve = MakeCurve({{0, 0}, {3, 0}, {6, 0}});
    Tangent& out = *KeyAt(*curve, 1).getOutTangent();
    Tangent& in = *KeyAt(*curve, 1).getInTangent();
    out.setWeighted(true);
    in.setWeighted(true);

    out.set(-5.0, 1.0);
    in.set(5.0, 1.0);
    EXPECT_EQ(out.get(), Vector2D<double>(0.0, 1.0));
    EXPECT_EQ(in.get(), Vector2D<double>(0.0, 1.0));

    out.set(std::numeric_limits<double>::quiet_NaN(), 1.0);
    out.setType(7);
    EXPECT_EQ(out.get(), Vector2D<double>(0.0, 1.0));
    EXPECT_EQ(out.getType(), cTangentFixed);
}

TEST(Tangent, setting_fixed_freezes_the_automatic_vector)
{
    auto curve = MakeCurve({{0, 0}, {1, 2}, {3, 3}});
    Tangent& out = *KeyAt(*curve, 1).getOutTangent();
    out.setType(cTangentSmooth);

    out.setType(cTangentFixed);
    KeyAt(*curve, 2).set(3.0, 30.0);

    EXPECT_NEAR(Slope(out), 1.0, cExact);
}

TEST(Tangent, owners_and_opposites)
{
    auto curve = MakeCurve({{0, 0}, {1, 1}});
    Keyframe& first = KeyAt(*curve, 0);
    Keyframe& last = KeyAt(*curve, 1);

    EXPECT_EQ(first.getOutTangent()->getOppositeTangent(), first.getInTangent());
    EXPECT_EQ(first.getInTangent()->getOppositeTangent(), first.getOutTangent());
    EXPECT_TRUE(first.getInTangent()->isInTangent());
    EXPECT_EQ(first.getInTangent()->getOwningKeyframe(), &first);
    EXPECT_EQ(last.getOutTangent()->getOwningSegment(), &*--curve->end());
    EXPECT_EQ(last.getOutTangent()->getOwningCurve(), curve.get());
    EXPECT_EQ(last.getRightSegment()->getRightKey(), nullptr);
    EXPECT_EQ(curve->begin()->getOutTangent(), nullptr);
}
