// JoinedChain - the cheapest description of an open path by lines and arcs together with how they join.
//
// Where ChainSearch prices pieces alone, here a joint has its own price, by what it is: a corner must turn,
// and the ink must turn there and at once; at a tangent joint the carriers touch and the ink turns no more
// than they do; at a bend the ink runs on smoothly, but the pieces do not fit each other: the path is
// free-form there. Tangency saves the direction, one number. The search over pieces and joints is exact for
// the given candidates (dynamic programming over pairs of neighbours).
#pragma once

#include "tessera/recognition/internal/ChainSearch.h"

namespace Tessera::Geometry {

/// The chain for the hand that drew this ink: of the descriptions for several hands, from a quick one to a
/// careful one, the one that is briefest when the spread is taken from the ink itself. Its costs are those
/// for that hand; joints are filled in.
Chain SearchJoinedChain(const PricedPath& ink);

} // namespace Tessera::Geometry
