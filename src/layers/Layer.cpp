#include "layers/Layer.h"

#include "layers/LayerManager.h"

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

SnapSettings Layer::mSnapSettings;

Layer::Layer() = default;

Layer::Layer(const char* iName) : mName(iName ? iName : "") {}

Layer::~Layer() = default;

void Layer::draw(const Viewport&) const {}

bool Layer::handleEvent(QEvent*, Viewport&)
{
    return false;
}

void Layer::setVisible(bool iVisible)
{
    if (iVisible == mVisible)
        return;
    mVisible = iVisible;
    emit notifyLayerChanged();
}

void Layer::setInteractive(bool iInteractive)
{
    if (iInteractive == mInteractive)
        return;
    mInteractive = iInteractive;
    emit notifyLayerChanged();
}

void Layer::removeFromManager()
{
    if (std::shared_ptr<LayerManager> manager = getManager())
        manager->removeLayer(getShared());
}

void Layer::setManager(std::shared_ptr<LayerManager> iManager)
{
    mManager = iManager;
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
