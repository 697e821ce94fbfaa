#pragma once

#include <memory>
#include <set>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Keyframe;
class Segment;
class Splinor;
class Tangent;

/// Names one item of a curve: the curve itself, a segment, a keyframe, or a tangent by its
/// handle or by its line. A record holds its item alive; its curve is the item's owner at the
/// time of asking, so a record of an item that a swap has moved names the other curve.
class HitRecord
{
public:
    enum Type : int {
        cNothing = 0,
        cCurve = 1,
        cSegment = 2,
        cKeyframe = 3,
        cTangentHandle = 4,
        cTangentLine = 5,
    };

    HitRecord() = default;
    explicit HitRecord(std::shared_ptr<Splinor> iCurve);
    explicit HitRecord(std::shared_ptr<Segment> iSegment);
    explicit HitRecord(std::shared_ptr<Keyframe> iKeyframe);
    HitRecord(std::shared_ptr<Tangent> iTangent, bool iHandle);

    /// A null pointer makes an empty record.
    void reset();
    void reset(std::shared_ptr<Splinor> iCurve);
    void reset(std::shared_ptr<Segment> iSegment);
    void reset(std::shared_ptr<Keyframe> iKeyframe);
    void reset(std::shared_ptr<Tangent> iTangent, bool iHandle);

    int getType() const { return mType; }
    bool isEmpty() const { return mType == cNothing; }
    bool isTangent() const { return mType == cTangentHandle || mType == cTangentLine; }

    /// The curve of a record of any type but cNothing; null for an item that left its curve.
    std::shared_ptr<Splinor> getCurve() const;
    /// The item of a record of that type; null otherwise.
    std::shared_ptr<Segment> getSegment() const;
    std::shared_ptr<Keyframe> getKeyframe() const;
    std::shared_ptr<Tangent> getTangent() const;

    /// The item's address, whatever its type; null for an empty record.
    const void* getItem() const { return mItem.get(); }

    /// Same type and same item.
    bool operator==(const HitRecord& iOther) const { return mType == iOther.mType && mItem == iOther.mItem; }
    bool operator!=(const HitRecord& iOther) const { return !(*this == iOther); }

private:
    void assign(int iType, std::shared_ptr<void> iItem);

    int mType = cNothing;
    std::shared_ptr<void> mItem;
};

/// A strict order under which records of the same item are equal, so a set holds each item once:
/// a tangent's handle and line records are equal, while a key and its tangents are not.
struct CompareRecord
{
    bool operator()(const HitRecord& a, const HitRecord& b) const;
};

using HitSet = std::set<HitRecord, CompareRecord>;

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
