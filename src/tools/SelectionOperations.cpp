#include "tools/SelectionOperations.h"

#include "splinorlib/CurveFlags.h"
#include "splinorlib/Splinor.h"

#include <cmath>
#include <limits>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

using SplinorLib::v19::HitRecord;
using SplinorLib::v19::Keyframe;
using SplinorLib::v19::Segment;
using SplinorLib::v19::Selection;
using SplinorLib::v19::Splinor;

namespace {

/// The segment to the right of a key, if it is interior: the key's companion in a selection.
Segment* CompanionSegment(const Keyframe& iKey)
{
    Segment* right = iKey.getRightSegment();
    return right && right->getRightKey() ? right : nullptr;
}

bool IsEditableKey(const Keyframe& iKey)
{
    const Splinor* curve = iKey.getOwningCurve();
    return curve && !IsLocked(*curve) && IsEditable(*curve) && !IsLocked(iKey);
}

} // namespace

void SelectHit(Selection& ioSelection, const HitRecord& iHit, bool iArea)
{
    const std::shared_ptr<Splinor> curve = iHit.getCurve();
    if (!curve)
        return;
    ioSelection.select(*curve);
    if (IsLocked(*curve))
        return;

    HitRecord hit = iHit;
    if (!iArea && hit.isTangent()) {
        ioSelection.select(hit);
        if (Keyframe* key = hit.getTangent()->getOwningKeyframe())
            hit.reset(key->getShared());
    }
    if (hit.getType() == HitRecord::cKeyframe) {
        Keyframe& key = *hit.getKeyframe();
        ioSelection.select(key);
        if (Segment* segment = CompanionSegment(key))
            ioSelection.select(*segment);
        if (iArea) {
            if (auto* in = key.getInTangent())
                ioSelection.select(*in);
            if (auto* out = key.getOutTangent())
                ioSelection.select(*out);
        }
    } else if (hit.getType() == HitRecord::cSegment && !iArea) {
        Segment& segment = *hit.getSegment();
        ioSelection.select(segment);
        if (segment.getLeftKey() && segment.getRightKey())
            ioSelection.select(*segment.getLeftKey());
    }
}

void DeselectHit(Selection& ioSelection, const HitRecord& iHit, bool iArea)
{
    switch (iHit.getType()) {
    case HitRecord::cSegment:
        if (!iArea) {
            Segment& segment = *iHit.getSegment();
            ioSelection.deselect(segment);
            if (segment.getLeftKey() && segment.getRightKey())
                ioSelection.deselect(*segment.getLeftKey());
        }
        break;
    case HitRecord::cKeyframe: {
        Keyframe& key = *iHit.getKeyframe();
        ioSelection.deselect(key);
        if (Segment* segment = CompanionSegment(key))
            ioSelection.deselect(*segment);
        if (auto* in = key.getInTangent())
            ioSelection.deselect(*in);
        if (auto* out = key.getOutTangent())
            ioSelection.deselect(*out);
        break;
    }
    case HitRecord::cTangentHandle:
    case HitRecord::cTangentLine:
        ioSelection.deselect(iHit);
        break;
    default:
        break;
    }
}

SelectionStatistics CountSelection(Selection::const_iterator iFirst, Selection::const_iterator iLast)
{
    SelectionStatistics statistics;
    for (; iFirst != iLast; ++iFirst) {
        const HitRecord& record = *iFirst;
        if (record.getType() == HitRecord::cCurve) {
            ++statistics.mNumCurves;
            if (IsLocked(*record.getCurve()))
                ++statistics.mNumLockedCurves;
        } else if (record.getType() == HitRecord::cKeyframe && IsEditableKey(*record.getKeyframe())) {
            ++statistics.mNumEditableKeys;
        }
    }
    return statistics;
}

void GetSelectedSpans(std::shared_ptr<Selection> iSelection, std::shared_ptr<Splinor> iCurve,
                      std::vector<double>& ioSpans)
{
    const double none = std::numeric_limits<double>::quiet_NaN();
    double start = none;
    double end = none;
    for (const Segment& segment : *iCurve) {
        const Keyframe* left = segment.getLeftKey();
        const Keyframe* right = segment.getRightKey();
        if (left && right && iSelection->isSelected(segment)) {
            end = right->getX();
            if (std::isnan(start))
                start = left->getX();
            continue;
        }
        // The last segment has no right key, so the last run always ends here.
        if (!std::isnan(start) && !std::isnan(end) && end > start) {
            ioSpans.push_back(start);
            ioSpans.push_back(end);
        }
        start = end = none;
    }
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
