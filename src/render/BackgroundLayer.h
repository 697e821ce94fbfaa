#pragma once

#include "layers/Layer.h"
#include "render/ColorsObserver.h"

#include <memory>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

class GraphViewColors;

/// Clears the view to the background colour; it stands at the very back of the user layers.
class BackgroundLayer : public Layer, public ColorsObserver
{
    Q_OBJECT

public:
    explicit BackgroundLayer(std::shared_ptr<const GraphViewColors> iColors);
    ~BackgroundLayer() override;

    void draw(const Viewport& iViewport) const override;
    void colorsChanged() override;

private:
    std::shared_ptr<const GraphViewColors> mColors;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
