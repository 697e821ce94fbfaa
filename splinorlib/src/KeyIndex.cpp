#include "KeyIndex.h"

#include <algorithm>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
namespace Private {

void KeyIndex::clear()
{
    mBlocks.clear();
    mFirstX.clear();
    mSize = 0;
}

std::size_t KeyIndex::blockFor(double iX) const
{
    if (mBlocks.empty())
        return 0;
    auto after = std::upper_bound(mFirstX.begin(), mFirstX.end(), iX);
    return after == mFirstX.begin() ? 0 : std::size_t(after - mFirstX.begin()) - 1;
}

std::size_t KeyIndex::positionIn(const std::vector<Entry>& iBlock, double iX) const
{
    auto found = std::lower_bound(iBlock.begin(), iBlock.end(), iX,
                                  [](const Entry& e, double x) { return e.x < x; });
    return std::size_t(found - iBlock.begin());
}

Segment* KeyIndex::floor(double iX) const
{
    if (mBlocks.empty() || iX < mFirstX.front())
        return nullptr;
    const auto& block = mBlocks[blockFor(iX)];
    auto after = std::upper_bound(block.begin(), block.end(), iX,
                                  [](double x, const Entry& e) { return x < e.x; });
    return (after - 1)->segment;
}

Segment* KeyIndex::find(double iX) const
{
    if (mBlocks.empty())
        return nullptr;
    const auto& block = mBlocks[blockFor(iX)];
    std::size_t position = positionIn(block, iX);
    return position < block.size() && block[position].x == iX ? block[position].segment : nullptr;
}

std::size_t KeyIndex::rank(double iX) const
{
    if (mBlocks.empty())
        return mSize;
    std::size_t b = blockFor(iX);
    const auto& block = mBlocks[b];
    std::size_t position = positionIn(block, iX);
    if (position == block.size() || block[position].x != iX)
        return mSize;
    std::size_t before = 0;
    for (std::size_t i = 0; i < b; ++i)
        before += mBlocks[i].size();
    return before + position;
}

Segment* KeyIndex::at(std::size_t iRank) const
{
    if (iRank >= mSize)
        return nullptr;
    for (const auto& block : mBlocks) {
        if (iRank < block.size())
            return block[iRank].segment;
        iRank -= block.size();
    }
    return nullptr;
}

void KeyIndex::insert(double iX, Segment* iSegment)
{
    ++mSize;
    if (mBlocks.empty()) {
        mBlocks.emplace_back();
        mBlocks.back().reserve(cMaxBlock + 1);
        mBlocks.back().push_back({iX, iSegment});
        mFirstX.push_back(iX);
        return;
    }
    std::size_t b = blockFor(iX);
    auto& block = mBlocks[b];
    block.insert(block.begin() + std::ptrdiff_t(positionIn(block, iX)), Entry{iX, iSegment});
    mFirstX[b] = block.front().x;
    if (block.size() <= cMaxBlock)
        return;

    // Split the full block in two halves.
    std::vector<Entry> upper;
    upper.reserve(cMaxBlock + 1);
    upper.assign(block.begin() + cMaxBlock / 2, block.end());
    block.erase(block.begin() + cMaxBlock / 2, block.end());
    double upperFirst = upper.front().x;
    mBlocks.insert(mBlocks.begin() + std::ptrdiff_t(b) + 1, std::move(upper));
    mFirstX.insert(mFirstX.begin() + std::ptrdiff_t(b) + 1, upperFirst);
}

void KeyIndex::erase(double iX)
{
    if (mBlocks.empty())
        return;
    std::size_t b = blockFor(iX);
    auto& block = mBlocks[b];
    std::size_t position = positionIn(block, iX);
    if (position == block.size() || block[position].x != iX)
        return;
    block.erase(block.begin() + std::ptrdiff_t(position));
    --mSize;
    if (block.empty()) {
        mBlocks.erase(mBlocks.begin() + std::ptrdiff_t(b));
        mFirstX.erase(mFirstX.begin() + std::ptrdiff_t(b));
    } else {
        mFirstX[b] = block.front().x;
    }
}

void KeyIndex::update(double iOldX, double iNewX)
{
    if (mBlocks.empty())
        return;
    std::size_t b = blockFor(iOldX);
    auto& block = mBlocks[b];
    std::size_t position = positionIn(block, iOldX);
    if (position == block.size() || block[position].x != iOldX)
        return;
    block[position].x = iNewX;
    if (position == 0)
        mFirstX[b] = iNewX;
}

void KeyIndex::append(double iX, Segment* iSegment)
{
    if (mBlocks.empty() || mBlocks.back().size() >= cFillOnAppend) {
        mBlocks.emplace_back();
        mBlocks.back().reserve(cMaxBlock + 1);
        mFirstX.push_back(iX);
    }
    mBlocks.back().push_back({iX, iSegment});
    ++mSize;
}

std::size_t KeyIndex::getMemoryUse() const
{
    std::size_t bytes = mFirstX.capacity() * sizeof(double) + mBlocks.capacity() * sizeof(std::vector<Entry>);
    for (const auto& block : mBlocks)
        bytes += block.capacity() * sizeof(Entry);
    return bytes;
}

} // namespace Private
} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
