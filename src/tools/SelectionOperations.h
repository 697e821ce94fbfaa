#pragma once

#include "splinorlib/HitRecord.h"
#include "splinorlib/Selection.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

// What goes along with a picked item. A keyframe and the segment to its right belong together,
// unless that segment is an open end; a click on a tangent takes its keyframe along; the rubber
// band (iArea) takes a keyframe with both of its tangents, and of segments and tangents only
// their curve. The owning curve is always selected, and on a locked curve nothing but the curve.

void SelectHit(SplinorLib::v19::Selection& ioSelection, const SplinorLib::v19::HitRecord& iHit, bool iArea);
/// Never deselects a curve.
void DeselectHit(SplinorLib::v19::Selection& ioSelection, const SplinorLib::v19::HitRecord& iHit, bool iArea);

/// Counts of the records of a selection, in one pass.
struct SelectionStatistics
{
    std::int32_t mNumCurves = 0;
    std::int32_t mNumLockedCurves = 0;
    /// Keyframes that may be edited: neither they nor their curve locked, the curve editable.
    std::int32_t mNumEditableKeys = 0;

    int getNumCurves() const { return mNumCurves; }
    bool hasLockedCurves() const { return mNumLockedCurves > 0; }
    bool hasEditableKeys() const { return mNumEditableKeys > 0; }
};

SelectionStatistics CountSelection(SplinorLib::v19::Selection::const_iterator iFirst,
                                   SplinorLib::v19::Selection::const_iterator iLast);

/// Appends (start, end) for each run of neighbouring selected interior segments, in x order.
void GetSelectedSpans(std::shared_ptr<SplinorLib::v19::Selection> iSelection,
                      std::shared_ptr<SplinorLib::v19::Splinor> iCurve, std::vector<double>& ioSpans);

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
