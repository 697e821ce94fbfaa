#include "render/DeferredCurveDrawing.h"

#include "render/OcclusionMask.h"

#include <QColor>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

namespace {

using Point = OcclusionMask::Point;

constexpr float cLineWidth = 1.0f;

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

/// Whether the rasteriser is Mesa's llvmpipe, which ignores polygon smoothing and whose smoothed
/// lines were measured: the look of the others is not known here.
bool IsKnownRasteriser()
{
    const char* renderer = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
    return renderer && std::strstr(renderer, "llvmpipe");
}

constexpr GLenum cModes[GlyphArrays::cKinds] = { GL_QUADS, GL_LINES, GL_LINES, GL_TRIANGLES, GL_LINES };
constexpr int cStrip = GlyphArrays::cKinds;

struct Draw
{
    int kind; // of GlyphArrays, or cStrip
    int first, count; // vertices in the array of the kind
    GLfloat r, g, b; // a strip's colour
};

/// What an open deferred drawing holds, kept from paint to paint so that its buffers stay.
struct Store
{
    std::vector<PlainVertex> strips;
    GlyphArrays glyphs;
    std::vector<Draw> draws;
    // One flag a primitive, at the index of its first vertex: a strip's line starts at its vertex.
    std::vector<char> stripKept, glyphKept[GlyphArrays::cKinds];
    std::vector<ColouredVertex> scratch;
    OcclusionMask mask;

    void clear()
    {
        strips.clear();
        for (int kind = 0; kind < GlyphArrays::cKinds; ++kind)
            glyphs[kind].clear();
        draws.clear();
    }
};

Store& TheStore()
{
    static Store store;
    return store;
}

bool gOpen = false;

/// Where GL puts a vertex of the current matrices, in pixels from the viewport's corner.
class Placement
{
public:
    /// False unless the transform is a flat orthographic one onto a viewport of some size.
    bool read()
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
        const bool known = IsKnownRasteriser();
        GLint sampleBuffers = 0;
        glGetIntegerv(GL_SAMPLE_BUFFERS, &sampleBuffers);
        const bool multisampled = sampleBuffers > 0 && glIsEnabled(GL_MULTISAMPLE);
        fillMargin = multisampled || (glIsEnabled(GL_POLYGON_SMOOTH) && !known) ? cPartialPixel : 0.0;
        lineMargin = (multisampled ? cPartialPixel : 0.0) + (known ? 0.0 : cWiderLines);
        return std::isfinite(mXx + mXy + mX0 + mYx + mYy + mY0);
    }

    Point operator()(const GLfloat* iXY) const
    {
        const double x = iXY[0], y = iXY[1];
        return { mXx * x + mXy * y + mX0, mYx * x + mYy * y + mY0 };
    }

    /// The slack for a vertex: the rasteriser's own, and GL's float error, which grows with the
    /// size of the terms it sums.
    double slack(const GLfloat* iXY) const
    {
        const double x = std::abs(iXY[0]), y = std::abs(iXY[1]);
        const double largest = std::max(std::abs(mXx) * x + std::abs(mXy) * y + mTranslationX,
            std::abs(mYx) * x + std::abs(mYy) * y + mTranslationY);
        return cRasterSlack + cFloatUlps * FLT_EPSILON * (largest + std::max(width, height));
    }

    int width = 0, height = 0;
    /// Added to the slack of fills and of lines where the rasteriser may light more pixels than
    /// their centres, or than a measured line does.
    double fillMargin = 0.0, lineMargin = 0.0;

private:
    double mXx = 0, mXy = 0, mX0 = 0, mYx = 0, mYy = 0, mY0 = 0, mTranslationX = 0, mTranslationY = 0;
};

bool IsFill(int iKind)
{
    return iKind == GlyphArrays::cKeyFills || iKind == GlyphArrays::cHandleFills;
}

/// Marks, from iDraw's last primitive to its first, the primitives the mask doesn't hide, and
/// adds each opaque fill that stays to the mask.
void CullGlyphs(const Draw& iDraw, const Placement& iPlacement, Store& ioStore)
{
    const int perPrimitive = VerticesPerPrimitive(cModes[iDraw.kind]);
    const bool fill = IsFill(iDraw.kind);
    const std::vector<ColouredVertex>& vertices = ioStore.glyphs[iDraw.kind];
    std::vector<char>& kept = ioStore.glyphKept[iDraw.kind];
    for (int first = iDraw.first + (iDraw.count / perPrimitive - 1) * perPrimitive; first >= iDraw.first;
         first -= perPrimitive) {
        const ColouredVertex* primitive = &vertices[std::size_t(first)];
        Point corners[4];
        double slack = 0.0;
        for (int i = 0; i < perPrimitive; ++i) {
            corners[i] = iPlacement(&primitive[i].x);
            slack = std::max(slack, iPlacement.slack(&primitive[i].x));
        }
        slack += fill ? iPlacement.fillMargin : iPlacement.lineMargin;
        const bool hidden = fill ? ioStore.mask.hides(corners, perPrimitive, slack)
                                 : ioStore.mask.hidesLine(corners[0], corners[1], slack);
        kept[std::size_t(first)] = !hidden;
        if (fill && !hidden && primitive[0].a >= 1.0f)
            ioStore.mask.cover(corners, perPrimitive, slack);
    }
}

void CullStrip(const Draw& iDraw, const Placement& iPlacement, Store& ioStore)
{
    const PlainVertex* points = &ioStore.strips[std::size_t(iDraw.first)];
    for (int i = 0; i + 1 < iDraw.count; ++i) {
        const double slack
            = std::max(iPlacement.slack(&points[i].x), iPlacement.slack(&points[i + 1].x)) + iPlacement.lineMargin;
        ioStore.stripKept[std::size_t(iDraw.first + i)]
            = !ioStore.mask.hidesLine(iPlacement(&points[i].x), iPlacement(&points[i + 1].x), slack);
    }
}

void Cull(const Draw& iDraw, const Placement& iPlacement, Store& ioStore)
{
    if (iDraw.kind == cStrip)
        CullStrip(iDraw, iPlacement, ioStore);
    else
        CullGlyphs(iDraw, iPlacement, ioStore);
}

/// Walks the draws from the last to the first, so that whatever may hide a primitive is in the
/// mask before it is looked at.
void CullAll(const Placement& iPlacement, Store& ioStore)
{
    ioStore.mask.reset(iPlacement.width, iPlacement.height);
    bool covering = false; // lines after the last fill have nothing to hide them
    for (auto draw = ioStore.draws.rbegin(); draw != ioStore.draws.rend(); ++draw) {
        covering = covering || IsFill(draw->kind);
        if (covering)
            Cull(*draw, iPlacement, ioStore);
    }
}

void SetColour(const QColor& iColour, GLfloat& oR, GLfloat& oG, GLfloat& oB)
{
    oR = GLfloat(iColour.redF());
    oG = GLfloat(iColour.greenF());
    oB = GLfloat(iColour.blueF());
}

/// Draws a strip's runs of kept lines, each as a strip of its own.
void DrawKeptStrip(const Draw& iDraw, const Store& iStore)
{
    glColor3f(iDraw.r, iDraw.g, iDraw.b);
    const int end = iDraw.first + iDraw.count - 1; // the last line starts here
    int run = iDraw.first;
    while (run < end) {
        while (run < end && !iStore.stripKept[std::size_t(run)])
            ++run;
        int next = run;
        while (next < end && iStore.stripKept[std::size_t(next)])
            ++next;
        if (next > run)
            DrawLineStrip(&iStore.strips[std::size_t(run)], next - run + 1);
        run = next;
    }
}

void DrawKeptGlyphs(const Draw& iDraw, Store& ioStore)
{
    const GLenum mode = cModes[iDraw.kind];
    const int perPrimitive = VerticesPerPrimitive(mode);
    const ColouredVertex* vertices = &ioStore.glyphs[iDraw.kind][std::size_t(iDraw.first)];
    const auto kept = ioStore.glyphKept[iDraw.kind].begin() + iDraw.first;
    if (std::all_of(kept, kept + iDraw.count, [](char iKept) { return iKept; })) {
        DrawColouredVertices(mode, vertices, iDraw.count);
        return;
    }
    std::vector<ColouredVertex>& drawn = ioStore.scratch;
    drawn.clear();
    for (int i = 0; i + perPrimitive <= iDraw.count; i += perPrimitive)
        if (kept[i])
            drawn.insert(drawn.end(), vertices + i, vertices + i + perPrimitive);
    DrawColouredVertices(mode, drawn);
}

} // namespace

std::vector<ColouredVertex>& GlyphArrays::operator[](int iKind)
{
    std::vector<ColouredVertex>* const kinds[cKinds]
        = { &keyFills, &keyOutlines, &tangentLines, &handleFills, &handleOutlines };
    return *kinds[iKind];
}

GlyphArrays::Mark GlyphArrays::mark()
{
    Mark mark;
    for (int kind = 0; kind < cKinds; ++kind)
        mark.sizes[kind] = (*this)[kind].size();
    return mark;
}

DeferredCurveDrawing::DeferredCurveDrawing()
    : mOwner(!gOpen)
{
    if (mOwner) {
        TheStore().clear();
        gOpen = true;
    }
}

DeferredCurveDrawing::~DeferredCurveDrawing()
{
    if (mOwner && gOpen) {
        TheStore().clear();
        gOpen = false;
    }
}

void DeferredCurveDrawing::finish()
{
    if (!mOwner || !gOpen)
        return;
    gOpen = false;
    Store& store = TheStore();
    store.stripKept.assign(store.strips.size(), 1);
    for (int kind = 0; kind < GlyphArrays::cKinds; ++kind)
        store.glyphKept[kind].assign(store.glyphs[kind].size(), 1);
    Placement placement;
    if (placement.read())
        CullAll(placement, store);

    glLineWidth(cLineWidth);
    for (const Draw& draw : store.draws) {
        if (draw.kind == cStrip)
            DrawKeptStrip(draw, store);
        else
            DrawKeptGlyphs(draw, store);
    }
    store.clear();
}

void DeferredCurveDrawing::strip(const std::vector<PlainVertex>& iPoints, const QColor& iColour)
{
    if (iPoints.size() < 2)
        return;
    Draw draw { cStrip, 0, int(iPoints.size()), 0.0f, 0.0f, 0.0f };
    SetColour(iColour, draw.r, draw.g, draw.b);
    if (!gOpen) {
        glColor3f(draw.r, draw.g, draw.b);
        glLineWidth(cLineWidth);
        DrawLineStrip(iPoints);
        return;
    }
    Store& store = TheStore();
    draw.first = int(store.strips.size());
    store.draws.push_back(draw);
    store.strips.insert(store.strips.end(), iPoints.begin(), iPoints.end());
}

GlyphArrays& DeferredCurveDrawing::glyphArrays()
{
    return TheStore().glyphs;
}

void DeferredCurveDrawing::glyphs(const GlyphArrays::Mark& iFrom)
{
    Store& store = TheStore();
    if (gOpen) {
        for (int kind = 0; kind < GlyphArrays::cKinds; ++kind) {
            const int first = int(iFrom.sizes[kind]);
            const int count = int(store.glyphs[kind].size()) - first;
            if (count > 0)
                store.draws.push_back({ kind, first, count, 0.0f, 0.0f, 0.0f });
        }
        return;
    }
    glLineWidth(cLineWidth);
    for (int kind = 0; kind < GlyphArrays::cKinds; ++kind) {
        std::vector<ColouredVertex>& vertices = store.glyphs[kind];
        const std::size_t first = std::min(iFrom.sizes[kind], vertices.size());
        DrawColouredVertices(cModes[kind], vertices.data() + first, int(vertices.size() - first));
        vertices.resize(first);
    }
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
