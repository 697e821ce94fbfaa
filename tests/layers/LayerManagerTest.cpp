#include "EditorTestUtil.h"

#include <QSignalSpy>
#include <QUndoCommand>

#include <gtest/gtest.h>

using namespace EditorTest;

namespace {

using Log = std::vector<std::string>;

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
    bool sendKey()
    {
        QEvent event(QEvent::KeyPress);
        return send(event);
    }
};

} // namespace

TEST(LayerManager, draws_from_the_back_and_offers_events_from_the_front_until_one_consumes)
{
    Tree tree;
    tree.push("behind");
    auto back = tree.push("back");
    auto hidden = tree.push("hidden");
    auto deaf = tree.push("deaf");
    hidden->setVisible(false);
    deaf->setInteractive(false);
    back->onEvent = [](QEvent*, Viewport&) { return true; };

    tree.root->draw(tree.viewport);
    EXPECT_TRUE(tree.sendKey());

    EXPECT_EQ(tree.log, (Log { "draw behind", "draw back", "draw deaf", "event hidden", "event back" }));
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

    tree.sendKey();

    EXPECT_EQ(countDuringWalk, 1u);
    EXPECT_EQ(tree.log, (Log { "event tool", "still here", "event next", "~tool" }));
    EXPECT_TRUE(watch.expired());
}

// Pushed during a walk, a layer is met from the next walk on; removed and pushed back, it is
// there once, in front.
TEST(LayerManager, layers_pushed_during_a_walk_see_the_next_event_once)
{
    Tree tree;
    auto layer = tree.push("layer");
    auto starter = tree.push("starter");
    bool first = true;
    starter->onEvent = [&](QEvent*, Viewport&) {
        if (first)
            tree.user->pushLayer(Make<ScriptedLayer>("tool", &tree.log));
        return false;
    };
    layer->onEvent = [&](QEvent*, Viewport&) {
        if (first) {
            tree.user->removeLayer(layer);
            EXPECT_EQ(layer->getManager(), nullptr);
            tree.user->pushLayer(layer);
        }
        return false;
    };

    tree.sendKey();
    first = false;
    tree.sendKey();

    EXPECT_EQ(tree.user->numChildren(), 3u);
    EXPECT_EQ(layer->getManager(), tree.user);
    EXPECT_EQ(tree.log, (Log { "event starter", "event layer", "event layer", "event tool", "event starter" }));
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

    tree.sendKey();

    // The outer walk passes over the entry the inner walk erased, and the flush comes last.
    EXPECT_EQ(tree.log, (Log { "event sender", "event sender", "event victim", "inner done", "~victim" }));
    EXPECT_TRUE(watch.expired());
}

TEST(LayerManager, insert_places_a_layer_directly_behind_its_reference)
{
    Tree tree;
    tree.push("back");
    auto front = tree.push("front");
    auto middle = Make<ScriptedLayer>("middle", &tree.log);

    tree.user->insertLayer(middle, front);
    tree.sendKey();

    EXPECT_EQ(tree.log, (Log { "event front", "event middle", "event back" }));
    EXPECT_EQ(middle->getManager(), tree.user) << "or it could never remove itself";
}

TEST(LayerManager, find_layer_searches_depth_first_from_the_manager_down_and_get_root_layer_climbs_to_the_top)
{
    Tree tree;
    auto nested = Make<LayerManager>("Nested");
    tree.user->pushLayer(nested);
    auto deep = Make<ScriptedLayer>("Curve Layer", nullptr);
    nested->pushLayer(deep);
    auto looseManager = Make<LayerManager>();

    EXPECT_EQ(tree.root->findLayer("Curve Layer"), deep);
    EXPECT_EQ(tree.root->findLayer("Root Layer"), tree.root);
    EXPECT_EQ(tree.user->findLayer("Root Layer"), nullptr) << "no search upward";
    EXPECT_EQ(tree.user->findLayer(""), tree.user);
    EXPECT_EQ(tree.root->findLayer("curve layer"), nullptr);
    EXPECT_EQ(GetRootLayer(deep), tree.root);
    EXPECT_EQ(GetRootLayer(tree.root), tree.root);
    EXPECT_EQ(GetRootLayer(Make<ScriptedLayer>("loose", nullptr)), nullptr);
    EXPECT_EQ(GetRootLayer(looseManager), looseManager);
}

TEST(LayerManager, real_changes_and_commands_climb_to_the_root)
{
    Tree tree;
    auto layer = tree.push("layer");
    QSignalSpy changes(tree.root.get(), SIGNAL(notifyLayerChanged()));
    std::vector<QUndoCommand*> commands;
    QObject::connect(
        tree.root.get(), &LayerManager::undoCommandGenerated, [&](QUndoCommand* iCmd) { commands.push_back(iCmd); });

    // A setter that changes nothing, or the removal of a stranger, must not cause a repaint.
    auto stranger = Make<ScriptedLayer>("stranger", nullptr);
    layer->setVisible(true);
    tree.user->removeLayer(stranger);
    stranger->removeFromManager(); // it has none
    EXPECT_EQ(changes.count(), 0);
    layer->setVisible(false);
    layer->setInteractive(false);
    EXPECT_EQ(changes.count(), 2);

    QUndoCommand command("Edit");
    layer->getManager()->handleUndoCommand(nullptr);
    layer->getManager()->handleUndoCommand(&command);
    EXPECT_EQ(commands, (std::vector<QUndoCommand*> { &command }));
}
