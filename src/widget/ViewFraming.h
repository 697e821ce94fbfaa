#pragma once

#include "view/Viewport.h"

#include <memory>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
class Selection;
class SplinorContainer;
} // namespace v19
} // namespace SplinorLib

namespace SplinorEditorQtLib {
namespace v22 {

class LayerManager;

/// Which axes a framing moves.
enum FrameAxes : int { FrameXOnly = 0, FrameYOnly = 1, FrameBoth = 2 };

/// Frames every visible curve; nothing happens when there is nothing to frame.
void FrameVisible(std::shared_ptr<LayerManager> iRoot, std::shared_ptr<Viewport> iViewport,
                  std::shared_ptr<SplinorLib::v19::SplinorContainer> iCurves,
                  std::shared_ptr<SplinorLib::v19::Selection> iSelection, int iAxes);
/// Frames what is selected; nothing happens when nothing is.
void FrameSelection(std::shared_ptr<LayerManager> iRoot, std::shared_ptr<Viewport> iViewport,
                    std::shared_ptr<SplinorLib::v19::Selection> iSelection, int iAxes);
/// Glides to the extents with 5% to spare on each side; an extent of no size is centred at
/// the present scale.
void FrameExtents(std::shared_ptr<LayerManager> iRoot, std::shared_ptr<Viewport> iViewport, int iAxes,
                  const Viewport::Rectangle& iExtents);
/// Starts the glide to a target, unless the view is there already or the target has no size.
void AnimateWorldBounds(std::shared_ptr<LayerManager> iRoot, std::shared_ptr<Viewport> iViewport,
                        const Viewport::Rectangle& iTarget);
/// Brings x into view by centring on it, if it is outside.
void EnsureVisibleX(std::shared_ptr<LayerManager> iRoot, std::shared_ptr<Viewport> iViewport, double iX);
/// Brings a point into view by centring on it, if it is outside.
void EnsureVisible(std::shared_ptr<LayerManager> iRoot, std::shared_ptr<Viewport> iViewport,
                   const Viewport::Vector& iPoint);

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
