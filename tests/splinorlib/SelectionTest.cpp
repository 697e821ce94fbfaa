#include "CurveTestUtil.h"

#include <gtest/gtest.h>

#include <string>

using namespace SplinorTest;

namespace {

using Lines = std::vector<std::string>;

/// One line per record: type, curve name and the x of the item, for comparing walks.
std::string Describe(const HitRecord& r)
{
    std::string text = std::to_string(r.getType()) + ":" + r.getCurve()->getName();
    if (auto key = r.getKeyframe())
        text += "@" + std::to_string(int(key->getX()));
    if (auto segment = r.getSegment())
        text += "@" + (segment->getLeftKey() ? std::to_string(int(segment->getLeftKey()->getX())) : std::string("-"));
    if (auto tangent = r.getTangent())
        text += std::string(tangent->isInTangent() ? "<" : ">")
            + std::to_string(int(tangent->getOwningKeyframe()->getX()));
    return text;
}

template <class Iterator> Lines Walk(Iterator first, Iterator last)
{
    Lines lines;
    for (; first != last; ++first)
        lines.push_back(Describe(*first));
    return lines;
}

struct Fixture
{
    std::shared_ptr<SplinorContainer> container = SplinorContainer::create();
    std::shared_ptr<Selection> selection = std::make_shared<Selection>(container);

    std::shared_ptr<Splinor> add(const std::vector<Vector2D<double>>& iKeys, const char* iName)
    {
        auto curve = MakeCurve(iKeys);
        curve->setName(iName);
        container->addCurve(curve);
        return curve;
    }
    Lines walk() const { return Walk(selection->begin(), selection->end()); }
};

struct SelectionCounter : SelectionObserver, ContainerObserver
{
    void selected(Selection&, const HitRecord&) override { ++selects; }
    void deselected(Selection&, const HitRecord&) override { ++deselects; }
    void selectionChanged(Selection&) override { ++changes; }
    void containerChanged(SplinorContainer&) override { ++containerChanges; }
    int selects = 0, deselects = 0, changes = 0, containerChanges = 0;
};

} // namespace

TEST(Selection, selects_each_kind_of_item_and_tells_observers_once_per_change)
{
    Fixture f;
    auto curve = f.add({ { 0, 0 }, { 1, 1 } }, "c");
    SelectionCounter observer;
    f.selection->subscribe(observer);
    Keyframe& key = KeyAt(*curve, 1);
    Segment& segment = *curve->findSegment(0.5);

    f.selection->select(key);
    f.selection->select(key);
    f.selection->select(*key.getInTangent());
    f.selection->select(HitRecord(segment.getShared()));
    f.selection->select(*curve->begin()); // the open first segment may be selected too
    f.selection->select(*curve);

    EXPECT_EQ(observer.selects, 5);
    EXPECT_EQ(observer.changes, 5);
    EXPECT_EQ(f.walk(), (Lines { "1:c", "2:c@-", "2:c@0", "4:c<1", "3:c@1" })) << "the open first segment comes first";
    EXPECT_TRUE(f.selection->isSelected(key));
    EXPECT_TRUE(f.selection->isSelected(HitRecord(key.getInTangent()->getShared(), false)));
    EXPECT_FALSE(f.selection->isSelected(*key.getOutTangent()));
    EXPECT_FALSE(f.selection->isSelected(KeyAt(*curve, 0)));
    EXPECT_TRUE(f.selection->isSelected(segment));
    EXPECT_TRUE(f.selection->isSelected(*curve));

    f.selection->deselect(key);
    f.selection->deselect(KeyAt(*curve, 0));
    EXPECT_EQ(observer.deselects, 1);
    EXPECT_FALSE(f.selection->isSelected(key));

    Keyframe freeKey(0, 0);
    f.selection->select(freeKey);
    EXPECT_FALSE(f.selection->isSelected(freeKey));
}

TEST(Selection, walks_curves_in_container_order_and_items_in_x_order_both_ways_and_follows_edits)
{
    Fixture f;
    auto a = f.add({ { 0, 0 }, { 1, 1 }, { 2, 0 } }, "a");
    auto b = f.add({ { 5, 0 }, { 6, 1 } }, "b");
    auto hidden = f.add({ { 0, 0 } }, "unselected");
    // Selected in scrambled order.
    f.selection->select(*KeyAt(*a, 2).getInTangent());
    f.selection->select(*b);
    f.selection->select(KeyAt(*a, 1));
    f.selection->select(*a->findSegment(1.5));
    f.selection->select(*KeyAt(*a, 1).getOutTangent());
    f.selection->select(*a);
    f.selection->select(KeyAt(*b, 0));
    f.selection->select(*KeyAt(*a, 0).getOutTangent());
    f.selection->select(KeyAt(*hidden, 0));

    Lines expected = { "1:a", "4:a>0", "3:a@1", "4:a>1", "2:a@1", "4:a<2", "1:b", "3:b@5", "3:unselected@0" };
    EXPECT_EQ(f.walk(), expected);

    Lines backward;
    for (auto it = f.selection->end(); it != f.selection->begin();)
        backward.push_back(Describe(*--it));
    EXPECT_EQ(backward, Lines(expected.rbegin(), expected.rend()));

    EXPECT_EQ(Walk(BeginSelectedCurves(*f.selection), EndSelectedCurves(*f.selection)), (Lines { "1:a", "1:b" }));
    EXPECT_EQ(Walk(BeginSelectedKeyframes(*f.selection), EndSelectedKeyframes(*f.selection)),
        (Lines { "3:a@1", "3:b@5", "3:unselected@0" }));
    EXPECT_EQ(Walk(BeginSelectedTangents(*f.selection), EndSelectedTangents(*f.selection)),
        (Lines { "4:a>0", "4:a>1", "4:a<2" }));

    // A split hands the in tangent at 2 to the new segment: left behind it would read "<1".
    a->insertSegment(Keyframe(1.5, 0.0), nullptr);
    EXPECT_EQ(f.walk(), expected);
    a->removeSegment(a->findSegment(2.0)); // the last key goes, with the in tangent at it
    expected.erase(expected.begin() + 5);
    EXPECT_EQ(f.walk(), expected);
}

TEST(Selection, travels_with_copies_and_swaps_and_a_snapshot_gives_its_state_back)
{
    Fixture f;
    auto live = f.add({ { 0, 0 }, { 1, 1 }, { 2, 0 } }, "live");
    f.selection->select(*live);
    f.selection->select(KeyAt(*live, 1));
    f.selection->select(*KeyAt(*live, 1).getOutTangent());
    const Lines original = { "1:live", "3:live@1", "4:live>1" };
    SelectionSnapshot before(f.selection);

    auto copy = Splinor::createCopy(*live);
    auto copies = SplinorContainer::create();
    copies->addCurve(copy);
    Selection overCopies(copies);
    EXPECT_EQ(Walk(overCopies.begin(), overCopies.end()), original);

    // Edit the copy, selecting differently, and swap it in, as an undoable command would.
    overCopies.clear();
    copy->removeSegment(copy->findSegment(1.0));
    overCopies.select(KeyAt(*copy, 0));
    live->swap(*copy);
    EXPECT_EQ(f.walk(), (Lines { "3:live@0" }));
    SelectionSnapshot after(f.selection);

    live->swap(*copy); // undo: the state comes back with the content
    EXPECT_EQ(f.walk(), original);

    // A snapshot undoes whatever was selected and cleared since, on the content now in place.
    f.selection->clear();
    f.selection->select(KeyAt(*live, 0));
    before.select();
    EXPECT_EQ(f.walk(), original);
    live->swap(*copy); // redo
    f.selection->clear();
    after.select();
    EXPECT_EQ(f.walk(), (Lines { "3:live@0" }));
}

TEST(HitRecord, records_of_one_item_compare_equal_and_others_do_not)
{
    auto curve = MakeCurve({ { 0, 0 }, { 1, 1 } });
    Keyframe& key = KeyAt(*curve, 0);
    const HitRecord handle(key.getOutTangent()->getShared(), true);
    const HitRecord line(key.getOutTangent()->getShared(), false);
    const HitRecord keyRecord(key.getShared());
    CompareRecord less;

    EXPECT_FALSE(less(handle, line) || less(line, handle));
    EXPECT_NE(handle, line) << "the hover still tells handle from line";
    EXPECT_TRUE(less(keyRecord, handle) != less(handle, keyRecord));

    HitSet set { handle, line, keyRecord, HitRecord(key.getShared()), HitRecord(curve) };
    EXPECT_EQ(set.size(), 3u);
    EXPECT_EQ(HitRecord(std::shared_ptr<Keyframe>()).getType(), HitRecord::cNothing);
}

TEST(Selection, container_and_whole_curve_operations_tell_of_changes_only_and_reach_the_curves_concerned)
{
    Fixture f;
    SelectionCounter observer;
    f.selection->subscribe(observer);
    f.container->subscribe(observer);
    auto a = f.add({ { 0, 0 }, { 1, 1 }, { 2, 0 } }, "a");
    auto b = f.add({ { 0, 0 }, { 1, 1 } }, "b");
    auto none = f.add({ { 0, 0 } }, "none");
    f.container->addCurve(a);
    f.container->addCurve(nullptr);
    EXPECT_EQ(f.container->size(), 3u);
    EXPECT_EQ(observer.containerChanges, 3);
    CountingObserver changesOfB, changesOfNone;
    b->subscribe(changesOfB);
    none->subscribe(changesOfNone);

    SelectCurveCompletely(*f.selection, *a);
    EXPECT_EQ(observer.changes, 1);
    // 3 keys, 4 segments, 6 tangents and the curve.
    EXPECT_EQ(f.walk().size(), 14u);
    f.selection->select(KeyAt(*b, 0));
    NotifyCurveChanges(*f.selection);
    EXPECT_EQ(changesOfB.curve, 1) << "a curve with a selected part";

    f.selection->select(*b);
    DeselectSelectedParts(*f.selection);
    EXPECT_EQ(f.walk(), (Lines { "1:a", "1:b" }));
    NotifyCurveChanges(*f.selection);
    EXPECT_EQ(changesOfB.curve, 2) << "a selected curve without selected parts";
    EXPECT_EQ(changesOfNone.curve, 0);

    SelectCurveCompletely(*f.selection, *b);
    DeselectCurveCompletely(*f.selection, *b);
    EXPECT_FALSE(f.selection->isSelected(*b));
    EXPECT_FALSE(f.selection->isSelected(KeyAt(*b, 0)));

    const int changes = observer.changes;
    f.selection->clear();
    f.selection->clear();
    EXPECT_EQ(observer.changes, changes + 1) << "clearing nothing says nothing";
    EXPECT_EQ(f.selection->begin(), f.selection->end());
    f.container->clear();
    f.container->clear();
    EXPECT_TRUE(f.container->empty());
    EXPECT_EQ(observer.containerChanges, 4);
}

TEST(Extents, frame_keys_and_the_exact_extremes_between_them)
{
    Fixture f;
    // Vertical handles of 4 at both ends of (0, 0) to (4, 0): a bump whose top is no key.
    auto curve = MakeBezier({ 0.0, 4.0 }, { 0.0, 4.0 }, 4.0);
    f.container->addCurve(curve);
    auto hidden = f.add({ { -50, -50 }, { 50, 50 } }, "hidden");
    SetVisible(*hidden, false);
    Rectangle<double> extents(9, 9, 9, 9);

    // Control ys 0, 4, 4, 0 peak at t = 0.5 with 3/8 * 4 * 2 = 3, exactly in binary.
    ASSERT_TRUE(GetVisibleExtents(*f.container, *f.selection, extents));
    EXPECT_EQ(extents, Rectangle<double>(0, 0, 4, 3)) << "the hidden curve is left out";

    EXPECT_FALSE(GetSelectedExtents(*f.selection, extents));
    f.selection->select(*curve);
    ASSERT_TRUE(GetSelectedExtents(*f.selection, extents));
    EXPECT_EQ(extents, Rectangle<double>(0, 0, 4, 3)) << "a selected curve alone frames its interior";
    f.selection->select(KeyAt(*curve, 1));
    ASSERT_TRUE(GetSelectedExtents(*f.selection, extents));
    EXPECT_EQ(extents, Rectangle<double>(4, 0, 0, 0)) << "selected parts frame just themselves";

    EXPECT_FALSE(GetInteriorExtents(*Splinor::create(), extents));
    ASSERT_TRUE(GetInteriorExtents(*MakeCurve({ { 3, 7 } }), extents));
    EXPECT_EQ(extents, Rectangle<double>(3, 7, 0, 0));
}
