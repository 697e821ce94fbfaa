#include "render/BackgroundLayer.h"

#include "render/GraphViewColors.h"

#include <qopengl.h>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

BackgroundLayer::BackgroundLayer(std::shared_ptr<const GraphViewColors> iColors)
    : Layer("Background Layer"), mColors(std::move(iColors))
{
    mColors->subscribe(*this);
}

BackgroundLayer::~BackgroundLayer() = default;

void BackgroundLayer::draw(const Viewport&) const
{
    const QColor& colour = mColors->getColor(GraphViewColors::cBackgroundColor);
    glClearColor(GLfloat(colour.redF()), GLfloat(colour.greenF()), GLfloat(colour.blueF()), 0.0f);
    glClear(GL_COLOR_BUFFER_BIT);
}

void BackgroundLayer::colorsChanged()
{
    emit notifyLayerChanged();
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
