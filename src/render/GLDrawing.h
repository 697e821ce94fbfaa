#pragma once

#include "splinorlib/Rectangle.h"

class QColor;

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

// Both routines draw in the coordinates of the current GL matrices (curve space, inside a paint)
// and leave the current colour, the enables and the blend function as they found them.

/// A bar lit from above: `iColor` darkened by `iFactor` along the left and lower edges, lightened
/// along the right and upper ones, with a vertical gradient between. The left and right strips
/// are `iBevelWidth` wide; the lower and upper ones a third of the height each. A colour that
/// neither lightens nor darkens (black, or a factor of 100) gives a flat bar.
void DrawBevelledRectangle(
    const SplinorLib::v19::Rectangle<double>& iRectangle, float iBevelWidth, const QColor& iColor, int iFactor);

/// A flat rectangle of `iColor`, blended over what is there with opacity `iAlpha`; the colour's
/// own alpha plays no part.
void DrawTranslucentRectangle(const SplinorLib::v19::Rectangle<double>& iRectangle, const QColor& iColor, float iAlpha);

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
