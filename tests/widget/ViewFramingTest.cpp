#include "widget/WidgetHarness.h"

#include "widget/AnimationMonitor.h"
#include "widget/ViewFraming.h"

#include <gtest/gtest.h>

using namespace EditorTest;

namespace {

using Rect = Viewport::Rectangle;

struct Counter : ViewportObserver
{
    void viewportChanged(const Viewport&) override { ++count; }
    int count = 0;
};

std::shared_ptr<Splinor> Curve(std::initializer_list<Vector2D<double>> iKeys)
{
    auto curve = Splinor::create();
    for (const auto& key : iKeys)
        curve->insertSegment(Keyframe(key.x, key.y), Linear::create());
    return curve;
}

/// Lets the animation's timer run until it lands, for at most a second.
void RunAnimation(GraphWidget& iWidget)
{
    for (int i = 0; i < 100 && iWidget.getRootLayer()->numChildren() > 2; ++i) {
        QTest::qWait(20);
        QEvent nudge(QEvent::None); // a finished monitor leaves at the next event
        iWidget.getRootLayer()->handleEvent(&nudge, *iWidget.getViewport());
    }
}

} // namespace

TEST(ViewFraming, frame_all_glides_in_ten_steps_and_lands_exactly_on_the_margins)
{
    ShownWidget shown(400, 300);
    GraphWidget& widget = *shown.widget;
    widget.getCurves()->addCurve(Curve({{0, 0}, {10, 4}}));
    widget.getCurves()->addCurve(Curve({{2, -1}, {20, 1}}));
    Counter steps;
    widget.getViewport()->subscribe(steps);

    widget.triggerFrameAuto(); // nothing is selected: everything
    RunAnimation(widget);

    EXPECT_EQ(steps.count, 10);
    EXPECT_EQ(widget.getViewport()->getWorldBounds(), Rect(0 - 1.0, -1 - 0.25, 20 * 1.1, 5 * 1.1));
}

TEST(ViewFraming, a_single_key_is_centred_at_the_present_scale)
{
    ShownWidget shown(400, 300);
    GraphWidget& widget = *shown.widget;
    auto curve = Curve({{50, 7}, {60, 9}});
    widget.getCurves()->addCurve(curve);
    widget.getViewport()->setWorldBounds(Rect(0, 0, 20, 2));
    widget.getSelection()->select(*curve->findSegment(50)->getLeftKey());

    widget.triggerFrameAuto();
    RunAnimation(widget);

    EXPECT_EQ(widget.getViewport()->getWorldBounds(), Rect(50 - 10, 7 - 1, 20, 2));
}

TEST(ViewFraming, one_axis_leaves_the_other_alone_and_nothing_to_frame_starts_nothing)
{
    ShownWidget shown(400, 300);
    GraphWidget& widget = *shown.widget;
    widget.getViewport()->setWorldBounds(Rect(0, 0, 20, 2));
    widget.triggerFrameAll();
    EXPECT_EQ(widget.getRootLayer()->numChildren(), 2u) << "no monitor without curves";

    widget.getCurves()->addCurve(Curve({{0, 5}, {100, 6}}));
    widget.triggerFrameAllX();
    RunAnimation(widget);

    EXPECT_EQ(widget.getViewport()->getWorldBounds(), Rect(-5, 0, 100 * 1.1, 2));
}

TEST(ViewFraming, a_press_stops_the_glide_where_it_is_and_goes_on_to_the_layers)
{
    ShownWidget shown(400, 300);
    GraphWidget& widget = *shown.widget;
    widget.getCurves()->addCurve(Curve({{0, 0}, {100, 50}}));
    widget.getViewport()->setWorldBounds(Rect(0, 0, 20, 2));
    int presses = 0;
    auto listener = Make<ScriptedLayer>("listener", nullptr);
    listener->onEvent = [&](QEvent* iEvent, Viewport&) { return iEvent->type() == QEvent::MouseButtonPress && ++presses; };
    widget.getUserLayers()->pushLayer(listener);

    widget.triggerFrameAll();
    QTest::qWait(120);
    QTest::mousePress(&widget, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    const Rect stopped = widget.getViewport()->getWorldBounds();
    QTest::qWait(200);

    EXPECT_EQ(presses, 1);
    EXPECT_EQ(widget.getViewport()->getWorldBounds(), stopped);
    EXPECT_GT(stopped.width, 20.0);
    EXPECT_LT(stopped.width, 110.0);
    EXPECT_EQ(widget.getRootLayer()->numChildren(), 2u);
}

TEST(ViewFraming, ensure_visible_centres_a_point_outside_the_view_only)
{
    ShownWidget shown(400, 300);
    GraphWidget& widget = *shown.widget;
    widget.getViewport()->setWorldBounds(Rect(0, 0, 20, 2));

    EnsureVisible(widget.getRootLayer(), widget.getViewport(), {19.9, 1.9});
    EXPECT_EQ(widget.getRootLayer()->numChildren(), 2u);
    EnsureVisibleX(widget.getRootLayer(), widget.getViewport(), 20.0); // the right edge is outside
    RunAnimation(widget);

    EXPECT_EQ(widget.getViewport()->getWorldBounds(), Rect(10, 0, 20, 2));
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
