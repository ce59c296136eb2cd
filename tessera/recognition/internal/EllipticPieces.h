// EllipticPieces - elliptic arcs in place of neighbouring lines and arcs of a chain that are one together.
#pragma once

#include <memory>
#include <vector>

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// Elliptic arcs between corners, or corners and the ends of the stroke, in place of some pieces of a chain
/// that they describe more briefly, joints included; of those that compete the best first. They are kept
/// pieces.
///
/// @param tolerance  sizes, within which their ink lies.
/// @param margin     by which the chain gets briefer at least; twice that where a line and an arc touch.
/// @param mayJoin    whether they are drawn on or cut off to where they meet the carriers of their
/// neighbours.
/// @return  what the chain keeps, which must outlive it.
std::vector<std::unique_ptr<InterpretedCurve>> TakeEllipticPieces(const PricedPath& ink, double tolerance,
                                                                  double margin, bool mayJoin, Chain& chain);

} // namespace Tessera::Geometry
