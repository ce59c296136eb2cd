// ChainReading - a chain of lines and arcs made exact and tidy: regular polygons, directions of axes, ends on
// earlier curves.
#pragma once

#include <span>

#include "tessera/recognition/InkInterpretation.h"
#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// Fills shape, curves, joints and connections; deviations are left to MeasureDeviations. No corner lies
/// farther outside the ink's box than the tolerance (sizes).
void ReadChain(const PricedPath& ink, const SketchRecognizerPreferences& preferences,
               std::span<Curve* const> earlier, Chain chain, double tolerance, InkReading& reading);

/// Connections name the pen's first and last end as Start and End; turns these into the curves' own.
void NameEnds(InkReading& reading);

} // namespace Tessera::Geometry
