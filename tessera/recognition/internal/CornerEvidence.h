// CornerEvidence - whether the ink turns where a description has a corner.
#pragma once

#include "tessera/recognition/internal/ChainSearch.h"

namespace Tessera::Geometry {

/// Unit direction in which the pen runs along a piece, at its first (or last) point.
Point DirectionAt(const PricedPath& ink, const ChainPiece& piece, bool atLast);

/// Largest turn that the ink makes within a few points of a point, radians, unsigned.
double SharpestTurn(const InkPath& path, int at);

/// The same with its sense, counter-clockwise positive.
double SignedTurn(const InkPath& path, int at);

/// Price of the turns that the chain makes at its joints and that the ink makes only gradually: a round drawn
/// as a polygon turns everywhere, a polygon at its corners.
double PriceOfSoftCorners(const PricedPath& ink, const Chain& chain);

} // namespace Tessera::Geometry
