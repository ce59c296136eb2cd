// The principal axes follow the points when they are turned, at the cost of two passes; the minimum-area
// rectangle (rotating calipers on the hull) would need a sort and is at best 2 times smaller. The
// axis-aligned candidate covers what the covariance cannot tell apart: squares and circles.
#include "tessera/kernel/internal/BoxPoints.h"

#include <algorithm>
#include <cmath>

#include "tessera/kernel/EQ.h"

namespace {

struct Extent {
    double low = 0.0, high = 0.0; // the first point is the origin of all extents

    void Add(double value) {
        low = std::min(low, value);
        high = std::max(high, value);
    }
    double Middle() const { return (low + high) / 2.0; }
    double Half() const { return (high - low) / 2.0; }
};

struct Direction {
    double x = 1.0, y = 0.0;
};

// Direction of the larger eigenvalue of the covariance matrix, as half the angle of (sxx - syy, 2 sxy).
Direction PrincipalDirection(int n, const double* xy, int stride) {
    double sx = 0.0, sy = 0.0, sxx = 0.0, sxy = 0.0, syy = 0.0;
    for (int i = 0; i < n; ++i) {
        const double dx = xy[i * static_cast<long long>(stride)] - xy[0];
        const double dy = xy[i * static_cast<long long>(stride) + 1] - xy[1];
        sx += dx;
        sy += dy;
        sxx += dx * dx;
        sxy += dx * dy;
        syy += dy * dy;
    }
    const double difference = (sxx - sx * sx / n) - (syy - sy * sy / n);
    const double twiceMixed = 2.0 * (sxy - sx * sy / n);
    const double angle = 0.5 * std::atan2(twiceMixed, difference);
    return {std::cos(angle), std::sin(angle)};
}

} // namespace

void BoxPoints(int n, const double* xy, int stride, int* dimension, double centre[3],
               double halfSizes[3][3]) {
    Direction u = PrincipalDirection(n, xy, stride);
    Extent along, across, inX, inY;
    for (int i = 0; i < n; ++i) {
        const double dx = xy[i * static_cast<long long>(stride)] - xy[0];
        const double dy = xy[i * static_cast<long long>(stride) + 1] - xy[1];
        inX.Add(dx);
        inY.Add(dy);
        along.Add(u.x * dx + u.y * dy);
        across.Add(u.x * dy - u.y * dx);
    }
    // Not finite where the points are not: then the comparison would take the empty extents along it.
    const bool isPrincipal = std::isfinite(u.x) && along.Half() * across.Half() < inX.Half() * inY.Half();
    if (!isPrincipal) {
        u = {};
        along = inX;
        across = inY;
    }
    centre[0] = xy[0] + u.x * along.Middle() - u.y * across.Middle();
    centre[1] = xy[1] + u.y * along.Middle() + u.x * across.Middle();
    centre[2] = 0.0;

    double sides[2][3] = {{u.x * along.Half(), u.y * along.Half(), 0.0},
                          {-u.y * across.Half(), u.x * across.Half(), 0.0}};
    double lengths[2] = {along.Half(), across.Half()};
    if (lengths[0] < lengths[1]) { // swap, and turn one side round so that the pair stays right-handed
        std::swap(lengths[0], lengths[1]);
        for (int k = 0; k < 3; ++k) {
            std::swap(sides[0][k], sides[1][k]);
            sides[1][k] = -sides[1][k];
        }
    }
    const double tol = EQ_ask_length_tolerance();
    *dimension = 0;
    while (*dimension < 2 && lengths[*dimension] >= tol) {
        ++*dimension;
    }
    for (int side = 0; side < 3; ++side) {
        for (int k = 0; k < 3; ++k) {
            halfSizes[side][k] = side < *dimension ? sides[side][k] : 0.0;
        }
    }
}
