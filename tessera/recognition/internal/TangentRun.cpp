// A fit starts with the breaks, radii and headings that the search found; lines near an axis are turned onto
// it afterwards.
#include "tessera/recognition/internal/TangentRun.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

#include "tessera/recognition/internal/AxisSnap.h"
#include "tessera/recognition/internal/ChainSearch.h"
#include "tessera/recognition/internal/CornerEvidence.h"
#include "tessera/recognition/internal/LinkedRing.h"
#include "tessera/recognition/internal/LinkedRun.h"
#include "tessera/recognition/internal/PiecePrices.h"

namespace Tessera::Geometry {

namespace {

constexpr int kRounds = 20;
constexpr int kSettled = 3;             // rounds with the breaks as they were found: the start lies far off
constexpr int kTrim = 3;                // points next to a corner, which the pen rounds
constexpr double kDefiance = 0.06;      // root mean square distance that no hand strays, sizes
constexpr double kBendDefiance = 0.015; // the same where no tangency was seen: a usual hand's spread
constexpr double kSnapSlack = 0.02;     // by so much more it may stray where lines are turned onto axes
constexpr double kStraight = 1e-6;      // curvature below which an arc is drawn as a line

// Arcs that turn from their start to where their successor starts: breaks lie beside the joints, and what is
// a little off in an early arc turns all that follows.
void FollowHeadings(const PricedPath& ink, const Chain& chain, std::size_t from, LinkedRun& run) {
    double heading = run.heading;
    for (std::size_t k = 0; k + 1 < run.links.size(); ++k) {
        Link& link = run.links[k];
        if (!link.isArc)
            continue;
        const Point next = DirectionAt(ink, chain.pieces[from + k + 1], false);
        const double sweep = link.length * link.curvature;
        const double turn =
            sweep + std::remainder(std::atan2(next.y, next.x) - heading - sweep, 2.0 * std::numbers::pi);
        if (turn * sweep > 0.0 && std::fabs(turn) < 2.0 * std::numbers::pi)
            link.length = turn / link.curvature;
        heading += link.length * link.curvature;
    }
}

LinkedRun MakeRun(const PricedPath& ink, const Chain& chain, std::size_t from, std::size_t to) {
    LinkedRun run;
    const ChainPiece& head = chain.pieces[from];
    const Point& start = ink.path.At(head.first);
    const Point d = DirectionAt(ink, head, false);
    run.heading = std::atan2(d.y, d.x);
    run.normal = {-d.y, d.x};
    run.first = head.first < head.last ? head.first : head.first - ink.path.Size();
    run.trimFirst = head.first > 0 ? kTrim : 0;
    run.trimLast = chain.pieces[to].last + 1 < ink.path.Size() ? kTrim : 0;
    if (head.isArc) {
        const Point out = start - head.circle.centre;
        run.origin = head.circle.centre + out * (head.circle.radius / std::max(out.Length(), 1e-12));
    } else {
        run.origin =
            head.line.centre + (start - head.line.centre).Dot(head.line.direction) * head.line.direction;
    }
    for (std::size_t i = from; i <= to; ++i) {
        const ChainPiece& piece = chain.pieces[i];
        Link link;
        link.isArc = piece.isArc;
        const int first = i == from ? run.first : run.links.back().last;
        link.last = first + PointsIn(ink, piece);
        link.length = ink.path.step * (link.last - first);
        if (piece.isArc) {
            const Point a = ink.path.At(piece.first) - piece.circle.centre;
            const Point b = DirectionAt(ink, piece, false);
            link.curvature = (a.Cross(b) < 0.0 ? -1.0 : 1.0) / piece.circle.radius;
        }
        run.links.push_back(link);
    }
    FollowHeadings(ink, chain, from, run);
    return run;
}

void SetTargets(double snapRad, LinkedRun& run) {
    for (Link& link : run.links) {
        const double off = OffAxis(link.heading);
        link.hasTarget = !link.isArc && std::fabs(off) <= snapRad;
        link.target = link.heading - off;
    }
}

// Directions exactly on their axes: an arc between takes up the rounding.
void MeetTargets(LinkedRun& run) {
    for (std::size_t k = 0; k < run.links.size(); ++k) {
        Lay(run);
        const Link& link = run.links[k];
        const double off = std::remainder(link.target - link.heading, 2.0 * std::numbers::pi);
        if (!link.hasTarget)
            continue;
        std::size_t arc = k;
        while (arc > 0 && !run.links[arc - 1].isArc)
            --arc;
        if (arc > 0)
            run.links[arc - 1].length += off / run.links[arc - 1].curvature;
        else
            run.heading += off;
    }
    Lay(run);
}

// The first rounds keep the breaks.
void Fit(const PricedPath& ink, int settled, LinkedRun& run) {
    double damping = kFirstDamping;
    for (int round = 0; round < kRounds && (Improve(ink, round >= settled, damping, run) || round < settled);
         ++round) {
    }
}

// Root mean square distance of the ink; infinite when the run holds something that is no line or arc.
double SpreadOf(const PricedPath& ink, const LinkedRun& run) {
    const auto isStraight = [](const Link& link) {
        return link.isArc && !(std::fabs(link.curvature) > kStraight);
    };
    const Misfit misfit = MisfitOf(ink, run);
    if (misfit.count == 0 || !IsSound(run) || std::any_of(run.links.begin(), run.links.end(), isStraight))
        return std::numeric_limits<double>::infinity();
    return std::sqrt(misfit.sumSq / misfit.count);
}

// Turns the lines near an axis onto it, unless the ink then strays farther than `most`.
void Snap(const PricedPath& ink, double snapRad, double most, bool isClosed, LinkedRun& run) {
    LinkedRun snapped = run;
    SetTargets(snapRad, snapped);
    if (std::none_of(snapped.links.begin(), snapped.links.end(), [](const Link& l) { return l.hasTarget; }))
        return;
    if (isClosed) {
        if (!FitRing(ink, snapped))
            return;
    } else {
        Fit(ink, 0, snapped);
        MeetTargets(snapped);
    }
    for (Link& link : snapped.links)
        link.hasTarget = false;
    if (SpreadOf(ink, snapped) <= most)
        run = std::move(snapped);
}

void WriteBack(const PricedPath& ink, const LinkedRun& run, std::size_t from, bool isClosed, Chain& chain) {
    for (std::size_t k = 0; k < run.links.size(); ++k) {
        const Link& link = run.links[k];
        ChainPiece& piece = chain.pieces[from + k];
        const Point d = DirectionOf(link.heading);
        piece.isTouching = k > 0 || isClosed;
        piece.meet = link.start;
        if (k > 0)
            piece.first = ink.path.Within(run.links[k - 1].last);
        piece.last = ink.path.Within(link.last);
        if (link.isArc) {
            piece.circle.centre = link.start + Point(-d.y, d.x) / link.curvature;
            piece.circle.radius = std::fabs(1.0 / link.curvature);
        } else {
            piece.line.centre = link.start;
            piece.line.direction = d;
        }
    }
}

// What the exact pieces cost: squares that a line's bow or wandering explained stay explained.
void Reprice(const PricedPath& ink, const LinkedRun& run, std::size_t from, bool isClosed, Chain& chain) {
    for (std::size_t k = 0; k < run.links.size(); ++k) {
        const Misfit misfit = MisfitOf(ink, run, k);
        ChainPiece& piece = chain.pieces[from + k];
        const double explained = piece.isArc ? 0.0 : piece.line.sumSq - piece.sumSq;
        // A chain's pieces count without what lies next to their ends.
        const int points = PointsIn(ink, piece);
        const int counted = std::max(1, misfit.count);
        const double share = std::min(1.0, static_cast<double>(points + 1 - 2 * TrimOf(points)) / counted);
        const double left = std::max(0.0, share * misfit.sumSq - explained);
        chain.sumSq += left - piece.sumSq;
        piece.sumSq = left;
        if (!piece.isArc)
            piece.line.sumSq = left + explained;
    }
    const std::size_t count = run.links.size();
    for (std::size_t k = isClosed ? 0 : 1; k < count; ++k) {
        const ChainPiece& before = chain.pieces[from + (k > 0 ? k : count) - 1];
        const ChainPiece& piece = chain.pieces[from + k];
        SetJoint(PriceJoint(ink, AsPriced(ink, before), AsPriced(ink, piece), {ink, piece.first}), from + k,
                 chain);
    }
}

// A run that the ink defies is free-form, and costs what bends do.
void BendJoints(const PricedPath& ink, std::size_t from, std::size_t to, Chain& chain) {
    for (std::size_t i = from + 1; i <= to; ++i)
        SetJoint({PriceBend(ink, chain, i), JointSight::Bend}, i, chain);
}

void FitTogether(const PricedPath& ink, double snapRad, double defiance, std::size_t from, std::size_t to,
                 Chain& chain) {
    LinkedRun run = MakeRun(ink, chain, from, to);
    Fit(ink, kSettled, run);
    LinkedRun round = run;
    const bool isClosed = IsRing(chain) && to - from + 1 == chain.pieces.size() &&
                          chain.pieces[from].joint == JointSight::Tangent && FitRing(ink, round) &&
                          SpreadOf(ink, round) <= defiance;
    if (isClosed)
        run = std::move(round);
    const double spread = SpreadOf(ink, run);
    if (!(spread <= defiance)) {
        BendJoints(ink, from, to, chain);
        return;
    }
    Snap(ink, snapRad, std::min(defiance, spread + kSnapSlack), isClosed, run);
    WriteBack(ink, run, from, isClosed, chain);
    if (snapRad <= 0.0)
        Reprice(ink, run, from, isClosed, chain); // a snapped chain competes no more
    for (std::size_t i = isClosed ? from : from + 1; i <= to; ++i)
        chain.pieces[i].joint = JointSight::Tangent;
}

// The runs among the pieces from one on up to another.
void FitRuns(const PricedPath& ink, double snapRad, std::size_t from, std::size_t end, Chain& chain) {
    while (from < end) {
        std::size_t to = from;
        bool isFree = false;
        while (to + 1 < end && chain.pieces[to + 1].joint != JointSight::Corner)
            isFree = chain.pieces[++to].joint == JointSight::Bend || isFree;
        if (to > from)
            FitTogether(ink, snapRad, isFree ? kBendDefiance : kDefiance, from, to, chain);
        from = to + 1;
    }
}

void Rotate(std::ptrdiff_t by, Chain& chain) {
    std::rotate(chain.pieces.begin(), by < 0 ? chain.pieces.end() + by : chain.pieces.begin() + by,
                chain.pieces.end());
}

bool BeginsAtCorner(const ChainPiece& piece) {
    return piece.joint == JointSight::Corner;
}

// The pieces that run on into each other about one of them, of a ring counted on beyond its end; all of a
// ring without corners.
struct Run {
    std::size_t from;
    std::size_t end;
};

Run RunAbout(const Chain& chain, std::size_t piece) {
    const std::size_t count = chain.pieces.size();
    const bool isRing = IsRing(chain);
    Run run{isRing ? piece + count : piece, isRing ? piece + count + 1 : piece + 1};
    const std::size_t most = isRing ? run.from + count : count;
    while (run.from > 0 && run.from + count > run.end && !BeginsAtCorner(chain.pieces[run.from % count]))
        --run.from;
    while (run.end < most && run.end < run.from + count && !BeginsAtCorner(chain.pieces[run.end % count]))
        ++run.end;
    return run;
}

} // namespace

void FitTangentRuns(const PricedPath& ink, double snapRad, Chain& chain) {
    // A run may go on over the joint before the first piece of a ring: the ring is begun at a corner, or
    // where it has none with a line.
    const auto isLine = [](const ChainPiece& piece) { return !piece.isArc; };
    auto begin = std::find_if(chain.pieces.begin(), chain.pieces.end(), BeginsAtCorner);
    if (begin == chain.pieces.end())
        begin = std::find_if(chain.pieces.begin(), chain.pieces.end(), isLine);
    const auto turned = IsRing(chain) && begin != chain.pieces.end() ? begin - chain.pieces.begin() : 0;
    Rotate(turned, chain);
    FitRuns(ink, snapRad, 0, chain.pieces.size(), chain);
    Rotate(-turned, chain);
}

std::size_t CutTangentRun(const PricedPath& ink, const Chain& found, std::size_t piece, Chain& fitted) {
    const std::size_t count = found.pieces.size();
    const Run run = RunAbout(found, piece);
    if (!BeginsAtCorner(found.pieces[run.from % count]) && IsRing(found)) {
        fitted = WithCorner(ink, found, piece);
        FitTangentRuns(ink, 0.0, fitted);
        return count;
    }
    for (std::size_t i = run.from; i < run.end; ++i) {
        const ChainPiece& raw = found.pieces[i % count];
        SetJoint({raw.jointPrice, raw.joint}, i % count, fitted);
        fitted.sumSq += raw.sumSq - fitted.pieces[i % count].sumSq;
        fitted.pieces[i % count] = raw;
    }
    SetJoint({PriceCorner(ink, found, piece), JointSight::Corner}, piece, fitted);
    const auto turned = static_cast<std::ptrdiff_t>(run.from % count);
    Rotate(turned, fitted);
    FitRuns(ink, 0.0, 0, run.end - run.from, fitted);
    Rotate(-turned, fitted);
    return run.end - run.from;
}

} // namespace Tessera::Geometry
