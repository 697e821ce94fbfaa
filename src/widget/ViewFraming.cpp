#include "widget/ViewFraming.h"

#include "layers/LayerManager.h"
#include "widget/AnimationMonitor.h"

#include "splinorlib/Extents.h"
#include "splinorlib/Numeric.h"

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

using SplinorLib::v19::NearZero;

namespace {

constexpr int cDuration = 330;
constexpr int cInterval = 33;

/// One axis of a framing: 5% margins round a real span, and a span of no size centred at the
/// present scale.
void FrameAxis(double iStart, double iSize, double iViewSize, double& oStart, double& oSize)
{
    const double margin = NearZero(iSize) ? iViewSize * 0.5 : iSize * 0.05;
    oSize = NearZero(iSize) ? iViewSize : iSize * 1.1;
    oStart = iStart - margin;
}

bool Contains(const Viewport::Rectangle& iView, const Viewport::Vector& iPoint)
{
    return iPoint.x >= iView.x && iPoint.x < iView.x + iView.width && iPoint.y >= iView.y &&
           iPoint.y < iView.y + iView.height;
}

} // namespace

void FrameVisible(std::shared_ptr<LayerManager> iRoot, std::shared_ptr<Viewport> iViewport,
                  std::shared_ptr<SplinorLib::v19::SplinorContainer> iCurves,
                  std::shared_ptr<SplinorLib::v19::Selection> iSelection, int iAxes)
{
    Viewport::Rectangle extents;
    if (GetVisibleExtents(*iCurves, *iSelection, extents))
        FrameExtents(std::move(iRoot), std::move(iViewport), iAxes, extents);
}

void FrameSelection(std::shared_ptr<LayerManager> iRoot, std::shared_ptr<Viewport> iViewport,
                    std::shared_ptr<SplinorLib::v19::Selection> iSelection, int iAxes)
{
    Viewport::Rectangle extents;
    if (GetSelectedExtents(*iSelection, extents))
        FrameExtents(std::move(iRoot), std::move(iViewport), iAxes, extents);
}

void FrameExtents(std::shared_ptr<LayerManager> iRoot, std::shared_ptr<Viewport> iViewport, int iAxes,
                  const Viewport::Rectangle& iExtents)
{
    const Viewport::Rectangle view = iViewport->getWorldBounds();
    Viewport::Rectangle target = view;
    if (iAxes != FrameYOnly)
        FrameAxis(iExtents.x, iExtents.width, view.width, target.x, target.width);
    if (iAxes != FrameXOnly)
        FrameAxis(iExtents.y, iExtents.height, view.height, target.y, target.height);
    if (target.width > 0.0 && target.height > 0.0)
        AnimateWorldBounds(std::move(iRoot), std::move(iViewport), target);
}

void AnimateWorldBounds(std::shared_ptr<LayerManager> iRoot, std::shared_ptr<Viewport> iViewport,
                        const Viewport::Rectangle& iTarget)
{
    if (iTarget == iViewport->getWorldBounds())
        return;
    if (NearZero(iTarget.width) && NearZero(iTarget.height))
        return;
    std::shared_ptr<AnimationMonitor> monitor(new AnimationMonitor(iViewport, iTarget, cDuration, cInterval));
    monitor->setShared(monitor);
    iRoot->pushLayer(monitor);
}

void EnsureVisibleX(std::shared_ptr<LayerManager> iRoot, std::shared_ptr<Viewport> iViewport, double iX)
{
    const Viewport::Rectangle view = iViewport->getWorldBounds();
    if (Contains(view, {iX, view.y + view.height * 0.5}))
        return;
    Viewport::Rectangle target = view;
    target.x = view.x + (iX - (view.x + view.width + view.x) * 0.5);
    AnimateWorldBounds(std::move(iRoot), std::move(iViewport), target);
}

void EnsureVisible(std::shared_ptr<LayerManager> iRoot, std::shared_ptr<Viewport> iViewport,
                   const Viewport::Vector& iPoint)
{
    const Viewport::Rectangle view = iViewport->getWorldBounds();
    if (Contains(view, iPoint))
        return;
    Viewport::Rectangle target = view;
    target.x = view.x + (iPoint.x - (view.x + view.width + view.x) * 0.5);
    target.y = view.y + (iPoint.y - (view.y + view.height + view.y) * 0.5);
    AnimateWorldBounds(std::move(iRoot), std::move(iViewport), target);
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
