#pragma once

#include "render/VertexArrays.h"

#include "splinorlib/Vector2D.h"

#include <functional>
#include <thread>
#include <vector>

class QColor;

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

/// Glyph vertices by kind, each kind in the order drawn; a batch of glyphs draws all its
/// keyframes, then its tangent lines, then its tangent handles. All vertices of a primitive
/// have one colour.
struct GlyphArrays
{
    enum Kind { cKeyFills, cKeyOutlines, cTangentLines, cHandleFills, cHandleOutlines, cKinds };

    /// A filled keyframe is two entries rather than its corners: its centre, with the colour,
    /// then its half width and height, with the shape in `a`. A square upright on screen can
    /// then go to GL as one point instead of four corners.
    enum Shape : GLubyte { cSquare, cDiamond };
    static constexpr int cKeyFillEntries = 2;

    std::vector<ColouredVertex> keyFills, keyOutlines, tangentLines, handleFills, handleOutlines;

    std::vector<ColouredVertex>& operator[](int iKind);
    const std::vector<ColouredVertex>& operator[](int iKind) const;
    /// The sizes of the arrays, where a batch begins.
    struct Mark
    {
        std::size_t sizes[cKinds];
    };
    Mark mark();
};

/// The corners of a keyframe's glyph about iCentre: a square, or a diamond for a breakdown,
/// whose half diagonals are then those of iHalf.
void KeyframeCorners(const SplinorLib::v19::Vector2D<double>& iCentre, const SplinorLib::v19::Vector2D<double>& iHalf,
    GlyphArrays::Shape iShape, SplinorLib::v19::Vector2D<double> oCorners[4]);

/// While one is open on a thread, the curve glyph routines called there (or in its steps, see
/// below) hold back what they draw, and finish() draws it all in the order it came, leaving
/// out each line and glyph that opaque keyframes and handles drawn after it cover, which GL
/// would overwrite. A view of thousands of selected keyframes
/// paints most pixels many times over, and a software rasteriser spends its time on primitives
/// nobody sees. Placement is read from GL's own matrices and viewport at finish(); with any
/// other transform than a flat orthographic one, everything is drawn.
class DeferredCurveDrawing
{
public:
    /// Opens, unless one is open on this thread already, in which case this one passes
    /// everything to it.
    DeferredCurveDrawing();
    /// Drops whatever finish() has not drawn: a paint cut short by a GL error draws no more.
    /// finish() and the destructor act only on the thread that opened the drawing.
    ~DeferredCurveDrawing();
    DeferredCurveDrawing(const DeferredCurveDrawing&) = delete;
    DeferredCurveDrawing& operator=(const DeferredCurveDrawing&) = delete;

    /// Draws what was held back, without what is hidden, and closes.
    void finish();
    /// Runs the steps as the last drawing of this one, each as if after the one before, then
    /// finishes. Each step's lines and glyphs are held apart; with a core to spare a second
    /// thread runs the steps from the last while this one leaves out what is hidden in those
    /// already run. A step may read the model, the selection and the view, and draw through the
    /// glyph routines, but touch nothing this thread may touch meanwhile: no GL, no observers.
    /// An exception from a step ends the drawing, and comes out of here.
    void finish(const std::vector<std::function<void()>>& iLastSteps);

    /// A line strip in iColour, drawn now if none is open.
    static void strip(const std::vector<PlainVertex>& iPoints, const QColor& iColour);
    /// The arrays glyph batches add their vertices to, so that nothing is copied to hold them.
    static GlyphArrays& glyphArrays();
    /// The glyphs added since iFrom, as one batch: held, or drawn now and dropped if none is open.
    static void glyphs(const GlyphArrays::Mark& iFrom);

private:
    /// Whether this drawing is open, and was opened on this thread.
    bool isOpenHere() const;

    bool mOwner;
    std::thread::id mThread;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
