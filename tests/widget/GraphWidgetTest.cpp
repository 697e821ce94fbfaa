#include "widget/WidgetHarness.h"

#include <QUndoCommand>
#include <qopengl.h>

#include <gtest/gtest.h>

using namespace EditorTest;

namespace {

/// A command that logs its runs, so that a test sees when the stack ran it.
class LoggingCommand : public QUndoCommand
{
public:
    LoggingCommand(const QString& iText, std::vector<std::string>* iLog)
        : QUndoCommand(iText)
        , mLog(iLog)
    {
    }
    void redo() override { mLog->push_back("redo " + text().toStdString()); }
    void undo() override { mLog->push_back("undo " + text().toStdString()); }

private:
    std::vector<std::string>* mLog;
};

/// A layer pushed onto the user layers of a widget.
std::shared_ptr<ScriptedLayer> PushLayer(GraphWidget& iWidget, const char* iName)
{
    auto layer = Make<ScriptedLayer>(iName, nullptr);
    iWidget.getUserLayers()->pushLayer(layer);
    return layer;
}

} // namespace

// A text request paints at once, on top of what the layer has drawn so far: one kept for later
// would not show, or would be cleared by the next layer.
TEST(GraphWidget, a_user_layer_draws_under_the_projection_of_the_world_bounds_and_text_at_once)
{
    GLint depth = -1;
    ShownWidget shown(300, 200);
    auto layer = PushLayer(*shown.widget, "painter");
    QObject::connect(layer.get(), SIGNAL(requestDrawText(int, int, const QString&, const QColor&)), shown.widget.get(),
        SLOT(drawText(int, int, const QString&, const QColor&)));
    layer->onDraw = [&](const Viewport&) {
        glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &depth);
        glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        emit layer->requestDrawText(160, 40, QString("MMMMMMMM"), QColor(Qt::white));
        glColor3f(1.0f, 0.0f, 0.0f);
        glRectd(0, 0, 50, 1);
    };
    shown.widget->getViewport()->setWorldBounds(Rect(0, 0, 100, 2));

    const QImage image = shown.grab();

    EXPECT_EQ(shown.widget->getViewport()->getWindowBounds(), Rect(0, 0, 300, 200)) << "the resize reached it";
    EXPECT_EQ(image.pixelColor(shown.at(25, 0.5)), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(shown.at(75, 0.5)), QColor(Qt::black));
    EXPECT_EQ(image.pixelColor(shown.at(25, 1.5)), QColor(Qt::black));
    // The rectangle's right edge at x = 50 falls on window x = 150.
    EXPECT_EQ(image.pixelColor(148, 150), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(152, 150), QColor(Qt::black));
    EXPECT_GT(CountLit(image, QRect(160, 20, 100, 24), 128), 30);
    EXPECT_EQ(CountLit(image, QRect(160, 60, 130, 130), 128), 0) << "the text stands at its baseline only";

    // Qt's own painting of the frame, and the host's, run on the state the paint leaves.
    shown.widget->makeCurrent();
    GLint depthAfter = -1, mode = 0;
    glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &depthAfter);
    glGetIntegerv(GL_MATRIX_MODE, &mode);
    EXPECT_EQ(depth, 2) << "the layers draw on the pushed projection";
    EXPECT_EQ(depthAfter, 1);
    EXPECT_EQ(mode, GL_MODELVIEW) << "the matrix mode comes back with the attributes";
}

TEST(GraphWidget, input_events_reach_the_layers_and_an_unconsumed_wheel_is_left_to_the_parent)
{
    // Declared first: the widget may still hand events to the layer while it is destroyed.
    std::vector<QEvent::Type> types;
    bool consumeWheel = false;
    ShownWidget shown;
    GraphWidget* widget = shown.widget.get();
    widget->getViewport()->setPanZoomEnabled(false); // or the grid takes the wheel to zoom
    auto layer = PushLayer(*widget, "listener");
    layer->onEvent = [&](QEvent* iEvent, Viewport&) {
        const QEvent::Type type = iEvent->type();
        if (type != QEvent::Enter && type != QEvent::Leave && type != QEvent::FocusIn && type != QEvent::FocusOut)
            types.push_back(type);
        return type == QEvent::MouseButtonPress || (consumeWheel && type == QEvent::Wheel);
    };

    SendMouse(widget, QEvent::MouseMove, { 40, 50 }, Qt::NoButton, Qt::NoButton);
    QTest::mousePress(widget, Qt::LeftButton, Qt::NoModifier, QPoint(41, 51));
    QTest::mouseRelease(widget, Qt::LeftButton, Qt::NoModifier, QPoint(41, 51));
    QTest::keyClick(widget, Qt::Key_Q);

    EXPECT_EQ(types,
        (std::vector<QEvent::Type> { QEvent::MouseMove, QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
            QEvent::KeyPress, QEvent::KeyRelease }));
    EXPECT_EQ(widget->getRootLayer()->getLastMousePoint(), V(40, 50));
    // The moves above are sent; from the window system, a move without a button needs this.
    EXPECT_TRUE(widget->hasMouseTracking()) << "or hover never happens";
    // Ignored, Qt hands a wheel on to the parent widget, so a scroll area around us still scrolls.
    EXPECT_FALSE(SendWheel(widget, { 10, 10 }, 120));
    consumeWheel = true;
    EXPECT_TRUE(SendWheel(widget, { 10, 10 }, 120));
}

TEST(GraphWidget, a_layer_change_schedules_one_repaint)
{
    int draws = 0;
    ShownWidget shown;
    auto layer = PushLayer(*shown.widget, "counter");
    layer->onDraw = [&](const Viewport&) { ++draws; };
    QTest::qWait(50);
    const int before = draws;

    emit layer->notifyLayerChanged();
    emit layer->notifyLayerChanged();
    for (int i = 0; i < 50 && draws == before; ++i)
        QTest::qWait(10);
    QTest::qWait(30);

    EXPECT_EQ(draws, before + 1);
}

// The host learns of each action run, and its undo stack holds it; the widget's own stack keeps
// only the last command.
TEST(GraphWidget, commands_from_the_host_or_a_tool_run_between_action_begin_and_end_and_only_the_last_stays)
{
    std::vector<std::string> log;
    GraphWidget widget;
    QObject::connect(&widget, &GraphWidget::actionBegin,
        [&](const QString& iText) { log.push_back("begin " + iText.toStdString()); });
    QObject::connect(&widget, &GraphWidget::actionEnd, [&] { log.push_back("end"); });
    auto tool = PushLayer(widget, "tool");

    widget.pushUndoStack(nullptr); // nothing to run, nothing to tell
    widget.pushUndoStack(new LoggingCommand("First", &log));
    tool->getManager()->handleUndoCommand(new LoggingCommand("Drag", &log));
    QUndoStack& stack = widget.getUndoStack()->getStack();
    EXPECT_EQ(stack.text(0), QString("Drag"));
    stack.undo();
    stack.undo();

    EXPECT_EQ(log,
        (std::vector<std::string> {
            "begin First", "redo First", "end", "begin Drag", "redo Drag", "end", "undo Drag" }));
    EXPECT_EQ(stack.count(), 1);
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
