#include "widget/WidgetHarness.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace EditorTest;

namespace {

// Positions are worked out from the start of a gesture; what remains is rounding of a few ulps.
constexpr double cRounding = 1e-9;

void ExpectNear(const Rect& iActual, const Rect& iExpected)
{
    EXPECT_NEAR(iActual.x, iExpected.x, cRounding);
    EXPECT_NEAR(iActual.y, iExpected.y, cRounding);
    EXPECT_NEAR(iActual.width, iExpected.width, cRounding);
    EXPECT_NEAR(iActual.height, iExpected.height, cRounding);
}

/// 400 x 300 pixels on 40 x 3 units: 0.1 units a pixel on x, 0.01 on y.
struct Navigation : ::testing::Test
{
    Navigation()
        : shown(400, 300)
    {
        viewport().setWorldBounds(Rect(0, 0, 40, 3));
        baseLayers = shown.widget->getUserLayers()->numChildren();
    }
    Viewport& viewport() { return *shown.widget->getViewport(); }
    V worldAt(QPoint iPoint) { return viewport().windowToWorld({ double(iPoint.x()), double(iPoint.y()) }); }
    void press(Qt::MouseButton iButton, Qt::MouseButtons iHeld, QPoint iPoint, Qt::KeyboardModifiers iModifiers = {})
    {
        SendMouse(widget, QEvent::MouseButtonPress, iPoint, iButton, iHeld, iModifiers);
    }
    void release(Qt::MouseButton iButton, Qt::MouseButtons iHeld, QPoint iPoint, Qt::KeyboardModifiers iModifiers = {})
    {
        SendMouse(widget, QEvent::MouseButtonRelease, iPoint, iButton, iHeld, iModifiers);
    }
    void move(QPoint iPoint, Qt::MouseButtons iHeld, Qt::KeyboardModifiers iModifiers = {})
    {
        SendMouse(widget, QEvent::MouseMove, iPoint, Qt::NoButton, iHeld, iModifiers);
    }
    unsigned layers() { return shown.widget->getUserLayers()->numChildren(); }

    ShownWidget shown;
    GraphWidget* widget = shown.widget.get();
    unsigned baseLayers = 0;
};

} // namespace

TEST_F(Navigation, a_middle_drag_pans_each_axis_by_its_own_pixel_size_and_shift_locks_it_after_a_dead_zone)
{
    press(Qt::MiddleButton, Qt::MiddleButton, { 100, 100 });
    EXPECT_EQ(layers(), baseLayers + 1);
    move({ 150, 120 }, Qt::MiddleButton);
    // Right shows smaller x, down shows larger y.
    ExpectNear(viewport().getWorldBounds(), Rect(-5, 0.2, 40, 3));
    move({ 110, 100 }, Qt::MiddleButton);

    // Shift is first seen at (112, 102): the pan has reached that offset and stays there...
    move({ 112, 102 }, Qt::MiddleButton, Qt::ShiftModifier);
    ExpectNear(viewport().getWorldBounds(), Rect(-1.2, 0.02, 40, 3));
    move({ 115, 105 }, Qt::MiddleButton, Qt::ShiftModifier); // inside the 3-pixel box
    ExpectNear(viewport().getWorldBounds(), Rect(-1.2, 0.02, 40, 3));
    // ...until the motion leaves the box along x; the 3 pixels swallowed are not made up.
    move({ 120, 103 }, Qt::MiddleButton, Qt::ShiftModifier);
    ExpectNear(viewport().getWorldBounds(), Rect(-1.7, 0.02, 40, 3));

    release(Qt::MiddleButton, Qt::NoButton, { 120, 103 });
    EXPECT_EQ(layers(), baseLayers) << "the gesture's layer is gone";
}

TEST_F(Navigation, an_alt_right_drag_zooms_about_the_press_point)
{
    const QPoint anchor(120, 90);
    const V under = worldAt(anchor);

    press(Qt::RightButton, Qt::RightButton, anchor, Qt::AltModifier);
    move({ 150, 110 }, Qt::RightButton, Qt::AltModifier);

    const Rect zoomed = viewport().getWorldBounds();
    EXPECT_NEAR(zoomed.width, 40 * std::pow(0.99, 50), cRounding) << "right and down zoom in";
    EXPECT_NEAR(zoomed.height / zoomed.width, 3.0 / 40.0, cRounding);
    EXPECT_NEAR(worldAt(anchor).x, under.x, cRounding);
    EXPECT_NEAR(worldAt(anchor).y, under.y, cRounding);

    move(anchor, Qt::RightButton, Qt::AltModifier);
    ExpectNear(viewport().getWorldBounds(), Rect(0, 0, 40, 3));
    release(Qt::RightButton, Qt::NoButton, anchor);
    EXPECT_EQ(layers(), baseLayers);
}

TEST_F(Navigation, switching_between_pan_and_zoom_mid_gesture_never_jumps)
{
    press(Qt::MiddleButton, Qt::MiddleButton, { 100, 100 });
    move({ 130, 100 }, Qt::MiddleButton);
    const Rect panned = viewport().getWorldBounds();

    press(Qt::RightButton, Qt::MiddleButton | Qt::RightButton, { 130, 100 });
    move({ 130, 100 }, Qt::MiddleButton | Qt::RightButton);
    ExpectNear(viewport().getWorldBounds(), panned);
    move({ 140, 100 }, Qt::MiddleButton | Qt::RightButton);
    EXPECT_LT(viewport().getWorldBounds().width, panned.width);

    release(Qt::RightButton, Qt::MiddleButton, { 140, 100 });
    const Rect zoomed = viewport().getWorldBounds();
    move({ 140, 100 }, Qt::MiddleButton);
    ExpectNear(viewport().getWorldBounds(), zoomed);
    release(Qt::MiddleButton, Qt::NoButton, { 140, 100 });
    EXPECT_EQ(layers(), baseLayers);
}

TEST_F(Navigation, the_wheel_keeps_the_point_under_the_mouse_and_it_and_the_keys_step_back_exactly)
{
    const QPoint mouse(73, 211);
    const V under = worldAt(mouse);

    for (int i = 0; i < 10; ++i)
        SendWheel(widget, mouse, 120);
    EXPECT_NEAR(viewport().getWorldBounds().width, 40 * std::pow(0.8, 10), cRounding);
    EXPECT_NEAR(worldAt(mouse).x, under.x, cRounding);
    EXPECT_NEAR(worldAt(mouse).y, under.y, cRounding);
    for (int i = 0; i < 10; ++i)
        SendWheel(widget, mouse, -120);
    ExpectNear(viewport().getWorldBounds(), Rect(0, 0, 40, 3));

    // Plus and Equal zoom in about the middle, Minus out; other keys do nothing.
    QTest::keyClick(widget, Qt::Key_Plus);
    ExpectNear(viewport().getWorldBounds(), Rect(4, 0.3, 32, 2.4));
    QTest::keyClick(widget, Qt::Key_Minus);
    QTest::keyClick(widget, Qt::Key_Equal, Qt::ShiftModifier);
    QTest::keyClick(widget, Qt::Key_Semicolon);
    ExpectNear(viewport().getWorldBounds(), Rect(4, 0.3, 32, 2.4));

    SendWheel(widget, mouse, 0);
    EXPECT_NEAR(viewport().getWorldBounds().width, 32 * 1.25, cRounding) << "no delta zooms out";
}

TEST_F(Navigation, nothing_starts_while_navigation_is_off_or_without_its_buttons)
{
    viewport().setPanZoomEnabled(false);
    SendWheel(widget, { 10, 10 }, 120);
    QTest::keyClick(widget, Qt::Key_Plus);
    press(Qt::MiddleButton, Qt::MiddleButton, { 100, 100 });
    release(Qt::MiddleButton, Qt::NoButton, { 100, 100 });
    viewport().setPanZoomEnabled(true);
    press(Qt::LeftButton, Qt::LeftButton, { 100, 100 }, Qt::AltModifier);
    release(Qt::LeftButton, Qt::NoButton, { 100, 100 }, Qt::AltModifier);

    ExpectNear(viewport().getWorldBounds(), Rect(0, 0, 40, 3));
    EXPECT_EQ(layers(), baseLayers);
}
