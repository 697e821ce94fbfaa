#pragma once

#include "layers/Layer.h"

#include "splinorlib/DelayedErase.h"
#include "splinorlib/Vector2D.h"

#include <list>
#include <memory>

class QUndoCommand;

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

/// A layer that holds an ordered list of child layers and passes draws and events on to them.
///
/// The front of the list is the top of the stack: it sees events first and is drawn last.
/// Children may be removed while an event walks the list, by any layer the walk calls: the
/// entry is then only marked, skipped by the rest of the walk, and the layer is destroyed when
/// the outermost walk of this manager ends.
class LayerManager : public Layer
{
    Q_OBJECT

public:
    template <class D>
    using List = std::list<D>;
    using Children = SplinorLib::v19::DelayedErase<std::shared_ptr<Layer>, List>;
    using iterator = Children::iterator;
    using const_iterator = Children::const_iterator;

    LayerManager();
    explicit LayerManager(const char* iName);
    ~LayerManager() override;

    /// Draws the visible children from the back to the front.
    void draw(const Viewport& iViewport) const override;
    /// Offers the event to the interactive children from the front, until one consumes it.
    bool handleEvent(QEvent* iEvent, Viewport& iViewport) override;
    /// A child has changed; by default this manager then asks for a repaint itself.
    virtual void layerChanged(const Layer& iLayer);

    /// Puts the layer at the front.
    void pushLayer(std::shared_ptr<Layer> iLayer);
    /// Puts the layer directly behind iReference, or at the front when iReference is empty or
    /// is not a child of this manager.
    void insertLayer(std::shared_ptr<Layer> iLayer, std::shared_ptr<Layer> iReference);
    void removeLayer(std::shared_ptr<Layer> iLayer);
    /// Depth first, in list order; this manager itself if the name is its own.
    std::shared_ptr<Layer> findLayer(const char* iName);

    unsigned int numChildren() const;
    iterator begin() { return mChildren.begin(); }
    iterator end() { return mChildren.end(); }
    const_iterator begin() const { return static_cast<const Children&>(mChildren).begin(); }
    const_iterator end() const { return static_cast<const Children&>(mChildren).end(); }

    /// Window coordinates of the last mouse move that reached this manager; (0, 0) before any.
    SplinorLib::v19::Vector2D<double> getLastMousePoint() const { return mLastMousePoint; }

    /// Passes a finished command up to the root, which hands it to the widget to run.
    void handleUndoCommand(QUndoCommand* iCmd) const;

signals:
    void undoCommandGenerated(QUndoCommand* iCmd) const;

private:
    class ChildList : public Children
    {
    };

    ChildList mChildren;
    SplinorLib::v19::Vector2D<double> mLastMousePoint;
};

/// The manager at the top of the tree that holds iLayer; iLayer itself if it stands in no
/// manager and is one, and empty otherwise.
std::shared_ptr<LayerManager> GetRootLayer(std::shared_ptr<Layer> iLayer);

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
