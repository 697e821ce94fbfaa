#include "render/DeferredCurveDrawing.h"

#include "render/OcclusionMask.h"

#include <QColor>

#include <algorithm>
#include <atomic>
#include <cfloat>
#include <cmath>
#include <condition_variable>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

namespace {

using Point = OcclusionMask::Point;

constexpr float cLineWidth = 1.0f;
/// A software rasteriser starts on what it is given only when it is flushed, or when its store
/// of work is full. Flushing every few thousand primitives lets its threads rasterise while the
/// rest is submitted, rather than all of it after the last; a hardware driver sees a few more
/// submissions in a frame. The smaller the batches, the less is left to rasterise once the
/// last is sent: 3000 paints the dense selected view a few ms sooner than 8192 did.
constexpr int cPrimitivesPerFlush = 3000;

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

/// Whether polygons may light their edge pixels in part, blending them with what lies below.
bool SmoothsPolygons()
{
    return glIsEnabled(GL_POLYGON_SMOOTH) && !IsKnownRasteriser();
}

constexpr GLenum cModes[GlyphArrays::cKinds] = { GL_QUADS, GL_LINES, GL_LINES, GL_TRIANGLES, GL_LINES };
constexpr int cStrip = GlyphArrays::cKinds;

struct Draw
{
    int kind; // of GlyphArrays, or cStrip
    int first, count; // vertices in the array of the kind
    GLfloat r, g, b; // a strip's colour
};

/// The kept primitives of a draw of glyphs, as GL takes them.
struct ReadyDraw
{
    const ColouredVertex* vertices;
    int count;
    bool opaque;
};

/// What one step of a deferred drawing held back, and which of its primitives stay: one flag a
/// primitive, at the index of its first vertex (a strip's line starts at its vertex).
struct Part
{
    std::vector<PlainVertex> strips;
    GlyphArrays glyphs;
    std::vector<Draw> draws;
    std::vector<char> stripKept, glyphKept[GlyphArrays::cKinds];
    /// Once culled, the kept glyphs of each draw (none for a strip), copied together where some
    /// are left out.
    std::vector<ReadyDraw> ready;
    std::vector<ColouredVertex> readyVertices;
    /// Whether `ready` is being or has been made, and by which thread: see claim().
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

    void makeReady()
    {
        ready.clear();
        readyVertices.clear();
        std::size_t all = 0;
        for (int kind = 0; kind < GlyphArrays::cKinds; ++kind)
            all += glyphs[kind].size();
        readyVertices.reserve(all); // no reallocation: ready draws point into it
        for (const Draw& draw : draws) {
            if (draw.kind == cStrip) {
                ready.push_back({ nullptr, 0, false });
                continue;
            }
            const int perPrimitive = VerticesPerPrimitive(cModes[draw.kind]);
            const ColouredVertex* vertices = &glyphs[draw.kind][std::size_t(draw.first)];
            const char* kept = &glyphKept[draw.kind][std::size_t(draw.first)];
            int count = draw.count / perPrimitive * perPrimitive;
            if (!std::all_of(kept, kept + count, [](char iKept) { return iKept; })) {
                const std::size_t first = readyVertices.size();
                for (int i = 0; i < count; i += perPrimitive)
                    if (kept[i])
                        readyVertices.insert(readyVertices.end(), vertices + i, vertices + i + perPrimitive);
                vertices = readyVertices.data() + first;
                count = int(readyVertices.size() - first);
            }
            const bool opaque = std::all_of(
                vertices, vertices + count, [](const ColouredVertex& iVertex) { return iVertex.isOpaque(); });
            ready.push_back({ vertices, count, opaque });
        }
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
        fillMargin = multisampled || SmoothsPolygons() ? cPartialPixel : 0.0;
        lineMargin = (multisampled ? cPartialPixel : 0.0) + (known ? 0.0 : cWiderLines);
        return std::isfinite(mXx + mXy + mX0 + mYx + mYy + mY0);
    }

    Point operator()(const GLfloat* iXY) const
    {
        const double x = iXY[0], y = iXY[1];
        return { mXx * x + mXy * y + mX0, mYx * x + mYy * y + mY0 };
    }

    /// The slack for vertices whose coordinates are at most iX and iY in size: the rasteriser's
    /// own, and GL's float error, which grows with the size of the terms it sums.
    double slack(double iX, double iY) const
    {
        const double largest = std::max(std::abs(mXx) * iX + std::abs(mXy) * iY + mTranslationX,
            std::abs(mYx) * iX + std::abs(mYy) * iY + mTranslationY);
        return cRasterSlack + cFloatUlps * FLT_EPSILON * (largest + std::max(width, height));
    }

    /// The slack for any of iCount vertices: one for a whole draw, as its vertices lie close
    /// together and the float error it allows for is a small part of the rasteriser's own.
    template <class Vertex> double slack(const Vertex* iVertices, int iCount) const
    {
        float x = 0.0f, y = 0.0f;
        for (int i = 0; i < iCount; ++i) {
            x = std::max(x, std::abs(iVertices[i].x));
            y = std::max(y, std::abs(iVertices[i].y));
        }
        return slack(x, y);
    }

    /// The corners of iCount vertices in pixels.
    template <class Vertex> void place(const Vertex* iVertices, int iCount, Point* oCorners) const
    {
        for (int i = 0; i < iCount; ++i)
            oCorners[i] = (*this)(&iVertices[i].x);
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
void CullGlyphs(const Draw& iDraw, const Placement& iPlacement, Part& ioPart, OcclusionMask& ioMask)
{
    const int perPrimitive = VerticesPerPrimitive(cModes[iDraw.kind]);
    const bool fill = IsFill(iDraw.kind);
    const std::vector<ColouredVertex>& vertices = ioPart.glyphs[iDraw.kind];
    std::vector<char>& kept = ioPart.glyphKept[iDraw.kind];
    const double slack = iPlacement.slack(&vertices[std::size_t(iDraw.first)], iDraw.count)
        + (fill ? iPlacement.fillMargin : iPlacement.lineMargin);
    for (int first = iDraw.first + (iDraw.count / perPrimitive - 1) * perPrimitive; first >= iDraw.first;
         first -= perPrimitive) {
        const ColouredVertex* primitive = &vertices[std::size_t(first)];
        Point corners[4];
        iPlacement.place(primitive, perPrimitive, corners);
        bool hidden;
        if (!fill)
            hidden = ioMask.hidesLine(corners[0], corners[1], slack);
        else if (primitive[0].isOpaque())
            hidden = ioMask.hidesOrCovers(corners, perPrimitive, slack);
        else
            hidden = ioMask.hides(corners, perPrimitive, slack);
        kept[std::size_t(first)] = !hidden;
    }
}

void CullStrip(const Draw& iDraw, const Placement& iPlacement, Part& ioPart, const OcclusionMask& iMask)
{
    const PlainVertex* points = &ioPart.strips[std::size_t(iDraw.first)];
    const double slack = iPlacement.slack(points, iDraw.count) + iPlacement.lineMargin;
    for (int i = 0; i + 1 < iDraw.count; ++i) {
        Point ends[2];
        iPlacement.place(&points[i], 2, ends);
        ioPart.stripKept[std::size_t(iDraw.first + i)] = !iMask.hidesLine(ends[0], ends[1], slack);
    }
}

/// Culls parts from the last drawn to the first, and the draws of each from its last to its
/// first, so that whatever may hide a primitive is in the mask before it is looked at.
class Culling
{
public:
    explicit Culling(OcclusionMask& ioMask)
        : mMask(ioMask)
        , mOn(mPlacement.read())
    {
        if (mOn)
            mMask.reset(mPlacement.width, mPlacement.height);
    }

    void cull(Part& ioPart)
    {
        ioPart.keepAll();
        if (!mOn)
            return;
        for (auto draw = ioPart.draws.rbegin(); draw != ioPart.draws.rend(); ++draw) {
            mCovering = mCovering || IsFill(draw->kind);
            if (!mCovering)
                continue;
            if (draw->kind == cStrip)
                CullStrip(*draw, mPlacement, ioPart, mMask);
            else
                CullGlyphs(*draw, mPlacement, ioPart, mMask);
        }
    }

private:
    Placement mPlacement;
    OcclusionMask& mMask;
    bool mOn;
    bool mCovering = false; // lines after the last fill have nothing to hide them
};

void SetColour(const QColor& iColour, GLfloat& oR, GLfloat& oG, GLfloat& oB)
{
    oR = GLfloat(iColour.redF());
    oG = GLfloat(iColour.greenF());
    oB = GLfloat(iColour.blueF());
}

/// Draws a strip's runs of kept lines, each as a strip of its own, and gives the lines drawn.
int DrawKeptStrip(const Draw& iDraw, const Part& iPart)
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
            DrawLineStrip(&iPart.strips[std::size_t(run)], next - run + 1);
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

/// A draw's kept glyphs, and how many primitives they are. iPlainFills: whether fills light
/// whole pixels, so that opaque ones may be drawn as PlainFills.
int DrawReady(const Draw& iDraw, const ReadyDraw& iReady, bool iPlainFills)
{
    const GLenum mode = cModes[iDraw.kind];
    if (iPlainFills && IsFill(iDraw.kind) && iReady.count > 0 && iReady.opaque) {
        const PlainFills plain;
        DrawColouredVertices(mode, iReady.vertices, iReady.count);
    } else {
        DrawColouredVertices(mode, iReady.vertices, iReady.count);
    }
    return iReady.count / VerticesPerPrimitive(mode);
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
    Steps(const std::vector<std::function<void()>>& iSteps, std::size_t iFirstPart, Store& ioStore)
        : mSteps(iSteps)
        , mFirstPart(iFirstPart)
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
                part.makeReady();
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
                part.makeReady();
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

    Culling culling(store.mask);
    Steps steps(iLastSteps, firstStep, store);
    steps.cullAll(culling);

    glLineWidth(cLineWidth);
    const bool plainFills = !SmoothsPolygons();
    int sinceFlush = 0;
    for (std::size_t i = 0; i < store.used; ++i) {
        const Part& part = steps.ready(i);
        for (std::size_t d = 0; d < part.draws.size(); ++d) {
            const Draw& draw = part.draws[d];
            sinceFlush += draw.kind == cStrip ? DrawKeptStrip(draw, part) : DrawReady(draw, part.ready[d], plainFills);
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
    Draw draw { cStrip, 0, int(iPoints.size()), 0.0f, 0.0f, 0.0f };
    SetColour(iColour, draw.r, draw.g, draw.b);
    if (!tPart) {
        glColor3f(draw.r, draw.g, draw.b);
        glLineWidth(cLineWidth);
        DrawLineStrip(iPoints);
        return;
    }
    draw.first = int(tPart->strips.size());
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
                tPart->draws.push_back({ kind, first, count, 0.0f, 0.0f, 0.0f });
        }
        return;
    }
    glLineWidth(cLineWidth);
    for (int kind = 0; kind < GlyphArrays::cKinds; ++kind) {
        std::vector<ColouredVertex>& vertices = ImmediateArrays()[kind];
        const std::size_t first = std::min(iFrom.sizes[kind], vertices.size());
        DrawColouredVertices(cModes[kind], vertices.data() + first, int(vertices.size() - first));
        vertices.resize(first);
    }
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
