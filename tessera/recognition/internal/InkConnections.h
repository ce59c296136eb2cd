// InkConnections - free ends of a new chain put onto key points and ends of earlier curves.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "tessera/recognition/InkInterpretation.h"
#include "tessera/recognition/internal/ChainGeometry.h"

namespace Tessera::Geometry {

/// The free ends of an open chain that belong on the nearest key point of an earlier curve within the snap
/// distance (with snapping) or, where there is none, on the nearest free end of one within the closing
/// tolerance of the ink (with curveTidy): in several strokes of one drawing ends meet as they do in one. No
/// end moves farther than a sixth of its piece's length: a short piece keeps its shape.
///
/// @return one for each such end; they name the pen's first and last end as Start and End.
std::vector<InkConnection> FindConnections(const InkPath& path, std::span<Curve* const> earlier,
                                           const SketchRecognizerPreferences& preferences,
                                           const ExactChain& chain);

/// Where the pen's first or last end belongs (units of the path), if anywhere.
std::optional<Point> PlaceOf(const InkPath& path, std::span<const InkConnection> connections, CurveEnd end);

/// Moves the ends to where they belong; the connections' curves become indices of the chain's pieces.
void MoveEnds(const InkPath& path, std::span<InkConnection> connections, ExactChain& chain);

/// Finds and moves.
std::vector<InkConnection> ConnectEnds(const InkPath& path, std::span<Curve* const> earlier,
                                       const SketchRecognizerPreferences& preferences, ExactChain& chain);

} // namespace Tessera::Geometry
