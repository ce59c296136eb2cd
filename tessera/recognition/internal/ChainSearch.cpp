#include "tessera/recognition/internal/ChainSearch.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace Tessera::Geometry {

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();

// What corners round off: a tenth of a piece at either end, three points at most.
constexpr int kTrimPart = 10;
constexpr int kTrimMost = 3;

constexpr int kReach = 4;           // points to either side over which the turning is measured
constexpr double kLeastTurn = 0.25; // radians; an even bend is not worth a candidate of its own
constexpr int kPeakReach = 2;       // a candidate turns most among so many neighbours
constexpr int kSpacing = 7;         // points between candidates where nothing turns: joints of arcs lie there
constexpr int kShortest = 2;        // points of a piece
constexpr int kMoves = 3;           // points by which a break is moved at the end
constexpr double kArcCannotPay = 0.25; // parameters that a line costs beyond its ends
constexpr double kHopeless = 20.0;     // parameters' worth of squares that no saving makes good
// Turning at a single point that is no corner yet, and one sigma of what a trembling hand adds, radians.
constexpr double kFreeTurn = 0.3;
constexpr double kTurnSpread = 0.15;
constexpr double kCare = 6.0;         // squares of a careful hand weigh so many times more
constexpr double kIndependent = 0.25; // of the points: neighbours stray together
constexpr double kCarefulParameter = 4.0;
constexpr double kDent = 0.5;          // sine of 30 degrees
constexpr double kStraight = 0.012;    // root mean square distance of straight sides, sizes
constexpr int kCrumb = 7;              // points: shorter pieces are what corners are rounded with, not care
constexpr double kLeastSpread = 0.004; // no hand is more careful, sizes
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

// Points that the fits use, and the run they stand for.
Moments InnerMoments(const PricedPath& ink, int first, int last, int& points) {
    const int n = ink.path.Size();
    points = last > first ? last - first : last + n - first;
    const int trim = TrimOf(points);
    const int a = first + trim;
    const int b = last - trim;
    if (last > first)
        return ink.moments.Of(a, b);
    Moments m = ink.moments.Of(a, n - 1);
    m += ink.moments.Of(0, b);
    return m;
}

RunFits FitForPrices(const PricedPath& ink, int first, int last) {
    return FitRun(ink, first, last, kArcCannotPay * ink.prices.parameter / ink.prices.squared);
}

struct PieceCosts {
    PieceCosts(const InkPrices& prices, const RunFits& fits) {
        const double ends = 2.0 * prices.parameter; // the end point of the piece
        line = ends + prices.squared * fits.line.sumSq + fits.hiddenByLine;
        if (!fits.hasArc)
            return;
        const double bent = ends + prices.squared * fits.circle.sumSq + fits.hiddenByArc;
        if (bent < line) {
            const double bow = fits.BowOfLine() / prices.bow;
            line = std::min(line, bent + 0.5 * bow * bow);
        }
        arc = bent + prices.parameter;
    }
    double Least() const { return std::min(line, arc); }

    double line;
    double arc = kInfinite;
};

double CostOf(const PricedPath& ink, int first, int last) {
    return PieceCosts(ink.prices, FitForPrices(ink, first, last)).Least();
}

// Moves each break to the cheapest point beside it; false when all are there already.
bool MoveBreaks(const PricedPath& ink, std::vector<int>& breaks) {
    bool hasMoved = false;
    for (std::size_t b = 1; b + 1 < breaks.size(); ++b) {
        double cheapest = kInfinite;
        int best = breaks[b];
        const int low = std::max(breaks[b] - kMoves, breaks[b - 1] + kShortest);
        const int high = std::min(breaks[b] + kMoves, breaks[b + 1] - kShortest);
        for (int at = low; at <= high; ++at) {
            const double cost = CostOf(ink, breaks[b - 1], at) + CostOf(ink, at, breaks[b + 1]);
            if (cost < cheapest) {
                cheapest = cost;
                best = at;
            }
        }
        hasMoved = hasMoved || best != breaks[b];
        breaks[b] = best;
    }
    return hasMoved;
}

// Peaks next to the ends are corners that the description has.
double PriceOfHiddenCorners(const PricedPath& ink, int first, int last, double curvature) {
    double price = 0.0;
    auto peak = std::upper_bound(ink.peaks.begin(), ink.peaks.end(), first + kReach,
                                 [](int at, const TurningPeak& p) { return at < p.at; });
    for (; peak != ink.peaks.end() && peak->at < last - kReach; ++peak)
        price += PriceOfHiddenCorner(ink, *peak, curvature);
    return price;
}

double HiddenIn(const PricedPath& ink, int first, int last, double curvature) {
    if (last > first)
        return PriceOfHiddenCorners(ink, first, last, curvature);
    return PriceOfHiddenCorners(ink, first, ink.path.Size() + kReach, curvature) +
           PriceOfHiddenCorners(ink, -kReach, last, curvature);
}

// Mean squared distance, with the bows of lines taken out: those say nothing about care.
double SpreadSq(const PricedPath& ink, const Chain& chain) {
    double sumSq = 0.0;
    for (const ChainPiece& piece : chain.pieces) {
        const PiecePrices both = PriceBoth(ink, piece.first, piece.last);
        sumSq += both.hasArc ? std::min(both.arc.circle.sumSq, both.line.line.sumSq) : both.line.line.sumSq;
    }
    return sumSq / ink.path.Size() + kLeastSpread * kLeastSpread;
}

int ShortestOf(const Chain& chain) {
    int shortest = chain.pieces.front().last - chain.pieces.front().first;
    for (const ChainPiece& piece : chain.pieces)
        shortest = std::min(shortest, piece.last - piece.first);
    return shortest;
}

// Two lines that enclose so little are one side that the hand did not draw straight.
bool HasDent(const Chain& chain) {
    for (std::size_t i = 1; i < chain.pieces.size(); ++i) {
        const ChainPiece& a = chain.pieces[i - 1];
        const ChainPiece& b = chain.pieces[i];
        if (!a.isArc && !b.isArc && std::fabs(a.line.direction.Cross(b.line.direction)) < kDent)
            return true;
    }
    return false;
}

bool AreSidesStraight(const PricedPath& ink, const Chain& chain) {
    double sumSq = 0.0;
    for (const ChainPiece& piece : chain.pieces) {
        if (piece.isArc)
            return false;
        sumSq += piece.line.sumSq;
    }
    return sumSq <= kStraight * kStraight * ink.path.Size();
}

int ParametersOf(const Chain& chain) {
    int count = 2;
    for (const ChainPiece& piece : chain.pieces)
        count += piece.isArc ? 3 : 2;
    return count;
}

} // namespace

PricedPath::PricedPath(const InkPath& inkPath)
    : path(inkPath), moments(inkPath.pts), peaks(FindPeaks(inkPath)), closing(0.125 * inkPath.length) {}

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
    for (const TurningPeak& peak : ink.peaks)
        peaks.push_back(peak.at);
    peaks.push_back(ink.path.Size() - 1);
    std::vector<int> candidates{0};
    for (const int peak : peaks) {
        const int from = candidates.back();
        const int parts = (peak - from) / spacing;
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
    if (fits.line.sumSq + fits.hiddenByLine / ink.prices.squared <= straight)
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

PiecePrices PriceBoth(const PricedPath& ink, int first, int last) {
    const RunFits fits = FitForPrices(ink, first, last);
    const PieceCosts costs(ink.prices, fits);
    PiecePrices both;
    both.line = {first, last, false, costs.line, fits.line, {}};
    both.hasArc = fits.hasArc;
    if (fits.hasArc)
        both.arc = {first, last, true, costs.arc, fits.line, fits.circle};
    return both;
}

ChainPiece PricePiece(const PricedPath& ink, int first, int last) {
    const PiecePrices both = PriceBoth(ink, first, last);
    return both.hasArc && both.arc.cost < both.line.cost ? both.arc : both.line;
}

Chain ChainOver(const PricedPath& ink, const std::vector<int>& breaks) {
    Chain chain;
    chain.cost = 2.0 * ink.prices.parameter; // the start point
    for (std::size_t b = 1; b < breaks.size(); ++b) {
        chain.pieces.push_back(PricePiece(ink, breaks[b - 1], breaks[b]));
        chain.cost += chain.pieces.back().cost;
    }
    return chain;
}

Chain SearchChain(const PricedPath& ink) {
    const std::vector<int> at = FindBreakCandidates(ink, kSpacing);
    std::vector<double> best(at.size(), kInfinite);
    std::vector<std::size_t> from(at.size(), 0);
    best[0] = 0.0;
    for (std::size_t j = 1; j < at.size(); ++j) {
        for (std::size_t i = j; i-- > 0;) {
            if (at[j] - at[i] < kShortest)
                continue;
            const double cost = CostOf(ink, at[i], at[j]);
            if (best[i] + cost < best[j]) {
                best[j] = best[i] + cost;
                from[j] = i;
            }
            if (cost > kHopeless * ink.prices.parameter)
                break; // a longer piece fits no better
        }
    }
    std::vector<int> breaks;
    for (std::size_t j = at.size() - 1; j > 0; j = from[j])
        breaks.push_back(at[j]);
    breaks.push_back(0);
    std::reverse(breaks.begin(), breaks.end());
    if (MoveBreaks(ink, breaks))
        MoveBreaks(ink, breaks);
    return ChainOver(ink, breaks);
}

Chain SearchForHand(PricedPath& ink) {
    const InkPrices usual = ink.prices;
    Chain loose = SearchChain(ink);
    ink.prices.squared *= kCare;
    Chain strict = SearchChain(ink);
    ink.prices = usual;
    if (strict.pieces.size() <= loose.pieces.size() || ShortestOf(strict) < kCrumb || HasDent(strict))
        return loose;
    const double saved =
        0.5 * kIndependent * ink.path.Size() * std::log(SpreadSq(ink, loose) / SpreadSq(ink, strict));
    const double paid = kCarefulParameter * (ParametersOf(strict) - ParametersOf(loose));
    if (saved <= paid)
        return loose;
    if (AreSidesStraight(ink, strict)) {
        ink.prices.squared *= kCare; // straight sides prove the care; bends only follow the ink
        return strict;
    }
    Chain repriced = strict;
    repriced.cost = 2.0 * usual.parameter;
    for (ChainPiece& piece : repriced.pieces) {
        const PiecePrices both = PriceBoth(ink, piece.first, piece.last);
        piece = piece.isArc && both.hasArc ? both.arc : both.line;
        repriced.cost += piece.cost;
    }
    return repriced;
}

} // namespace Tessera::Geometry
