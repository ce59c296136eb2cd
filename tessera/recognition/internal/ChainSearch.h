// ChainSearch - the briefest descriptions of a path by lines and arcs together with how they join.
//
// Pieces have their prices and so has each joint, by what it is: a corner must turn, and the ink must turn
// there and at once, and the pen slow down; at a tangent joint the carriers touch and the ink turns no more
// than they do; at a bend the ink runs on smoothly, but the pieces do not fit each other: the path is
// free-form there. Tangency saves the direction, one number. The search over pieces and joints is exact for
// the given candidates (dynamic programming over pairs of neighbours).
#pragma once

#include <vector>

#include "tessera/recognition/internal/PiecePrices.h"

namespace Tessera::Geometry {

/// The cheapest chains for several hands, from a quick one to a careful one, with arcs and without; joints
/// are filled in. Chains may be alike.
std::vector<Chain> SearchChains(const PricedPath& ink);

/// A chain of given pieces for each hand.
/// @param breaks  ascending, both ends of the path among them.
/// @param isArc   for each piece; where the run is too straight for an arc there is no chain.
std::vector<Chain> ChainsOver(const PricedPath& ink, const std::vector<int>& breaks,
                              const std::vector<bool>& isArc);

/// Prices the joints of a chain anew.
void PriceJoints(const PricedPath& ink, Chain& chain);

/// The chain with a corner at the joint before a piece, where the search saw a smooth one.
Chain WithCorner(const PricedPath& ink, Chain chain, std::size_t piece);

/// The length of a chain as a description when the spread of the hand is taken from the ink itself: prices,
/// and the logarithm of what is left unexplained.
double LengthOf(const PricedPath& ink, const Chain& chain);

} // namespace Tessera::Geometry
