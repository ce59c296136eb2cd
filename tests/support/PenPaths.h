// PenPaths - plane curves by formula, over 0 to 1, and ink along them.
#pragma once

#include "tessera/recognition/InkInterpretation.h"
#include "tests/support/Test.h"

namespace Tessera::Testing {

using Path = std::function<Geometry::Point(double)>;

inline constexpr double kTurn = 2.0 * std::numbers::pi;

inline std::vector<Geometry::Point> PointsOf(const Path& path, double from = 0.0, double to = 1.0,
                                             int count = 120) {
    std::vector<Geometry::Point> pts;
    for (int i = 0; i < count; ++i)
        pts.push_back(path(from + (to - from) * i / (count - 1)));
    return pts;
}

/// The points of the paths in turn.
inline std::vector<Geometry::Point> Joined(std::initializer_list<Path> paths, double from = 0.0,
                                           double to = 1.0, int count = 120) {
    std::vector<Geometry::Point> pts;
    for (const Path& path : paths) {
        const std::vector<Geometry::Point> more = PointsOf(path, from, to, count);
        pts.insert(pts.end(), more.begin(), more.end());
    }
    return pts;
}

inline Geometry::InkStroke InkOf(const std::vector<Geometry::Point>& pts) {
    Geometry::InkStroke ink;
    for (const Geometry::Point& p : pts)
        ink.samples.push_back({p.x, p.y, 0.0});
    return ink;
}

/// Tremor of the given spread.
inline Geometry::InkStroke Trembling(const std::vector<Geometry::Point>& pts, double sigma, unsigned seed) {
    std::mt19937 rng(seed);
    std::normal_distribution<double> noise(0.0, sigma);
    Geometry::InkStroke ink = InkOf(pts);
    for (Geometry::InkSample& s : ink.samples)
        s = {s.x + noise(rng), s.y + noise(rng), 0.0};
    return ink;
}

inline Path Straight(const Geometry::Point& a, const Geometry::Point& b) {
    return [=](double u) { return a + u * (b - a); };
}

/// About c, radii a and b turned by `rotation`, between two eccentric angles.
inline Path Round(const Geometry::Point& c, double a, double b, double from, double to,
                  double rotation = 0.0) {
    return [=](double u) {
        const double t = from + u * (to - from);
        const double x = a * std::cos(t);
        const double y = b * std::sin(t);
        return c + Geometry::Point(x * std::cos(rotation) - y * std::sin(rotation),
                                   x * std::sin(rotation) + y * std::cos(rotation));
    };
}

/// So many degrees of an ellipse, negative ones clockwise; its radii grow by a share from start to end.
inline Path DriftingRound(const Geometry::Point& c, double a, double b, double degrees, double growth,
                          double rotation = 0.0) {
    const Path round = Round({}, a, b, 1.1, 1.1 + degrees * kTurn / 360.0, rotation);
    return [=](double u) { return c + (1.0 + growth * (u - 0.5)) * round(u); };
}

/// From a to b, off the chord to its right by a share of its length in the middle.
inline Path Bowed(const Geometry::Point& a, const Geometry::Point& b, double share) {
    return [=](double u) {
        const Geometry::Point chord = b - a;
        return a + u * chord + (4.0 * share * u * (1.0 - u)) * Geometry::Point(chord.y, -chord.x);
    };
}

/// The path shifted to its left: by `ends` everywhere and by `middle` more in the middle of the stretch.
inline Path Bulging(const Path& path, double from, double to, double ends, double middle) {
    return [=](double u) {
        const Geometry::Point along = path(u + 1e-5) - path(u - 1e-5);
        const double share = (u - from) / (to - from);
        return path(u) + ((ends + middle * std::sin(std::numbers::pi * share)) / along.Length()) *
                             Geometry::Point(-along.y, along.x);
    };
}

/// Samples some two units apart along sides and quarter turns: 200 x 120, from the middle of the lower side;
/// only so many of its corners are round.
inline std::vector<Geometry::Point> RoundedBox(double radius, double turnedBy, int rounded = 4) {
    using Geometry::Point;
    std::vector<Point> pts;
    const Point corners[] = {{100, -60}, {100, 60}, {-100, 60}, {-100, -60}};
    Point at(0, -60);
    const auto lineTo = [&](const Point& to) {
        const int n = static_cast<int>(at.Distance(to) / 2.0);
        for (int i = 0; i < n; ++i)
            pts.push_back(at + (static_cast<double>(i) / n) * (to - at));
        at = to;
    };
    double heading = 0.0;
    for (const Point& corner : corners) {
        const Point ahead(std::cos(heading), std::sin(heading));
        const Point left(-ahead.y, ahead.x);
        radius = rounded-- > 0 ? radius : 0.0;
        lineTo(corner - radius * ahead);
        const Point centre = at + radius * left;
        const int n = std::max(1, static_cast<int>(0.8 * radius));
        for (int i = 0; i < n && radius > 0.0; ++i) {
            const double a = heading + 0.5 * std::numbers::pi * (static_cast<double>(i) / n - 1.0);
            pts.push_back(centre + radius * Point(std::cos(a), std::sin(a)));
        }
        at = corner + radius * left;
        heading += 0.5 * std::numbers::pi;
    }
    lineTo({0, -60});
    const double c = std::cos(turnedBy);
    const double s = std::sin(turnedBy);
    for (Point& p : pts)
        p = {c * p.x - s * p.y, s * p.x + c * p.y};
    return pts;
}

inline Geometry::Point EndOf(const Geometry::Curve& curve, Geometry::CurveEnd end) {
    return end == Geometry::CurveEnd::Start ? curve.GetStart() : curve.GetEnd();
}

} // namespace Tessera::Testing
