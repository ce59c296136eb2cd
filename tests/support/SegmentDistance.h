// Distances from poly-lines by trying every segment, for points of any type with x and y.
#pragma once

#include "tests/support/Test.h"

namespace Tessera::Testing {

template <class P>
double SegmentDistance(const P& p, const P& a, const P& b) {
    const double dx = b.x - a.x, dy = b.y - a.y, lengthSq = dx * dx + dy * dy;
    const double along = (p.x - a.x) * dx + (p.y - a.y) * dy;
    const double t = lengthSq > 0.0 ? std::clamp(along / lengthSq, 0.0, 1.0) : 0.0;
    return std::hypot(p.x - a.x - t * dx, p.y - a.y - t * dy);
}

/// Two points at least.
template <class P>
double PolylineDistance(const std::vector<P>& points, const P& p) {
    double best = SegmentDistance(p, points[0], points[1]);
    for (std::size_t i = 2; i < points.size(); ++i)
        best = std::min(best, SegmentDistance(p, points[i - 1], points[i]));
    return best;
}

} // namespace Tessera::Testing
