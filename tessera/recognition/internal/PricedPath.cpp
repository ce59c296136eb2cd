#include "tessera/recognition/internal/PricedPath.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Tessera::Geometry {

namespace {

// What corners round off: a tenth of a piece at either end, three points at most.
constexpr int kTrimPart = 10;
constexpr int kTrimMost = 3;

constexpr int kReach = 4;           // points to either side over which the turning is measured
constexpr double kLeastTurn = 0.25; // radians; an even bend is not worth a candidate of its own
constexpr int kPeakReach = 2;       // a candidate turns most among so many neighbours
constexpr int kHook = 3;            // points at either end that are no piece: the fits leave them out
// Turning at a single point that is no corner yet, and one sigma of what a trembling hand adds, radians.
constexpr double kFreeTurn = 0.3;
constexpr double kTurnSpread = 0.15;
// Length drawn per sample, in sizes, by a calm and by a hasty hand.
constexpr double kCalmPace = 0.06;
constexpr double kHastyPace = 0.10;
// A straight stretch has no more candidates than this: each pair of them is a piece to be looked at.
constexpr int kMostParts = 48;
constexpr double kStraightSpread = 0.005;             // root mean square distance of its ink, of its length
constexpr double kWholeTurn = 1.9 * std::numbers::pi; // an arc that covers more is a circle

// Less than kLeastTurn counts as nothing.
double TurnAt(const InkPath& path, int i, int k) {
    const Point& at = path.pts[static_cast<std::size_t>(i)];
    const Point before = at - path.pts[static_cast<std::size_t>(i) - static_cast<std::size_t>(k)];
    const Point after = path.pts[static_cast<std::size_t>(i) + static_cast<std::size_t>(k)] - at;
    const double cross = before.Cross(after);
    const double dot = before.Dot(after);
    if (std::fabs(cross) < kLeastTurn * dot) // and less than the tangent of it
        return 0.0;
    return std::atan2(cross, dot);
}

std::vector<TurningPeak> FindPeaks(const InkPath& path) {
    const int n = path.Size();
    std::vector<double> turn(static_cast<std::size_t>(n), 0.0);
    for (int i = kPeakReach; i < n - kPeakReach; ++i)
        turn[static_cast<std::size_t>(i)] = TurnAt(path, i, std::min({kReach, i, n - 1 - i}));
    const auto isLess = [](double a, double b) { return std::fabs(a) < std::fabs(b); };
    std::vector<TurningPeak> peaks;
    for (int i = kPeakReach; i < n - kPeakReach; ++i) {
        const auto at = turn.begin() + i;
        if (std::fabs(*at) >= kLeastTurn &&
            std::fabs(*at) >= std::fabs(*std::max_element(at - kPeakReach, at + kPeakReach + 1, isLess)))
            peaks.push_back({i, *at});
    }
    return peaks;
}

bool IsStraight(const PricedPath& ink, int first, int last) {
    const double spread = kStraightSpread * ink.path.step * (last - first);
    return FitLine(ink.moments.Of(first, last)).sumSq <= spread * spread * (last - first);
}

// Points that the fits use, and the run they stand for.
Moments InnerMoments(const PricedPath& ink, int first, int last, int& points) {
    const int end = last > first ? last : last + ink.path.Size();
    points = end - first;
    const int trim = TrimOf(points);
    return MomentsOf(ink, first + trim, end - trim);
}

// Peaks next to the ends are corners that the description has.
double HiddenBetween(const PricedPath& ink, int first, int last, double curvature) {
    double price = 0.0;
    auto peak = std::upper_bound(ink.peaks.begin(), ink.peaks.end(), first + kReach,
                                 [](int at, const TurningPeak& p) { return at < p.at; });
    for (; peak != ink.peaks.end() && peak->at < last - kReach; ++peak)
        price += PriceOfHiddenCorner(ink, *peak, curvature);
    return price;
}

double HiddenIn(const PricedPath& ink, int first, int last, double curvature) {
    if (last > first)
        return HiddenBetween(ink, first, last, curvature);
    return HiddenBetween(ink, first, ink.path.Size() + kReach, curvature) +
           HiddenBetween(ink, -kReach, last, curvature);
}

double HasteOf(const InkPath& path) {
    const double pace = path.length / (path.source.back() + 1.0);
    return std::clamp((pace - kCalmPace) / (kHastyPace - kCalmPace), 0.0, 1.0);
}

} // namespace

PricedPath::PricedPath(const InkPath& inkPath)
    : path(inkPath), moments(inkPath.pts), peaks(FindPeaks(inkPath)), haste(HasteOf(inkPath)),
      closing(0.125 * inkPath.length) {}

bool AreLines(const Chain& chain) {
    return std::none_of(chain.pieces.begin(), chain.pieces.end(),
                        [](const ChainPiece& piece) { return piece.isArc; });
}

bool AreArcs(const Chain& chain) {
    return std::all_of(chain.pieces.begin(), chain.pieces.end(),
                       [](const ChainPiece& piece) { return piece.isArc; });
}

bool IsRing(const Chain& chain) {
    return chain.isClosed && chain.pieces.size() > 1 &&
           chain.pieces.back().last == chain.pieces.front().first;
}

int PointsIn(const PricedPath& ink, const ChainPiece& piece) {
    return piece.last > piece.first ? piece.last - piece.first : piece.last + ink.path.Size() - piece.first;
}

Moments MomentsOf(const PricedPath& ink, int first, int last) {
    const int n = ink.path.Size();
    if (first >= n)
        return ink.moments.Of(first - n, last - n);
    if (last < n)
        return ink.moments.Of(first, last);
    Moments m = ink.moments.Of(first, n - 1);
    m += ink.moments.Of(0, last - n);
    return m;
}

Point SumBefore(const PricedPath& ink, int point) {
    const int n = ink.path.Size();
    return point <= n ? ink.moments.SumBefore(point)
                      : ink.moments.SumBefore(n) + ink.moments.SumBefore(point - n);
}

int TrimOf(int points) {
    return std::min(kTrimMost, (points + kTrimPart / 2) / kTrimPart);
}

double PriceOfHiddenCorner(const PricedPath& ink, const TurningPeak& peak, double curvature) {
    const double expected = curvature * kReach * ink.path.step;
    const double excess = std::fabs(peak.turn - expected) - kFreeTurn;
    if (!(excess > 0.0))
        return 0.0;
    const double hidden = excess / kTurnSpread;
    return 0.5 * hidden * hidden;
}

std::vector<int> FindBreakCandidates(const PricedPath& ink, int spacing) {
    std::vector<int> peaks;
    const int last = ink.path.Size() - 1;
    for (const TurningPeak& peak : ink.peaks)
        if (peak.at >= kHook && peak.at <= last - kHook)
            peaks.push_back(peak.at);
    peaks.push_back(last);
    std::vector<int> candidates{0};
    for (const int peak : peaks) {
        const int from = candidates.back();
        int parts = (peak - from) / spacing;
        if (parts > kMostParts && IsStraight(ink, from, peak))
            parts = kMostParts;
        for (int p = 1; p < parts; ++p)
            candidates.push_back(from + (peak - from) * p / parts);
        candidates.push_back(peak);
    }
    return candidates;
}

double RunFits::BowOfLine() const {
    return circle.radius * (1.0 - std::cos(0.5 * length / circle.radius)) / length;
}

RunFits FitRun(const PricedPath& ink, int first, int last, double straight) {
    RunFits fits;
    int points = 0;
    const Moments m = InnerMoments(ink, first, last, points);
    fits.line = FitLine(m);
    fits.hiddenByLine = HiddenIn(ink, first, last, 0.0);
    fits.length = ink.path.step * points;
    if (fits.line.sumSq <= straight && fits.hiddenByLine <= 0.0)
        return fits;
    fits.circle = FitCircle(m);
    if (!(fits.circle.radius > 0.0) || fits.length >= kWholeTurn * fits.circle.radius)
        return fits;
    const Point& start = ink.path.pts[static_cast<std::size_t>(first)];
    const Point& middle = ink.path.pts[static_cast<std::size_t>((first + points / 2) % ink.path.Size())];
    const Point& centre = fits.circle.centre;
    fits.curvature = ((start - centre).Cross(middle - centre) < 0.0 ? -1.0 : 1.0) / fits.circle.radius;
    fits.hiddenByArc = HiddenIn(ink, first, last, fits.curvature);
    fits.hasArc = true;
    return fits;
}

} // namespace Tessera::Geometry
