#pragma once

#include "splinorlib/Vector2D.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

/// The pixels of a GL viewport that opaque glyphs are sure to cover, for leaving out what they
/// would hide. Positions are GL window coordinates relative to the viewport's corner, so that
/// pixel (i, j) has its centre at (i + 0.5, j + 0.5); a polygon covers the pixels whose centres
/// lie inside it, as GL fills polygons without smoothing.
///
/// Each test takes a slack, in pixels: how far GL may place a vertex from where the caller
/// computed it. A primitive is hidden only if its outline grown by the slack lies on covered
/// pixels, and an opaque polygon covers only the pixels inside its outline shrunk by it, so an
/// error on either side keeps something drawn rather than leaving a hole. Pixels outside the
/// viewport are never covered.
class OcclusionMask
{
public:
    using Point = SplinorLib::v19::Vector2D<double>;

    /// A smoothed line of width 1 lights pixels up to about a pixel from its axis; the outline
    /// of a line is the axis with a square of this half side slid along it. Over 40,000 lines of
    /// every length, direction and sub-pixel place, llvmpipe lit none farther than 1.058 by
    /// that measure (1.0625 straight), and this allows as much again on top.
    static constexpr double cLineReach = 1.125;

    /// Uncovers all and takes the viewport's size; a size below one pixel covers nothing.
    void reset(int iWidth, int iHeight);

    /// Whether every pixel the convex polygon (corners in order, either way round) may light
    /// is covered.
    bool hides(const Point* iCorners, int iCount, double iSlack) const;
    /// Whether every pixel a smoothed line of width 1 may light is covered.
    bool hidesLine(const Point& iFrom, const Point& iTo, double iSlack) const;
    /// Marks the pixels an opaque convex polygon surely lights.
    void cover(const Point* iCorners, int iCount, double iSlack);
    /// hides(), and if not, cover(): the polygon's edges are worked out once for both.
    bool hidesOrCovers(const Point* iCorners, int iCount, double iSlack);

    /// Covers the pixels iFirst to iLast of row iRow, all in the mask, and calls
    /// iLit(column of the word's first pixel, bits) for each word of pixels newly covered.
    template <class Lit> void claim(int iRow, int iFirst, int iLast, Lit&& iLit);
    /// The same for the pixels of row iRow at iColumn and on whose bits are set in iBits: a
    /// pixel a bit, the lowest first, at most 24 of them, all in the mask. Little-endian only.
    template <class Lit> void claim(int iRow, int iColumn, std::uint32_t iBits, Lit&& iLit);

private:
    /// Whether the shape (a band of rows, and an x range at each row's height) lies on
    /// covered pixels of the mask and nowhere else.
    template <class Shape> bool isHidden(const Shape& iShape) const;
    /// The lowest row where the shape reaches a pixel not covered, or outside the mask: all of
    /// the shape below it is covered. cHiddenRow if the shape is hidden.
    template <class Shape> int firstUncoveredRow(const Shape& iShape) const;
    static constexpr int cHiddenRow = 1 << 30;

    /// Marks the pixels whose centres lie in the shape, in the mask, from row iFromRow up.
    template <class Shape> void fill(const Shape& iShape, int iFromRow = 0);
    /// Whether the pixels whose centres lie in the box are all covered, and all in the mask.
    bool hidesBox(double iLeft, double iBottom, double iRight, double iTop) const;
    /// The lowest row where the box reaches a pixel not covered, or outside the mask;
    /// cHiddenRow if it is hidden.
    int firstUncoveredRowOfBox(double iLeft, double iBottom, double iRight, double iTop) const;

    /// The bits of columns iFirst to iLast that fall in word iWord of a row.
    static std::uint64_t bitsOf(int iWord, int iFirst, int iLast);
    bool isCovered(int iRow, int iFirst, int iLast) const;

    int mWidth = 0, mHeight = 0, mWordsPerRow = 0;
    bool mEmpty = true; // nothing is hidden until something covers
    std::vector<std::uint64_t> mBits;
};

inline std::uint64_t OcclusionMask::bitsOf(int iWord, int iFirst, int iLast)
{
    std::uint64_t bits = ~std::uint64_t(0);
    if (iWord == iFirst >> 6)
        bits &= ~std::uint64_t(0) << (iFirst & 63);
    if (iWord == iLast >> 6)
        bits &= ~std::uint64_t(0) >> (63 - (iLast & 63));
    return bits;
}

template <class Lit> void OcclusionMask::claim(int iRow, int iFirst, int iLast, Lit&& iLit)
{
    std::uint64_t* words = &mBits[std::size_t(iRow) * std::size_t(mWordsPerRow)];
    for (int word = iFirst >> 6; word <= iLast >> 6; ++word) {
        const std::uint64_t bits = bitsOf(word, iFirst, iLast);
        const std::uint64_t fresh = bits & ~words[word];
        words[word] |= bits;
        if (fresh)
            iLit(word << 6, fresh);
    }
    mEmpty = false;
}

template <class Lit> void OcclusionMask::claim(int iRow, int iColumn, std::uint32_t iBits, Lit&& iLit)
{
    // Read as the 32 bits from the byte of the first pixel: on a little-endian machine those are
    // the row's bits from that byte on, whichever words they lie in. Bits past the row's end are
    // left as they are, and the mask has a word to spare past its last row.
    static_assert(sizeof(std::uint32_t) == 4, "");
    unsigned char* bytes = reinterpret_cast<unsigned char*>(&mBits[std::size_t(iRow) * std::size_t(mWordsPerRow)]);
    bytes += iColumn >> 3;
    std::uint32_t word;
    std::memcpy(&word, bytes, sizeof word);
    const std::uint32_t bits = iBits << (iColumn & 7);
    if (const std::uint32_t fresh = bits & ~word) {
        word |= bits;
        std::memcpy(bytes, &word, sizeof word);
        iLit(iColumn & ~7, fresh);
    }
    mEmpty = false;
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
