#include "render/CurveGlyphs.h"

#include "render/CurveColors.h"
#include "render/DeferredCurveDrawing.h"
#include "render/GraphViewColors.h"
#include "render/VertexArrays.h"
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
#include <cmath>
#include <iterator>
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
constexpr double cKeyHalfWidth = 2.2;
constexpr double cDiamondFactor = 1.414; // a square's half width to a diamond's half diagonal
constexpr double cFixedTangentLength = 24.0; // an unweighted Fixed tangent's line on screen
constexpr double cHandleHalfBase = 2.9;
constexpr double cHandleHeight = 5.0;
constexpr GLubyte cTangentLineAlpha = 128; // a half, as an 8-bit channel rounds it
constexpr GLubyte cOpaque = 255;
constexpr double cZeroTangentOffset = 0.0001; // curve units: a direction for a tangent of no length
// Tangents reach at most this far beyond the segments in view on screen, unless weighted.
constexpr double cTangentReach = 40.0;

/// A colour as vertices carry it, converted once rather than for each vertex.
struct Rgb
{
    Rgb() = default;
    explicit Rgb(const QColor& iColour)
        : r(GLubyte(iColour.red()))
        , g(GLubyte(iColour.green()))
        , b(GLubyte(iColour.blue()))
    {
    }
    GLubyte r = 0, g = 0, b = 0;
};

/// Glyphs and lines gathered into a few draws. A paint of many curves would otherwise make a
/// call per keyframe, tangent and segment, and the cost of the calls, not of the pixels, would
/// set the speed. Colours travel with the vertices; the order of drawing is that of the single
/// routines: keyframes, then tangent lines, then tangent handles.
class GlyphBatch
{
public:
    /// The batch of this thread, empty; a thread never builds two at once.
    static GlyphBatch& shared()
    {
        thread_local GlyphBatch batch;
        batch.mArrays = &DeferredCurveDrawing::glyphArrays();
        batch.mBegin = batch.mArrays->mark();
        return batch;
    }

    void keyframe(const Vector& iPosition, const Rgb& iColour, const Vector& iPixelSize, bool iFilled, bool iBreakdown)
    {
        double hx = iPixelSize.x * cKeyHalfWidth;
        double hy = iPixelSize.y * cKeyHalfWidth;
        if (iBreakdown) {
            hx *= cDiamondFactor;
            hy *= cDiamondFactor;
        }
        const GlyphArrays::Shape shape = iBreakdown ? GlyphArrays::cDiamond : GlyphArrays::cSquare;
        if (iFilled) {
            ColouredVertex entries[GlyphArrays::cKeyFillEntries]
                = { Rgba(iColour, cOpaque), { GLfloat(hx), GLfloat(hy), 0, 0, 0, shape } };
            entries[0].x = GLfloat(iPosition.x);
            entries[0].y = GLfloat(iPosition.y);
            mArrays->keyFills.insert(mArrays->keyFills.end(), std::begin(entries), std::end(entries));
            return;
        }
        Vector corners[4];
        KeyframeCorners(iPosition, { hx, hy }, shape, corners);
        outline(corners, 4, Rgba(iColour, cOpaque), mArrays->keyOutlines);
    }

    void tangentLine(const Vector& iFrom, const Vector& iTo, const Rgb& iColour)
    {
        const Vector ends[2] = { iFrom, iTo };
        append(mArrays->tangentLines, ends, 2, Rgba(iColour, cTangentLineAlpha));
    }

    void handle(const Vector iCorners[3], const Rgb& iColour, bool iFilled)
    {
        polygon(iCorners, 3, Rgba(iColour, cOpaque), iFilled, mArrays->handleFills, mArrays->handleOutlines);
    }

    void flush()
    {
        DeferredCurveDrawing::glyphs(mBegin);
        mBegin = mArrays->mark();
    }

private:
    static constexpr int cMostCorners = 4;

    /// A vertex at the origin carrying the colour, to be placed by append().
    static ColouredVertex Rgba(const Rgb& iColour, GLubyte iAlpha)
    {
        return { 0.0f, 0.0f, iColour.r, iColour.g, iColour.b, iAlpha };
    }

    /// The points in the colour, appended at once: a vertex a push_back would store the array's
    /// end as often, and colour bytes may alias it, so each would reload it.
    static void append(std::vector<ColouredVertex>& ioVertices, const Vector* iPoints, int iCount, ColouredVertex iColour)
    {
        constexpr int cMost = 2 * cMostCorners;
        ColouredVertex vertices[cMost];
        for (int i = 0; i < iCount && i < cMost; ++i) {
            vertices[i] = iColour;
            vertices[i].x = GLfloat(iPoints[i].x);
            vertices[i].y = GLfloat(iPoints[i].y);
        }
        ioVertices.insert(ioVertices.end(), vertices, vertices + std::min(iCount, cMost));
    }

    /// A filled polygon of 3 or 4 corners, or its outline as separate edges.
    static void polygon(const Vector* iCorners, int iCount, const ColouredVertex& iColour, bool iFilled,
        std::vector<ColouredVertex>& ioFills, std::vector<ColouredVertex>& ioOutlines)
    {
        if (iFilled)
            append(ioFills, iCorners, iCount, iColour);
        else
            outline(iCorners, iCount, iColour, ioOutlines);
    }

    /// A polygon's outline as separate edges.
    static void outline(
        const Vector* iCorners, int iCount, const ColouredVertex& iColour, std::vector<ColouredVertex>& ioOutlines)
    {
        Vector edges[2 * cMostCorners];
        for (int i = 0; i < iCount && i < cMostCorners; ++i) {
            edges[2 * i] = iCorners[i];
            edges[2 * i + 1] = iCorners[(i + 1) % iCount];
        }
        append(ioOutlines, edges, 2 * iCount, iColour);
    }

    // The vertices go straight to where a deferred drawing holds them.
    GlyphArrays* mArrays = nullptr;
    GlyphArrays::Mark mBegin {};
};

void DrawStrip(const std::vector<PlainVertex>& iPoints, const QColor& iColour)
{
    DeferredCurveDrawing::strip(iPoints, iColour);
}

/// Samples narrowed to GL's floats and appended to a strip. Segments meet at their keys, so a
/// segment's first sample repeats the strip's last point; it is dropped, as a line of no length
/// adds no pixel and costs as much as any other.
void AppendToStrip(const std::vector<Vector>& iSamples, std::vector<PlainVertex>& ioStrip)
{
    for (const Vector& sample : iSamples) {
        const PlainVertex point { GLfloat(sample.x), GLfloat(sample.y) };
        if (ioStrip.empty() || !(point == ioStrip.back()))
            ioStrip.push_back(point);
    }
}

/// Buffers reused from segment to segment, one a thread; on the paint's own thread, from paint
/// to paint as well.
std::vector<Vector>& SampleBuffer()
{
    thread_local std::vector<Vector> buffer;
    return buffer;
}

std::vector<PlainVertex>& StripBuffer()
{
    thread_local std::vector<PlainVertex> buffer;
    return buffer;
}

void DrawSamples(const std::vector<Vector>& iSamples, const QColor& iColour)
{
    std::vector<PlainVertex>& strip = StripBuffer();
    strip.clear();
    AppendToStrip(iSamples, strip);
    DrawStrip(strip, iColour);
}

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
        std::vector<Vector>& samples = SampleBuffer();
        SampleSegment(iSegment, iViewport, samples);
        AppendToStrip(samples, mPoints);
    }
    /// Ends the run, as a segment left out of it must.
    void flush()
    {
        DrawStrip(mPoints, mColour);
        mPoints.clear();
    }
    ~StripRun() { flush(); }

private:
    QColor mColour;
    std::vector<PlainVertex> mPoints;
};

using Sampler
    = void (SplinorLib::v19::Interpolator::*)(const Segment&, double, double, int, std::vector<Vector>&) const;

void DrawDerivative(const Segment& iSegment, const Viewport& iViewport, const QColor& iColour, Sampler iSampler)
{
    std::vector<Vector>& points = SampleBuffer();
    points.clear();
    const SampleSpan span = SampleCount(iSegment, iViewport);
    if (span.count > 0 && iSegment.getInterpolator())
        (iSegment.getInterpolator().get()->*iSampler)(iSegment, span.x0, span.x1, span.count, points);
    DrawSamples(points, iColour);
}

/// Calls iDraw for each segment from the one at the left edge of the view to the one at its
/// right edge, both included.
template <class Draw> void ForSegmentsInView(const Splinor& iCurve, const Viewport& iViewport, Draw&& iDraw)
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

/// The length of a vector; the plain root, unless the squares overflow.
double Norm(const Vector& iVector)
{
    const double norm = std::sqrt(iVector.x * iVector.x + iVector.y * iVector.y);
    return std::isfinite(norm) ? norm : Length(iVector);
}

bool Names(const HitRecord& iHover, const void* iItem, int iType)
{
    if (iType == HitRecord::cTangentHandle)
        return iHover.isTangent() && iHover.getItem() == iItem;
    return iHover.getType() == iType && iHover.getItem() == iItem;
}

/// The colours of one curve for one paint. The per-curve colours are properties of the curve,
/// and looking them up for each of its thousands of items would cost more than drawing them.
class CurveLook
{
public:
    CurveLook(const Splinor& iCurve, const GraphViewColors& iColours)
        : mLocked(IsLocked(iCurve))
        , mLockedColour(iColours.getColor(GraphViewColors::cLockedColor))
        , mLockedSelectedColour(iColours.getColor(GraphViewColors::cLockedSelectedColor))
        , mSelectedItemColour(iColours.getColor(GraphViewColors::cSelectedItemColor))
        , mUnselectedInterior(Own(iCurve, HasUnselectedInteriorColor, GetUnselectedInteriorColor, iColours,
              GraphViewColors::cUnselectedInteriorColor))
        , mUnselectedExterior(Own(iCurve, HasUnselectedExteriorColor, GetUnselectedExteriorColor, iColours,
              GraphViewColors::cUnselectedExteriorColor))
        , mSelectedInterior(Own(iCurve, HasSelectedInteriorColor, GetSelectedInteriorColor, iColours,
              GraphViewColors::cSelectedInteriorColor))
        , mSelectedExterior(Own(iCurve, HasSelectedExteriorColor, GetSelectedExteriorColor, iColours,
              GraphViewColors::cSelectedExteriorColor))
        , mItems { Rgb(mSelectedInterior),
            Rgb(Own(iCurve, HasSelectedTangentColor, GetSelectedTangentColor, iColours,
                GraphViewColors::cSelectedTangentColor)),
            Rgb(mLockedColour), Rgb(mSelectedItemColour), Rgb(mLockedSelectedColour) }
    {
    }

    bool isLocked() const { return mLocked; }

    const QColor& segment(const Segment& iSegment, bool iCurveSelected, bool iSegmentSelected) const
    {
        if (iCurveSelected && iSegmentSelected)
            return mLocked ? mLockedSelectedColour : mSelectedItemColour;
        if (mLocked)
            return mLockedColour;
        const bool exterior = iSegment.isExterior();
        if (iCurveSelected)
            return exterior ? mSelectedExterior : mSelectedInterior;
        return exterior ? mUnselectedExterior : mUnselectedInterior;
    }

    /// A keyframe or tangent of a selected curve; iLocked is true if the curve or the key is.
    const Rgb& item(bool iSelected, bool iLocked, bool iTangent) const
    {
        if (iSelected)
            return mItems[iLocked ? cLockedSelected : cSelectedItem];
        if (iLocked)
            return mItems[cLocked];
        return mItems[iTangent ? cTangent : cKeyframe];
    }

    bool isLocked(const Keyframe& iKey) const { return mLocked || IsLocked(iKey); }

private:
    static QColor Own(const Splinor& iCurve, bool (*iHas)(const Splinor&), void (*iGet)(const Splinor&, QColor&),
        const GraphViewColors& iColours, int iFallback)
    {
        if (!iHas(iCurve))
            return iColours.getColor(iFallback);
        QColor colour;
        iGet(iCurve, colour);
        return colour;
    }

    enum { cKeyframe, cTangent, cLocked, cSelectedItem, cLockedSelected };

    bool mLocked;
    QColor mLockedColour, mLockedSelectedColour, mSelectedItemColour;
    QColor mUnselectedInterior, mUnselectedExterior, mSelectedInterior, mSelectedExterior;
    Rgb mItems[5];
};

/// Whether a tangent whose line runs from iKey to iTip (window pixels) can show in the window:
/// its line and handle lie within a handle's height of the line's box.
bool Reaches(const Viewport::Rectangle& iWindow, const Vector& iKey, const Vector& iTip)
{
    const double margin = std::max(cHandleHeight, cHandleHalfBase) + 1.0;
    return std::max(iKey.x, iTip.x) + margin >= iWindow.x
        && std::min(iKey.x, iTip.x) - margin <= iWindow.x + iWindow.width
        && std::max(iKey.y, iTip.y) + margin >= iWindow.y
        && std::min(iKey.y, iTip.y) - margin <= iWindow.y + iWindow.height;
}

/// The line and handle of a tangent into a batch; see DrawTangent.
void AddTangent(GlyphBatch& ioBatch, Tangent& iTangent, const Rgb& iColour, bool iSelected, const Viewport& iViewport)
{
    const Keyframe* key = iTangent.getOwningKeyframe();
    if (!key)
        return;
    Vector v = iTangent.get();
    if (SplinorLib::v19::NearZero(Norm(v)))
        v = { iTangent.isInTangent() ? -cZeroTangentOffset : cZeroTangentOffset, 0.0 };
    Vector tipWorld = key->get() + v;
    const Vector k = iViewport.worldToWindow(key->get());
    Vector e = iViewport.worldToWindow(tipWorld);
    const Vector d = (e - k) / Norm(e - k);
    // An unweighted Fixed tangent has a line of constant length on screen.
    if (iTangent.getType() == SplinorLib::v19::cTangentFixed && !iTangent.isWeighted()) {
        e = k + d * cFixedTangentLength;
        tipWorld = iViewport.windowToWorld(e);
    }
    if (!Reaches(iViewport.getWindowBounds(), k, e))
        return;
    ioBatch.tangentLine(key->get(), tipWorld, iColour);
    Vector corners[3];
    HandleCorners(e, d, iViewport, corners);
    ioBatch.handle(corners, iColour, iSelected);
}

void DrawCurvePass(const Splinor& iCurve, bool iSelected, Selection& iSelection, const Viewport& iViewport,
    const CurveLook& iLook, const HitRecord& iHover)
{
    {
        StripRun run;
        ForSegmentsInView(iCurve, iViewport, [&](const Segment& segment) {
            if (!Names(iHover, &segment, HitRecord::cSegment) && iSelection.isSelected(segment) == iSelected)
                run.add(segment, iViewport, iLook.segment(segment, true, iSelected));
            else
                run.flush();
        });
    }

    GlyphBatch& batch = GlyphBatch::shared();
    const Vector pixel = iViewport.pixelSize();
    ForSegmentsInView(iCurve, iViewport, [&](const Segment& segment) {
        const Keyframe* key = segment.getLeftKey();
        if (!key || Names(iHover, key, HitRecord::cKeyframe) || iSelection.isSelected(*key) != iSelected)
            return;
        batch.keyframe(
            key->get(), iLook.item(iSelected, iLook.isLocked(*key), false), pixel, iSelected, key->isBreakdown());
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
        const std::pair<Tangent*, Keyframe*> pairs[2]
            = { { segment.getInTangent(), segment.getRightKey() }, { segment.getOutTangent(), segment.getLeftKey() } };
        for (const auto& [tangent, key] : pairs) {
            if (!tangent || !key || Names(iHover, tangent, HitRecord::cTangentHandle))
                continue;
            if (iSelection.isSelected(*tangent) == iSelected && IsTangentVisible(*tangent, iSelection))
                AddTangent(batch, *tangent, iLook.item(iSelected, iLook.isLocked(*key), true), iSelected, iViewport);
        }
    }
    batch.flush();
}

} // namespace

void BeginCurveStage()
{
    glHint(GL_LINE_SMOOTH_HINT, GL_NICEST);
    glHint(GL_POLYGON_SMOOTH_HINT, GL_NICEST);
    glEnable(GL_LINE_SMOOTH);
    glEnable(GL_POLYGON_SMOOTH);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

void DrawSegment(const Segment& iSegment, const Viewport& iViewport, const QColor& iColour)
{
    std::vector<Vector>& points = SampleBuffer();
    SampleSegment(iSegment, iViewport, points);
    DrawSamples(points, iColour);
}

void DrawVelocitySegment(const Segment& iSegment, const Viewport& iViewport, const QColor& iColour)
{
    DrawDerivative(iSegment, iViewport, iColour, &SplinorLib::v19::Interpolator::sampleFirstDerivative);
}

void DrawAccelerationSegment(const Segment& iSegment, const Viewport& iViewport, const QColor& iColour)
{
    DrawDerivative(iSegment, iViewport, iColour, &SplinorLib::v19::Interpolator::sampleSecondDerivative);
}

void DrawUnselectedCurve(
    const Splinor& iCurve, const Viewport& iViewport, const GraphViewColors& iColours, const HitRecord& iHover)
{
    if (Names(iHover, &iCurve, HitRecord::cCurve))
        return;
    const CurveLook look(iCurve, iColours);
    StripRun run;
    ForSegmentsInView(iCurve, iViewport,
        [&](const Segment& segment) { run.add(segment, iViewport, look.segment(segment, false, false)); });
}

void DrawSelectedCurve(const Splinor& iCurve, Selection& iSelection, const Viewport& iViewport,
    const GraphViewColors& iColours, const HitRecord& iHover)
{
    if (Names(iHover, &iCurve, HitRecord::cCurve))
        return;
    const CurveLook look(iCurve, iColours);
    DrawCurvePass(iCurve, false, iSelection, iViewport, look, iHover);
    DrawCurvePass(iCurve, true, iSelection, iViewport, look, iHover);
}

void DrawHoverItem(
    const HitRecord& iHover, Selection& iSelection, const Viewport& iViewport, const GraphViewColors& iColours)
{
    const QColor& hover = iColours.getColor(GraphViewColors::cHoverColor);
    switch (iHover.getType()) {
    case HitRecord::cCurve:
        ForSegmentsInView(
            *iHover.getCurve(), iViewport, [&](const Segment& segment) { DrawSegment(segment, iViewport, hover); });
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
        const bool locked = curve && key && (IsLocked(*curve) || IsLocked(*key));
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
    ForSegmentsInView(
        iCurve, iViewport, [&](const Segment& segment) { DrawVelocitySegment(segment, iViewport, colour); });
}

void DrawAcceleration(const Splinor& iCurve, const Viewport& iViewport, const GraphViewColors& iColours)
{
    const QColor& colour = iColours.getColor(GraphViewColors::cAccelerationColor);
    ForSegmentsInView(
        iCurve, iViewport, [&](const Segment& segment) { DrawAccelerationSegment(segment, iViewport, colour); });
}

void DrawKeyframeGlyph(
    const Vector& iPosition, const QColor& iColour, const Vector& iPixelSize, bool iFilled, bool iBreakdown)
{
    GlyphBatch& batch = GlyphBatch::shared();
    batch.keyframe(iPosition, Rgb(iColour), iPixelSize, iFilled, iBreakdown);
    batch.flush();
}

void DrawTangent(Tangent& iTangent, const GraphViewColors& iColours, const HitRecord& iHover, bool iLocked,
    Selection& iSelection, const Viewport& iViewport)
{
    const Splinor* curve = iTangent.getOwningCurve();
    if (!curve)
        return;
    const bool selected = iSelection.isSelected(iTangent);
    const Rgb colour = Names(iHover, &iTangent, HitRecord::cTangentHandle)
        ? Rgb(iColours.getColor(GraphViewColors::cHoverColor))
        : CurveLook(*curve, iColours).item(selected, iLocked, true);
    GlyphBatch& batch = GlyphBatch::shared();
    AddTangent(batch, iTangent, colour, selected, iViewport);
    batch.flush();
}

void DrawTangentGlyph(
    const Vector& iBase, const Vector& iDirection, const QColor& iColour, bool iFilled, const Viewport& iViewport)
{
    Vector corners[3];
    HandleCorners(iBase, iDirection, iViewport, corners);
    GlyphBatch& batch = GlyphBatch::shared();
    batch.handle(corners, Rgb(iColour), iFilled);
    batch.flush();
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
