#include "tessera/recognition/internal/SmoothForms.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

#include "tessera/geometry/Spline.h"
#include "tessera/recognition/internal/FreeForm.h"

namespace Tessera::Geometry {

namespace {

constexpr double kTurn = 2.0 * std::numbers::pi;
constexpr double kLeastTurns = 60.0 / 360.0; // of an elliptic arc: less tells nothing of its radii
constexpr double kMostTurns = 330.0 / 360.0;
constexpr double kMostBack = 0.02;    // turns that the pen may run back
constexpr double kLeastOblong = 0.22; // difference of the radii, of the larger one
// Sizes: the largest distance from a free form, and from one that takes the place of a round.
constexpr double kFreeTolerance = 0.03;
constexpr double kRoundTolerance = 0.06;
// By RivalKind: the root mean square distance of the rival, sizes, up to which no free form is looked for
// (drawn polygons and rounds stay below it, 98 of 100 of each). A chain that is smooth all along is always
// challenged.
constexpr double kBadSpreads[] = {0.04, 0.0, 0.0, 0.065, 0.0, 0.095};
constexpr double kOverlap = 0.25; // of the points: how far the pen may run on past its start

// The ink as one round: what runs on past the start is cut off where the ends pass each other, and what then
// parts them sideways is spread over the round. Empty when the ends stay apart.
std::vector<Point> MakeLoop(const PricedPath& ink) {
    const std::vector<Point>& pts = ink.path.pts;
    const auto least = static_cast<std::size_t>((1.0 - kOverlap) * ink.path.Size());
    std::size_t last = pts.size() - 1;
    for (std::size_t i = pts.size() - 1; i-- > least;)
        if (pts[i].Distance2(pts.front()) < pts[last].Distance2(pts.front()))
            last = i;
    const Point gap = pts.front() - pts[last];
    if (gap.Length() > ink.closing)
        return {};
    const Point ahead = (pts[2] - pts[0]) + (pts[last] - pts[last - 2]);
    const Point aside = gap - (std::max(0.0, gap.Dot(ahead)) / std::max(ahead.Dot(ahead), 1e-12)) * ahead;
    std::vector<Point> loop(pts.begin(), pts.begin() + static_cast<std::ptrdiff_t>(last) + 1);
    for (std::size_t i = 0; i <= last; ++i)
        loop[i] += (static_cast<double>(i) / static_cast<double>(last) - 0.5) * aside;
    return loop;
}

} // namespace

Point PointOn(const EllipticArc& arc, double parameter) {
    const double c = std::cos(arc.rotation);
    const double s = std::sin(arc.rotation);
    const double u = arc.radii[0] * std::cos(parameter);
    const double v = arc.radii[1] * std::sin(parameter);
    return arc.centre + Point(c * u - s * v, s * u + c * v);
}

std::optional<EllipticArc> FindEllipticArc(const PricedPath& ink, const EllipseEvidence& ellipse) {
    const double sweep = std::fabs(ellipse.winding);
    if (sweep < kLeastTurns || sweep > kMostTurns || ellipse.back > kMostBack ||
        ellipse.a - ellipse.b < kLeastOblong * ellipse.a)
        return std::nullopt;
    EllipticArc arc;
    arc.centre = ellipse.centre;
    arc.radii[0] = ellipse.a;
    arc.radii[1] = ellipse.b;
    arc.rotation = ellipse.angle;
    arc.isReversed = ellipse.winding < 0.0;
    const EllipseTerms& start = arc.isReversed ? ellipse.terms.back() : ellipse.terms.front();
    arc.from = std::atan2(start[kSinTerm], start[kCosTerm]);
    arc.from += arc.from < 0.0 ? kTurn : 0.0;
    arc.to = arc.from + kTurn * sweep;
    double sumSq = 0.0;
    for (const double d : ellipse.distance)
        sumSq += d * d;
    arc.description = {kEllipticPrice + PriceOfCorners(ink, ellipse), sumSq};
    return arc;
}

std::optional<FreeShape> FindFreeShape(const PricedPath& ink, double rivalMeanSq, RivalKind rival,
                                       bool mayClose) {
    const double badSpread = kBadSpreads[static_cast<std::size_t>(rival)];
    if (rivalMeanSq <= badSpread * badSpread)
        return std::nullopt;
    const std::vector<Point> loop = mayClose ? MakeLoop(ink) : std::vector<Point>();
    FreeShape shape;
    shape.isClosed = !loop.empty();
    const std::span<const Point> pts = shape.isClosed ? loop : ink.path.pts;
    // What would be a round is described coarsely, but drawn as finely as any other.
    const double tolerance = rival == RivalKind::Round ? kRoundTolerance : kFreeTolerance;
    double rms = 0.0;
    shape.curve = FitFreeForm(pts, shape.isClosed, tolerance, &rms);
    if (!shape.curve)
        return std::nullopt;
    // The seam of a closed one fixes two poles.
    const int poles = static_cast<const Spline&>(*shape.curve).GetNumPoles() - (shape.isClosed ? 2 : 0);
    shape.description = {2.0 * PriceOfPole(rival) * poles, rms * rms * ink.path.Size()};
    if (tolerance > kFreeTolerance)
        shape.curve = FitFreeForm(pts, shape.isClosed, kFreeTolerance);
    return shape;
}

} // namespace Tessera::Geometry
