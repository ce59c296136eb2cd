// CoarseRound - a round of so few samples that the path between them is a polygon.
#pragma once

#include <optional>
#include <span>

#include "tessera/recognition/internal/EllipseEvidence.h"

namespace Tessera::Geometry {

/// The ellipse on which all of some eight to sixteen samples lie, as seen from these: what lies between two
/// of them is no ink, so that a point of the path there strays as far as they do. Nothing for other ink.
std::optional<EllipseEvidence> FindCoarseRound(const InkPath& path, std::span<const InkSample> samples);

} // namespace Tessera::Geometry
