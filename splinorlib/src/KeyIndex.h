#pragma once

#include <cstddef>
#include <vector>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Segment;

namespace Private {

/// The keys of one curve by x, for lookups in logarithmic time on curves of millions of keys.
///
/// A sorted sequence cut into blocks of at most cMaxBlock entries, with the first x of each
/// block in a separate array: a lookup is two binary searches over contiguous memory, and an
/// insertion or removal moves at most one block's entries (plus, rarely, the block table).
/// Keys never change their order in place (Keyframe::set stops at the neighbours), so an x can
/// be updated without moving its entry.
class KeyIndex
{
public:
    struct Entry
    {
        double x;
        Segment* segment;
    };

    std::size_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    void clear();

    /// The entry with the greatest x <= iX; null if there is none.
    Segment* floor(double iX) const;
    /// The entry with exactly this x; null if there is none.
    Segment* find(double iX) const;
    /// Its position among all entries; size() if there is none.
    std::size_t rank(double iX) const;
    Segment* at(std::size_t iRank) const;

    /// iX must not be in the index yet.
    void insert(double iX, Segment* iSegment);
    void erase(double iX);
    /// The new x must keep the entry between its neighbours.
    void update(double iOldX, double iNewX);
    /// Adds an entry after every other one; for building an index in order.
    void append(double iX, Segment* iSegment);

    std::size_t getMemoryUse() const;

private:
    static constexpr std::size_t cMaxBlock = 512;
    static constexpr std::size_t cFillOnAppend = 384;

    /// The block that holds, or would hold, iX; mBlocks.size() when the index is empty.
    std::size_t blockFor(double iX) const;
    std::size_t positionIn(const std::vector<Entry>& iBlock, double iX) const;

    std::vector<std::vector<Entry>> mBlocks;
    std::vector<double> mFirstX;
    std::size_t mSize = 0;
};

} // namespace Private
} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
