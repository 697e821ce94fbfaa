#pragma once

#include "splinorlib/Keyframe.h"
#include "splinorlib/SharedFromThis.h"
#include "splinorlib/Tangent.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Interpolator;
class Splinor;

namespace Private {
struct CurveContent;
struct SelectionAccess;
}

/// The piece of a curve from one key to the next.
///
/// A segment owns its left key and both of its tangents: the out tangent at its left key and
/// the in tangent at its right key, which is the left key of the next segment. The first
/// segment of a curve has no left key and the last no right key: these exterior segments hold
/// the value of the end key. A tangent exists only where its key does.
///
/// Segments are reached through Splinor's iterators and stay at the same address for as long
/// as they are in the curve; a segment taken out of its curve lives on, detached, for as long
/// as someone holds a shared pointer to it or to one of its items.
class Segment : public SharedFromThis<Segment>
{
    struct Key
    {
    };

public:
    explicit Segment(Key);
    ~Segment();
    Segment(const Segment&) = delete;
    Segment& operator=(const Segment&) = delete;

    Keyframe* getLeftKey() { return mHasLeftKey ? &mLeftKey : nullptr; }
    const Keyframe* getLeftKey() const { return mHasLeftKey ? &mLeftKey : nullptr; }
    Keyframe* getRightKey() { return mNext ? &mNext->mLeftKey : nullptr; }
    const Keyframe* getRightKey() const { return mNext ? &mNext->mLeftKey : nullptr; }
    Tangent* getInTangent() { return mNext ? &mIn : nullptr; }
    const Tangent* getInTangent() const { return mNext ? &mIn : nullptr; }
    Tangent* getOutTangent() { return mHasLeftKey ? &mOut : nullptr; }
    const Tangent* getOutTangent() const { return mHasLeftKey ? &mOut : nullptr; }

    const std::shared_ptr<Interpolator>& getInterpolator() const { return mInterpolator; }
    /// A null interpolator is ignored. Many segments may share one.
    void setInterpolator(std::shared_ptr<Interpolator> iInterpolator);

    /// "" for a key that is not set; the text stays valid until the property is set again.
    const char* getProperty(const char* iKey) const;
    /// An empty value removes the property.
    void setProperty(const char* iKey, const char* iValue);

    Splinor* getOwningCurve() const;

    /// The previous and next segment of the curve; null at the ends and once detached.
    Segment* getPrevious() const { return mPrevious; }
    Segment* getNext() const { return mNext; }
    bool isExterior() const { return !mHasLeftKey || !mNext; }

private:
    friend class Keyframe;
    friend class Tangent;
    friend class Splinor;
    friend struct Private::CurveContent;
    friend struct Private::SelectionAccess;

    static std::shared_ptr<Segment> make(Private::CurveContent* iContent, bool iHasLeftKey);
    void copyValuesFrom(const Segment& iOther);
    void detach();

    Private::CurveContent* mContent = nullptr;
    Segment* mPrevious = nullptr;
    Segment* mNext = nullptr;
    // The curve's ownership of this segment; released when the segment leaves the curve.
    std::shared_ptr<Segment> mKeepAlive;
    std::shared_ptr<Interpolator> mInterpolator;
    std::unique_ptr<std::map<std::string, std::string>> mProperties;
    Keyframe mLeftKey;
    Tangent mOut;
    Tangent mIn;
    bool mHasLeftKey = false;
    // Which of this segment's items are selected: see Private::SelectionAccess.
    std::uint8_t mSelected = 0;
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
