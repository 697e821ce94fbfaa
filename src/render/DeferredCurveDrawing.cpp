#include "render/DeferredCurveDrawing.h"

#include "render/GLPlacement.h"
#include "render/GLSentries.h"
#include "render/KeptGLObjects.h"
#include "render/OcclusionMask.h"
#include "render/PaintedFills.h"

#include <QColor>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

namespace {

using Point = GLPlacement::Point;

constexpr float cLineWidth = 1.0f;
/// A software rasteriser starts on what it is given only when it is flushed, or when its store
/// of work is full. Flushing every few thousand primitives lets its threads rasterise while the
/// rest is submitted, rather than all of it after the last; a hardware driver sees a few more
/// submissions in a frame. The smaller the batches, the less is left to rasterise once the
/// last is sent: 3000 paints the dense selected view a few ms sooner than 8192 did.
constexpr int cPrimitivesPerFlush = 3000;

/// How GL draws each kind; a filled keyframe goes as a quad or as a point, see GLPlacement::pointSide.
constexpr GLenum cModes[GlyphArrays::cKinds] = { GL_QUADS, GL_LINES, GL_LINES, GL_TRIANGLES, GL_LINES };
/// How many entries of a kind's array make one of its primitives.
constexpr int cEntries[GlyphArrays::cKinds] = { GlyphArrays::cKeyFillEntries, 2, 2, 3, 2 };
constexpr int cStrip = GlyphArrays::cKinds;

/// A filled keyframe's corners as GL takes them, each with its colour.
void KeyFillCorners(const ColouredVertex* iEntries, ColouredVertex oCorners[4])
{
    Point corners[4];
    KeyframeCorners({ iEntries[0].x, iEntries[0].y }, { iEntries[1].x, iEntries[1].y },
        GlyphArrays::Shape(iEntries[1].a), corners);
    for (int i = 0; i < 4; ++i) {
        oCorners[i] = iEntries[0];
        oCorners[i].x = GLfloat(corners[i].x);
        oCorners[i].y = GLfloat(corners[i].y);
    }
}

struct Draw
{
    int kind; // of GlyphArrays, or cStrip
    int first, count; // vertices in the array of the kind
    GLfloat r, g, b; // a strip's colour
    /// GLPlacement::extent() of the vertices, worked out where they are held: on the thread
    /// that makes them, rather than on the one that culls them.
    Point extent;
    /// Where fills are painted, the depth GL draws this at: see Culling.
    GLfloat depth = 0.0f;
};

/// Kept primitives of a draw of glyphs, as GL takes them in one mode.
struct Run
{
    GLenum mode;
    const ColouredVertex* vertices;
    int count;
    bool opaque;
    GLfloat pointSide; // of points, in pixels
};

/// The outline in pixels of a primitive of iKind as GL will draw it, and how many corners it has.
int Outline(const GLPlacement& iPlacement, int iKind, const ColouredVertex* iEntries, Point oCorners[4])
{
    if (iKind != GlyphArrays::cKeyFills) {
        iPlacement.place(iEntries, cEntries[iKind], oCorners);
        return cEntries[iKind];
    }
    if (const double side = iPlacement.pointSide(iEntries)) {
        const Point centre = iPlacement(&iEntries[0].x);
        const double half = 0.5 * side;
        oCorners[0] = { centre.x - half, centre.y - half };
        oCorners[1] = { centre.x - half, centre.y + half };
        oCorners[2] = { centre.x + half, centre.y + half };
        oCorners[3] = { centre.x + half, centre.y - half };
        return 4;
    }
    ColouredVertex corners[4];
    KeyFillCorners(iEntries, corners);
    iPlacement.place(corners, 4, oCorners);
    return 4;
}

/// Whether every vertex is opaque.
bool Opaque(const ColouredVertex* iVertices, int iCount)
{
    return std::all_of(iVertices, iVertices + iCount, [](const ColouredVertex& iVertex) { return iVertex.isOpaque(); });
}

/// Appends the kept primitives of iCount entries of iKind (a flag at each primitive's first
/// entry) as runs of one mode each. A run points at the entries themselves where it can; what
/// it can't is copied to the end of ioVertices, which must have the room reserved: twice the
/// entries of filled keyframes and the entries of the rest.
void AppendRuns(int iKind, const ColouredVertex* iEntries, const char* iKept, int iCount, const GLPlacement& iPlacement,
    std::vector<ColouredVertex>& ioVertices, std::vector<Run>& ioRuns)
{
    const int perPrimitive = cEntries[iKind];
    const int count = iCount / perPrimitive * perPrimitive;
    if (iKind != GlyphArrays::cKeyFills) {
        const ColouredVertex* vertices = iEntries;
        int kept = count;
        if (!std::all_of(iKept, iKept + count, [](char iKeep) { return iKeep; })) {
            const std::size_t first = ioVertices.size();
            for (int i = 0; i < count; i += perPrimitive)
                if (iKept[i])
                    ioVertices.insert(ioVertices.end(), iEntries + i, iEntries + i + perPrimitive);
            vertices = ioVertices.data() + first;
            kept = int(ioVertices.size() - first);
        }
        ioRuns.push_back({ cModes[iKind], vertices, kept, Opaque(vertices, kept), 0.0f });
        return;
    }
    const std::size_t firstRun = ioRuns.size();
    for (int i = 0; i < count; i += perPrimitive) {
        if (!iKept[i])
            continue;
        const ColouredVertex* entries = iEntries + i;
        const GLfloat side = GLfloat(iPlacement.pointSide(entries));
        const GLenum mode = side > 0.0f ? GL_POINTS : GL_QUADS;
        if (ioRuns.size() == firstRun || ioRuns.back().mode != mode || ioRuns.back().pointSide != side)
            ioRuns.push_back({ mode, ioVertices.data() + ioVertices.size(), 0, true, side });
        if (mode == GL_POINTS) {
            ioVertices.push_back(entries[0]);
        } else {
            ColouredVertex corners[4];
            KeyFillCorners(entries, corners);
            ioVertices.insert(ioVertices.end(), corners, corners + 4);
        }
        Run& run = ioRuns.back();
        run.count = int(ioVertices.data() + ioVertices.size() - run.vertices);
        run.opaque = run.opaque && entries[0].isOpaque();
    }
}

/// The room AppendRuns() needs for the kinds' entries.
std::size_t RoomForRuns(const GlyphArrays& iGlyphs)
{
    std::size_t room = iGlyphs.keyFills.size();
    for (int kind = 0; kind < GlyphArrays::cKinds; ++kind)
        room += iGlyphs[kind].size();
    return room;
}

/// What one step of a deferred drawing held back, and which of its primitives stay: one flag a
/// primitive, at the index of its first entry (a strip's line starts at its vertex).
struct Part
{
    std::vector<PlainVertex> strips;
    GlyphArrays glyphs;
    std::vector<Draw> draws;
    std::vector<char> stripKept, glyphKept[GlyphArrays::cKinds];
    /// Once culled, the kept glyphs as runs: those of draw d from firstRuns[d] on, and up to
    /// firstRuns[d + 1]. Their vertices are the glyph arrays' own, or copies in readyVertices.
    std::vector<Run> runs;
    std::vector<std::size_t> firstRuns;
    std::vector<ColouredVertex> readyVertices;
    /// Whether the runs are being or have been made, and by which thread: see claim().
    std::atomic<int> readiness { cUnready };
    enum { cUnready, cClaimed, cReady };

    void clear()
    {
        strips.clear();
        for (int kind = 0; kind < GlyphArrays::cKinds; ++kind)
            glyphs[kind].clear();
        draws.clear();
        readiness = cUnready;
    }

    /// True for the one thread that is to make this part ready.
    bool claim()
    {
        int unready = cUnready;
        return readiness.compare_exchange_strong(unready, cClaimed);
    }

    void makeReady(const GLPlacement& iPlacement)
    {
        runs.clear();
        firstRuns.clear();
        readyVertices.clear();
        readyVertices.reserve(RoomForRuns(glyphs)); // no reallocation: runs point into it
        for (const Draw& draw : draws) {
            firstRuns.push_back(runs.size());
            if (draw.kind != cStrip)
                AppendRuns(draw.kind, &glyphs[draw.kind][std::size_t(draw.first)],
                    &glyphKept[draw.kind][std::size_t(draw.first)], draw.count, iPlacement, readyVertices, runs);
        }
        firstRuns.push_back(runs.size());
    }

    void keepAll()
    {
        stripKept.assign(strips.size(), 1);
        for (int kind = 0; kind < GlyphArrays::cKinds; ++kind)
            glyphKept[kind].assign(glyphs[kind].size(), 1);
    }
};

/// What an open deferred drawing holds, in the order drawn, kept from paint to paint so that
/// the buffers stay.
struct Store
{
    std::vector<std::unique_ptr<Part>> parts; // the first `used` hold this drawing's
    std::size_t used = 0;
    OcclusionMask mask;
    PaintedFills fills;

    Part& add()
    {
        if (used == parts.size())
            parts.push_back(std::make_unique<Part>());
        Part& part = *parts[used++];
        part.clear();
        return part;
    }
    void clear() { used = 0; }
};

/// This thread's store: a host may paint editors on threads of their own.
Store& TheStore()
{
    thread_local Store store;
    return store;
}

/// Where the glyph routines on this thread hold what they draw; none while no drawing is open,
/// and they draw at once.
thread_local Part* tPart = nullptr;

/// The arrays glyphs are gathered in before they are drawn at once.
GlyphArrays& ImmediateArrays()
{
    thread_local GlyphArrays arrays;
    return arrays;
}

bool IsFill(int iKind)
{
    return iKind == GlyphArrays::cKeyFills || iKind == GlyphArrays::cHandleFills;
}

/// Whether two opaque primitives light the pixels they share alike, drawn in either order.
bool SameOpaqueColour(const ColouredVertex& iA, const ColouredVertex& iB)
{
    return iA.isOpaque() && iB.isOpaque() && iA.r == iB.r && iA.g == iB.g && iA.b == iB.b;
}

/// Marks the primitives of iDraw the mask doesn't hide, and adds each opaque fill that stays to
/// the mask. Whatever is drawn after a primitive is looked at before it, except within a run of
/// opaque fills of one colour: there order changes no pixel, so a fill may be left out wherever
/// the others of its run cover it, whether drawn before or after it. Looked at from the back, each
/// fill of a dense run keeps the sliver its successor leaves; looked at every other one first and
/// then those between, these fall within their neighbours on both sides. The handles of a curve
/// alternate in and out, so each direction then goes in turn: 10% fewer stay in a dense view.
void CullGlyphs(const Draw& iDraw, const GLPlacement& iPlacement, Part& ioPart, OcclusionMask& ioMask)
{
    const int perPrimitive = cEntries[iDraw.kind];
    const bool fill = IsFill(iDraw.kind);
    const std::vector<ColouredVertex>& vertices = ioPart.glyphs[iDraw.kind];
    std::vector<char>& kept = ioPart.glyphKept[iDraw.kind];
    const double slack
        = iPlacement.slack(iDraw.extent.x, iDraw.extent.y) + (fill ? iPlacement.fillMargin : iPlacement.lineMargin);
    const auto cull = [&](int iFirst) {
        const ColouredVertex* primitive = &vertices[std::size_t(iFirst)];
        Point corners[4];
        const int count = Outline(iPlacement, iDraw.kind, primitive, corners);
        bool hidden;
        if (!fill)
            hidden = ioMask.hidesLine(corners[0], corners[1], slack);
        else if (primitive[0].isOpaque())
            hidden = ioMask.hidesOrCovers(corners, count, slack);
        else
            hidden = ioMask.hides(corners, count, slack);
        kept[std::size_t(iFirst)] = !hidden;
    };
    const int lastFirst = iDraw.first + (iDraw.count / perPrimitive - 1) * perPrimitive;
    for (int end = lastFirst; end >= iDraw.first;) {
        // The run from `begin` to `end`, its first entries, in the colour of `end`.
        int begin = end;
        if (fill)
            while (begin - perPrimitive >= iDraw.first
                && SameOpaqueColour(vertices[std::size_t(begin - perPrimitive)], vertices[std::size_t(end)]))
                begin -= perPrimitive;
        const int last = (end - begin) / perPrimitive;
        for (const int parity : { 0, 1 })
            for (int i = last - ((last ^ parity) & 1); i >= 0; i -= 2)
                cull(begin + i * perPrimitive);
        end = begin - perPrimitive;
    }
}

void CullStrip(const Draw& iDraw, const GLPlacement& iPlacement, Part& ioPart, const OcclusionMask& iMask)
{
    const PlainVertex* points = &ioPart.strips[std::size_t(iDraw.first)];
    const double slack = iPlacement.slack(iDraw.extent.x, iDraw.extent.y) + iPlacement.lineMargin;
    for (int i = 0; i + 1 < iDraw.count; ++i) {
        Point ends[2];
        iPlacement.place(&points[i], 2, ends);
        ioPart.stripKept[std::size_t(iDraw.first + i)] = !iMask.hidesLine(ends[0], ends[1], slack);
    }
}

/// Paints the fills of iDraw from the last to the first, which GL then need not draw; those
/// that reach out of the viewport are culled, as GL draws them.
void PaintGlyphs(const Draw& iDraw, const GLPlacement& iPlacement, Part& ioPart, OcclusionMask& ioMask,
    PaintedFills& ioFills)
{
    const double slack = iPlacement.slack(iDraw.extent.x, iDraw.extent.y);
    const int perPrimitive = cEntries[iDraw.kind];
    const std::vector<ColouredVertex>& vertices = ioPart.glyphs[iDraw.kind];
    std::vector<char>& kept = ioPart.glyphKept[iDraw.kind];
    const int lastFirst = iDraw.first + (iDraw.count / perPrimitive - 1) * perPrimitive;
    for (int first = lastFirst; first >= iDraw.first; first -= perPrimitive) {
        const ColouredVertex* primitive = &vertices[std::size_t(first)];
        Point corners[4];
        const int count = Outline(iPlacement, iDraw.kind, primitive, corners);
        std::uint32_t rgba;
        std::memcpy(&rgba, &primitive->r, sizeof rgba);
        kept[std::size_t(first)] = !ioFills.paint(corners, count, rgba, iDraw.depth, ioMask)
            && !ioMask.hidesOrCovers(corners, count, slack);
    }
}

/// Culls parts from the last drawn to the first, and the draws of each from its last to its
/// first, so that whatever may hide a primitive is in the mask before it is looked at.
///
/// Where it can, it paints opaque fills itself, and gives each draw a depth: the last draw's is
/// nearest 1, and each before it some steps of the depth buffer below, more than GL's rounding of
/// a depth could mix. GL then draws the rest over the painted pixels with the depth test: what is
/// drawn before the fill that lights a pixel leaves that pixel alone, and what is drawn after it
/// draws over it, as it would have with every fill drawn in turn.
class Culling
{
public:
    Culling(OcclusionMask& ioMask, PaintedFills& ioFills)
        : mMask(ioMask)
        , mFills(ioFills)
        , mOn(mPlacement.read())
    {
        if (!mOn)
            return;
        mMask.reset(mPlacement.width, mPlacement.height);
        mFills.reset(mPlacement.width, mPlacement.height);
        // GL fills whole pixels and the depth buffer can order draws, with room for a good many.
        mPainting = mPlacement.fillMargin == 0.0 && mPlacement.flatDepth && mPlacement.depthBits >= 16
            && mPlacement.depthBits <= 32 && PaintedFills::canDraw();
        if (mPainting) {
            mDepthStep = 4.0 / (std::ldexp(1.0, mPlacement.depthBits) - 1.0);
            mDepthRanks = int(1.0 / mDepthStep) - 2;
            mFills.clearDepth(mPlacement.left, mPlacement.bottom);
        }
    }

    void cull(Part& ioPart)
    {
        ioPart.keepAll();
        if (!mOn)
            return;
        for (auto draw = ioPart.draws.rbegin(); draw != ioPart.draws.rend(); ++draw) {
            // Draws past the room left share a depth below all others, and are not painted.
            const bool ranked = mRank < mDepthRanks;
            draw->depth = GLfloat(ranked ? 1.0 - ++mRank * mDepthStep : 0.5 * mDepthStep);
            mCovering = mCovering || IsFill(draw->kind);
            if (!mCovering)
                continue;
            if (draw->kind == cStrip)
                CullStrip(*draw, mPlacement, ioPart, mMask);
            else if (ranked && paints(*draw, ioPart))
                PaintGlyphs(*draw, mPlacement, ioPart, mMask, mFills);
            else
                CullGlyphs(*draw, mPlacement, ioPart, mMask);
        }
    }

    const GLPlacement& placement() const { return mPlacement; }
    /// Whether fills were painted: draws must then go to GL each at its depth.
    bool painted() const { return mPainting && !mFills.empty(); }

private:
    /// Whether the draw is of opaque fills that GL would place where they are painted: its float
    /// error, which grows with the size of the coordinates, is small beside a pixel. Beyond, GL's
    /// lines would stray from painted fills, and GL draws the fills it places alike.
    bool paints(const Draw& iDraw, const Part& iPart) const
    {
        if (!mPainting || !IsFill(iDraw.kind)
            || !(mPlacement.slack(iDraw.extent.x, iDraw.extent.y) <= cPaintedSlack))
            return false;
        const int perPrimitive = cEntries[iDraw.kind];
        const ColouredVertex* vertices = &iPart.glyphs[iDraw.kind][std::size_t(iDraw.first)];
        for (int i = 0; i + perPrimitive <= iDraw.count; i += perPrimitive)
            if (!vertices[i].isOpaque())
                return false;
        return true;
    }

    static constexpr double cPaintedSlack = 0.25;

    GLPlacement mPlacement;
    OcclusionMask& mMask;
    PaintedFills& mFills;
    bool mOn;
    bool mPainting = false;
    bool mCovering = false; // lines after the last fill have nothing to hide them
    double mDepthStep = 0.0;
    int mDepthRanks = 0, mRank = 0;
};

void SetColour(const QColor& iColour, GLfloat& oR, GLfloat& oG, GLfloat& oB)
{
    oR = GLfloat(iColour.redF());
    oG = GLfloat(iColour.greenF());
    oB = GLfloat(iColour.blueF());
}

/// Where GL reads a part's vertices from: a buffer object kept for the part's place in the
/// drawing and filled with the part's arrays, or, where the context keeps none, the arrays
/// themselves. Handed from client memory, the vertices would go through a software rasteriser's
/// stream buffers, made anew and given back to the system as they fill.
class PartSource
{
public:
    PartSource(KeptGLObjects* ioKept, std::size_t iIndex, const Part& iPart)
    {
        if (!ioKept)
            return;
        add(iPart.strips);
        for (int kind = 0; kind < GlyphArrays::cKinds; ++kind)
            add(iPart.glyphs[kind]);
        add(iPart.readyVertices);
        // Only the arrays that runs draw from go to GL: most glyphs are painted or hidden, and
        // those that stay are copied out of their arrays.
        bool drawn[cBlocks] = { true };
        for (const Run& run : iPart.runs)
            if (const int block = blockOf(run.vertices); block >= 0)
                drawn[block] = true;
        for (int i = 0; i < cBlocks; ++i)
            mSizes[i] = drawn[i] ? mSizes[i] : 0;
        mBuffer = ioKept->fillVertexBuffer(iIndex, mBlocks, mSizes, cBlocks, mOffsets);
    }

    /// The source of the vertex at iAddress, in one of the part's arrays.
    VertexSource operator()(const void* iAddress) const
    {
        const int block = mBuffer ? blockOf(iAddress) : -1;
        if (block < 0)
            return VertexSource::InClientMemory(iAddress);
        const auto offset
            = reinterpret_cast<std::uintptr_t>(iAddress) - reinterpret_cast<std::uintptr_t>(mBlocks[block]);
        return VertexSource::InBuffer(mBuffer, mOffsets[block] + offset);
    }

private:
    static constexpr int cBlocks = 2 + GlyphArrays::cKinds;

    template <class Vertex> void add(const std::vector<Vertex>& iVertices)
    {
        mBlocks[mCount] = iVertices.data();
        mSizes[mCount++] = iVertices.size() * sizeof(Vertex);
    }

    /// The block that holds iAddress, or -1.
    int blockOf(const void* iAddress) const
    {
        const auto address = reinterpret_cast<std::uintptr_t>(iAddress);
        for (int i = 0; i < mCount; ++i) {
            const auto begin = reinterpret_cast<std::uintptr_t>(mBlocks[i]);
            if (address >= begin && address - begin < mSizes[i])
                return i;
        }
        return -1;
    }

    const void* mBlocks[cBlocks] = {};
    std::size_t mSizes[cBlocks] = {}, mOffsets[cBlocks] = {};
    int mCount = 0;
    GLuint mBuffer = 0;
};

/// Draws a strip's runs of kept lines, each as a strip of its own, and gives the lines drawn.
int DrawKeptStrip(const Draw& iDraw, const Part& iPart, const PartSource& iSource)
{
    int lines = 0;
    glColor3f(iDraw.r, iDraw.g, iDraw.b);
    const int end = iDraw.first + iDraw.count - 1; // the last line starts here
    int run = iDraw.first;
    while (run < end) {
        while (run < end && !iPart.stripKept[std::size_t(run)])
            ++run;
        int next = run;
        while (next < end && iPart.stripKept[std::size_t(next)])
            ++next;
        if (next > run)
            DrawLineStrip(iSource(&iPart.strips[std::size_t(run)]), next - run + 1);
        lines += next - run;
        run = next;
    }
    return lines;
}

/// Opaque fills, each in one colour, drawn as they light whole pixels: without blending, and
/// with one colour a primitive. The pixels are the same, and a software rasteriser's shader does
/// less for each.
class PlainFills
{
public:
    PlainFills()
        : mBlend(glIsEnabled(GL_BLEND))
    {
        glGetIntegerv(GL_SHADE_MODEL, &mShadeModel);
        glDisable(GL_BLEND);
        glShadeModel(GL_FLAT);
    }
    ~PlainFills()
    {
        if (mBlend)
            glEnable(GL_BLEND);
        glShadeModel(GLenum(mShadeModel));
    }
    PlainFills(const PlainFills&) = delete;
    PlainFills& operator=(const PlainFills&) = delete;

private:
    GLboolean mBlend;
    GLint mShadeModel = GL_SMOOTH;
};

/// Points drawn as squares of a side in pixels, whatever the host set for points.
class PointSprites
{
public:
    explicit PointSprites(GLfloat iSide)
        : mSprites(glIsEnabled(GL_POINT_SPRITE))
    {
        glGetFloatv(GL_POINT_SIZE, &mSize);
        glEnable(GL_POINT_SPRITE);
        glPointSize(iSide);
    }
    ~PointSprites()
    {
        glPointSize(mSize);
        if (!mSprites)
            glDisable(GL_POINT_SPRITE);
    }
    PointSprites(const PointSprites&) = delete;
    PointSprites& operator=(const PointSprites&) = delete;

private:
    GLboolean mSprites;
    GLfloat mSize = 1.0f;
};

/// A run of a draw of iKind, read from iSource, and how many primitives it is. iPlainFills:
/// whether fills light whole pixels, so that opaque ones may be drawn as PlainFills.
int DrawRun(int iKind, const Run& iRun, VertexSource iSource, bool iPlainFills)
{
    if (iRun.count <= 0)
        return 0;
    std::optional<PlainFills> plain;
    if (iPlainFills && IsFill(iKind) && iRun.opaque)
        plain.emplace();
    std::optional<PointSprites> sprites;
    if (iRun.mode == GL_POINTS)
        sprites.emplace(iRun.pointSide);
    DrawColouredVertices(iRun.mode, iSource, iRun.count);
    return iRun.count / VerticesPerPrimitive(iRun.mode);
}

/// The work of a drawing's last steps on two threads. A second thread runs the steps from the
/// last while this one culls each part as soon as it is held: the model is read by one thread at
/// a time, and the parts culled here are those the other has finished with. Then, while this
/// thread culls the rest and draws from the first part on, the other makes culled parts ready to
/// draw from the last part back, until the two meet. Without a core to spare, this thread does
/// it all.
class Steps
{
public:
    Steps(const std::vector<std::function<void()>>& iSteps, std::size_t iFirstPart, const GLPlacement& iPlacement,
        Store& ioStore)
        : mSteps(iSteps)
        , mFirstPart(iFirstPart)
        , mPlacement(iPlacement)
        , mStore(ioStore)
        , mHeldFrom(iSteps.size())
        , mCulledFrom(ioStore.used)
    {
        if (mSteps.size() > 1 && std::thread::hardware_concurrency() > 1) {
            try {
                mWorker = std::thread([this] { work(); });
            } catch (const std::system_error&) {
            }
        }
        if (!mWorker.joinable())
            for (std::size_t step = 0; step < mSteps.size(); ++step)
                run(step);
    }

    /// Whatever happens on this thread, the other is waited for: it uses what this frame holds.
    ~Steps()
    {
        if (mWorker.joinable()) {
            {
                const std::lock_guard<std::mutex> lock(mMutex);
                mStopped = true;
            }
            mChanged.notify_all();
            mWorker.join();
        }
    }
    Steps(const Steps&) = delete;
    Steps& operator=(const Steps&) = delete;

    /// Culls every part, from the last to the first, as each is held.
    void cullAll(Culling& ioCulling)
    {
        for (std::size_t part = mStore.used; part-- > 0;) {
            if (part >= mFirstPart && mWorker.joinable()) {
                std::unique_lock<std::mutex> lock(mMutex);
                mChanged.wait(lock, [&] { return mHeldFrom <= part - mFirstPart || mFailure; });
                if (mFailure)
                    std::rethrow_exception(mFailure);
            }
            ioCulling.cull(*mStore.parts[part]);
            if (mWorker.joinable()) {
                {
                    const std::lock_guard<std::mutex> lock(mMutex);
                    mCulledFrom = part;
                }
                mChanged.notify_all();
            }
        }
    }

    /// A culled part, ready to draw.
    const Part& ready(std::size_t iPart)
    {
        Part& part = *mStore.parts[iPart];
        for (;;) {
            if (part.claim()) {
                part.makeReady(mPlacement);
                part.readiness = Part::cReady;
                return part;
            }
            std::unique_lock<std::mutex> lock(mMutex);
            mChanged.wait(lock, [&] { return part.readiness != Part::cClaimed; });
            if (part.readiness == Part::cReady)
                return part;
            // The other thread gave it up: this one tries.
        }
    }

private:
    void run(std::size_t iStep)
    {
        struct Holding
        {
            explicit Holding(Part* iPart)
                : before(tPart)
            {
                tPart = iPart;
            }
            ~Holding() { tPart = before; }
            Part* before;
        } holding(mStore.parts[mFirstPart + iStep].get());
        mSteps[iStep]();
    }

    void work()
    {
        for (std::size_t step = mSteps.size(); step-- > 0;) {
            try {
                run(step);
            } catch (...) {
                const std::lock_guard<std::mutex> lock(mMutex);
                mFailure = std::current_exception();
                mChanged.notify_all();
                return;
            }
            {
                const std::lock_guard<std::mutex> lock(mMutex);
                mHeldFrom = step;
                if (mStopped)
                    return;
            }
            mChanged.notify_all();
        }
        for (std::size_t index = mStore.used; index-- > 0;) {
            {
                std::unique_lock<std::mutex> lock(mMutex);
                mChanged.wait(lock, [&] { return mCulledFrom <= index || mStopped; });
                if (mStopped)
                    return;
            }
            Part& part = *mStore.parts[index];
            if (!part.claim())
                return; // the drawing has come this far: the parts before are its own
            int readiness = Part::cReady;
            try {
                part.makeReady(mPlacement);
            } catch (...) {
                readiness = Part::cUnready; // left to the drawing, where a failure can be reported
            }
            {
                // Under the lock, so that a wait for this part can't miss it.
                const std::lock_guard<std::mutex> lock(mMutex);
                part.readiness = readiness;
            }
            mChanged.notify_all();
            if (readiness != Part::cReady)
                return;
        }
    }

    const std::vector<std::function<void()>>& mSteps;
    std::size_t mFirstPart;
    const GLPlacement& mPlacement;
    Store& mStore;
    std::thread mWorker;
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::size_t mHeldFrom; // steps from this one on are held
    std::size_t mCulledFrom; // parts from this one on are culled
    bool mStopped = false;
    std::exception_ptr mFailure;
};

} // namespace

std::vector<ColouredVertex>& GlyphArrays::operator[](int iKind)
{
    return const_cast<std::vector<ColouredVertex>&>(static_cast<const GlyphArrays&>(*this)[iKind]);
}

const std::vector<ColouredVertex>& GlyphArrays::operator[](int iKind) const
{
    const std::vector<ColouredVertex>* const kinds[cKinds]
        = { &keyFills, &keyOutlines, &tangentLines, &handleFills, &handleOutlines };
    return *kinds[iKind];
}

void KeyframeCorners(const SplinorLib::v19::Vector2D<double>& iCentre, const SplinorLib::v19::Vector2D<double>& iHalf,
    GlyphArrays::Shape iShape, SplinorLib::v19::Vector2D<double> oCorners[4])
{
    const double x = iCentre.x, y = iCentre.y, hx = iHalf.x, hy = iHalf.y;
    if (iShape == GlyphArrays::cDiamond) {
        oCorners[0] = { x - hx, y };
        oCorners[1] = { x, y - hy };
        oCorners[2] = { x + hx, y };
        oCorners[3] = { x, y + hy };
    } else {
        oCorners[0] = { x - hx, y - hy };
        oCorners[1] = { x - hx, y + hy };
        oCorners[2] = { x + hx, y + hy };
        oCorners[3] = { x + hx, y - hy };
    }
}

GlyphArrays::Mark GlyphArrays::mark()
{
    Mark mark;
    for (int kind = 0; kind < cKinds; ++kind)
        mark.sizes[kind] = (*this)[kind].size();
    return mark;
}

DeferredCurveDrawing::DeferredCurveDrawing()
    : mOwner(!tPart)
    , mThread(std::this_thread::get_id())
{
    if (mOwner) {
        Store& store = TheStore();
        store.clear();
        tPart = &store.add();
    }
}

DeferredCurveDrawing::~DeferredCurveDrawing()
{
    if (isOpenHere()) {
        TheStore().clear();
        tPart = nullptr;
    }
}

bool DeferredCurveDrawing::isOpenHere() const
{
    return mOwner && tPart && mThread == std::this_thread::get_id();
}

void DeferredCurveDrawing::finish()
{
    finish({});
}

void DeferredCurveDrawing::finish(const std::vector<std::function<void()>>& iLastSteps)
{
    if (!isOpenHere()) {
        for (const auto& step : iLastSteps)
            step();
        return;
    }
    Store& store = TheStore();
    // Whatever happens from here on, nothing stays held.
    struct Clearing
    {
        Store& store;
        ~Clearing() { store.clear(); }
    } clearing { store };
    const std::size_t firstStep = store.used;
    for (std::size_t i = 0; i < iLastSteps.size(); ++i)
        store.add();
    tPart = nullptr;

    Culling culling(store.mask, store.fills);
    // What is drawn so far is rasterised while the rest is culled.
    glFlush();
    Steps steps(iLastSteps, firstStep, culling.placement(), store);
    steps.cullAll(culling);

    const bool painted = culling.painted();
    std::optional<GLAttributeSentry> depthState;
    if (painted) {
        depthState.emplace(GL_DEPTH_BUFFER_BIT | GL_ENABLE_BIT | GL_VIEWPORT_BIT);
        store.fills.draw(culling.placement().left, culling.placement().bottom);
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_GREATER);
        glDepthMask(GL_FALSE);
    }
    glLineWidth(cLineWidth);
    const bool plainFills = !SmoothsPolygons();
    KeptGLObjects* const kept = KeptGLObjects::current();
    int sinceFlush = 0;
    for (std::size_t i = 0; i < store.used; ++i) {
        const Part& part = steps.ready(i);
        const PartSource source(kept, i, part);
        for (std::size_t d = 0; d < part.draws.size(); ++d) {
            const Draw& draw = part.draws[d];
            if (painted)
                glDepthRange(draw.depth, draw.depth);
            if (draw.kind == cStrip)
                sinceFlush += DrawKeptStrip(draw, part, source);
            for (std::size_t run = part.firstRuns[d]; run < part.firstRuns[d + 1]; ++run)
                sinceFlush += DrawRun(draw.kind, part.runs[run], source(part.runs[run].vertices), plainFills);
        }
        if (sinceFlush >= cPrimitivesPerFlush) {
            glFlush();
            sinceFlush = 0;
        }
    }
}

void DeferredCurveDrawing::strip(const std::vector<PlainVertex>& iPoints, const QColor& iColour)
{
    if (iPoints.size() < 2)
        return;
    Draw draw { cStrip, 0, int(iPoints.size()), 0.0f, 0.0f, 0.0f, {} };
    SetColour(iColour, draw.r, draw.g, draw.b);
    if (!tPart) {
        glColor3f(draw.r, draw.g, draw.b);
        glLineWidth(cLineWidth);
        DrawLineStrip(iPoints);
        return;
    }
    draw.first = int(tPart->strips.size());
    draw.extent = GLPlacement::extent(iPoints.data(), draw.count);
    tPart->draws.push_back(draw);
    tPart->strips.insert(tPart->strips.end(), iPoints.begin(), iPoints.end());
}

GlyphArrays& DeferredCurveDrawing::glyphArrays()
{
    return tPart ? tPart->glyphs : ImmediateArrays();
}

void DeferredCurveDrawing::glyphs(const GlyphArrays::Mark& iFrom)
{
    if (tPart) {
        for (int kind = 0; kind < GlyphArrays::cKinds; ++kind) {
            const int first = int(iFrom.sizes[kind]);
            const int count = int(tPart->glyphs[kind].size()) - first;
            if (count > 0)
                tPart->draws.push_back({ kind, first, count, 0.0f, 0.0f, 0.0f,
                    GLPlacement::extent(&tPart->glyphs[kind][std::size_t(first)], count) });
        }
        return;
    }
    glLineWidth(cLineWidth);
    GlyphArrays& arrays = ImmediateArrays();
    GLPlacement placement;
    placement.read();
    const bool plainFills = !SmoothsPolygons();
    thread_local std::vector<char> kept;
    thread_local std::vector<ColouredVertex> copies;
    thread_local std::vector<Run> runs;
    copies.clear();
    copies.reserve(RoomForRuns(arrays));
    for (int kind = 0; kind < GlyphArrays::cKinds; ++kind) {
        std::vector<ColouredVertex>& entries = arrays[kind];
        const std::size_t first = std::min(iFrom.sizes[kind], entries.size());
        kept.assign(entries.size() - first, 1);
        runs.clear();
        AppendRuns(kind, entries.data() + first, kept.data(), int(kept.size()), placement, copies, runs);
        for (const Run& run : runs)
            DrawRun(kind, run, VertexSource::InClientMemory(run.vertices), plainFills);
        entries.resize(first);
    }
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
