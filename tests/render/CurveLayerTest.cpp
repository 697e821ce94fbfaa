#include "widget/WidgetHarness.h"

#include <QMouseEvent>

#include <gtest/gtest.h>

using namespace EditorTest;

namespace {

using Rect = Viewport::Rectangle;

// Lines are smoothed and blended, so a one-pixel line lights its pixels only partly; a pixel
// within this distance per channel, a pixel or two about the predicted place, counts as a hit.
constexpr int cChannelTolerance = 48;
constexpr int cSearchRadius = 2;

bool ColourNear(const QImage& iImage, Vector2D<double> iWindow, const QColor& iColour)
{
    for (int dy = -cSearchRadius; dy <= cSearchRadius; ++dy)
        for (int dx = -cSearchRadius; dx <= cSearchRadius; ++dx) {
            const QColor c = iImage.pixelColor(int(iWindow.x) + dx, int(iWindow.y) + dy);
            if (std::abs(c.red() - iColour.red()) <= cChannelTolerance &&
                std::abs(c.green() - iColour.green()) <= cChannelTolerance &&
                std::abs(c.blue() - iColour.blue()) <= cChannelTolerance)
                return true;
        }
    return false;
}

/// A widget showing one flat curve at y = 1 from x = 2 to x = 8, in a view of about 0..10 by
/// 0..2, shifted by half a pixel so that the line and the keys fall on pixel centres.
struct CurveScene
{
    CurveScene()
    {
        curve = Splinor::create();
        curve->setName("scene.flat");
        curve->insertSegment(Keyframe(2, 1), Linear::create());
        curve->insertSegment(Keyframe(8, 1), Linear::create());
        shown.widget->getCurves()->addCurve(curve);
        shown.widget->getViewport()->setWorldBounds(Rect(0.0125, -0.005, 10, 2));
        layer = std::dynamic_pointer_cast<CurveLayer>(shown.widget->getRootLayer()->findLayer("Curve Layer"));
    }
    Vector2D<double> window(double iX, double iY) const { return shown.widget->getViewport()->worldToWindow({iX, iY}); }
    Keyframe& key(double iX) { return *curve->findSegment(iX)->getLeftKey(); }

    ShownWidget shown{400, 200};
    std::shared_ptr<Splinor> curve;
    std::shared_ptr<CurveLayer> layer;
};

} // namespace

TEST(MakeUniqueLabels, keeps_the_shortest_ending_that_tells_names_apart)
{
    QStringList labels;
    MakeUniqueLabels({"a.b.x", "a.c.x", "d.y", "same", "same", "x", "a.x"}, labels);

    EXPECT_EQ(labels, (QStringList{"b.x", "c.x", "y", "same", "same", "x", "a.x"}));
}

TEST(CurveLayer, an_unselected_curve_is_a_bare_line_in_its_interior_and_exterior_colours)
{
    CurveScene scene;

    const QImage image = scene.shown.grab();

    EXPECT_TRUE(ColourNear(image, scene.window(5, 1), QColor(0, 255, 0)));
    EXPECT_TRUE(ColourNear(image, scene.window(9, 1), QColor(0, 165, 0))) << "beyond the last key";
    EXPECT_FALSE(ColourNear(image, scene.window(5, 1.5), QColor(0, 255, 0)));
}

TEST(CurveLayer, a_selected_curve_shows_its_keys_hollow_and_selected_ones_filled)
{
    CurveScene scene;
    scene.shown.widget->getSelection()->select(*scene.curve);
    scene.shown.widget->getSelection()->select(scene.key(8));

    const QImage image = scene.shown.grab();

    const Vector2D<double> hollow = scene.window(2, 1);
    const Vector2D<double> filled = scene.window(8, 1);
    EXPECT_TRUE(ColourNear(image, scene.window(5, 1), QColor(0, 255, 255)));
    EXPECT_EQ(image.pixelColor(int(filled.x), int(filled.y)), QColor(255, 255, 0)) << "the middle of a solid square";
    EXPECT_TRUE(ColourNear(image, {hollow.x - 2, hollow.y - 2}, QColor(0, 255, 255))) << "the outline";
}

TEST(CurveLayer, a_per_curve_colour_overrides_the_table)
{
    CurveScene scene;
    SetUnselectedInteriorColor(*scene.curve, QColor(200, 0, 200));

    const QImage image = scene.shown.grab();

    EXPECT_TRUE(ColourNear(image, scene.window(5, 1), QColor(200, 0, 200)));
}

TEST(CurveLayer, hover_lights_the_curve_under_the_mouse_and_a_press_puts_it_out)
{
    CurveScene scene;
    GraphWidget* widget = scene.shown.widget.get();
    const Vector2D<double> on = scene.window(5, 1);

    QMouseEvent move(QEvent::MouseMove, QPointF(on.x, on.y), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &move);
    EXPECT_EQ(scene.layer->getHover().getType(), HitRecord::cCurve);
    const QImage lit = scene.shown.grab();
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(on.x, on.y), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &press);

    EXPECT_TRUE(ColourNear(lit, on, QColor(255, 255, 255)));
    EXPECT_TRUE(scene.layer->getHover().isEmpty());
}

TEST(CurveLayer, dims_its_own_copy_of_the_colours_without_touching_the_table)
{
    CurveScene scene;
    scene.layer->disableFullColors();

    const QImage image = scene.shown.grab();

    EXPECT_TRUE(ColourNear(image, scene.window(5, 1), QColor(0, 127, 0)));
    EXPECT_EQ(scene.shown.widget->getColors()->getColor(GraphViewColors::cUnselectedInteriorColor), QColor(0, 255, 0));
}

TEST(CurveLayer, an_invisible_curve_takes_no_part)
{
    CurveScene scene;
    SetVisible(*scene.curve, false);

    const QImage image = scene.shown.grab();

    EXPECT_FALSE(ColourNear(image, scene.window(5, 1), QColor(0, 255, 0)));
}

TEST(CurveLayer, velocity_is_drawn_on_the_curve_axes_for_the_curves_that_ask)
{
    CurveScene scene;
    auto ramp = Splinor::create();
    ramp->insertSegment(Keyframe(0, 0), Linear::create());
    ramp->insertSegment(Keyframe(10, 15), Linear::create()); // slope 1.5
    scene.shown.widget->getCurves()->addCurve(ramp);
    SetVelocityVisible(*ramp, true);

    const QImage image = scene.shown.grab();

    EXPECT_TRUE(ColourNear(image, scene.window(5, 1.5), QColor(255, 204, 255)));
}

TEST(CurveLayer, labels_stand_above_falling_and_below_rising_curves)
{
    CurveScene scene;
    auto rising = Splinor::create();
    rising->setName("rising");
    rising->insertSegment(Keyframe(0, 0), Linear::create());
    rising->insertSegment(Keyframe(10, 2), Linear::create());
    scene.shown.widget->getCurves()->addCurve(rising);
    std::vector<std::pair<std::string, int>> labels;
    QObject::connect(scene.layer.get(), &Layer::requestDrawText, [&](int, int iY, const QString& iText, const QColor&) {
        labels.emplace_back(iText.toStdString(), iY);
    });
    QTest::keyClick(scene.shown.widget.get(), Qt::Key_H);
    labels.clear();

    scene.shown.widget->grabFramebuffer();

    ASSERT_EQ(labels.size(), 2u);
    // One label every 40 pixels: the flat curve's at x = 1, the rising one's at x = 2.
    EXPECT_EQ(labels[0], (std::pair<std::string, int>("flat", int(scene.window(1, 1).y) - 4)));
    EXPECT_EQ(labels[1], (std::pair<std::string, int>("rising", int(scene.window(2, 0.4).y) + 12)));
}

TEST(CurveLayer, a_double_click_selects_the_whole_curve_but_its_open_ends)
{
    CurveScene scene;
    GraphWidget* widget = scene.shown.widget.get();
    const Vector2D<double> on = scene.window(5, 1);

    QMouseEvent click(QEvent::MouseButtonDblClick, QPointF(on.x, on.y), Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QApplication::sendEvent(widget, &click);

    Selection& selection = *widget->getSelection();
    EXPECT_TRUE(selection.isSelected(*scene.curve));
    EXPECT_TRUE(selection.isSelected(scene.key(2)));
    EXPECT_TRUE(selection.isSelected(*scene.curve->findSegment(5)));
    EXPECT_FALSE(selection.isSelected(*scene.curve->begin()));
    EXPECT_FALSE(selection.isSelected(*--scene.curve->end()));
}
