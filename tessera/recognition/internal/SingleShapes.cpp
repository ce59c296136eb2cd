#include "tessera/recognition/internal/SingleShapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "tessera/kernel/EQ.h"
#include "tessera/kernel/LSFIT.h"
#include "tessera/kernel/internal/EllipseFit.h"
#include "tessera/recognition/internal/AngularCover.h"
#include "tessera/strokes/internal/SegmentTree.h"

namespace Tessera::Geometry {

using Vex::Math::Point2;
using Vex::Math::Vector2;

namespace {

constexpr double kTurn = 2.0 * std::numbers::pi;
constexpr double kMaxArcSweep = 5.969026041820607;     // 95 % of a turn: beyond it, a circle was drawn
constexpr double kMaxEllipseSweep = 5.969026041720607; // the same less 1e-10
constexpr double kAtCentreSq = 1e-20;                  // a point so near the centre has no direction

// A ring about the start of an ellipse fit, in its radii, and the widest gap between points in the ring
// beyond doubt: the gap about the answer exceeded it by 3.1 degrees at most on 80,000 random closed strokes.
constexpr double kInnerRing = 0.7;
constexpr double kOuterRing = 1.3;
constexpr double kSureGap = 12.0 / 360.0 * kTurn;
constexpr std::size_t kSureSamples = 256; // points looked at, or a few less: as good as all

int CountOf(std::span<Point2> pts) {
    return static_cast<int>(pts.size());
}

// The eccentric angle of a point is the polar angle after the ellipse is squeezed to a circle.
struct Squeeze {
    explicit Squeeze(const EllipseShape& e)
        : ellipse(e), cosine(std::cos(e.angle)), sine(std::sin(e.angle)) {}
    // A position about the centre, times both radii.
    Vector2 Of(double x, double y) const {
        return {(cosine * x + sine * y) * ellipse.b, (cosine * y - sine * x) * ellipse.a};
    }
    const EllipseShape& ellipse;
    double cosine, sine;
};

// Whether the points cover so much of the turn that the ellipse is none, as far as its start can tell.
bool IsSurelyRound(std::span<const Point2> pts, const EllipseShape& start) {
    const Squeeze squeeze(start);
    const double inner = kInnerRing * start.a * start.b;
    const double outer = kOuterRing * start.a * start.b;
    const std::size_t stride = pts.size() / kSureSamples + 1; // points left out make no gap narrower
    AngularCover cover;
    for (std::size_t i = 0; i < pts.size(); i += stride) {
        const Vector2 v = squeeze.Of(pts[i].x - start.centre.x, pts[i].y - start.centre.y);
        const double lengthSq = v.x * v.x + v.y * v.y;
        if (!(lengthSq >= inner * inner && lengthSq <= outer * outer))
            return false;
        cover.Add(v.x, v.y);
    }
    const AngularRange range = cover.Covered();
    return range.end - range.start > kTurn - kSureGap;
}

} // namespace

std::unique_ptr<Line> RecognizeLine(std::span<Point2> pts, double limit, double* maxDev) {
    if (pts.size() < 2)
        return nullptr;
    Point2 on{};
    Vector2 normal{};
    int status = 0;
    double err[3] = {};
    LSFIT_line_to_points_2d(pts.data(), CountOf(pts), &on, &normal, &status, err);
    if (status != 0)
        return nullptr;
    *maxDev = err[0];
    if (!(err[0] <= limit))
        return nullptr;

    Vector2 along{-normal.y, normal.x};
    const Point2& first = pts.front();
    const Point2& last = pts.back();
    if ((last.x - first.x) * along.x + (last.y - first.y) * along.y < 0.0)
        along = {-along.x, -along.y};
    double from = (first.x - on.x) * along.x + (first.y - on.y) * along.y;
    double to = from;
    for (const Point2& p : pts) {
        const double t = (p.x - on.x) * along.x + (p.y - on.y) * along.y;
        from = t < from ? t : from;
        to = t > to ? t : to;
    }
    return std::make_unique<Line>(Point(on.x + from * along.x, on.y + from * along.y),
                                  Point(on.x + to * along.x, on.y + to * along.y));
}

std::unique_ptr<Arc> RecognizeArc(std::span<Point2> pts, bool full, double closeTol, double limit,
                                  double* maxDev) {
    Point2 centre{};
    double radius = 0.0;
    int status = 0;
    double err[3] = {};
    LSFIT_circle_to_points_2d(pts.data(), CountOf(pts), &centre, &radius, &status, err);
    if (status != 0)
        return nullptr;
    *maxDev = err[0];
    if (!(err[0] <= limit))
        return nullptr;
    double centre3[3] = {centre.x, centre.y, 0.0};
    if (full)
        return std::make_unique<Arc>(centre3, radius, 0.0, kTurn);

    AngularCover cover;
    for (const Point2& p : pts) {
        const double x = p.x - centre.x;
        const double y = p.y - centre.y;
        if (x * x + y * y > kAtCentreSq)
            cover.Add(x, y);
    }
    const AngularRange range = cover.Covered();
    const double sweep = range.end - range.start;
    if (sweep > kMaxArcSweep || (kTurn - sweep) * radius < closeTol + EQ_ask_length_tolerance())
        return nullptr;
    return std::make_unique<Arc>(centre3, radius, range.start, range.end);
}

std::unique_ptr<Ellipse> RecognizeEllipse(std::span<Point2> pts, bool full, double limit, double* maxDev) {
    EllipseFitter fitter(pts.data(), CountOf(pts));
    EllipseShape fit;
    double err[3] = {};
    if (!fitter.FindStart(&fit) || (!full && IsSurelyRound(pts, fit)) || !fitter.Refine(limit, &fit, err))
        return nullptr;
    *maxDev = err[0];
    double centre[2] = {fit.centre.x, fit.centre.y};
    double radii[2] = {fit.a, fit.b};
    if (full)
        return std::make_unique<Ellipse>(centre, radii, fit.angle, 0.0, kTurn);
    const Squeeze squeeze(fit);
    AngularCover cover;
    for (const Point2& p : pts) {
        const double x = p.x - fit.centre.x;
        const double y = p.y - fit.centre.y;
        const Vector2 v = squeeze.Of(x, y);
        if (x * x + y * y > kAtCentreSq)
            cover.Add(v.x, v.y);
    }
    const AngularRange range = cover.Covered();
    if (range.end - range.start > kMaxEllipseSweep)
        return nullptr;
    return std::make_unique<Ellipse>(centre, radii, fit.angle, range.start, range.end);
}

bool CheckEllipse(std::span<const Point2> pts, double tol, const Ellipse& ellipse) {
    const int count = ellipse.AskNumberOfSampledPoints(tol);
    std::vector<Point> samples;
    samples.reserve(static_cast<std::size_t>(std::max(0, count)));
    ellipse.CreatePolylinePoints(count, samples);
    SegmentProximity<Point2> path(pts, tol);
    return std::all_of(samples.begin(), samples.end(),
                       [&path](const Point& p) { return path.IsWithin(p.x, p.y); });
}

} // namespace Tessera::Geometry
