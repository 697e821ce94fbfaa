#pragma once

#include "splinorlib/SharedFromThis.h"
#include "splinorlib/Vector2D.h"

#include <cstdint>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Segment;
class Splinor;
class Tangent;

/// A key of a curve: a position and a few flags.
///
/// A keyframe either belongs to a curve, as the left key of one of its segments, or is free: a
/// plain value made on the stack to describe a key before it is inserted. Only keys of a curve
/// have neighbours, tangents and an owning curve; the getters give null for a free one.
///
/// Keys of a curve stay in strictly increasing x, at least getMinSeparation() apart: set()
/// clamps x between the neighbours, so a key can be moved up to them but never past them.
class Keyframe : public SharedFromThis<Keyframe>
{
public:
    Keyframe() = default;
    Keyframe(double iX, double iY) : mPosition(iX, iY) {}
    /// Copies the values of a key, never its place in a curve.
    Keyframe(const Keyframe& iOther);
    Keyframe& operator=(const Keyframe& iOther);
    ~Keyframe() = default;

    const Vector2D<double>& get() const { return mPosition; }
    double getX() const { return mPosition.x; }
    double getY() const { return mPosition.y; }

    /// NaN or infinity on either axis leaves the key as it is.
    void set(const Vector2D<double>& iPosition);
    void set(double iX, double iY);

    /// The smallest distance in x between two keys of a curve, in curve units.
    static constexpr double getMinSeparation() { return 1.0e-4; }

    bool isBreakdown() const { return mFlags & cBreakdown; }
    void setBreakdown(bool iBreakdown);
    bool isTangentsUnified() const { return mFlags & cUnified; }
    void setTangentsUnified(bool iUnified);

    /// The segment that ends at this key, and the one that starts at it.
    Segment* getLeftSegment() const;
    Segment* getRightSegment() const;
    /// The tangents on either side of this key; null where the side has no segment.
    Tangent* getInTangent() const;
    Tangent* getOutTangent() const;
    Splinor* getOwningCurve() const;

private:
    friend class Segment;
    friend class Splinor;
    friend bool IsLocked(const Keyframe&);
    friend void SetLocked(Keyframe&, bool);

    enum Flag : std::uint8_t { cBreakdown = 1, cUnified = 2, cLocked = 4 };
    void setFlag(Flag iFlag, bool iOn);

    Vector2D<double> mPosition;
    Segment* mSegment = nullptr; // the segment that starts here; null for a free key
    std::uint8_t mFlags = 0;
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
