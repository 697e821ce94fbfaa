#include "widget/WidgetHarness.h"

#include <gtest/gtest.h>

using namespace EditorTest;

namespace {

/// A flat curve at y = 1 from x = 2 to x = 8.
struct FlatCurve : CurveView
{
    FlatCurve()
        : CurveView({ { 2, 1 }, { 8, 1 } })
    {
        curve->setName("scene.flat");
        layer = std::dynamic_pointer_cast<CurveLayer>(widget->getRootLayer()->findLayer("Curve Layer"));
    }
    std::shared_ptr<CurveLayer> layer;
};

const QColor cInterior(0, 255, 0);

} // namespace

TEST(MakeUniqueLabels, keeps_the_shortest_ending_that_tells_names_apart)
{
    QStringList labels;
    MakeUniqueLabels({ "a.b.x", "a.c.x", "d.y", "same", "same", "x", "a.x" }, labels);

    EXPECT_EQ(labels, (QStringList { "b.x", "c.x", "y", "same", "same", "x", "a.x" }));
}

TEST(CurveLayer, a_curve_is_a_line_in_the_tables_or_its_own_colours_with_its_keys_when_selected_and_dims_on_request)
{
    FlatCurve view;

    QImage image = view.grab();
    EXPECT_TRUE(ColourNear(image, view.at(5, 1), cInterior));
    EXPECT_TRUE(ColourNear(image, view.at(9, 1), QColor(0, 165, 0))) << "beyond the last key";
    EXPECT_FALSE(ColourNear(image, view.at(5, 1.5), cInterior));

    SetUnselectedInteriorColor(*view.curve, QColor(200, 0, 200));
    EXPECT_TRUE(ColourNear(view.grab(), view.at(5, 1), QColor(200, 0, 200)));
    RemoveUnselectedInteriorColor(*view.curve);

    SetVisible(*view.curve, false);
    image = view.grab();
    EXPECT_FALSE(ColourNear(image, view.at(5, 1), cInterior)) << "an invisible curve takes no part";
    EXPECT_FALSE(ColourNear(image, view.at(5, 1), cInterior.darker(200)));
    SetVisible(*view.curve, true);

    // Selected, the curve shows its keys: hollow, and filled when selected themselves.
    view.selection().select(*view.curve);
    view.selection().select(view.key(8));
    image = view.grab();
    EXPECT_TRUE(ColourNear(image, view.at(5, 1), QColor(0, 255, 255)));
    EXPECT_EQ(image.pixelColor(view.at(8, 1)), QColor(255, 255, 0)) << "the middle of a solid square";
    // The search above the key stays off the line's own row, which has the outline's colour.
    const QPoint hollow = view.at(2, 1);
    EXPECT_TRUE(ColourNear(image, hollow - QPoint(0, 3), QColor(0, 255, 255))) << "the outline";
    EXPECT_EQ(image.pixelColor(hollow - QPoint(1, 1)), QColor(46, 46, 46)) << "nothing inside it";
    view.selection().clear();

    // The layer dims its own copy: the table is shared with the grid and the host.
    view.layer->disableFullColors();
    EXPECT_TRUE(ColourNear(view.grab(), view.at(5, 1), QColor(0, 127, 0)));
    EXPECT_EQ(view.widget->getColors()->getColor(GraphViewColors::cUnselectedInteriorColor), cInterior);
}

TEST(CurveLayer, hover_lights_the_curve_a_press_puts_it_out_and_a_double_click_takes_all_but_the_open_ends)
{
    FlatCurve view;
    const QPoint on = view.at(5, 1);

    SendMouse(view.widget.get(), QEvent::MouseMove, on, Qt::NoButton, Qt::NoButton);
    EXPECT_EQ(view.layer->getHover().getType(), HitRecord::cCurve);
    EXPECT_TRUE(ColourNear(view.grab(), on, QColor(255, 255, 255)));
    // The item under a press must not stay lit through the drag that follows.
    view.send(QEvent::MouseButtonPress, on, Qt::LeftButton);
    EXPECT_TRUE(view.layer->getHover().isEmpty());
    view.send(QEvent::MouseButtonRelease, on, Qt::NoButton);

    view.send(QEvent::MouseButtonDblClick, on, Qt::LeftButton);

    Selection& selection = view.selection();
    EXPECT_TRUE(selection.isSelected(*view.curve));
    EXPECT_TRUE(selection.isSelected(view.key(2)));
    EXPECT_TRUE(selection.isSelected(view.segment(5)));
    EXPECT_FALSE(selection.isSelected(*view.curve->begin()));
    EXPECT_FALSE(selection.isSelected(*--view.curve->end()));
}

TEST(CurveLayer, velocity_shows_for_the_curves_that_ask_and_labels_stand_above_falling_and_below_rising_curves)
{
    FlatCurve view;
    auto rising = MakeCurve({ { 0, 0 }, { 10, 2 } }); // slope 0.2
    rising->setName("rising");
    view.widget->getCurves()->addCurve(rising);
    SetVelocityVisible(*rising, true);
    std::vector<std::pair<std::string, int>> labels;
    QObject::connect(view.layer.get(), &Layer::requestDrawText,
        [&](int, int iY, const QString& iText, const QColor&) { labels.emplace_back(iText.toStdString(), iY); });
    QTest::keyClick(view.widget.get(), Qt::Key_H);
    labels.clear();

    const QImage image = view.widget->grabFramebuffer();

    EXPECT_TRUE(ColourNear(image, view.at(5, 0.2), QColor(255, 204, 255))) << "on the curve's own axes";
    ASSERT_EQ(labels.size(), 2u);
    // One label every 40 pixels: the flat curve's at x = 1, the rising one's at x = 2.
    EXPECT_EQ(labels[0], (std::pair<std::string, int>("flat", view.at(1, 1).y() - 4)));
    EXPECT_EQ(labels[1], (std::pair<std::string, int>("rising", view.at(2, 0.4).y() + 12)));
}
