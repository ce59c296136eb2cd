#include "tessera/dimension/internal/Segment.h"

#include <cmath>

#include "tessera/kernel/EQ.h"

namespace Tessera::Dimension {

using Geometry::Point;
using Geometry::Vector;

bool Segment::IsZero() const {
    const double t = EQ_ask_length_tolerance();
    return std::fabs(end.x - start.x) <= t && std::fabs(end.y - start.y) <= t;
}

double Segment::ParamOf(const Point& p) const {
    const Vector along(start, end);
    const double lengthSq = along.LengthSq();
    return lengthSq > 0.0 ? along.Dot(Vector(start, p)) / lengthSq : 0.0;
}

Vector Segment::Direction(const Vector& fallback) const {
    Vector along(start, end);
    return along.Normalize() ? along : fallback;
}

} // namespace Tessera::Dimension
