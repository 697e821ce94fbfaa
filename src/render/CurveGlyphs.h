#pragma once

#include "splinorlib/HitRecord.h"
#include "splinorlib/Vector2D.h"

class QColor;

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
class Segment;
class Selection;
class Splinor;
class Tangent;
} // namespace v19
} // namespace SplinorLib

namespace SplinorEditorQtLib {
namespace v22 {

class GraphViewColors;
class Viewport;

// The look of the curves. Each routine draws one curve, segment, keyframe or tangent with the
// GL state the curve layer has set, in curve space; glyph sizes are pixels, scaled by the pixel
// size of the paint. An unselected curve is a bare line; a selected one shows its keyframes,
// and the tangents near what is selected.

/// The GL state the routines expect, set by each stage of the curve layer: smooth, blended lines
/// and polygons. The caller keeps the state to restore.
void BeginCurveStage();

/// Draws the segments in view; nothing if the hover names the curve (the hover step draws it).
void DrawUnselectedCurve(const SplinorLib::v19::Splinor& iCurve, const Viewport& iViewport,
    const GraphViewColors& iColours, const SplinorLib::v19::HitRecord& iHover);
/// Draws unselected parts first and selected parts over them.
void DrawSelectedCurve(const SplinorLib::v19::Splinor& iCurve, SplinorLib::v19::Selection& iSelection,
    const Viewport& iViewport, const GraphViewColors& iColours, const SplinorLib::v19::HitRecord& iHover);
void DrawHoverItem(const SplinorLib::v19::HitRecord& iHover, SplinorLib::v19::Selection& iSelection,
    const Viewport& iViewport, const GraphViewColors& iColours);
void DrawVelocity(const SplinorLib::v19::Splinor& iCurve, const Viewport& iViewport, const GraphViewColors& iColours);
void DrawAcceleration(
    const SplinorLib::v19::Splinor& iCurve, const Viewport& iViewport, const GraphViewColors& iColours);

void DrawSegment(const SplinorLib::v19::Segment& iSegment, const Viewport& iViewport, const QColor& iColour);
void DrawVelocitySegment(const SplinorLib::v19::Segment& iSegment, const Viewport& iViewport, const QColor& iColour);
void DrawAccelerationSegment(
    const SplinorLib::v19::Segment& iSegment, const Viewport& iViewport, const QColor& iColour);

/// A square, or a diamond for a breakdown, about 4.4 pixels wide; solid when filled.
void DrawKeyframeGlyph(const SplinorLib::v19::Vector2D<double>& iPosition, const QColor& iColour,
    const SplinorLib::v19::Vector2D<double>& iPixelSize, bool iFilled, bool iBreakdown);
/// The tangent's line and handle.
void DrawTangent(SplinorLib::v19::Tangent& iTangent, const GraphViewColors& iColours,
    const SplinorLib::v19::HitRecord& iHover, bool iLocked, SplinorLib::v19::Selection& iSelection,
    const Viewport& iViewport);
/// The handle: a triangle standing on the end of the line, pointing away from the key. iBase
/// and iDirection are in window pixels.
void DrawTangentGlyph(const SplinorLib::v19::Vector2D<double>& iBase,
    const SplinorLib::v19::Vector2D<double>& iDirection, const QColor& iColour, bool iFilled,
    const Viewport& iViewport);

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
