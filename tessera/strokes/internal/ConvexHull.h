// Convex hull of planar points.
#pragma once

#include <vector>

#include "tessera/geometry/Point.h"

namespace Tessera::Geometry {

/// Corners of the hull, counter-clockwise from the lowest of the leftmost points, without collinear or
/// repeated ones: one point for coincident input, two for collinear input. Points that are not finite are
/// passed over. O(n log n).
std::vector<Point> ConvexHull(std::vector<Point> points);

/// Whether p lies inside or on a hull of at least three corners.
bool IsInConvexHull(const Point& p, const std::vector<Point>& hull);

} // namespace Tessera::Geometry
