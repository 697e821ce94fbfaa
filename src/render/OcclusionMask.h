#pragma once

#include "splinorlib/Vector2D.h"

#include <cstdint>
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

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
