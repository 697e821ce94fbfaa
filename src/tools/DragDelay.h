#pragma once

#include "splinorlib/Vector2D.h"

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

/// The dead zone that every drag starts with, in window pixels.
///
/// Nothing moves until the pointer leaves a box of +-threshold about the press point on either
/// axis. The part of the motion that the box swallowed is kept as the threshold delta: a drag
/// subtracts it from every later position, so that the dragged thing moves on from the press
/// point without a jump and the pointer stays ahead of it by that much.
///
/// A threshold of 0 drags from the start and never calls thresholdExceeded.
class DragDelay
{
public:
    DragDelay(const SplinorLib::v19::Vector2D<double>& point, double threshold);
    virtual ~DragDelay();

    /// Once dragging, it stays so; later points change nothing here.
    void nextPoint(const SplinorLib::v19::Vector2D<double>& point);

    bool isDragging() const { return mDragging; }
    const SplinorLib::v19::Vector2D<double>& getOriginalPoint() const { return mOriginalPoint; }
    /// (0, 0) until the threshold is exceeded.
    const SplinorLib::v19::Vector2D<double>& getThresholdDelta() const { return mThresholdDelta; }

private:
    /// Called once, with the point that left the box, before isDragging() turns true.
    virtual void thresholdExceeded(const SplinorLib::v19::Vector2D<double>& point);

    SplinorLib::v19::Vector2D<double> mOriginalPoint;
    SplinorLib::v19::Vector2D<double> mThresholdDelta;
    double mThreshold;
    bool mDragging;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
