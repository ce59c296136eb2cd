// InkConnections - free ends of a new chain put onto key points and ends of earlier curves.
#pragma once

#include <span>
#include <vector>

#include "tessera/recognition/InkInterpretation.h"
#include "tessera/recognition/internal/ChainGeometry.h"

namespace Tessera::Geometry {

/// Moves the free ends of an open chain onto the nearest key point of an earlier curve within the snap
/// distance (with snapping) or, where there is none, onto the nearest free end of one within the closing
/// tolerance of the ink (with curveTidy): in several strokes of one drawing ends meet as they do in one. No
/// end moves farther than a sixth of its piece's length: a short piece keeps its shape.
///
/// @return a connection for each end moved; curve indices are those of the chain's pieces.
std::vector<InkConnection> ConnectEnds(const InkPath& path, std::span<Curve* const> earlier,
                                       const SketchRecognizerPreferences& preferences, ExactChain& chain);

} // namespace Tessera::Geometry
