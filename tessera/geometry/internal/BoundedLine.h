// BoundedLine - distances of many points from one segment: all that does not depend on the point comes first.
#pragma once

#include "tessera/geometry/Point.h"
#include "tessera/geometry/Vector.h"

namespace Tessera::Geometry {

class BoundedLine {
public:
    /// Slack of the bounds: before the start on the dot product with the direction as long as the line, so in
    /// squared model units; beyond the end in model units.
    static constexpr double kBoundsTol = 1e-10;

    BoundedLine(const Point& start, const Point& end)
        : start_(start), end_(end), normal_(end.y - start.y, start.x - end.x), along_(start, end),
          length_(start.Distance(end)) {
        normal_.Normalize();
    }

    /// On the infinite line; the point itself where the segment has no direction.
    Point Project(const Point& p) const { return p.AffineCombine(-normal_.Dot(Vector(start_, p)), normal_); }
    double Distance(const Point& p) const {
        const Point q = Project(p);
        if (along_.Dot(Vector(start_, q)) < -kBoundsTol)
            return p.Distance(start_);
        if (q.Distance(start_) > length_ + kBoundsTol)
            return p.Distance(end_);
        return p.Distance(q);
    }

private:
    Point start_, end_;
    Vector normal_; // of unit length unless the line has none
    Vector along_;
    double length_;
};

} // namespace Tessera::Geometry
