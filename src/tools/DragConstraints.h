#pragma once

#include "tools/DragDelay.h"

#include "splinorlib/Tangent.h"
#include "splinorlib/Vector2D.h"

#include <cstdint>
#include <memory>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

/// Turns the raw pointer position of a drag into the position the drag may use, in window
/// pixels. A drag calls constrain once per mouse move and uses what it gets back. A constraint
/// lives for one gesture, or until a modifier change swaps it for another, which starts over.
class DragConstraint
{
public:
    virtual ~DragConstraint() = default;
    virtual void constrain(SplinorLib::v19::Vector2D<double>& point) = 0;
};

/// The dead zone as a constraint: the press point until the pointer leaves it, then the pointer
/// less the swallowed motion.
class DelayDragConstraint : public DragConstraint, private DragDelay
{
public:
    /// A dead zone of 3 pixels.
    explicit DelayDragConstraint(const SplinorLib::v19::Vector2D<double>& point);
    DelayDragConstraint(const SplinorLib::v19::Vector2D<double>& point, double threshold);

    void constrain(SplinorLib::v19::Vector2D<double>& point) override;

protected:
    // The base is private so that nobody outside drives the delay on its own; the locks
    // below still need to see where the drag began.
    using DragDelay::getOriginalPoint;
};

/// Locks a drag to the axis of its first motion beyond the dead zone; a diagonal tie goes to y.
class XYDragConstraint : public DelayDragConstraint
{
public:
    explicit XYDragConstraint(const SplinorLib::v19::Vector2D<double>& point);

    void constrain(SplinorLib::v19::Vector2D<double>& point) override;

    /// 0 not decided yet, 1 along x, 2 along y.
    int getAxis() const { return mAxis; }

private:
    void thresholdExceeded(const SplinorLib::v19::Vector2D<double>& point) override;

    std::int32_t mAxis = 0;
};

/// Locks a tangent handle to its direction or to its length, by the first motion beyond the
/// dead zone: along the handle keeps the angle, across it keeps the length.
///
/// With the angle kept the handle slides along its own line and stops at the key rather than
/// pass through it. With the length kept it swings about the key but stays on the tangent's own
/// side: an in tangent from straight down through left to straight up, an out tangent from
/// straight down through right to straight up (y runs down in window pixels).
///
/// The direction must not be (0, 0): the angle mode would then give NaN.
class AngleDragConstraint : public DelayDragConstraint
{
public:
    /// anchor is the key and direction runs from the key to the handle, both in window pixels.
    /// The tangent is only asked which side it is on; it need not outlive the constraint.
    AngleDragConstraint(std::shared_ptr<SplinorLib::v19::Tangent> tangent,
        const SplinorLib::v19::Vector2D<double>& point, const SplinorLib::v19::Vector2D<double>& anchor,
        const SplinorLib::v19::Vector2D<double>& direction);

    void constrain(SplinorLib::v19::Vector2D<double>& point) override;

private:
    void thresholdExceeded(const SplinorLib::v19::Vector2D<double>& point) override;
    double limitAngle(double iAngle) const;

    std::int32_t mMode = 0; // 0 not decided, 1 keep the angle, 2 keep the length
    SplinorLib::v19::Vector2D<double> mAnchor;
    SplinorLib::v19::Vector2D<double> mDirection;
    // Where in the handle the press landed, so the handle does not jump under the pointer.
    SplinorLib::v19::Vector2D<double> mOffset;
    bool mIsInTangent;
    SplinorLib::v19::Vector2D<double> mUnitDirection;
    double mLength = 0.0;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
