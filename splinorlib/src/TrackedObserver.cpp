#include "splinorlib/TrackedObserver.h"

#include <algorithm>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

namespace Private {

TrackerBase::~TrackerBase() = default;

void TrackerBase::subscribed(TrackedObserver* iObserver)
{
    auto& trackers = iObserver->mTrackers;
    if (std::find(trackers.begin(), trackers.end(), this) == trackers.end())
        trackers.push_back(this);
}

void TrackerBase::unsubscribed(TrackedObserver* iObserver)
{
    iObserver->unsubscribed(this);
}

} // namespace Private

TrackedObserver::~TrackedObserver()
{
    // stopTracking never calls back here, so the vector is stable during this walk.
    for (Private::TrackerBase* tracker : mTrackers)
        tracker->stopTracking(this);
}

void TrackedObserver::unsubscribed(Private::TrackerBase* iTracker)
{
    auto found = std::find(mTrackers.begin(), mTrackers.end(), iTracker);
    if (found != mTrackers.end())
        mTrackers.erase(found);
}

bool TrackedObserver::isTracking(const Private::TrackerBase* iTracker) const
{
    return std::find(mTrackers.begin(), mTrackers.end(), iTracker) != mTrackers.end();
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
