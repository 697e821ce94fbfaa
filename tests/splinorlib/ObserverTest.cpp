#include <gtest/gtest.h>

#include "splinorlib/DelayedErase.h"
#include "splinorlib/SharedFromThis.h"
#include "splinorlib/SubjectBase.h"
#include "splinorlib/TrackedObserver.h"

#include <algorithm>
#include <array>
#include <functional>
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
};

TEST(SharedFromThis, getShared_follows_the_owner_and_copies_do_not_carry_it)
{
    Node node;
    EXPECT_EQ(node.getShared(), nullptr);
    // A non-owning deleter lets the object outlive its owner, so the expiry can be observed.
    auto owner = std::shared_ptr<Node>(&node, [](Node*) {});
    node.setShared(owner);
    auto target = std::make_shared<Node>();
    target->setShared(target);

    // A copy that took the source's owner would hand out a pointer that does not own it.
    auto copy = std::make_shared<Node>(node);
    *target = node;

    EXPECT_EQ(node.getShared(), owner);
    EXPECT_EQ(copy->getShared(), nullptr);
    EXPECT_EQ(target->getShared(), target);
    owner.reset();
    EXPECT_EQ(node.getShared(), nullptr);
}

// --- DelayedErase -----------------------------------------------------------------------------

template <class D> using List = std::list<D>;

template <class T> class TestList : public SL::DelayedErase<T, List>
{
};

// Walks, nesting and exceptions are tested through ObserverSet below; this is what observer
// pointers cannot show: values whose destructors erase other elements while the flush runs.
TEST(DelayedErase, erasures_made_by_the_flush_itself_are_collected_and_none_wait_without_a_walk)
{
    using PtrList = TestList<std::shared_ptr<void>>;
    std::vector<int> destroyed; // outlives the list, whose deleters write to it
    PtrList list;
    std::array<PtrList::raw_iterator, 4> at;
    for (int id = 0; id < 4; ++id) {
        at[id] = list.insert(list.getContainer().end(), std::shared_ptr<void>(nullptr, [&, id](void*) {
            destroyed.push_back(id);
            if (id == 1) { // reaches back to a neighbour already passed and to one still ahead
                list.erase(at[0]);
                list.erase(at[2]);
            }
        }));
    }

    {
        PtrList::IterationGuard guard(list);
        list.erase(at[1]);
        EXPECT_EQ(list.getContainer().size(), 4u);
    }

    EXPECT_EQ(list.getContainer().size(), 1u);
    EXPECT_FALSE(list.isErasePending());
    EXPECT_EQ(list.getIterationDepth(), 0);
    std::sort(destroyed.begin(), destroyed.end());
    EXPECT_EQ(destroyed, (std::vector<int> { 0, 1, 2 }));

    list.erase(list.getContainer().end());
    list.erase(list.begin());
    EXPECT_TRUE(list.getContainer().empty());
}

// --- ObserverSet, TrackedObserver -------------------------------------------------------------

using Log = std::vector<std::pair<int, int>>; // (observer id, value) per call

struct Recorder : SL::TrackedObserver
{
    virtual void changed(int value)
    {
        log->emplace_back(id, value);
        if (onChanged)
            onChanged(value);
    }

    int id = -1;
    Log* log = nullptr;
    std::function<void(int)> onChanged;
};

struct PokeObserver : SL::TrackedObserver
{
};

template <class Observer> class Subject : public SL::Private::SubjectBase<Observer>
{
public:
    void notify(int value) { this->mObservers.notify(&Observer::changed, value); }
    auto& observers() { return this->mObservers; }
};
using ChangeSubject = Subject<Recorder>;

class ObserverSet : public ::testing::Test
{
protected:
    ObserverSet()
    {
        for (int i = 0; i < int(obs.size()); ++i) {
            obs[i].emplace();
            obs[i]->id = i;
            obs[i]->log = &log;
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
            subject.subscribe(*obs[i]);
    }
    std::size_t stored() { return subject.observers().getContainer().size(); }
    const SL::Private::TrackerBase* tracker() { return &subject.observers(); }

    Log log;
    // One array of objects in place, so that addresses ascend with the index; any may die early.
    std::array<std::optional<Recorder>, 5> obs;
    ChangeSubject subject;
};

TEST_F(ObserverSet, notify_goes_by_address_and_changes_made_during_it_reach_only_what_is_ahead)
{
    subscribeAll({ 3, 2, 1, 3 }); // by address, 3 comes last whatever the order of subscription
    obs[2]->onChanged = [this](int) {
        subject.unsubscribe(*obs[2]); // itself, while the walk stands on it
        obs[3].reset(); // one still ahead dies: it must not be called
        subscribeAll({ 0, 4 }); // called in this pass only if it sorts after the caller
        subject.unsubscribe(*obs[1]); // out and back in: must end as one valid element
        subject.subscribe(*obs[1]);
    };
    EXPECT_EQ(stored(), 3u);

    subject.notify(1);
    EXPECT_EQ(calledIds(), (std::vector<int> { 1, 2, 4 }));
    EXPECT_EQ(stored(), 3u);
    EXPECT_TRUE(obs[1]->isTracking(tracker()));
    EXPECT_FALSE(obs[2]->isTracking(tracker()));

    subject.notify(2);
    EXPECT_EQ(calledIds(), (std::vector<int> { 0, 1, 4 }));
}

TEST_F(ObserverSet, removals_wait_for_the_outer_pass_which_flushes_them_even_when_an_observer_throws)
{
    subscribeAll({ 0, 1, 2 });
    std::size_t storedAfterInner = 0;
    obs[0]->onChanged = [&](int value) {
        if (value == 1) {
            subject.notify(2);
            storedAfterInner = stored();
        }
    };
    obs[1]->onChanged = [this](int) { subject.unsubscribe(*obs[1]); };
    obs[2]->onChanged = [](int value) {
        if (value == 1)
            throw std::runtime_error("observer failed");
    };

    EXPECT_THROW(subject.notify(1), std::runtime_error);

    EXPECT_EQ(storedAfterInner, 3u) << "the inner pass ended inside the outer one";
    // The outer pass must not reach obs[1], which the inner pass removed.
    EXPECT_EQ(log, (Log { { 0, 1 }, { 0, 2 }, { 1, 2 }, { 2, 2 }, { 2, 1 } }));
    EXPECT_EQ(stored(), 2u);
    EXPECT_EQ(subject.observers().getIterationDepth(), 0);
    EXPECT_FALSE(subject.observers().isErasePending());
}

TEST_F(ObserverSet, a_dying_subject_tells_its_observers_and_a_dying_observer_leaves_all_its_subjects)
{
    // Two observer bases give two TrackedObserver parts; the Recorder part tracks three subjects.
    struct Both : Recorder, PokeObserver
    {
    };
    auto doomed = std::make_unique<ChangeSubject>();
    const SL::Private::TrackerBase* doomedTracker = &doomed->observers();
    ChangeSubject second;
    Subject<PokeObserver> pokes;
    std::optional<Both> both;
    both.emplace();
    both->log = &log;
    Recorder& recorder = *both;
    for (ChangeSubject* changes : { &subject, &second, doomed.get() })
        changes->subscribe(*both);
    pokes.subscribe(*both);

    doomed.reset();
    EXPECT_FALSE(recorder.isTracking(doomedTracker));
    EXPECT_TRUE(recorder.isTracking(tracker()));

    both.reset();
    EXPECT_EQ(stored(), 0u);
    EXPECT_TRUE(second.observers().getContainer().empty());
    EXPECT_TRUE(pokes.observers().getContainer().empty());
}

} // namespace
