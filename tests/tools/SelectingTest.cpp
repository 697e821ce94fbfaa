#include "widget/WidgetHarness.h"

#include <gtest/gtest.h>

using namespace EditorTest;

namespace {

/// Keys at (2, 1), (5, 1.5) and (8, 1).
struct Scene : CurveView
{
    Scene()
        : CurveView({ { 2, 1 }, { 5, 1.5 }, { 8, 1 } })
    {
    }

    bool selected(double iX) { return selection().isSelected(key(iX)); }
    /// Presses at iFrom, drags through each point, and keeps the button down.
    void band(QPoint iFrom, std::initializer_list<QPoint> iThrough, Qt::KeyboardModifiers iModifiers = {})
    {
        send(QEvent::MouseButtonPress, iFrom, Qt::LeftButton, iModifiers);
        for (QPoint p : iThrough)
            send(QEvent::MouseMove, p, Qt::LeftButton, iModifiers);
    }
    void release(QPoint iPoint) { send(QEvent::MouseButtonRelease, iPoint, Qt::NoButton); }
    /// The key, its right segment and both tangents: what a band takes along and gives back.
    int partsOfKeySelected(double iX)
    {
        Keyframe& k = key(iX);
        return selection().isSelected(k) + selection().isSelected(segment(iX))
            + selection().isSelected(*k.getInTangent()) + selection().isSelected(*k.getOutTangent());
    }
};

} // namespace

TEST(Selecting, a_click_picks_the_curve_first_then_its_parts_shift_adds_and_control_takes_a_key_away_with_its_company)
{
    Scene scene;

    scene.click(scene.at(5, 1.5)); // an unselected curve yields only itself
    EXPECT_TRUE(scene.selection().isSelected(*scene.curve));
    EXPECT_FALSE(scene.selected(5));

    scene.click(scene.at(5, 1.5));
    EXPECT_TRUE(scene.selected(5));
    EXPECT_TRUE(scene.selection().isSelected(scene.segment(5))) << "a key brings its right segment";

    scene.click(scene.at(3.5, 1.25)); // a segment brings its left key, not its right one
    EXPECT_TRUE(scene.selection().isSelected(scene.segment(3)));
    EXPECT_TRUE(scene.selected(2));
    EXPECT_FALSE(scene.selected(5)) << "a plain click replaces the parts";
    EXPECT_TRUE(scene.selection().isSelected(*scene.curve));

    scene.click(scene.at(9.5, 1)); // an open end comes alone
    EXPECT_TRUE(scene.selection().isSelected(scene.segment(9)));
    EXPECT_FALSE(scene.selected(8));

    scene.click(scene.at(2, 1), Qt::ShiftModifier);
    scene.click(scene.at(5, 1.5), Qt::ShiftModifier);
    EXPECT_TRUE(scene.selected(2));
    EXPECT_TRUE(scene.selected(5));
    EXPECT_TRUE(scene.selection().isSelected(scene.segment(9)));

    scene.selection().select(*scene.key(5).getOutTangent());
    scene.click(scene.at(5, 1.5), Qt::ControlModifier);
    EXPECT_EQ(scene.partsOfKeySelected(5), 0);
    EXPECT_TRUE(scene.selected(2));
    EXPECT_TRUE(scene.selection().isSelected(*scene.curve));

    scene.click(scene.at(8, 1), Qt::ControlModifier); // not selected: the selection stays
    EXPECT_FALSE(scene.selected(8));
    EXPECT_TRUE(scene.selected(2));
}

TEST(Selecting, on_a_locked_curve_only_the_curve_is_selected)
{
    Scene scene;
    SetLocked(*scene.curve, true);
    scene.selection().select(*scene.curve);

    scene.click(scene.at(5, 1.5));
    scene.band(scene.at(1, 1.9), { scene.at(9.9, 0.1) });
    scene.release(scene.at(9.9, 0.1));

    EXPECT_TRUE(scene.selection().isSelected(*scene.curve));
    EXPECT_FALSE(scene.selected(5));
    EXPECT_FALSE(scene.selected(2));
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
    scene.band(empty, { empty + QPoint(3, -3) });
    EXPECT_FALSE(scene.selection().isSelected(*scene.curve)) << "a plain press clears at once";
    scene.selection().select(*scene.curve);
    scene.release(empty + QPoint(3, -3));
    EXPECT_FALSE(scene.selection().isSelected(*scene.curve));
    EXPECT_EQ(scene.widget->getUserLayers()->findLayer(""), scene.widget->getUserLayers())
        << "the band's layer is gone";
}

// The band is drawn from (4, 1.8) over the key at 5, then shrunk off it to (4.5, 1.6).
TEST(Rubberband, the_selection_follows_the_band_plain_with_shift_and_with_control)
{
    {
        SCOPED_TRACE("plain");
        Scene scene;
        scene.band(scene.at(4, 1.8), { scene.at(6, 1.2) });
        EXPECT_EQ(scene.partsOfKeySelected(5), 4);
        EXPECT_TRUE(scene.selection().isSelected(*scene.curve));
        scene.send(QEvent::MouseMove, scene.at(4.5, 1.6), Qt::LeftButton);
        EXPECT_EQ(scene.partsOfKeySelected(5), 0);
        EXPECT_TRUE(scene.selection().isSelected(*scene.curve)) << "a band never takes a curve away";
        scene.release(scene.at(4.5, 1.6));
    }
    {
        SCOPED_TRACE("shift: what was selected before stays when the band leaves it");
        Scene scene;
        scene.selection().select(*scene.curve);
        SelectHit(scene.selection(), HitRecord(scene.key(5).getShared()), true);
        scene.band(scene.at(4, 1.8), { scene.at(6, 1.2), scene.at(8.5, 1.2), scene.at(4.5, 1.6) }, Qt::ShiftModifier);
        EXPECT_EQ(scene.partsOfKeySelected(5), 4);
        EXPECT_EQ(scene.partsOfKeySelected(8), 0) << "touched during the band only";
        scene.release(scene.at(4.5, 1.6));
    }
    {
        SCOPED_TRACE("control: the band takes away and gives back");
        Scene scene;
        scene.selection().select(*scene.curve);
        SelectHit(scene.selection(), HitRecord(scene.key(5).getShared()), true);
        scene.band(scene.at(4, 1.8), { scene.at(6, 1.2) }, Qt::ControlModifier);
        EXPECT_EQ(scene.partsOfKeySelected(5), 0);
        scene.send(QEvent::MouseMove, scene.at(4.5, 1.6), Qt::LeftButton, Qt::ControlModifier);
        EXPECT_EQ(scene.partsOfKeySelected(5), 4);
        scene.release(scene.at(4.5, 1.6));
    }
}

TEST(Rubberband, veils_the_view_outside_the_band_and_outlines_it)
{
    Scene scene;
    // Rows and columns chosen clear of the curve and of the grid's lines.
    scene.band(scene.at(1.05, 0.33), { scene.at(3.05, 0.13) });

    const QImage image = scene.widget->grabFramebuffer();

    // The veil is the background colour at 0.3, so it shows on the grid's lines: the line at
    // x = 2 inside the band keeps its colour, the one at x = 6 outside it is dimmed.
    EXPECT_EQ(image.pixelColor(scene.at(2, 0.23)).red(), 81);
    EXPECT_NEAR(image.pixelColor(scene.at(6, 0.23)).red(), 81 * 0.7 + 46 * 0.3, 2);
    // The band's left edge falls on a pixel boundary: the outline lights one of its neighbours.
    auto outlined = [&](const QImage& iImage) {
        const QPoint edge = scene.at(1.05, 0.23);
        return iImage.pixelColor(edge) == QColor(Qt::white)
            || iImage.pixelColor(edge - QPoint(1, 0)) == QColor(Qt::white);
    };
    EXPECT_TRUE(outlined(image));
    scene.release(scene.at(3.05, 0.13));
    EXPECT_FALSE(outlined(scene.widget->grabFramebuffer())) << "the band is gone with the release";
}

TEST(SelectionStatistics, counts_curves_locked_curves_and_editable_keys)
{
    Scene scene;
    auto locked = Splinor::createCopy(*scene.curve);
    SetLocked(*locked, true);
    scene.widget->getCurves()->addCurve(locked);
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
    auto curve = MakeCurve({ { 0, 0 }, { 1, 0 }, { 2, 0 }, { 3, 0 }, { 4, 0 }, { 5, 0 } });
    auto container = SplinorContainer::create();
    container->addCurve(curve);
    auto selection = std::make_shared<Selection>(container);
    for (double x : { 0.5, 1.5, 3.5, 5.5 }) // two runs, and an open end that never counts
        selection->select(*curve->findSegment(x));

    std::vector<double> spans;
    GetSelectedSpans(selection, curve, spans);

    EXPECT_EQ(spans, (std::vector<double> { 0, 2, 3, 4 }));
}
