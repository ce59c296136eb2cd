// EndJoin - the ends of a closed stroke made to meet where the pen touched down within a piece.
#pragma once

#include <optional>
#include <vector>

#include "tessera/recognition/internal/InkPath.h"

namespace Tessera::Geometry {

/// What has to be done to the end of a path so that it meets the start; nothing where both are within two
/// steps or so.
struct EndJoin {
    int cut = 0;             ///< last points, which run along the first ones again
    std::vector<Point> fill; ///< across a gap, smoothly
};

/// Cosine of the angle by which the pen turns from where it came to the end to where it goes on at the start.
double CosineAtEnds(const InkPath& path);

/// Empty where the ends lie farther apart than the given distance (sizes), and where the pen does not go on
/// at the start as it came to the end: what is left open there is a corner. O(points).
std::optional<EndJoin> JoinEnds(const InkPath& path, double closing);

/// The path begun at a point of it that is not cut, which ends it too.
InkPath BegunAt(const InkPath& path, const EndJoin& join, int start);

/// Values of the path's points (their pace) in the order in which these come then.
std::vector<double> BegunAt(std::vector<double> values, const EndJoin& join, int start, double ofFill);

} // namespace Tessera::Geometry
