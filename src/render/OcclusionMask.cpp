#include "render/OcclusionMask.h"

#include <algorithm>
#include <cmath>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

namespace {

constexpr int cMaxCorners = 4;
/// Lines no longer than this, in pixels, either way, are tried against their box first.
constexpr double cShortLine = 8.0;

/// floor and ceil for values within the range of int, as the library's but for a conversion and
/// a comparison instead of a call: the conversion cuts toward zero, and the comparison corrects
/// it on the other side.
int Floor(double iValue)
{
    const int cut = int(iValue);
    return cut - (iValue < cut);
}
int Ceil(double iValue)
{
    const int cut = int(iValue);
    return cut + (iValue > cut);
}

/// Whether four corners in order are those of a rectangle with level and upright sides, whose
/// rows all meet it alike: a keyframe's square in a view without rotation.
bool IsUpright(const OcclusionMask::Point* iCorners, int iCount)
{
    if (iCount != 4)
        return false;
    const OcclusionMask::Point* c = iCorners;
    return (c[0].x == c[1].x && c[2].x == c[3].x && c[1].y == c[2].y && c[3].y == c[0].y)
        || (c[0].y == c[1].y && c[2].y == c[3].y && c[1].x == c[2].x && c[3].x == c[0].x);
}

/// A convex polygon as it meets horizontal lines: between a bottom and a top, x lies right of
/// every left edge and left of every right edge. Each edge is moved out by a growth, or in by
/// it when shrunk, of at least the growth itself: g (1 + |slope|) horizontally, where the exact
/// offset would be g sqrt(1 + slope^2), spares a square root per edge and errs outward, or
/// inward when shrinking.
class Region
{
public:
    /// False if the polygon has no area, or corners beyond doubles. The region starts grown.
    bool set(const OcclusionMask::Point* iCorners, int iCount, double iGrowth)
    {
        double twiceArea = 0.0;
        mBottom = HUGE_VAL;
        mTop = -HUGE_VAL;
        for (int i = 0; i < iCount; ++i) {
            const OcclusionMask::Point& a = iCorners[i];
            const OcclusionMask::Point& b = iCorners[i + 1 < iCount ? i + 1 : 0];
            twiceArea += a.x * b.y - b.x * a.y;
            mBottom = std::min(mBottom, a.y);
            mTop = std::max(mTop, a.y);
        }
        if (!(std::abs(twiceArea) > 0.0) || !std::isfinite(twiceArea))
            return false;
        mGrowth = iGrowth;
        mOutward = 1.0;
        // Going round counter-clockwise (y up), edges that rise bound x on the right.
        const double turn = twiceArea > 0.0 ? 1.0 : -1.0;
        mLeftCount = mRightCount = 0;
        for (int i = 0; i < iCount; ++i) {
            const OcclusionMask::Point& a = iCorners[i];
            const OcclusionMask::Point& b = iCorners[i + 1 < iCount ? i + 1 : 0];
            const double rise = turn * (b.y - a.y);
            if (rise == 0.0)
                continue; // level: the band's bottom or top
            const double slope = (b.x - a.x) / (b.y - a.y);
            const Edge edge { a.x - slope * a.y, slope, iGrowth * (1.0 + std::abs(slope)) };
            if (rise > 0.0)
                mRight[mRightCount++] = edge;
            else
                mLeft[mLeftCount++] = edge;
        }
        return true;
    }

    /// From here on, the polygon shrunk by the growth instead.
    void shrink() { mOutward = -1.0; }

    double bottom() const { return mBottom - mOutward * mGrowth; }
    double top() const { return mTop + mOutward * mGrowth; }

    /// The x range at height iY; empty when low > high.
    void span(double iY, double& oLow, double& oHigh) const
    {
        double low = -HUGE_VAL, high = HUGE_VAL;
        for (int i = 0; i < mLeftCount; ++i)
            low = std::max(low, mLeft[i].x0 + mLeft[i].slope * iY - mOutward * mLeft[i].offset);
        for (int i = 0; i < mRightCount; ++i)
            high = std::min(high, mRight[i].x0 + mRight[i].slope * iY + mOutward * mRight[i].offset);
        oLow = low;
        oHigh = high;
    }

private:
    struct Edge
    {
        double x0, slope, offset; // x = x0 + slope y, moved out by offset
    };
    Edge mLeft[cMaxCorners], mRight[cMaxCorners];
    int mLeftCount = 0, mRightCount = 0;
    double mBottom = 0.0, mTop = 0.0, mGrowth = 0.0, mOutward = 1.0;
};

/// An upright rectangle, as the other shapes meet rows.
struct Rect
{
    double left, lower, right, upper;

    /// The sides of a polygon that IsUpright() holds for, moved out by iGrowth (in if negative).
    static Rect Of(const OcclusionMask::Point* iCorners, double iGrowth)
    {
        return { std::min(iCorners[0].x, iCorners[2].x) - iGrowth, std::min(iCorners[0].y, iCorners[2].y) - iGrowth,
            std::max(iCorners[0].x, iCorners[2].x) + iGrowth, std::max(iCorners[0].y, iCorners[2].y) + iGrowth };
    }

    bool isFinite() const { return std::isfinite(left + lower + right + upper); }
    double bottom() const { return lower; }
    double top() const { return upper; }
    void span(double, double& oLow, double& oHigh) const
    {
        oLow = left;
        oHigh = right;
    }
};

/// A line widened by a square of half side iReach slid along it: the rows it meets, and at each
/// the x range of the part of the line within iReach of the row, widened by iReach.
class LineBand
{
public:
    LineBand(const OcclusionMask::Point& iFrom, const OcclusionMask::Point& iTo, double iReach)
        : mLow(iFrom.y <= iTo.y ? iFrom : iTo)
        , mHigh(iFrom.y <= iTo.y ? iTo : iFrom)
        , mReach(iReach)
        , mSlope(mHigh.y > mLow.y ? (mHigh.x - mLow.x) / (mHigh.y - mLow.y) : 0.0)
    {
    }

    bool isFinite() const { return std::isfinite(mLow.x + mLow.y + mHigh.x + mHigh.y + mSlope); }
    double bottom() const { return mLow.y - mReach; }
    double top() const { return mHigh.y + mReach; }

    void span(double iY, double& oLow, double& oHigh) const
    {
        // A level line meets every row of its band along its whole length.
        const bool level = mHigh.y == mLow.y;
        const double x0 = level ? mLow.x : mLow.x + mSlope * (std::max(iY - mReach, mLow.y) - mLow.y);
        const double x1 = level ? mHigh.x : mLow.x + mSlope * (std::min(iY + mReach, mHigh.y) - mLow.y);
        oLow = std::min(x0, x1) - mReach;
        oHigh = std::max(x0, x1) + mReach;
    }

private:
    OcclusionMask::Point mLow, mHigh;
    double mReach, mSlope;
};

} // namespace

inline bool OcclusionMask::isCovered(int iRow, int iFirst, int iLast) const
{
    const std::uint64_t* words = &mBits[std::size_t(iRow) * std::size_t(mWordsPerRow)];
    if (iFirst >> 6 == iLast >> 6) {
        const std::uint64_t bits = bitsOf(iFirst >> 6, iFirst, iLast);
        return (words[iFirst >> 6] & bits) == bits;
    }
    for (int word = iFirst >> 6; word <= iLast >> 6; ++word) {
        const std::uint64_t bits = bitsOf(word, iFirst, iLast);
        if ((words[word] & bits) != bits)
            return false;
    }
    return true;
}

void OcclusionMask::reset(int iWidth, int iHeight)
{
    mWidth = std::max(iWidth, 0);
    mHeight = std::max(iHeight, 0);
    mWordsPerRow = (mWidth + 63) / 64;
    // A word past the last row, for claim()'s reads across a row's end.
    mBits.assign(std::size_t(mWordsPerRow) * std::size_t(mHeight) + 1, 0);
    mEmpty = true;
}

template <class Shape> bool OcclusionMask::isHidden(const Shape& iShape) const
{
    return firstUncoveredRow(iShape) == cHiddenRow;
}

template <class Shape> int OcclusionMask::firstUncoveredRow(const Shape& iShape) const
{
    // Every row the shape may reach must lie in the mask, and be covered wherever it does.
    const double bottom = iShape.bottom() - 0.5, top = iShape.top() - 0.5;
    if (mEmpty || !(bottom > -1.0 && top < mHeight))
        return 0;
    const int lastRow = Floor(top);
    for (int row = Ceil(bottom); row <= lastRow; ++row) {
        double low, high;
        iShape.span(row + 0.5, low, high);
        if (!(low <= high))
            continue;
        if (!(low - 0.5 >= -1.0 && high - 0.5 < mWidth))
            return row;
        const int first = Ceil(low - 0.5);
        const int last = Floor(high - 0.5);
        if (first <= last && (first < 0 || last >= mWidth || !isCovered(row, first, last)))
            return row;
    }
    return cHiddenRow;
}

bool OcclusionMask::hides(const Point* iCorners, int iCount, double iSlack) const
{
    if (iCount < 3 || iCount > cMaxCorners)
        return false;
    if (IsUpright(iCorners, iCount)) {
        const Rect box = Rect::Of(iCorners, iSlack);
        return hidesBox(box.left, box.lower, box.right, box.upper);
    }
    Region region;
    return region.set(iCorners, iCount, iSlack) && isHidden(region);
}

bool OcclusionMask::hidesOrCovers(const Point* iCorners, int iCount, double iSlack)
{
    if (iCount < 3 || iCount > cMaxCorners)
        return false;
    if (IsUpright(iCorners, iCount)) {
        const Rect box = Rect::Of(iCorners, iSlack);
        const int uncovered = firstUncoveredRowOfBox(box.left, box.lower, box.right, box.upper);
        if (uncovered == cHiddenRow)
            return true;
        // Below the first row found uncovered, the shape grown is covered, and so is the shape
        // shrunk, which lies inside it: the fill starts there.
        const Rect inside = Rect::Of(iCorners, -iSlack);
        if (inside.isFinite())
            fill(inside, uncovered);
        return false;
    }
    Region region;
    if (!region.set(iCorners, iCount, iSlack))
        return false;
    const int uncovered = firstUncoveredRow(region);
    if (uncovered == cHiddenRow)
        return true;
    region.shrink();
    fill(region, uncovered);
    return false;
}

bool OcclusionMask::hidesLine(const Point& iFrom, const Point& iTo, double iSlack) const
{
    // A line within a pixel of level or upright fills its box but for slivers: the box is the
    // cheaper outline, and as large. A short line, as a curve sampled at every pixel is made of,
    // is mostly hidden, if at all, together with its box: the box is tried first.
    const double reach = cLineReach + iSlack;
    const double width = std::abs(iTo.x - iFrom.x), height = std::abs(iTo.y - iFrom.y);
    const bool level = std::min(width, height) <= 1.0;
    if ((level || std::max(width, height) <= cShortLine)
        && hidesBox(std::min(iFrom.x, iTo.x) - reach, std::min(iFrom.y, iTo.y) - reach,
            std::max(iFrom.x, iTo.x) + reach, std::max(iFrom.y, iTo.y) + reach))
        return true;
    if (level)
        return false;
    const LineBand band(iFrom, iTo, reach);
    return band.isFinite() && isHidden(band);
}

bool OcclusionMask::hidesBox(double iLeft, double iBottom, double iRight, double iTop) const
{
    return firstUncoveredRowOfBox(iLeft, iBottom, iRight, iTop) == cHiddenRow;
}

int OcclusionMask::firstUncoveredRowOfBox(double iLeft, double iBottom, double iRight, double iTop) const
{
    // Whatever may reach beyond the viewport is drawn; so is what isn't a number.
    if (mEmpty || !(iBottom - 0.5 > -1.0 && iTop - 0.5 < mHeight && iLeft - 0.5 > -1.0 && iRight - 0.5 < mWidth))
        return 0;
    const int first = Ceil(iLeft - 0.5), last = Floor(iRight - 0.5);
    const int lastRow = Floor(iTop - 0.5);
    for (int row = Ceil(iBottom - 0.5); row <= lastRow; ++row)
        if (!isCovered(row, first, last))
            return row;
    return cHiddenRow;
}

void OcclusionMask::cover(const Point* iCorners, int iCount, double iSlack)
{
    if (iCount < 3 || iCount > cMaxCorners)
        return;
    if (IsUpright(iCorners, iCount)) {
        const Rect inside = Rect::Of(iCorners, -iSlack);
        if (inside.isFinite())
            fill(inside);
        return;
    }
    Region region;
    if (region.set(iCorners, iCount, iSlack)) {
        region.shrink();
        fill(region);
    }
}

template <class Shape> void OcclusionMask::fill(const Shape& iShape, int iFromRow)
{
    const int firstRow = std::max(iFromRow, Ceil(std::clamp(iShape.bottom() - 0.5, 0.0, double(mHeight))));
    const int lastRow = Floor(std::clamp(iShape.top() - 0.5, -1.0, double(mHeight - 1)));
    for (int row = firstRow; row <= lastRow; ++row) {
        double low, high;
        iShape.span(row + 0.5, low, high);
        const int first = Ceil(std::clamp(low - 0.5, 0.0, double(mWidth)));
        const int last = Floor(std::clamp(high - 0.5, -1.0, double(mWidth - 1)));
        std::uint64_t* words = &mBits[std::size_t(row) * std::size_t(mWordsPerRow)];
        for (int word = first >> 6; first <= last && word <= last >> 6; ++word) {
            words[word] |= bitsOf(word, first, last);
            mEmpty = false;
        }
    }
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
