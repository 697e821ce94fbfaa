#include "widget/WidgetHarness.h"

#include <QSignalSpy>
#include <QUndoCommand>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <qopengl.h>

#include <gtest/gtest.h>

using namespace EditorTest;

namespace {

using Rect = Viewport::Rectangle;

/// Clears to black and fills a rectangle of curve space in red.
void DrawRedRectangle(const Rect& iArea)
{
    glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glColor3f(1.0f, 0.0f, 0.0f);
    glRectd(iArea.x, iArea.y, iArea.x + iArea.width, iArea.y + iArea.height);
}

/// A command that logs its runs, so that a test sees when the stack ran it.
class LoggingCommand : public QUndoCommand
{
public:
    LoggingCommand(const QString& iText, std::vector<std::string>* iLog) : QUndoCommand(iText), mLog(iLog) {}
    void redo() override { mLog->push_back("redo " + text().toStdString()); }
    void undo() override { mLog->push_back("undo " + text().toStdString()); }

private:
    std::vector<std::string>* mLog;
};

} // namespace

TEST(GraphWidget, starts_with_its_default_view_and_size_limits)
{
    GraphWidget widget;

    EXPECT_EQ(widget.getViewport()->getWorldBounds(), Rect(-10, -2, 110, 4));
    EXPECT_EQ(widget.getViewport()->getWindowBounds(), Rect(0, 0, 100, 100));
    EXPECT_EQ(widget.minimumSize(), QSize(100, 100));
    EXPECT_EQ(widget.maximumSize(), QSize(2000, 2000));
    EXPECT_EQ(widget.getRootLayer()->findLayer(""), widget.getUserLayers());
    EXPECT_EQ(widget.getUserLayers()->getManager(), widget.getRootLayer());
    EXPECT_TRUE(widget.hasMouseTracking());
    EXPECT_EQ(widget.getUndoStack()->getStack().undoLimit(), 1);
}

TEST(GraphWidget, a_user_layer_draws_under_the_projection_of_the_world_bounds)
{
    ShownWidget shown(300, 200);
    auto layer = Make<ScriptedLayer>("painter", nullptr);
    layer->onDraw = [](const Viewport&) { DrawRedRectangle(Rect(0, 0, 50, 1)); };
    shown.widget->getUserLayers()->pushLayer(layer);
    shown.widget->getViewport()->setWorldBounds(Rect(0, 0, 100, 2));

    const QImage image = shown.grab();

    EXPECT_EQ(shown.widget->getViewport()->getWindowBounds(), Rect(0, 0, 300, 200));
    EXPECT_EQ(shown.pixelAtWorld(image, 25, 0.5), QColor(Qt::red));
    EXPECT_EQ(shown.pixelAtWorld(image, 75, 0.5), QColor(Qt::black));
    EXPECT_EQ(shown.pixelAtWorld(image, 25, 1.5), QColor(Qt::black));
    // The rectangle's right edge at x = 50 falls on window x = 150.
    EXPECT_EQ(image.pixelColor(148, 150), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(152, 150), QColor(Qt::black));
}

TEST(GraphWidget, paint_leaves_the_gl_state_as_it_found_it)
{
    GLint depth = -1;
    GLint mode = 0;
    ShownWidget shown;
    auto layer = Make<ScriptedLayer>("probe", nullptr);
    layer->onDraw = [&](const Viewport&) { glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &depth); };
    shown.widget->getUserLayers()->pushLayer(layer);

    shown.grab();
    shown.widget->makeCurrent();
    GLint depthAfter = -1;
    glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &depthAfter);
    glGetIntegerv(GL_MATRIX_MODE, &mode);

    EXPECT_EQ(depth, 2) << "the layers draw on the pushed projection";
    EXPECT_EQ(depthAfter, 1);
    EXPECT_EQ(mode, GL_MODELVIEW) << "the matrix mode comes back with the attributes";
}

TEST(GraphWidget, input_events_reach_the_layers_with_and_without_buttons)
{
    // Declared first: the widget may still hand events to the layer while it is destroyed.
    std::vector<QEvent::Type> types;
    ShownWidget shown;
    GraphWidget* widget = shown.widget.get();
    auto layer = Make<ScriptedLayer>("listener", nullptr);
    layer->onEvent = [&](QEvent* iEvent, Viewport&) {
        if (iEvent->type() != QEvent::Enter && iEvent->type() != QEvent::Leave && iEvent->type() != QEvent::FocusIn &&
            iEvent->type() != QEvent::FocusOut)
            types.push_back(iEvent->type());
        return iEvent->type() == QEvent::MouseButtonPress;
    };
    widget->getUserLayers()->pushLayer(layer);

    // A move is sent, not made with the cursor, so that where the real pointer is cannot matter.
    QMouseEvent move(QEvent::MouseMove, QPointF(40, 50), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &move);
    QTest::mousePress(widget, Qt::LeftButton, Qt::NoModifier, QPoint(41, 51));
    QTest::mouseRelease(widget, Qt::LeftButton, Qt::NoModifier, QPoint(41, 51));
    QTest::keyClick(widget, Qt::Key_Q);

    EXPECT_EQ(types, (std::vector<QEvent::Type>{QEvent::MouseMove, QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                                                QEvent::KeyPress, QEvent::KeyRelease}));
    EXPECT_EQ(widget->getRootLayer()->getLastMousePoint(), Vector2D<double>(40, 50));
}

TEST(GraphWidget, an_unconsumed_wheel_is_left_to_the_parent)
{
    ShownWidget shown;
    shown.widget->getViewport()->setPanZoomEnabled(false); // or the grid takes the wheel to zoom
    bool consume = false;
    auto layer = Make<ScriptedLayer>("wheel", nullptr);
    layer->onEvent = [&](QEvent* iEvent, Viewport&) { return consume && iEvent->type() == QEvent::Wheel; };
    shown.widget->getUserLayers()->pushLayer(layer);
    auto wheel = [&] {
        QWheelEvent event(QPointF(10, 10), shown.widget->mapToGlobal(QPoint(10, 10)), QPoint(), QPoint(0, 120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(shown.widget.get(), &event);
        return event.isAccepted();
    };

    // Ignored, Qt hands a wheel on to the parent widget, so a scroll area around us still scrolls.
    EXPECT_FALSE(wheel());
    consume = true;
    EXPECT_TRUE(wheel());
}

TEST(GraphWidget, a_layer_change_schedules_one_repaint)
{
    int draws = 0;
    ShownWidget shown;
    auto layer = Make<ScriptedLayer>("counter", nullptr);
    layer->onDraw = [&](const Viewport&) { ++draws; };
    shown.widget->getUserLayers()->pushLayer(layer);
    QTest::qWait(50);
    const int before = draws;

    emit layer->notifyLayerChanged();
    emit layer->notifyLayerChanged();
    for (int i = 0; i < 50 && draws == before; ++i)
        QTest::qWait(10);
    QTest::qWait(30);

    EXPECT_EQ(draws, before + 1);
}

TEST(GraphWidget, draw_text_paints_at_once_during_the_paint)
{
    ShownWidget shown(300, 200);
    auto layer = Make<ScriptedLayer>("text", nullptr);
    QObject::connect(layer.get(), SIGNAL(requestDrawText(int, int, const QString&, const QColor&)), shown.widget.get(),
                     SLOT(drawText(int, int, const QString&, const QColor&)));
    layer->onDraw = [&](const Viewport&) {
        DrawRedRectangle(Rect(-1000, -1000, 1, 1)); // clears to black, draws off screen
        emit layer->requestDrawText(20, 100, QString("MMMMMMMM"), QColor(Qt::white));
    };
    shown.widget->getUserLayers()->pushLayer(layer);

    const QImage image = shown.grab();

    int lit = 0;
    for (int y = 80; y < 104; ++y)
        for (int x = 20; x < 120; ++x)
            lit += image.pixelColor(x, y).lightness() > 128;
    int litElsewhere = 0;
    for (int y = 140; y < 190; ++y)
        for (int x = 20; x < 280; ++x)
            litElsewhere += image.pixelColor(x, y).lightness() > 128;
    EXPECT_GT(lit, 30);
    EXPECT_EQ(litElsewhere, 0);
}

TEST(GraphWidget, commands_run_between_action_begin_and_end_and_only_the_last_stays)
{
    std::vector<std::string> log;
    GraphWidget widget;
    QObject::connect(&widget, &GraphWidget::actionBegin, [&](const QString& iText) { log.push_back("begin " + iText.toStdString()); });
    QObject::connect(&widget, &GraphWidget::actionEnd, [&] { log.push_back("end"); });

    widget.pushUndoStack(nullptr); // nothing to run, nothing to tell
    widget.pushUndoStack(new LoggingCommand("First", &log));
    widget.pushUndoStack(new LoggingCommand("Second", &log));
    QUndoStack& stack = widget.getUndoStack()->getStack();
    stack.undo();
    stack.undo();

    EXPECT_EQ(log, (std::vector<std::string>{"begin First", "redo First", "end", "begin Second", "redo Second", "end",
                                             "undo Second"}));
    EXPECT_EQ(stack.count(), 1);
}

TEST(GraphWidget, a_command_from_a_tool_reaches_the_stack_through_the_tree)
{
    std::vector<std::string> log;
    GraphWidget widget;
    auto tool = Make<ScriptedLayer>("tool", nullptr);
    widget.getUserLayers()->pushLayer(tool);

    tool->getManager()->handleUndoCommand(new LoggingCommand("Drag", &log));

    EXPECT_EQ(log, (std::vector<std::string>{"redo Drag"}));
    EXPECT_EQ(widget.getUndoStack()->getStack().text(0), QString("Drag"));
}

TEST(GraphWidget, snap_settings_are_the_processs_and_each_new_widget_resets_them)
{
    GraphWidget first;
    int changes = 0;
    QObject::connect(&first, &GraphWidget::snapSettingsChanged, [&] { ++changes; });
    SnapSettings settings = first.getSnapSettings();
    EXPECT_TRUE(settings.isSnappingX());
    EXPECT_FALSE(settings.isSnappingY());

    first.setSnapSettings(settings);
    settings.setSnappingY(true);
    first.setSnapSettings(settings);
    EXPECT_EQ(changes, 1) << "only a real change is told";

    GraphWidget second;
    EXPECT_FALSE(first.getSnapSettings().isSnappingY()) << "the second widget put them back";
    EXPECT_EQ(changes, 1) << "and the first widget was not told";
}
