// Curves of every kind for table-driven tests, and dense samples of them as an oracle.
#pragma once

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/Spline.h"
#include "tests/support/Records.h"
#include "tests/support/SegmentDistance.h"
#include "tests/support/Test.h"

namespace Tessera::Testing {

inline constexpr double kPi = std::numbers::pi;

using Geometry::Curve;
using Geometry::Point;
using CurvePtr = std::unique_ptr<Curve>;

inline CurvePtr MakeLine(const Point& start, const Point& end) {
    return std::make_unique<Geometry::Line>(start, end);
}

inline CurvePtr MakeCircle(const Point& centre, double radius) {
    return std::make_unique<Geometry::Arc>(centre, radius);
}

inline CurvePtr MakeEllipse(const Point& centre, double r1, double r2, double rotation, double start,
                            double end) {
    double at[2] = {centre.x, centre.y};
    double radii[2] = {r1, r2};
    return std::make_unique<Geometry::Ellipse>(at, radii, rotation, start, end);
}

inline CurvePtr MakeArc(const Point& centre, double radius, double start, double end) {
    double at[3] = {centre.x, centre.y, 0.0};
    return std::make_unique<Geometry::Arc>(at, radius, start, end);
}

/// Clamped uniform knots; weights of 1 unless given.
inline CurvePtr MakeSpline(int order, const std::vector<Point>& poles,
                           const std::vector<double>& weights = {}) {
    std::vector<std::array<double, 3>> weighted;
    for (std::size_t i = 0; i < poles.size(); ++i)
        weighted.push_back({poles[i].x, poles[i].y, weights.empty() ? 1.0 : weights[i]});
    return std::make_unique<Geometry::Spline>(records::Bcurve(order, weighted).release());
}

struct Sample {
    std::string name;
    CurvePtr curve;
};

/// One or two of every kind, none of them symmetric about an axis.
inline std::vector<Sample> SampleCurves() {
    std::vector<Sample> all;
    all.push_back({"line", MakeLine({1, 2}, {-3, 5})});
    all.push_back({"arc", MakeArc({1, -2}, 3, 0.3, 2.1)});
    all.push_back({"arc across the zero angle", MakeArc({-1, 1}, 2, -0.4, 3.6)});
    all.push_back({"circle", MakeCircle({2, 1}, 1.5)});
    all.push_back({"elliptic arc", MakeEllipse({0.5, 1}, 3, 1, 0.4, 0.2, 4.0)});
    all.push_back({"ellipse", MakeEllipse({-1, 0.3}, 2, 0.7, 2.5, 0.0, 2.0 * kPi)});
    all.push_back({"cubic", MakeSpline(4, {{0, 0}, {1, 3}, {2, -2}, {4, 1}, {5, 3}, {3, 4}})});
    all.push_back({"rational", MakeSpline(3, {{-2, 0}, {0, 3}, {2, 1}, {3, -2}}, {1, 2, 0.5, 1})});
    all.push_back({"poly-line", MakeSpline(2, {{-3, -1}, {0, 2}, {1, -1}, {4, 0}})});
    return all;
}

/// A random curve of one of the four kinds within about 5 units of the origin.
inline CurvePtr RandomCurve(std::mt19937& rng, int kind) {
    std::uniform_real_distribution<double> at(-4.0, 4.0);
    std::uniform_real_distribution<double> size(0.5, 4.0);
    std::uniform_real_distribution<double> angle(0.0, 6.2);
    const double start = angle(rng);
    const double end = start + 0.2 + 0.9 * angle(rng);
    const Point centre(at(rng), at(rng));
    switch (kind % 4) {
    case 0:
        return MakeLine(centre, Point(at(rng), at(rng)));
    case 1:
        return MakeArc(centre, size(rng), start, end);
    case 2:
        return MakeEllipse(centre, size(rng), size(rng), angle(rng), start, end);
    default: {
        std::vector<Point> poles;
        poles.reserve(6);
        for (int i = 0; i < 6; ++i)
            poles.emplace_back(at(rng), at(rng));
        return MakeSpline(2 + kind % 3, poles);
    }
    }
}

/// n + 1 points at even parameters.
inline std::vector<Point> DensePoints(const Curve& curve, int n) {
    std::vector<Point> points;
    double limits[2] = {};
    curve.AskRange(limits);
    for (int i = 0; i <= n; ++i)
        points.push_back(curve.GetPointAtParameter(limits[0] + (limits[1] - limits[0]) * i / n, true));
    return points;
}

} // namespace Tessera::Testing
