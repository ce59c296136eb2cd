// XYBox - axis-aligned extent in the drawing plane, model units.
#pragma once

#include <vector>

#include "tessera/core/Export.h"
#include "tessera/geometry/Point.h"

namespace Tessera::Geometry {

class StrokePoint;

class TESSERA_API XYBox {
public:
    XYBox() = default;
    /// Corners as given, not sorted.
    XYBox(const Point& minPoint, const Point& maxPoint) : min(minPoint), max(maxPoint) {}
    /// An empty list gives the degenerate box at the origin.
    explicit XYBox(const std::vector<Point>& points);
    explicit XYBox(const std::vector<StrokePoint>& points);

    /// Extends at most one side per axis, which is right as long as min <= max.
    void Merge(const Point& p);
    void Merge(const XYBox& box);
    /// Strictly inside the box grown by the length tolerance.
    bool ContainPoint(const Point& p) const;
    /// The boxes overlap or touch within the length tolerance, a plus sign without corners inside included.
    bool HasIntersect(const XYBox& box) const;
    Point GetMinPoint() const { return min; }
    Point GetMaxPoint() const { return max; }

    Point min;
    Point max;
};

} // namespace Tessera::Geometry
