#include "render/GLDrawing.h"

#include "render/GLSentries.h"

#include <QColor>
#include <qopengl.h>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

using SplinorLib::v19::Rectangle;

namespace {

// Everything the two routines change: colour, the blend enable, the blend function.
constexpr unsigned int cDrawingAttributes = GL_CURRENT_BIT | GL_ENABLE_BIT | GL_COLOR_BUFFER_BIT;

void EnableAlphaBlending()
{
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

void SetColor(const QColor& iColor)
{
    glColor3f(
        static_cast<float>(iColor.redF()), static_cast<float>(iColor.greenF()), static_cast<float>(iColor.blueF()));
}

/// iFirst * iFirstWeight + iSecond * iSecondWeight per channel, truncated, opaque. The weights
/// add up to a little under one, so a mix of a colour with itself may come out one step darker.
QColor MixChannels(const QColor& iFirst, double iFirstWeight, const QColor& iSecond, double iSecondWeight)
{
    const auto mix = [&](int iA, int iB) { return static_cast<int>(iA * iFirstWeight + iB * iSecondWeight); };
    return QColor(mix(iFirst.red(), iSecond.red()), mix(iFirst.green(), iSecond.green()),
        mix(iFirst.blue(), iSecond.blue()), 255);
}

void EmitFlatQuad(const Rectangle<double>& iRectangle, const QColor& iColor)
{
    SetColor(iColor);
    glVertex2d(iRectangle.x, iRectangle.y);
    glVertex2d(iRectangle.x + iRectangle.width, iRectangle.y);
    glVertex2d(iRectangle.x + iRectangle.width, iRectangle.y + iRectangle.height);
    glVertex2d(iRectangle.x, iRectangle.y + iRectangle.height);
}

// x0  x1                x2  x3
//  +---------------------+      y3   light
//  |  \      top      /  |
//  |   +-------------+   |      y2   midLight
//  |   |   centre    |   |           (vertical gradient)
//  |   +-------------+   |      y1   midDark
//  |  /    bottom     \  |
//  +---------------------+      y0   dark
//  left: dark           right: light
void EmitBevelQuads(const Rectangle<double>& iRectangle, float iBevelWidth, const QColor& iLight, const QColor& iDark)
{
    const QColor midLight = MixChannels(iLight, 0.66666, iDark, 0.333333);
    const QColor midDark = MixChannels(iLight, 0.33333, iDark, 0.66666);

    const double h3 = iRectangle.height / 3.0;
    const double x0 = iRectangle.x;
    const double x1 = iRectangle.x + iBevelWidth;
    const double x2 = iRectangle.x + iRectangle.width - iBevelWidth;
    const double x3 = iRectangle.x + iRectangle.width;
    const double y0 = iRectangle.y;
    const double y1 = iRectangle.y + h3;
    const double y2 = iRectangle.y + iRectangle.height - h3;
    const double y3 = iRectangle.y + iRectangle.height;

    // Left strip.
    SetColor(iDark);
    glVertex2d(x0, y0);
    glVertex2d(x1, y1);
    glVertex2d(x1, y2);
    glVertex2d(x0, y3);

    // Bottom strip.
    glVertex2d(x0, y0);
    glVertex2d(x3, y0);
    SetColor(midDark);
    glVertex2d(x2, y1);
    glVertex2d(x1, y1);

    // Centre.
    glVertex2d(x1, y1);
    glVertex2d(x2, y1);
    SetColor(midLight);
    glVertex2d(x2, y2);
    glVertex2d(x1, y2);

    // Top strip.
    glVertex2d(x1, y2);
    glVertex2d(x2, y2);
    SetColor(iLight);
    glVertex2d(x3, y3);
    glVertex2d(x0, y3);

    // Right strip.
    glVertex2d(x3, y0);
    glVertex2d(x3, y3);
    glVertex2d(x2, y2);
    glVertex2d(x2, y1);
}

} // namespace

void DrawBevelledRectangle(const Rectangle<double>& iRectangle, float iBevelWidth, const QColor& iColor, int iFactor)
{
    // lighter() and darker() are the current names of QColor::light() and QColor::dark().
    const QColor light = iColor.lighter(iFactor);
    const QColor dark = iColor.darker(iFactor);

    GLAttributeSentry sentry(cDrawingAttributes);
    EnableAlphaBlending();
    glBegin(GL_QUADS);
    if (light == dark)
        EmitFlatQuad(iRectangle, light);
    else
        EmitBevelQuads(iRectangle, iBevelWidth, light, dark);
    glEnd();
}

void DrawTranslucentRectangle(const Rectangle<double>& iRectangle, const QColor& iColor, float iAlpha)
{
    GLAttributeSentry sentry(cDrawingAttributes);
    EnableAlphaBlending();
    glColor4f(static_cast<float>(iColor.redF()), static_cast<float>(iColor.greenF()),
        static_cast<float>(iColor.blueF()), iAlpha);
    glRectf(static_cast<float>(iRectangle.x), static_cast<float>(iRectangle.y + iRectangle.height),
        static_cast<float>(iRectangle.x + iRectangle.width), static_cast<float>(iRectangle.y));
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
