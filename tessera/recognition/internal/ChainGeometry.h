// ChainGeometry - a chain made exact: pieces that meet in the same points.
#pragma once

#include <vector>

#include "tessera/recognition/internal/ChainSearch.h"

namespace Tessera::Geometry {

struct ExactPiece {
    bool isArc = false;
    Point from;
    Point to;
    Point through; ///< of arcs: a point between the ends
    int first = 0; ///< points of the path that it stands for, as in ChainPiece
    int last = 0;
};

struct ExactChain {
    std::vector<ExactPiece> pieces; ///< each begins where the one before ends
    bool isClosed = false;

    bool IsPolygon() const;
};

/// Neighbours are extended or trimmed to where their carriers meet, if that is near the ink's own corner;
/// else they meet in the ink's corner.
ExactChain MakeExact(const PricedPath& ink, const Chain& chain);

} // namespace Tessera::Geometry
