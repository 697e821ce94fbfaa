#pragma once

#include "splinorlib/SharedFromThis.h"
#include "splinorlib/Vector2D.h"

#include <cstdint>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Keyframe;
class Segment;
class Splinor;

/// Tangent types, as getType() gives them.
enum TangentType : unsigned char {
    cTangentFixed = 0,        ///< the vector as set
    cTangentFlat = 1,         ///< slope 0
    cTangentLinear = 2,       ///< toward the neighbouring key on its side
    cTangentSmooth = 3,       ///< through the previous and the next key
    cTangentSmoothNormal = 4, ///< smooth, weighted for uneven spacing, no overshoot on either side
    cTangentClamped = 5,      ///< smooth, but flat next to a neighbour of equal value
    cTangentPlateau = 6,      ///< smooth, flat at extremes and end keys, never past a neighbour
};
constexpr unsigned char cTangentTypeCount = 7;

/// A handle of a key, as a vector relative to the key. The out tangent of a segment sits at its
/// left key and points right; the in tangent sits at its right key and points left. A tangent
/// never crosses to the other side of its key: x >= 0 for out, x <= 0 for in.
///
/// Every type but Fixed is worked out by the model from the neighbouring keys whenever it is
/// read, so it follows any move, insertion or removal of a key. An unweighted tangent keeps
/// only its direction: its length in x is a third of its segment's span. A weighted one keeps
/// its vector. A weight-locked one keeps its length when it is set.
class Tangent : public SharedFromThis<Tangent>
{
public:
    Vector2D<double> get() const;
    /// Sets the vector and makes the tangent Fixed. On a key with unified tangents the opposite
    /// tangent turns to stay in line, keeping its own length. NaN or infinity is ignored.
    void set(const Vector2D<double>& iValue);
    void set(double iX, double iY) { set(Vector2D<double>(iX, iY)); }

    unsigned char getType() const { return mType; }
    /// Types beyond Plateau are ignored. Setting Fixed freezes the vector in force.
    void setType(unsigned char iType);

    bool isWeighted() const { return mFlags & cWeighted; }
    void setWeighted(bool iWeighted);
    bool isWeightLocked() const { return mFlags & cWeightLocked; }
    void setWeightLocked(bool iLocked);

    bool isInTangent() const { return mFlags & cIn; }
    /// The tangent on the other side of the same key, or null at an end of the curve.
    Tangent* getOppositeTangent() const;
    Keyframe* getOwningKeyframe() const;
    Segment* getOwningSegment() const { return mSegment; }
    Splinor* getOwningCurve() const;

    /// The slope that an automatic type gives this tangent now; 0 for Fixed.
    double getAutomaticSlope() const;

private:
    friend class Segment;
    friend class Splinor;

    enum Flag : std::uint8_t { cWeighted = 1, cWeightLocked = 2, cIn = 4 };

    Tangent(Segment* iSegment, bool iIn);
    Tangent(const Tangent&) = default;
    Tangent& operator=(const Tangent&) = default;

    /// Copies vector, type and flags, not the place in a curve.
    void copyStateFrom(const Tangent& iOther);
    void resetState();
    double getSpan() const;
    void setFlag(Flag iFlag, bool iOn);
    void announce();

    Vector2D<double> mValue{1.0, 0.0};
    Segment* mSegment;
    unsigned char mType = cTangentSmooth;
    std::uint8_t mFlags;
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
