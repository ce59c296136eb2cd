// Points on conics, and noise upon them, for the tests of fits.
#pragma once

#include "tessera/kernel/VexMath.h"
#include "tests/support/Test.h"

using Points2 = std::vector<Vex::Math::Point2>;

/// n points of the ellipse turned by angle, its parameter running over the sweep, both ends included.
inline Points2 EllipsePoints(Vex::Math::Point2 centre, double a, double b, double angle, double start,
                             double sweep, int n) {
    Points2 pts;
    pts.reserve(n);
    const double c = std::cos(angle), s = std::sin(angle);
    for (int i = 0; i < n; ++i) {
        const double t = start + sweep * i / (n - 1), u = a * std::cos(t), v = b * std::sin(t);
        pts.push_back({centre.x + c * u - s * v, centre.y + s * u + c * v});
    }
    return pts;
}

inline void AddNoise(std::mt19937& rng, double size, Points2* pts) {
    std::normal_distribution<double> noise(0.0, size);
    for (Vex::Math::Point2& p : *pts)
        p = {p.x + noise(rng), p.y + noise(rng)};
}
