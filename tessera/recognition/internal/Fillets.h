// Fillets - corners of a chain that were drawn round on purpose.
//
// Every hand rounds its corners a little, a quick one more than a careful one. Where the ink stays clear of a
// corner by many times what the same ink strays from its sides, an arc that touches both neighbours was
// drawn: one more number, the radius.
#pragma once

#include <vector>

#include "tessera/recognition/internal/ChainGeometry.h"
#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// Of each piece, whether the corner before it was drawn round; empty when none was.
///
/// @param chain  the pieces that `exact` was made of; none is found where they are not one to one.
std::vector<bool> FindRoundCorners(const PricedPath& ink, const Chain& chain, const ExactChain& exact);

/// Gives the corners that were found the arcs that fit best, where there is room for one. The chain may have
/// been turned onto the axes since.
void RoundCorners(const PricedPath& ink, const Chain& chain, const std::vector<bool>& corners,
                  ExactChain& exact);

} // namespace Tessera::Geometry
