// RoundShape - a closed round stroke read as one full circle or ellipse.
#pragma once

#include <optional>

#include "tessera/recognition/internal/Description.h"
#include "tessera/recognition/internal/EllipseEvidence.h"

namespace Tessera::Geometry {

struct RoundShape {
    Point centre;
    double radii[2] = {0.0, 0.0}; ///< the first is not the smaller one
    double rotation = 0.0;        ///< of the first radius
    bool isCircle = false;
    Description description;
    double meanSq = 0.0; ///< of the distances that nothing explains
};

/// What it costs to describe the path as one round, or nothing for a path that does not go round once.
///
/// The pen that comes back seldom meets its start: it has drifted outwards or inwards, or runs on past it.
/// This drift is part of the description; only what remains counts as deviation. A careless hand (fast, by
/// the number of samples per round) may mean a circle where a careful one means an ellipse.
///
/// @param samples  of the ink: the clock of a pen without time stamps.
std::optional<RoundShape> FindRoundShape(const PricedPath& ink, const EllipseEvidence& ellipse, int samples);

/// The price of a round that was found elsewhere: the pen's drift is not explained.
void PriceRound(const PricedPath& ink, RoundShape& shape);

} // namespace Tessera::Geometry
