// Prices are natural logarithms of odds, as everywhere in the interpretation: half the square of how many
// sigmas a thing lies off what is usual.
#include "tessera/recognition/internal/JoinedPieces.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/recognition/internal/CornerEvidence.h"

namespace Tessera::Geometry {

namespace {

// Shares of a line's length, one sigma: sagitta, measured on sides of drawn shapes (median 0.016, of gestures
// dashed off 0.04), and root mean square of what stretches of it have in common.
constexpr double kBow = 0.045;
constexpr double kBowInHaste = 0.065;
constexpr double kWander = 0.01;
// Root mean square distance of a line's ink, of its length, that sides of drawn shapes hardly exceed: a wave
// or a bow that strays farther was meant.
constexpr double kFreeStray = 0.016;
constexpr double kFreeStrayInHaste = 0.024;
constexpr double kStraySpread = 0.006;
constexpr double kMostWander = 0.03; // nobody wanders so far along a line
constexpr int kStretches = 6;        // of a line, enough to tell an S from a straight line
constexpr double kStraight = 0.1; // parameters' worth of a careful hand's squares below which nothing is bent

// Radians that an arc sweeps at least; a bowed line seems to sweep 20 degrees, in haste 40.
constexpr double kLeastSweep = 1.0;
constexpr double kLeastSweepInHaste = 1.3;
constexpr double kSweepSpread = 0.2;
// Points of the path below which a piece is the rounding of a corner or a slip of the pen.
constexpr double kShortLine = 5.0;
constexpr double kShortArc = 8.0;
constexpr double kShortSpread = 1.5;
// Length drawn per sample, in sizes, by a calm and by a hasty hand.
constexpr double kCalmPace = 0.06;
constexpr double kHastyPace = 0.10;

// The share of a corner's turn that lies beyond a few points of it.
constexpr double kFreeLoss = 0.25;
constexpr double kLossSpread = 0.15;
constexpr double kLeastCorner = 0.6;   // radians, 35 degrees: people hardly see a corner in less
constexpr double kCornerSpread = 0.09; // of the fits' directions, radians
// Pens slow to a fifth at corners, and to a half in bends; of the usual speed, and logarithms of odds.
constexpr double kPaceBetween = 0.42;
constexpr double kPaceSlope = 12.0;
constexpr double kPaceGain = 2.0; // limits: a pen may be slow anywhere, and some draw evenly
constexpr double kPaceLoss = 4.0;
constexpr int kPaceReach = 2;

// Radians by which a trembling hand turns the ink within a few points.
constexpr double kFreeTurn = 0.2;
constexpr double kTurnSpread = 0.15;
constexpr double kSeenReach = 3.0; // points over which SignedTurn sees
// Sizes between carriers that should touch, and between where they touch and the break (candidates are
// coarse).
constexpr double kGapSpread = 0.04;
constexpr double kFreeTouch = 0.3;
constexpr double kTouchSpread = 0.15;
constexpr double kBendPrice = 2.0; // of a joint that explains nothing: less than any parameter

double Excess(double value, double spread) {
    return value > 0.0 ? 0.5 * (value / spread) * (value / spread) : 0.0;
}

double Between(double calm, double hasty, double haste) {
    return calm + haste * (hasty - calm);
}

// The part of a line's squares that stretches of it have in common.
double SlowSumSq(const PricedPath& ink, const LineFit& line, int first, int last) {
    const int trim = TrimOf(last - first);
    const int from = first + trim;
    const int points = last - trim - from + 1;
    const int stretches = std::min(kStretches, points / 3);
    const Point normal(-line.direction.y, line.direction.x);
    double sumSq = 0.0;
    for (int k = 0; k < stretches; ++k) {
        const Moments m =
            ink.moments.Of(from + points * k / stretches, from + points * (k + 1) / stretches - 1);
        const double off = (Point(m.x, m.y) - m.n * line.centre).Dot(normal);
        sumSq += off * off / m.n;
    }
    return std::min(sumSq, line.sumSq);
}

double PriceOfPace(const PricedPath& ink, int at) {
    if (ink.pace.empty())
        return 0.0;
    const auto from = ink.pace.begin() + std::max(0, at - kPaceReach);
    const auto to = ink.pace.begin() + std::min(at + kPaceReach + 1, ink.path.Size());
    return std::clamp(kPaceSlope * (*std::min_element(from, to) - kPaceBetween), -kPaceGain, kPaceLoss);
}

// Distance between two carriers that should touch, and where they come closest; false for two lines.
bool FindTouch(const JoinedPiece& a, const JoinedPiece& b, double& gap, Point& touch) {
    const ChainPiece& p = a.piece;
    const ChainPiece& q = b.piece;
    if (p.isArc && q.isArc) {
        const Point between = q.circle.centre - p.circle.centre;
        const double distance = std::max(between.Length(), 1e-12);
        gap = distance - std::fabs(1.0 / a.curvature - 1.0 / b.curvature);
        const bool isInside = a.curvature * b.curvature > 0.0 && p.circle.radius < q.circle.radius;
        touch = p.circle.centre + ((isInside ? -1.0 : 1.0) * p.circle.radius / distance) * between;
        return true;
    }
    if (!p.isArc && !q.isArc)
        return false;
    const JoinedPiece& line = p.isArc ? b : a;
    const JoinedPiece& arc = p.isArc ? a : b;
    const Point to = arc.piece.circle.centre - line.piece.line.centre;
    gap = line.first.Cross(to) - 1.0 / arc.curvature;
    touch = line.piece.line.centre + to.Dot(line.first) * line.first;
    return true;
}

} // namespace

const JoinedPiece::Account& JoinedPiece::BestFor(double squared) const {
    return *std::min_element(accounts.begin(), accounts.end(), [&](const Account& a, const Account& b) {
        return a.price + squared * a.sumSq < b.price + squared * b.sumSq;
    });
}

double HasteOf(const InkPath& path) {
    const double pace = path.length / (path.source.back() + 1.0);
    return std::clamp((pace - kCalmPace) / (kHastyPace - kCalmPace), 0.0, 1.0);
}

JoinedPieces PriceJoinedPieces(const PricedPath& ink, int first, int last, double haste) {
    const double parameter = ink.prices.parameter;
    const RunFits fits = FitRun(ink, first, last, kStraight * parameter / kHands.back());
    const int points = last - first;
    JoinedPieces both;
    JoinedPiece& line = both.line;
    line.piece = {first, last, false, 0.0, fits.line, {}};
    line.first = DirectionAt(ink, line.piece, false);
    line.last = line.first;
    const double stray = std::sqrt(fits.line.sumSq / points) / fits.length;
    const double plain = 2.0 * parameter + Excess(kShortLine - points, kShortSpread) +
                         Excess(stray - Between(kFreeStray, kFreeStrayInHaste, haste), kStraySpread);
    const double slow = SlowSumSq(ink, fits.line, first, last);
    const double wander = std::sqrt(slow / points) / fits.length;
    line.accounts[0] = {plain + fits.hiddenByLine, fits.line.sumSq};
    if (wander <= kMostWander)
        line.accounts[1] = {plain + fits.hiddenByLine + Excess(wander, kWander), fits.line.sumSq - slow};
    if (!fits.hasArc)
        return both;
    const double bow = Excess(fits.BowOfLine(), Between(kBow, kBowInHaste, haste));
    line.accounts[2] = {plain + fits.hiddenByArc + bow, fits.circle.sumSq};
    JoinedPiece& arc = both.arc;
    both.hasArc = true;
    arc.piece = {first, last, true, 0.0, fits.line, fits.circle};
    arc.first = DirectionAt(ink, arc.piece, false);
    arc.last = DirectionAt(ink, arc.piece, true);
    arc.curvature = fits.curvature;
    const double sweep = fits.length * std::fabs(fits.curvature);
    arc.accounts[0] = {3.0 * parameter + fits.hiddenByArc + Excess(kShortArc - points, kShortSpread) +
                           Excess(Between(kLeastSweep, kLeastSweepInHaste, haste) - sweep, kSweepSpread),
                       fits.circle.sumSq};
    return both;
}

double LeastJointPrice(const PricedPath& ink) {
    return -std::max(kPaceGain, ink.prices.parameter);
}

JointPrice PriceJoint(const PricedPath& ink, const JoinedPiece& before, const JoinedPiece& after, int at,
                      double seen) {
    const double turn = std::atan2(before.last.Cross(after.first), before.last.Dot(after.first));
    const double size = std::max(std::fabs(turn), kCornerSpread);
    // Where the pen turns back, the two may differ by a whole turn.
    const double missing = std::remainder(turn - seen, 2.0 * std::numbers::pi);
    const double lost = (turn < 0.0 ? -missing : missing) / size;
    JointPrice best{Excess(lost - kFreeLoss, kLossSpread) + Excess(kLeastCorner - size, kCornerSpread) +
                        PriceOfPace(ink, at),
                    JointSight::Corner};
    const double even = 0.5 * (before.curvature + after.curvature) * kSeenReach * ink.path.step;
    const double smooth = Excess(std::fabs(seen - even) - kFreeTurn, kTurnSpread);
    double gap = 0.0;
    Point touch;
    if (FindTouch(before, after, gap, touch)) {
        const double away = touch.Distance(ink.path.pts[static_cast<std::size_t>(at)]);
        const double price = smooth + Excess(std::fabs(gap), kGapSpread) +
                             Excess(away - kFreeTouch, kTouchSpread) - ink.prices.parameter;
        if (price < best.price)
            best = {price, JointSight::Tangent};
    }
    if (smooth + kBendPrice < best.price)
        best = {smooth + kBendPrice, JointSight::Bend};
    return best;
}

} // namespace Tessera::Geometry
