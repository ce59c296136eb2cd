// Monotone chain: A. M. Andrew, Information Processing Letters 9 (1979) 216-219.
#include "tessera/strokes/internal/ConvexHull.h"

#include <algorithm>
#include <cmath>

namespace Tessera::Geometry {

namespace {

double Turn(const Point& a, const Point& b, const Point& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// Adds the points of a half chain; none of the last two may leave it turning clockwise or straight on.
template <class Iterator>
void AddChain(Iterator first, Iterator last, std::vector<Point>& hull) {
    const std::size_t start = hull.size();
    for (; first != last; ++first) {
        while (hull.size() >= start + 2 && Turn(hull[hull.size() - 2], hull.back(), *first) <= 0.0) {
            hull.pop_back();
        }
        hull.push_back(*first);
    }
    hull.pop_back(); // the other half begins with it
}

} // namespace

std::vector<Point> ConvexHull(std::vector<Point> points) {
    // What is not a number has no place in any order, and a hull to infinity has no corners.
    points.erase(std::remove_if(points.begin(), points.end(),
                                [](const Point& p) { return !std::isfinite(p.x) || !std::isfinite(p.y); }),
                 points.end());
    // Bitwise comparisons: a tolerant order would not be transitive.
    std::sort(points.begin(), points.end(),
              [](const Point& a, const Point& b) { return a.x < b.x || (a.x == b.x && a.y < b.y); });
    points.erase(std::unique(points.begin(), points.end(),
                             [](const Point& a, const Point& b) { return a.x == b.x && a.y == b.y; }),
                 points.end());
    if (points.size() < 2) {
        return points;
    }
    std::vector<Point> hull;
    AddChain(points.begin(), points.end(), hull);
    AddChain(points.rbegin(), points.rend(), hull);
    return hull;
}

bool IsInConvexHull(const Point& p, const std::vector<Point>& hull) {
    for (std::size_t i = 0, j = hull.size() - 1; i < hull.size(); j = i++) {
        if (Turn(hull[j], hull[i], p) < 0.0) {
            return false;
        }
    }
    return true;
}

} // namespace Tessera::Geometry
