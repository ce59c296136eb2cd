// ThinWall - ink drawn forth and back along itself.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// Both runs of the pen in one.
struct ThinWall {
    InkStroke centre;       ///< the line midway between the runs, in the order of the first, model units
    std::vector<int> forth; ///< for each of its samples, the ink's own sample of the first run
    std::vector<int> back;  ///< and of the second
    double halfWidth = 0.0; ///< from the centre line to the first run, to the left positive, model units
};

/// Nothing for ink that does not turn back once, about its middle, and then run along itself: the runs of
/// about equal length, at no point farther apart than an eighth of it.
std::optional<ThinWall> FindThinWall(const PricedPath& ink);

/// A new curve at a distance to the left of the given one, which runs the same way; a circular arc to its
/// inner side not beyond its centre. Null when nothing fits.
std::unique_ptr<Curve> ParallelCurve(const Curve& curve, double left);

} // namespace Tessera::Geometry
