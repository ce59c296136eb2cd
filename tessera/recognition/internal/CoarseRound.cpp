#include "tessera/recognition/internal/CoarseRound.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "tessera/kernel/internal/EllipseFit.h"

namespace Tessera::Geometry {

namespace {

constexpr std::size_t kFewest = 9;  // of fewer samples the corners of a polygon are as likely
constexpr std::size_t kMost = 17;   // more make a path that is round enough
constexpr double kMostStray = 0.02; // root mean square distance of the samples, sizes
constexpr double kMostOblong = 0.65;

using Samples = std::vector<Vex::Math::Point2>;

double DistanceFrom(const EllipseShape& shape, const Vex::Math::Point2& p) {
    const Point d(p.x - shape.centre.x, p.y - shape.centre.y);
    const double u = (std::cos(shape.angle) * d.x + std::sin(shape.angle) * d.y) / shape.a;
    const double v = (std::cos(shape.angle) * d.y - std::sin(shape.angle) * d.x) / shape.b;
    const double slope = 2.0 * std::hypot(u / shape.a, v / shape.b);
    return (u * u + v * v - 1.0) / std::max(slope, 1e-9);
}

// Distances from the circle or the ellipse, if all samples lie on it.
bool LieOn(const EllipseShape& shape, const Samples& pts, std::vector<double>& distance) {
    double sumSq = 0.0;
    distance.clear();
    for (const Vex::Math::Point2& p : pts) {
        distance.push_back(DistanceFrom(shape, p));
        sumSq += distance.back() * distance.back();
    }
    return sumSq <= kMostStray * kMostStray * static_cast<double>(pts.size());
}

// A circle where that is enough: of samples on one the direct fit of an ellipse may find nothing.
bool FitSamples(const Samples& pts, EllipseShape& shape, std::vector<double>& distance) {
    Moments moments;
    for (const Vex::Math::Point2& p : pts)
        moments.Add({p.x, p.y});
    const CircleFit circle = FitCircle(moments);
    if (circle.radius > 0.0) {
        shape = {{circle.centre.x, circle.centre.y}, circle.radius, circle.radius, 0.0};
        if (LieOn(shape, pts, distance))
            return true;
    }
    EllipseFitter fitter(pts.data(), static_cast<int>(pts.size()));
    return fitter.FindStart(&shape) && fitter.Refine(std::numeric_limits<double>::infinity(), &shape) &&
           shape.a - shape.b <= kMostOblong * shape.a && LieOn(shape, pts, distance);
}

} // namespace

std::optional<EllipseEvidence> FindCoarseRound(const InkPath& path, std::span<const InkSample> samples) {
    if (samples.size() < kFewest || samples.size() > kMost)
        return std::nullopt;
    Samples pts;
    for (const InkSample& s : samples) {
        const Point p = path.FromModel({s.x, s.y});
        pts.push_back({p.x, p.y});
    }
    EllipseShape shape;
    std::vector<double> distance;
    if (!FitSamples(pts, shape, distance))
        return std::nullopt;
    EllipseEvidence found =
        EvidenceBeside(path, {shape.centre.x, shape.centre.y}, shape.a, shape.b, shape.angle);
    for (std::size_t i = 0; i < path.source.size(); ++i) {
        const auto before = static_cast<std::size_t>(path.source[i]);
        const double f = path.source[i] - static_cast<double>(before);
        found.distance[i] =
            f > 0.0 ? (1.0 - f) * distance[before] + f * distance[before + 1] : distance[before];
    }
    return found;
}

} // namespace Tessera::Geometry
