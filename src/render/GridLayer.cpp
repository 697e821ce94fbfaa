#include "render/GridLayer.h"

#include "layers/LayerManager.h"
#include "render/GLSentries.h"
#include "render/GraphViewColors.h"
#include "view/PanZoomLayer.h"
#include "view/SnapSettings.h"
#include "view/Viewport.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <qopengl.h>

#include <algorithm>
#include <cmath>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {
namespace {

using Rect = Viewport::Rectangle;

/// Characters in the whole part of a value, the sign included.
int Digits(double iValue)
{
    if (!std::isfinite(iValue)) // bounds a host has set to infinity: no label will show
        return 1;
    int digits = iValue < 0.0 ? 2 : 1;
    for (double v = std::fabs(iValue); v >= 10.0; v /= 10.0)
        ++digits;
    return digits;
}

/// Fewer decimals for labels ten times further apart; never exactly one decimal.
void LowerDecimals(int& ioDecimals)
{
    if (ioDecimals > 0 && --ioDecimals == 1)
        ioDecimals = 0;
}

/// Between the background (at fade 0) and the grid colour (at fade 1), on integer channels.
QColor Blend(const QColor& iGrid, const QColor& iBackground, double iFade)
{
    auto channel = [&](int grid, int background) { return int(grid * iFade + background * (1.0 - iFade)); };
    return QColor(channel(iGrid.red(), iBackground.red()), channel(iGrid.green(), iBackground.green()),
                  channel(iGrid.blue(), iBackground.blue()), 255);
}

void SetColour(const QColor& iColour)
{
    glColor3f(GLfloat(iColour.redF()), GLfloat(iColour.greenF()), GLfloat(iColour.blueF()));
}

/// Calls iStep at each multiple of iSpacing from iFrom up to, not including, iTo. Positions
/// accumulate by addition. A view of no size gives no spacing, and one zoomed so deep that the
/// spacing drops below the precision of its position would stall: both end the walk.
template <class Step>
void ForMultiples(double iFrom, double iTo, double iSpacing, Step&& iStep)
{
    if (!(iSpacing > 0.0) || !std::isfinite(iSpacing))
        return;
    for (double v = std::ceil(iFrom / iSpacing) * iSpacing; iTo > v; v += iSpacing) {
        iStep(v);
        if (v + iSpacing == v)
            return;
    }
}

void VerticalLines(const Rect& iArea, double iSpacing)
{
    glBegin(GL_LINES);
    ForMultiples(iArea.x, iArea.x + iArea.width, iSpacing, [&](double x) {
        glVertex2f(GLfloat(x), GLfloat(iArea.y));
        glVertex2f(GLfloat(x), GLfloat(iArea.y + iArea.height));
    });
    glEnd();
}

void HorizontalLines(const Rect& iArea, double iSpacing)
{
    glBegin(GL_LINES);
    ForMultiples(iArea.y, iArea.y + iArea.height, iSpacing, [&](double y) {
        glVertex2f(GLfloat(iArea.x), GLfloat(y));
        glVertex2f(GLfloat(iArea.x + iArea.width), GLfloat(y));
    });
    glEnd();
}

} // namespace

GridLayer::GridLayer(std::shared_ptr<Viewport> iViewport, std::shared_ptr<const GraphViewColors> iColors,
                     const QFont& iFont)
    : Layer("Grid Layer"), mColors(std::move(iColors)), mFontMetrics(iFont)
{
    iViewport->subscribe(*this);
    mColors->subscribe(*this);
}

GridLayer::~GridLayer() = default;

void GridLayer::viewportChanged(const Viewport&)
{
    emit notifyLayerChanged();
}

void GridLayer::colorsChanged()
{
    emit notifyLayerChanged();
}

void GridLayer::draw(const Viewport& iViewport) const
{
    const QColor gridColour = mColors->getColor(GraphViewColors::cGridColor);
    const QColor backgroundColour = mColors->getColor(GraphViewColors::cBackgroundColor);
    GLAttributeSentry sentry(0x5);

    const Rect& world = iViewport.getWorldBounds();
    const Rect& window = iViewport.getWindowBounds();
    const Viewport::Vector pixel = iViewport.pixelSize();
    double spacingX, fadeX, spacingY, fadeY;
    int decimalsX, decimalsY;
    SnapSettings::GetGridMetrics(pixel.x, spacingX, fadeX, decimalsX);
    SnapSettings::GetGridMetrics(pixel.y, spacingY, fadeY, decimalsY);
    double labelSpacingX = spacingX;
    double labelSpacingY = spacingY;

    const int averageChar = mFontMetrics.averageCharWidth();
    const int fontHeight = mFontMetrics.height();

    // The lines stay out of the strip of x labels at the bottom and the column of y labels.
    Rect area = world;
    const double right = area.x + area.width;
    const int digitsX = std::max(Digits(area.x), Digits(right));
    const double labelHeight = fontHeight * pixel.y;
    area.y += labelHeight;
    area.height -= labelHeight;

    while (labelSpacingX > 0.0 && std::isfinite(labelSpacingX) &&
           labelSpacingX <= (decimalsX + 1 + digitsX) * averageChar * pixel.x) {
        labelSpacingX *= 10.0;
        LowerDecimals(decimalsX);
    }
    const double top = area.y + area.height;
    const int digitsY = std::max(Digits(area.y), Digits(top));
    if (labelHeight > labelSpacingY) {
        labelSpacingY *= 10.0;
        LowerDecimals(decimalsY);
    }
    const double columnWidth = (decimalsY + digitsY) * averageChar + 4;
    const double left = area.x + columnWidth * pixel.x;
    area.x = left;
    area.width = right - left;

    // The fainter set of fine lines goes under the stronger one.
    const QColor fineX = Blend(gridColour, backgroundColour, fadeX);
    const QColor fineY = Blend(gridColour, backgroundColour, fadeY);
    glLineWidth(1.0f);
    auto fineVertical = [&] { SetColour(fineX); VerticalLines(area, spacingX); };
    auto fineHorizontal = [&] { SetColour(fineY); HorizontalLines(area, spacingY); };
    if (fadeY > fadeX) {
        fineVertical();
        fineHorizontal();
    } else {
        fineHorizontal();
        fineVertical();
    }
    SetColour(gridColour);
    VerticalLines(area, spacingX * 10.0);
    HorizontalLines(area, spacingY * 10.0);

    glLineWidth(2.0f);
    glBegin(GL_LINES);
    if (0.0 >= area.y && 0.0 <= top) {
        glVertex2f(GLfloat(left), 0.0f);
        glVertex2f(GLfloat(right), 0.0f);
    }
    if (0.0 >= left && 0.0 <= right) {
        glVertex2f(0.0f, GLfloat(area.y));
        glVertex2f(0.0f, GLfloat(top));
    }
    glEnd();

    const QColor labelColour = gridColour.lighter(150);
    const int labelY = int(window.height + window.y - 2.0);
    ForMultiples(left, right, labelSpacingX, [&](double x) {
        QString text;
        text.setNum(x, 'f', decimalsX);
        const double labelX = (x - world.x) * (1.0 / pixel.x) - mFontMetrics.horizontalAdvance(text) * 0.5;
        emit requestDrawText(int(labelX), labelY, text, labelColour);
    });
    ForMultiples(area.y, top, labelSpacingY, [&](double y) {
        QString text;
        text.setNum(y, 'f', decimalsY);
        emit requestDrawText(2, int((top - y) * (1.0 / pixel.y) + mFontMetrics.ascent() * 0.5), text, labelColour);
    });
}

bool GridLayer::handleEvent(QEvent* iEvent, Viewport& iViewport)
{
    if (!iViewport.isPanZoomEnabled())
        return false;
    switch (iEvent->type()) {
    case QEvent::Wheel: {
        const auto* wheel = static_cast<QWheelEvent*>(iEvent);
        const Viewport::Vector center(double(int(wheel->position().x())), double(int(wheel->position().y())));
        const QPoint delta = wheel->angleDelta();
        ZoomViewport(iViewport, (delta.y() != 0 ? delta.y() : delta.x()) > 0, &center);
        return true;
    }
    case QEvent::KeyPress: {
        const int key = static_cast<QKeyEvent*>(iEvent)->key();
        if (key != Qt::Key_Plus && key != Qt::Key_Equal && key != Qt::Key_Minus)
            return false;
        ZoomViewport(iViewport, key != Qt::Key_Minus, nullptr);
        return true;
    }
    case QEvent::MouseButtonPress: {
        const auto* mouse = static_cast<QMouseEvent*>(iEvent);
        int mode = 0;
        if (mouse->button() == Qt::MiddleButton)
            mode = PanZoomLayer::cPan;
        else if (mouse->button() == Qt::RightButton && (mouse->modifiers() & Qt::AltModifier))
            mode = PanZoomLayer::cZoom;
        if (mode == 0)
            return false;
        const std::shared_ptr<LayerManager> manager = getManager();
        if (!manager)
            return false;
        std::shared_ptr<PanZoomLayer> layer(
            new PanZoomLayer(mode, Viewport::Vector(double(mouse->x()), double(mouse->y())), iViewport));
        layer->setShared(layer);
        manager->pushLayer(layer);
        return true;
    }
    default:
        return false;
    }
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
