// ConstraintBasis - the constraints of a large sketch said in another way, so that few of them reach far.
//
// Which pairs of a group of parallel lines, or of lines of one length, carry its constraints is chance: the
// pairs that were drawn most alike, anywhere in the sketch. Any other pairs that hold the group together mean
// the same and span the same rows. Pairs of neighbours keep the factor of the rows sparse, and so does the
// order: constraints within a half of the drawing before those between the halves, again and again
// (A. George, SIAM J. Numer. Anal. 10 (1973) 345-363: nested dissection).
#pragma once

#include <span>
#include <vector>

#include "tessera/recognition/ConstraintInference.h"
#include "tessera/recognition/internal/SketchParameters.h"

namespace Tessera::Geometry {

/// Constraints that are equivalent to a set that the sketch satisfies, in the order in which to factor them.
/// The first fixedCount curves do not move. O(n log² n).
std::vector<InferredConstraint> EquivalentBasis(std::span<const InferredConstraint> set,
                                                const SketchParameters& sketch, int fixedCount);

} // namespace Tessera::Geometry
