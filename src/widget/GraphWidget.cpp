#include "widget/GraphWidget.h"

#include "commands/UndoStack.h"
#include "layers/LayerManager.h"
#include "render/BackgroundLayer.h"
#include "render/CurveLayer.h"
#include "render/FocusLayer.h"
#include "render/GLSentries.h"
#include "render/GraphViewColors.h"
#include "render/GridLayer.h"
#include "view/Viewport.h"
#include "widget/ViewFraming.h"

#include "splinorlib/Splinor.h"
#include "splinorlib/SplinorContainer.h"

#include <QMouseEvent>
#include <QPainter>
#include <QUndoCommand>
#include <QWheelEvent>
#include <qopengl.h>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {
namespace {

/// The creation of objects that hold a weak reference to themselves.
template <class T, class... Args>
std::shared_ptr<T> MakeShared(Args&&... iArgs)
{
    std::shared_ptr<T> object(new T(std::forward<Args>(iArgs)...));
    object->setShared(object);
    return object;
}

} // namespace

QSurfaceFormat GraphWidget::surfaceFormat()
{
    QSurfaceFormat format;
    format.setProfile(QSurfaceFormat::CompatibilityProfile);
    format.setVersion(2, 1);
    return format;
}

GraphWidget::GraphWidget(QWidget* parent, Qt::WindowFlags flags) : QOpenGLWidget(parent, flags)
{
    init();
}

GraphWidget::~GraphWidget()
{
    // Layers may release GL resources as the members below go, in reverse order: the undo
    // stack with its commands first, the curves last.
    makeCurrent();
}

void GraphWidget::init()
{
    mCurves = SplinorContainer::create();
    mSelection = std::make_shared<Selection>(mCurves);
    mViewport = MakeShared<Viewport>();
    mColors = std::make_shared<GraphViewColors>();
    mRootLayer = MakeShared<LayerManager>("Root Layer");
    mUserLayers = MakeShared<LayerManager>();
    mUndoStack = MakeShared<UndoStack>();
    mFont = QFont();
    mRepaintPending = false;

    // The view is opaque: the background is cleared with zero alpha, which an RGBA texture
    // would otherwise composite as a hole into the host's window.
    setTextureFormat(GL_RGB8);

    setMinimumSize(100, 100);
    setMaximumSize(2000, 2000);
    mViewport->setWindowBounds(Viewport::Rectangle(0.0, 0.0, 100.0, 100.0));
    mViewport->setWorldBounds(Viewport::Rectangle(-10.0, -2.0, 110.0, 4.0));

    setAttribute(Qt::WA_MouseTracking, true);
    setFocusPolicy(Qt::StrongFocus);

    connect(mRootLayer.get(), SIGNAL(notifyLayerChanged()), this, SLOT(needRedraw()));
    connect(mRootLayer.get(), SIGNAL(undoCommandGenerated(QUndoCommand*)), this, SLOT(pushUndoStack(QUndoCommand*)));
    mRootLayer->pushLayer(mUserLayers);

    mUserLayers->pushLayer(MakeShared<BackgroundLayer>(mColors));
    auto grid = MakeShared<GridLayer>(mViewport, mColors, QFont(mFont));
    mUserLayers->pushLayer(grid);
    connect(grid.get(), SIGNAL(requestDrawText(int, int, const QString&, const QColor&)), this,
            SLOT(drawText(int, int, const QString&, const QColor&)));
    auto curves = MakeShared<CurveLayer>(mCurves, mSelection, mColors);
    mUserLayers->pushLayer(curves);
    connect(curves.get(), SIGNAL(requestDrawText(int, int, const QString&, const QColor&)), this,
            SLOT(drawText(int, int, const QString&, const QColor&)));
    mRootLayer->pushLayer(MakeShared<FocusLayer>(mColors));

    // The settings are the process's: each new widget puts them back to these.
    SnapSettings snap;
    snap.setSnappingX(true);
    snap.setIncrementX(1.0);
    snap.setSnappingY(false);
    snap.setIncrementY(SnapSettings::cSnapToGrid);
    setSnapSettings(snap);

    // One command, the last, stays on the stack: it is there to run commands, and undo is the
    // host's to offer.
    mUndoStack->getStack().setUndoLimit(1);
}

SnapSettings GraphWidget::getSnapSettings() const
{
    return Layer::getSnapSettings();
}

void GraphWidget::setSnapSettings(SnapSettings iSettings)
{
    if (iSettings == Layer::getSnapSettings())
        return;
    Layer::setSnapSettings(iSettings);
    emit snapSettingsChanged();
}

// --- Slots ----------------------------------------------------------------------------------

void GraphWidget::drawText(int iX, int iY, const QString& iText, const QColor& textColor)
{
    QPainter painter(this);
    painter.setPen(textColor);
    painter.setFont(mFont);
    painter.drawText(QPointF(iX, iY), iText);
    painter.end();
}

void GraphWidget::needRedraw()
{
    update();
}

void GraphWidget::pushUndoStack(QUndoCommand* iCmd)
{
    if (!iCmd) // the tools' road filters these; a host's call may not
        return;
    emitActionBegin(iCmd->text());
    try {
        mUndoStack->getStack().push(iCmd);
    } catch (...) {
        emitActionEnd();
        throw;
    }
    emitActionEnd();
}

void GraphWidget::triggerFrameAuto()
{
    if (mSelection->begin() == mSelection->end())
        triggerFrameAll();
    else
        triggerFrameSelected();
}

void GraphWidget::triggerFrameAll() { FrameVisible(mRootLayer, mViewport, mCurves, mSelection, FrameBoth); }
void GraphWidget::triggerFrameAllX() { FrameVisible(mRootLayer, mViewport, mCurves, mSelection, FrameXOnly); }
void GraphWidget::triggerFrameAllY() { FrameVisible(mRootLayer, mViewport, mCurves, mSelection, FrameYOnly); }
void GraphWidget::triggerFrameSelected() { FrameSelection(mRootLayer, mViewport, mSelection, FrameBoth); }
void GraphWidget::triggerFrameSelectedX() { FrameSelection(mRootLayer, mViewport, mSelection, FrameXOnly); }
void GraphWidget::triggerFrameSelectedY() { FrameSelection(mRootLayer, mViewport, mSelection, FrameYOnly); }

void GraphWidget::triggerLabels()
{
    if (auto* layer = dynamic_cast<CurveLayer*>(mRootLayer->findLayer("Curve Layer").get()))
        layer->setLabelsVisible(!layer->areLabelsVisible());
}

// --- Events ---------------------------------------------------------------------------------

bool GraphWidget::delegateEventToLayerManager(QEvent* iEvent)
{
    const bool consumed = mRootLayer->handleEvent(iEvent, *mViewport);
    if (consumed)
        iEvent->accept();
    repaintIfPending();
    return consumed;
}

void GraphWidget::repaintIfPending()
{
    if (!mRepaintPending)
        return;
    mRepaintPending = false;
    paintEvent(nullptr);
}

void GraphWidget::mousePressEvent(QMouseEvent* event)
{
    const bool consumed = delegateEventToLayerManager(event);
    if (!consumed && event->button() == Qt::RightButton && event->modifiers() == Qt::NoModifier &&
        contextMenuPolicy() == Qt::DefaultContextMenu)
        mActionMenu.exec(event->globalPos());
    repaintIfPending();
}

void GraphWidget::mouseReleaseEvent(QMouseEvent* event) { delegateEventToLayerManager(event); }
void GraphWidget::mouseMoveEvent(QMouseEvent* event) { delegateEventToLayerManager(event); }
void GraphWidget::keyReleaseEvent(QKeyEvent* event) { delegateEventToLayerManager(event); }
void GraphWidget::focusInEvent(QFocusEvent* event) { delegateEventToLayerManager(event); }
void GraphWidget::focusOutEvent(QFocusEvent* event) { delegateEventToLayerManager(event); }
void GraphWidget::enterEvent(QEvent* event) { delegateEventToLayerManager(event); }
void GraphWidget::leaveEvent(QEvent* event) { delegateEventToLayerManager(event); }

void GraphWidget::wheelEvent(QWheelEvent* event)
{
    // Unconsumed, the wheel goes on to the parent, so that a scroll area around us scrolls.
    if (!delegateEventToLayerManager(event))
        QWidget::wheelEvent(event);
}

void GraphWidget::keyPressEvent(QKeyEvent* event)
{
    // The widget's own keys act before any layer sees them, whatever the modifiers.
    switch (event->key()) {
    case Qt::Key_A:
        triggerFrameAll();
        break;
    case Qt::Key_F:
        triggerFrameAuto();
        break;
    case Qt::Key_H:
        triggerLabels();
        mRepaintPending = true;
        break;
    default:
        delegateEventToLayerManager(event);
        return;
    }
    event->accept();
    repaintIfPending();
}

// --- GL -------------------------------------------------------------------------------------

void GraphWidget::initializeGL() {}

void GraphWidget::resizeGL(int w, int h)
{
    mViewport->setWindowBounds(Viewport::Rectangle(0.0, 0.0, double(w), double(h)));
}

void GraphWidget::paintGL()
{
    GLAttributeSentry attributes(GL_TRANSFORM_BIT | GL_VIEWPORT_BIT);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glMatrixMode(GL_PROJECTION);
    GLMatrixSentry projection;
    glLoadIdentity();
    const Viewport::Rectangle& world = mViewport->getWorldBounds();
    glOrtho(world.x, world.x + world.width, world.y, world.y + world.height, 0.0, 1.0);
    const Viewport::Rectangle& win = mViewport->getWindowBounds();
    glViewport(int(win.x), int(win.y), int(win.width), int(win.height));
    mRootLayer->draw(*mViewport);
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
