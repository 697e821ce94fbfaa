#pragma once

#include "splinorlib/DelayedErase.h"
#include "splinorlib/TrackedObserver.h"

#include <functional>
#include <set>
#include <utility>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
namespace Private {

template <class D>
struct LessByValue
{
    bool operator()(const D& a, const D& b) const { return std::less<decltype(a.value)>()(a.value, b.value); }
};

/// The ordered set behind an observer set: one element per observer, by pointer value.
template <class D>
class SetWrapper : public std::set<D, LessByValue<D>>
{
};

/// The observer list of a subject. Observers are called in the order of their addresses, and
/// may subscribe or unsubscribe anyone, themselves included, from inside a callback.
template <class Observer, int Version = 1>
class SubjectBase
{
public:
    class ObserverSet : public DelayedErase<Observer*, SetWrapper>, public TrackerBase
    {
        using Base = DelayedErase<Observer*, SetWrapper>;

    public:
        ObserverSet() = default;

        ~ObserverSet() override
        {
            for (Observer* observer : *this)
                static_cast<TrackedObserver*>(observer)->unsubscribed(this);
        }

        void subscribe(Observer& iObserver)
        {
            auto& set = this->getContainer();
            auto found = set.find(typename Base::Data(&iObserver, true));
            if (found == set.end())
                set.insert(typename Base::Data(&iObserver, true));
            else
                found->valid = true;
            this->subscribed(&iObserver);
        }

        void unsubscribe(Observer& iObserver)
        {
            auto& set = this->getContainer();
            auto found = set.find(typename Base::Data(&iObserver, true));
            if (found != set.end())
                this->erase(found);
            this->unsubscribed(&iObserver);
        }

        void stopTracking(TrackedObserver* iObserver) override
        {
            auto& set = this->getContainer();
            for (auto it = set.begin(); it != set.end(); ++it) {
                if (it->valid && static_cast<TrackedObserver*>(it->value) == iObserver) {
                    this->erase(it);
                    return;
                }
            }
        }

        /// Calls iCallback(args...) on each valid observer; see DelayedErase for removals.
        template <class... Params, class... Args>
        void notify(void (Observer::*iCallback)(Params...), Args&&... iArgs)
        {
            typename Base::IterationGuard guard(*this);
            for (auto it = this->begin(); it != this->end(); ++it)
                ((*it)->*iCallback)(iArgs...);
        }

        bool empty() const { return this->begin() == this->end(); }
    };

    void subscribe(Observer& iObserver) { mObservers.subscribe(iObserver); }
    void unsubscribe(Observer& iObserver) { mObservers.unsubscribe(iObserver); }

protected:
    SubjectBase() = default;
    ~SubjectBase() = default;

    ObserverSet mObservers;
};

} // namespace Private
} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
