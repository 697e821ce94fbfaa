#include "EditorTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <sstream>

using namespace EditorTest;

TEST(SnapSettings, grid_metrics_and_the_auto_increment_agree_for_the_pixel_size)
{
    // The fade is 1.5 times the distance of log10(5 pixels) below the next whole decade, at most 1.
    // log10 is faithful to an ulp or so; scaled by 1.5 that stays far below this for fades up to 1.
    constexpr double cLogRounding = 1e-14;
    const struct
    {
        const char* name;
        double pixelSize, spacing, fade;
        int decimals;
    } cases[] = {
        { "unit lines exactly five pixels apart", 0.2, 1.0, 0.0, 0 },
        { "tenths exactly five pixels apart", 0.02, 0.1, 0.0, 2 },
        { "ten-unit lines fifty pixels minus a bit", 1.0, 10.0, 1.5 * (1 - std::log10(5.0)), 0 },
        { "fade saturates at one", 0.004, 0.1, 1.0, 2 },
        { "hundredths need three decimals", 0.0005, 0.01, 1.5 * (-2 - std::log10(0.0025)), 3 },
    };
    const SnapSettings autoIncrements;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        double spacing = 0.0, fade = -1.0;
        int decimals = -1;

        SnapSettings::GetGridMetrics(c.pixelSize, spacing, fade, decimals);

        EXPECT_DOUBLE_EQ(spacing, c.spacing);
        EXPECT_NEAR(fade, c.fade, cLogRounding);
        EXPECT_EQ(decimals, c.decimals);
        EXPECT_EQ(autoIncrements.getIncrementX(c.pixelSize), spacing);
        EXPECT_EQ(autoIncrements.getIncrementY(c.pixelSize), spacing);
    }
}

// The fraction is narrowed to float, which moves a result off the exact multiple by up to ~6e-8
// of the increment; the expected values replay that narrowing (value - float(fraction) *
// increment, plus an increment when rounding away from zero), and what may remain is the rounding
// of the double steps after it: a few ulps of values up to 10.
TEST(SnapSettings, round_gives_the_multiple_with_the_narrowed_fraction_and_halves_away_from_zero)
{
    const struct
    {
        const char* name;
        double value, increment, expected;
    } cases[] = {
        { "half goes up", 7.5, 5.0, 10.0 },
        { "negative half goes down", -7.5, 5.0, -10.0 },
        { "half of a fractional increment", -0.25, 0.5, -0.5 },
        { "toward zero misses zero by the narrowing", 2.4, 5.0, 2.4 - double(0.48f) * 5.0 },
        { "toward zero falls short of three", 3.3, 1.0, 3.3 - double(0.3f) },
        { "negative mirrors positive", -3.3, 1.0, -3.3 + double(0.3f) },
        { "away from zero overshoots four", 3.7, 1.0, 3.7 - double(0.7f) + 1.0 },
    };
    for (const auto& c : cases)
        EXPECT_NEAR(SnapSettings::Round(c.value, c.increment), c.expected, 1e-14) << c.name;
}

// The axes differ in every field, so that one written for the other shows.
TEST(SnapSettings, str_and_stream_operators_describe_both_axes_with_six_significant_digits)
{
    SnapSettings settings;
    EXPECT_EQ(settings.str(), "SnapSettings: x off, x inc=auto, y off, y inc=auto");
    settings.setSnappingX(true);
    settings.setIncrementX(0.25);
    settings.setIncrementY(1234567.0);
    const std::string text = "SnapSettings: x on, x inc=0.25, y off, y inc=1.23457e+06";
    std::ostringstream out;

    // Padding applies to the whole text only if it is written in one piece.
    out << std::setfill('*') << std::setw(70) << settings << '|' << &settings;

    EXPECT_EQ(out.str(), std::string(70 - text.size(), '*') + text + '|' + text);
}

// The widget tells of a change only when the settings differ, so a field left out of the
// comparison would swallow a change.
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

TEST(SnapSettings, snap_rounds_each_axis_with_its_own_increment_and_leaves_an_axis_that_is_off_alone)
{
    SnapSettings both, xOnly, neither;
    both.setSnappingX(true);
    both.setSnappingY(true);
    neither.setIncrementX(0.25);
    neither.setIncrementY(0.5);
    xOnly = neither;
    xOnly.setSnappingX(true);
    // 200 x 100 pixels on 40 x 2 curve units: auto increments 1 on x and 0.1 on y.
    Viewport viewport(Rect(0, 0, 200, 100), Rect(-10, -1, 40, 2));
    SnapSettings::Vector point(3.46, 0.46), a(1.13, 7.77), b(1.13, 7.77);

    SnapSettings::Snap(point, both, viewport);
    // A fixed increment wins over the pixel size, whose auto increment would be 0.1.
    SnapSettings::Snap(a, xOnly, { 0.02, 0.02 });
    SnapSettings::Snap(b, neither, { 0.02, 0.02 });

    // Snapped points are checked against the exact multiple, so they carry the narrowing error.
    constexpr double cNarrowing = 1e-7;
    EXPECT_NEAR(point.x, 3.0, cNarrowing);
    EXPECT_NEAR(point.y, 0.5, cNarrowing);
    EXPECT_NEAR(a.x, 1.25, cNarrowing);
    EXPECT_EQ(a.y, 7.77);
    EXPECT_EQ(b, SnapSettings::Vector(1.13, 7.77));
}
