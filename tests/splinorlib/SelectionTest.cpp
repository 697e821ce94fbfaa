#include "CurveTestUtil.h"

#include <gtest/gtest.h>

#include <string>

using namespace SplinorTest;

namespace {

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
};

/// One line per record: type, curve name and the x of the item, for comparing walks.
std::string Describe(const HitRecord& r)
{
    std::string text = std::to_string(r.getType()) + ":" + r.getCurve()->getName();
    if (auto key = r.getKeyframe())
        text += "@" + std::to_string(int(key->getX()));
    if (auto segment = r.getSegment())
        text += "@" + (segment->getLeftKey() ? std::to_string(int(segment->getLeftKey()->getX())) : std::string("-"));
    if (auto tangent = r.getTangent())
        text += std::string(tangent->isInTangent() ? "<" : ">") + std::to_string(int(tangent->getOwningKeyframe()->getX()));
    return text;
}

template <class Iterator>
std::vector<std::string> Walk(Iterator first, Iterator last)
{
    std::vector<std::string> lines;
    for (; first != last; ++first)
        lines.push_back(Describe(*first));
    return lines;
}

struct CountingObserver : SelectionObserver
{
    void selected(Selection&, const HitRecord&) override { ++selects; }
    void deselected(Selection&, const HitRecord&) override { ++deselects; }
    void selectionChanged(Selection&) override { ++changes; }
    int selects = 0, deselects = 0, changes = 0;
};

} // namespace

TEST(Selection, selects_each_kind_of_item_and_tells_observers_once_per_change)
{
    Fixture f;
    auto curve = f.add({{0, 0}, {1, 1}}, "c");
    CountingObserver observer;
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

TEST(Selection, walks_curves_in_container_order_and_items_in_x_order_both_ways)
{
    Fixture f;
    auto a = f.add({{0, 0}, {1, 1}, {2, 0}}, "a");
    auto b = f.add({{5, 0}, {6, 1}}, "b");
    auto hidden = f.add({{0, 0}}, "unselected");
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

    const std::vector<std::string> expected = {"1:a",    "4:a>0", "3:a@1", "4:a>1",       "2:a@1",
                                               "4:a<2",  "1:b",   "3:b@5", "3:unselected@0"};
    const auto forward = Walk(f.selection->begin(), f.selection->end());
    EXPECT_EQ(forward, expected);

    std::vector<std::string> backward;
    for (auto it = f.selection->end(); it != f.selection->begin();)
        backward.push_back(Describe(*--it));
    EXPECT_EQ(backward, std::vector<std::string>(expected.rbegin(), expected.rend()));

    EXPECT_EQ(Walk(BeginSelectedCurves(*f.selection), EndSelectedCurves(*f.selection)),
              (std::vector<std::string>{"1:a", "1:b"}));
    EXPECT_EQ(Walk(BeginSelectedKeyframes(*f.selection), EndSelectedKeyframes(*f.selection)),
              (std::vector<std::string>{"3:a@1", "3:b@5", "3:unselected@0"}));
    EXPECT_EQ(Walk(BeginSelectedTangents(*f.selection), EndSelectedTangents(*f.selection)),
              (std::vector<std::string>{"4:a>0", "4:a>1", "4:a<2"}));
}

TEST(Selection, keeps_its_walk_in_step_with_edits_of_the_curve)
{
    Fixture f;
    auto curve = f.add({{0, 0}, {4, 1}, {8, 0}}, "c");
    f.selection->select(*KeyAt(*curve, 1).getInTangent());
    f.selection->select(KeyAt(*curve, 2));
    f.selection->select(*KeyAt(*curve, 2).getInTangent());

    curve->insertSegment(Keyframe(2, 5), nullptr); // the handle at 4 stays at 4
    EXPECT_TRUE(f.selection->isSelected(*KeyAt(*curve, 2).getInTangent()));
    EXPECT_FALSE(f.selection->isSelected(*KeyAt(*curve, 1).getInTangent()));

    KeyAt(*curve, 3).set(100, 0);
    curve->removeSegment(curve->findSegment(100.0)); // the last key goes, with its in tangent
    EXPECT_EQ(Walk(f.selection->begin(), f.selection->end()), (std::vector<std::string>{"4:c<4"}));
}

TEST(Selection, travels_with_copies_and_with_swaps_both_ways)
{
    Fixture f;
    auto live = f.add({{0, 0}, {1, 1}, {2, 0}}, "live");
    f.selection->select(*live);
    f.selection->select(KeyAt(*live, 1));
    f.selection->select(*KeyAt(*live, 1).getOutTangent());

    auto copy = Splinor::createCopy(*live);
    auto copies = SplinorContainer::create();
    copies->addCurve(copy);
    Selection overCopies(copies);

    EXPECT_TRUE(overCopies.isSelected(*copy));
    EXPECT_TRUE(overCopies.isSelected(KeyAt(*copy, 1)));
    EXPECT_TRUE(overCopies.isSelected(*KeyAt(*copy, 1).getOutTangent()));
    EXPECT_FALSE(overCopies.isSelected(KeyAt(*copy, 0)));
    EXPECT_EQ(Walk(overCopies.begin(), overCopies.end()).size(), 3u);

    // Edit the copy, selecting differently, and swap it in, as an undoable command would.
    overCopies.clear();
    copy->removeSegment(copy->findSegment(1.0));
    overCopies.select(KeyAt(*copy, 0));

    live->swap(*copy);
    EXPECT_FALSE(f.selection->isSelected(*live));
    EXPECT_EQ(Walk(f.selection->begin(), f.selection->end()), (std::vector<std::string>{"3:live@0"}));

    live->swap(*copy);
    EXPECT_EQ(Walk(f.selection->begin(), f.selection->end()),
              (std::vector<std::string>{"1:live", "3:live@1", "4:live>1"}));
}

TEST(SelectionSnapshot, gives_back_a_state_after_it_was_swapped_out_and_in)
{
    Fixture f;
    auto curve = f.add({{0, 0}, {1, 1}, {2, 0}}, "c");
    f.selection->select(*curve);
    f.selection->select(KeyAt(*curve, 1));
    SelectionSnapshot before(f.selection);
    SelectionSnapshot after(f.selection);

    // The edit is made on a copy; redo swaps it in and records what is then selected.
    auto copy = Splinor::createCopy(*curve);
    copy->removeSegment(copy->findSegment(1.0));
    curve->swap(*copy);
    after.capture();
    EXPECT_EQ(Walk(f.selection->begin(), f.selection->end()), (std::vector<std::string>{"1:c"}));

    // Undo: swap back, and the selection of construction returns whatever happened between.
    f.selection->clear();
    curve->swap(*copy);
    before.select();
    EXPECT_EQ(Walk(f.selection->begin(), f.selection->end()), (std::vector<std::string>{"1:c", "3:c@1"}));

    // Redo again.
    f.selection->select(KeyAt(*curve, 0));
    curve->swap(*copy);
    after.select();
    EXPECT_EQ(Walk(f.selection->begin(), f.selection->end()), (std::vector<std::string>{"1:c"}));
}

TEST(HitRecord, records_of_one_item_compare_equal_and_others_do_not)
{
    auto curve = MakeCurve({{0, 0}, {1, 1}});
    Keyframe& key = KeyAt(*curve, 0);
    const HitRecord handle(key.getOutTangent()->getShared(), true);
    const HitRecord line(key.getOutTangent()->getShared(), false);
    const HitRecord keyRecord(key.getShared());
    CompareRecord less;

    EXPECT_FALSE(less(handle, line) || less(line, handle));
    EXPECT_NE(handle, line) << "the hover still tells handle from line";
    EXPECT_TRUE(less(keyRecord, handle) != less(handle, keyRecord));
    EXPECT_EQ(handle.getCurve(), curve);
    EXPECT_EQ(line.getType(), HitRecord::cTangentLine);
    EXPECT_EQ(keyRecord.getSegment(), nullptr);

    HitSet set{handle, line, keyRecord, HitRecord(key.getShared()), HitRecord(curve)};
    EXPECT_EQ(set.size(), 3u);
    EXPECT_EQ(HitRecord(std::shared_ptr<Keyframe>()).getType(), HitRecord::cNothing);

    HitRecord copy = keyRecord;
    copy.reset(curve->begin()->getShared());
    EXPECT_EQ(copy.getType(), HitRecord::cSegment);
    EXPECT_EQ(keyRecord.getType(), HitRecord::cKeyframe);
}

TEST(Selection, whole_curve_operations)
{
    Fixture f;
    auto a = f.add({{0, 0}, {1, 1}, {2, 0}}, "a");
    auto b = f.add({{0, 0}, {1, 1}}, "b");
    CountingObserver observer;
    f.selection->subscribe(observer);

    SelectCurveCompletely(*f.selection, *a);
    EXPECT_EQ(observer.changes, 1);
    // 3 keys, 4 segments, 6 tangents and the curve.
    EXPECT_EQ(Walk(f.selection->begin(), f.selection->end()).size(), 14u);

    f.selection->select(*b);
    f.selection->select(KeyAt(*b, 0));
    HitSet hits;
    GetSelected(*f.selection, hits);
    EXPECT_EQ(hits.size(), 16u);

    DeselectSelectedParts(*f.selection);
    EXPECT_EQ(Walk(f.selection->begin(), f.selection->end()), (std::vector<std::string>{"1:a", "1:b"}));

    SelectCurveCompletely(*f.selection, *b);
    DeselectCurveCompletely(*f.selection, *b);
    EXPECT_FALSE(f.selection->isSelected(*b));
    EXPECT_FALSE(f.selection->isSelected(KeyAt(*b, 0)));

    const int changes = observer.changes;
    f.selection->clear();
    f.selection->clear();
    EXPECT_EQ(observer.changes, changes + 1) << "clearing nothing says nothing";
    EXPECT_EQ(f.selection->begin(), f.selection->end());
}

TEST(Selection, notify_curve_changes_reaches_the_curves_concerned)
{
    struct Counter : SplinorObserver
    {
        void curveChanged(Splinor&) override { ++count; }
        int count = 0;
    };
    Fixture f;
    auto whole = f.add({{0, 0}}, "whole");
    auto parts = f.add({{0, 0}}, "parts");
    auto none = f.add({{0, 0}}, "none");
    Counter w, p, n;
    whole->subscribe(w);
    parts->subscribe(p);
    none->subscribe(n);
    f.selection->select(*whole);
    f.selection->select(KeyAt(*parts, 0));

    NotifyCurveChanges(*f.selection);

    EXPECT_EQ(w.count, 1);
    EXPECT_EQ(p.count, 1);
    EXPECT_EQ(n.count, 0);
}

TEST(Extents, frame_keys_and_the_exact_extremes_between_them)
{
    Fixture f;
    // A Bezier bump: flat handles from (0,0) and (2,0) with a key at (1,1) whose tangents overshoot.
    auto curve = f.add({{0, 0}, {4, 0}}, "c");
    Tangent& out = *KeyAt(*curve, 0).getOutTangent();
    Tangent& in = *KeyAt(*curve, 1).getInTangent();
    out.setWeighted(true);
    in.setWeighted(true);
    out.set(0.0, 4.0);
    in.set(0.0, 4.0);
    auto hidden = f.add({{-50, -50}, {50, 50}}, "hidden");
    SetVisible(*hidden, false);
    Rectangle<double> extents(9, 9, 9, 9);

    ASSERT_TRUE(GetVisibleExtents(*f.container, *f.selection, extents));
    // Control ys 0, 4, 4, 0 peak at t = 0.5: 3/8 * 4 * 2 = 3.
    EXPECT_DOUBLE_EQ(extents.x, 0.0);
    EXPECT_DOUBLE_EQ(extents.width, 4.0);
    EXPECT_DOUBLE_EQ(extents.y, 0.0);
    EXPECT_NEAR(extents.height, 3.0, 1e-12);

    EXPECT_FALSE(GetSelectedExtents(*f.selection, extents));
    f.selection->select(*curve);
    ASSERT_TRUE(GetSelectedExtents(*f.selection, extents));
    EXPECT_NEAR(extents.height, 3.0, 1e-12) << "a selected curve alone frames its interior";
    f.selection->select(KeyAt(*curve, 1));
    ASSERT_TRUE(GetSelectedExtents(*f.selection, extents));
    EXPECT_EQ(extents, Rectangle<double>(4, 0, 0, 0)) << "selected parts frame just themselves";

    EXPECT_FALSE(GetInteriorExtents(*Splinor::create(), extents));
    ASSERT_TRUE(GetInteriorExtents(*MakeCurve({{3, 7}}), extents));
    EXPECT_EQ(extents, Rectangle<double>(3, 7, 0, 0));
}

TEST(SplinorContainer, adds_each_curve_once_and_tells_its_observers)
{
    struct Counter : ContainerObserver
    {
        void containerChanged(SplinorContainer&) override { ++count; }
        int count = 0;
    };
    auto container = SplinorContainer::create();
    auto other = SplinorContainer::create();
    Counter observer;
    container->subscribe(observer);
    auto curve = MakeCurve({{0, 0}});

    container->addCurve(curve);
    container->addCurve(curve);
    container->addCurve(nullptr);
    other->addCurve(curve);
    EXPECT_EQ(container->size(), 1u);
    EXPECT_EQ(other->size(), 1u) << "a curve may stand in two containers";
    EXPECT_EQ(observer.count, 1);

    container->clear();
    container->clear();
    EXPECT_EQ(container->size(), 0u);
    EXPECT_EQ(observer.count, 2);
}
