// SharpPolygon - the closed polygon through the corners that the ink makes at once.
#pragma once

#include <optional>

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// A closed chain of five lines or more, if the ink turns by that much at all of their corners, within a few
/// points of each, and runs straight between. Such a polygon is hardly cheaper to describe than a round, and
/// yet no round has corners. Nothing for fewer sides: those are told from rounds by their deviations.
std::optional<Chain> FindSharpPolygon(const PricedPath& ink);

} // namespace Tessera::Geometry
