// ChainChoice - the chain that describes the ink most briefly, among those that several searches find.
#pragma once

#include <vector>

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// The briefest chain, the first of equals, with exact tangent joints where these may matter. A lone line or
/// arc that strays beyond the tolerance is taken only where there is nothing else.
///
/// @param found      chains that the rules found: they must be briefer, of lines clearly, than the search's
///                   of the same kinds.
/// @param mayClose   whether ends that meet are closed.
/// @param tolerance  sizes.
/// @param rival      length of a description that the chain competes with.
Chain FindChain(const PricedPath& ink, std::vector<Chain> found, bool mayClose, double tolerance,
                double rival);

} // namespace Tessera::Geometry
