#include "widget/WidgetHarness.h"

#include <gtest/gtest.h>

using namespace EditorTest;

namespace {

/// A shown widget on 0..20 by 0..2, which frames and glides.
struct Framing
{
    Framing() { widget.getViewport()->setWorldBounds(Rect(0, 0, 20, 2)); }

    /// Lets the animation's timer run until it lands, for at most a second.
    Rect land()
    {
        for (int i = 0; i < 100 && monitorRuns(); ++i) {
            QTest::qWait(20);
            QEvent nudge(QEvent::None); // a finished monitor leaves at the next event
            widget.getRootLayer()->handleEvent(&nudge, *widget.getViewport());
        }
        return widget.getViewport()->getWorldBounds();
    }
    /// The root holds the user layers and the focus frame, and a monitor while it glides.
    bool monitorRuns() { return widget.getRootLayer()->numChildren() > 2; }

    ShownWidget shown { 400, 300 };
    GraphWidget& widget = *shown.widget;
};

} // namespace

TEST(ViewFraming, frame_all_glides_in_ten_steps_and_lands_exactly_on_the_margins)
{
    Framing framing;
    framing.widget.getCurves()->addCurve(MakeCurve({ { 0, 0 }, { 10, 4 } }));
    framing.widget.getCurves()->addCurve(MakeCurve({ { 2, -1 }, { 20, 1 } }));
    ViewportCounter steps;
    framing.widget.getViewport()->subscribe(steps);

    framing.widget.triggerFrameAuto(); // nothing is selected: everything

    EXPECT_EQ(framing.land(), Rect(0 - 1.0, -1 - 0.25, 20 * 1.1, 5 * 1.1));
    EXPECT_EQ(steps.count, 10);
}

// From 0..20 by 0..2, each framing moves only what it must, and nothing to frame starts nothing.
TEST(ViewFraming, a_single_key_ensure_visible_and_one_axis_keep_what_they_need_not_change)
{
    Framing framing;
    GraphWidget& widget = framing.widget;
    widget.triggerFrameAll();
    EXPECT_FALSE(framing.monitorRuns()) << "no monitor without curves";

    auto curve = MakeCurve({ { 50, 7 }, { 60, 9 } });
    widget.getCurves()->addCurve(curve);
    widget.getSelection()->select(*curve->findSegment(50)->getLeftKey());
    widget.triggerFrameAuto();
    EXPECT_EQ(framing.land(), Rect(50 - 10, 7 - 1, 20, 2)) << "a single key is centred at the present scale";

    EnsureVisible(widget.getRootLayer(), widget.getViewport(), { 59.9, 7.9 });
    EXPECT_FALSE(framing.monitorRuns());
    EnsureVisibleX(widget.getRootLayer(), widget.getViewport(), 60.0); // the right edge is outside
    EXPECT_EQ(framing.land(), Rect(50, 6, 20, 2));

    widget.getSelection()->clear();
    widget.triggerFrameAllX();
    EXPECT_EQ(framing.land(), Rect(50 - 10 * 0.05, 6, 10 * 1.1, 2));
}

TEST(ViewFraming, a_press_stops_the_glide_where_it_is_and_goes_on_to_the_layers)
{
    Framing framing;
    framing.widget.getCurves()->addCurve(MakeCurve({ { 0, 0 }, { 100, 50 } }));
    int presses = 0;
    auto listener = Make<ScriptedLayer>("listener", nullptr);
    listener->onEvent
        = [&](QEvent* iEvent, Viewport&) { return iEvent->type() == QEvent::MouseButtonPress && ++presses; };
    framing.widget.getUserLayers()->pushLayer(listener);

    framing.widget.triggerFrameAll();
    // Pressed once the glide is under way, however late a loaded machine delivers the timer.
    for (int i = 0; i < 200 && framing.widget.getViewport()->getWorldBounds() == Rect(0, 0, 20, 2); ++i)
        QTest::qWait(5);
    QTest::mousePress(&framing.widget, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    const Rect stopped = framing.widget.getViewport()->getWorldBounds();
    QTest::qWait(200);

    EXPECT_EQ(presses, 1);
    EXPECT_EQ(framing.widget.getViewport()->getWorldBounds(), stopped);
    EXPECT_GT(stopped.width, 20.0);
    EXPECT_LT(stopped.width, 110.0);
    EXPECT_FALSE(framing.monitorRuns());
}

TEST(MakeEasingCurve, eases_from_rest_to_rest_steepest_nearer_the_start_when_zooming_in)
{
    auto zoomIn = MakeEasingCurve(100.0, 25.0); // k = 0.2
    auto even = MakeEasingCurve(10.0, 10.0);

    EXPECT_EQ(zoomIn->eval(0.0), 0.0);
    EXPECT_EQ(zoomIn->eval(1.0), 1.0);
    EXPECT_NEAR(GetFirstDerivative(*zoomIn, 1e-6), 0.0, 1e-3);
    EXPECT_NEAR(even->eval(0.5), 0.5, 1e-12) << "equal sizes ease symmetrically";
    EXPECT_GT(zoomIn->eval(0.5), even->eval(0.5));
    double previous = 0.0;
    for (double t = 0.05; t <= 1.0; t += 0.05) {
        EXPECT_GE(zoomIn->eval(t), previous);
        previous = zoomIn->eval(t);
    }
    EXPECT_GT(GetFirstDerivative(*zoomIn, 0.2), GetFirstDerivative(*zoomIn, 0.8));
}
