#pragma once

#include "splinorlib/SplinorLib.h"

#include <initializer_list>
#include <memory>
#include <vector>

namespace SplinorTest {

using namespace Ovantis::SplinorLib::v19;

/// A curve with keys at the given points, all segments of one interpolator type.
inline std::shared_ptr<Splinor> MakeCurve(const std::vector<Vector2D<double>>& iKeys,
                                          std::shared_ptr<Interpolator> iInterpolator = Bezier::create())
{
    auto curve = Splinor::create();
    curve->begin()->setInterpolator(iInterpolator);
    for (const auto& key : iKeys)
        curve->insertSegment(Keyframe(key.x, key.y), iInterpolator);
    return curve;
}

inline std::vector<Keyframe*> Keys(Splinor& iCurve)
{
    std::vector<Keyframe*> keys;
    for (Segment& segment : iCurve)
        if (Keyframe* key = segment.getLeftKey())
            keys.push_back(key);
    return keys;
}

inline Keyframe& KeyAt(Splinor& iCurve, std::size_t iIndex)
{
    return *Keys(iCurve).at(iIndex);
}

} // namespace SplinorTest
