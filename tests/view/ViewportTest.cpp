#include "EditorTestUtil.h"

#include <gtest/gtest.h>

using namespace EditorTest;

// Every notification repaints and restarts the grid's work, and an idle animation sets the same
// bounds again and again.
TEST(Viewport, setters_notify_once_per_real_change_and_limits_without_area_mean_none)
{
    Viewport viewport;
    ViewportCounter observer;
    viewport.subscribe(observer);

    viewport.setWorldBounds(Rect(1, 2, 3, 4));
    viewport.setWorldBounds(Rect(1, 2, 3, 4));
    viewport.setWorldBounds(1.0f, 2.0f, 3.0f, 4.0f); // widens exactly to what is stored
    EXPECT_EQ(observer.count, 1);

    viewport.setWorldBounds(Rect(1, 2, 3, 5));
    viewport.setWindowBounds(Rect(0, 0, 100, 100)); // the default
    viewport.setWindowBounds(Rect(0, 0, 640, 480));
    EXPECT_EQ(observer.count, 3);

    viewport.setWorldBounds(Rect(5, 5, -2, 1));
    EXPECT_EQ(viewport.getWorldBounds(), Rect(5, 5, -2, 1)) << "stored as given";
    EXPECT_EQ(observer.count, 4);

    viewport.setWorldLimits(Rect(1, 1, 0, 5));
    EXPECT_EQ(observer.count, 4) << "already no limits";
    viewport.setWorldLimits(Rect(0, 0, 10, 10));
    viewport.setWorldLimits(Rect(0, 0, 10, -1));
    EXPECT_EQ(viewport.getWorldLimits(), Rect(0, 0, 0, 0));
    EXPECT_EQ(observer.count, 6);
    viewport.setWorldBounds(Rect(-100, -100, 1, 1));
    EXPECT_EQ(viewport.getWorldBounds(), Rect(-100, -100, 1, 1)) << "bounds are not kept inside limits";
}

TEST(Viewport, conversions_flip_y_both_ways)
{
    Viewport viewport(Rect(20, 10, 400, 300), Rect(-5, -2, 50, 8));

    EXPECT_EQ(viewport.windowToWorld({ 20, 310 }), V(-5, -2)) << "lower-left corner on screen";
    EXPECT_EQ(viewport.windowToWorld({ 420, 10 }), V(45, 6));
    EXPECT_EQ(viewport.worldToWindow({ 45, -2 }), V(420, 310));
    EXPECT_EQ(viewport.pixelSize(), V(50.0 / 400.0, 8.0 / 300.0));
}

TEST(Viewport, an_observer_may_set_the_viewport_from_its_callback)
{
    struct Clamper : ViewportObserver
    {
        void viewportChanged(const Viewport& iViewport) override
        {
            seen.push_back(iViewport.getWorldBounds().width);
            if (iViewport.getWorldBounds().width > 10)
                target->setWorldBounds(Rect(0, 0, 10, 1));
        }
        Viewport* target = nullptr;
        std::vector<double> seen;
    };
    Viewport viewport;
    Clamper clamper;
    clamper.target = &viewport;
    viewport.subscribe(clamper);

    viewport.setWorldBounds(Rect(0, 0, 50, 1));

    EXPECT_EQ(clamper.seen, (std::vector<double> { 50, 10 })) << "the outer value was stored before the nested call";
    EXPECT_EQ(viewport.getWorldBounds(), Rect(0, 0, 10, 1));
}
