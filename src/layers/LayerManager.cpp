#include "layers/LayerManager.h"

#include <QMouseEvent>

#include <cstring>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

LayerManager::LayerManager() = default;

LayerManager::LayerManager(const char* iName) : Layer(iName) {}

LayerManager::~LayerManager() = default;

void LayerManager::draw(const Viewport& iViewport) const
{
    const auto& children = mChildren.getContainer();
    for (auto it = children.rbegin(); it != children.rend(); ++it)
        if (it->valid && it->value->isVisible())
            it->value->draw(iViewport);
}

bool LayerManager::handleEvent(QEvent* iEvent, Viewport& iViewport)
{
    Children::IterationGuard guard(mChildren);
    if (iEvent->type() == QEvent::MouseMove) {
        const auto* mouse = static_cast<QMouseEvent*>(iEvent);
        mLastMousePoint = {double(mouse->x()), double(mouse->y())};
    }
    for (const std::shared_ptr<Layer>& child : mChildren)
        if (child->isInteractive() && child->handleEvent(iEvent, iViewport))
            return true;
    return false;
}

void LayerManager::layerChanged(const Layer&)
{
    emit notifyLayerChanged();
}

void LayerManager::pushLayer(std::shared_ptr<Layer> iLayer)
{
    insertLayer(std::move(iLayer), nullptr);
}

void LayerManager::insertLayer(std::shared_ptr<Layer> iLayer, std::shared_ptr<Layer> iReference)
{
    if (!iLayer)
        return;
    auto& children = mChildren.getContainer();
    auto position = children.begin();
    if (iReference) {
        for (auto it = children.begin(); it != children.end(); ++it) {
            if (it->valid && it->value == iReference) {
                position = std::next(it);
                break;
            }
        }
    }
    mChildren.insert(position, iLayer);
    connect(iLayer.get(), SIGNAL(notifyLayerChanged()), this, SIGNAL(notifyLayerChanged()));
    iLayer->setManager(std::static_pointer_cast<LayerManager>(getShared()));
    emit notifyLayerChanged();
}

void LayerManager::removeLayer(std::shared_ptr<Layer> iLayer)
{
    auto& children = mChildren.getContainer();
    for (auto it = children.begin(); it != children.end(); ++it) {
        if (it->valid && it->value == iLayer) {
            iLayer->setManager(nullptr);
            mChildren.erase(it);
            emit notifyLayerChanged();
            return;
        }
    }
}

std::shared_ptr<Layer> LayerManager::findLayer(const char* iName)
{
    if (!iName)
        return nullptr;
    if (std::strcmp(iName, getName()) == 0)
        return getShared();
    for (const std::shared_ptr<Layer>& child : mChildren) {
        if (std::strcmp(iName, child->getName()) == 0)
            return child;
        if (auto* manager = dynamic_cast<LayerManager*>(child.get()))
            if (std::shared_ptr<Layer> found = manager->findLayer(iName))
                return found;
    }
    return nullptr;
}

unsigned int LayerManager::numChildren() const
{
    unsigned int count = 0;
    for (auto it = begin(); it != end(); ++it)
        ++count;
    return count;
}

void LayerManager::handleUndoCommand(QUndoCommand* iCmd) const
{
    if (!iCmd)
        return;
    if (std::shared_ptr<LayerManager> manager = getManager())
        manager->handleUndoCommand(iCmd);
    else
        emit undoCommandGenerated(iCmd);
}

std::shared_ptr<LayerManager> GetRootLayer(std::shared_ptr<Layer> iLayer)
{
    std::shared_ptr<LayerManager> manager = iLayer ? iLayer->getManager() : nullptr;
    if (!manager)
        return std::dynamic_pointer_cast<LayerManager>(iLayer);
    while (std::shared_ptr<LayerManager> above = manager->getManager())
        manager = std::move(above);
    return manager;
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
