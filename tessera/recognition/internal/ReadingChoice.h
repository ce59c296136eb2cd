// ReadingChoice - which of two whole readings of a stroke its drawer meant.
#pragma once

#include "tessera/recognition/internal/RoundShape.h"

namespace Tessera::Geometry {

/// Whether the round describes the ink more cheaply than the chain.
///
/// A hand that draws a polygon's sides straight would have drawn a round better than a poor one: its spread,
/// taken from the sides, prices the deviations of both.
bool IsRoundCheaper(const PricedPath& ink, const RoundShape& round, const Chain& chain);

/// Whether the ink turns at once at a joint of the chain.
bool ShowsCorner(const PricedPath& ink, const Chain& chain);

/// The chain with its arcs straightened when that makes it a quadrilateral with corners of 60 to 120 degrees
/// and costs no more than the numbers a rectangle saves; else the chain itself.
Chain StraightenRectangle(const PricedPath& ink, const Chain& chain);

/// The same for an open chain of three sides: with arcs straightened, and of four pieces two made one. The
/// ends of a bracket run the same way from its middle.
Chain StraightenBracket(const PricedPath& ink, const Chain& chain);

} // namespace Tessera::Geometry
