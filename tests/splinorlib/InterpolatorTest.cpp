#include "CurveTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace SplinorTest;

namespace {

// Evaluation solves x(t) = x to double precision; values of order 10 agree to about 1e-14.
constexpr double cSolved = 1e-11;

/// A Bezier curve with weighted, Fixed tangents as given: keys (0, 0) and (10, 0).
std::shared_ptr<Splinor> MakeBezier(Vector2D<double> iOut, Vector2D<double> iIn)
{
    auto curve = MakeCurve({{0, 0}, {10, 0}});
    Tangent& out = *KeyAt(*curve, 0).getOutTangent();
    Tangent& in = *KeyAt(*curve, 1).getInTangent();
    out.setWeighted(true);
    in.setWeighted(true);
    out.set(iOut);
    in.set(iIn);
    return curve;
}

double NumericDerivative(const std::function<double(double)>& f, double x, double h)
{
    return (f(x + h) - f(x - h)) / (2.0 * h);
}

} // namespace

TEST(Bezier, eval_lies_on_the_parametric_curve)
{
    auto curve = MakeBezier({3.0, 8.0}, {-2.0, 5.0});
    const Segment& segment = *curve->findSegment(5.0);
    const Bezier::ControlPoints points = Bezier::getControlPoints(segment);

    for (double t = 0.0; t <= 1.0; t += 1.0 / 64) {
        const Vector2D<double> p = Bezier::pointAt(points, t);
        EXPECT_NEAR(curve->eval(p.x), p.y, cSolved) << "t = " << t;
    }
}

TEST(Bezier, x_stays_monotonic_under_extreme_tangents)
{
    // Handles reaching far past the span, both ways, and crossing each other.
    const Vector2D<double> cases[][2] = {{{100.0, 50.0}, {-100.0, -50.0}},
                                         {{1e6, -1e6}, {-1e6, 1e6}},
                                         {{0.0, 40.0}, {0.0, -40.0}},
                                         {{10.0, 0.0}, {-10.0, 0.0}}};
    for (const auto& c : cases) {
        auto curve = MakeBezier(c[0], c[1]);
        const Bezier::ControlPoints points = Bezier::getControlPoints(*curve->findSegment(5.0));
        double previousX = 0.0;
        for (double t = 0.0; t <= 1.0; t += 1.0 / 512) {
            const Vector2D<double> p = Bezier::pointAt(points, t);
            EXPECT_GE(p.x, previousX - 1e-12);
            previousX = p.x;
        }
        std::mt19937 random(3);
        for (int i = 0; i < 200; ++i) {
            const double x = std::uniform_real_distribution<double>(0.0, 10.0)(random);
            const double t = Bezier::solveT(points, x);
            EXPECT_NEAR(Bezier::pointAt(points, t).x, x, 1e-12);
            EXPECT_TRUE(std::isfinite(curve->eval(x)));
            EXPECT_TRUE(std::isfinite(GetFirstDerivative(*curve, x)));
        }
    }
}

TEST(Bezier, derivatives_match_finite_differences)
{
    auto curve = MakeBezier({3.0, 8.0}, {-4.0, -6.0});
    auto value = [&](double x) { return curve->eval(x); };
    auto slope = [&](double x) { return GetFirstDerivative(*curve, x); };

    for (double x = 0.5; x < 9.6; x += 0.5) {
        EXPECT_NEAR(GetFirstDerivative(*curve, x), NumericDerivative(value, x, 1e-5), 1e-6) << x;
        EXPECT_NEAR(GetSecondDerivative(*curve, x), NumericDerivative(slope, x, 1e-5), 1e-5) << x;
    }
}

TEST(Bezier, sampling_agrees_with_eval_and_spans_both_ends)
{
    auto curve = MakeBezier({3.0, 8.0}, {-2.0, 5.0});
    const Segment& segment = *curve->findSegment(5.0);
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

TEST(ComputeBezierInsertion, the_split_keeps_the_shape)
{
    auto curve = MakeBezier({6.0, 8.0}, {-1.0, 12.0}); // a strongly bent segment
    std::vector<double> before;
    for (double x = -1.0; x <= 11.0; x += 0.01)
        before.push_back(curve->eval(x));

    for (double split : {0.3, 4.0, 9.9}) {
        Vector2D<double> point, leftOut, leftIn, rightOut, rightIn;
        ASSERT_TRUE(ComputeBezierInsertion(*curve, split, point, leftOut, leftIn, rightOut, rightIn));
        EXPECT_EQ(point.x, split);
        EXPECT_NEAR(point.y, curve->eval(split), cSolved);

        Segment& left = *curve->findSegment(split);
        Segment& right = *curve->insertSegment(Keyframe(point.x, point.y), nullptr);
        for (auto [tangent, value] : {std::pair{left.getOutTangent(), leftOut}, {left.getInTangent(), leftIn},
                                      {right.getOutTangent(), rightOut}, {right.getInTangent(), rightIn}}) {
            tangent->setWeighted(true);
            tangent->set(value);
        }
    }

    std::size_t i = 0;
    for (double x = -1.0; x <= 11.0; x += 0.01, ++i)
        ASSERT_NEAR(curve->eval(x), before[i], 1e-9) << "x = " << x;
    EXPECT_EQ(curve->size(), 6u);
}

TEST(ComputeBezierInsertion, refuses_anything_but_the_inside_of_a_bezier_segment)
{
    auto curve = MakeCurve({{0, 0}, {10, 5}, {20, 0}});
    curve->findSegment(15.0)->setInterpolator(Linear::create());
    Vector2D<double> point(7, 7), a, b, c, d;

    EXPECT_FALSE(ComputeBezierInsertion(*curve, -5.0, point, a, b, c, d)) << "exterior";
    EXPECT_FALSE(ComputeBezierInsertion(*curve, 0.0, point, a, b, c, d)) << "on a key";
    EXPECT_FALSE(ComputeBezierInsertion(*curve, 15.0, point, a, b, c, d)) << "linear";
    EXPECT_FALSE(ComputeBezierInsertion(*curve, std::nan(""), point, a, b, c, d));
    EXPECT_EQ(point, Vector2D<double>(7, 7));
    EXPECT_TRUE(ComputeBezierInsertion(*curve, 5.0, point, a, b, c, d));
}

TEST(Interpolators, every_type_meets_its_keys_and_holds_outside_them)
{
    for (auto make : {&Bezier::create, &Linear::create, &Constant::create}) {
        auto curve = MakeCurve({{1, 2}, {4, -3}, {6, 8}}, make());

        EXPECT_EQ(curve->eval(1.0), 2.0);
        EXPECT_EQ(curve->eval(4.0), -3.0);
        EXPECT_EQ(curve->eval(6.0), 8.0);
        EXPECT_EQ(curve->eval(-100.0), 2.0);
        EXPECT_EQ(curve->eval(100.0), 8.0);
        EXPECT_EQ(GetFirstDerivative(*curve, 100.0), 0.0);
        EXPECT_EQ(GetSecondDerivative(*curve, -100.0), 0.0);
    }
}

TEST(Interpolators, linear_and_constant_between_keys)
{
    auto linear = MakeCurve({{0, 0}, {4, 8}}, Linear::create());
    auto constant = MakeCurve({{0, 3}, {4, 8}}, Constant::create());

    EXPECT_DOUBLE_EQ(linear->eval(1.0), 2.0);
    EXPECT_DOUBLE_EQ(GetFirstDerivative(*linear, 1.0), 2.0);
    EXPECT_EQ(GetSecondDerivative(*linear, 1.0), 0.0);
    EXPECT_EQ(constant->eval(3.999), 3.0);
    EXPECT_EQ(GetFirstDerivative(*constant, 2.0), 0.0);
    EXPECT_FALSE(linear->begin()->getNext()->getInterpolator()->usesTangents());
    EXPECT_TRUE(Bezier::create()->usesTangents());
}

TEST(InterpolatorFactory, knows_the_types_in_sorted_order)
{
    std::vector<std::string> names;
    for (auto it = InterpolatorFactory::begin(); it != InterpolatorFactory::end(); ++it)
        names.push_back(it->first);

    EXPECT_EQ(names, (std::vector<std::string>{"bezier()", "constant()", "linear()"}));
    for (const std::string& name : names)
        EXPECT_EQ(InterpolatorFactory::create(name.c_str())->getExpression(), name);
    EXPECT_EQ(InterpolatorFactory::create("spline()"), nullptr);
    EXPECT_EQ(InterpolatorFactory::create(nullptr), nullptr);
}

TEST(GetNewKeyframe, puts_the_key_on_the_curve_at_that_x)
{
    auto curve = MakeBezier({3.0, 8.0}, {-2.0, 5.0});
    Vector2D<double> position(1, 1);

    EXPECT_TRUE(GetNewKeyframe(*curve, 2.5, position));
    EXPECT_EQ(position.x, 2.5);
    EXPECT_EQ(position.y, curve->eval(2.5));
    EXPECT_FALSE(GetNewKeyframe(*curve, std::nan(""), position));
    EXPECT_EQ(position.x, 2.5);
}
