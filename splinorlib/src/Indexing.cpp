#include "splinorlib/Indexing.h"

#include "CurveContent.h"

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

int GetSegmentIndex(const Splinor& iCurve, const Segment& iSegment)
{
    if (iSegment.getOwningCurve() != &iCurve)
        return -1;
    const Keyframe* key = iSegment.getLeftKey();
    if (!key)
        return 0;
    const Private::KeyIndex& keys = iCurve.mContent->keys;
    const std::size_t rank = keys.rank(key->getX());
    return rank == keys.size() ? -1 : int(rank) + 1;
}

Splinor::iterator GetIndexedSegmentIterator(Splinor& iCurve, int iIndex)
{
    if (iIndex < 0)
        return iCurve.end();
    if (iIndex == 0)
        return iCurve.begin();
    Segment* segment = iCurve.mContent->keys.at(std::size_t(iIndex - 1));
    return segment ? Splinor::iterator(segment, iCurve.mContent.get()) : iCurve.end();
}

int GetTangentIndex(const Splinor& iCurve, const Tangent& iTangent)
{
    if (!iTangent.getOwningKeyframe())
        return -1;
    const int segment = GetSegmentIndex(iCurve, *iTangent.getOwningSegment());
    return segment < 0 ? -1 : 2 * segment + (iTangent.isInTangent() ? 1 : 0);
}

Tangent* GetIndexedTangent(Splinor& iCurve, int iIndex)
{
    if (iIndex < 0)
        return nullptr;
    Splinor::iterator segment = GetIndexedSegmentIterator(iCurve, iIndex / 2);
    if (segment == iCurve.end())
        return nullptr;
    return iIndex % 2 ? segment->getInTangent() : segment->getOutTangent();
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
