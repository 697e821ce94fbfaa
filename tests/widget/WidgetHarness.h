#pragma once

#include "EditorTestUtil.h"

#include <QApplication>
#include <QImage>
#include <QMouseEvent>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <memory>

namespace EditorTest {

/// Mouse events are sent, not made with the cursor, so that where the real pointer is cannot
/// matter. A move carries no button of its own.
inline void SendMouse(QWidget* iWidget, QEvent::Type iType, QPoint iPoint, Qt::MouseButton iButton,
    Qt::MouseButtons iHeld, Qt::KeyboardModifiers iModifiers = Qt::NoModifier)
{
    QMouseEvent event(iType, iPoint, iType == QEvent::MouseMove ? Qt::NoButton : iButton, iHeld, iModifiers);
    QApplication::sendEvent(iWidget, &event);
}

/// A wheel turned by iDelta eighths of a degree; true if someone accepted it.
inline bool SendWheel(QWidget* iWidget, QPoint iPoint, int iDelta)
{
    QWheelEvent event(iPoint, iWidget->mapToGlobal(iPoint), QPoint(), QPoint(0, iDelta), Qt::NoButton, Qt::NoModifier,
        Qt::NoScrollPhase, false);
    QApplication::sendEvent(iWidget, &event);
    return event.isAccepted();
}

/// A GraphWidget shown in a window of a known size, as a host would show it.
struct ShownWidget
{
    explicit ShownWidget(int iWidth = 300, int iHeight = 200)
    {
        widget = std::make_unique<GraphWidget>();
        widget->resize(iWidth, iHeight);
        widget->show();
        widget->activateWindow();
        exposed = QTest::qWaitForWindowExposed(widget.get());
    }

    /// Renders a frame now and reads it back.
    QImage grab()
    {
        EXPECT_TRUE(exposed) << "the window never showed";
        QCoreApplication::processEvents(); // repaints and window-system events that are due
        return widget->grabFramebuffer();
    }

    /// A point of curve space in window pixels.
    QPoint at(double iX, double iY) const
    {
        const V p = widget->getViewport()->worldToWindow({ iX, iY });
        return QPoint(int(p.x), int(p.y));
    }

    Selection& selection() { return *widget->getSelection(); }

    std::unique_ptr<GraphWidget> widget;
    bool exposed = false;
};

/// One linear curve through the given keys in a 400 x 200 view of about 0..10 by 0..2, shifted
/// by half a pixel so that lines and keys fall on pixel centres: 40 pixels a unit across, 100 up.
struct CurveView : ShownWidget
{
    explicit CurveView(std::initializer_list<V> iKeys)
        : ShownWidget(400, 200)
        , curve(MakeCurve(iKeys))
    {
        widget->getCurves()->addCurve(curve);
        widget->getViewport()->setWorldBounds(Rect(0.0125, -0.005, 10, 2));
    }

    Keyframe& key(double iX) { return *curve->findSegment(iX)->getLeftKey(); }
    Segment& segment(double iX) { return *curve->findSegment(iX); }

    /// A left-button event, as a click or a drag of the selection tools sends it.
    void send(QEvent::Type iType, QPoint iPoint, Qt::MouseButtons iHeld, Qt::KeyboardModifiers iModifiers = {})
    {
        SendMouse(widget.get(), iType, iPoint, Qt::LeftButton, iHeld, iModifiers);
    }
    void click(QPoint iPoint, Qt::KeyboardModifiers iModifiers = {})
    {
        send(QEvent::MouseButtonPress, iPoint, Qt::LeftButton, iModifiers);
        send(QEvent::MouseButtonRelease, iPoint, Qt::NoButton, iModifiers);
    }

    std::shared_ptr<Splinor> curve;
};

/// Lines are smoothed and blended, so a one-pixel line lights its pixels only partly: a pixel
/// within 48 per channel, a pixel or two about the predicted place, counts as a hit.
inline bool ColourNear(const QImage& iImage, QPoint iWindow, const QColor& iColour)
{
    for (int dy = -2; dy <= 2; ++dy)
        for (int dx = -2; dx <= 2; ++dx)
            if (NearColor(iImage.pixelColor(iWindow + QPoint(dx, dy)), iColour, 48))
                return true;
    return false;
}

/// The pixels of an area lighter than iLightness, as text lights them.
inline int CountLit(const QImage& iImage, const QRect& iArea, int iLightness)
{
    int lit = 0;
    for (int y = iArea.top(); y <= iArea.bottom(); ++y)
        for (int x = iArea.left(); x <= iArea.right(); ++x)
            lit += iImage.pixelColor(x, y).lightness() > iLightness;
    return lit;
}

} // namespace EditorTest
