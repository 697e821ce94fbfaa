#pragma once

#include "splinorlib/TrackedObserver.h"

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Keyframe;
class Segment;
class Splinor;
class Tangent;

/// Observer of curves. Every edit of a curve's own items is announced by its fine callback
/// followed by curveChanged; structural edits (insertion, removal, swap) and notifyChanged()
/// by curveChanged alone. Nothing is announced inside a Splinor::Switch.
class SplinorObserver : public TrackedObserver
{
public:
    virtual void curveChanged(Splinor&) {}
    virtual void valueChanged(Keyframe&) {}
    virtual void tangentChanged(Tangent&) {}
    virtual void keyframeChanged(Keyframe&) {}
    virtual void segmentChanged(Segment&) {}
    virtual void propertyChanged(Splinor&, const char* /*iKey*/) {}
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
