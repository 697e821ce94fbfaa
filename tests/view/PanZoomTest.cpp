#include "widget/WidgetHarness.h"

#include <QWheelEvent>

#include <gtest/gtest.h>

using namespace EditorTest;

namespace {

using Rect = Viewport::Rectangle;

// Positions are worked out from the start of a gesture; what remains is rounding of a few ulps.
constexpr double cRounding = 1e-9;

void ExpectNear(const Rect& iActual, const Rect& iExpected)
{
    EXPECT_NEAR(iActual.x, iExpected.x, cRounding);
    EXPECT_NEAR(iActual.y, iExpected.y, cRounding);
    EXPECT_NEAR(iActual.width, iExpected.width, cRounding);
    EXPECT_NEAR(iActual.height, iExpected.height, cRounding);
}

void Move(QWidget* iWidget, QPoint iPoint, Qt::MouseButtons iHeld, Qt::KeyboardModifiers iModifiers = Qt::NoModifier)
{
    QMouseEvent event(QEvent::MouseMove, iPoint, Qt::NoButton, iHeld, iModifiers);
    QApplication::sendEvent(iWidget, &event);
}

void Button(QWidget* iWidget, QEvent::Type iType, Qt::MouseButton iButton, Qt::MouseButtons iHeld, QPoint iPoint,
            Qt::KeyboardModifiers iModifiers = Qt::NoModifier)
{
    QMouseEvent event(iType, iPoint, iButton, iHeld, iModifiers);
    QApplication::sendEvent(iWidget, &event);
}

void Wheel(QWidget* iWidget, QPoint iPoint, int iDelta)
{
    QWheelEvent event(iPoint, iWidget->mapToGlobal(iPoint), QPoint(), QPoint(0, iDelta), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(iWidget, &event);
}

struct Navigation : ::testing::Test
{
    Navigation() : shown(400, 300)
    {
        viewport().setWorldBounds(Rect(0, 0, 40, 3));
        baseLayers = shown.widget->getUserLayers()->numChildren();
    }
    Viewport& viewport() { return *shown.widget->getViewport(); }
    Vector2D<double> worldAt(QPoint iPoint) { return viewport().windowToWorld({double(iPoint.x()), double(iPoint.y())}); }

    ShownWidget shown;
    unsigned baseLayers = 0;
};

} // namespace

TEST_F(Navigation, a_middle_drag_pans_each_axis_by_its_own_pixel_size)
{
    GraphWidget* widget = shown.widget.get();

    Button(widget, QEvent::MouseButtonPress, Qt::MiddleButton, Qt::MiddleButton, {100, 100});
    EXPECT_EQ(widget->getUserLayers()->numChildren(), baseLayers + 1);
    Move(widget, {150, 120}, Qt::MiddleButton);

    // 0.1 units a pixel on x, 0.01 on y: right shows smaller x, down shows larger y.
    ExpectNear(viewport().getWorldBounds(), Rect(-5, 0.2, 40, 3));
    Move(widget, {100, 100}, Qt::MiddleButton);
    ExpectNear(viewport().getWorldBounds(), Rect(0, 0, 40, 3));

    Button(widget, QEvent::MouseButtonRelease, Qt::MiddleButton, Qt::NoButton, {100, 100});
    EXPECT_EQ(widget->getUserLayers()->numChildren(), baseLayers) << "the gesture's layer is gone";
}

TEST_F(Navigation, an_alt_right_drag_zooms_about_the_press_point)
{
    GraphWidget* widget = shown.widget.get();
    const QPoint anchor(120, 90);
    const Vector2D<double> under = worldAt(anchor);

    Button(widget, QEvent::MouseButtonPress, Qt::RightButton, Qt::RightButton, anchor, Qt::AltModifier);
    Move(widget, {150, 110}, Qt::RightButton, Qt::AltModifier);

    const Rect zoomed = viewport().getWorldBounds();
    EXPECT_NEAR(zoomed.width, 40 * std::pow(0.99, 50), cRounding) << "right and down zoom in";
    EXPECT_NEAR(zoomed.height / zoomed.width, 3.0 / 40.0, cRounding);
    EXPECT_NEAR(worldAt(anchor).x, under.x, cRounding);
    EXPECT_NEAR(worldAt(anchor).y, under.y, cRounding);

    Move(widget, anchor, Qt::RightButton, Qt::AltModifier);
    ExpectNear(viewport().getWorldBounds(), Rect(0, 0, 40, 3));
    Button(widget, QEvent::MouseButtonRelease, Qt::RightButton, Qt::NoButton, anchor);
    EXPECT_EQ(widget->getUserLayers()->numChildren(), baseLayers);
}

TEST_F(Navigation, shift_locks_a_pan_to_one_axis_after_a_dead_zone)
{
    GraphWidget* widget = shown.widget.get();
    Button(widget, QEvent::MouseButtonPress, Qt::MiddleButton, Qt::MiddleButton, {100, 100});
    Move(widget, {110, 100}, Qt::MiddleButton);

    // Shift is first seen at (112, 102): the pan has reached that offset and stays there...
    Move(widget, {112, 102}, Qt::MiddleButton, Qt::ShiftModifier);
    ExpectNear(viewport().getWorldBounds(), Rect(-1.2, 0.02, 40, 3));
    Move(widget, {115, 105}, Qt::MiddleButton, Qt::ShiftModifier); // inside the 3-pixel box
    ExpectNear(viewport().getWorldBounds(), Rect(-1.2, 0.02, 40, 3));

    // ...until the motion leaves the box along x; the 3 pixels swallowed are not made up.
    Move(widget, {120, 103}, Qt::MiddleButton, Qt::ShiftModifier);
    ExpectNear(viewport().getWorldBounds(), Rect(-1.7, 0.02, 40, 3));
}

TEST_F(Navigation, switching_between_pan_and_zoom_mid_gesture_never_jumps)
{
    GraphWidget* widget = shown.widget.get();
    Button(widget, QEvent::MouseButtonPress, Qt::MiddleButton, Qt::MiddleButton, {100, 100});
    Move(widget, {130, 100}, Qt::MiddleButton);
    const Rect panned = viewport().getWorldBounds();

    Button(widget, QEvent::MouseButtonPress, Qt::RightButton, Qt::MiddleButton | Qt::RightButton, {130, 100});
    Move(widget, {130, 100}, Qt::MiddleButton | Qt::RightButton);
    ExpectNear(viewport().getWorldBounds(), panned);
    Move(widget, {140, 100}, Qt::MiddleButton | Qt::RightButton);
    EXPECT_LT(viewport().getWorldBounds().width, panned.width);

    Button(widget, QEvent::MouseButtonRelease, Qt::RightButton, Qt::MiddleButton, {140, 100});
    const Rect zoomed = viewport().getWorldBounds();
    Move(widget, {140, 100}, Qt::MiddleButton);
    ExpectNear(viewport().getWorldBounds(), zoomed);
    Button(widget, QEvent::MouseButtonRelease, Qt::MiddleButton, Qt::NoButton, {140, 100});
    EXPECT_EQ(widget->getUserLayers()->numChildren(), baseLayers);
}

TEST_F(Navigation, the_wheel_keeps_the_point_under_the_mouse_and_steps_back_exactly)
{
    GraphWidget* widget = shown.widget.get();
    const QPoint mouse(73, 211);
    const Vector2D<double> under = worldAt(mouse);

    for (int i = 0; i < 10; ++i)
        Wheel(widget, mouse, 120);
    EXPECT_NEAR(viewport().getWorldBounds().width, 40 * std::pow(0.8, 10), cRounding);
    EXPECT_NEAR(worldAt(mouse).x, under.x, cRounding);
    EXPECT_NEAR(worldAt(mouse).y, under.y, cRounding);
    for (int i = 0; i < 10; ++i)
        Wheel(widget, mouse, -120);

    ExpectNear(viewport().getWorldBounds(), Rect(0, 0, 40, 3));
    Wheel(widget, mouse, 0);
    EXPECT_NEAR(viewport().getWorldBounds().width, 50, cRounding) << "no delta zooms out";
}

TEST_F(Navigation, plus_equals_and_minus_zoom_about_the_middle)
{
    GraphWidget* widget = shown.widget.get();

    QTest::keyClick(widget, Qt::Key_Plus);
    ExpectNear(viewport().getWorldBounds(), Rect(4, 0.3, 32, 2.4));
    QTest::keyClick(widget, Qt::Key_Minus);
    QTest::keyClick(widget, Qt::Key_Equal, Qt::ShiftModifier);
    QTest::keyClick(widget, Qt::Key_Semicolon);

    ExpectNear(viewport().getWorldBounds(), Rect(4, 0.3, 32, 2.4));
}

TEST_F(Navigation, nothing_starts_while_navigation_is_off_or_without_its_buttons)
{
    GraphWidget* widget = shown.widget.get();
    viewport().setPanZoomEnabled(false);
    Wheel(widget, {10, 10}, 120);
    QTest::keyClick(widget, Qt::Key_Plus);
    Button(widget, QEvent::MouseButtonPress, Qt::MiddleButton, Qt::MiddleButton, {100, 100});
    Button(widget, QEvent::MouseButtonRelease, Qt::MiddleButton, Qt::NoButton, {100, 100});
    viewport().setPanZoomEnabled(true);
    Button(widget, QEvent::MouseButtonPress, Qt::LeftButton, Qt::LeftButton, {100, 100}, Qt::AltModifier);
    Button(widget, QEvent::MouseButtonRelease, Qt::LeftButton, Qt::NoButton, {100, 100}, Qt::AltModifier);

    ExpectNear(viewport().getWorldBounds(), Rect(0, 0, 40, 3));
    EXPECT_EQ(widget->getUserLayers()->numChildren(), baseLayers);
}
