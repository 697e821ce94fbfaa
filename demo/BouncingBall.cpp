#include "BouncingBall.h"

#include "splinorlib/SplinorLib.h"

#include <initializer_list>

using namespace Ovantis::SplinorLib::v19;

namespace {

struct Key
{
    double frame;
    double value;
    unsigned char tangents;
};

std::shared_ptr<Splinor> MakeChannel(const char* iName, std::initializer_list<Key> iKeys)
{
    auto curve = Splinor::create();
    curve->setName(iName);
    auto bezier = Bezier::create();
    for (const Key& key : iKeys) {
        auto segment = curve->insertSegment(Keyframe(key.frame, key.value), bezier);
        Keyframe* inserted = segment->getLeftKey();
        if (Tangent* in = inserted->getInTangent())
            in->setType(key.tangents);
        if (Tangent* out = inserted->getOutTangent())
            out->setType(key.tangents);
    }
    return curve;
}

} // namespace

void AddBouncingBall(SplinorContainer& ioCurves)
{
    // Height: flat at the tops, sharp at the contacts, each bounce lower and quicker.
    auto height = MakeChannel("ball.translate.y", {{0, 10, cTangentFlat},
                                                   {24, 0, cTangentLinear},
                                                   {42, 6, cTangentFlat},
                                                   {60, 0, cTangentLinear},
                                                   {72, 2.5, cTangentFlat},
                                                   {84, 0, cTangentLinear},
                                                   {96, 0, cTangentFlat}});
    // A contact is a corner: the ball leaves the ground as fast as it came.
    for (double contact : {24.0, 60.0, 84.0}) {
        Keyframe* key = height->findSegment(contact)->getLeftKey();
        key->setTangentsUnified(false);
    }

    auto travel = MakeChannel("ball.translate.x", {{0, -4, cTangentLinear}, {84, 4, cTangentLinear}, {96, 4.4, cTangentFlat}});
    auto squash = MakeChannel("ball.scale.y", {{0, 1, cTangentSmooth},
                                               {22, 1.1, cTangentSmooth},
                                               {24, 0.7, cTangentFlat},
                                               {27, 1.05, cTangentSmooth},
                                               {58, 1.05, cTangentSmooth},
                                               {60, 0.8, cTangentFlat},
                                               {63, 1, cTangentSmooth},
                                               {96, 1, cTangentFlat}});
    ioCurves.addCurve(height);
    ioCurves.addCurve(travel);
    ioCurves.addCurve(squash);
}
