#pragma once

#include "layers/Layer.h"
#include "render/ColorsObserver.h"
#include "view/ViewportObserver.h"

#include <QFontMetrics>

#include <memory>

class QFont;

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

class GraphViewColors;

/// The self-scaling grid: fine lines that fade in as they spread apart, coarse lines at ten
/// times their spacing, the two axes and the number labels, recomputed at every paint. It is
/// also where navigation starts, since it stands behind everything and so gets what no curve,
/// key or slider has taken.
class GridLayer : public Layer, public ViewportObserver, public ColorsObserver
{
    Q_OBJECT

public:
    GridLayer(std::shared_ptr<Viewport> iViewport, std::shared_ptr<const GraphViewColors> iColors, const QFont& iFont);
    ~GridLayer() override;

    void draw(const Viewport& iViewport) const override;
    bool handleEvent(QEvent* iEvent, Viewport& iViewport) override;
    void viewportChanged(const Viewport& iViewport) override;
    void colorsChanged() override;

private:
    std::shared_ptr<const GraphViewColors> mColors;
    QFontMetrics mFontMetrics;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
