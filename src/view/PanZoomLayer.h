#pragma once

#include "layers/Layer.h"
#include "view/Viewport.h"

#include <memory>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

class DragConstraint;

/// One zoom step about a window position, or about the middle of the view for a null center:
/// the world point under it stays under it, and the aspect stays.
void ZoomViewport(Viewport& ioViewport, bool iZoomIn, const Viewport::Vector* iCenter);

/// The gesture of a middle-button pan or an Alt and right-button zoom, from the press that
/// starts it to the release that ends it. Every position is worked out from the start of the
/// gesture, so nothing drifts in a long drag. Shift locks the motion to the axis of the first
/// few pixels.
///
/// | mode | event                                   | next                        |
/// |------|-----------------------------------------|-----------------------------|
/// | pan  | middle released, right not held         | done, layer removed         |
/// | pan  | middle released, right held             | zoom, from the present view |
/// | pan  | right pressed                           | zoom, from the present view |
/// | zoom | right released, middle not held         | done, layer removed         |
/// | zoom | right released, middle held             | pan, from the present view  |
/// | zoom | middle pressed                          | pan, from the present view  |
/// | any  | release of the other button, not held   | done, layer removed         |
class PanZoomLayer : public Layer
{
    Q_OBJECT

public:
    enum Mode : int { cIdle = 0, cPan = 2, cZoom = 3 };

    PanZoomLayer(int iMode, const Viewport::Vector& iAnchor, Viewport& iViewport);
    ~PanZoomLayer() override;

    bool handleEvent(QEvent* iEvent, Viewport& iViewport) override;

    int getMode() const { return mMode; }

private:
    /// Starts a mode over from the present view, with the pointer at iAnchor.
    void begin(int iMode, const Viewport::Vector& iAnchor, const Viewport& iViewport);
    void pan(Viewport::Vector iPoint, Viewport& iViewport);
    void zoom(Viewport::Vector iPoint, Viewport& iViewport);

    int mMode = cIdle;
    std::unique_ptr<DragConstraint> mConstraint;
    Viewport::Vector mWorldPerPixel;
    Viewport::Vector mAnchor;
    Viewport::Vector mPanOrigin;
    Viewport::Rectangle mZoomStart;
    double mAspect = 1.0;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
