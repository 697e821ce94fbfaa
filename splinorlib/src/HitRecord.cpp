#include "splinorlib/HitRecord.h"

#include "splinorlib/Keyframe.h"
#include "splinorlib/Segment.h"
#include "splinorlib/Splinor.h"
#include "splinorlib/Tangent.h"

#include <functional>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

HitRecord::HitRecord(std::shared_ptr<Splinor> iCurve) { reset(std::move(iCurve)); }
HitRecord::HitRecord(std::shared_ptr<Segment> iSegment) { reset(std::move(iSegment)); }
HitRecord::HitRecord(std::shared_ptr<Keyframe> iKeyframe) { reset(std::move(iKeyframe)); }
HitRecord::HitRecord(std::shared_ptr<Tangent> iTangent, bool iHandle) { reset(std::move(iTangent), iHandle); }

void HitRecord::assign(int iType, std::shared_ptr<void> iItem)
{
    mType = iItem ? iType : cNothing;
    mItem = std::move(iItem);
}

void HitRecord::reset() { assign(cNothing, nullptr); }
void HitRecord::reset(std::shared_ptr<Splinor> iCurve) { assign(cCurve, std::move(iCurve)); }
void HitRecord::reset(std::shared_ptr<Segment> iSegment) { assign(cSegment, std::move(iSegment)); }
void HitRecord::reset(std::shared_ptr<Keyframe> iKeyframe) { assign(cKeyframe, std::move(iKeyframe)); }

void HitRecord::reset(std::shared_ptr<Tangent> iTangent, bool iHandle)
{
    assign(iHandle ? cTangentHandle : cTangentLine, std::move(iTangent));
}

std::shared_ptr<Splinor> HitRecord::getCurve() const
{
    Splinor* curve = nullptr;
    switch (mType) {
    case cCurve:
        return std::static_pointer_cast<Splinor>(mItem);
    case cSegment:
        curve = static_cast<const Segment*>(mItem.get())->getOwningCurve();
        break;
    case cKeyframe:
        curve = static_cast<const Keyframe*>(mItem.get())->getOwningCurve();
        break;
    case cTangentHandle:
    case cTangentLine:
        curve = static_cast<const Tangent*>(mItem.get())->getOwningCurve();
        break;
    default:
        break;
    }
    return curve ? curve->getShared() : nullptr;
}

std::shared_ptr<Segment> HitRecord::getSegment() const
{
    return mType == cSegment ? std::static_pointer_cast<Segment>(mItem) : nullptr;
}

std::shared_ptr<Keyframe> HitRecord::getKeyframe() const
{
    return mType == cKeyframe ? std::static_pointer_cast<Keyframe>(mItem) : nullptr;
}

std::shared_ptr<Tangent> HitRecord::getTangent() const
{
    return isTangent() ? std::static_pointer_cast<Tangent>(mItem) : nullptr;
}

bool CompareRecord::operator()(const HitRecord& a, const HitRecord& b) const
{
    // Handle and line of one tangent are one item.
    const int kindA = a.isTangent() ? int(HitRecord::cTangentHandle) : a.getType();
    const int kindB = b.isTangent() ? int(HitRecord::cTangentHandle) : b.getType();
    if (kindA != kindB)
        return kindA < kindB;
    return std::less<const void*>()(a.getItem(), b.getItem());
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
