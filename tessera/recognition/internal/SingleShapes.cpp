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

int CountOf(std::span<Point2> pts) {
    return static_cast<int>(pts.size());
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
    EllipseShape fit;
    double err[3] = {};
    if (!FitEllipseWithin(pts.data(), CountOf(pts), limit, &fit, err))
        return nullptr;
    *maxDev = err[0];
    const Point2 centre = fit.centre;
    const double a = fit.a;
    const double b = fit.b;
    double centre2[2] = {centre.x, centre.y};
    double radii[2] = {a, b};
    if (full)
        return std::make_unique<Ellipse>(centre2, radii, fit.angle, 0.0, kTurn);

    // The eccentric angle of a point is the polar angle after the ellipse is squeezed to a circle.
    const double c = std::cos(fit.angle);
    const double s = std::sin(fit.angle);
    AngularCover cover;
    for (const Point2& p : pts) {
        const double x = p.x - centre.x;
        const double y = p.y - centre.y;
        if (x * x + y * y > kAtCentreSq)
            cover.Add((c * x + s * y) * b, (c * y - s * x) * a);
    }
    const AngularRange range = cover.Covered();
    if (range.end - range.start > kMaxEllipseSweep)
        return nullptr;
    return std::make_unique<Ellipse>(centre2, radii, fit.angle, range.start, range.end);
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
