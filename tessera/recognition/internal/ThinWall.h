// ThinWall - a line drawn forth and back along itself.
#pragma once

#include <vector>

#include "tessera/recognition/internal/ChainGeometry.h"

namespace Tessera::Geometry {

/// The two parallel sides of a wall, or its centre line, as pieces that are not joined; empty for a chain
/// that is not two lines of about equal length which run back along each other within a tenth of their
/// length.
std::vector<ExactPiece> FindThinWall(const PricedPath& ink, const Chain& chain, bool asSides);

} // namespace Tessera::Geometry
