#include "EditorTestUtil.h"

#include "view/SnapSettings.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

using namespace EditorTest;

namespace {

// log10 is faithful to an ulp or so; scaled by 1.5 that stays far below this for fades up to 1.
constexpr double cLogRounding = 1e-14;
// Expected values below replay the narrowing of the fraction to float, which moves a result off
// the exact multiple by up to ~6e-8 of the increment. What may remain is the rounding of the
// double steps after it: a few ulps of values up to 10.
constexpr double cAfterNarrowing = 1e-14;
// Snapped points are checked against the exact multiple, so they may carry the narrowing error.
constexpr double cNarrowing = 1e-7;

struct RowName
{
    template <class Case> std::string operator()(const ::testing::TestParamInfo<Case>& iInfo) const
    {
        return iInfo.param.name;
    }
};

} // namespace

struct GridCase
{
    const char* name;
    double pixelSize, spacing, fade;
    int decimals;
};

using SnapSettingsGrid = ::testing::TestWithParam<GridCase>;

TEST_P(SnapSettingsGrid, metrics_and_auto_increment_agree_for_the_pixel_size)
{
    const GridCase& c = GetParam();
    const SnapSettings autoIncrements;
    double spacing = 0.0, fade = -1.0;
    int decimals = -1;

    SnapSettings::GetGridMetrics(c.pixelSize, spacing, fade, decimals);

    EXPECT_DOUBLE_EQ(spacing, c.spacing);
    EXPECT_NEAR(fade, c.fade, cLogRounding);
    EXPECT_EQ(decimals, c.decimals);
    EXPECT_EQ(autoIncrements.getIncrementX(c.pixelSize), spacing);
    EXPECT_EQ(autoIncrements.getIncrementY(c.pixelSize), spacing);
}

INSTANTIATE_TEST_SUITE_P(SnapSettings, SnapSettingsGrid,
    ::testing::Values(GridCase { "unit_lines_exactly_five_pixels_apart", 0.2, 1.0, 0.0, 0 },
        GridCase { "tenths_exactly_five_pixels_apart", 0.02, 0.1, 0.0, 2 },
        GridCase { "ten_unit_lines_fifty_pixels_minus_a_bit", 1.0, 10.0, 0.45154499349597177, 0 },
        GridCase { "fade_saturates_at_one", 0.004, 0.1, 1.0, 2 },
        GridCase { "hundredths_need_three_decimals", 0.0005, 0.01, 0.9030899869919438, 3 }),
    RowName());

struct RoundCase
{
    const char* name;
    double value, increment, expected;
};

using SnapSettingsRound = ::testing::TestWithParam<RoundCase>;

TEST_P(SnapSettingsRound, gives_the_multiple_with_the_narrowed_fraction)
{
    const RoundCase& c = GetParam();

    const double rounded = SnapSettings::Round(c.value, c.increment);

    EXPECT_NEAR(rounded, c.expected, cAfterNarrowing);
}

INSTANTIATE_TEST_SUITE_P(SnapSettings, SnapSettingsRound,
    ::testing::Values(RoundCase { "half_goes_up_away_from_zero", 7.5, 5.0, 10.0 },
        RoundCase { "negative_half_goes_down_away_from_zero", -7.5, 5.0, -10.0 },
        RoundCase { "half_of_a_fractional_increment", -0.25, 0.5, -0.5 },
        RoundCase { "toward_zero_misses_zero_by_the_narrowing", 2.4, 5.0, 5.364418020903372e-08 },
        RoundCase { "toward_zero_falls_short_of_three", 3.3, 1.0, 2.999999988079071 },
        RoundCase { "negative_mirrors_positive", -3.3, 1.0, -2.999999988079071 },
        RoundCase { "away_from_zero_overshoots_four", 3.7, 1.0, 4.000000011920929 }),
    RowName());

TEST(SnapSettings, fixed_increment_ignores_pixel_size_and_snapping_flag)
{
    SnapSettings off, on;
    off.setIncrementX(0.25);
    on.setIncrementX(0.25);
    on.setSnappingX(true);
    on.setIncrementY(2.0);

    EXPECT_EQ(off.getIncrementX(0.02), 0.25);
    EXPECT_EQ(on.getIncrementX(100.0), 0.25);
    EXPECT_EQ(on.getIncrementY(0.02), 2.0);
}

TEST(SnapSettings, str_and_stream_operators_describe_both_axes_with_six_significant_digits)
{
    SnapSettings xQuarter, yLarge;
    xQuarter.setSnappingX(true);
    xQuarter.setIncrementX(0.25);
    yLarge.setSnappingY(true);
    yLarge.setIncrementY(1234567.0);
    const std::string text = yLarge.str();
    std::ostringstream byObject, byPointer;

    byObject << std::setfill('*') << std::setw(70) << yLarge;
    byPointer << std::setfill('-') << std::left << std::setw(70) << &yLarge;

    EXPECT_EQ(SnapSettings().str(), "SnapSettings: x off, x inc=auto, y off, y inc=auto");
    EXPECT_EQ(xQuarter.str(), "SnapSettings: x on, x inc=0.25, y off, y inc=auto");
    EXPECT_EQ(text, "SnapSettings: x off, x inc=auto, y on, y inc=1.23457e+06");
    EXPECT_EQ(byObject.str(), std::string(70 - text.size(), '*') + text);
    EXPECT_EQ(byPointer.str(), text + std::string(70 - text.size(), '-'));
}

TEST(SnapSettings, equality_and_copy_cover_all_four_fields)
{
    SnapSettings a, b, c, d, copied;
    a.setSnappingX(true);
    b.setSnappingY(true);
    c.setIncrementX(0.5);
    d.setIncrementY(0.5);

    copied.copy(c);

    for (const SnapSettings* changed : { &a, &b, &c, &d })
        EXPECT_NE(*changed, SnapSettings()) << changed;
    EXPECT_NE(c, d);
    EXPECT_EQ(copied, c);
}

TEST(SnapSettings, snap_rounds_each_axis_with_its_own_pixel_size_and_leaves_an_axis_that_is_off_alone)
{
    SnapSettings both, xOnly, neither;
    both.setSnappingX(true);
    both.setSnappingY(true);
    neither.setIncrementX(0.25);
    neither.setIncrementY(0.5);
    xOnly = neither;
    xOnly.setSnappingX(true);
    // 200 x 100 pixels on 40 x 2 curve units: auto increments 1 on x and 0.1 on y.
    Viewport viewport(Viewport::Rectangle(0, 0, 200, 100), Viewport::Rectangle(-10, -1, 40, 2));
    SnapSettings::Vector point(3.46, 0.46), a(1.13, 7.77), b(1.13, 7.77);

    SnapSettings::Snap(point, both, viewport);
    SnapSettings::Snap(a, xOnly, { 0.02, 0.02 });
    SnapSettings::Snap(b, neither, { 0.02, 0.02 });

    EXPECT_NEAR(point.x, 3.0, cNarrowing);
    EXPECT_NEAR(point.y, 0.5, cNarrowing);
    EXPECT_NEAR(a.x, 1.25, cNarrowing);
    EXPECT_EQ(a.y, 7.77);
    EXPECT_EQ(b, SnapSettings::Vector(1.13, 7.77));
}
