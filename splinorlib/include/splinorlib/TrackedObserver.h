#pragma once

#include <vector>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class TrackedObserver;

namespace Private {

/// The subject side of observer tracking. A subject's observer set derives from it and tells
/// each observer when it starts and stops knowing it, so that an observer that dies first can
/// reach every subject it is still subscribed to.
class TrackerBase
{
public:
    TrackerBase() = default;
    TrackerBase(const TrackerBase&) = delete;
    TrackerBase& operator=(const TrackerBase&) = delete;
    virtual ~TrackerBase();

    /// Called by a dying observer. Must not call back into the observer.
    virtual void stopTracking(TrackedObserver* iObserver) = 0;

protected:
    void subscribed(TrackedObserver* iObserver);
    void unsubscribed(TrackedObserver* iObserver);
};

} // namespace Private

/// Base of every observer class. It remembers the trackers it is subscribed to, so that it can
/// be destroyed before its subjects without an explicit unsubscribe.
class TrackedObserver
{
public:
    TrackedObserver() = default;
    /// A copy is a new observer: it is subscribed to nothing.
    TrackedObserver(const TrackedObserver&) {}
    TrackedObserver& operator=(const TrackedObserver&) { return *this; }
    virtual ~TrackedObserver();

    /// The tracker has forgotten this observer; it is not reached from here again.
    void unsubscribed(Private::TrackerBase* iTracker);

    bool isTracking(const Private::TrackerBase* iTracker) const;

private:
    friend class Private::TrackerBase;
    // Few trackers per observer in practice; a vector beats any node-based set here.
    std::vector<Private::TrackerBase*> mTrackers;
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
