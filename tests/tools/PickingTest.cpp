#include "EditorTestUtil.h"

#include <gtest/gtest.h>

#include <initializer_list>

using namespace EditorTest;

namespace {

/// A 400 x 300 window on x 0..40, y -5..5: 10 pixels per unit in x, 30 in y, and y = 0 on
/// window row 150. Curves are Bezier, so that their keys have tangents.
struct Scene
{
    Viewport viewport { Rect(0, 0, 400, 300), Rect(0, -5, 40, 10) };
    std::shared_ptr<SplinorContainer> container = SplinorContainer::create();
    std::shared_ptr<Selection> selection = std::make_shared<Selection>(container);

    std::shared_ptr<Splinor> addCurve(std::initializer_list<V> iKeys)
    {
        std::shared_ptr<Splinor> curve = MakeCurve(iKeys, true);
        container->addCurve(curve);
        return curve;
    }
    HitRecord pick(const V& iPoint)
    {
        HitRecord hit;
        PickPoint(*container, *selection, viewport, iPoint, hit);
        return hit;
    }
    HitSet pickRegion(const Rect& iRegion)
    {
        HitSet hits;
        PickRegion(*container, *selection, viewport, iRegion, hits);
        return hits;
    }
    V window(const Keyframe& iKey) const { return viewport.worldToWindow(iKey.get()); }
};

Segment& SegmentAt(Splinor& iCurve, double iX)
{
    return *iCurve.findSegment(iX);
}

Keyframe& KeyAt(Splinor& iCurve, double iX)
{
    return *SegmentAt(iCurve, iX).getLeftKey();
}

void SetWeightedVector(Tangent& ioTangent, double iX, double iY)
{
    ioTangent.setWeighted(true);
    ioTangent.set(iX, iY);
}

} // namespace

// Key at (10, 0), window (100, 150); selecting it shows its tangents. The default out tangent is
// flat and 66.7 pixels long, as is the curve beside it.
TEST(PickPoint, selected_curve_prefers_handle_key_segment_tangent_line_and_unselected_gives_the_curve)
{
    struct Case
    {
        const char* name;
        bool curveSelected, keySelected;
        void (*shapeOutTangent)(Tangent&);
        V offset;
        int type;
    };
    const auto shortHandle = [](Tangent& t) { SetWeightedVector(t, 0.4, 0.0); };
    const auto upright = [](Tangent& t) { SetWeightedVector(t, 0.0, 3.0); };
    const auto asIs = [](Tangent&) {};
    const Case cases[] = {
        { "handle 12 px out, over the key", true, true, shortHandle, { 6, 0 }, HitRecord::cTangentHandle },
        { "tangent line over the key", true, true, asIs, { 6, 0 }, HitRecord::cKeyframe },
        { "tangent line over the segment", true, true, asIs, { 30, 0 }, HitRecord::cSegment },
        { "upright tangent line, curve far below", true, true, upright, { 0, -70 }, HitRecord::cTangentLine },
        { "hidden upright tangent line", true, false, upright, { 0, -70 }, HitRecord::cNothing },
        { "unselected: the key", false, true, asIs, { 0, 0 }, HitRecord::cCurve },
        { "unselected: a tangent line", false, true, upright, { 0, -70 }, HitRecord::cNothing },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Scene scene;
        std::shared_ptr<Splinor> curve = scene.addCurve({ { 10, 0 }, { 30, 0 } });
        Keyframe& key = KeyAt(*curve, 10);
        if (c.curveSelected)
            scene.selection->select(*curve);
        if (c.keySelected)
            scene.selection->select(key);
        c.shapeOutTangent(*key.getOutTangent());

        const HitRecord hit = scene.pick(scene.window(key) + c.offset);

        ASSERT_EQ(hit.getType(), c.type);
        const void* item[]
            = { nullptr, curve.get(), &SegmentAt(*curve, 10), &key, key.getOutTangent(), key.getOutTangent() };
        EXPECT_EQ(hit.getItem(), item[c.type]);
    }
}

// A at (96, 150); B and C at (100, 240) and (106, 240). At (102, 150) the pointer is over B's
// segment, so A is no candidate although it lies 6 pixels away.
TEST(PickPoint, selected_curves_come_first_and_only_the_keys_of_the_segment_under_the_pointer_compete)
{
    Scene scene;
    std::shared_ptr<Splinor> first = scene.addCurve({ { 10, 0 }, { 30, 0 } });
    std::shared_ptr<Splinor> second = scene.addCurve({ { 10, 0 }, { 30, 0 } });
    EXPECT_EQ(scene.pick({ 200, 150 }), HitRecord(first)) << "the container order decides";
    // Among many curves, the first visible one under the point wins, however far down it lies.
    Scene many;
    std::vector<std::shared_ptr<Splinor>> curves;
    for (int i = 0; i < 40; ++i) {
        const double y = i >= 18 && i % 3 == 0 ? 0.0 : 2.0;
        curves.push_back(many.addCurve({ { 10, y }, { 30, y } }));
    }
    SetVisible(*curves[18], false);
    EXPECT_EQ(many.pick({ 200, 150 }), HitRecord(curves[21]));
    scene.selection->select(*second);
    EXPECT_EQ(scene.pick({ 200, 150 }), HitRecord(SegmentAt(*second, 20).getShared()));
    scene.selection->select(*first);
    EXPECT_EQ(scene.pick({ 100, 150 }), HitRecord(KeyAt(*first, 10).getShared()));

    Scene keys;
    std::shared_ptr<Splinor> curve = keys.addCurve({ { 9.6, 0 }, { 10, -3 }, { 10.6, -3 }, { 30, 0 } });
    keys.selection->select(*curve);
    EXPECT_TRUE(keys.pick({ 102, 150 }).isEmpty());
    EXPECT_EQ(keys.pick({ 95, 150 }).getItem(), &KeyAt(*curve, 9.6));
    EXPECT_EQ(keys.pick({ 103, 240 }).getItem(), &KeyAt(*curve, 10)) << "the left key wins a tie";
}

// Keys at window x 100 and 300. Selecting the segment between them shows its two tangents and
// no other: a visible line of another tangent at the same key would be met first and win.
TEST(PickPoint, handle_lies_8_pixels_beyond_the_line_that_the_tangent_kind_gives)
{
    // The handle box reaches 8 pixels each way from its centre; half a pixel in or out of it is
    // far beyond the rounding of the window conversions.
    constexpr double cInside = 8.0 - 0.5;
    constexpr double cOutside = 8.0 + 0.5;
    struct Case
    {
        const char* name;
        bool inTangent;
        void (*shape)(Tangent&);
        double handleDistance;
    };
    const auto zeroLength = [](Tangent& t) { SetWeightedVector(t, 0.0, 0.0); };
    const Case cases[] = {
        { "fixed unweighted: 24 px line", false, [](Tangent& t) { t.set(1.0, 0.0); }, 32.0 },
        { "fixed weighted: true end", false, [](Tangent& t) { SetWeightedVector(t, 5.0, 0.0); }, 58.0 },
        { "smooth unweighted: third of the span", false, [](Tangent&) {}, 200.0 / 3.0 + 8.0 },
        { "zero length out tangent points right", false, zeroLength, 8.0 },
        { "zero length in tangent points left", true, zeroLength, 8.0 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Scene scene;
        std::shared_ptr<Splinor> curve = scene.addCurve({ { 10, 0 }, { 30, 0 } });
        scene.selection->select(*curve);
        scene.selection->select(SegmentAt(*curve, 20));
        Keyframe& key = KeyAt(*curve, c.inTangent ? 30 : 10);
        Tangent& tangent = c.inTangent ? *key.getInTangent() : *key.getOutTangent();
        c.shape(tangent);
        const HitRecord handle(tangent.getShared(), true);
        const auto at = [&](double offset) {
            return scene.window(key) + V((c.inTangent ? -1.0 : 1.0) * (c.handleDistance + offset), 0.0);
        };

        for (double offset : { -cInside, cInside })
            EXPECT_EQ(scene.pick(at(offset)), handle) << offset;
        for (double offset : { -cOutside, cOutside })
            EXPECT_NE(scene.pick(at(offset)), handle) << offset;
    }
}

// Keys 10, 20, 30; the tangent under test is the in tangent at 20.
TEST(IsTangentVisible, follows_the_selection_of_its_neighbourhood)
{
    struct Case
    {
        const char* name;
        void (*select)(Selection&, Splinor&);
        bool visible;
    };
    const Case cases[] = {
        { "itself", [](Selection& s, Splinor& c) { s.select(*KeyAt(c, 20).getInTangent()); }, true },
        { "its segment", [](Selection& s, Splinor& c) { s.select(SegmentAt(c, 15)); }, true },
        { "its segment's left key", [](Selection& s, Splinor& c) { s.select(KeyAt(c, 10)); }, true },
        { "its own key", [](Selection& s, Splinor& c) { s.select(KeyAt(c, 20)); }, true },
        { "the other tangent of its segment", [](Selection& s, Splinor& c) { s.select(*KeyAt(c, 10).getOutTangent()); },
            true },
        { "that tangent's opposite", [](Selection& s, Splinor& c) { s.select(*KeyAt(c, 10).getInTangent()); }, true },
        { "its own opposite", [](Selection& s, Splinor& c) { s.select(*KeyAt(c, 20).getOutTangent()); }, true },
        { "the curve", [](Selection& s, Splinor& c) { s.select(c); }, false },
        { "the next key", [](Selection& s, Splinor& c) { s.select(KeyAt(c, 30)); }, false },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Scene scene;
        std::shared_ptr<Splinor> curve = scene.addCurve({ { 10, 0 }, { 20, 0 }, { 30, 0 } });

        c.select(*scene.selection, *curve);

        EXPECT_EQ(IsTangentVisible(*KeyAt(*curve, 20).getInTangent(), *scene.selection), c.visible);
    }
}

// Nothing is selected: a region pick counts every tangent. The first region's left and top edges
// run through the keys at 20, so the walk starts at the segment after them; the tangents of the
// keys at 10 and 30 end at least 23 pixels away from it. The second region holds only the true end
// of a Fixed unweighted tangent of (3.33, 1), at window (233.3, 120), 45 pixels from its key and
// beyond its 24-pixel line and its handle; the curves stay below row 137.
TEST(PickRegion, picks_keys_with_their_segment_tangents_and_curve_on_every_curve_and_tangents_by_their_true_end)
{
    Scene scene;
    const std::shared_ptr<Splinor> curves[]
        = { scene.addCurve({ { 10, 0 }, { 20, 0 }, { 30, 0 } }), scene.addCurve({ { 10, 0 }, { 20, 0 }, { 30, 0 } }) };
    Tangent& out = *KeyAt(*curves[0], 20).getOutTangent();
    out.set(1.0, 0.3);

    const HitSet hits = scene.pickRegion(Rect(200, 150, 10, 10));
    const HitSet end = scene.pickRegion(Rect(228, 116, 8, 8));

    HitSet expected;
    for (const std::shared_ptr<Splinor>& curve : curves) {
        Keyframe& key = KeyAt(*curve, 20);
        expected.insert({ HitRecord(curve), HitRecord(key.getShared()), HitRecord(SegmentAt(*curve, 25).getShared()),
            HitRecord(key.getInTangent()->getShared(), true), HitRecord(key.getOutTangent()->getShared(), true) });
    }
    EXPECT_TRUE(hits == expected) << hits.size() << " records";
    ASSERT_EQ(end.size(), 1u);
    EXPECT_EQ(end.begin()->getItem(), &out);
}

// The curve runs along the bottom row from x = 200 to the right edge, which, like the bottom
// one, is outside the window: a point there leaves the record as it came.
TEST(Picking, nothing_is_picked_beyond_the_right_and_bottom_edges_or_on_an_invisible_curve)
{
    Scene scene;
    std::shared_ptr<Splinor> curve = scene.addCurve({ { 10, 0 }, { 20, -5 } });
    scene.selection->select(*curve);
    HitRecord untouched(curve);
    HitSet hits { HitRecord(curve) };

    EXPECT_FALSE(PickPoint(*scene.container, *scene.selection, scene.viewport, { 300, 300 }, untouched));
    EXPECT_EQ(untouched, HitRecord(curve));
    EXPECT_EQ(scene.pick({ 300, 299.5 }).getType(), HitRecord::cSegment);
    EXPECT_EQ(scene.pick({ 399.5, 299.5 }).getType(), HitRecord::cSegment);
    EXPECT_TRUE(scene.pick({ 400, 299.5 }).isEmpty());
    EXPECT_FALSE(PickRegion(*scene.container, *scene.selection, scene.viewport, Rect(400, 0, 50, 300), hits));
    EXPECT_TRUE(hits.empty()) << "cleared first";

    SetVisible(*curve, false);
    EXPECT_TRUE(scene.pickRegion(Rect(0, 0, 400, 300)).empty());
    EXPECT_TRUE(scene.pick({ 300, 299.5 }).isEmpty());
}

TEST(LineTouchesRectangle, touches_by_an_end_inside_or_an_edge_crossed)
{
    struct Case
    {
        const char* name;
        V a, b;
        bool touches;
    };
    const Case cases[] = {
        { "corner to corner, both ends outside", { -10, -10 }, { 110, 110 }, true },
        { "down through top and bottom", { 50, -10 }, { 50, 110 }, true },
        { "past a corner", { -10, 5 }, { 5, -10 }, false },
        { "point on the left edge", { 0, 50 }, { 0, 50 }, true },
        { "point on the right edge", { 100, 50 }, { 100, 50 }, false },
    };
    for (const Case& c : cases)
        EXPECT_EQ(LineTouchesRectangle(c.a, c.b, Rect(0, 0, 100, 100)), c.touches) << c.name;
}

// With a tolerance of 5 both polyline points below are 5 away; the box of a piece is half open.
TEST(IsNearPolyline, needs_two_points_and_a_half_open_box_and_measures_to_the_nearer_end)
{
    const std::vector<V> piece { { 0, 0 }, { 10, 0 } };

    EXPECT_FALSE(IsNearPolyline({ 0, 0 }, {}, 5.0));
    EXPECT_FALSE(IsNearPolyline({ 0, 0 }, { { 0, 0 } }, 5.0));
    EXPECT_TRUE(IsNearPolyline({ -5, 0 }, piece, 5.0));
    EXPECT_FALSE(IsNearPolyline({ 15, 0 }, piece, 5.0));
    // Off either end the perpendicular distance would be 16; the distance to the end is 25.
    EXPECT_FLOAT_EQ(DistanceToLineSquared({ -3, 4 }, { 0, 0 }, { 10, 0 }), 25.0f);
    EXPECT_FLOAT_EQ(DistanceToLineSquared({ 13, 4 }, { 0, 0 }, { 10, 0 }), 25.0f);
    EXPECT_FLOAT_EQ(DistanceToLineSquared({ 5, 4 }, { 0, 0 }, { 10, 0 }), 16.0f);
    EXPECT_FLOAT_EQ(DistanceToLineSquared({ 5, 6 }, { 2, 2 }, { 2, 2 }), 25.0f) << "a line of no length is its point";
}

// 0.3 * 400 / 0.3 is 400 in double; with the widths narrowed to floats it falls just short.
TEST(SampleSegment, takes_one_sample_per_visible_pixel_and_at_least_two)
{
    struct Case
    {
        const char* name;
        std::initializer_list<V> keys;
        double segmentX, worldX, worldWidth;
        SampleSpan span;
    };
    const Case cases[] = {
        { "between two keys", { { 10, 0 }, { 30, 0 } }, 20, 0, 40, { 10, 30, 200 } },
        { "before the first key", { { 10, 0 }, { 30, 0 } }, 5, 0, 40, { 0, 10, 100 } },
        { "cut at the left edge", { { 10, 0 }, { 30, 0 } }, 20, 15, 40, { 15, 30, 150 } },
        { "narrower than a pixel", { { 10, 0 }, { 10.05, 0 } }, 10, 0, 40, { 10, 10.05, 2 } },
        { "wholly right of the world", { { 50, 0 }, { 60, 0 } }, 55, 0, 40, { 0, 0, 0 } },
        { "widths in single precision", { { 1, 0 } }, 0, 0, 0.3, { 0, 0.3, 399 } },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Scene scene;
        scene.viewport.setWorldBounds(Rect(c.worldX, -5, c.worldWidth, 10));
        Segment& segment = SegmentAt(*scene.addCurve(c.keys), c.segmentX);
        std::vector<V> points { { 1, 1 } };

        SampleSegment(segment, scene.viewport, points);

        ASSERT_EQ(points.size(), std::size_t(c.span.count));
        EXPECT_EQ(SampleCount(segment, scene.viewport).count, c.span.count);
        if (!points.empty()) {
            EXPECT_EQ(points.front().x, c.span.x0);
            EXPECT_EQ(points.back().x, c.span.x1);
        }
    }
}
