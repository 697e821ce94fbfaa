#pragma once

#include "splinorlib/SplinorLib.h"

#include <limits>
#include <memory>
#include <stdexcept>
#include <vector>

namespace SplinorTest {

using namespace Ovantis::SplinorLib::v19;

constexpr double cNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double cInf = std::numeric_limits<double>::infinity();

/// A curve with keys at the given points, all segments of one interpolator type.
inline std::shared_ptr<Splinor> MakeCurve(
    const std::vector<Vector2D<double>>& iKeys, std::shared_ptr<Interpolator> iInterpolator = Bezier::create())
{
    auto curve = Splinor::create();
    curve->begin()->setInterpolator(iInterpolator);
    for (const auto& key : iKeys)
        curve->insertSegment(Keyframe(key.x, key.y), iInterpolator);
    return curve;
}

inline Keyframe& KeyAt(Splinor& iCurve, std::size_t iIndex)
{
    for (Segment& segment : iCurve)
        if (Keyframe* key = segment.getLeftKey(); key && iIndex-- == 0)
            return *key;
    throw std::out_of_range("no such key");
}

/// Makes the tangent weighted, so that it keeps exactly the vector it is given.
inline void SetHandle(Tangent& iTangent, Vector2D<double> iValue)
{
    iTangent.setWeighted(true);
    iTangent.set(iValue);
}

/// One Bezier segment from (0, 0) to (iSpan, 0) with the given weighted handles.
inline std::shared_ptr<Splinor> MakeBezier(Vector2D<double> iOut, Vector2D<double> iIn, double iSpan = 10.0)
{
    auto curve = MakeCurve({ { 0, 0 }, { iSpan, 0 } });
    SetHandle(*KeyAt(*curve, 0).getOutTangent(), iOut);
    SetHandle(*KeyAt(*curve, 1).getInTangent(), iIn);
    return curve;
}

struct CountingObserver : SplinorObserver
{
    void curveChanged(Splinor&) override { ++curve; }
    void valueChanged(Keyframe&) override { ++value; }
    void tangentChanged(Tangent&) override { ++tangent; }
    void keyframeChanged(Keyframe&) override { ++keyframe; }
    void segmentChanged(Segment&) override { ++segment; }
    void propertyChanged(Splinor&, const char*) override { ++property; }
    int curve = 0, value = 0, tangent = 0, keyframe = 0, segment = 0, property = 0;
};

} // namespace SplinorTest
