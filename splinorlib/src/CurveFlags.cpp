#include "splinorlib/CurveFlags.h"

#include "CurveContent.h"
#include "splinorlib/Keyframe.h"

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

using namespace Private;

bool IsVisible(const Splinor& iCurve) { return iCurve.getFlag(cCurveVisible); }
void SetVisible(Splinor& iCurve, bool iVisible) { iCurve.setFlag(cCurveVisible, iVisible); }
bool IsEditable(const Splinor& iCurve) { return iCurve.getFlag(cCurveEditable); }
void SetEditable(Splinor& iCurve, bool iEditable) { iCurve.setFlag(cCurveEditable, iEditable); }
bool IsLocked(const Splinor& iCurve) { return iCurve.getFlag(cCurveLocked); }
void SetLocked(Splinor& iCurve, bool iLocked) { iCurve.setFlag(cCurveLocked, iLocked); }
bool IsVelocityVisible(const Splinor& iCurve) { return iCurve.getFlag(cCurveVelocity); }
void SetVelocityVisible(Splinor& iCurve, bool iVisible) { iCurve.setFlag(cCurveVelocity, iVisible); }
bool IsAccelerationVisible(const Splinor& iCurve) { return iCurve.getFlag(cCurveAcceleration); }
void SetAccelerationVisible(Splinor& iCurve, bool iVisible) { iCurve.setFlag(cCurveAcceleration, iVisible); }

bool IsLocked(const Keyframe& iKey)
{
    return iKey.mFlags & Keyframe::cLocked;
}

void SetLocked(Keyframe& iKey, bool iLocked)
{
    iKey.setFlag(Keyframe::cLocked, iLocked);
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
