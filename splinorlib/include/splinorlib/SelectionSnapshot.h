#pragma once

#include "splinorlib/HitRecord.h"

#include <memory>
#include <vector>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Selection;

/// A record of what a selection held at one moment, to be made current again later. It names
/// the items themselves (and keeps them alive), so it is good again whenever those items are
/// back in the container's curves, as after an undo that swaps a state back.
class SelectionSnapshot
{
public:
    /// Records the selection as it is now.
    explicit SelectionSnapshot(std::shared_ptr<Selection> iSelection);

    /// Records the selection as it is now, over what was recorded before.
    void capture();
    /// Makes the selection equal to what was recorded.
    void select() const;

    const std::vector<HitRecord>& getRecords() const { return mRecords; }

private:
    std::shared_ptr<Selection> mSelection;
    std::vector<HitRecord> mRecords;
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
