#include "CurveTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using namespace SplinorTest;

namespace {

constexpr double cNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double cInf = std::numeric_limits<double>::infinity();

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

struct CountingObserver : SplinorObserver
{
    void curveChanged(Splinor&) override { ++curve; }
    void valueChanged(Keyframe&) override { ++value; }
    void tangentChanged(Tangent&) override { ++tangent; }
    void keyframeChanged(Keyframe&) override { ++keyframe; }
    void segmentChanged(Segment&) override { ++segment; }
    void propertyChanged(Splinor&, const char*) override { ++property; }
    int curve = 0, value = 0, tangent = 0, keyframe = 0, segment = 0, property = 0;
};

} // namespace

TEST(Splinor, a_new_curve_is_one_open_segment_that_evaluates_to_zero)
{
    auto curve = Splinor::create();

    EXPECT_EQ(curve->size(), 1u);
    EXPECT_EQ(curve->begin()->getLeftKey(), nullptr);
    EXPECT_EQ(curve->begin()->getRightKey(), nullptr);
    EXPECT_EQ(curve->begin()->getInTangent(), nullptr);
    EXPECT_EQ(curve->eval(42.0), 0.0);
    EXPECT_EQ(curve->getShared().get(), curve.get());
}

TEST(Splinor, insert_splits_the_holding_segment_and_moves_the_old_right_handle_to_the_new_one)
{
    auto curve = MakeCurve({{0, 0}, {10, 5}});
    Segment& left = *curve->findSegment(2.0);
    Tangent& in = *curve->findSegment(5.0)->getInTangent();
    in.setWeighted(true);
    in.set(-2.0, 3.0);
    Keyframe key(4.0, 7.0);
    key.setBreakdown(true);

    auto it = curve->insertSegment(key, Linear::create());
    auto split = curve->insertSegment(Keyframe(2.0, 1.0), nullptr);

    EXPECT_EQ(curve->size(), 5u);
    EXPECT_EQ(it->getLeftKey()->get(), Vector2D<double>(4.0, 7.0));
    EXPECT_TRUE(it->getLeftKey()->isBreakdown());
    EXPECT_NE(it->getLeftKey(), &key) << "the curve keeps its own key";
    EXPECT_EQ(split->getPrevious(), &left) << "the left part keeps its identity";
    EXPECT_EQ(left.getRightKey(), split->getLeftKey());
    EXPECT_EQ(it->getRightKey()->getX(), 10.0);
    EXPECT_STREQ(it->getInterpolator()->getExpression(), "linear()");
    EXPECT_STREQ(split->getInterpolator()->getExpression(), "bezier()") << "a null interpolator takes the split one's";
    const Tangent& moved = *it->getInTangent();
    EXPECT_EQ(moved.getOwningKeyframe()->getX(), 10.0);
    EXPECT_EQ(moved.get(), Vector2D<double>(-2.0, 3.0));
    EXPECT_TRUE(moved.isWeighted());
    EXPECT_EQ(moved.getType(), cTangentFixed);
    ExpectWellFormed(*curve);
}

TEST(Splinor, insert_at_or_near_an_existing_key_replaces_its_values_and_non_finite_keys_are_refused)
{
    auto curve = MakeCurve({{0, 0}, {10, 5}});
    Keyframe* original = &KeyAt(*curve, 1);
    SetLocked(*original, true);

    auto exact = curve->insertSegment(Keyframe(10.0, 8.0), Constant::create());
    auto near = curve->insertSegment(Keyframe(Keyframe::getMinSeparation() * 0.5, 3.0), nullptr);
    for (const Keyframe& bad : {Keyframe(cNaN, 1.0), Keyframe(1.0, cInf), Keyframe(-cInf, 0.0)})
        EXPECT_EQ(curve->insertSegment(bad, nullptr), curve->end());

    EXPECT_EQ(curve->size(), 3u);
    EXPECT_EQ(exact->getLeftKey(), original);
    EXPECT_EQ(original->get(), Vector2D<double>(10.0, 8.0));
    EXPECT_TRUE(IsLocked(*original)) << "the lock is the editor's, not the inserted key's";
    EXPECT_STREQ(exact->getInterpolator()->getExpression(), "constant()");
    EXPECT_EQ(near->getLeftKey()->get(), Vector2D<double>(0.0, 3.0)) << "the key keeps its x";
    ExpectWellFormed(*curve);
}

TEST(Splinor, remove_takes_the_key_out_and_the_previous_segment_spans_the_gap)
{
    auto curve = MakeCurve({{0, 0}, {5, 5}, {10, 2}});
    Segment& previous = *curve->findSegment(1.0);
    Tangent* previousIn = previous.getInTangent();
    previousIn->setType(cTangentFlat);
    auto removed = curve->findSegment(5.0);
    std::shared_ptr<Keyframe> held = removed->getLeftKey()->getShared();

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

    curve->removeSegment(next); // the last key: the previous one becomes last
    EXPECT_EQ(curve->size(), 2u);
    EXPECT_EQ(previous.getRightKey(), nullptr);
    EXPECT_EQ(previous.getInTangent(), nullptr);
    EXPECT_EQ(curve->eval(100.0), 0.0);
}

TEST(Splinor, find_segment_gives_the_segment_that_starts_at_a_key)
{
    auto curve = MakeCurve({{0, 0}, {5, 5}});

    EXPECT_EQ(curve->findSegment(-1.0), curve->begin());
    EXPECT_EQ(curve->findSegment(0.0)->getLeftKey()->getX(), 0.0);
    EXPECT_EQ(curve->findSegment(4.999)->getLeftKey()->getX(), 0.0);
    EXPECT_EQ(curve->findSegment(5.0)->getLeftKey()->getX(), 5.0);
    EXPECT_EQ(curve->findSegment(cInf)->getLeftKey()->getX(), 5.0);
    EXPECT_EQ(curve->findSegment(cNaN), curve->begin());
}

TEST(Splinor, iterators_and_items_survive_edits_of_other_segments)
{
    auto curve = Splinor::create();
    std::vector<Segment*> kept;
    for (int i = 0; i < 200; ++i)
        kept.push_back(&*curve->insertSegment(Keyframe(i * 2.0, i), nullptr));
    Splinor::iterator fifty = curve->findSegment(100.0);

    std::mt19937 random(7);
    for (int i = 0; i < 300; ++i) {
        double x = std::uniform_real_distribution<double>(-10.0, 410.0)(random);
        if (std::fmod(std::fabs(x), 2.0) > 0.01) // never the x of a kept key
            curve->insertSegment(Keyframe(x, 0.0), nullptr);
        auto victim = curve->findSegment(std::uniform_real_distribution<double>(-10.0, 410.0)(random));
        if (victim->getLeftKey() && std::fmod(victim->getLeftKey()->getX(), 2.0) != 0.0)
            curve->removeSegment(victim);
    }

    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(kept[i]->getLeftKey()->getX(), i * 2.0);
        EXPECT_EQ(&*curve->findSegment(i * 2.0), kept[i]);
    }
    EXPECT_EQ(fifty->getLeftKey()->getX(), 100.0);
    ExpectWellFormed(*curve);
}

TEST(Splinor, random_edits_with_bad_input_keep_the_invariants)
{
    auto curve = Splinor::create();
    std::mt19937 random(11);
    std::uniform_real_distribution<double> position(-50.0, 50.0);
    const double bad[] = {cNaN, cInf, -cInf};

    for (int step = 0; step < 2000; ++step) {
        int action = int(random() % 4);
        double x = random() % 10 == 0 ? bad[random() % 3] : position(random);
        double dense = std::round(x * 1e4) / 1e4; // crowd keys at the minimum separation
        if (action == 0)
            curve->insertSegment(Keyframe(dense, position(random)), nullptr);
        else if (action == 1)
            curve->removeSegment(curve->findSegment(x));
        else if (Keyframe* key = curve->findSegment(position(random))->getLeftKey())
            key->set(x, random() % 7 == 0 ? cNaN : position(random));
    }

    ExpectWellFormed(*curve);
}

TEST(Keyframe, set_stops_at_the_neighbours_of_a_curve_key_and_ignores_non_finite_values)
{
    auto curve = MakeCurve({{0, 0}, {5, 5}, {10, 0}});
    Keyframe& middle = KeyAt(*curve, 1);

    // Within rounding of the separation, and never closer.
    const double ulps = 1e-12;
    middle.set(20.0, 1.0);
    EXPECT_NEAR(middle.getX(), 10.0 - Keyframe::getMinSeparation(), ulps);
    EXPECT_GE(10.0 - middle.getX(), Keyframe::getMinSeparation());
    middle.set(-20.0, 2.0);
    EXPECT_NEAR(middle.getX(), Keyframe::getMinSeparation(), ulps);
    EXPECT_GE(middle.getX() - 0.0, Keyframe::getMinSeparation());
    const Vector2D<double> before = middle.get();
    middle.set(cNaN, 3.0);
    middle.set(4.0, cInf);
    EXPECT_EQ(middle.get(), before);

    middle.set(7.0, 1.0);
    EXPECT_EQ(&*curve->findSegment(7.0), middle.getRightSegment()) << "the index follows the move";
    EXPECT_EQ(curve->findSegment(6.9)->getLeftKey()->getX(), 0.0);

    Keyframe free; // no neighbours, so not clamped
    free.set(1e9, -3.0);
    EXPECT_EQ(free.get(), Vector2D<double>(1e9, -3.0));
    EXPECT_FALSE(free.isTangentsUnified());
    EXPECT_EQ(free.getLeftSegment(), nullptr);
    EXPECT_EQ(free.getOutTangent(), nullptr);
    EXPECT_EQ(free.getOwningCurve(), nullptr);
}

TEST(Splinor, properties_and_names_read_empty_when_unset)
{
    auto curve = MakeCurve({{0, 0}});

    EXPECT_STREQ(curve->getProperty("sn_ue"), "");
    EXPECT_STREQ(curve->begin()->getProperty("sn_nocopy"), "");
    curve->setProperty("sn_ue", "255 0 0");
    curve->begin()->setProperty("sn_nocopy", "1");
    curve->setName("arm.rotate.x");

    EXPECT_STREQ(curve->getProperty("sn_ue"), "255 0 0");
    EXPECT_STREQ(curve->begin()->getProperty("sn_nocopy"), "1");
    EXPECT_STREQ(curve->getName(), "arm.rotate.x");
    curve->begin()->setProperty("sn_nocopy", "");
    EXPECT_STREQ(curve->begin()->getProperty("sn_nocopy"), "");
}

TEST(Splinor, a_copy_has_the_same_content_and_is_independent)
{
    auto source = MakeCurve({{0, 0}, {3, 4}, {6, 1}});
    source->setName("source");
    source->setProperty("sn_se", "1 2 3");
    SetLocked(*source, true);
    SetVelocityVisible(*source, true);
    KeyAt(*source, 1).setBreakdown(true);
    SetLocked(KeyAt(*source, 2), true);
    Tangent& tangent = *KeyAt(*source, 1).getOutTangent();
    tangent.setWeighted(true);
    tangent.set(1.0, 2.0);
    source->findSegment(3.0)->setProperty("p", "v");

    auto copy = Splinor::createCopy(*source);

    ASSERT_EQ(copy->size(), source->size());
    EXPECT_STREQ(copy->getName(), "source");
    EXPECT_STREQ(copy->getProperty("sn_se"), "1 2 3");
    EXPECT_TRUE(IsLocked(*copy));
    EXPECT_TRUE(IsVelocityVisible(*copy));
    EXPECT_TRUE(KeyAt(*copy, 1).isBreakdown());
    EXPECT_TRUE(IsLocked(KeyAt(*copy, 2)));
    EXPECT_EQ(KeyAt(*copy, 1).getOutTangent()->get(), Vector2D<double>(1.0, 2.0));
    EXPECT_TRUE(KeyAt(*copy, 1).getOutTangent()->isWeighted());
    EXPECT_STREQ(copy->findSegment(3.0)->getProperty("p"), "v");
    EXPECT_EQ(copy->findSegment(3.0)->getInterpolator(), source->findSegment(3.0)->getInterpolator());
    for (double x = -1.0; x < 7.0; x += 0.25)
        EXPECT_EQ(copy->eval(x), source->eval(x));
    ExpectWellFormed(*copy);

    KeyAt(*copy, 1).set(3.0, 100.0);
    copy->insertSegment(Keyframe(5.0, 0.0), nullptr);
    copy->setProperty("sn_se", "");
    EXPECT_EQ(KeyAt(*source, 1).getY(), 4.0);
    EXPECT_EQ(source->size(), 4u);
    EXPECT_STREQ(source->getProperty("sn_se"), "1 2 3");
}

TEST(Splinor, swap_exchanges_content_and_keeps_identities_and_links)
{
    auto a = MakeCurve({{0, 0}, {1, 1}});
    auto b = MakeCurve({{0, 5}, {2, 6}, {4, 7}});
    a->setName("a");
    b->setName("b");
    Keyframe* keyOfB = &KeyAt(*b, 2);
    CountingObserver observerOfA;
    a->subscribe(observerOfA);

    a->swap(*b);

    EXPECT_STREQ(a->getName(), "b");
    EXPECT_STREQ(b->getName(), "a");
    EXPECT_EQ(a->size(), 4u);
    EXPECT_EQ(keyOfB->getOwningCurve(), a.get()) << "items follow their content";
    EXPECT_EQ(keyOfB->getOutTangent()->getOwningCurve(), a.get());
    ExpectWellFormed(*a);
    ExpectWellFormed(*b);

    int before = observerOfA.curve;
    keyOfB->set(4.0, 9.0);
    EXPECT_GT(observerOfA.curve, before) << "observers stay with the identity";

    b->swap(*a);
    EXPECT_STREQ(a->getName(), "a");
    EXPECT_EQ(keyOfB->getOwningCurve(), b.get());
}

TEST(SplinorObserver, edits_are_announced_finely_then_as_a_curve_change)
{
    auto curve = MakeCurve({{0, 0}, {1, 1}});
    CountingObserver local;
    CountingObserver global;
    curve->subscribe(local);
    Splinor::subscribeGlobal(global);

    KeyAt(*curve, 0).set(0.0, 2.0);
    KeyAt(*curve, 0).set(0.0, 2.0); // no change, no word
    KeyAt(*curve, 0).setBreakdown(true);
    KeyAt(*curve, 0).getOutTangent()->setType(cTangentFlat);
    curve->begin()->getNext()->setInterpolator(Linear::create());
    curve->setProperty("k", "v");
    curve->insertSegment(Keyframe(0.5, 0.0), nullptr);

    for (CountingObserver* observer : {&local, &global}) {
        EXPECT_EQ(observer->value, 1);
        EXPECT_EQ(observer->keyframe, 1);
        EXPECT_EQ(observer->tangent, 1);
        EXPECT_EQ(observer->segment, 1);
        EXPECT_EQ(observer->property, 1);
        EXPECT_EQ(observer->curve, 6);
    }
    Splinor::unsubscribeGlobal(global);
}

TEST(SplinorObserver, a_switch_silences_edits_but_not_notify_changed)
{
    auto curve = MakeCurve({{0, 0}, {1, 1}});
    auto other = MakeCurve({{0, 0}});
    CountingObserver observer;
    CountingObserver otherObserver;
    curve->subscribe(observer);
    other->subscribe(otherObserver);

    {
        Splinor::Switch silence(*curve);
        KeyAt(*curve, 0).set(0.0, 5.0);
        curve->insertSegment(Keyframe(0.5, 0.0), nullptr);
        KeyAt(*other, 0).set(0.0, 1.0);
        EXPECT_EQ(observer.curve, 0);
        EXPECT_EQ(otherObserver.curve, 1) << "a switch of one curve leaves the others alone";
        curve->notifyChanged();
        EXPECT_EQ(observer.curve, 1);
    }
    {
        Splinor::Switch silenceAll;
        KeyAt(*other, 0).set(0.0, 2.0);
        EXPECT_EQ(otherObserver.curve, 1);
    }
    KeyAt(*curve, 0).set(0.0, 6.0);
    EXPECT_EQ(observer.curve, 2);
}

TEST(SplinorObserver, observers_and_curves_may_die_in_either_order)
{
    // Use after free here shows in the sanitizer build; the counts show the sets stay whole.
    auto curve = MakeCurve({{0, 0}});
    CountingObserver survivor;
    curve->subscribe(survivor);
    {
        CountingObserver shortLived;
        curve->subscribe(shortLived);
        Splinor::subscribeGlobal(shortLived);
    }
    KeyAt(*curve, 0).set(0.0, 1.0);
    EXPECT_EQ(survivor.curve, 1);

    auto observer = std::make_unique<CountingObserver>();
    {
        auto shortCurve = MakeCurve({{0, 0}});
        shortCurve->subscribe(*observer);
    }
    curve->subscribe(*observer);
    KeyAt(*curve, 0).set(0.0, 2.0);
    EXPECT_EQ(observer->curve, 1);
    observer.reset();
    KeyAt(*curve, 0).set(0.0, 3.0);
    EXPECT_EQ(survivor.curve, 3);
}

TEST(Splinor, change_type_is_one_process_wide_state)
{
    const std::pair<Splinor::ChangeType, int> rows[] = {
        {Splinor::cChangeAhead, 1}, {Splinor::cChangeDone, 3}, {Splinor::cChangeNone, 0}};
    for (auto [type, value] : rows) {
        Splinor::setChangeType(type);
        EXPECT_EQ(Splinor::getChangeType(), value);
    }
}

TEST(CurveFlags, defaults_and_setters)
{
    auto curve = MakeCurve({{0, 0}});
    CountingObserver observer;
    curve->subscribe(observer);

    EXPECT_TRUE(IsVisible(*curve));
    EXPECT_TRUE(IsEditable(*curve));
    EXPECT_FALSE(IsLocked(*curve));
    EXPECT_FALSE(IsVelocityVisible(*curve));
    EXPECT_FALSE(IsAccelerationVisible(*curve));

    SetVisible(*curve, false);
    SetEditable(*curve, false);
    SetAccelerationVisible(*curve, true);
    SetAccelerationVisible(*curve, true);

    EXPECT_FALSE(IsVisible(*curve));
    EXPECT_FALSE(IsEditable(*curve));
    EXPECT_TRUE(IsAccelerationVisible(*curve));
    EXPECT_EQ(observer.curve, 3) << "a setter that changes nothing says nothing";
}

TEST(Indexing, indices_find_the_same_place_after_remove_and_reinsert)
{
    auto curve = MakeCurve({{0, 0}, {1, 1}, {2, 0}, {3, 1}});
    Segment& third = *curve->findSegment(2.0);
    Tangent& in = *third.getInTangent();

    const int segmentIndex = GetSegmentIndex(*curve, third);
    const int tangentIndex = GetTangentIndex(*curve, in);
    EXPECT_EQ(segmentIndex, 3);
    EXPECT_EQ(tangentIndex, 7);
    EXPECT_EQ(GetSegmentIndex(*curve, *curve->begin()), 0);
    EXPECT_EQ(GetIndexedTangent(*curve, 2 * 0 + 1)->getOwningKeyframe()->getX(), 0.0);
    EXPECT_EQ(GetIndexedTangent(*curve, 0), nullptr) << "the first segment has no out tangent";

    curve->removeSegment(curve->findSegment(2.0));
    curve->insertSegment(Keyframe(2.0, 0.0), nullptr);

    EXPECT_EQ(GetIndexedSegmentIterator(*curve, segmentIndex)->getLeftKey()->getX(), 2.0);
    EXPECT_EQ(GetIndexedTangent(*curve, tangentIndex)->getOwningKeyframe()->getX(), 3.0);
    EXPECT_EQ(GetIndexedSegmentIterator(*curve, 99), curve->end());
    EXPECT_EQ(GetIndexedSegmentIterator(*curve, -1), curve->end());
    EXPECT_EQ(GetIndexedTangent(*curve, 99), nullptr);

    auto other = MakeCurve({{0, 0}});
    EXPECT_EQ(GetSegmentIndex(*other, *curve->begin()), -1);
}
