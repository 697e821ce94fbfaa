#include "CurveTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <iterator>

using namespace SplinorTest;

namespace {

// Evaluation solves x(t) = x to double precision; values of order 10 agree to about 1e-14.
constexpr double cSolved = 1e-11;

double NumericDerivative(const std::function<double(double)>& f, double x, double h)
{
    return (f(x + h) - f(x - h)) / (2.0 * h);
}

} // namespace

TEST(Bezier, eval_derivatives_and_samples_agree_with_the_parametric_curve)
{
    auto curve = MakeBezier({ 3.0, 8.0 }, { -4.0, -6.0 });
    const Segment& segment = *curve->findSegment(5.0);
    const Bezier::ControlPoints points = Bezier::getControlPoints(segment);
    auto value = [&](double x) { return curve->eval(x); };
    auto slope = [&](double x) { return GetFirstDerivative(*curve, x); };

    for (double t = 0.0; t <= 1.0; t += 1.0 / 64) {
        const Vector2D<double> p = Bezier::pointAt(points, t);
        EXPECT_NEAR(curve->eval(p.x), p.y, cSolved) << "t = " << t;
    }
    for (double x = 0.5; x < 9.6; x += 0.5) {
        EXPECT_NEAR(GetFirstDerivative(*curve, x), NumericDerivative(value, x, 1e-5), 1e-6) << x;
        EXPECT_NEAR(GetSecondDerivative(*curve, x), NumericDerivative(slope, x, 1e-5), 1e-5) << x;
    }

    // Samples reuse each solution as the next guess: they must still match a lone evaluation.
    std::vector<Vector2D<double>> values;
    std::vector<Vector2D<double>> slopes;
    segment.getInterpolator()->sampleValues(segment, 1.0, 9.0, 33, values);
    segment.getInterpolator()->sampleFirstDerivative(segment, 1.0, 9.0, 33, slopes);
    ASSERT_EQ(values.size(), 33u);
    EXPECT_EQ(values.front().x, 1.0);
    EXPECT_EQ(values.back().x, 9.0);
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_NEAR(values[i].y, curve->eval(values[i].x), cSolved);
        EXPECT_NEAR(slopes[i].y, GetFirstDerivative(*curve, slopes[i].x), 1e-9);
    }
    segment.getInterpolator()->sampleValues(segment, 1.0, 9.0, 0, values);
    EXPECT_TRUE(values.empty());
}

TEST(Bezier, x_stays_monotonic_and_values_finite_under_extreme_tangents)
{
    // Handles reaching far past the span, both ways, vertical at the keys, and crossing each other.
    const Vector2D<double> cases[][2] = { { { 100.0, 50.0 }, { -100.0, -50.0 } }, { { 1e6, -1e6 }, { -1e6, 1e6 } },
        { { 0.0, 40.0 }, { 0.0, -40.0 } }, { { 10.0, 0.0 }, { -10.0, 0.0 } } };
    for (const auto& c : cases) {
        auto curve = MakeBezier(c[0], c[1]);
        const Bezier::ControlPoints points = Bezier::getControlPoints(*curve->findSegment(5.0));
        double previousX = 0.0;
        for (double t = 0.0; t <= 1.0; t += 1.0 / 512) {
            const double x = Bezier::pointAt(points, t).x;
            EXPECT_GE(x, previousX - 1e-12);
            previousX = x;
            const double target = 10.0 * t; // even in x, where the points of even t crowd at the keys
            EXPECT_NEAR(Bezier::pointAt(points, Bezier::solveT(points, target)).x, target, 1e-12);
            EXPECT_TRUE(std::isfinite(curve->eval(target)));
            EXPECT_TRUE(std::isfinite(GetFirstDerivative(*curve, target)));
        }
    }
    // Where a handle is vertical x'(t) is 0, and 0 is no slope to report: just inside, with
    // control xs 0, 0, 10, 10 and ys 0, 40, -40, 0, it is 120 / 6e-5 = 2e6.
    EXPECT_GT(GetFirstDerivative(*MakeBezier({ 0.0, 40.0 }, { 0.0, -40.0 }), 0.0), 1e6);
}

TEST(ComputeBezierInsertion, the_split_keeps_the_shape_and_only_a_bezier_interior_can_be_split)
{
    auto curve = MakeBezier({ 6.0, 8.0 }, { -1.0, 12.0 }); // a strongly bent segment
    std::vector<double> before;
    for (double x = -1.0; x <= 11.0; x += 0.01)
        before.push_back(curve->eval(x));

    for (double split : { 0.3, 4.0, 9.9 }) {
        Vector2D<double> point, leftOut, leftIn, rightOut, rightIn;
        ASSERT_TRUE(ComputeBezierInsertion(*curve, split, point, leftOut, leftIn, rightOut, rightIn));
        EXPECT_EQ(point.x, split);
        EXPECT_NEAR(point.y, curve->eval(split), cSolved);

        Segment& left = *curve->findSegment(split);
        Segment& right = *curve->insertSegment(Keyframe(point.x, point.y), nullptr);
        SetHandle(*left.getOutTangent(), leftOut);
        SetHandle(*left.getInTangent(), leftIn);
        SetHandle(*right.getOutTangent(), rightOut);
        SetHandle(*right.getInTangent(), rightIn);
    }

    std::size_t i = 0;
    for (double x = -1.0; x <= 11.0; x += 0.01, ++i)
        ASSERT_NEAR(curve->eval(x), before[i], 1e-9) << "x = " << x;
    EXPECT_EQ(curve->size(), 6u);

    // Anything but the inside of a Bezier segment is refused, and the results are left alone.
    curve->findSegment(5.0)->setInterpolator(Linear::create());
    Vector2D<double> point(7, 7), a, b, c, d;
    EXPECT_FALSE(ComputeBezierInsertion(*curve, -5.0, point, a, b, c, d)) << "exterior";
    EXPECT_FALSE(ComputeBezierInsertion(*curve, 0.3, point, a, b, c, d)) << "on a key";
    EXPECT_FALSE(ComputeBezierInsertion(*curve, 5.0, point, a, b, c, d)) << "linear";
    EXPECT_FALSE(ComputeBezierInsertion(*curve, cNaN, point, a, b, c, d));
    EXPECT_FALSE(GetNewKeyframe(*curve, cNaN, point));
    EXPECT_FALSE(GetNewKeyframe(*curve, cInf, point));
    EXPECT_EQ(point, Vector2D<double>(7, 7));
    EXPECT_TRUE(GetNewKeyframe(*curve, 2.5, point));
    EXPECT_EQ(point, Vector2D<double>(2.5, curve->eval(2.5)));
}

TEST(Interpolators, every_type_the_factory_knows_meets_its_keys_and_holds_outside_them)
{
    EXPECT_EQ(std::distance(InterpolatorFactory::begin(), InterpolatorFactory::end()), 3);
    for (const char* name : { "bezier()", "constant()", "linear()" }) {
        SCOPED_TRACE(name);
        auto curve = MakeCurve({ { 1, 2 }, { 4, -3 }, { 6, 8 } }, InterpolatorFactory::create(name));
        EXPECT_STREQ(curve->begin()->getNext()->getInterpolator()->getExpression(), name);

        EXPECT_EQ(curve->eval(1.0), 2.0);
        EXPECT_EQ(curve->eval(4.0), -3.0);
        EXPECT_EQ(curve->eval(6.0), 8.0);
        EXPECT_EQ(curve->eval(-100.0), 2.0);
        EXPECT_EQ(curve->eval(100.0), 8.0);
        EXPECT_EQ(GetFirstDerivative(*curve, 100.0), 0.0);
        EXPECT_EQ(GetSecondDerivative(*curve, -100.0), 0.0);
    }
    EXPECT_EQ(InterpolatorFactory::create("spline()"), nullptr);
    EXPECT_EQ(InterpolatorFactory::create(nullptr), nullptr);
    EXPECT_EQ(Splinor::create()->eval(42.0), 0.0) << "a curve without keys";

    auto linear = MakeCurve({ { 0, 0 }, { 4, 8 } }, Linear::create());
    auto constant = MakeCurve({ { 0, 3 }, { 4, 8 } }, Constant::create());
    EXPECT_DOUBLE_EQ(linear->eval(1.0), 2.0);
    EXPECT_DOUBLE_EQ(GetFirstDerivative(*linear, 1.0), 2.0);
    EXPECT_EQ(GetSecondDerivative(*linear, 1.0), 0.0);
    EXPECT_EQ(constant->eval(3.999), 3.0);
    EXPECT_EQ(GetFirstDerivative(*constant, 2.0), 0.0);
}
