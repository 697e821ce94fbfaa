#include "tools/DragDelay.h"

#include <algorithm>
#include <cmath>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

using SplinorLib::v19::Vector2D;

DragDelay::DragDelay(const Vector2D<double>& point, double threshold)
    : mOriginalPoint(point)
    , mThresholdDelta(0.0, 0.0)
    , mThreshold(threshold)
    , mDragging(threshold == 0.0)
{
}

DragDelay::~DragDelay() = default;

void DragDelay::nextPoint(const Vector2D<double>& point)
{
    if (mDragging)
        return;
    // A box, not a circle: each axis is tested on its own, and its edge is still inside.
    const Vector2D<double> d = point - mOriginalPoint;
    if (!(std::fabs(d.x) > mThreshold) && !(std::fabs(d.y) > mThreshold))
        return;
    mThresholdDelta = { std::clamp(d.x, -mThreshold, mThreshold), std::clamp(d.y, -mThreshold, mThreshold) };
    thresholdExceeded(point);
    mDragging = true;
}

void DragDelay::thresholdExceeded(const Vector2D<double>&)
{
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
