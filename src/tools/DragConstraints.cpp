#include "tools/DragConstraints.h"

#include <algorithm>
#include <cmath>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

using SplinorLib::v19::Vector2D;

namespace {

// Pixels a hand may tremble during a click without moving anything.
constexpr double cDeadZone = 3.0;

// These decimals, not full-precision pi, are what the limits have always been; keep their bits.
constexpr double cPi = 3.1415926535898;
constexpr double cTwoPi = 6.2831853071796;
constexpr double cDown = 1.5707963267949; // pi / 2; y runs down in window pixels
constexpr double cUp = 4.7123889803847; // 3 pi / 2, for angles in [0, 2 pi)
constexpr double cUpSigned = -1.5707963267949; // -pi / 2, for angles in (-pi, pi]

constexpr std::int32_t cAxisUndecided = 0;
constexpr std::int32_t cAxisX = 1;
constexpr std::int32_t cAxisY = 2;

constexpr std::int32_t cModeUndecided = 0;
constexpr std::int32_t cModeKeepAngle = 1;
constexpr std::int32_t cModeKeepLength = 2;

} // namespace

DelayDragConstraint::DelayDragConstraint(const Vector2D<double>& point)
    : DragDelay(point, cDeadZone)
{
}

DelayDragConstraint::DelayDragConstraint(const Vector2D<double>& point, double threshold)
    : DragDelay(point, threshold)
{
}

void DelayDragConstraint::constrain(Vector2D<double>& point)
{
    nextPoint(point);
    if (isDragging())
        point -= getThresholdDelta();
    else
        point = getOriginalPoint();
}

XYDragConstraint::XYDragConstraint(const Vector2D<double>& point)
    : DelayDragConstraint(point, cDeadZone)
{
}

void XYDragConstraint::thresholdExceeded(const Vector2D<double>& point)
{
    const Vector2D<double> d = point - getOriginalPoint();
    mAxis = std::fabs(d.x) > std::fabs(d.y) ? cAxisX : cAxisY;
}

void XYDragConstraint::constrain(Vector2D<double>& point)
{
    DelayDragConstraint::constrain(point);
    // Undecided needs nothing more: the base has returned the press point.
    if (mAxis == cAxisX)
        point.y = getOriginalPoint().y;
    else if (mAxis == cAxisY)
        point.x = getOriginalPoint().x;
}

AngleDragConstraint::AngleDragConstraint(std::shared_ptr<SplinorLib::v19::Tangent> tangent,
    const Vector2D<double>& point, const Vector2D<double>& anchor, const Vector2D<double>& direction)
    : DelayDragConstraint(point, cDeadZone)
    , mAnchor(anchor)
    , mDirection(direction)
    , mOffset(point - (anchor + direction))
    , mIsInTangent(tangent->isInTangent())
{
}

void AngleDragConstraint::thresholdExceeded(const Vector2D<double>& point)
{
    const Vector2D<double> m = point - getOriginalPoint();
    mLength = Length(mDirection);
    // The cross and dot products of the handle with the first motion; a tie keeps the angle.
    const double across = std::fabs(mDirection.x * m.y - mDirection.y * m.x);
    const double along = std::fabs(mDirection.y * m.y + mDirection.x * m.x);
    if (across > along) {
        mMode = cModeKeepLength;
    } else {
        mMode = cModeKeepAngle;
        mUnitDirection = mDirection / mLength;
    }
}

void AngleDragConstraint::constrain(Vector2D<double>& point)
{
    DelayDragConstraint::constrain(point);
    if (mMode == cModeUndecided)
        return;
    point -= mOffset;
    if (mMode == cModeKeepAngle) {
        // Project onto the handle's ray from the key; the far side of the key is cut off.
        const double s = std::max(Dot(point - mAnchor, mDirection) / mLength, 0.0);
        point = mAnchor + s * mUnitDirection + mOffset;
    } else {
        const double a = limitAngle(std::atan2(point.y - mAnchor.y, point.x - mAnchor.x));
        point = mAnchor + mLength * Vector2D<double>(std::cos(a), std::sin(a)) + mOffset;
    }
}

double AngleDragConstraint::limitAngle(double iAngle) const
{
    double a = iAngle;
    if (mIsInTangent) {
        // Measured in [0, 2 pi), the left half-plane is one unbroken range.
        if (a < 0.0)
            a += cTwoPi;
        return a < cDown ? cDown : std::min(a, cUp);
    }
    if (a > cPi)
        a -= cTwoPi;
    return a > cDown ? cDown : std::max(a, cUpSigned);
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
