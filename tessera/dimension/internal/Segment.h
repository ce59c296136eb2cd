// Segment - a straight piece from start to end as plain values; parameter 0 at the start, 1 at the end.
#pragma once

#include "tessera/geometry/Curve.h"
#include "tessera/geometry/Point.h"
#include "tessera/geometry/Vector.h"

namespace Tessera::Dimension {

struct Segment {
    Geometry::Point start;
    Geometry::Point end;

    double Length() const { return start.Distance(end); }
    /// Both extents within the length tolerance.
    bool IsZero() const;
    Geometry::Point At(double u) const { return start.AffineCombine(u, Geometry::Vector(start, end)); }
    /// Parameter of the foot of p on the infinite line; 0 without a length.
    double ParamOf(const Geometry::Point& p) const;
    /// Unit vector from start to end, the fallback when there is none.
    Geometry::Vector Direction(const Geometry::Vector& fallback) const;
};

/// Of a curve that has a record.
inline Segment EndsOf(const Geometry::Curve& curve) {
    return {curve.GetStart(), curve.GetEnd()};
}

} // namespace Tessera::Dimension
