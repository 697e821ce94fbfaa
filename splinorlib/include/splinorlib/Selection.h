#pragma once

#include "splinorlib/FilterIterator.h"
#include "splinorlib/HitRecord.h"
#include "splinorlib/HitRecordIterator.h"
#include "splinorlib/Rectangle.h"
#include "splinorlib/SubjectBase.h"
#include "splinorlib/TrackedObserver.h"

#include <memory>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Keyframe;
class Segment;
class Selection;
class Splinor;
class SplinorContainer;
class Tangent;

/// Observer of a selection. A change of one item is told by selected or deselected, then
/// selectionChanged; a change of many items at once by selectionChanged alone, once.
class SelectionObserver : public TrackedObserver
{
public:
    virtual void selected(Selection&, const HitRecord&) {}
    virtual void deselected(Selection&, const HitRecord&) {}
    virtual void selectionChanged(Selection&) {}
};

namespace Private {
/// Passes the records whose item is selected.
struct SelectionFilter
{
    bool operator()(const HitRecord& iRecord) const;
};
/// Passes the records of one type; a tangent's handle type stands for both of its types.
template <int Type>
struct RecordTypeFilter
{
    bool operator()(const HitRecord& iRecord) const
    {
        return Type == HitRecord::cTangentHandle ? iRecord.isTangent() : iRecord.getType() == Type;
    }
};
} // namespace Private

/// What is selected among the curves of a container.
///
/// The selected state is part of each item, not of this object: a curve, segment, keyframe or
/// tangent stays selected through Splinor::createCopy (the copy is selected as its source is)
/// and through Splinor::swap (the state moves with the content). So a selection over a container
/// of copies sees them as the sources are seen, and restoring a swapped-back state restores its
/// selection. Selecting never selects anything else: the editor's rules decide what goes along.
class Selection : public Private::SubjectBase<SelectionObserver>
{
public:
    using const_iterator = FilterIterator<Private::SelectionFilter, HitRecordIterator>;
    using iterator = const_iterator;

    explicit Selection(std::shared_ptr<SplinorContainer> iContainer);
    Selection(const Selection&) = delete;
    Selection& operator=(const Selection&) = delete;

    const std::shared_ptr<SplinorContainer>& getContainer() const { return mContainer; }

    /// Items that do not exist (a key of the first segment, the in tangent of the last) are
    /// ignored, and so is an item already in the state asked for.
    void select(Splinor& iCurve);
    void select(Segment& iSegment);
    void select(Keyframe& iKeyframe);
    void select(Tangent& iTangent);
    void select(const HitRecord& iRecord);
    void deselect(Splinor& iCurve);
    void deselect(Segment& iSegment);
    void deselect(Keyframe& iKeyframe);
    void deselect(Tangent& iTangent);
    void deselect(const HitRecord& iRecord);

    bool isSelected(const Splinor& iCurve) const;
    bool isSelected(const Segment& iSegment) const;
    bool isSelected(const Keyframe& iKeyframe) const;
    bool isSelected(const Tangent& iTangent) const;
    bool isSelected(const HitRecord& iRecord) const;

    /// Deselects everything on the container's curves.
    void clear();

    /// The selected records: curves in container order, and within a curve its items in x order.
    const_iterator begin() const;
    const_iterator end() const;

    /// Tells the observers that many items changed at once; for the functions below.
    void notifySelectionChanged();

private:
    friend class SelectionSnapshot;

    template <class Item>
    void change(Item& iItem, bool iSelect);
    /// Without telling the observers; true if anything changed.
    bool setState(const HitRecord& iRecord, bool iSelect);
    bool clearState();

    std::shared_ptr<SplinorContainer> mContainer;
};

/// Typed ranges of the selected records, in the order of Selection::begin().
using SelectedCurveIterator = FilterIterator<Private::RecordTypeFilter<HitRecord::cCurve>, Selection::const_iterator>;
using SelectedKeyframeIterator = FilterIterator<Private::RecordTypeFilter<HitRecord::cKeyframe>, Selection::const_iterator>;
using SelectedTangentIterator = FilterIterator<Private::RecordTypeFilter<HitRecord::cTangentHandle>, Selection::const_iterator>;
SelectedCurveIterator BeginSelectedCurves(const Selection& iSelection);
SelectedCurveIterator EndSelectedCurves(const Selection& iSelection);
SelectedKeyframeIterator BeginSelectedKeyframes(const Selection& iSelection);
SelectedKeyframeIterator EndSelectedKeyframes(const Selection& iSelection);
SelectedTangentIterator BeginSelectedTangents(const Selection& iSelection);
SelectedTangentIterator EndSelectedTangents(const Selection& iSelection);

/// Deselects every segment, keyframe and tangent; selected curves stay selected.
void DeselectSelectedParts(Selection& iSelection);
/// Selects the curve with all its segments, keyframes and tangents.
void SelectCurveCompletely(Selection& iSelection, Splinor& iCurve);
/// Deselects the curve with all its segments, keyframes and tangents.
void DeselectCurveCompletely(Selection& iSelection, Splinor& iCurve);
/// Adds every selected record to oHits.
void GetSelected(const Selection& iSelection, HitSet& oHits);

/// Tells each curve of the container that is selected or has selected items that it changed.
void NotifyCurveChanges(Selection& iSelection);

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
