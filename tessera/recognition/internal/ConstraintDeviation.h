// How far a sketch is from a constraint, in spreads of a hand.
#pragma once

#include "tessera/recognition/ConstraintInference.h"
#include "tessera/recognition/internal/SketchParameters.h"

namespace Tessera::Geometry {

/// Three spreads: 1 intended line in 370 is drawn further off.
inline constexpr double kDeviationLimit = 3.0;

/// >= 0, in spreads; above kDeviationLimit the constraint is not what was meant. Three spreads are the
/// tolerance zone for points, 3 degrees for a direction, 10 degrees for a joint and 12 % for sizes with the
/// default options.
double DeviationOf(const InferredConstraint& c, const SketchParameters& sketch,
                   const ConstraintOptions& options);

/// Of a constraint that the hand missed by so many spreads: 1 for none.
double ConfidenceOf(double deviation);

/// Spread of a point's mirror image about a drawn axis, model units.
double MirrorSpread(double distanceFromAxisMiddle, const ConstraintOptions& options);

/// Whether the kind compares directions or sizes, which joining the curves hardly changes. Centres and end
/// tangents of arcs do change with the joints: for these the drawing alone counts.
bool IsKeptByOthers(ConstraintKind_e kind);

} // namespace Tessera::Geometry
