// RadialLayout - the points of a RadialDimDeco and the angles that an arc covers.
#pragma once

#include "tessera/dimension/internal/AngleRange.h"
#include "tessera/geometry/Arc.h"

namespace Tessera::Dimension {

/// Indices into the points of a RadialDimDeco.
enum RadialPoint_e : int {
    kLeaderEnd = 0,
    kFoot = 1,
    kHeadTip = 2,
    kHeadRight = 3,
    kHeadLeft = 4,
    kHeadClose = 5,
    kRadialPointCount = 6
};

/// The angles from which the relative parameters of an arc are counted.
inline AngleRange RangeOf(const Geometry::Arc& arc) {
    const double start = arc.GetStartAngle();
    const double end = arc.GetEndAngle();
    return {start > end + kAngleTol ? start - kTurn : std::min(start, end), end};
}

} // namespace Tessera::Dimension
