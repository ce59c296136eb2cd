// EllipticRun - an elliptic arc over a run of the path, as a piece of a chain.
#pragma once

#include <optional>

#include "tessera/recognition/internal/PiecePrices.h"
#include "tessera/recognition/internal/SmoothForms.h"

namespace Tessera::Geometry {

/// The elliptic arc of least distances through the points of a run, but for those next to its ends.
struct EllipticRun {
    int first = 0; ///< points of the path
    int last = 0;
    EllipticArc arc; ///< from the ink's first point to its last; its description is for a whole stroke
    Description description; ///< as a piece: where it begins is known
    double farthest = 0.0;   ///< of all points of the run, sizes
};

/// The least price of one, of its numbers; a chain knows where it begins.
inline constexpr double kEllipticRunPrice = kEllipticPrice - 2.0 * kNumberPrice;

/// Nothing where FindEllipticArc finds nothing. Linear in the points.
///
/// @param first, last  points of the path, ascending.
std::optional<EllipticRun> FindEllipticRun(const PricedPath& ink, int first, int last);

/// What a joint at either end is priced by: the circle that the ellipse bends as there.
PricedPiece BendAt(const EllipticRun& run, bool atEnd);

} // namespace Tessera::Geometry
