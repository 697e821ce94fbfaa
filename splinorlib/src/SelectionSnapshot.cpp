#include "splinorlib/SelectionSnapshot.h"

#include "splinorlib/Selection.h"

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

SelectionSnapshot::SelectionSnapshot(std::shared_ptr<Selection> iSelection) : mSelection(std::move(iSelection))
{
    capture();
}

void SelectionSnapshot::capture()
{
    mRecords.clear();
    if (mSelection)
        mRecords.assign(mSelection->begin(), mSelection->end());
}

void SelectionSnapshot::select() const
{
    if (!mSelection)
        return;
    bool changed = mSelection->clearState();
    for (const HitRecord& record : mRecords)
        changed |= mSelection->setState(record, true);
    if (changed)
        mSelection->notifySelectionChanged();
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
