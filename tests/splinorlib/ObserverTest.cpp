#include <gtest/gtest.h>

#include "splinorlib/DelayedErase.h"
#include "splinorlib/SharedFromThis.h"
#include "splinorlib/SubjectBase.h"
#include "splinorlib/TrackedObserver.h"

#include <algorithm>
#include <array>
#include <functional>
#include <iterator>
#include <list>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace SL = Ovantis::SplinorLib::v19;

namespace {

// --- SharedFromThis ---------------------------------------------------------------------------

struct Node : SL::SharedFromThis<Node>
{
    int id = 0;
};

TEST(SharedFromThis, getShared_follows_the_owner_and_copies_do_not_carry_it)
{
    Node node;
    node.id = 1;
    const Node& constView = node;
    EXPECT_EQ(node.getShared(), nullptr);
    // A non-owning deleter lets the object outlive its owner, so the expiry can be observed.
    auto owner = std::shared_ptr<Node>(&node, [](Node*) {});
    node.setShared(owner);
    auto target = std::make_shared<Node>();
    target->setShared(target);

    auto copy = std::make_shared<Node>(node);
    *target = node;

    EXPECT_EQ(constView.getShared(), owner);
    EXPECT_EQ(copy->id, 1);
    EXPECT_EQ(copy->getShared(), nullptr);
    EXPECT_EQ(target->id, 1);
    EXPECT_EQ(target->getShared(), target);
    owner.reset();
    EXPECT_EQ(node.getShared(), nullptr);
}

// --- DelayedErase -----------------------------------------------------------------------------

template <class D>
using List = std::list<D>;

template <class T>
class TestList : public SL::DelayedErase<T, List>
{
};
using IntList = TestList<int>;

IntList::raw_iterator append(IntList& list, int value) { return list.insert(list.getContainer().end(), value); }

TEST(DelayedErase, erase_during_a_walk_is_delayed_until_the_outermost_guard_ends)
{
    IntList list;
    append(list, 1);
    auto two = append(list, 2);
    append(list, 3);

    {
        IntList::IterationGuard outer(list);
        {
            IntList::IterationGuard inner(list);
            EXPECT_EQ(list.getIterationDepth(), 2);
            list.erase(two);
        }
        // The outer walk may still stand on the element, so it must stay in the container.
        EXPECT_EQ(list.getContainer().size(), 3u);
        EXPECT_TRUE(list.isErasePending());
        EXPECT_EQ(two->value, 2);
        const IntList& constView = list;
        EXPECT_EQ(std::vector<int>(constView.begin(), constView.end()), (std::vector<int>{1, 3}));
        EXPECT_EQ(*std::prev(list.end(), 2), 1);
    }
    EXPECT_EQ(list.getContainer().size(), 2u);
    EXPECT_FALSE(list.isErasePending());
    EXPECT_EQ(list.getIterationDepth(), 0);

    list.erase(list.begin()); // No walk: gone at once.
    list.erase(list.getContainer().end());
    EXPECT_EQ(list.getContainer().size(), 1u);
}

TEST(DelayedErase, the_walk_body_may_erase_the_current_and_later_elements)
{
    IntList list;
    std::vector<IntList::raw_iterator> at;
    for (int v = 1; v <= 5; ++v)
        at.push_back(append(list, v));

    std::vector<int> walked;
    {
        IntList::IterationGuard guard(list);
        for (auto it = list.begin(); it != list.end(); ++it) {
            walked.push_back(*it);
            if (*it == 2) {
                list.erase(it);
                list.erase(at[3]);
            }
        }
    }

    EXPECT_EQ(walked, (std::vector<int>{1, 2, 3, 5}));
    EXPECT_EQ(list.getContainer().size(), 3u);
}

TEST(DelayedErase, a_value_destructor_erasing_during_the_flush_is_collected)
{
    using PtrList = TestList<std::shared_ptr<int>>;
    PtrList list;
    std::vector<int> destroyed;
    PtrList::raw_iterator first, middle, last;
    auto add = [&](int id, std::function<void()> onDestroy = nullptr) {
        auto deleter = [&destroyed, onDestroy](int* p) {
            destroyed.push_back(*p);
            delete p;
            if (onDestroy)
                onDestroy();
        };
        return list.insert(list.getContainer().end(), std::shared_ptr<int>(new int(id), deleter));
    };
    first = add(1);
    // Its destructor reaches back to a neighbour already passed and to one still ahead.
    middle = add(2, [&] {
        list.erase(first);
        list.erase(last);
    });
    last = add(3);

    {
        PtrList::IterationGuard guard(list);
        list.erase(middle);
    }

    EXPECT_TRUE(list.getContainer().empty());
    EXPECT_FALSE(list.isErasePending());
    EXPECT_EQ(list.getIterationDepth(), 0);
    std::sort(destroyed.begin(), destroyed.end());
    EXPECT_EQ(destroyed, (std::vector<int>{1, 2, 3}));
}

// --- ObserverSet, TrackedObserver -------------------------------------------------------------

struct ChangeObserver : SL::TrackedObserver
{
    virtual void changed(int value) = 0;
};

using Log = std::vector<std::pair<int, int>>; // (observer id, value) per call

struct Recorder : ChangeObserver
{
    void changed(int value) override
    {
        log->emplace_back(id, value);
        if (onChanged)
            onChanged(value);
    }

    int id = -1;
    Log* log = nullptr;
    std::function<void(int)> onChanged;
};

class ChangeSubject : public SL::Private::SubjectBase<ChangeObserver>
{
public:
    void notify(int value) { mObservers.notify(&ChangeObserver::changed, value); }
    ObserverSet& observers() { return mObservers; }
};

struct PokeObserver : SL::TrackedObserver
{
    virtual void poked() { ++pokes; }
    int pokes = 0;
};

class PokeSubject : public SL::Private::SubjectBase<PokeObserver>
{
public:
    void poke() { mObservers.notify(&PokeObserver::poked); }
    ObserverSet& observers() { return mObservers; }
};

class ObserverSet : public ::testing::Test
{
protected:
    ObserverSet()
    {
        for (int i = 0; i < int(obs.size()); ++i) {
            obs[i].id = i;
            obs[i].log = &log;
        }
    }

    std::vector<int> calledIds()
    {
        std::vector<int> ids;
        for (const auto& call : log)
            ids.push_back(call.first);
        log.clear();
        return ids;
    }
    void subscribeAll(std::initializer_list<int> ids)
    {
        for (int i : ids)
            subject.subscribe(obs[i]);
    }
    std::size_t stored() { return subject.observers().getContainer().size(); }
    const SL::Private::TrackerBase* tracker() { return &subject.observers(); }

    Log log;
    std::array<Recorder, 5> obs; // One array, so that addresses ascend with the index.
    ChangeSubject subject;
};

TEST_F(ObserverSet, notify_calls_observers_by_ascending_address_not_subscription_order)
{
    subscribeAll({3, 0, 4, 1, 0});

    subject.notify(9);

    EXPECT_EQ(calledIds(), (std::vector<int>{0, 1, 3, 4}));
    EXPECT_EQ(stored(), 4u);
    EXPECT_TRUE(obs[0].isTracking(tracker()));
    EXPECT_FALSE(obs[2].isTracking(tracker()));
}

TEST_F(ObserverSet, unsubscribing_during_notify_skips_the_removed_for_the_rest_of_the_pass)
{
    subscribeAll({0, 1, 2, 3});
    obs[1].onChanged = [this](int) {
        subject.unsubscribe(obs[1]);
        subject.unsubscribe(obs[3]);
    };

    subject.notify(1);
    EXPECT_EQ(calledIds(), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(stored(), 2u);
    EXPECT_FALSE(obs[1].isTracking(tracker()));

    subject.notify(2);
    EXPECT_EQ(calledIds(), (std::vector<int>{0, 2}));
}

TEST_F(ObserverSet, resubscribing_during_notify_keeps_one_valid_element)
{
    subscribeAll({0, 1, 2});
    obs[1].onChanged = [this](int) {
        subject.unsubscribe(obs[1]);
        subject.subscribe(obs[1]);
    };

    subject.notify(1);
    EXPECT_EQ(stored(), 3u);
    EXPECT_TRUE(obs[1].isTracking(tracker()));

    log.clear();
    obs[1].onChanged = nullptr;
    subject.notify(2);
    EXPECT_EQ(calledIds(), (std::vector<int>{0, 1, 2}));
}

TEST_F(ObserverSet, subscribing_during_notify_calls_the_newcomer_only_if_it_sorts_later)
{
    subscribeAll({2});
    obs[2].onChanged = [this](int) { subscribeAll({0, 4}); };

    subject.notify(1);
    EXPECT_EQ(calledIds(), (std::vector<int>{2, 4}));

    subject.notify(2);
    EXPECT_EQ(calledIds(), (std::vector<int>{0, 2, 4}));
    EXPECT_EQ(stored(), 3u);
}

TEST_F(ObserverSet, a_nested_notify_leaves_the_removal_to_the_outer_pass)
{
    subscribeAll({0, 1, 2});
    int innerDepth = 0;
    std::size_t storedAfterInner = 0;
    obs[0].onChanged = [&](int value) {
        if (value == 1) {
            subject.notify(2);
            storedAfterInner = stored();
        }
    };
    obs[1].onChanged = [&](int) {
        innerDepth = subject.observers().getIterationDepth();
        subject.unsubscribe(obs[1]);
    };

    subject.notify(1);

    EXPECT_EQ(innerDepth, 2);
    EXPECT_EQ(storedAfterInner, 3u);
    // The outer pass must not reach obs[1], which the inner pass removed.
    EXPECT_EQ(log, (Log{{0, 1}, {0, 2}, {1, 2}, {2, 2}, {2, 1}}));
    EXPECT_EQ(stored(), 2u);
    EXPECT_EQ(subject.observers().getIterationDepth(), 0);
}

TEST_F(ObserverSet, a_throwing_observer_still_lets_the_pass_flush)
{
    subscribeAll({0, 1});
    obs[0].onChanged = [this](int) { subject.unsubscribe(obs[0]); };
    obs[1].onChanged = [](int) { throw std::runtime_error("observer failed"); };

    EXPECT_THROW(subject.notify(1), std::runtime_error);

    EXPECT_EQ(subject.observers().getIterationDepth(), 0);
    EXPECT_EQ(stored(), 1u);
    EXPECT_FALSE(subject.observers().isErasePending());
}

TEST_F(ObserverSet, a_dying_observer_leaves_its_subject_even_during_notify)
{
    std::array<std::optional<Recorder>, 4> slots; // in place, so that addresses still ascend
    for (int i = 0; i < 4; ++i) {
        slots[i].emplace();
        slots[i]->id = i;
        slots[i]->log = &log;
        subject.subscribe(*slots[i]);
    }
    slots[3].reset();
    EXPECT_EQ(stored(), 3u);

    slots[0]->onChanged = [&slots](int) { slots[1].reset(); };
    subject.notify(1);

    EXPECT_EQ(calledIds(), (std::vector<int>{0, 2}));
    EXPECT_EQ(stored(), 2u);
}

TEST_F(ObserverSet, a_dying_subject_tells_its_observers_and_a_dying_observer_leaves_all_its_subjects)
{
    // Two observer bases give two TrackedObserver parts; the Recorder part tracks two subjects.
    struct Both : Recorder, PokeObserver
    {
    };
    auto doomed = std::make_unique<ChangeSubject>();
    const SL::Private::TrackerBase* doomedTracker = &doomed->observers();
    ChangeSubject second;
    PokeSubject pokes;
    std::optional<Both> both;
    both.emplace();
    both->log = &log;
    Recorder& recorder = *both;
    for (ChangeSubject* changes : {&subject, &second, doomed.get()})
        changes->subscribe(*both);
    pokes.subscribe(*both);
    pokes.poke();
    ASSERT_EQ(both->pokes, 1);
    ASSERT_TRUE(recorder.isTracking(doomedTracker));

    doomed.reset();
    EXPECT_FALSE(recorder.isTracking(doomedTracker));
    EXPECT_TRUE(recorder.isTracking(tracker()));

    both.reset();
    EXPECT_EQ(stored(), 0u);
    EXPECT_TRUE(second.observers().getContainer().empty());
    EXPECT_TRUE(pokes.observers().getContainer().empty());
}

} // namespace
