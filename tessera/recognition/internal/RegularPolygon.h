// RegularPolygon - the regular polygon of five to twelve sides that the ink goes round, told from a round by
// the wave that its sides make of the distance from it.
#pragma once

#include <optional>
#include <vector>

#include "tessera/recognition/internal/EllipseEvidence.h"
#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

struct RegularPolygon {
    Chain sides; ///< closed, as drawn: each the line of least squares through its ink
    std::vector<Point>
        corners; ///< exact, by least squares on the ink of all sides; the first side's start first
};

/// The polygon of five to twelve sides that the ink goes round.
///
/// The more sides a polygon has, the less does each of its corners turn, and the noise of a hand hides one or
/// another of them; all of them together, evenly spaced, are seen long after. Nothing where the samples are
/// too few to tell a side from a chord of a round.
///
/// @param samples  of the ink.
std::optional<RegularPolygon> FindRegularPolygon(const PricedPath& ink, const EllipseEvidence& ellipse,
                                                 int samples);

} // namespace Tessera::Geometry
