#pragma once

#include "view/SnapSettings.h"

#include "splinorlib/SharedFromThis.h"

#include <QObject>

#include <memory>
#include <string>

class QColor;
class QEvent;
class QString;

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

class LayerManager;
class Viewport;

/// One drawable, event-handling element of the view: a grid, the curves, a gesture in progress.
///
/// Layers live in a tree of LayerManagers, which own them. A tool is a short-lived layer that
/// stands in front of the others for one gesture and removes itself at its end, which it may do
/// from inside its own handleEvent. Layers are always made in three steps: new, wrap in a
/// std::shared_ptr, setShared; a manager needs getShared() to place and remove them.
class Layer : public QObject, public SplinorLib::v19::SharedFromThis<Layer>
{
    Q_OBJECT

public:
    Layer();
    explicit Layer(const char* iName);
    ~Layer() override;

    /// Draws in curve space, under the projection of the world bounds.
    virtual void draw(const Viewport& iViewport) const;
    /// True when the layer has consumed the event: nobody behind it sees it.
    virtual bool handleEvent(QEvent* iEvent, Viewport& iViewport);

    const char* getName() const { return mName.c_str(); }

    void setVisible(bool iVisible);
    bool isVisible() const { return mVisible; }
    void setInteractive(bool iInteractive);
    bool isInteractive() const { return mInteractive; }

    /// Empty when the layer stands in no manager.
    std::shared_ptr<LayerManager> getManager() const { return mManager.lock(); }
    /// Leaves the manager; safe from inside this layer's own handleEvent.
    void removeFromManager();

    static SnapSettings getSnapSettings() { return mSnapSettings; }
    static void setSnapSettings(SnapSettings iSettings) { mSnapSettings = iSettings; }

    /// The one snapping state of the process, shared by every layer and every widget.
    static SnapSettings mSnapSettings;

signals:
    /// The layer wants a repaint, or its place in the tree changed.
    void notifyLayerChanged() const;
    /// Asks the widget to paint a string at a window position, during the paint.
    void requestDrawText(int iX, int iY, const QString& iText, const QColor& textColor) const;

private:
    friend class LayerManager;
    void setManager(std::shared_ptr<LayerManager> iManager);

    std::weak_ptr<LayerManager> mManager;
    std::string mName;
    bool mVisible = true;
    bool mInteractive = true;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
