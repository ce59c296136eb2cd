// Strokes with known answers, as evenly sampled pen paths.
#pragma once

#include "tessera/geometry/Point.h"
#include "tessera/strokes/Stroke.h"
#include "tests/support/FitSamples.h"
#include "tests/support/Test.h"

namespace Tessera::Testing {

using Samples = std::vector<Geometry::StrokePoint>;

/// Poly-line through the corners with perSide segments to each side.
inline Samples DrawPath(const std::vector<Geometry::Point>& corners, int perSide, double speed = 1.0) {
    Samples samples;
    const Geometry::Point* from = nullptr;
    for (const Geometry::Point& to : corners) {
        if (from == nullptr)
            samples.emplace_back(to.x, to.y, speed);
        for (int i = 1; from != nullptr && i <= perSide; ++i) {
            const double t = static_cast<double>(i) / perSide;
            samples.emplace_back(from->x + t * (to.x - from->x), from->y + t * (to.y - from->y), speed);
        }
        from = &to;
    }
    return samples;
}

/// n samples of the ellipse centre + (a cos t, b sin t) turned by rotation, t from start to end.
inline Samples DrawEllipse(const Geometry::Point& centre, double a, double b, double rotation, double start,
                           double end, int n) {
    Samples samples;
    for (const auto& p : EllipsePoints({centre.x, centre.y}, a, b, rotation, start, end - start, n))
        samples.emplace_back(p.x, p.y, 1.0);
    return samples;
}

/// n points, each at most step beside and above or below the one before it.
inline std::vector<Geometry::Point> RandomWalk(std::mt19937& rng, int n, double step = 1.0) {
    std::uniform_real_distribution<double> move(-step, step);
    std::vector<Geometry::Point> points = {{0, 0}};
    while (static_cast<int>(points.size()) < n)
        points.push_back(points.back() + Geometry::Point(move(rng), move(rng)));
    return points;
}

/// Back and forth between y = 0 and y = height, `pitch` forward with each leg.
inline std::vector<Geometry::Point> Zigzag(int legs, double height, double pitch, int perLeg) {
    std::vector<Geometry::Point> corners;
    for (int i = 0; i <= legs; ++i)
        corners.emplace_back(pitch * i, i % 2 == 0 ? 0.0 : height);
    const Samples samples = DrawPath(corners, perLeg);
    return {samples.begin(), samples.end()};
}

inline Geometry::Stroke StrokeThrough(const std::vector<Geometry::Point>& points, double speed = 1.0) {
    Geometry::Stroke stroke;
    for (const Geometry::Point& p : points)
        stroke.AddPoint(Geometry::StrokePoint(p.x, p.y, speed));
    return stroke;
}

} // namespace Tessera::Testing
