#pragma once

#include "render/VertexArrays.h"

#include "splinorlib/Vector2D.h"

#include <algorithm>
#include <cmath>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

/// Whether polygons may light their edge pixels in part, blending them with what lies below.
bool SmoothsPolygons();
/// Whether the current context rasterises on the CPU, with Mesa's llvmpipe or softpipe: what is
/// cheap for a graphics card, such as a shader on every pixel, then costs the most.
bool RastersInSoftware();

/// Where GL puts a vertex of the current matrices, in pixels from the viewport's corner, and how
/// far from there its rasteriser may light pixels: what culling needs to know that a primitive
/// lies under others.
class GLPlacement
{
public:
    using Point = SplinorLib::v19::Vector2D<double>;

    /// False unless the transform is a flat orthographic one onto a viewport of some size.
    bool read();

    Point operator()(const GLfloat* iXY) const
    {
        const double x = iXY[0], y = iXY[1];
        return { mXx * x + mXy * y + mX0, mYx * x + mYy * y + mY0 };
    }

    /// The slack for vertices whose coordinates are at most iX and iY in size: the rasteriser's
    /// own, and GL's float error, which grows with the size of the terms it sums.
    double slack(double iX, double iY) const;

    /// The largest sizes of the coordinates of iCount vertices, for one slack for all of them: a
    /// draw's vertices lie close together, and the float error allowed for is a small part of
    /// the rasteriser's own.
    template <class Vertex> static Point extent(const Vertex* iVertices, int iCount)
    {
        float x = 0.0f, y = 0.0f;
        for (int i = 0; i < iCount; ++i) {
            x = std::max(x, std::abs(iVertices[i].x));
            y = std::max(y, std::abs(iVertices[i].y));
        }
        return { x, y };
    }

    /// The corners of iCount vertices in pixels.
    template <class Vertex> void place(const Vertex* iVertices, int iCount, Point* oCorners) const
    {
        for (int i = 0; i < iCount; ++i)
            oCorners[i] = (*this)(&iVertices[i].x);
    }

    /// The side in pixels of a filled keyframe's square (its GlyphArrays entries), if GL may
    /// draw it as one point of that size: upright on screen, of a size points take, and surely
    /// inside the viewport. GL drops a point whose centre is outside, and may light pixels beyond
    /// the viewport for one whose square reaches past it. 0 if it is to be drawn as a polygon.
    double pointSide(const ColouredVertex* iEntries) const;

    /// The viewport's lower left corner in the window, and its size.
    int left = 0, bottom = 0, width = 0, height = 0;
    /// Whether GL puts every vertex, whatever its x and y, at one depth between the near and far
    /// planes: a depth range of a single value then gives all that is drawn that depth.
    bool flatDepth = false;
    /// The bits of the depth buffer drawn into; 0 if it has none.
    int depthBits = 0;
    /// Added to the slack of fills and of lines where the rasteriser may light more pixels than
    /// their centres, or than a measured line does.
    double fillMargin = 0.0, lineMargin = 0.0;

private:
    /// The sizes GL draws a point at as asked, in pixels. A point's square is clamped to the
    /// implementation's ranges and its own limits, rounded to the sizes GL supports, scaled
    /// unless attenuation is off, and when multisampled, faded below a threshold. Sprites came
    /// with GL 2.0; before, points were squares of whole pixels.
    void readPointSizes();

    double mXx = 0, mXy = 0, mX0 = 0, mYx = 0, mYy = 0, mY0 = 0, mTranslationX = 0, mTranslationY = 0;
    /// Whether filled squares may be drawn as points, and of what sizes.
    bool mPoints = false;
    double mSmallestPoint = 1.0, mLargestPoint = 0.0, mPointGranularity = 1.0;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
