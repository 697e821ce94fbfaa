#pragma once

#include "KeyIndex.h"
#include "splinorlib/HitRecordIterator.h"

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Segment;
class Splinor;

namespace Private {

/// Curve flags, kept in the content so that they travel with copies and swaps.
enum CurveFlag : unsigned {
    cCurveVisible = 1u << 0,
    cCurveEditable = 1u << 1,
    cCurveLocked = 1u << 2,
    cCurveVelocity = 1u << 3,
    cCurveAcceleration = 1u << 4,
};

/// Everything that Splinor::swap exchanges. Items reach their curve through the content, so a
/// swap only re-points the two contents' owners, whatever the size of the curves.
struct CurveContent
{
    CurveContent() = default;
    CurveContent(const CurveContent&) = delete;
    CurveContent& operator=(const CurveContent&) = delete;
    ~CurveContent();

    /// Releases all segments, detaching each from this content.
    void releaseSegments();

    Splinor* owner = nullptr;
    Segment* head = nullptr; // the first segment, with no left key; always there
    Segment* tail = nullptr;
    KeyIndex keys;
    std::string name;
    std::map<std::string, std::string> properties;
    unsigned flags = cCurveVisible | cCurveEditable;
    /// The selected state travels with the content, so that copies and swaps carry it.
    bool selected = false;
    /// The segments with any selected item, in x order.
    SelectedSegments selectedSegments;
};

} // namespace Private
} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis

#include "splinorlib/Splinor.h"

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

template <class Item>
void Splinor::announce(void (SplinorObserver::*iCallback)(Item&), Item& iItem)
{
    if (!isAnnouncing())
        return;
    // An observer may drop the last reference to this curve; keep it alive until we are done.
    std::shared_ptr<Splinor> keepAlive = getShared();
    mObservers.notify(iCallback, iItem);
    globalObservers().notify(iCallback, iItem);
    mObservers.notify(&SplinorObserver::curveChanged, *this);
    globalObservers().notify(&SplinorObserver::curveChanged, *this);
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
