#pragma once

#include "layers/Layer.h"
#include "render/ColorsObserver.h"

#include <memory>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

class GraphViewColors;

/// Frames the view while the mouse is over the widget. The frame's colour tells whether any
/// snapping is on. It consumes nothing, so enter and leave go on to the layers behind.
class FocusLayer : public Layer, public ColorsObserver
{
    Q_OBJECT

public:
    explicit FocusLayer(std::shared_ptr<const GraphViewColors> iColors);
    ~FocusLayer() override;

    void draw(const Viewport& iViewport) const override;
    bool handleEvent(QEvent* iEvent, Viewport& iViewport) override;
    void colorsChanged() override;

    bool hasFocus() const { return mHasFocus; }

private:
    bool mHasFocus = false;
    std::shared_ptr<const GraphViewColors> mColors;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
