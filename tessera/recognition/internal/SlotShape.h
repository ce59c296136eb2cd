// SlotShape - a closed stroke read as a slot: two parallel lines of equal length, joined by half circles that
// touch them.
#pragma once

#include <optional>

#include "tessera/recognition/internal/ChainGeometry.h"
#include "tessera/recognition/internal/Description.h"

namespace Tessera::Geometry {

struct SlotShape {
    Point centre;
    Point axis;        ///< unit direction of the lines
    double half = 0.0; ///< half the length of a line
    double radius = 0.0;
    Description description;
};

/// The slot of least squared distances from the path; its description does not price corners. Nothing for a
/// path on a line and where the lines shrink to nothing.
std::optional<SlotShape> FitSlot(const PricedPath& ink);

/// The slot, where the drawer may have meant one: the path goes round once, the lines are not too short for
/// the radius, and the ends are round.
std::optional<SlotShape> FindSlot(const PricedPath& ink);

/// The slot turned about its centre onto an axis of the plane, if that lies within the angle.
void SnapSlot(double snapRad, SlotShape& slot);

/// Line, half circle, line, half circle, or the other way round: in the pen's order, from the piece in which
/// it began. Where the pen came back to that piece, its ink crosses the start of the path; where it ran to
/// the piece's end, that is the ink, and what else was drawn of the piece, and beyond it, stands for nothing.
ExactChain MakeSlot(const InkPath& path, const SlotShape& slot);

} // namespace Tessera::Geometry
