// ChainClosing - a chain of lines and arcs made the closed or open shape that it was meant to be.
#pragma once

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// The cheapest of: the chain as it is; closed with a corner where the last piece meets the first; closed
/// with the last and the first piece made one (the pen began within a side, or ran on along it); each of
/// these without a hook at either end (a short piece that the pen drew when it touched down or left).
Chain CloseChain(const PricedPath& ink, const Chain& open);

/// Where the carriers of two pieces meet, nearest to `near`; false when they do not or run alike.
bool IntersectPieces(const ChainPiece& a, const ChainPiece& b, const Point& near, Point& meet);

} // namespace Tessera::Geometry
