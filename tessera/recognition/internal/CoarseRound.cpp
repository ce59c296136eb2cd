#include "tessera/recognition/internal/CoarseRound.h"

#include <limits>
#include <utility>
#include <vector>

#include "tessera/kernel/internal/EllipseFit.h"

namespace Tessera::Geometry {

namespace {

constexpr std::size_t kFewest = 9;  // of fewer samples the corners of a polygon are as likely
constexpr std::size_t kMost = 17;   // more make a path that is round enough
constexpr double kMostStray = 0.02; // root mean square distance of the samples, sizes
constexpr double kMostOblong = 0.65;

// Nothing unless the samples lie on the circle or the ellipse, but for what a hand strays.
std::optional<EllipseEvidence> IfOn(const EllipseShape& shape, const InkPath& samples) {
    EllipseEvidence beside =
        EvidenceBeside(samples, {shape.centre.x, shape.centre.y}, shape.a, shape.b, shape.angle);
    double sumSq = 0.0;
    for (const double d : beside.distance)
        sumSq += d * d;
    const bool isOn = sumSq <= kMostStray * kMostStray * samples.Size();
    return isOn ? std::optional<EllipseEvidence>(std::move(beside)) : std::nullopt;
}

// A circle where that is enough: of samples on one the direct fit of an ellipse may find nothing.
std::optional<EllipseEvidence> FitSamples(const InkPath& samples) {
    Moments moments;
    std::vector<Vex::Math::Point2> pts;
    for (const Point& p : samples.pts) {
        moments.Add(p);
        pts.push_back({p.x, p.y});
    }
    if (const CircleFit circle = FitCircle(moments); circle.radius > 0.0)
        if (auto found =
                IfOn({{circle.centre.x, circle.centre.y}, circle.radius, circle.radius, 0.0}, samples))
            return found;
    EllipseFitter fitter(pts.data(), static_cast<int>(pts.size()));
    EllipseShape shape;
    const bool isFound = fitter.FindStart(&shape) &&
                         fitter.Refine(std::numeric_limits<double>::infinity(), &shape) &&
                         shape.a - shape.b <= kMostOblong * shape.a;
    return isFound ? IfOn(shape, samples) : std::nullopt;
}

} // namespace

std::optional<EllipseEvidence> FindCoarseRound(const InkPath& path, std::span<const InkSample> samples) {
    if (samples.size() < kFewest || samples.size() > kMost)
        return std::nullopt;
    InkPath sampled; // the samples, and nothing between them
    for (const InkSample& s : samples)
        sampled.pts.push_back(path.FromModel({s.x, s.y}));
    const std::optional<EllipseEvidence> fit = FitSamples(sampled);
    if (!fit)
        return std::nullopt;
    const std::vector<double>& distance = fit->distance;
    EllipseEvidence found = EvidenceBeside(path, fit->centre, fit->a, fit->b, fit->angle);
    for (std::size_t i = 0; i < path.source.size(); ++i) {
        const auto before = static_cast<std::size_t>(path.source[i]);
        const double f = path.source[i] - static_cast<double>(before);
        found.distance[i] =
            f > 0.0 ? (1.0 - f) * distance[before] + f * distance[before + 1] : distance[before];
    }
    return found;
}

} // namespace Tessera::Geometry
