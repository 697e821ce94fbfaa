#pragma once

#include "view/SnapSettings.h"

#include "splinorlib/Selection.h"

#include <QFont>
#include <QMenu>
#include <QOpenGLWidget>
#include <QSurfaceFormat>

#include <memory>

class QUndoCommand;

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
class Splinor;
class SplinorContainer;
} // namespace v19
} // namespace SplinorLib

namespace SplinorEditorQtLib {
namespace v22 {

class GraphViewColors;
class LayerManager;
class UndoStack;
class Viewport;

/// The curve editor: an embeddable OpenGL widget that shows the curves of its container and
/// lets the user edit them.
///
/// A host creates it, fills getCurves() and shows it; nothing else is needed. The widget owns
/// the model and view objects and the layer tree, hands every paint and input event to the
/// tree, and carries three messages out of it: repaint (needRedraw), paint a string
/// (drawText) and run an undo command (pushUndoStack). The logic lives in the layers.
class GraphWidget : public QOpenGLWidget
{
    Q_OBJECT

public:
    using SplinorContainer = SplinorLib::v19::SplinorContainer;
    using Selection = SplinorLib::v19::Selection;
    using Splinor = SplinorLib::v19::Splinor;

    explicit GraphWidget(QWidget* parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());

    /// The widget draws with OpenGL's fixed-function pipeline, which needs a compatibility
    /// profile. A host passes this to QSurfaceFormat::setDefaultFormat before it makes its
    /// QApplication, where the platform's default might be a core profile.
    static QSurfaceFormat surfaceFormat();
    ~GraphWidget() override;

    std::shared_ptr<SplinorContainer> getCurves() { return mCurves; }
    std::shared_ptr<const SplinorContainer> getCurves() const { return mCurves; }
    std::shared_ptr<Selection> getSelection() { return mSelection; }
    std::shared_ptr<const Selection> getSelection() const { return mSelection; }
    std::shared_ptr<Viewport> getViewport() { return mViewport; }
    std::shared_ptr<const Viewport> getViewport() const { return mViewport; }
    std::shared_ptr<GraphViewColors> getColors() { return mColors; }
    std::shared_ptr<const GraphViewColors> getColors() const { return mColors; }
    std::shared_ptr<UndoStack> getUndoStack() { return mUndoStack; }
    std::shared_ptr<const UndoStack> getUndoStack() const { return mUndoStack; }
    std::shared_ptr<LayerManager> getRootLayer() { return mRootLayer; }
    std::shared_ptr<LayerManager> getUserLayers() { return mUserLayers; }

    QFont& getFont() { return mFont; }
    const QFont& getFont() const { return mFont; }

    Selection::const_iterator beginSelected() const { return mSelection->begin(); }
    Selection::const_iterator endSelected() const { return mSelection->end(); }

    SnapSettings getSnapSettings() const;
    /// Stores the settings and emits snapSettingsChanged, if they differ from those in force.
    void setSnapSettings(SnapSettings iSettings);

signals:
    void actionBegin(const QString& iText);
    void actionEnd();
    void snapSettingsChanged();

public slots:
    /// Paints a string at once, in widget pixels; called by layers while they draw.
    virtual void drawText(int iX, int iY, const QString& iText, const QColor& textColor);
    /// Schedules a repaint; several requests in one event give one paint.
    virtual void needRedraw();
    /// Runs a command through the undo stack, between actionBegin and actionEnd.
    virtual void pushUndoStack(QUndoCommand* iCmd);
    /// Frames the selection, or everything when nothing is selected.
    virtual void triggerFrameAuto();
    virtual void triggerFrameAll();
    virtual void triggerFrameAllX();
    virtual void triggerFrameAllY();
    virtual void triggerFrameSelected();
    virtual void triggerFrameSelectedX();
    virtual void triggerFrameSelectedY();
    /// Shows or hides the curve name labels; the key H also repaints at once.
    virtual void triggerLabels();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void initializeGL() override;
    void resizeGL(int w, int h) override;
    void paintGL() override;

    /// Set by actions that must show their effect before the event returns.
    void requestImmediateRepaint() { mRepaintPending = true; }

private:
    void init();
    bool delegateEventToLayerManager(QEvent* iEvent);
    void repaintIfPending();
    void emitActionBegin(const QString& iText) { emit actionBegin(iText); }
    void emitActionEnd() { emit actionEnd(); }

    std::shared_ptr<SplinorContainer> mCurves;
    std::shared_ptr<Selection> mSelection;
    std::shared_ptr<Viewport> mViewport;
    std::shared_ptr<GraphViewColors> mColors;
    std::shared_ptr<LayerManager> mRootLayer;
    std::shared_ptr<LayerManager> mUserLayers;
    QFont mFont;
    QMenu mActionMenu;
    std::shared_ptr<Splinor> mCopyBuffer;
    std::shared_ptr<UndoStack> mUndoStack;
    bool mRepaintPending = false;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
