#include "CurveTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <random>
#include <set>

using namespace SplinorTest;

namespace {

/// Checks everything a curve promises about its structure, whatever was done to it.
void ExpectWellFormed(Splinor& curve)
{
    std::size_t segments = 0;
    const Segment* previous = nullptr;
    const Keyframe* previousKey = nullptr;
    for (Segment& segment : curve) {
        ++segments;
        EXPECT_EQ(segment.getPrevious(), previous);
        EXPECT_EQ(segment.getOwningCurve(), &curve);
        EXPECT_EQ(segment.getLeftKey() == nullptr, previous == nullptr) << "only the first segment has no key";
        if (const Keyframe* key = segment.getLeftKey()) {
            EXPECT_TRUE(std::isfinite(key->getX()) && std::isfinite(key->getY()));
            if (previousKey) {
                EXPECT_GE(key->getX() - previousKey->getX(), Keyframe::getMinSeparation());
            }
            EXPECT_EQ(&*curve.findSegment(key->getX()), &segment);
            previousKey = key;
        }
        previous = &segment;
    }
    EXPECT_EQ(segments, curve.size());
    EXPECT_EQ(&*--curve.end(), previous);
}

} // namespace

TEST(Splinor, insert_splits_the_holding_segment_or_takes_over_a_key_too_close_and_refuses_non_finite_keys)
{
    auto curve = MakeCurve({ { 0, 0 }, { 10, 5 } });
    Segment& left = *curve->findSegment(2.0);
    Keyframe& last = KeyAt(*curve, 1);
    SetLocked(last, true);
    SetHandle(*left.getInTangent(), { -2.0, 3.0 });
    Keyframe key(4.0, 7.0);
    key.setBreakdown(true);

    auto it = curve->insertSegment(key, Linear::create());
    auto split = curve->insertSegment(Keyframe(2.0, 1.0), nullptr);
    auto exact = curve->insertSegment(Keyframe(10.0, 8.0), Constant::create());
    auto near = curve->insertSegment(Keyframe(Keyframe::getMinSeparation() * 0.5, 3.0), nullptr);
    for (const Keyframe& bad : { Keyframe(cNaN, 1.0), Keyframe(1.0, cInf), Keyframe(-cInf, 0.0) })
        EXPECT_EQ(curve->insertSegment(bad, nullptr), curve->end());

    EXPECT_EQ(curve->size(), 5u);
    EXPECT_EQ(it->getLeftKey()->get(), Vector2D<double>(4.0, 7.0));
    EXPECT_TRUE(it->getLeftKey()->isBreakdown());
    EXPECT_NE(it->getLeftKey(), &key) << "the curve keeps its own key";
    EXPECT_EQ(split->getPrevious(), &left) << "the left part keeps its identity";
    EXPECT_STREQ(it->getInterpolator()->getExpression(), "linear()");
    EXPECT_STREQ(split->getInterpolator()->getExpression(), "bezier()") << "a null interpolator takes the split one's";
    // The handle at the old right key stays where it was, now on the new segment.
    const Tangent& moved = *it->getInTangent();
    EXPECT_EQ(moved.getOwningKeyframe(), &last);
    EXPECT_EQ(moved.get(), Vector2D<double>(-2.0, 3.0));
    EXPECT_TRUE(moved.isWeighted());
    EXPECT_EQ(moved.getType(), cTangentFixed);

    EXPECT_EQ(exact->getLeftKey(), &last);
    EXPECT_EQ(last.get(), Vector2D<double>(10.0, 8.0));
    EXPECT_TRUE(IsLocked(last)) << "the lock is the editor's, not the inserted key's";
    EXPECT_STREQ(exact->getInterpolator()->getExpression(), "constant()");
    EXPECT_EQ(near->getLeftKey()->get(), Vector2D<double>(0.0, 3.0)) << "the key keeps its x";
    ExpectWellFormed(*curve);
}

TEST(Splinor, remove_takes_the_key_out_the_previous_segment_spans_the_gap_and_indices_follow_the_ranks)
{
    auto curve = MakeCurve({ { 0, 0 }, { 5, 5 }, { 10, 2 } });
    Segment& previous = *curve->findSegment(1.0);
    Tangent* previousIn = previous.getInTangent();
    previousIn->setType(cTangentFlat);
    auto removed = curve->findSegment(5.0);
    std::shared_ptr<Keyframe> held = removed->getLeftKey()->getShared();
    EXPECT_EQ(GetSegmentIndex(*curve, *curve->begin()), 0);
    EXPECT_EQ(GetSegmentIndex(*curve, *removed), 2);
    EXPECT_EQ(GetTangentIndex(*curve, *removed->getInTangent()), 5) << "2 * 2, plus 1 for an in tangent";
    EXPECT_EQ(GetSegmentIndex(*MakeCurve({ { 0, 0 } }), previous), -1) << "another curve's segment";

    auto next = curve->removeSegment(removed);
    curve->removeSegment(curve->begin()); // the first segment and end are left alone
    curve->removeSegment(curve->end());

    EXPECT_EQ(curve->size(), 3u);
    EXPECT_EQ(previous.getRightKey()->getX(), 10.0);
    EXPECT_EQ(previous.getInTangent(), previousIn) << "the previous segment keeps its own in tangent";
    EXPECT_EQ(previousIn->getType(), cTangentFlat);
    EXPECT_EQ(next->getLeftKey()->getX(), 10.0);
    EXPECT_EQ(held->getOwningCurve(), nullptr) << "a removed key lives on, detached";
    EXPECT_EQ(held->getX(), 5.0);
    ExpectWellFormed(*curve);
    // An index names a place in x order, which undo and redo rebuild, not an item.
    EXPECT_EQ(&*GetIndexedSegmentIterator(*curve, 2), &*next);
    EXPECT_EQ(GetIndexedTangent(*curve, 3), previousIn);
    EXPECT_EQ(GetIndexedTangent(*curve, 0), nullptr) << "the first segment has no out tangent";
    EXPECT_EQ(GetIndexedSegmentIterator(*curve, 3), curve->end());
    EXPECT_EQ(GetIndexedSegmentIterator(*curve, -1), curve->end());
    EXPECT_EQ(GetIndexedTangent(*curve, 99), nullptr);

    curve->removeSegment(next); // the last key: the previous one becomes last
    EXPECT_EQ(curve->size(), 2u);
    EXPECT_EQ(previous.getRightKey(), nullptr);
    EXPECT_EQ(previous.getInTangent(), nullptr);
}

TEST(Splinor, random_edits_with_bad_input_keep_the_invariants_and_leave_other_items_in_place)
{
    // Built from the right with more keys than a block of the key index holds, so that a block
    // splits and the blocks to its right are left alone: checked before any edit refreshes them.
    auto curve = Splinor::create();
    std::vector<Segment*> kept(600);
    for (int i = 599; i >= 0; --i)
        kept[i] = &*curve->insertSegment(Keyframe(i * 0.1, i), nullptr);
    ExpectWellFormed(*curve);
    std::set<const Segment*> untouched(kept.begin(), kept.end());
    std::mt19937 random(11);
    std::uniform_real_distribution<double> position(-10.0, 70.0);
    const double bad[] = { cNaN, cInf, -cInf };

    for (int step = 0; step < 2000; ++step) {
        const auto action = random() % 3;
        const double x = random() % 10 == 0 ? bad[random() % 3] : position(random);
        const double dense = std::round(x * 1e4) / 1e4; // crowd keys at the minimum separation
        Splinor::iterator at = curve->findSegment(position(random));
        if (action == 0) {
            curve->insertSegment(Keyframe(dense, position(random)), nullptr);
        } else if (at->getLeftKey()) {
            untouched.erase(&*at);
            if (action == 1)
                curve->removeSegment(at);
            else
                at->getLeftKey()->set(x, random() % 7 == 0 ? cNaN : position(random));
        }
    }

    ASSERT_GT(untouched.size(), 50u);
    for (int i = 0; i < 600; ++i) {
        if (untouched.count(kept[i])) {
            EXPECT_EQ(kept[i]->getLeftKey()->getX(), i * 0.1);
            EXPECT_EQ(&*curve->findSegment(i * 0.1), kept[i]);
        }
    }
    ExpectWellFormed(*curve);
    // Moving every key left moves the first key of each block of the index too.
    for (Segment& segment : *curve) {
        if (Keyframe* key = segment.getLeftKey()) {
            key->set(key->getX() - 0.05, key->getY());
            EXPECT_EQ(&*curve->findSegment(key->getX()), &segment);
        }
    }
    ExpectWellFormed(*Splinor::createCopy(*curve)); // a copy builds its index another way
}

TEST(Keyframe, set_stops_at_the_neighbours_of_a_curve_key_and_find_segment_follows)
{
    auto curve = MakeCurve({ { 0, 0 }, { 5, 5 }, { 10, 0 } });
    Keyframe& middle = KeyAt(*curve, 1);
    const double separation = Keyframe::getMinSeparation();
    EXPECT_EQ(curve->findSegment(-1.0), curve->begin());
    EXPECT_EQ(curve->findSegment(4.999)->getLeftKey()->getX(), 0.0);
    EXPECT_EQ(curve->findSegment(5.0)->getLeftKey(), &middle) << "a key's x gives the segment it starts";
    EXPECT_EQ(curve->findSegment(cInf)->getLeftKey()->getX(), 10.0);
    EXPECT_EQ(curve->findSegment(cNaN), curve->begin());

    // Within rounding of the separation, and never closer: 10 - x can round below it.
    middle.set(20.0, 1.0);
    EXPECT_NEAR(middle.getX(), 10.0 - separation, 1e-12);
    EXPECT_GE(10.0 - middle.getX(), separation);
    middle.set(-20.0, 2.0);
    EXPECT_NEAR(middle.getX(), separation, 1e-12);
    const Vector2D<double> before = middle.get();
    middle.set(cNaN, 3.0);
    middle.set(4.0, cInf);
    EXPECT_EQ(middle.get(), before);

    middle.set(7.0, 1.0);
    EXPECT_EQ(curve->findSegment(7.0)->getLeftKey(), &middle) << "the index follows the move";
    EXPECT_EQ(curve->findSegment(6.9)->getLeftKey()->getX(), 0.0);

    Keyframe free; // no neighbours, so not clamped
    free.set(1e9, -3.0);
    EXPECT_EQ(free.get(), Vector2D<double>(1e9, -3.0));
    EXPECT_EQ(free.getOutTangent(), nullptr);
}

TEST(Splinor, a_copy_is_independent_and_a_swap_trades_contents_but_not_identities)
{
    auto source = MakeCurve({ { 0, 0 }, { 3, 4 }, { 6, 1 } });
    source->setName("source");
    source->setProperty("sn_se", "1 2 3");
    SetLocked(*source, true);
    SetLocked(KeyAt(*source, 2), true);
    SetHandle(*KeyAt(*source, 1).getOutTangent(), { 1.0, 2.0 });
    source->findSegment(3.0)->setProperty("p", "v");

    auto copy = Splinor::createCopy(*source);

    ASSERT_EQ(copy->size(), source->size());
    EXPECT_STREQ(copy->getName(), "source");
    EXPECT_STREQ(copy->getProperty("sn_se"), "1 2 3");
    EXPECT_STREQ(copy->getProperty("unset"), "");
    EXPECT_TRUE(IsLocked(*copy));
    EXPECT_TRUE(IsLocked(KeyAt(*copy, 2)));
    // The span is 3, so an unweighted (1, 2) would give the same curve: the flag is checked alone.
    EXPECT_TRUE(KeyAt(*copy, 1).getOutTangent()->isWeighted());
    EXPECT_STREQ(copy->findSegment(3.0)->getProperty("p"), "v");
    for (double x = -1.0; x < 7.0; x += 0.25)
        EXPECT_EQ(copy->eval(x), source->eval(x));
    ExpectWellFormed(*copy);

    // Shared storage would carry these edits back to the source.
    Keyframe& keyOfCopy = KeyAt(*copy, 1);
    keyOfCopy.set(3.0, 100.0);
    copy->insertSegment(Keyframe(5.0, 0.0), nullptr);
    copy->setProperty("sn_se", "");
    copy->findSegment(3.0)->setProperty("p", "");
    EXPECT_STREQ(copy->getProperty("sn_se"), "") << "an empty value removes the property";
    EXPECT_STREQ(copy->findSegment(3.0)->getProperty("p"), "");
    EXPECT_EQ(KeyAt(*source, 1).getY(), 4.0);
    EXPECT_EQ(source->size(), 4u);
    EXPECT_STREQ(source->getProperty("sn_se"), "1 2 3");
    EXPECT_STREQ(source->findSegment(3.0)->getProperty("p"), "v");

    // As undo and redo use it: the contents trade places, each curve keeps its observers.
    copy->setName("copy");
    CountingObserver observerOfSource;
    source->subscribe(observerOfSource);
    source->swap(*copy);
    EXPECT_STREQ(source->getName(), "copy");
    EXPECT_STREQ(copy->getName(), "source");
    EXPECT_EQ(keyOfCopy.getOwningCurve(), source.get()) << "items follow their content";
    EXPECT_EQ(keyOfCopy.getOutTangent()->getOwningCurve(), source.get());
    ExpectWellFormed(*source);
    ExpectWellFormed(*copy);
    EXPECT_EQ(observerOfSource.curve, 1);
    keyOfCopy.set(3.0, 9.0);
    EXPECT_EQ(observerOfSource.curve, 2) << "observers stay with the identity";
}

TEST(SplinorObserver, edits_are_announced_finely_then_as_a_curve_change_unless_a_switch_silences_them)
{
    auto curve = MakeCurve({ { 0, 0 }, { 1, 1 } });
    auto other = MakeCurve({ { 0, 0 } });
    CountingObserver local, global, otherObserver;
    curve->subscribe(local);
    other->subscribe(otherObserver);
    Splinor::subscribeGlobal(global);

    KeyAt(*curve, 0).set(0.0, 2.0);
    KeyAt(*curve, 0).set(0.0, 2.0); // no change, no word
    KeyAt(*curve, 0).setBreakdown(true);
    KeyAt(*curve, 0).getOutTangent()->setType(cTangentFlat);
    curve->begin()->getNext()->setInterpolator(Linear::create());
    curve->setProperty("k", "v");
    curve->insertSegment(Keyframe(0.5, 0.0), nullptr);

    for (CountingObserver* observer : { &local, &global }) {
        EXPECT_EQ(observer->value, 1);
        EXPECT_EQ(observer->keyframe, 1);
        EXPECT_EQ(observer->tangent, 1);
        EXPECT_EQ(observer->segment, 1);
        EXPECT_EQ(observer->property, 1);
        EXPECT_EQ(observer->curve, 6);
    }
    Splinor::unsubscribeGlobal(global);

    {
        Splinor::Switch silence(*curve);
        KeyAt(*curve, 0).set(0.0, 5.0);
        curve->insertSegment(Keyframe(0.25, 0.0), nullptr);
        KeyAt(*other, 0).set(0.0, 1.0);
        EXPECT_EQ(local.curve, 6);
        EXPECT_EQ(otherObserver.curve, 1) << "a switch of one curve leaves the others alone";
        curve->notifyChanged();
        EXPECT_EQ(local.curve, 7);
    }
    {
        Splinor::Switch silenceAll;
        KeyAt(*other, 0).set(0.0, 2.0);
        EXPECT_EQ(otherObserver.curve, 1);
    }
    KeyAt(*curve, 0).set(0.0, 6.0);
    EXPECT_EQ(local.curve, 8);
}

TEST(CurveFlags, curves_start_visible_and_editable_and_each_setter_changes_its_own_flag_once)
{
    struct Flag
    {
        bool (*get)(const Splinor&);
        void (*set)(Splinor&, bool);
        bool initial;
    };
    const Flag flags[] = { { IsVisible, SetVisible, true }, { IsEditable, SetEditable, true },
        { IsLocked, SetLocked, false }, { IsVelocityVisible, SetVelocityVisible, false },
        { IsAccelerationVisible, SetAccelerationVisible, false } };
    for (std::size_t i = 0; i < std::size(flags); ++i) {
        SCOPED_TRACE(i);
        auto curve = MakeCurve({ { 0, 0 } });
        CountingObserver observer;
        curve->subscribe(observer);

        flags[i].set(*curve, !flags[i].initial);
        flags[i].set(*curve, !flags[i].initial);

        for (std::size_t j = 0; j < std::size(flags); ++j)
            EXPECT_EQ(flags[j].get(*curve), flags[j].initial != (i == j)) << "flag " << j;
        EXPECT_EQ(observer.curve, 1) << "a setter that changes nothing says nothing";
    }
}
