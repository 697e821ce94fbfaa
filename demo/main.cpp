// The editor as a host application uses it: a main window around a GraphWidget, curves in its
// container, and undo through the widget's stack.
//
//   SplinorDemo                     opens the window
//   SplinorDemo --screenshot FILE   renders the window once, writes FILE (PNG) and quits

#include "BouncingBall.h"

#include "SplinorEditorQt.h"

#include <QAction>
#include <QApplication>
#include <QFileInfo>
#include <QMainWindow>
#include <QMenuBar>
#include <QStatusBar>
#include <QSurfaceFormat>
#include <QScreen>
#include <QTimer>

#include <cstdio>

using namespace Ovantis::SplinorEditorQtLib::v22;
using namespace Ovantis::SplinorLib::v19;

namespace {

/// Shows all curves with a margin, as the view starts out before the user frames it.
void ShowAll(GraphWidget& iGraph)
{
    Rectangle<double> extents;
    if (!GetVisibleExtents(*iGraph.getCurves(), *iGraph.getSelection(), extents))
        return;
    const double marginX = extents.width * 0.05;
    const double marginY = extents.height * 0.1;
    iGraph.getViewport()->setWorldBounds(Rectangle<double>(extents.x - marginX, extents.y - marginY,
                                                           extents.width + 2 * marginX, extents.height + 2 * marginY));
}

QString ScreenshotPath(const QStringList& iArguments)
{
    const int at = iArguments.indexOf("--screenshot");
    return at >= 0 && at + 1 < iArguments.size() ? iArguments.at(at + 1) : QString();
}

} // namespace

int main(int argc, char** argv)
{
    QSurfaceFormat::setDefaultFormat(GraphWidget::surfaceFormat());

    QApplication application(argc, argv);
    QMainWindow window;
    window.setWindowTitle("SplinorEditorQt demo: a bouncing ball");
    auto* graph = new GraphWidget(&window);
    window.setCentralWidget(graph);

    AddBouncingBall(*graph->getCurves());

    QUndoStack& stack = graph->getUndoStack()->getStack();
    QMenu* edit = window.menuBar()->addMenu("&Edit");
    QAction* undo = stack.createUndoAction(&window, "&Undo");
    undo->setShortcut(QKeySequence::Undo);
    QAction* redo = stack.createRedoAction(&window, "&Redo");
    redo->setShortcut(QKeySequence::Redo);
    edit->addAction(undo);
    edit->addAction(redo);
    QObject::connect(graph, &GraphWidget::actionEnd, [&] { window.statusBar()->showMessage(stack.undoText(), 3000); });

    // Names on the curves, and the height selected so that its keys and tangents show.
    graph->triggerLabels();
    auto height = graph->getCurves()->at(0);
    graph->getSelection()->select(*height);
    graph->getSelection()->select(*height->findSegment(42.0)->getLeftKey());
    graph->getSelection()->select(*height->findSegment(42.0));
    SetVelocityVisible(*graph->getCurves()->at(2), false);

    window.resize(960, 540);
    window.show();
    ShowAll(*graph);

    const QString screenshot = ScreenshotPath(application.arguments());
    if (!screenshot.isEmpty()) {
        QTimer::singleShot(200, [&] {
            // What the screen shows, as a user would see it.
            const QPixmap shot = window.screen()->grabWindow(window.winId());
            const bool saved = shot.save(screenshot, "PNG");
            std::printf("%s %s\n", saved ? "Screenshot written to" : "Could not write",
                        qPrintable(QFileInfo(screenshot).absoluteFilePath()));
            std::fflush(stdout);
            application.exit(saved ? 0 : 1);
        });
    }
    return application.exec();
}
