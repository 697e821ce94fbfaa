#include "EditorTestUtil.h"

#include <gtest/gtest.h>

#include <string>

using namespace EditorTest;

namespace {

struct CountingObserver : ColorsObserver
{
    void colorsChanged() override { ++calls; }
    int calls = 0;
};

} // namespace

// The default colours themselves are checked where they are drawn, by the pixel tests. Each
// notification repaints the widget; the curve layer draws from its own copy of the table.
TEST(GraphViewColors, notifies_only_of_real_changes_of_valid_ids_and_copies_carry_the_colours_but_not_the_observers)
{
    GraphViewColors colors;
    CountingObserver observer;
    colors.subscribe(observer);

    colors.setColor(GraphViewColors::cColorCount, Qt::red);
    colors.setColor(-1, Qt::red);
    colors.setColor(GraphViewColors::cHoverColor, QColor(255, 255, 255));
    EXPECT_EQ(observer.calls, 0);
    EXPECT_FALSE(colors.getColor(GraphViewColors::cColorCount).isValid());
    EXPECT_FALSE(colors.getColor(-1).isValid());
    EXPECT_EQ(colors, GraphViewColors());
    colors.setColor(GraphViewColors::cFocusColor, QColor(1, 2, 3)); // the last id: a table one short shows
    EXPECT_EQ(observer.calls, 1);
    EXPECT_EQ(colors.getColor(GraphViewColors::cFocusColor), QColor(1, 2, 3));

    GraphViewColors copy(colors), target;
    CountingObserver targetObserver;
    target.subscribe(targetObserver);
    copy.setColor(GraphViewColors::cGridColor, QColor(3, 3, 3));
    target = GraphViewColors();
    EXPECT_EQ(targetObserver.calls, 0) << "an assignment that changes nothing";
    target = colors;
    EXPECT_EQ(GraphViewColors(colors), colors);
    EXPECT_NE(copy, colors);
    EXPECT_EQ(observer.calls, 1) << "a copy must not notify the source's observers";
    EXPECT_EQ(targetObserver.calls, 1);
    EXPECT_EQ(target, colors);
    target.setColor(GraphViewColors::cGridColor, QColor(3, 3, 3));
    EXPECT_EQ(targetObserver.calls, 2) << "assignment must keep the target's own observers";

    colors.unsubscribe(observer);
    colors.setColor(GraphViewColors::cHoverColor, QColor(4, 5, 6));
    EXPECT_EQ(observer.calls, 1);
}

TEST(CurveColors, each_group_round_trips_through_its_own_key_and_reads_opaque_black_when_missing_or_unreadable)
{
    struct Group
    {
        const char* key;
        void (*set)(Splinor&, const QColor&);
        void (*get)(const Splinor&, QColor&);
        bool (*has)(const Splinor&);
        void (*remove)(Splinor&);
    };
// The four functions of each key, as the library declares them.
#define GROUP(Name, Key)                                                                                               \
    {                                                                                                                  \
        Key, Set##Name##Color, Get##Name##Color, Has##Name##Color, Remove##Name##Color                                 \
    }
    const Group groups[]
        = { GROUP(UnselectedExterior, "sn_ue"), GROUP(UnselectedInterior, "sn_ui"), GROUP(UnselectedTangent, "sn_ut"),
              GROUP(SelectedExterior, "sn_se"), GROUP(SelectedInterior, "sn_si"), GROUP(SelectedTangent, "sn_st") };
#undef GROUP
    const QColor opaqueBlack(0, 0, 0, 255);
    // Starts from white, so that a getter that leaves its output alone shows.
    const auto readBack = [](const Group& iGroup, const Splinor& iCurve) {
        QColor color(Qt::white);
        iGroup.get(iCurve, color);
        return color;
    };
    auto curve = Splinor::create();

    for (const auto& group : groups) {
        EXPECT_FALSE(group.has(*curve)) << group.key;
        EXPECT_EQ(readBack(group, *curve), opaqueBlack) << group.key;
    }
    // A different half-transparent colour per group, so that a group reading another's key shows.
    for (int i = 0; i < 6; ++i)
        groups[i].set(*curve, QColor(i, 10 * i, 255, 128));
    for (int i = 0; i < 6; ++i) {
        const auto& group = groups[i];
        EXPECT_TRUE(group.has(*curve)) << group.key;
        EXPECT_EQ(readBack(group, *curve), QColor(i, 10 * i, 255, 255)) << group.key;
        EXPECT_EQ(
            std::string(curve->getProperty(group.key)), std::to_string(i) + ' ' + std::to_string(10 * i) + " 255");
        group.remove(*curve);
        EXPECT_FALSE(group.has(*curve)) << group.key;
        EXPECT_EQ(readBack(group, *curve), opaqueBlack) << group.key;
    }
    for (const char* text : { "12 200", "red", "12 300 4", "-1 0 0" }) {
        curve->setProperty(groups[0].key, text);
        EXPECT_EQ(readBack(groups[0], *curve), opaqueBlack) << '"' << text << '"';
    }
}
