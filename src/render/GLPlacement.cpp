#include "render/GLPlacement.h"

#include "render/DeferredCurveDrawing.h"

#include <QOpenGLContext>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

namespace {

/// How far the rasteriser may put a vertex from where the mask does, in pixels: its sub-pixel
/// grid is 1/256, and a polygon edge measured to light pixels up to 0.002 beyond it.
constexpr double cRasterSlack = 1.0 / 32.0;
/// GL places vertices with float arithmetic; errors of this many units in the last place of the
/// largest term are allowed for, which covers the products of the matrices as well.
constexpr double cFloatUlps = 8.0;
/// Where polygons are smoothed or multisampled, an edge lights any pixel it passes through, and
/// only a pixel wholly inside is opaque: half a pixel's diagonal on top of the slack.
constexpr double cPartialPixel = 0.7072;
/// Smoothed lines as rasterisers other than llvmpipe may draw them, a little wider.
constexpr double cWiderLines = 0.5;

/// How near a square's width and height on screen must be, in pixels, for it to go as a point.
constexpr double cSameSide = 1.0 / 1024.0;

/// Whether the rasteriser is Mesa's llvmpipe, which ignores polygon smoothing and whose smoothed
/// lines were measured: the look of the others is not known here.
bool RendererIs(const char* iName)
{
    const char* renderer = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
    return renderer && std::strstr(renderer, iName);
}

bool IsKnownRasteriser()
{
    return RendererIs("llvmpipe");
}

} // namespace

bool SmoothsPolygons()
{
    return glIsEnabled(GL_POLYGON_SMOOTH) && !IsKnownRasteriser();
}

bool RastersInSoftware()
{
    return RendererIs("llvmpipe") || RendererIs("softpipe");
}

bool GLPlacement::read()
{
    GLdouble modelview[16], projection[16];
    GLint viewport[4];
    glGetDoublev(GL_MODELVIEW_MATRIX, modelview);
    glGetDoublev(GL_PROJECTION_MATRIX, projection);
    glGetIntegerv(GL_VIEWPORT, viewport);
    GLdouble t[16];
    for (int column = 0; column < 4; ++column)
        for (int row = 0; row < 4; ++row) {
            t[column * 4 + row] = 0.0;
            for (int k = 0; k < 4; ++k)
                t[column * 4 + row] += projection[k * 4 + row] * modelview[column * 4 + k];
        }
    left = viewport[0];
    bottom = viewport[1];
    width = viewport[2];
    height = viewport[3];
    if (t[3] != 0.0 || t[7] != 0.0 || t[15] != 1.0 || width <= 0 || height <= 0)
        return false;
    const double halfWidth = 0.5 * width, halfHeight = 0.5 * height;
    mXx = t[0] * halfWidth;
    mXy = t[4] * halfWidth;
    mX0 = (t[12] + 1.0) * halfWidth;
    mYx = t[1] * halfHeight;
    mYy = t[5] * halfHeight;
    mY0 = (t[13] + 1.0) * halfHeight;
    mTranslationX = std::abs(t[12]) * halfWidth;
    mTranslationY = std::abs(t[13]) * halfHeight;
    // Vertices have z 0 and w 1.
    flatDepth = t[2] == 0.0 && t[6] == 0.0 && std::abs(t[14]) <= 1.0;
    glGetIntegerv(GL_DEPTH_BITS, &depthBits);
    const bool known = IsKnownRasteriser();
    GLint sampleBuffers = 0;
    glGetIntegerv(GL_SAMPLE_BUFFERS, &sampleBuffers);
    const bool multisampled = sampleBuffers > 0 && glIsEnabled(GL_MULTISAMPLE);
    const bool smoothed = SmoothsPolygons();
    fillMargin = multisampled || smoothed ? cPartialPixel : 0.0;
    lineMargin = (multisampled ? cPartialPixel : 0.0) + (known ? 0.0 : cWiderLines);
    if (!std::isfinite(mXx + mXy + mX0 + mYx + mYy + mY0))
        return false;
    readPointSizes();
    mPoints = !smoothed && mXy == 0.0 && mYx == 0.0 && mSmallestPoint <= mLargestPoint;
    return true;
}

double GLPlacement::slack(double iX, double iY) const
{
    const double largest = std::max(std::abs(mXx) * iX + std::abs(mXy) * iY + mTranslationX,
        std::abs(mYx) * iX + std::abs(mYy) * iY + mTranslationY);
    return cRasterSlack + cFloatUlps * FLT_EPSILON * (largest + std::max(width, height));
}

double GLPlacement::pointSide(const ColouredVertex* iEntries) const
{
    if (!mPoints || iEntries[1].a != GlyphArrays::cSquare)
        return 0.0;
    const double side = 2.0 * std::abs(mXx * iEntries[1].x);
    if (!(side >= mSmallestPoint && side <= mLargestPoint)
        || !(std::abs(side - 2.0 * std::abs(mYy * iEntries[1].y)) <= cSameSide)
        || !(std::abs(side - std::round(side / mPointGranularity) * mPointGranularity) <= cSameSide))
        return 0.0;
    const Point centre = (*this)(&iEntries[0].x);
    const double reach = 0.5 * side + slack(std::abs(iEntries[0].x), std::abs(iEntries[0].y));
    const bool inside = centre.x >= reach && centre.x <= width - reach && centre.y >= reach
        && centre.y <= height - reach;
    return inside ? side : 0.0;
}

void GLPlacement::readPointSizes()
{
    mSmallestPoint = 1.0;
    mLargestPoint = 0.0;
    const QOpenGLContext* context = QOpenGLContext::currentContext();
    if (!context
        || (context->format().version() < qMakePair(2, 0) && !context->hasExtension("GL_ARB_point_sprite")))
        return;
    GLfloat range[2] = { 1.0f, 0.0f }, aliased[2] = { 1.0f, 0.0f }, least = 0.0f, most = 0.0f;
    GLfloat granularity = 0.0f, fade = 0.0f, attenuation[3] = { 0.0f, 0.0f, 0.0f };
    glGetFloatv(GL_POINT_SIZE_RANGE, range);
    glGetFloatv(GL_ALIASED_POINT_SIZE_RANGE, aliased);
    glGetFloatv(GL_POINT_SIZE_MIN, &least);
    glGetFloatv(GL_POINT_SIZE_MAX, &most);
    glGetFloatv(GL_POINT_SIZE_GRANULARITY, &granularity);
    glGetFloatv(GL_POINT_FADE_THRESHOLD_SIZE, &fade);
    glGetFloatv(GL_POINT_DISTANCE_ATTENUATION, attenuation);
    if (attenuation[0] != 1.0f || attenuation[1] != 0.0f || attenuation[2] != 0.0f || !(granularity > 0.0f))
        return;
    // Below a pixel, rasterisers widen points to one.
    mSmallestPoint = std::max({ 1.0, double(range[0]), double(aliased[0]), double(least), double(fade) });
    mLargestPoint = std::min({ double(range[1]), double(aliased[1]), double(most) });
    mPointGranularity = granularity;
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
