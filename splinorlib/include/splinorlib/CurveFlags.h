#pragma once

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Keyframe;
class Splinor;

/// Per-curve flags. They are part of the curve's content, so they travel with createCopy and
/// swap. Each setter announces a change of the curve when the value changes.
bool IsVisible(const Splinor& iCurve);              // default true
void SetVisible(Splinor& iCurve, bool iVisible);
bool IsEditable(const Splinor& iCurve);             // default true
void SetEditable(Splinor& iCurve, bool iEditable);
bool IsLocked(const Splinor& iCurve);               // default false
void SetLocked(Splinor& iCurve, bool iLocked);
bool IsVelocityVisible(const Splinor& iCurve);      // default false
void SetVelocityVisible(Splinor& iCurve, bool iVisible);
bool IsAccelerationVisible(const Splinor& iCurve);  // default false
void SetAccelerationVisible(Splinor& iCurve, bool iVisible);

/// The lock of a single key. The model never enforces it; the editor does.
bool IsLocked(const Keyframe& iKey);
void SetLocked(Keyframe& iKey, bool iLocked);

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
