// Prices are natural logarithms of odds, as everywhere in the interpretation: half the square of how many
// sigmas a thing lies off what is usual.
#include "tessera/recognition/internal/PiecePrices.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
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
constexpr double kStraight = 0.1;    // numbers' worth of a careful hand's squares below which nothing is bent

// Radians that an arc sweeps at least; a bowed line seems to sweep 20 degrees, in haste 40.
constexpr double kLeastSweep = 1.3;
constexpr double kLeastSweepInHaste = 1.7;
constexpr double kSweepSpread = 0.2;
constexpr double kWorthwhile = 0.25;   // of a careful hand's squares, below which nothing is to be explained
constexpr double kHopelessSweep = 0.5; // not looked at
// Points of the path below which a piece is the rounding of a corner or a slip of the pen.
constexpr double kShortLine = 10.0;
constexpr double kShortArc = 8.0;
constexpr double kShortTail = 11.0; // of a line that an arc runs on into: arcs flatten towards their ends
constexpr double kShortSpread = 1.5;
// The share of a corner's turn that lies beyond a few points of it.
constexpr double kFreeLoss = 0.25;
constexpr double kLossSpread = 0.1;
constexpr double kLeastCorner = 0.7;   // radians, 40 degrees: people hardly see a corner in less
constexpr double kCornerSpread = 0.09; // of the fits' directions, radians
// Pens slow down at corners, and pick up speed again behind them; in bends they are slow all along. Logarithm
// of the odds for a corner by the lowest pace within a few points and by how far it lies below what the pen
// does on either side. A logistic regression over 1,075 corners of gestures and 7,500 other places of them
// gives -5.4, 4.5 and 3.3; these are steeper, as the evener pens of synthetic ink have it, where they read
// more chains and smooth strokes right and gestures no worse.
constexpr double kPaceOdds = -7.5;
constexpr double kSlowGain = 6.0;
constexpr double kDipGain = 8.0;
constexpr double kHastyLoss = 1.5;    // what speaks against a corner weighs more: few pens rush through one
constexpr double kMostPaceGain = 8.0; // a pen may be slow anywhere
constexpr double kMostPaceLoss = 12.0;
constexpr double kBendDoubt = 0.15; // of a gain, for each nat that the turn's spreading out costs
constexpr int kPaceReach = 2;
constexpr int kPaceBeside = 6;

// Radians by which a trembling hand turns the ink within a few points.
constexpr double kFreeTurn = 0.2;
constexpr double kTurnSpread = 0.15;
constexpr double kSeenReach = 3.0; // points over which SignedTurn sees
// Sizes between carriers that should touch, and between where they touch and the break (candidates are
// coarse).
constexpr double kGapSpread = 0.08;
constexpr double kFreeTouch = 0.3;
constexpr double kTouchSpread = 0.15;
constexpr double kArcsDoubt = 2.0; // of a tangent joint of two arcs: people mean those of a line and an arc
// Of a joint that explains nothing: less than any number where an arc bends on, more between two lines.
constexpr double kBendPrice = 2.0;
constexpr double kLineBendPrice = 6.0;

double Excess(double value, double spread) {
    return value > 0.0 ? 0.5 * (value / spread) * (value / spread) : 0.0;
}

double AngleOf(const Point& direction) {
    return std::atan2(direction.y, direction.x);
}

// The difference of two angles, in half a turn either way.
double WithinHalfTurn(double angle) {
    constexpr double kHalfTurn = std::numbers::pi;
    return angle > kHalfTurn ? angle - 2.0 * kHalfTurn : angle < -kHalfTurn ? angle + 2.0 * kHalfTurn : angle;
}

double Between(double calm, double hasty, double haste) {
    return calm + haste * (hasty - calm);
}

// The part of a line's squares that stretches of it have in common.
double SlowSumSq(const PricedPath& ink, const LineFit& line, int first, int last) {
    const int end = last > first ? last : last + ink.path.Size();
    const int trim = TrimOf(end - first);
    const int points = end - first - 2 * trim + 1;
    const int stretches = std::min(kStretches, points / 3);
    const Point normal(-line.direction.y, line.direction.x);
    double sumSq = 0.0;
    int from = first + trim;
    Point before = SumBefore(ink, from);
    for (int k = 1; k <= stretches; ++k) {
        const int to = first + trim + points * k / stretches;
        const Point upTo = SumBefore(ink, to);
        const double off = (upTo - before - (to - from) * line.centre).Dot(normal);
        sumSq += off * off / (to - from);
        from = to;
        before = upTo;
    }
    return std::min(sumSq, line.sumSq);
}

// The highest pace among the points from first to last.
double FastestAmong(const PricedPath& ink, int first, int last) {
    const int from = std::max(0, first);
    const int to = std::min(ink.path.Size() - 1, last);
    const std::vector<double>& pace = ink.pace.wide;
    return from > to ? 0.0 : *std::max_element(pace.begin() + from, pace.begin() + to + 1);
}

double PriceOfPace(const PricedPath& ink, int at) {
    const std::vector<double>& pace = ink.pace.close;
    if (pace.empty() || (ink.seam >= 0 && std::abs(at - ink.seam) <= kPaceBeside))
        return 0.0;
    const double slowest = *std::min_element(pace.begin() + std::max(0, at - kPaceReach),
                                             pace.begin() + std::min(at + kPaceReach + 1, ink.path.Size()));
    const double beside = std::min(FastestAmong(ink, at - kPaceBeside, at - kPaceReach),
                                   FastestAmong(ink, at + kPaceReach, at + kPaceBeside));
    const double dip = std::min(1.0, slowest / beside);
    const double odds = kPaceOdds - kSlowGain * std::log(slowest) - kDipGain * std::log(dip);
    return odds > 0.0 ? -std::min(odds, kMostPaceGain) : std::min(-kHastyLoss * odds, kMostPaceLoss);
}

// Distance between two carriers that should touch, and where they come closest; false for two lines.
bool FindTouch(const PricedPiece& a, const PricedPiece& b, double& gap, Point& touch) {
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
    const PricedPiece& line = p.isArc ? b : a;
    const PricedPiece& arc = p.isArc ? a : b;
    const Point to = arc.piece.circle.centre - line.piece.line.centre;
    gap = line.first.Cross(to) - 1.0 / arc.curvature;
    touch = line.piece.line.centre + to.Dot(line.first) * line.first;
    return true;
}

// How far the ink turns within what SignedTurn sees of a joint when both pieces keep their curvature.
double EvenTurn(const PricedPath& ink, const PricedPiece& before, const PricedPiece& after) {
    return 0.5 * (before.curvature + after.curvature) * kSeenReach * ink.path.step;
}

// The price of what the ink turns more than two pieces do that run on into each other.
double PriceOfTurn(const PricedPath& ink, const PricedPiece& before, const PricedPiece& after,
                   const JointSite& site) {
    return Excess(std::fabs(site.seen - EvenTurn(ink, before, after)) - kFreeTurn, kTurnSpread);
}

// Takes a tangent joint for the best one if it is cheaper.
// @param smooth  price of what the ink turns more than the carriers do.
void OfferTangent(const PricedPath& ink, const PricedPiece& before, const PricedPiece& after, const Point& at,
                  double smooth, JointPrice& best) {
    double gap = 0.0;
    Point touch;
    if (smooth - kNumberPrice >= best.price || !FindTouch(before, after, gap, touch))
        return;
    double price = smooth + Excess(std::fabs(gap), kGapSpread) +
                   Excess(touch.Distance(at) - kFreeTouch, kTouchSpread) - kNumberPrice;
    if (before.piece.isArc && after.piece.isArc)
        price += kArcsDoubt;
    else
        price +=
            Excess(kShortTail - PointsIn(ink, before.piece.isArc ? after.piece : before.piece), kShortSpread);
    if (price < best.price)
        best = {price, JointSight::Tangent, best.untied};
}

double PriceCorner(const PricedPath& ink, const PricedPiece& before, const PricedPiece& after,
                   const JointSite& site) {
    const double turn = WithinHalfTurn(after.enter - before.leave);
    const double size = std::max(std::fabs(turn), kCornerSpread);
    // Where the pen turns back, the two may differ by a whole turn.
    const double missing = WithinHalfTurn(turn + EvenTurn(ink, before, after) - site.seen);
    const double lost = (turn < 0.0 ? -missing : missing) / size;
    const double spreadOut = Excess(lost - kFreeLoss, kLossSpread);
    // A pen is slow in a tight bend, too: that it is speaks for a corner as far as the ink turns at once.
    const double pace = site.pace < 0.0 ? site.pace / (1.0 + kBendDoubt * spreadOut) : site.pace;
    return spreadOut + Excess(kLeastCorner - size, kCornerSpread) + pace;
}

double PriceBend(const PricedPath& ink, const PricedPiece& before, const PricedPiece& after,
                 const JointSite& site) {
    return PriceOfTurn(ink, before, after, site) +
           (!before.piece.isArc && !after.piece.isArc ? kLineBendPrice : kBendPrice);
}

} // namespace

const PricedPiece::Account& PricedPiece::BestFor(double squared) const {
    return *std::min_element(accounts.begin(), accounts.end(), [&](const Account& a, const Account& b) {
        return a.CostFor(squared) < b.CostFor(squared);
    });
}

RunPrices PriceRun(const PricedPath& ink, int first, int last) {
    const RunFits fits = FitRun(ink, first, last, kStraight * kNumberPrice / kHands.back());
    const int points = last > first ? last - first : last + ink.path.Size() - first;
    RunPrices both;
    PricedPiece& line = both.line;
    line.piece = {first, last, false, 0.0, 0.0, fits.line, {}};
    const double stray = std::sqrt(fits.line.sumSq / points) / fits.length;
    const double plain = 2.0 * kNumberPrice + Excess(kShortLine - points, kShortSpread) +
                         Excess(stray - Between(kFreeStray, kFreeStrayInHaste, ink.haste), kStraySpread);
    line.accounts[0] = {plain + fits.hiddenByLine, fits.line.sumSq};
    if (plain + fits.hiddenByLine <= kHopeless && kHands.back() * fits.line.sumSq > kWorthwhile) {
        const double slow = SlowSumSq(ink, fits.line, first, last);
        const double wander = std::sqrt(slow / points) / fits.length;
        if (wander <= kMostWander)
            line.accounts[1] = {plain + fits.hiddenByLine + Excess(wander, kWander), fits.line.sumSq - slow};
    }
    if (!fits.hasArc)
        return both;
    const double bow = Excess(fits.BowOfLine(), Between(kBow, kBowInHaste, ink.haste));
    line.accounts[2] = {plain + fits.hiddenByArc + bow, fits.circle.sumSq};
    const double sweep = fits.length * std::fabs(fits.curvature);
    const double price = 3.0 * kNumberPrice + fits.hiddenByArc + Excess(kShortArc - points, kShortSpread) +
                         Excess(Between(kLeastSweep, kLeastSweepInHaste, ink.haste) - sweep, kSweepSpread);
    if (sweep < kHopelessSweep || price + kHands.front() * fits.circle.sumSq > kHopeless)
        return both;
    PricedPiece& arc = both.arc;
    both.hasArc = true;
    arc.piece = {first, last, true, 0.0, 0.0, fits.line, fits.circle};
    arc.curvature = fits.curvature;
    arc.accounts[0] = {price, fits.circle.sumSq};
    return both;
}

void FindDirections(const PricedPath& ink, PricedPiece& priced) {
    priced.first = priced.last = DirectionAt(ink, priced.piece, false);
    priced.enter = priced.leave = AngleOf(priced.first);
    if (!priced.piece.isArc)
        return;
    priced.last = DirectionAt(ink, priced.piece, true);
    priced.leave = AngleOf(priced.last);
}

void SetJoint(const JointPrice& joint, std::size_t piece, Chain& chain) {
    ChainPiece& after = chain.pieces[piece];
    chain.price += joint.price - after.jointPrice;
    after.jointPrice = joint.price;
    after.joint = joint.sight;
}

double LeastJointPrice() {
    return -std::max(kMostPaceGain, kNumberPrice);
}

JointSite::JointSite(const PricedPath& ink, int point)
    : at(point), seen(SignedTurn(ink.path, point)), pace(PriceOfPace(ink, point)) {}

JointPrice PriceJoint(const PricedPath& ink, const PricedPiece& before, const PricedPiece& after,
                      const JointSite& site) {
    JointPrice best{PriceCorner(ink, before, after, site), JointSight::Corner};
    const double bend = PriceBend(ink, before, after, site);
    if (bend < best.price)
        best = {bend, JointSight::Bend};
    best.untied = best.price;
    OfferTangent(ink, before, after, ink.path.At(site.at), PriceOfTurn(ink, before, after, site), best);
    return best;
}

PricedPiece AsPriced(const PricedPath& ink, const ChainPiece& piece) {
    PricedPiece joined;
    joined.piece = piece;
    FindDirections(ink, joined);
    if (piece.isArc) {
        const Point radius = ink.path.pts[static_cast<std::size_t>(piece.first)] - piece.circle.centre;
        joined.curvature = (radius.Cross(joined.first) < 0.0 ? -1.0 : 1.0) / piece.circle.radius;
    }
    return joined;
}

double PriceCorner(const PricedPath& ink, const Chain& chain, std::size_t piece) {
    const ChainPiece& after = chain.pieces[piece];
    return PriceCorner(ink, AsPriced(ink, chain.pieces[piece - 1]), AsPriced(ink, after), {ink, after.first});
}

double PriceBend(const PricedPath& ink, const Chain& chain, std::size_t piece) {
    const ChainPiece& after = chain.pieces[piece];
    return PriceBend(ink, AsPriced(ink, chain.pieces[piece - 1]), AsPriced(ink, after), {ink, after.first});
}

JointPrice PriceSeam(const PricedPath& ink, const PricedPiece& last, const PricedPiece& first) {
    const double turn = WithinHalfTurn(first.enter - last.leave);
    JointPrice best{Excess(kLeastCorner - std::fabs(turn), kCornerSpread), JointSight::Corner};
    OfferTangent(ink, last, first, 0.5 * (ink.path.pts.front() + ink.path.pts.back()),
                 Excess(std::fabs(turn) - kFreeTurn, kTurnSpread), best);
    return best;
}

} // namespace Tessera::Geometry
