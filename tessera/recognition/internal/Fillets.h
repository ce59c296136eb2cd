// Fillets - corners of a chain that were drawn round on purpose.
//
// Every hand rounds its corners a little, a quick one more than a careful one. Where the ink stays clear of a
// corner by many times what the same ink strays from its sides, an arc that touches both neighbours was
// drawn: one more number, the radius.
#pragma once

#include "tessera/recognition/internal/ChainGeometry.h"
#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// @param chain  the pieces that `exact` was made of; nothing is changed where they are not one to one.
void RoundCorners(const PricedPath& ink, const Chain& chain, ExactChain& exact);

} // namespace Tessera::Geometry
