#include "view/PanZoomLayer.h"

#include "tools/DragConstraints.h"

#include <QMouseEvent>

#include <cmath>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

void ZoomViewport(Viewport& ioViewport, bool iZoomIn, const Viewport::Vector* iCenter)
{
    const Viewport::Rectangle& win = ioViewport.getWindowBounds();
    const Viewport::Rectangle& world = ioViewport.getWorldBounds();
    Viewport::Vector pixel;
    Viewport::Vector center;
    if (iCenter) {
        pixel = *iCenter;
        center = ioViewport.windowToWorld(pixel);
    } else {
        center = {world.x + world.width * 0.5, world.y + world.height * 0.5};
        pixel = ioViewport.worldToWindow(center);
    }
    // 0.8 and 1.25 are inverse: a step in and a step out give the size back.
    const double width = world.width * (iZoomIn ? 0.8 : 1.25);
    const double height = world.height * width / world.width;
    ioViewport.setWorldBounds(Viewport::Rectangle(center.x - pixel.x * width / win.width,
                                                  center.y - (win.height - pixel.y) * height / win.height, width,
                                                  height));
}

PanZoomLayer::PanZoomLayer(int iMode, const Viewport::Vector& iAnchor, Viewport& iViewport)
{
    begin(iMode, iAnchor, iViewport);
}

PanZoomLayer::~PanZoomLayer() = default;

void PanZoomLayer::begin(int iMode, const Viewport::Vector& iAnchor, const Viewport& iViewport)
{
    mMode = iMode;
    mAnchor = iAnchor;
    const Viewport::Rectangle& world = iViewport.getWorldBounds();
    if (iMode == cPan) {
        mPanOrigin = {world.x, world.y};
        mWorldPerPixel = iViewport.pixelSize();
    } else if (iMode == cZoom) {
        mZoomStart = world;
        mAspect = world.height / world.width;
    }
    // An axis lock chosen for one mode means nothing for the other: it is chosen again.
    mConstraint.reset();
}

bool PanZoomLayer::handleEvent(QEvent* iEvent, Viewport& iViewport)
{
    switch (iEvent->type()) {
    case QEvent::MouseButtonPress: {
        const auto* mouse = static_cast<QMouseEvent*>(iEvent);
        const Viewport::Vector point(double(mouse->x()), double(mouse->y()));
        if (mouse->button() == Qt::RightButton && mMode != cZoom)
            begin(cZoom, point, iViewport);
        else if (mouse->button() == Qt::MiddleButton && mMode != cPan)
            begin(cPan, point, iViewport);
        return true;
    }
    case QEvent::MouseButtonRelease: {
        const auto* mouse = static_cast<QMouseEvent*>(iEvent);
        const Viewport::Vector point(double(mouse->x()), double(mouse->y()));
        const Qt::MouseButtons held = mouse->buttons();
        if (mouse->button() == Qt::RightButton) {
            if (mMode == cZoom && (held & Qt::MiddleButton))
                begin(cPan, point, iViewport);
            else
                mMode = cIdle;
        } else if (mouse->button() == Qt::MiddleButton) {
            if (mMode == cPan && (held & Qt::RightButton))
                begin(cZoom, point, iViewport);
            else
                mMode = cIdle;
        }
        if (mMode == cIdle)
            removeFromManager();
        return true;
    }
    case QEvent::MouseMove: {
        const auto* mouse = static_cast<QMouseEvent*>(iEvent);
        const Viewport::Vector point(double(mouse->x()), double(mouse->y()));
        if ((mouse->modifiers() & Qt::ShiftModifier) && !mConstraint) {
            if (mMode == cZoom) // the zoom starts over from here, so nothing jumps
                begin(cZoom, point, iViewport);
            mConstraint = std::make_unique<XYDragConstraint>(point);
        }
        if (mMode == cPan)
            pan(point, iViewport);
        else if (mMode == cZoom)
            zoom(point, iViewport);
        return true;
    }
    default:
        return false;
    }
}

void PanZoomLayer::pan(Viewport::Vector iPoint, Viewport& iViewport)
{
    if (mConstraint)
        mConstraint->constrain(iPoint);
    Viewport::Rectangle bounds = iViewport.getWorldBounds();
    bounds.x = mPanOrigin.x - (iPoint.x - mAnchor.x) * mWorldPerPixel.x;
    bounds.y = (iPoint.y - mAnchor.y) * mWorldPerPixel.y + mPanOrigin.y;
    iViewport.setWorldBounds(bounds);
}

void PanZoomLayer::zoom(Viewport::Vector iPoint, Viewport& iViewport)
{
    if (mConstraint)
        mConstraint->constrain(iPoint);
    // Right and down zoom in, left and up zoom out, one percent a pixel.
    const double factor = std::pow(0.99, (iPoint.x - mAnchor.x) + (iPoint.y - mAnchor.y));
    double width = factor * mZoomStart.width;
    double height = width * mAspect;
    if (const auto* axisLock = dynamic_cast<const XYDragConstraint*>(mConstraint.get())) {
        width = axisLock->getAxis() == 1 ? factor * mZoomStart.width : mZoomStart.width;
        height = axisLock->getAxis() == 2 ? factor * mZoomStart.height : mZoomStart.height;
    }
    // The point under the anchor stays under it through the whole gesture.
    const Viewport::Vector fixed = iViewport.windowToWorld(mAnchor);
    const Viewport::Rectangle& win = iViewport.getWindowBounds();
    iViewport.setWorldBounds(Viewport::Rectangle(fixed.x - mAnchor.x * width / win.width,
                                                 fixed.y - (win.height - mAnchor.y) * height / win.height, width,
                                                 height));
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
