// InkConnections - free ends of a new chain put onto key points of earlier curves.
#pragma once

#include <span>
#include <vector>

#include "tessera/recognition/InkInterpretation.h"
#include "tessera/recognition/internal/ChainGeometry.h"

namespace Tessera::Geometry {

/// Moves the free ends of an open chain onto the nearest key point within the snap distance of the
/// preferences, but no farther than a sixth of the piece's length: a short piece keeps its shape.
///
/// @return a connection for each end moved; curve indices are those of the chain's pieces.
std::vector<InkConnection> ConnectEnds(const InkPath& path, std::span<Curve* const> earlier,
                                       const SketchRecognizerPreferences& preferences, ExactChain& chain);

} // namespace Tessera::Geometry
