#include <gtest/gtest.h>

#include "render/ColorsObserver.h"
#include "render/CurveColors.h"
#include "render/GraphViewColors.h"

#include "splinorlib/Splinor.h"

#include <QColor>

#include <cstddef>
#include <string>

namespace SL = Ovantis::SplinorLib::v19;
namespace SE = Ovantis::SplinorEditorQtLib::v22;

using SE::GraphViewColors;

namespace {

struct CountingObserver : SE::ColorsObserver
{
    void colorsChanged() override { ++calls; }
    int calls = 0;
};

// --- GraphViewColors --------------------------------------------------------------------------

TEST(GraphViewColors, default_table_holds_the_documented_opaque_colours_in_id_order)
{
    const QColor expected[GraphViewColors::cColorCount] = { { 46, 46, 46 }, { 81, 81, 81 }, { 255, 255, 255 },
        { 255, 102, 51 }, { 255, 102, 51 }, { 255, 155, 0 }, { 0, 255, 0 }, { 0, 165, 0 }, { 100, 255, 100 },
        { 0, 255, 255 }, { 0, 191, 191 }, { 0, 255, 255 }, { 255, 255, 0 }, { 255, 255, 255 }, { 255, 204, 255 },
        { 255, 102, 170 }, { 255, 255, 255 }, { 204, 0, 0 }, { 255, 165, 0 }, { 204, 255, 51 }, { 255, 255, 51 } };

    const GraphViewColors colors;

    for (int id = 0; id < GraphViewColors::cColorCount; ++id)
        EXPECT_EQ(colors.getColor(id), expected[id]) << "id " << id;
}

TEST(GraphViewColors, setColor_notifies_only_for_a_real_change_of_a_valid_id)
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

    colors.setColor(GraphViewColors::cReservedColor17, QColor(1, 2, 3));
    EXPECT_EQ(observer.calls, 1);
    EXPECT_EQ(colors.getColor(GraphViewColors::cReservedColor17), QColor(1, 2, 3));

    colors.unsubscribe(observer);
    colors.setColor(GraphViewColors::cHoverColor, QColor(4, 5, 6));
    EXPECT_EQ(observer.calls, 1);
}

TEST(GraphViewColors, copies_carry_the_colours_but_not_the_observers)
{
    GraphViewColors source;
    source.setColor(GraphViewColors::cGridColor, QColor(1, 1, 1));
    source.setColor(GraphViewColors::cFocusColor, QColor(2, 2, 2));
    CountingObserver sourceObserver;
    source.subscribe(sourceObserver);
    GraphViewColors target;
    CountingObserver targetObserver;
    target.subscribe(targetObserver);

    GraphViewColors copy(source);
    copy.setColor(GraphViewColors::cGridColor, QColor(3, 3, 3));
    target = GraphViewColors();
    const int callsAfterEqualAssignment = targetObserver.calls;
    target = source;

    EXPECT_EQ(GraphViewColors(source), source);
    EXPECT_EQ(sourceObserver.calls, 0);
    EXPECT_EQ(callsAfterEqualAssignment, 0);
    EXPECT_EQ(targetObserver.calls, 1);
    EXPECT_EQ(target, source);
    target.setColor(GraphViewColors::cGridColor, QColor(3, 3, 3));
    EXPECT_EQ(targetObserver.calls, 2) << "assignment must keep the target's own observers";
}

// --- Per-curve colours ------------------------------------------------------------------------

struct CurveColorGroup
{
    const char* key;
    void (*set)(SL::Splinor&, const QColor&);
    void (*get)(const SL::Splinor&, QColor&);
    bool (*has)(const SL::Splinor&);
    void (*remove)(SL::Splinor&);
};

const CurveColorGroup cGroups[] = {
    { "sn_ue", SE::SetUnselectedExteriorColor, SE::GetUnselectedExteriorColor, SE::HasUnselectedExteriorColor,
        SE::RemoveUnselectedExteriorColor },
    { "sn_ui", SE::SetUnselectedInteriorColor, SE::GetUnselectedInteriorColor, SE::HasUnselectedInteriorColor,
        SE::RemoveUnselectedInteriorColor },
    { "sn_ut", SE::SetUnselectedTangentColor, SE::GetUnselectedTangentColor, SE::HasUnselectedTangentColor,
        SE::RemoveUnselectedTangentColor },
    { "sn_se", SE::SetSelectedExteriorColor, SE::GetSelectedExteriorColor, SE::HasSelectedExteriorColor,
        SE::RemoveSelectedExteriorColor },
    { "sn_si", SE::SetSelectedInteriorColor, SE::GetSelectedInteriorColor, SE::HasSelectedInteriorColor,
        SE::RemoveSelectedInteriorColor },
    { "sn_st", SE::SetSelectedTangentColor, SE::GetSelectedTangentColor, SE::HasSelectedTangentColor,
        SE::RemoveSelectedTangentColor },
};

const QColor cOpaqueBlack(0, 0, 0, 255);

// Starts from white, so that a getter that leaves its output alone shows.
QColor ReadBack(const CurveColorGroup& iGroup, const SL::Splinor& iCurve)
{
    QColor color(Qt::white);
    iGroup.get(iCurve, color);
    return color;
}

TEST(CurveColors, each_group_round_trips_through_its_own_key_dropping_alpha)
{
    auto curve = SL::Splinor::create();

    // A different half-transparent colour per group, so that a group reading another's key shows.
    for (int i = 0; i < 6; ++i)
        cGroups[i].set(*curve, QColor(i, 10 * i, 255, 128));

    for (int i = 0; i < 6; ++i) {
        const CurveColorGroup& group = cGroups[i];
        EXPECT_TRUE(group.has(*curve)) << group.key;
        EXPECT_EQ(ReadBack(group, *curve), QColor(i, 10 * i, 255, 255)) << group.key;
        EXPECT_EQ(
            std::string(curve->getProperty(group.key)), std::to_string(i) + ' ' + std::to_string(10 * i) + " 255");
    }
}

TEST(CurveColors, missing_removed_or_unreadable_colour_reads_as_opaque_black)
{
    auto curve = SL::Splinor::create();

    for (const CurveColorGroup& group : cGroups) {
        EXPECT_FALSE(group.has(*curve)) << group.key;
        EXPECT_EQ(ReadBack(group, *curve), cOpaqueBlack) << group.key;

        group.set(*curve, Qt::red);
        group.remove(*curve);

        EXPECT_FALSE(group.has(*curve)) << group.key;
        EXPECT_EQ(ReadBack(group, *curve), cOpaqueBlack) << group.key;
    }
    for (const char* text : { "12 200", "red", "12 300 4", "-1 0 0" }) {
        curve->setProperty(cGroups[0].key, text);
        EXPECT_EQ(ReadBack(cGroups[0], *curve), cOpaqueBlack) << '"' << text << '"';
    }
}

} // namespace
