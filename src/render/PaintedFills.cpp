#include "render/PaintedFills.h"

#include "render/GLPlacement.h"
#include "render/GLSentries.h"
#include "render/KeptGLObjects.h"

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QOpenGLFunctions>
#include <qopengl.h>

#include <algorithm>
#include <cmath>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

namespace {

/// The sub-pixel grid: positions are held in units of 1/256 of a pixel, and a pixel's centre
/// lies half a pixel into it.
constexpr std::int64_t cPixel = 256, cCentre = cPixel / 2;

using WindowPos = void(QOPENGLF_APIENTRYP)(GLint, GLint);

WindowPos WindowPosOf(const QOpenGLContext* iContext)
{
    return iContext ? reinterpret_cast<WindowPos>(iContext->getProcAddress("glWindowPos2i")) : nullptr;
}

/// floor for values within the range of std::int64_t: a conversion and a comparison instead of
/// a call into the library, which this is on the path of every corner and edge.
std::int64_t Floor(double iValue)
{
    const auto cut = std::int64_t(iValue);
    return cut - (iValue < double(cut));
}

/// A position in sub-pixel units, to the nearest, halves to even, as a rasteriser snaps it: a
/// double of this size has no fraction left, and the sum rounds as the floating-point unit does,
/// to the nearest and halves to even; without a call or a branch.
constexpr double cRounder = 6755399441055744.0; // 1.5 * 2^52
std::int64_t Snap(double iPixels)
{
    return std::int64_t((iPixels * cPixel + cRounder) - cRounder);
}

/// The first pixel, in a row or a column, whose centre is at or past the position iAt in
/// sub-pixel units.
std::int64_t FirstCentreFrom(std::int64_t iAt)
{
    return (iAt - cCentre + cPixel - 1) >> 8; // a shift floors, for negative values too
}

/// floor(iN / iD) and iN - that * iD for iD > 0, given 1 / iD. The product of doubles is within
/// one of the true quotient for the magnitudes held here, and the remainder, exact, corrects it.
void FloorDivide(std::int64_t iN, std::int64_t iD, double iInverse, std::int64_t& oQuotient, std::int64_t& oRemainder)
{
    std::int64_t q = Floor(double(iN) * iInverse);
    std::int64_t r = iN - q * iD;
    if (r < 0) {
        --q;
        r += iD;
    } else if (r >= iD) {
        ++q;
        r -= iD;
    }
    oQuotient = q;
    oRemainder = r;
}

/// Boxes of at most as many columns, and rows, are lit by paintSmall().
constexpr std::int64_t cSmallColumns = 16, cSmallRows = 64;

using Corner = PaintedFills::Corner;

/// Gives the pixels of a row that a claim on the mask lights a colour and a depth.
struct PixelWriter
{
    std::uint32_t* colours;
    float* depths;
    std::uint32_t rgba;
    float depth;

    /// Pixels iFirst on whose bits are set in iBits.
    void operator()(int iFirst, std::uint64_t iBits) const
    {
        for (; iBits; iBits &= iBits - 1) {
            const int at = iFirst + __builtin_ctzll(iBits);
            colours[at] = rgba;
            depths[at] = depth;
        }
    }
};

/// Where a slanted edge crosses the rows' centres, row by row, as the column whose centre it
/// reaches: t = (x(y) - centre) / pixel, held as a whole part and a remainder, so that the step
/// from row to row is exact and costs no division.
class EdgeWalk
{
public:
    void start(const Corner& iA, const Corner& iB, std::int64_t iFirstRowCentre)
    {
        std::int64_t dx = iB.x - iA.x, dy = iB.y - iA.y;
        if (dy < 0) {
            dx = -dx;
            dy = -dy;
        }
        mDivisor = cPixel * dy;
        const double inverse = 1.0 / double(mDivisor);
        FloorDivide((iA.x - cCentre) * dy + (iFirstRowCentre - iA.y) * dx, mDivisor, inverse, mWhole, mRest);
        FloorDivide(cPixel * dx, mDivisor, inverse, mStepWhole, mStepRest);
    }

    /// The first column whose centre is at or right of the edge, on the current row.
    std::int64_t ceil() const { return mWhole + (mRest > 0); }

    void nextRow()
    {
        mRest += mStepRest;
        const bool carry = mRest >= mDivisor; // as likely as not: no branch
        mRest -= carry ? mDivisor : 0;
        mWhole += mStepWhole + carry;
    }

private:
    std::int64_t mDivisor, mWhole, mRest, mStepWhole, mStepRest;
};

} // namespace

void PaintedFills::reset(int iWidth, int iHeight)
{
    const int width = std::max(iWidth, 0), height = std::max(iHeight, 0);
    const std::size_t size = std::size_t(width) * std::size_t(height);
    if (width != mWidth || height != mHeight || mColours.size() != size) {
        mWidth = width;
        mHeight = height;
        mColours.assign(size, 0);
        mDepths.assign(size, 0.0f);
    } else {
        // Only what the last paint lit is not dark.
        for (int row = mBottom; row <= mTop; ++row) {
            const std::size_t from = std::size_t(row) * std::size_t(mWidth) + std::size_t(mLeft);
            std::fill_n(&mColours[from], mRight - mLeft + 1, 0u);
            std::fill_n(&mDepths[from], mRight - mLeft + 1, 0.0f);
        }
    }
    mLeft = mBottom = 0;
    mRight = mTop = -1;
}

bool PaintedFills::paint(const Point* iCorners, int iCount, std::uint32_t iRgba, float iDepth, OcclusionMask& ioMask)
{
    // Triangles and quadrilaterals each get loops of known length: they alternate along a curve,
    // and a loop whose count changes from one to the next ends mispredicted.
    if (iCount == 3)
        return paintConvex<3>(iCorners, iRgba, iDepth, ioMask);
    if (iCount == 4)
        return paintConvex<4>(iCorners, iRgba, iDepth, ioMask);
    return false;
}

template <int tCount>
bool PaintedFills::paintConvex(const Point* iCorners, std::uint32_t iRgba, float iDepth, OcclusionMask& ioMask)
{
    bool inside = true;
    for (int i = 0; i < tCount; ++i) {
        const Point& corner = iCorners[i];
        inside &= (corner.x >= 0.0) & (corner.x <= mWidth) & (corner.y >= 0.0) & (corner.y <= mHeight);
    }
    if (!inside)
        return false;
    // In sub-pixel units, a corner in a viewport fits 32 bits.
    std::int32_t xs[tCount], ys[tCount];
    for (int i = 0; i < tCount; ++i) {
        xs[i] = std::int32_t(Snap(iCorners[i].x));
        ys[i] = std::int32_t(Snap(iCorners[i].y));
    }
    std::int32_t bottom = ys[0], top = ys[0], leftmost = xs[0], rightmost = xs[0];
    for (int i = 1; i < tCount; ++i) {
        bottom = std::min(bottom, ys[i]);
        top = std::max(top, ys[i]);
        leftmost = std::min(leftmost, xs[i]);
        rightmost = std::max(rightmost, xs[i]);
    }
    // The rows whose centres lie from the bottom, included, up to the top, left out; the same
    // for columns. All in the viewport.
    const auto firstRow = int(FirstCentreFrom(bottom)), lastRow = int(FirstCentreFrom(top)) - 1;
    const auto firstColumn = int(FirstCentreFrom(leftmost)), lastColumn = int(FirstCentreFrom(rightmost)) - 1;
    if (firstRow > lastRow || firstColumn > lastColumn)
        return true;

#if defined(__SSE2__)
    if (lastColumn - firstColumn < cSmallColumns && lastRow - firstRow < cSmallRows) {
        // From the centre of the box's first pixel, corners and the products of two fit 32 bits.
        const std::int32_t originX = firstColumn * std::int32_t(cPixel) + std::int32_t(cCentre);
        const std::int32_t originY = firstRow * std::int32_t(cPixel) + std::int32_t(cCentre);
        std::int32_t rx[tCount], ry[tCount];
        for (int i = 0; i < tCount; ++i) {
            rx[i] = xs[i] - originX;
            ry[i] = ys[i] - originY;
        }
        std::int32_t twiceArea = 0;
        for (int i = 0; i < tCount; ++i) {
            const int j = i + 1 < tCount ? i + 1 : 0;
            twiceArea += rx[i] * ry[j] - rx[j] * ry[i];
        }
        if (twiceArea == 0)
            return true;
        grow(firstColumn, firstRow, lastColumn, lastRow);
        const Box box { firstColumn, firstRow, lastRow, std::uint32_t((2u << (lastColumn - firstColumn)) - 1) };
        if (tCount == 4
            && ((rx[0] == rx[1] && rx[2] == rx[3] && ry[1] == ry[2] && ry[3] == ry[0])
                || (ry[0] == ry[1] && ry[2] == ry[3] && rx[1] == rx[2] && rx[3] == rx[0]))) {
            // Upright: every centre of the box is in.
            for (int row = firstRow; row <= lastRow; ++row)
                lightLanes(ioMask, row, box.column, box.lanes, iRgba, iDepth);
            return true;
        }
        if (twiceArea < 0) {
            std::reverse(rx, rx + tCount);
            std::reverse(ry, ry + tCount);
        }
        switch ((lastColumn - firstColumn) >> 2) {
        case 0:
            paintSmall<tCount, 1>(rx, ry, box, iRgba, iDepth, ioMask);
            break;
        case 1:
            paintSmall<tCount, 2>(rx, ry, box, iRgba, iDepth, ioMask);
            break;
        case 2:
            paintSmall<tCount, 3>(rx, ry, box, iRgba, iDepth, ioMask);
            break;
        default:
            paintSmall<tCount, 4>(rx, ry, box, iRgba, iDepth, ioMask);
            break;
        }
        return true;
    }
#endif

    Corner corners[tCount];
    std::int64_t twiceArea = 0;
    for (int i = 0; i < tCount; ++i) {
        const int j = i + 1 < tCount ? i + 1 : 0;
        twiceArea += std::int64_t(xs[i]) * ys[j] - std::int64_t(xs[j]) * ys[i];
        corners[i] = { xs[i], ys[i] };
    }
    if (twiceArea == 0)
        return true;
    grow(firstColumn, firstRow, lastColumn, lastRow);
    const Corner* c = corners;
    if (tCount == 4
        && ((c[0].x == c[1].x && c[2].x == c[3].x && c[1].y == c[2].y && c[3].y == c[0].y)
            || (c[0].y == c[1].y && c[2].y == c[3].y && c[1].x == c[2].x && c[3].x == c[0].x))) {
        // Upright: the same columns on every row.
        for (int row = firstRow; row <= lastRow; ++row)
            lightRow(ioMask, row, firstColumn, lastColumn, iRgba, iDepth);
        return true;
    }
    if (twiceArea < 0)
        std::reverse(corners, corners + tCount);

    // Going round counter-clockwise (y up) from the lowest corner, edges rise up the right side,
    // where a centre on the edge is out, to the highest corner; going the other way, they rise up
    // the left side, where it is in.
    int lowest = 0;
    for (int i = 1; i < tCount; ++i)
        lowest = corners[i].y < corners[lowest].y ? i : lowest;
    // Each side walks the edge that crosses the current row's centre, from corner to corner.
    struct Side
    {
        int step, corner; // going round by step, the edge from corner to the next
        std::int64_t end; // the y of the next corner
        EdgeWalk walk;

        void reach(const Corner* iCorners, int iLowest, std::int64_t iCentre)
        {
            int next = corner + step < tCount ? corner + step : corner + step - tCount;
            // Past the edges that end at or below the centre, level ones among them.
            while (iCorners[next].y <= iCentre && next != iLowest) {
                corner = next;
                next = next + step < tCount ? next + step : next + step - tCount;
            }
            end = iCorners[next].y;
            walk.start(iCorners[corner], iCorners[next], iCentre);
        }
    };
    Side left { tCount - 1, lowest, 0, {} }, right { 1, lowest, 0, {} };
    std::int64_t centre = firstRow * cPixel + cCentre;
    left.reach(corners, lowest, centre);
    right.reach(corners, lowest, centre);
    for (int row = firstRow; row <= lastRow; ++row, centre += cPixel) {
        if (left.end <= centre)
            left.reach(corners, lowest, centre);
        if (right.end <= centre)
            right.reach(corners, lowest, centre);
        lightRow(ioMask, row, left.walk.ceil(), right.walk.ceil() - 1, iRgba, iDepth);
        left.walk.nextRow();
        right.walk.nextRow();
    }
    return true;
}

#if defined(__SSE2__)
template <int tCount, int tGroups>
void PaintedFills::paintSmall(const std::int32_t* iXs, const std::int32_t* iYs, const Box& iBox, std::uint32_t iRgba,
    float iDepth, OcclusionMask& ioMask)
{
    // A pixel is lit if its centre lies left of every edge going round counter-clockwise, or on
    // an edge going down or going right: the left and bottom edges. With e the cross product of
    // the edge and the way from its start to the centre, less one where a centre on the edge is
    // out, that is every e at or above 0, so the sign bits of all or-ed together tell.
    __m128i edges[tCount][tGroups], rowSteps[tCount];
#pragma GCC unroll 4
    for (int i = 0; i < tCount; ++i) {
        const int j = i + 1 < tCount ? i + 1 : 0;
        const std::int32_t dx = iXs[j] - iXs[i], dy = iYs[j] - iYs[i];
        const std::int32_t onEdgeIn = dy < 0 || (dy == 0 && dx > 0);
        const std::int32_t rowStep = dx * std::int32_t(cPixel), step = -dy * std::int32_t(cPixel);
        const std::int32_t e = dy * iXs[i] - dx * iYs[i] + onEdgeIn - 1;
        __m128i lanes = _mm_setr_epi32(e, e + step, e + 2 * step, e + 3 * step);
        const __m128i groupStep = _mm_set1_epi32(4 * step);
#pragma GCC unroll 4
        for (int g = 0; g < tGroups; ++g) {
            edges[i][g] = lanes;
            lanes = _mm_add_epi32(lanes, groupStep);
        }
        rowSteps[i] = _mm_set1_epi32(rowStep);
    }
    for (int row = iBox.firstRow; row <= iBox.lastRow; ++row) {
        std::uint32_t out = 0;
#pragma GCC unroll 4
        for (int g = 0; g < tGroups; ++g) {
            __m128i all = edges[0][g];
#pragma GCC unroll 4
            for (int i = 1; i < tCount; ++i)
                all = _mm_or_si128(all, edges[i][g]);
            out |= std::uint32_t(_mm_movemask_ps(_mm_castsi128_ps(all))) << (4 * g);
        }
#pragma GCC unroll 4
        for (int i = 0; i < tCount; ++i)
#pragma GCC unroll 4
            for (int g = 0; g < tGroups; ++g)
                edges[i][g] = _mm_add_epi32(edges[i][g], rowSteps[i]);
        if (const std::uint32_t lit = ~out & iBox.lanes)
            lightLanes(ioMask, row, iBox.column, lit, iRgba, iDepth);
    }
}
#endif

inline void PaintedFills::lightLanes(
    OcclusionMask& ioMask, int iRow, int iColumn, std::uint32_t iLanes, std::uint32_t iRgba, float iDepth)
{
    const std::size_t start = std::size_t(iRow) * std::size_t(mWidth);
    ioMask.claim(iRow, iColumn, iLanes, PixelWriter { &mColours[start], &mDepths[start], iRgba, iDepth });
}

inline void PaintedFills::grow(int iLeft, int iBottom, int iRight, int iTop)
{
    const bool none = empty();
    mLeft = none ? iLeft : std::min(mLeft, iLeft);
    mRight = none ? iRight : std::max(mRight, iRight);
    mBottom = none ? iBottom : std::min(mBottom, iBottom);
    mTop = none ? iTop : std::max(mTop, iTop);
}

inline void PaintedFills::lightRow(
    OcclusionMask& ioMask, int iRow, std::int64_t iFirst, std::int64_t iLast, std::uint32_t iRgba, float iDepth)
{
    const int first = int(std::max<std::int64_t>(iFirst, 0));
    const int last = int(std::min<std::int64_t>(iLast, mWidth - 1));
    if (first > last)
        return;
    const std::size_t start = std::size_t(iRow) * std::size_t(mWidth);
    ioMask.claim(iRow, first, last, PixelWriter { &mColours[start], &mDepths[start], iRgba, iDepth });
}

bool PaintedFills::canDraw()
{
    return WindowPosOf(QOpenGLContext::currentContext()) != nullptr;
}

namespace {

/// The pixel buffers a host may have bound for reading and writing pixels, unbound for a scope:
/// pixels here go to and from memory.
class PixelBuffersUnbound
{
public:
    PixelBuffersUnbound()
        : mFunctions(HasPixelBuffers() ? QOpenGLContext::currentContext()->functions() : nullptr)
    {
        if (!mFunctions)
            return;
        glGetIntegerv(GL_PIXEL_PACK_BUFFER_BINDING, &mPack);
        glGetIntegerv(GL_PIXEL_UNPACK_BUFFER_BINDING, &mUnpack);
        mFunctions->glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
        mFunctions->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    }
    ~PixelBuffersUnbound()
    {
        if (!mFunctions)
            return;
        mFunctions->glBindBuffer(GL_PIXEL_PACK_BUFFER, GLuint(mPack));
        mFunctions->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, GLuint(mUnpack));
    }
    PixelBuffersUnbound(const PixelBuffersUnbound&) = delete;
    PixelBuffersUnbound& operator=(const PixelBuffersUnbound&) = delete;

private:
    static bool HasPixelBuffers()
    {
        const QOpenGLContext* context = QOpenGLContext::currentContext();
        return context && !context->isOpenGLES() && context->format().version() >= qMakePair(2, 1);
    }

    QOpenGLFunctions* mFunctions;
    GLint mPack = 0, mUnpack = 0;
};

/// Pixel storage as tightly packed rows, for a scope.
struct TightPixelStorage
{
    TightPixelStorage()
    {
        glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
        for (const GLenum swap : { GL_PACK_SWAP_BYTES, GL_UNPACK_SWAP_BYTES })
            glPixelStorei(swap, GL_FALSE);
        for (const GLenum zero : { GL_PACK_ROW_LENGTH, GL_PACK_SKIP_PIXELS, GL_PACK_SKIP_ROWS, GL_UNPACK_ROW_LENGTH,
                 GL_UNPACK_SKIP_PIXELS, GL_UNPACK_SKIP_ROWS })
            glPixelStorei(zero, 0);
        glPixelStorei(GL_PACK_ALIGNMENT, 4);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    }
    ~TightPixelStorage() { glPopClientAttrib(); }
    TightPixelStorage(const TightPixelStorage&) = delete;
    TightPixelStorage& operator=(const TightPixelStorage&) = delete;
};

/// A framebuffer for reading over a colour texture and a depth and stencil one, holding a block
/// of pixels for the scope: those kept in the context where it can keep them, or else its own,
/// made for the one copy.
class BlockSource
{
public:
    BlockSource(QOpenGLExtraFunctions& ioGL, int iWidth, int iHeight, const std::uint32_t* iColours,
        const std::uint32_t* iDepthStencils)
        : mGL(ioGL)
    {
        GLint bound = 0;
        glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
        glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &mRead);
        if (KeptGLObjects* kept = KeptGLObjects::current())
            mBlock = kept->pixelBlock(iWidth, iHeight);
        mOwn = !mBlock.framebuffer;
        if (mOwn) {
            glGenTextures(1, &mBlock.colours);
            glGenTextures(1, &mBlock.depthStencils);
            mGL.glGenFramebuffers(1, &mBlock.framebuffer);
        }
        const auto load = [&](GLuint iTexture, GLenum iInternal, GLenum iFormat, GLenum iType, const void* iPixels) {
            glBindTexture(GL_TEXTURE_2D, iTexture);
            if (mOwn)
                glTexImage2D(GL_TEXTURE_2D, 0, GLint(iInternal), iWidth, iHeight, 0, iFormat, iType, iPixels);
            else
                glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, iWidth, iHeight, iFormat, iType, iPixels);
        };
        load(mBlock.colours, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, iColours);
        load(mBlock.depthStencils, GL_DEPTH24_STENCIL8, GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8, iDepthStencils);
        glBindTexture(GL_TEXTURE_2D, GLuint(bound));
        mGL.glBindFramebuffer(GL_READ_FRAMEBUFFER, mBlock.framebuffer);
        if (mOwn) {
            mGL.glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mBlock.colours, 0);
            mGL.glFramebufferTexture2D(
                GL_READ_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_TEXTURE_2D, mBlock.depthStencils, 0);
        }
    }
    ~BlockSource()
    {
        mGL.glBindFramebuffer(GL_READ_FRAMEBUFFER, GLuint(mRead));
        if (!mOwn)
            return;
        mGL.glDeleteFramebuffers(1, &mBlock.framebuffer);
        const GLuint textures[2] = { mBlock.colours, mBlock.depthStencils };
        glDeleteTextures(2, textures);
    }
    BlockSource(const BlockSource&) = delete;
    BlockSource& operator=(const BlockSource&) = delete;

    bool complete() const { return mGL.glCheckFramebufferStatus(GL_READ_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE; }

private:
    QOpenGLExtraFunctions& mGL;
    KeptGLObjects::PixelBlock mBlock;
    bool mOwn = true;
    GLint mRead = 0;
};

/// The box of a viewport of the given size at iX, iY that the host's scissor box, if it has
/// one, leaves: left, bottom, width, height.
void ScissoredBox(int iX, int iY, int iWidth, int iHeight, GLint oBox[4])
{
    oBox[0] = iX;
    oBox[1] = iY;
    oBox[2] = iWidth;
    oBox[3] = iHeight;
    if (!glIsEnabled(GL_SCISSOR_TEST))
        return;
    GLint scissor[4];
    glGetIntegerv(GL_SCISSOR_BOX, scissor);
    const GLint right = std::min(oBox[0] + oBox[2], scissor[0] + scissor[2]);
    const GLint top = std::min(oBox[1] + oBox[3], scissor[1] + scissor[3]);
    oBox[0] = std::max(oBox[0], scissor[0]);
    oBox[1] = std::max(oBox[1], scissor[1]);
    oBox[2] = std::max(right - oBox[0], 0);
    oBox[3] = std::max(top - oBox[1], 0);
}

/// A depth in [0, 1] as a 24-bit depth buffer holds it, above 8 bits of stencil; rounded to the
/// nearest, as the vector conversion below does.
std::uint32_t DepthAboveStencil(float iDepth)
{
    return std::uint32_t(std::lrint(iDepth * 16777215.0f)) << 8;
}

/// Puts iCount lit pixels, those of opaque colour, with their depths over a block read back
/// from GL; the depths of the others were cleared, and the stencil stays.
void Composite(const std::uint32_t* iLit, const float* iLitDepths, int iCount, std::uint32_t* ioColours,
    std::uint32_t* ioDepthStencils)
{
    int i = 0;
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128(), stencil = _mm_set1_epi32(0xff);
    const __m128 scale = _mm_set1_ps(16777215.0f);
    for (; i + 4 <= iCount; i += 4) {
        const __m128i lit = _mm_loadu_si128(reinterpret_cast<const __m128i*>(iLit + i));
        const __m128i off = _mm_cmpeq_epi32(_mm_srli_epi32(lit, 24), zero);
        __m128i* colours = reinterpret_cast<__m128i*>(ioColours + i);
        __m128i* depths = reinterpret_cast<__m128i*>(ioDepthStencils + i);
        const __m128i colour = _mm_loadu_si128(colours);
        _mm_storeu_si128(colours, _mm_or_si128(_mm_and_si128(off, colour), _mm_andnot_si128(off, lit)));
        const __m128i depth = _mm_slli_epi32(_mm_cvtps_epi32(_mm_mul_ps(_mm_loadu_ps(iLitDepths + i), scale)), 8);
        const __m128i depthStencil = _mm_loadu_si128(depths);
        _mm_storeu_si128(depths, _mm_or_si128(_mm_and_si128(depthStencil, stencil), _mm_andnot_si128(off, depth)));
    }
#endif
    for (; i < iCount; ++i) {
        const bool on = iLit[i] >> 24;
        ioColours[i] = on ? iLit[i] : ioColours[i];
        ioDepthStencils[i] = (ioDepthStencils[i] & 0xffu) | (on ? DepthAboveStencil(iLitDepths[i]) : 0u);
    }
}

} // namespace

void PaintedFills::clearDepth(int iX, int iY) const
{
    GLAttributeSentry sentry(GL_DEPTH_BUFFER_BIT | GL_SCISSOR_BIT | GL_ENABLE_BIT);
    GLint box[4];
    ScissoredBox(iX, iY, mWidth, mHeight, box);
    glEnable(GL_SCISSOR_TEST);
    glScissor(box[0], box[1], box[2], box[3]);
    glDepthMask(GL_TRUE);
    glClearDepth(0.0);
    glClear(GL_DEPTH_BUFFER_BIT);
}

bool PaintedFills::draw(int iX, int iY) const
{
    if (!canDraw())
        return false;
    GLAttributeSentry sentry(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_ENABLE_BIT | GL_PIXEL_MODE_BIT
        | GL_SCISSOR_BIT | GL_CURRENT_BIT);
    const TightPixelStorage storage;
    const PixelBuffersUnbound unbound;

    if (empty())
        return true;
    GLint box[4];
    ScissoredBox(iX, iY, mWidth, mHeight, box);
    // The lit pixels' box, in the window and in the scissor box.
    const int left = std::max(iX + mLeft, box[0]), right = std::min(iX + mRight + 1, box[0] + box[2]);
    const int bottom = std::max(iY + mBottom, box[1]), top = std::min(iY + mTop + 1, box[1] + box[3]);
    if (left >= right || bottom >= top)
        return true;
    // Pixels go to and from GL as they are.
    glPixelZoom(1.0f, 1.0f);
    for (const GLenum map : { GL_MAP_COLOR, GL_MAP_STENCIL })
        glPixelTransferi(map, GL_FALSE);
    for (const GLenum scale : { GL_RED_SCALE, GL_GREEN_SCALE, GL_BLUE_SCALE, GL_ALPHA_SCALE, GL_DEPTH_SCALE })
        glPixelTransferf(scale, 1.0f);
    for (const GLenum bias : { GL_RED_BIAS, GL_GREEN_BIAS, GL_BLUE_BIAS, GL_ALPHA_BIAS, GL_DEPTH_BIAS })
        glPixelTransferf(bias, 0.0f);
    for (const GLenum index : { GL_INDEX_SHIFT, GL_INDEX_OFFSET })
        glPixelTransferi(index, 0);
    if (!copyBlock(left - iX, bottom - iY, right - left, top - bottom, iX, iY))
        drawPixels(iX, iY);
    return true;
}

bool PaintedFills::copyBlock(int iColumn, int iRow, int iWidth, int iHeight, int iX, int iY) const
{
    // A graphics card draws pixels at little cost, and reading them back would stall it.
    QOpenGLContext* context = QOpenGLContext::currentContext();
    if (!RastersInSoftware() || context->isOpenGLES() || context->format().version() < qMakePair(3, 0))
        return false;
    GLint depthBits = 0, stencilBits = 0, sampleBuffers = 0, drawn = 0, read = 0, drawBuffer = 0, readBuffer = 0;
    glGetIntegerv(GL_DEPTH_BITS, &depthBits);
    glGetIntegerv(GL_STENCIL_BITS, &stencilBits);
    glGetIntegerv(GL_SAMPLE_BUFFERS, &sampleBuffers);
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &drawn);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &read);
    glGetIntegerv(GL_DRAW_BUFFER, &drawBuffer);
    glGetIntegerv(GL_READ_BUFFER, &readBuffer);
    GLboolean colourMask[4];
    glGetBooleanv(GL_COLOR_WRITEMASK, colourMask);
    // A copy writes every bit of a pixel as it is: no masks, no conversions, no logic.
    const bool plain = std::all_of(colourMask, colourMask + 4, [](GLboolean iOn) { return iOn; })
        && !glIsEnabled(GL_FRAMEBUFFER_SRGB) && !glIsEnabled(GL_COLOR_LOGIC_OP);
    if (depthBits != 24 || stencilBits != 8 || sampleBuffers != 0 || drawn != read || drawBuffer != readBuffer || !plain)
        return false;

    const int x = iX + iColumn, y = iY + iRow;
    const std::size_t size = std::size_t(iWidth) * std::size_t(iHeight);
    mBlockColours.resize(size);
    mBlockDepths.resize(size);
    glReadPixels(x, y, iWidth, iHeight, GL_RGBA, GL_UNSIGNED_BYTE, mBlockColours.data());
    glReadPixels(x, y, iWidth, iHeight, GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8, mBlockDepths.data());
    for (int row = 0; row < iHeight; ++row) {
        const std::size_t from = std::size_t(iRow + row) * std::size_t(mWidth) + std::size_t(iColumn);
        const std::size_t to = std::size_t(row) * std::size_t(iWidth);
        Composite(&mColours[from], &mDepths[from], iWidth, &mBlockColours[to], &mBlockDepths[to]);
    }
    QOpenGLExtraFunctions& gl = *context->extraFunctions();
    const BlockSource source(gl, iWidth, iHeight, mBlockColours.data(), mBlockDepths.data());
    if (!source.complete())
        return false;
    glGetError(); // whatever was pending is not the copy's
    glDisable(GL_SCISSOR_TEST); // the block lies in the scissor box, and a copy goes faster without
    gl.glBlitFramebuffer(0, 0, iWidth, iHeight, x, y, x + iWidth, y + iHeight,
        GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT, GL_NEAREST);
    return glGetError() == GL_NO_ERROR;
}

void PaintedFills::drawPixels(int iX, int iY) const
{
    glPixelStorei(GL_UNPACK_ROW_LENGTH, mWidth);
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, mLeft);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, mBottom);
    const GLsizei width = mRight - mLeft + 1, height = mTop - mBottom + 1;

    GLboolean colourMask[4];
    glGetBooleanv(GL_COLOR_WRITEMASK, colourMask);
    WindowPosOf(QOpenGLContext::currentContext())(iX + mLeft, iY + mBottom);
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_ALWAYS);
    glDrawPixels(width, height, GL_DEPTH_COMPONENT, GL_FLOAT, mDepths.data());

    glColorMask(colourMask[0], colourMask[1], colourMask[2], colourMask[3]);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_BLEND);
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, 0.0f);
    glDrawPixels(width, height, GL_RGBA, GL_UNSIGNED_BYTE, mColours.data());
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
