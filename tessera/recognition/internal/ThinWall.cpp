#include "tessera/recognition/internal/ThinWall.h"

#include <algorithm>
#include <cmath>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tessera/recognition/internal/FreeForm.h"

namespace Tessera::Geometry {

namespace {

constexpr double kReversal = 2.2;     // radians that the pen turns where it comes back
constexpr double kMiddle = 0.12;      // of the points: how far from the middle it may do so
constexpr double kWidthShare = 0.122; // of a run's length: sine of 7 degrees between two straight runs
constexpr double kLengthSlack = 0.2;  // difference of the two lengths, of the longer one
constexpr int kCurvePoints = 65;      // of a curve to which no exact parallel exists
constexpr double kFitShare = 0.002;   // of the diagonal: tolerance of its parallel

// The point of a run at a share of it.
struct Run {
    const InkPath& path;
    int from = 0;
    int to = 0;

    double At(double share) const { return from + share * (to - from); }
    Point PointAt(double share) const {
        const double at = At(share);
        const auto i = static_cast<std::size_t>(std::min(at, path.Size() - 2.0));
        return path.pts[i] + (at - static_cast<double>(i)) * (path.pts[i + 1] - path.pts[i]);
    }
    int SampleAt(double share) const {
        return static_cast<int>(std::lround(path.source[static_cast<std::size_t>(std::lround(At(share)))]));
    }
    int Points() const { return std::abs(to - from); }
};

// Where the pen comes back; -1 when it does not, or more than once.
int TurnBack(const PricedPath& ink) {
    int at = -1;
    for (const TurningPeak& peak : ink.peaks) {
        if (std::fabs(peak.turn) < kReversal)
            continue;
        if (at >= 0)
            return -1;
        at = peak.at;
    }
    return std::abs(at - ink.path.Size() / 2) <= kMiddle * ink.path.Size() ? at : -1;
}

std::unique_ptr<Curve> ParallelFreeForm(const Curve& curve, double left) {
    std::vector<Point> pts;
    double limits[2];
    curve.AskRange(limits);
    for (int i = 0; i < kCurvePoints; ++i) {
        const double t = limits[0] + (limits[1] - limits[0]) * i / (kCurvePoints - 1);
        Point at;
        Vector slope;
        if (!curve.EvaluateAtParameter(t, at, slope) || !slope.Normalize())
            return nullptr;
        pts.push_back(at + left * Point(-slope.y, slope.x));
    }
    return FitFreeForm(pts, curve.IsClosed(), kFitShare * DiagonalOf(pts));
}

} // namespace

std::optional<ThinWall> FindThinWall(const PricedPath& ink) {
    const InkPath& path = ink.path;
    const int turn = TurnBack(ink);
    if (turn < 0)
        return std::nullopt;
    const Run forth{path, 0, turn};
    const Run back{path, path.Size() - 1, turn}; // backwards: both end where the pen turned
    const int longer = std::max(forth.Points(), back.Points());
    const int shorter = std::min(forth.Points(), back.Points());
    if (shorter < (1.0 - kLengthSlack) * longer)
        return std::nullopt;
    const double widest = kWidthShare * path.step * longer;
    ThinWall wall;
    double left = 0.0;
    Point before = 0.5 * (forth.PointAt(0.0) + back.PointAt(0.0));
    for (int i = 0; i <= longer; ++i) {
        const double share = static_cast<double>(i) / longer;
        const Point a = forth.PointAt(share);
        const Point b = back.PointAt(share);
        const Point middle = 0.5 * (a + b);
        const Point along = middle - before;
        const double aside = i > 0 ? along.Cross(a - b) / std::max(along.Length(), 1e-12) : 0.0;
        if (std::fabs(aside) > widest || a.Distance(b) > widest + path.step * (longer - shorter))
            return std::nullopt;
        left += 0.5 * aside / longer;
        before = middle;
        const Point at = path.ToModel(middle);
        wall.centre.samples.push_back({at.x, at.y, 0.0});
        wall.forth.push_back(forth.SampleAt(share));
        wall.back.push_back(back.SampleAt(share));
    }
    wall.halfWidth = path.scale * left;
    return wall;
}

std::unique_ptr<Curve> ParallelCurve(const Curve& curve, double left) {
    const Point start = curve.GetStart();
    const Point end = curve.GetEnd();
    if (curve.GetType() == CurveType_Line) {
        const Point along = end - start;
        const Point aside = (left / std::max(along.Length(), 1e-300)) * Point(-along.y, along.x);
        return std::make_unique<Line>(start + aside, end + aside);
    }
    if (curve.GetType() != CurveType_Arc)
        return ParallelFreeForm(curve, left);
    const auto& arc = static_cast<const Arc&>(curve);
    const double radius = arc.GetRadius() - left; // counter-clockwise: the centre is to the left
    if (radius <= 0.0)
        return nullptr;
    const Point centre = arc.GetCenter();
    const auto moved = [&](const Point& p) { return centre + (radius / arc.GetRadius()) * (p - centre); };
    return curve.IsClosed() ? std::make_unique<Arc>(centre, radius)
                            : std::make_unique<Arc>(moved(start), moved(end), centre);
}

} // namespace Tessera::Geometry
