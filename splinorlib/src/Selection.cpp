#include "splinorlib/Selection.h"

#include "SelectionAccess.h"
#include "splinorlib/Keyframe.h"
#include "splinorlib/Segment.h"
#include "splinorlib/Splinor.h"
#include "splinorlib/SplinorContainer.h"
#include "splinorlib/Tangent.h"

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

using Private::SelectionAccess;

namespace {

/// The segment whose bits hold this key's state; null for a free key.
Segment* HolderOf(const Keyframe& iKey)
{
    Segment* segment = iKey.getRightSegment();
    return segment && segment->getLeftKey() == &iKey ? segment : nullptr;
}

/// Deselects every part of the curve; its own flag stays. True if anything changed.
bool ClearParts(Splinor& iCurve)
{
    return SelectionAccess::clearAll(SelectionAccess::content(iCurve));
}

bool SetCurveFlag(Splinor& iCurve, bool iSelected)
{
    bool& selected = SelectionAccess::content(iCurve).selected;
    if (selected == iSelected)
        return false;
    selected = iSelected;
    return true;
}

bool SetState(Splinor& iCurve, bool iSelect)
{
    return SetCurveFlag(iCurve, iSelect);
}

bool SetState(Segment& iSegment, bool iSelect)
{
    return SelectionAccess::set(iSegment, SelectionAccess::cSegmentBit, iSelect);
}

bool SetState(Keyframe& iKey, bool iSelect)
{
    Segment* holder = HolderOf(iKey);
    return holder && SelectionAccess::set(*holder, SelectionAccess::cKeyBit, iSelect);
}

bool SetState(Tangent& iTangent, bool iSelect)
{
    if (!iTangent.getOwningKeyframe())
        return false;
    return SelectionAccess::set(*iTangent.getOwningSegment(), SelectionAccess::tangentBit(iTangent.isInTangent()),
                                iSelect);
}

HitRecord RecordOf(Splinor& iCurve) { return HitRecord(iCurve.getShared()); }
HitRecord RecordOf(Segment& iSegment) { return HitRecord(iSegment.getShared()); }
HitRecord RecordOf(Keyframe& iKey) { return HitRecord(iKey.getShared()); }
HitRecord RecordOf(Tangent& iTangent) { return HitRecord(iTangent.getShared(), true); }

} // namespace

bool Private::SelectionFilter::operator()(const HitRecord& iRecord) const
{
    // Only curve records are offered unselected; the parts come from the selected lists.
    if (iRecord.getType() != HitRecord::cCurve)
        return true;
    return SelectionAccess::content(*static_cast<const Splinor*>(iRecord.getItem())).selected;
}

Selection::Selection(std::shared_ptr<SplinorContainer> iContainer) : mContainer(std::move(iContainer)) {}

template <class Item>
void Selection::change(Item& iItem, bool iSelect)
{
    if (!SetState(iItem, iSelect))
        return;
    const HitRecord record = RecordOf(iItem);
    mObservers.notify(iSelect ? &SelectionObserver::selected : &SelectionObserver::deselected, *this, record);
    notifySelectionChanged();
}

void Selection::select(Splinor& iCurve) { change(iCurve, true); }
void Selection::select(Segment& iSegment) { change(iSegment, true); }
void Selection::select(Keyframe& iKeyframe) { change(iKeyframe, true); }
void Selection::select(Tangent& iTangent) { change(iTangent, true); }
void Selection::deselect(Splinor& iCurve) { change(iCurve, false); }
void Selection::deselect(Segment& iSegment) { change(iSegment, false); }
void Selection::deselect(Keyframe& iKeyframe) { change(iKeyframe, false); }
void Selection::deselect(Tangent& iTangent) { change(iTangent, false); }

void Selection::select(const HitRecord& iRecord)
{
    switch (iRecord.getType()) {
    case HitRecord::cCurve: select(*iRecord.getCurve()); break;
    case HitRecord::cSegment: select(*iRecord.getSegment()); break;
    case HitRecord::cKeyframe: select(*iRecord.getKeyframe()); break;
    case HitRecord::cTangentHandle:
    case HitRecord::cTangentLine: select(*iRecord.getTangent()); break;
    default: break;
    }
}

void Selection::deselect(const HitRecord& iRecord)
{
    switch (iRecord.getType()) {
    case HitRecord::cCurve: deselect(*iRecord.getCurve()); break;
    case HitRecord::cSegment: deselect(*iRecord.getSegment()); break;
    case HitRecord::cKeyframe: deselect(*iRecord.getKeyframe()); break;
    case HitRecord::cTangentHandle:
    case HitRecord::cTangentLine: deselect(*iRecord.getTangent()); break;
    default: break;
    }
}

bool Selection::isSelected(const Splinor& iCurve) const
{
    return SelectionAccess::content(iCurve).selected;
}

bool Selection::isSelected(const Segment& iSegment) const
{
    return SelectionAccess::isSet(iSegment, SelectionAccess::cSegmentBit);
}

bool Selection::isSelected(const Keyframe& iKeyframe) const
{
    const Segment* holder = HolderOf(iKeyframe);
    return holder && SelectionAccess::isSet(*holder, SelectionAccess::cKeyBit);
}

bool Selection::isSelected(const Tangent& iTangent) const
{
    return SelectionAccess::isSet(*iTangent.getOwningSegment(), SelectionAccess::tangentBit(iTangent.isInTangent()));
}

bool Selection::isSelected(const HitRecord& iRecord) const
{
    switch (iRecord.getType()) {
    case HitRecord::cCurve: return isSelected(*static_cast<const Splinor*>(iRecord.getItem()));
    case HitRecord::cSegment: return isSelected(*static_cast<const Segment*>(iRecord.getItem()));
    case HitRecord::cKeyframe: return isSelected(*static_cast<const Keyframe*>(iRecord.getItem()));
    case HitRecord::cTangentHandle:
    case HitRecord::cTangentLine: return isSelected(*static_cast<const Tangent*>(iRecord.getItem()));
    default: return false;
    }
}

bool Selection::clearState()
{
    bool changed = false;
    for (const auto& curve : *mContainer) {
        changed |= SetCurveFlag(*curve, false);
        changed |= ClearParts(*curve);
    }
    return changed;
}

void Selection::clear()
{
    if (clearState())
        notifySelectionChanged();
}

bool Selection::setState(const HitRecord& iRecord, bool iSelect)
{
    switch (iRecord.getType()) {
    case HitRecord::cCurve: return SetState(*iRecord.getCurve(), iSelect);
    case HitRecord::cSegment: return SetState(*iRecord.getSegment(), iSelect);
    case HitRecord::cKeyframe: return SetState(*iRecord.getKeyframe(), iSelect);
    case HitRecord::cTangentHandle:
    case HitRecord::cTangentLine: return SetState(*iRecord.getTangent(), iSelect);
    default: return false;
    }
}

Selection::const_iterator Selection::begin() const
{
    return const_iterator(HitRecordIterator(mContainer.get(), 0), HitRecordIterator(mContainer.get(), mContainer->size()));
}

Selection::const_iterator Selection::end() const
{
    const HitRecordIterator last(mContainer.get(), mContainer->size());
    return const_iterator(last, last);
}

void Selection::notifySelectionChanged()
{
    mObservers.notify(&SelectionObserver::selectionChanged, *this);
}

// --- Typed ranges ---------------------------------------------------------------------------

SelectedCurveIterator BeginSelectedCurves(const Selection& iSelection)
{
    return SelectedCurveIterator(iSelection.begin(), iSelection.end());
}

SelectedCurveIterator EndSelectedCurves(const Selection& iSelection)
{
    return SelectedCurveIterator(iSelection.end(), iSelection.end());
}

SelectedKeyframeIterator BeginSelectedKeyframes(const Selection& iSelection)
{
    return SelectedKeyframeIterator(iSelection.begin(), iSelection.end());
}

SelectedKeyframeIterator EndSelectedKeyframes(const Selection& iSelection)
{
    return SelectedKeyframeIterator(iSelection.end(), iSelection.end());
}

SelectedTangentIterator BeginSelectedTangents(const Selection& iSelection)
{
    return SelectedTangentIterator(iSelection.begin(), iSelection.end());
}

SelectedTangentIterator EndSelectedTangents(const Selection& iSelection)
{
    return SelectedTangentIterator(iSelection.end(), iSelection.end());
}

// --- Whole-curve operations -----------------------------------------------------------------

void DeselectSelectedParts(Selection& iSelection)
{
    bool changed = false;
    for (const auto& curve : *iSelection.getContainer())
        changed |= ClearParts(*curve);
    if (changed)
        iSelection.notifySelectionChanged();
}

void SelectCurveCompletely(Selection& iSelection, Splinor& iCurve)
{
    SetCurveFlag(iCurve, true);
    for (Segment& segment : iCurve)
        SelectionAccess::selectAllInOrder(segment);
    iSelection.notifySelectionChanged();
}

void DeselectCurveCompletely(Selection& iSelection, Splinor& iCurve)
{
    const bool flag = SetCurveFlag(iCurve, false);
    const bool parts = ClearParts(iCurve);
    if (flag || parts)
        iSelection.notifySelectionChanged();
}

void GetSelected(const Selection& iSelection, HitSet& oHits)
{
    for (const HitRecord& record : iSelection)
        oHits.insert(record);
}

void NotifyCurveChanges(Selection& iSelection)
{
    // By index, with the curves held: an observer may change the container.
    const auto container = iSelection.getContainer();
    for (std::size_t i = 0; i < container->size(); ++i) {
        std::shared_ptr<Splinor> curve = container->at(i);
        const Private::CurveContent& content = SelectionAccess::content(*curve);
        if (content.selected || !content.selectedSegments.empty())
            curve->notifyChanged();
    }
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
