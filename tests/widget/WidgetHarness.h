#pragma once

#include "EditorTestUtil.h"

#include <QImage>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace EditorTest {

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

    /// The pixel at a point of curve space.
    QColor pixelAtWorld(const QImage& iImage, double iX, double iY) const
    {
        const Vector2D<double> p = widget->getViewport()->worldToWindow({iX, iY});
        return iImage.pixelColor(int(p.x), int(p.y));
    }

    std::unique_ptr<GraphWidget> widget;
    bool exposed = false;
};

} // namespace EditorTest
