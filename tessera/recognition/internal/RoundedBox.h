// RoundedBox - a closed stroke read as a rectangle with corners of one radius.
#pragma once

#include <optional>

#include "tessera/recognition/internal/PricedPath.h"
#include "tessera/recognition/internal/RoundedOutline.h"

namespace Tessera::Geometry {

/// The rounded rectangle of least squared distances from the path. Nothing for a path that shows none to
/// begin with, and where a side shrinks to nothing.
std::optional<RoundedOutline> FitBox(const InkPath& path);

/// The rounded rectangle, where the drawer may have meant one: the path goes round once, and its corners are
/// rounder than a hand that means sharp ones leaves them.
std::optional<RoundedShape> FindBox(const PricedPath& ink);

/// Makes the sides equal where those of a rectangle would be, for a square.
void MakeSquare(RoundedOutline& box);

} // namespace Tessera::Geometry
