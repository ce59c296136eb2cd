// The sides' directions, taken four times, agree; along a quarter circle they cancel. Their mean so tells
// where the sides run and how much of the path is straight, and with the extents how round the corners are: a
// start for the fit, and mostly reason enough to do without it.
//
// Every hand rounds its corners. A rounding was meant when it is larger than any hand's, many times what the
// same ink strays from the outline, even if the sides were bowed, and alike at all four corners. Corners cut
// off straight are told by the rectangle with chamfers, which lies nearer to their ink.
#include "tessera/recognition/internal/RoundedBox.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "tessera/recognition/internal/RegularShapes.h"
#include "tessera/recognition/internal/RoundedCourse.h"

namespace Tessera::Geometry {

namespace {

constexpr int kNumbers = 6;
// Evaluations of the fit: of drawn boxes nine in ten settle in three, all in six; after three others have
// shrunk their corners.
constexpr int kFirst = 3;
constexpr int kMore = 6;
constexpr int kChord = 2; // steps whose direction is taken: a single one trembles

// What the decision rests on. Of 656 drawn rectangles and squares none comes up to eleven spreads with
// corners alike; 1 in 3,000 rectangles of a careful simulated hand and 3 in 1,000 of a quick one do, whose
// own rounding is like a radius of 0.01 to 0.08 sizes. Of rounded rectangles that were drawn as carefully,
// with radii of 15, 20 and 25 % of the short side, 75, 90 and 97 % pass.
constexpr double kLeastRadius = 0.1;   // sizes: the arc is two steps of the path long
constexpr double kMostRadius = 0.9;    // of half the short side: what is rounder is a slot or a round
constexpr double kLeastSpreads = 11.5; // root mean square distances from the outline, in the radius
constexpr double kHopefulShare = 0.8;  // of these, where nothing is put down to bows yet
// By how many spreads the ink may come nearer to a corner, and stay farther off, than the arc.
constexpr double kMostSharper = 3.0;
constexpr double kMostBlunter = 4.0;
constexpr double kCut = std::numbers::sqrt2 - 1.0; // distance of an arc from its corner, radii

// The same of the start, so wide that one in a hundred drawn boxes fails.
constexpr double kLeastStart = 0.12;    // sizes
constexpr double kMostStart = 0.91;     // of half the short side
constexpr double kLeastStartCut = 0.28; // radii, of the sharpest corner
constexpr double kMostStartCut = 0.65;  // of the second bluntest: at one the ends may gape

constexpr int kChamferFits = 4; // of the chamfers' size, each by the ink that was nearest to them before
// Squares that chamfers leave, of those of the rounded box: of small roundings 1 in 8 is below 1, 1 in 50
// below this; of chamfers 9 in 10 are.
constexpr double kClearChamfers = 0.97;

using Cuts = std::array<double, 4>;

Point Squared(const Point& z) {
    return {z.x * z.x - z.y * z.y, 2.0 * z.x * z.y};
}

// Of the fourth powers of the path's directions.
Point MeanOfFourthPowers(const InkPath& path) {
    Point sum;
    for (int i = kChord; i < path.Size(); ++i) {
        const Point square = Squared(path.At(i) - path.At(i - kChord));
        sum += Squared(square) / std::max(square.Dot(square), 1e-12);
    }
    return sum / (path.Size() - kChord);
}

RoundedOutline Start(const InkPath& path) {
    const Point fourth = MeanOfFourthPowers(path);
    const double angle = 0.25 * std::atan2(fourth.y, fourth.x);
    const double straight = fourth.Length();
    RoundedOutline box;
    box.axis = {std::cos(angle), std::sin(angle)};
    Point low(1e300, 1e300);
    Point high(-1e300, -1e300);
    for (const Point& p : path.pts) {
        const Point at(box.axis.Dot(p), box.axis.Cross(p));
        low = {std::min(low.x, at.x), std::min(low.y, at.y)};
        high = {std::max(high.x, at.x), std::max(high.y, at.y)};
    }
    const Point middle = 0.5 * (low + high);
    const Point half = 0.5 * (high - low);
    box.centre = middle.x * box.axis + middle.y * Point(-box.axis.y, box.axis.x);
    // straight = (S - 8 r) / (S - (8 - 2 pi) r), S the sides of the sharp rectangle
    constexpr double kSaved = 8.0 - 2.0 * std::numbers::pi;
    box.radius = 4.0 * (half.x + half.y) * (1.0 - straight) / (8.0 - kSaved * straight);
    box.along = half.x - box.radius;
    box.across = half.y - box.radius;
    return box;
}

double ShortHalf(const RoundedOutline& box) {
    return std::min(box.along, box.across) + box.radius;
}

// A point in the outline's frame, the quarters laid onto each other, from the corner of the sharp rectangle.
Point FromCorner(const RoundedOutline& box, const Point& p) {
    const Point d = p - box.centre;
    return {std::fabs(box.axis.Dot(d)) - box.along - box.radius,
            std::fabs(box.axis.Cross(d)) - box.across - box.radius};
}

// Distances of the sharp rectangle's corners from the ink, ascending.
Cuts CutsOf(const InkPath& path, const RoundedOutline& box) {
    Cuts cuts;
    cuts.fill(1e300);
    for (const Point& p : path.pts) {
        const Point d = p - box.centre;
        const std::size_t quarter = (box.axis.Dot(d) < 0.0 ? 1U : 0U) + (box.axis.Cross(d) < 0.0 ? 2U : 0U);
        const Point off = FromCorner(box, p);
        cuts[quarter] = std::min(cuts[quarter], off.Dot(off));
    }
    std::sort(cuts.begin(), cuts.end());
    for (double& cut : cuts)
        cut = std::sqrt(cut);
    return cuts;
}

// Whether a fit is worth its time.
bool IsHopeful(const InkPath& path, const RoundedOutline& start) {
    if (start.radius < kLeastStart || start.radius > kMostStart * ShortHalf(start))
        return false;
    const Cuts cuts = CutsOf(path, start);
    return cuts[0] >= kLeastStartCut * start.radius && cuts[2] <= kMostStartCut * start.radius;
}

struct FittedBox {
    RoundedOutline outline;
    double sumSq = 0.0;
    double spread = 0.0;
    double leastRadius = 0.0; ///< of a rounding that was meant
};

bool FitMore(const InkPath& path, int evaluations, FittedBox& box) {
    if (!FitOutline(path, OutlineKind::Box, evaluations, box.outline))
        return false;
    box.sumSq = SumSqFrom(path, box.outline);
    box.spread = std::max(kLeastSpread, std::sqrt(box.sumSq / path.Size()));
    box.leastRadius = std::max(kLeastRadius, kLeastSpreads * box.spread);
    return box.outline.radius >= kHopefulShare * box.leastRadius &&
           box.outline.radius <= kMostRadius * ShortHalf(box.outline);
}

bool IsRoundingMeant(const InkPath& path, const FittedBox& box) {
    const Cuts cuts = CutsOf(path, box.outline);
    const double cut = kCut * box.outline.radius;
    const double most = cut + kMostBlunter * box.spread;
    return cuts[0] >= cut - kMostSharper * box.spread && cuts[2] <= most &&
           cuts[3] <= most + path.Gap() && // the ends may gape in one
           RadiusOverBows(path, box.outline) >= box.leastRadius;
}

// Whether the rectangle with the chamfers that fit best lies nearer to the ink.
bool IsChamfered(const InkPath& path, const RoundedOutline& box, double sumSq) {
    double leg = std::numbers::sqrt2 * kCut * box.radius; // cuts as much as the arc
    double chamfered = 0.0;
    for (int i = 0; i < kChamferFits; ++i) {
        chamfered = 0.0;
        double sum = 0.0;
        int points = 0;
        for (int k = 0; k < path.Size(); ++k) {
            const Point off = FromCorner(box, path.At(k));
            const double drift = box.drift * ShareOf(path, k);
            const double side = std::max(off.x, off.y);
            const double chamfer = (off.x + off.y + leg) / std::numbers::sqrt2;
            chamfered += SquareWithoutTail(std::max(side, chamfer) - drift);
            if (chamfer <= side)
                continue;
            sum += chamfer - drift;
            ++points;
        }
        leg -= points > 0 ? std::numbers::sqrt2 * sum / points : 0.0;
    }
    return chamfered <= kClearChamfers * sumSq;
}

} // namespace

std::optional<RoundedOutline> FitBox(const InkPath& path) {
    RoundedOutline box = Start(path);
    return FitOutline(path, OutlineKind::Box, kFirst + kMore, box) ? std::optional(box) : std::nullopt;
}

std::optional<RoundedShape> FindBox(const PricedPath& ink) {
    const InkPath& path = ink.path;
    if (path.Gap() > ink.closing)
        return std::nullopt;
    FittedBox box{Start(path)};
    if (!IsHopeful(path, box.outline) || !FitMore(path, kFirst, box) || !FitMore(path, kMore, box) ||
        !IsRoundingMeant(path, box) || IsChamfered(path, box.outline, box.sumSq))
        return std::nullopt;
    const RoundedCourse course(path, box.outline);
    if (course.Gap() > ink.closing || course.Turns() > kMostTurns)
        return std::nullopt;
    return Describe(ink, course, kNumbers, box.sumSq);
}

void MakeSquare(RoundedOutline& box) {
    const Point u = (box.along + box.radius) * box.axis;
    const Point v = (box.across + box.radius) * Point(-box.axis.y, box.axis.x);
    std::vector<Point> corners = {-1.0 * u - v, u - v, u + v, v - u};
    if (MakeRegular(corners) == InkShape::Square)
        box.along = box.across = 0.5 * (box.along + box.across);
}

} // namespace Tessera::Geometry
