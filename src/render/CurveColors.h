#pragma once

class QColor;

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
class Splinor;
}
} // namespace SplinorLib

namespace SplinorEditorQtLib {
namespace v22 {

// A curve's own colours, kept in string properties of the curve so that they travel with it.
// Each overrides the matching entry of the view's colour table for that curve alone. Only red,
// green and blue are kept: a colour read back is always opaque.
//
// Get...Color gives opaque black for a curve without the colour, never a table entry: readers
// ask Has...Color first and fall back to the table themselves.

void SetUnselectedExteriorColor(SplinorLib::v19::Splinor& ioCurve, const QColor& iColor);
void GetUnselectedExteriorColor(const SplinorLib::v19::Splinor& iCurve, QColor& oColor);
bool HasUnselectedExteriorColor(const SplinorLib::v19::Splinor& iCurve);
void RemoveUnselectedExteriorColor(SplinorLib::v19::Splinor& ioCurve);

void SetUnselectedInteriorColor(SplinorLib::v19::Splinor& ioCurve, const QColor& iColor);
void GetUnselectedInteriorColor(const SplinorLib::v19::Splinor& iCurve, QColor& oColor);
bool HasUnselectedInteriorColor(const SplinorLib::v19::Splinor& iCurve);
void RemoveUnselectedInteriorColor(SplinorLib::v19::Splinor& ioCurve);

void SetUnselectedTangentColor(SplinorLib::v19::Splinor& ioCurve, const QColor& iColor);
void GetUnselectedTangentColor(const SplinorLib::v19::Splinor& iCurve, QColor& oColor);
bool HasUnselectedTangentColor(const SplinorLib::v19::Splinor& iCurve);
void RemoveUnselectedTangentColor(SplinorLib::v19::Splinor& ioCurve);

void SetSelectedExteriorColor(SplinorLib::v19::Splinor& ioCurve, const QColor& iColor);
void GetSelectedExteriorColor(const SplinorLib::v19::Splinor& iCurve, QColor& oColor);
bool HasSelectedExteriorColor(const SplinorLib::v19::Splinor& iCurve);
void RemoveSelectedExteriorColor(SplinorLib::v19::Splinor& ioCurve);

void SetSelectedInteriorColor(SplinorLib::v19::Splinor& ioCurve, const QColor& iColor);
void GetSelectedInteriorColor(const SplinorLib::v19::Splinor& iCurve, QColor& oColor);
bool HasSelectedInteriorColor(const SplinorLib::v19::Splinor& iCurve);
void RemoveSelectedInteriorColor(SplinorLib::v19::Splinor& ioCurve);

void SetSelectedTangentColor(SplinorLib::v19::Splinor& ioCurve, const QColor& iColor);
void GetSelectedTangentColor(const SplinorLib::v19::Splinor& iCurve, QColor& oColor);
bool HasSelectedTangentColor(const SplinorLib::v19::Splinor& iCurve);
void RemoveSelectedTangentColor(SplinorLib::v19::Splinor& ioCurve);

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
