// ChainReading - a chain of lines and arcs made exact and tidy: regular polygons, directions of axes, ends on
// earlier curves.
#pragma once

#include <span>

#include "tessera/recognition/InkInterpretation.h"
#include "tessera/recognition/internal/ChainGeometry.h"

namespace Tessera::Geometry {

/// Whether the pieces of a chain may be added to (arcs where corners were drawn round, free forms in place of
/// those between which the ink only bends) and be turned towards the pen's own corners.
enum class ChainPieces { AsFound, Fixed };

/// Fills shape, curves, joints and connections; deviations are left to MeasureDeviations. No corner lies
/// farther outside the ink's box than the tolerance (sizes). Without curveTidy nothing is joined: the pieces
/// are read as ReadLoose does.
void ReadChain(const PricedPath& ink, const SketchRecognizerPreferences& preferences,
               std::span<Curve* const> earlier, Chain chain, double tolerance, ChainPieces pieces,
               InkReading& reading);

/// The same for pieces that are not joined: lines near an axis are turned onto it, the first and the last end
/// belong on earlier curves.
void ReadLoose(const PricedPath& ink, const SketchRecognizerPreferences& preferences,
               std::span<Curve* const> earlier, ExactChain loose, InkReading& reading);

/// Connections name the pen's first and last end as Start and End; turns these into the curves' own.
void NameEnds(InkReading& reading);

} // namespace Tessera::Geometry
