#include "render/CurveGlyphs.h"

#include "render/CurveColors.h"
#include "render/GraphViewColors.h"
#include "tools/Picking.h"
#include "view/Viewport.h"

#include "splinorlib/CurveFlags.h"
#include "splinorlib/Interpolator.h"
#include "splinorlib/Numeric.h"
#include "splinorlib/Selection.h"
#include "splinorlib/Splinor.h"

#include <QColor>
#include <qopengl.h>

#include <algorithm>
#include <vector>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

using SplinorLib::v19::HitRecord;
using SplinorLib::v19::Keyframe;
using SplinorLib::v19::Segment;
using SplinorLib::v19::Selection;
using SplinorLib::v19::Splinor;
using SplinorLib::v19::Tangent;
using Vector = SplinorLib::v19::Vector2D<double>;

namespace {

// The look, in pixels unless said otherwise.
constexpr float cLineWidth = 1.0f;
constexpr double cKeyHalfWidth = 2.2;
constexpr double cDiamondFactor = 1.414;       // a square's half width to a diamond's half diagonal
constexpr double cFixedTangentLength = 24.0;   // an unweighted Fixed tangent's line on screen
constexpr double cHandleHalfBase = 2.9;
constexpr double cHandleHeight = 5.0;
constexpr float cTangentLineAlpha = 0.5f;
constexpr double cZeroTangentOffset = 0.0001; // curve units: a direction for a tangent of no length
// Tangents reach at most this far beyond the segments in view on screen, unless weighted.
constexpr double cTangentReach = 40.0;

void SetColour(const QColor& iColour)
{
    glColor3f(GLfloat(iColour.redF()), GLfloat(iColour.greenF()), GLfloat(iColour.blueF()));
}

/// Glyphs and lines gathered into a few draw calls. A paint of many curves would otherwise make
/// a call per keyframe, tangent and segment, and the cost of the calls, not of the pixels,
/// would set the speed. Colours travel with the vertices; the order of drawing is that of the
/// single routines: keyframes, then tangent lines, then tangent handles.
class GlyphBatch
{
public:
    void keyframe(const Vector& iPosition, const QColor& iColour, const Vector& iPixelSize, bool iFilled,
                  bool iBreakdown)
    {
        double hx = iPixelSize.x * cKeyHalfWidth;
        double hy = iPixelSize.y * cKeyHalfWidth;
        if (iBreakdown) {
            hx *= cDiamondFactor;
            hy *= cDiamondFactor;
        }
        const double x = iPosition.x;
        const double y = iPosition.y;
        const Vector square[4] = {{x - hx, y - hy}, {x - hx, y + hy}, {x + hx, y + hy}, {x + hx, y - hy}};
        const Vector diamond[4] = {{x - hx, y}, {x, y - hy}, {x + hx, y}, {x, y + hy}};
        polygon(iBreakdown ? diamond : square, 4, iColour, 1.0f, iFilled, mKeyFills, mKeyOutlines);
    }

    void tangentLine(const Vector& iFrom, const Vector& iTo, const QColor& iColour)
    {
        add(mTangentLines, iFrom, iColour, cTangentLineAlpha);
        add(mTangentLines, iTo, iColour, cTangentLineAlpha);
    }

    void handle(const Vector iCorners[3], const QColor& iColour, bool iFilled)
    {
        polygon(iCorners, 3, iColour, 1.0f, iFilled, mHandleFills, mHandleOutlines);
    }

    void flush()
    {
        draw(GL_QUADS, mKeyFills);
        draw(GL_LINES, mKeyOutlines);
        draw(GL_LINES, mTangentLines);
        draw(GL_TRIANGLES, mHandleFills);
        draw(GL_LINES, mHandleOutlines);
    }

private:
    struct Vertex
    {
        GLfloat x, y, r, g, b, a;
    };

    static void add(std::vector<Vertex>& ioVertices, const Vector& iPoint, const QColor& iColour, GLfloat iAlpha)
    {
        ioVertices.push_back({GLfloat(iPoint.x), GLfloat(iPoint.y), GLfloat(iColour.redF()), GLfloat(iColour.greenF()),
                              GLfloat(iColour.blueF()), iAlpha});
    }

    /// A filled polygon of 3 or 4 corners, or its outline as separate edges.
    static void polygon(const Vector* iCorners, int iCount, const QColor& iColour, GLfloat iAlpha, bool iFilled,
                        std::vector<Vertex>& ioFills, std::vector<Vertex>& ioOutlines)
    {
        for (int i = 0; i < iCount; ++i) {
            if (iFilled) {
                add(ioFills, iCorners[i], iColour, iAlpha);
            } else {
                add(ioOutlines, iCorners[i], iColour, iAlpha);
                add(ioOutlines, iCorners[(i + 1) % iCount], iColour, iAlpha);
            }
        }
    }

    static void draw(GLenum iMode, std::vector<Vertex>& ioVertices)
    {
        if (ioVertices.empty())
            return;
        glLineWidth(cLineWidth);
        glBegin(iMode);
        for (const Vertex& v : ioVertices) {
            glColor4f(v.r, v.g, v.b, v.a);
            glVertex2f(v.x, v.y);
        }
        glEnd();
        ioVertices.clear();
    }

    std::vector<Vertex> mKeyFills, mKeyOutlines, mTangentLines, mHandleFills, mHandleOutlines;
};

void DrawStrip(const std::vector<Vector>& iPoints, const QColor& iColour);

/// The three corners, in curve space, of a handle standing on iBase (window pixels) and pointing
/// along iDirection.
void HandleCorners(const Vector& iBase, const Vector& iDirection, const Viewport& iViewport, Vector oCorners[3])
{
    const Vector across(iDirection.y, -iDirection.x);
    oCorners[0] = iViewport.windowToWorld(iBase + across * cHandleHalfBase);
    oCorners[1] = iViewport.windowToWorld(iBase - across * cHandleHalfBase);
    oCorners[2] = iViewport.windowToWorld(iBase + iDirection * cHandleHeight);
}

/// Consecutive segments of one colour drawn as one line strip.
class StripRun
{
public:
    void add(const Segment& iSegment, const Viewport& iViewport, const QColor& iColour)
    {
        if (iColour != mColour)
            flush();
        mColour = iColour;
        SampleSegment(iSegment, iViewport, mSamples);
        mPoints.insert(mPoints.end(), mSamples.begin(), mSamples.end());
    }
    /// Ends the run, as a segment left out of it must.
    void flush()
    {
        if (mPoints.size() >= 2)
            DrawStrip(mPoints, mColour);
        mPoints.clear();
    }
    ~StripRun() { flush(); }

private:
    QColor mColour;
    std::vector<Vector> mPoints;
    std::vector<Vector> mSamples;
};

/// Samples reused from segment to segment, so that a paint does not allocate per segment.
std::vector<Vector>& SampleBuffer()
{
    static std::vector<Vector> buffer;
    return buffer;
}

void DrawStrip(const std::vector<Vector>& iPoints, const QColor& iColour)
{
    if (iPoints.empty())
        return;
    SetColour(iColour);
    glLineWidth(cLineWidth);
    glBegin(GL_LINE_STRIP);
    for (const Vector& p : iPoints)
        glVertex2f(GLfloat(p.x), GLfloat(p.y));
    glEnd();
}

using Sampler = void (SplinorLib::v19::Interpolator::*)(const Segment&, double, double, int, std::vector<Vector>&) const;

void DrawDerivative(const Segment& iSegment, const Viewport& iViewport, const QColor& iColour, Sampler iSampler)
{
    std::vector<Vector>& points = SampleBuffer();
    points.clear();
    const SampleSpan span = SampleCount(iSegment, iViewport);
    if (span.count > 0 && iSegment.getInterpolator())
        (iSegment.getInterpolator().get()->*iSampler)(iSegment, span.x0, span.x1, span.count, points);
    DrawStrip(points, iColour);
}

/// Calls iDraw for each segment from the one at the left edge of the view to the one at its
/// right edge, both included.
template <class Draw>
void ForSegmentsInView(const Splinor& iCurve, const Viewport& iViewport, Draw&& iDraw)
{
    const Viewport::Rectangle& world = iViewport.getWorldBounds();
    auto last = iCurve.findSegment(world.x + world.width);
    // Bounds of negative width, which only a host can set, end the walk at the curve's end.
    for (auto it = iCurve.findSegment(world.x); it != iCurve.end(); ++it) {
        iDraw(*it);
        if (it == last)
            break;
    }
}

bool Names(const HitRecord& iHover, const void* iItem, int iType)
{
    if (iType == HitRecord::cTangentHandle)
        return iHover.isTangent() && iHover.getItem() == iItem;
    return iHover.getType() == iType && iHover.getItem() == iItem;
}

QColor CurveColour(const Splinor& iCurve, bool (*iHas)(const Splinor&), void (*iGet)(const Splinor&, QColor&),
                   const GraphViewColors& iColours, int iFallback)
{
    if (!iHas(iCurve))
        return iColours.getColor(iFallback);
    QColor colour;
    iGet(iCurve, colour);
    return colour;
}

QColor SegmentColour(const Segment& iSegment, bool iCurveSelected, bool iSegmentSelected, const Splinor& iCurve,
                     const GraphViewColors& iColours)
{
    const bool locked = IsLocked(iCurve);
    const bool exterior = iSegment.isExterior();
    if (iCurveSelected && iSegmentSelected)
        return iColours.getColor(locked ? GraphViewColors::cLockedSelectedColor : GraphViewColors::cSelectedItemColor);
    if (locked)
        return iColours.getColor(GraphViewColors::cLockedColor);
    if (iCurveSelected)
        return exterior ? CurveColour(iCurve, HasSelectedExteriorColor, GetSelectedExteriorColor, iColours,
                                      GraphViewColors::cSelectedExteriorColor)
                        : CurveColour(iCurve, HasSelectedInteriorColor, GetSelectedInteriorColor, iColours,
                                      GraphViewColors::cSelectedInteriorColor);
    return exterior ? CurveColour(iCurve, HasUnselectedExteriorColor, GetUnselectedExteriorColor, iColours,
                                  GraphViewColors::cUnselectedExteriorColor)
                    : CurveColour(iCurve, HasUnselectedInteriorColor, GetUnselectedInteriorColor, iColours,
                                  GraphViewColors::cUnselectedInteriorColor);
}

/// The colour of a keyframe or tangent of a selected curve.
QColor ItemColour(bool iSelected, bool iLocked, bool iTangent, const Splinor& iCurve, const GraphViewColors& iColours)
{
    if (iSelected)
        return iColours.getColor(iLocked ? GraphViewColors::cLockedSelectedColor : GraphViewColors::cSelectedItemColor);
    if (iLocked)
        return iColours.getColor(GraphViewColors::cLockedColor);
    return iTangent ? CurveColour(iCurve, HasSelectedTangentColor, GetSelectedTangentColor, iColours,
                                  GraphViewColors::cSelectedTangentColor)
                    : CurveColour(iCurve, HasSelectedInteriorColor, GetSelectedInteriorColor, iColours,
                                  GraphViewColors::cSelectedInteriorColor);
}

bool IsLockedKey(const Keyframe& iKey, const Splinor& iCurve)
{
    return IsLocked(iCurve) || IsLocked(iKey);
}

/// The line and handle of a tangent into a batch; see DrawTangent.
void AddTangent(GlyphBatch& ioBatch, Tangent& iTangent, const GraphViewColors& iColours, const HitRecord& iHover,
                bool iLocked, Selection& iSelection, const Viewport& iViewport)
{
    const Keyframe* key = iTangent.getOwningKeyframe();
    const Splinor* curve = iTangent.getOwningCurve();
    if (!key || !curve)
        return;
    const bool selected = iSelection.isSelected(iTangent);
    const QColor colour = Names(iHover, &iTangent, HitRecord::cTangentHandle)
                              ? iColours.getColor(GraphViewColors::cHoverColor)
                              : ItemColour(selected, iLocked, true, *curve, iColours);

    Vector v = iTangent.get();
    if (SplinorLib::v19::NearZero(Length(v)))
        v = {iTangent.isInTangent() ? -cZeroTangentOffset : cZeroTangentOffset, 0.0};
    Vector tipWorld = key->get() + v;
    const Vector k = iViewport.worldToWindow(key->get());
    Vector e = iViewport.worldToWindow(tipWorld);
    const Vector d = (e - k) / Length(e - k);
    // An unweighted Fixed tangent has a line of constant length on screen.
    if (iTangent.getType() == SplinorLib::v19::cTangentFixed && !iTangent.isWeighted()) {
        e = k + d * cFixedTangentLength;
        tipWorld = iViewport.windowToWorld(e);
    }
    ioBatch.tangentLine(key->get(), tipWorld, colour);
    Vector corners[3];
    HandleCorners(e, d, iViewport, corners);
    ioBatch.handle(corners, colour, selected);
}

void DrawCurvePass(const Splinor& iCurve, bool iSelected, Selection& iSelection, const Viewport& iViewport,
                   const GraphViewColors& iColours, const HitRecord& iHover)
{
    {
        StripRun run;
        ForSegmentsInView(iCurve, iViewport, [&](const Segment& segment) {
            if (!Names(iHover, &segment, HitRecord::cSegment) && iSelection.isSelected(segment) == iSelected)
                run.add(segment, iViewport, SegmentColour(segment, true, iSelected, iCurve, iColours));
            else
                run.flush();
        });
    }

    GlyphBatch batch;
    const Vector pixel = iViewport.pixelSize();
    ForSegmentsInView(iCurve, iViewport, [&](const Segment& segment) {
        const Keyframe* key = segment.getLeftKey();
        if (!key || Names(iHover, key, HitRecord::cKeyframe) || iSelection.isSelected(*key) != iSelected)
            return;
        batch.keyframe(key->get(), ItemColour(iSelected, IsLockedKey(*key, iCurve), false, iCurve, iColours), pixel,
                       iSelected, key->isBreakdown());
    });

    // Tangents may stick out of their segment, so the walk reaches a little beyond the view:
    // far enough for any handle but a weighted one longer than the view is wide.
    const Viewport::Rectangle& world = iViewport.getWorldBounds();
    const double reach = std::max(world.width, cTangentReach * pixel.x);
    auto first = iCurve.findSegment(world.x - reach);
    if (first != iCurve.begin())
        --first;
    auto last = iCurve.findSegment(world.x + world.width + reach);
    ++last;
    for (auto it = first; it != last; ++it) {
        Segment& segment = const_cast<Segment&>(*it);
        if (!segment.getInterpolator() || !segment.getInterpolator()->usesTangents())
            continue;
        const std::pair<Tangent*, Keyframe*> pairs[2] = {{segment.getInTangent(), segment.getRightKey()},
                                                         {segment.getOutTangent(), segment.getLeftKey()}};
        for (const auto& [tangent, key] : pairs) {
            if (!tangent || !key || Names(iHover, tangent, HitRecord::cTangentHandle))
                continue;
            if (iSelection.isSelected(*tangent) == iSelected && IsTangentVisible(*tangent, iSelection))
                AddTangent(batch, *tangent, iColours, iHover, IsLockedKey(*key, iCurve), iSelection, iViewport);
        }
    }
    batch.flush();
}

} // namespace

void DrawSegment(const Segment& iSegment, const Viewport& iViewport, const QColor& iColour)
{
    std::vector<Vector>& points = SampleBuffer();
    SampleSegment(iSegment, iViewport, points);
    DrawStrip(points, iColour);
}

void DrawVelocitySegment(const Segment& iSegment, const Viewport& iViewport, const QColor& iColour)
{
    DrawDerivative(iSegment, iViewport, iColour, &SplinorLib::v19::Interpolator::sampleFirstDerivative);
}

void DrawAccelerationSegment(const Segment& iSegment, const Viewport& iViewport, const QColor& iColour)
{
    DrawDerivative(iSegment, iViewport, iColour, &SplinorLib::v19::Interpolator::sampleSecondDerivative);
}

void DrawUnselectedCurve(const Splinor& iCurve, const Viewport& iViewport, const GraphViewColors& iColours,
                         const HitRecord& iHover)
{
    if (Names(iHover, &iCurve, HitRecord::cCurve))
        return;
    StripRun run;
    ForSegmentsInView(iCurve, iViewport, [&](const Segment& segment) {
        run.add(segment, iViewport, SegmentColour(segment, false, false, iCurve, iColours));
    });
}

void DrawSelectedCurve(const Splinor& iCurve, Selection& iSelection, const Viewport& iViewport,
                       const GraphViewColors& iColours, const HitRecord& iHover)
{
    if (Names(iHover, &iCurve, HitRecord::cCurve))
        return;
    DrawCurvePass(iCurve, false, iSelection, iViewport, iColours, iHover);
    DrawCurvePass(iCurve, true, iSelection, iViewport, iColours, iHover);
}

void DrawHoverItem(const HitRecord& iHover, Selection& iSelection, const Viewport& iViewport,
                   const GraphViewColors& iColours)
{
    const QColor& hover = iColours.getColor(GraphViewColors::cHoverColor);
    switch (iHover.getType()) {
    case HitRecord::cCurve:
        ForSegmentsInView(*iHover.getCurve(), iViewport,
                          [&](const Segment& segment) { DrawSegment(segment, iViewport, hover); });
        break;
    case HitRecord::cSegment:
        DrawSegment(*iHover.getSegment(), iViewport, hover);
        break;
    case HitRecord::cKeyframe: {
        const auto key = iHover.getKeyframe();
        DrawKeyframeGlyph(key->get(), hover, iViewport.pixelSize(), iSelection.isSelected(*key), key->isBreakdown());
        break;
    }
    case HitRecord::cTangentHandle:
    case HitRecord::cTangentLine: {
        const auto tangent = iHover.getTangent();
        const Keyframe* key = tangent->getOwningKeyframe();
        const Splinor* curve = tangent->getOwningCurve();
        const bool locked = curve && key && IsLockedKey(*key, *curve);
        DrawTangent(*tangent, iColours, iHover, locked, iSelection, iViewport);
        break;
    }
    default:
        break;
    }
}

void DrawVelocity(const Splinor& iCurve, const Viewport& iViewport, const GraphViewColors& iColours)
{
    const QColor& colour = iColours.getColor(GraphViewColors::cVelocityColor);
    ForSegmentsInView(iCurve, iViewport,
                      [&](const Segment& segment) { DrawVelocitySegment(segment, iViewport, colour); });
}

void DrawAcceleration(const Splinor& iCurve, const Viewport& iViewport, const GraphViewColors& iColours)
{
    const QColor& colour = iColours.getColor(GraphViewColors::cAccelerationColor);
    ForSegmentsInView(iCurve, iViewport,
                      [&](const Segment& segment) { DrawAccelerationSegment(segment, iViewport, colour); });
}

void DrawKeyframeGlyph(const Vector& iPosition, const QColor& iColour, const Vector& iPixelSize, bool iFilled,
                       bool iBreakdown)
{
    GlyphBatch batch;
    batch.keyframe(iPosition, iColour, iPixelSize, iFilled, iBreakdown);
    batch.flush();
}

void DrawTangent(Tangent& iTangent, const GraphViewColors& iColours, const HitRecord& iHover, bool iLocked,
                 Selection& iSelection, const Viewport& iViewport)
{
    GlyphBatch batch;
    AddTangent(batch, iTangent, iColours, iHover, iLocked, iSelection, iViewport);
    batch.flush();
}

void DrawTangentGlyph(const Vector& iBase, const Vector& iDirection, const QColor& iColour, bool iFilled,
                      const Viewport& iViewport)
{
    Vector corners[3];
    HandleCorners(iBase, iDirection, iViewport, corners);
    GlyphBatch batch;
    batch.handle(corners, iColour, iFilled);
    batch.flush();
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
