#include "tessera/kernel/ARC_SPLINE.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tessera/kernel/VEC2.h"

using Vex::Math::Point2;
using Vex::Math::Vector2;

namespace {

// The coordinates are taken as rounded: a triangle no higher than their rounding is no triangle.
constexpr double kRounding = 4.0 * std::numeric_limits<double>::epsilon();

double LargestCoordinate(const Point2* p) {
    return std::max(std::fabs(p->x), std::fabs(p->y));
}

} // namespace

int ARC_SPLINE_cre_circle_thru_3_points_2d(const Point2* a, const Point2* b, const Point2* c, Point2* centre,
                                           double* radius) {
    // Relative to a the centre (x, y) solves 2 u.(x, y) = |u|^2, 2 v.(x, y) = |v|^2.
    const Vector2 u{b->x - a->x, b->y - a->y}, v{c->x - a->x, c->y - a->y};
    const double cross = VEC2_cross(&u, &v), uSq = VEC2_dot(&u, &u), vSq = VEC2_dot(&v, &v);
    const double coordinate = std::max({LargestCoordinate(a), LargestCoordinate(b), LargestCoordinate(c)});
    const double rounding = kRounding * (std::fabs(u.x * v.y) + std::fabs(u.y * v.x) +
                                         coordinate * (std::sqrt(uSq) + std::sqrt(vSq)));
    if (!(std::fabs(cross) > rounding))
        return 0;
    const double x = 0.5 * (v.y * uSq - u.y * vSq) / cross, y = 0.5 * (u.x * vSq - v.x * uSq) / cross;
    *radius = std::hypot(x, y);
    *centre = {a->x + x, a->y + y};
    return 1;
}
