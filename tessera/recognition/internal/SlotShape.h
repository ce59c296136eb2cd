// SlotShape - a closed stroke read as a slot: two parallel lines of equal length, joined by half circles that
// touch them.
#pragma once

#include <optional>

#include "tessera/recognition/internal/PricedPath.h"
#include "tessera/recognition/internal/RoundedOutline.h"

namespace Tessera::Geometry {

/// The slot of least squared distances from the path. Nothing for a path on a line and where the lines shrink
/// to nothing.
std::optional<RoundedOutline> FitSlot(const PricedPath& ink);

/// The slot, where the drawer may have meant one: the path goes round once, the lines are not too short for
/// the radius, and the ends are round.
std::optional<RoundedShape> FindSlot(const PricedPath& ink);

} // namespace Tessera::Geometry
