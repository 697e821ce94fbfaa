#include "render/FocusLayer.h"

#include "render/GLSentries.h"
#include "render/GraphViewColors.h"
#include "view/SnapSettings.h"
#include "view/Viewport.h"

#include <QEvent>
#include <qopengl.h>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

FocusLayer::FocusLayer(std::shared_ptr<const GraphViewColors> iColors)
    : Layer("Keyboard Focus Layer"), mColors(std::move(iColors))
{
    mColors->subscribe(*this);
}

FocusLayer::~FocusLayer() = default;

bool FocusLayer::handleEvent(QEvent* iEvent, Viewport&)
{
    if (iEvent->type() == QEvent::Enter || iEvent->type() == QEvent::Leave) {
        mHasFocus = iEvent->type() == QEvent::Enter;
        emit notifyLayerChanged();
    }
    return false;
}

void FocusLayer::draw(const Viewport& iViewport) const
{
    if (!mHasFocus)
        return;
    GLAttributeSentry sentry(0xe00d);
    glHint(GL_LINE_SMOOTH_HINT, GL_NICEST);
    glEnable(GL_LINE_SMOOTH);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);

    // The frame's red flips when no axis snaps: yellow with snapping, green without.
    QColor colour = mColors->getColor(GraphViewColors::cFocusColor);
    if (!mSnapSettings.isSnappingX() && !mSnapSettings.isSnappingY())
        colour.setRedF(1.0 - colour.redF());

    const Viewport::Rectangle& world = iViewport.getWorldBounds();
    if (world.width > 0.0 && world.height > 0.0) {
        glColor3f(GLfloat(colour.redF()), GLfloat(colour.greenF()), GLfloat(colour.blueF()));
        glPolygonMode(GL_FRONT, GL_LINE);
        glLineWidth(3.0f);
        glRectf(GLfloat(world.x), GLfloat(world.y), GLfloat(world.x + world.width), GLfloat(world.y + world.height));
    }
}

void FocusLayer::colorsChanged()
{
    emit notifyLayerChanged();
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
