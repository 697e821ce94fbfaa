#pragma once

#include "splinorlib/Splinor.h"

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Segment;
class Tangent;

/// Positions of segments and tangents that stay meaningful when the curve is rebuilt item by
/// item, as undo and redo do: the index of a segment is its place in x order (0 is the open
/// segment before the first key), and a tangent's index is 2 * its segment's index, plus 1 for
/// an in tangent.

/// -1 if the segment is not in the curve.
int GetSegmentIndex(const Splinor& iCurve, const Segment& iSegment);
/// end() for an index out of range.
Splinor::iterator GetIndexedSegmentIterator(Splinor& iCurve, int iIndex);
/// -1 if the tangent is not in the curve.
int GetTangentIndex(const Splinor& iCurve, const Tangent& iTangent);
/// Null if there is no such tangent.
Tangent* GetIndexedTangent(Splinor& iCurve, int iIndex);

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
