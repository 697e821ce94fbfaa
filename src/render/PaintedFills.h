#pragma once

#include "render/OcclusionMask.h"

#include "splinorlib/Vector2D.h"

#include <cstdint>
#include <vector>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

/// Opaque fills lit here instead of by GL, each pixel once: by the last fill drawn over it, found
/// by painting from the last drawn to the first and lighting only pixels no fill has lit yet. A
/// dense view of selected keys draws each pixel many times over, and a software rasteriser pays
/// for every primitive, seen or not; here the cost is a pixel's, and only once.
///
/// A pixel takes a fill's colour and a depth, which tells GL what may still draw over it: see
/// draw(). Pixels are lit as a rasteriser with a sub-pixel grid of 1/256 lights them: corners
/// are snapped to the grid, and a pixel whose centre lies on an edge is lit if the edge is a
/// left or a bottom one, so that what is lit here is what GL would light from the same corners.
/// Positions are as OcclusionMask takes them.
class PaintedFills
{
public:
    using Point = SplinorLib::v19::Vector2D<double>;

    /// Unlights all and takes the viewport's size.
    void reset(int iWidth, int iHeight);

    /// Lights with iRgba (bytes in the order red, green, blue, alpha) and iDepth the pixels of a
    /// convex polygon (corners in order, either way round) that the mask doesn't cover, and
    /// covers them; a polygon with no area lights nothing. False, with nothing done, for one with
    /// a corner out of the viewport, or not finite: GL clips such polygons, and the corners it
    /// makes, rounded, may light other pixels than the polygon's own.
    bool paint(const Point* iCorners, int iCount, std::uint32_t iRgba, float iDepth, OcclusionMask& ioMask);

    bool empty() const { return mTop < mBottom; }

    /// Sets GL's depth buffer to 0 over the viewport whose lower left corner is at iX, iY,
    /// within the host's scissor box: draw() writes the lit pixels' depths over it. Called before
    /// the fills are painted, GL clears while they are.
    void clearDepth(int iX, int iY) const;
    /// Writes the lit pixels into GL's colour buffer, and their depths into its depth buffer,
    /// in the viewport whose lower left corner is at iX, iY, cleared by clearDepth(). Leaves
    /// blending, depth and alpha tests, masks, pixel storage and stencil as they were. False,
    /// with nothing drawn, where GL can't place pixels in window coordinates (before 1.4).
    bool draw(int iX, int iY) const;
    /// Whether draw() can: GL 1.4 or later is current.
    static bool canDraw();

    /// A corner in sub-pixel units.
    struct Corner
    {
        std::int64_t x, y;
    };

private:
    /// The box of a small polygon's pixel centres: its first column, its rows, and a bit for each
    /// of its columns.
    struct Box
    {
        int column, firstRow, lastRow;
        std::uint32_t lanes;
    };

    template <int tCount>
    bool paintConvex(const Point* iCorners, std::uint32_t iRgba, float iDepth, OcclusionMask& ioMask);
    /// paintConvex() for a polygon of few columns, corners counter-clockwise and measured from
    /// the centre of its box's first pixel: every centre of a row at once, without the divisions
    /// and the branches of walking its edges.
    template <int tCount, int tGroups>
    void paintSmall(const std::int32_t* iXs, const std::int32_t* iYs, const Box& iBox, std::uint32_t iRgba,
        float iDepth, OcclusionMask& ioMask);
    /// Lights the pixels of row iRow from iColumn on whose bits are set in iLanes, that the mask
    /// doesn't cover.
    void lightLanes(OcclusionMask& ioMask, int iRow, int iColumn, std::uint32_t iLanes, std::uint32_t iRgba,
        float iDepth);
    /// Writes the lit pixels of the block of iWidth by iHeight pixels from column iColumn and row
    /// iRow of the viewport at iX, iY by copying the block whole, colour, depth and stencil, with
    /// what is already there read back into it: a software rasteriser copies a block of its
    /// framebuffer's formats as memory, where drawing pixels runs a shader on each. False, with
    /// nothing drawn, on a graphics card, where the framebuffer isn't of the formats written here
    /// (8 bits of colour, 24 of depth, 8 of stencil, one sample), or where a copy isn't as
    /// drawing pixels would be.
    bool copyBlock(int iColumn, int iRow, int iWidth, int iHeight, int iX, int iY) const;
    /// Writes the lit pixels by drawing them, depths first.
    void drawPixels(int iX, int iY) const;
    /// Grows the box of the pixels lit to take in another.
    void grow(int iLeft, int iBottom, int iRight, int iTop);
    /// Lights the pixels of a row from iFirst to iLast, within the viewport, that the mask doesn't
    /// cover.
    void lightRow(OcclusionMask& ioMask, int iRow, std::int64_t iFirst, std::int64_t iLast, std::uint32_t iRgba,
        float iDepth);

    int mWidth = 0, mHeight = 0;
    /// The box of the pixels lit, inclusive; empty when top is below bottom.
    int mLeft = 0, mBottom = 0, mRight = -1, mTop = -1;
    std::vector<std::uint32_t> mColours;
    std::vector<float> mDepths;
    /// A block being copied: colours, and depths above stencils.
    mutable std::vector<std::uint32_t> mBlockColours, mBlockDepths;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
