#include "widget/WidgetHarness.h"

#include <QMouseEvent>

#include <gtest/gtest.h>

using namespace EditorTest;

namespace {

using Rect = Viewport::Rectangle;

/// Keys at (2, 1), (5, 1.5) and (8, 1) in a 400 x 200 view of 0..10 by 0..2, shifted by half a
/// pixel so that items fall on pixel centres: 40 pixels a unit across, 100 a unit up.
struct Scene
{
    Scene()
    {
        curve = Splinor::create();
        for (auto [x, y] : {std::pair{2.0, 1.0}, {5.0, 1.5}, {8.0, 1.0}})
            curve->insertSegment(Keyframe(x, y), Linear::create());
        shown.widget->getCurves()->addCurve(curve);
        shown.widget->getViewport()->setWorldBounds(Rect(0.0125, -0.005, 10, 2));
    }
    QPoint at(double iX, double iY) const
    {
        const Vector2D<double> p = shown.widget->getViewport()->worldToWindow({iX, iY});
        return QPoint(int(p.x), int(p.y));
    }
    void send(QEvent::Type iType, QPoint iPoint, Qt::MouseButtons iHeld, Qt::KeyboardModifiers iModifiers = {})
    {
        QMouseEvent event(iType, iPoint, iType == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, iHeld, iModifiers);
        QApplication::sendEvent(shown.widget.get(), &event);
    }
    void click(QPoint iPoint, Qt::KeyboardModifiers iModifiers = {})
    {
        send(QEvent::MouseButtonPress, iPoint, Qt::LeftButton, iModifiers);
        send(QEvent::MouseButtonRelease, iPoint, Qt::NoButton, iModifiers);
    }
    /// Presses at iFrom, drags through each point, and keeps the button down.
    void band(QPoint iFrom, std::initializer_list<QPoint> iThrough, Qt::KeyboardModifiers iModifiers = {})
    {
        send(QEvent::MouseButtonPress, iFrom, Qt::LeftButton, iModifiers);
        for (QPoint p : iThrough)
            send(QEvent::MouseMove, p, Qt::LeftButton, iModifiers);
    }
    void release(QPoint iPoint) { send(QEvent::MouseButtonRelease, iPoint, Qt::NoButton); }

    Selection& selection() { return *shown.widget->getSelection(); }
    Keyframe& key(double iX) { return *curve->findSegment(iX)->getLeftKey(); }
    Segment& segment(double iX) { return *curve->findSegment(iX); }
    /// The key, its right segment and both tangents: what the band takes along.
    bool keyGroupSelected(double iX)
    {
        return selection().isSelected(key(iX)) && selection().isSelected(segment(iX)) &&
               selection().isSelected(*key(iX).getInTangent()) && selection().isSelected(*key(iX).getOutTangent());
    }
    bool nothingOfKeySelected(double iX)
    {
        return !selection().isSelected(key(iX)) && !selection().isSelected(segment(iX)) &&
               !selection().isSelected(*key(iX).getInTangent()) && !selection().isSelected(*key(iX).getOutTangent());
    }

    ShownWidget shown{400, 200};
    std::shared_ptr<Splinor> curve;
};

} // namespace

TEST(Selecting, a_click_picks_the_curve_first_and_then_its_parts)
{
    Scene scene;

    scene.click(scene.at(5, 1.5)); // an unselected curve yields only itself
    EXPECT_TRUE(scene.selection().isSelected(*scene.curve));
    EXPECT_FALSE(scene.selection().isSelected(scene.key(5)));

    scene.click(scene.at(5, 1.5));
    EXPECT_TRUE(scene.selection().isSelected(scene.key(5)));
    EXPECT_TRUE(scene.selection().isSelected(scene.segment(5))) << "a key brings its right segment";

    scene.click(scene.at(3.5, 1.25)); // a segment brings its left key, not its right one
    EXPECT_TRUE(scene.selection().isSelected(scene.segment(3)));
    EXPECT_TRUE(scene.selection().isSelected(scene.key(2)));
    EXPECT_FALSE(scene.selection().isSelected(scene.key(5))) << "a plain click replaces the parts";
    EXPECT_TRUE(scene.selection().isSelected(*scene.curve));

    scene.click(scene.at(9.5, 1)); // an open end comes alone
    EXPECT_TRUE(scene.selection().isSelected(scene.segment(9)));
    EXPECT_FALSE(scene.selection().isSelected(scene.key(8)));
}

TEST(Selecting, shift_adds_and_control_takes_a_selected_key_away_with_its_company)
{
    Scene scene;
    scene.click(scene.at(5, 1.5));
    scene.click(scene.at(5, 1.5));

    scene.click(scene.at(2, 1), Qt::ShiftModifier);
    EXPECT_TRUE(scene.selection().isSelected(scene.key(2)));
    EXPECT_TRUE(scene.selection().isSelected(scene.key(5)));

    scene.selection().select(*scene.key(5).getOutTangent());
    scene.click(scene.at(5, 1.5), Qt::ControlModifier);
    EXPECT_TRUE(scene.nothingOfKeySelected(5));
    EXPECT_TRUE(scene.selection().isSelected(scene.key(2)));
    EXPECT_TRUE(scene.selection().isSelected(*scene.curve));

    scene.click(scene.at(8, 1), Qt::ControlModifier); // not selected: the selection stays
    EXPECT_FALSE(scene.selection().isSelected(scene.key(8)));
    EXPECT_TRUE(scene.selection().isSelected(scene.key(2)));
}

TEST(Selecting, on_a_locked_curve_only_the_curve_is_selected)
{
    Scene scene;
    SetLocked(*scene.curve, true);
    scene.selection().select(*scene.curve);

    scene.click(scene.at(5, 1.5));
    scene.band(scene.at(1, 1.9), {scene.at(9.9, 0.1)});
    scene.release(scene.at(9.9, 0.1));

    EXPECT_TRUE(scene.selection().isSelected(*scene.curve));
    EXPECT_FALSE(scene.selection().isSelected(scene.key(5)));
    EXPECT_FALSE(scene.selection().isSelected(scene.key(2)));
}

TEST(Rubberband, a_click_in_empty_space_clears_unless_shift_or_control_is_held)
{
    Scene scene;
    const QPoint empty = scene.at(5, 0.3);
    scene.selection().select(*scene.curve);

    scene.click(empty, Qt::ShiftModifier);
    scene.click(empty, Qt::ControlModifier);
    EXPECT_TRUE(scene.selection().isSelected(*scene.curve));

    // Three pixels of wander on each axis are still a click.
    scene.band(empty, {empty + QPoint(3, -3)});
    EXPECT_FALSE(scene.selection().isSelected(*scene.curve)) << "a plain press clears at once";
    scene.selection().select(*scene.curve);
    scene.release(empty + QPoint(3, -3));
    EXPECT_FALSE(scene.selection().isSelected(*scene.curve));
    EXPECT_EQ(scene.shown.widget->getUserLayers()->findLayer(""), scene.shown.widget->getUserLayers())
        << "the band's layer is gone";
}

TEST(Rubberband, plain_the_selection_follows_the_band)
{
    Scene scene;
    const QPoint corner = scene.at(4, 1.8);

    scene.band(corner, {scene.at(6, 1.2)}); // over the key at 5
    EXPECT_TRUE(scene.keyGroupSelected(5));
    EXPECT_TRUE(scene.selection().isSelected(*scene.curve));

    scene.send(QEvent::MouseMove, scene.at(4.5, 1.6), Qt::LeftButton); // off it again
    EXPECT_TRUE(scene.nothingOfKeySelected(5));
    EXPECT_TRUE(scene.selection().isSelected(*scene.curve)) << "a band never takes a curve away";
    scene.release(scene.at(4.5, 1.6));
}

TEST(Rubberband, with_shift_what_was_selected_before_stays_when_the_band_leaves)
{
    Scene scene;
    scene.selection().select(*scene.curve);
    SelectHit(scene.selection(), HitRecord(scene.key(5).getShared()), true);

    scene.band(scene.at(4, 1.8), {scene.at(6, 1.2), scene.at(8.5, 1.2), scene.at(4.5, 1.6)}, Qt::ShiftModifier);

    EXPECT_TRUE(scene.keyGroupSelected(5));
    EXPECT_TRUE(scene.nothingOfKeySelected(8)) << "touched during the band only";
    scene.release(scene.at(4.5, 1.6));
}

TEST(Rubberband, with_control_the_band_takes_away_and_gives_back)
{
    Scene scene;
    scene.selection().select(*scene.curve);
    SelectHit(scene.selection(), HitRecord(scene.key(5).getShared()), true);

    scene.band(scene.at(4, 1.8), {scene.at(6, 1.2)}, Qt::ControlModifier);
    EXPECT_TRUE(scene.nothingOfKeySelected(5));
    scene.send(QEvent::MouseMove, scene.at(4.5, 1.6), Qt::LeftButton, Qt::ControlModifier);
    EXPECT_TRUE(scene.keyGroupSelected(5));
    scene.release(scene.at(4.5, 1.6));
}

TEST(Rubberband, veils_the_view_outside_the_band_and_outlines_it)
{
    Scene scene;
    // Rows and columns chosen clear of the curve and of the grid's lines.
    scene.band(scene.at(1.05, 0.33), {scene.at(3.05, 0.13)});

    const QImage image = scene.shown.widget->grabFramebuffer();

    // The veil is the background colour at 0.3, so it shows on the grid's lines: the line at
    // x = 2 inside the band keeps its colour, the one at x = 6 outside it is dimmed.
    const int inside = image.pixelColor(scene.at(2, 0.23)).red();
    const int outside = image.pixelColor(scene.at(6, 0.23)).red();
    EXPECT_EQ(inside, 81);
    EXPECT_NEAR(outside, 81 * 0.7 + 46 * 0.3, 2);
    // The band's left edge falls on a pixel boundary: the outline lights one of its neighbours.
    auto outlined = [&](const QImage& iImage) {
        const QPoint edge = scene.at(1.05, 0.23);
        return iImage.pixelColor(edge) == QColor(Qt::white) || iImage.pixelColor(edge - QPoint(1, 0)) == QColor(Qt::white);
    };
    EXPECT_TRUE(outlined(image));
    scene.release(scene.at(3.05, 0.13));
    EXPECT_FALSE(outlined(scene.shown.widget->grabFramebuffer())) << "the band is gone with the release";
}

TEST(SelectionStatistics, counts_curves_locked_curves_and_editable_keys)
{
    Scene scene;
    auto locked = Splinor::createCopy(*scene.curve);
    SetLocked(*locked, true);
    scene.shown.widget->getCurves()->addCurve(locked);
    Selection& selection = scene.selection();
    selection.select(*scene.curve);
    selection.select(*locked);
    selection.select(scene.key(2));
    selection.select(scene.key(5));
    SetLocked(scene.key(5), true);
    selection.select(*locked->findSegment(2)->getLeftKey());

    const SelectionStatistics statistics = CountSelection(selection.begin(), selection.end());

    EXPECT_EQ(statistics.getNumCurves(), 2);
    EXPECT_TRUE(statistics.hasLockedCurves());
    EXPECT_EQ(statistics.mNumEditableKeys, 1);
}

TEST(GetSelectedSpans, gives_each_run_of_selected_interior_segments)
{
    auto curve = Splinor::create();
    for (double x : {0.0, 1.0, 2.0, 3.0, 4.0, 5.0})
        curve->insertSegment(Keyframe(x, 0), Linear::create());
    auto container = SplinorContainer::create();
    container->addCurve(curve);
    auto selection = std::make_shared<Selection>(container);
    for (double x : {0.5, 1.5, 3.5, 5.5}) // two runs, and an open end that never counts
        selection->select(*curve->findSegment(x));

    std::vector<double> spans;
    GetSelectedSpans(selection, curve, spans);

    EXPECT_EQ(spans, (std::vector<double>{0, 2, 3, 4}));
}
