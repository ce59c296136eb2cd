// CornerEvidence - whether the ink turns where a description has a corner.
#pragma once

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// Unit direction in which the pen runs along a piece, at its first (or last) point.
Point DirectionAt(const PricedPath& ink, const ChainPiece& piece, bool atLast);

/// Largest turn that the ink makes within a few points of a point, radians, counter-clockwise positive.
double SignedTurn(const InkPath& path, int at);

} // namespace Tessera::Geometry
