#include "EditorTestUtil.h"

#include <QMouseEvent>
#include <QSignalSpy>
#include <QUndoCommand>

#include <gtest/gtest.h>

using namespace EditorTest;

namespace {

using Log = std::vector<std::string>;

QMouseEvent MouseMove(int iX, int iY)
{
    return QMouseEvent(QEvent::MouseMove, QPointF(iX, iY), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
}

struct Tree
{
    Log log;
    std::shared_ptr<LayerManager> root = Make<LayerManager>("Root Layer");
    std::shared_ptr<LayerManager> user = Make<LayerManager>();
    Viewport viewport;

    Tree() { root->pushLayer(user); }

    /// Pushes a scripted layer to the front of the user layers.
    std::shared_ptr<ScriptedLayer> push(const char* iId)
    {
        auto layer = Make<ScriptedLayer>(iId, &log);
        user->pushLayer(layer);
        return layer;
    }
    bool send(QEvent& iEvent) { return root->handleEvent(&iEvent, viewport); }
};

} // namespace

TEST(LayerManager, draws_from_the_back_and_offers_events_from_the_front)
{
    Tree tree;
    auto back = tree.push("back");
    auto hidden = tree.push("hidden");
    auto deaf = tree.push("deaf");
    hidden->setVisible(false);
    deaf->setInteractive(false);
    back->onEvent = [](QEvent*, Viewport&) { return true; };

    tree.root->draw(tree.viewport);
    QEvent event(QEvent::KeyPress);
    const bool consumed = tree.send(event);

    EXPECT_TRUE(consumed);
    EXPECT_EQ(tree.log, (Log{"draw back", "draw deaf", "event hidden", "event back"}));
}

TEST(LayerManager, the_first_layer_that_consumes_ends_the_walk)
{
    Tree tree;
    tree.push("behind");
    auto front = tree.push("front");
    front->onEvent = [](QEvent*, Viewport&) { return true; };

    QEvent event(QEvent::KeyPress);
    tree.send(event);

    EXPECT_EQ(tree.log, (Log{"event front"}));
}

TEST(LayerManager, an_empty_manager_draws_nothing_consumes_nothing_and_records_moves)
{
    Tree tree;
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(1, 1), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QMouseEvent move = MouseMove(12, 34);

    EXPECT_EQ(tree.root->getLastMousePoint(), Vector2D<double>(0, 0));
    EXPECT_FALSE(tree.send(move));
    EXPECT_FALSE(tree.send(press));

    EXPECT_EQ(tree.user->getLastMousePoint(), Vector2D<double>(12, 34));
    EXPECT_EQ(tree.root->getLastMousePoint(), Vector2D<double>(12, 34)) << "each manager on the way down";
}

TEST(LayerManager, a_layer_that_removes_itself_runs_on_and_dies_after_the_walk)
{
    Tree tree;
    tree.push("next");
    auto tool = tree.push("tool");
    unsigned countDuringWalk = 0;
    ScriptedLayer* self = tool.get();
    tool->onEvent = [&](QEvent*, Viewport&) {
        self->removeFromManager();
        countDuringWalk = tree.user->numChildren();
        tree.log.push_back("still here");
        return false;
    };
    std::weak_ptr<ScriptedLayer> watch = tool;
    tool.reset();

    QEvent event(QEvent::KeyPress);
    tree.send(event);

    EXPECT_EQ(countDuringWalk, 1u);
    EXPECT_EQ(tree.log, (Log{"event tool", "still here", "event next", "~tool"}));
    EXPECT_TRUE(watch.expired());
}

TEST(LayerManager, a_layer_pushed_during_a_walk_sees_the_next_event)
{
    Tree tree;
    auto starter = tree.push("starter");
    std::shared_ptr<ScriptedLayer> tool;
    starter->onEvent = [&](QEvent*, Viewport&) {
        if (!tool) {
            tool = Make<ScriptedLayer>("tool", &tree.log);
            tree.user->pushLayer(tool);
        }
        return false;
    };

    QEvent first(QEvent::KeyPress);
    QEvent second(QEvent::KeyPress);
    tree.send(first);
    tree.send(second);

    EXPECT_EQ(tree.log, (Log{"event starter", "event tool", "event starter"}));
}

TEST(LayerManager, removing_and_pushing_back_in_one_walk_leaves_one_entry)
{
    Tree tree;
    auto layer = tree.push("layer");
    layer->onEvent = [&](QEvent*, Viewport&) {
        tree.user->removeLayer(layer);
        EXPECT_EQ(layer->getManager(), nullptr);
        tree.user->pushLayer(layer);
        return false;
    };

    QEvent event(QEvent::KeyPress);
    tree.send(event);
    layer->onEvent = nullptr;
    tree.log.clear();
    tree.send(event);

    EXPECT_EQ(tree.user->numChildren(), 1u);
    EXPECT_EQ(layer->getManager(), tree.user);
    EXPECT_EQ(tree.log, (Log{"event layer"}));
}

TEST(LayerManager, an_entry_erased_in_a_nested_walk_stays_until_the_outer_walk_ends)
{
    Tree tree;
    auto victim = tree.push("victim");
    auto sender = tree.push("sender");
    ScriptedLayer* self = victim.get();
    victim->onEvent = [self](QEvent*, Viewport&) {
        self->removeFromManager();
        return false;
    };
    bool nested = false;
    sender->onEvent = [&](QEvent* iEvent, Viewport& iViewport) {
        if (nested)
            return false;
        nested = true;
        tree.root->handleEvent(iEvent, iViewport); // an event handler that sends an event
        tree.log.push_back("inner done");
        return false;
    };
    std::weak_ptr<ScriptedLayer> watch = victim;
    victim.reset();

    QEvent event(QEvent::KeyPress);
    tree.send(event);

    // The outer walk passes over the entry the inner walk erased, and the flush comes last.
    EXPECT_EQ(tree.log, (Log{"event sender", "event sender", "event victim", "inner done", "~victim"}));
    EXPECT_TRUE(watch.expired());
}

TEST(LayerManager, insert_places_a_layer_directly_behind_its_reference)
{
    Tree tree;
    auto back = tree.push("back");
    auto front = tree.push("front");
    auto middle = Make<ScriptedLayer>("middle", &tree.log);

    tree.user->insertLayer(middle, front);
    QEvent event(QEvent::KeyPress);
    tree.send(event);

    EXPECT_EQ(tree.log, (Log{"event front", "event middle", "event back"}));
    EXPECT_EQ(middle->getManager(), tree.user);
}

TEST(LayerManager, find_layer_searches_depth_first_from_the_manager_down)
{
    Tree tree;
    auto nested = Make<LayerManager>("Nested");
    tree.user->pushLayer(nested);
    auto deep = Make<ScriptedLayer>("Curve Layer", nullptr);
    nested->pushLayer(deep);

    EXPECT_EQ(tree.root->findLayer("Curve Layer"), deep);
    EXPECT_EQ(tree.root->findLayer("Root Layer"), tree.root);
    EXPECT_EQ(tree.user->findLayer("Root Layer"), nullptr) << "no search upward";
    EXPECT_EQ(tree.user->findLayer(""), tree.user);
    EXPECT_EQ(tree.root->findLayer("curve layer"), nullptr);
}

TEST(LayerManager, changes_and_commands_climb_to_the_root)
{
    Tree tree;
    auto layer = tree.push("layer");
    QSignalSpy changes(tree.root.get(), SIGNAL(notifyLayerChanged()));
    std::vector<QUndoCommand*> commands;
    QObject::connect(tree.root.get(), &LayerManager::undoCommandGenerated,
                     [&](QUndoCommand* iCmd) { commands.push_back(iCmd); });

    layer->setVisible(true);
    EXPECT_EQ(changes.count(), 0) << "a setter that changes nothing says nothing";
    layer->setVisible(false);
    layer->setInteractive(false);
    EXPECT_EQ(changes.count(), 2);

    QUndoCommand command("Edit");
    layer->getManager()->handleUndoCommand(nullptr);
    layer->getManager()->handleUndoCommand(&command);
    EXPECT_EQ(commands, (std::vector<QUndoCommand*>{&command}));
}

TEST(LayerManager, removing_what_is_not_a_child_does_nothing)
{
    Tree tree;
    auto stranger = Make<ScriptedLayer>("stranger", nullptr);
    QSignalSpy changes(tree.user.get(), SIGNAL(notifyLayerChanged()));

    tree.user->removeLayer(stranger);
    stranger->removeFromManager();

    EXPECT_EQ(changes.count(), 0);
    EXPECT_EQ(tree.user->numChildren(), 0u);
}

TEST(GetRootLayer, climbs_to_the_top_manager)
{
    Tree tree;
    auto layer = tree.push("layer");
    auto loose = Make<ScriptedLayer>("loose", nullptr);
    auto looseManager = Make<LayerManager>();

    EXPECT_EQ(GetRootLayer(layer), tree.root);
    EXPECT_EQ(GetRootLayer(tree.root), tree.root);
    EXPECT_EQ(GetRootLayer(loose), nullptr);
    EXPECT_EQ(GetRootLayer(looseManager), looseManager);
}
