// Gauss-Newton steps with derivatives by differences: a run has few parameters, and moving one of them moves
// all that follows. Which points belong to which piece is decided anew in each step, by the normals in the
// joints.
#include "tessera/recognition/internal/TangentRun.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/recognition/internal/CornerEvidence.h"
#include "tessera/recognition/internal/PiecePrices.h"

namespace Tessera::Geometry {

namespace {

constexpr int kRounds = 10;
constexpr int kSettled = 3;           // rounds with the breaks as they were found: the start lies far off
constexpr int kHalvings = 4;          // of a step that makes the fit worse
constexpr double kStep = 1e-5;        // of the differences, sizes or radians: small against any stray
constexpr double kDamping = 1e-3;     // of the normal matrix' diagonal: the place of a joint is hardly known
constexpr double kShortestLink = 0.1; // sizes
constexpr int kTrim = 3;              // points next to a corner, which the pen rounds
constexpr double kTarget = 1e3;       // weight of a direction on an axis against the distance of a point
constexpr double kDefiance = 0.06;    // root mean square distance that no hand strays, sizes
constexpr double kBendDefiance = 0.015; // the same where no tangency was seen: a usual hand's spread
constexpr double kStraight = 1e-6;      // curvature below which an arc is drawn as a line

struct Link {
    bool isArc = false;
    double length = 0.0;
    double curvature = 0.0;
    double target = 0.0; // heading that a line must have
    bool hasTarget = false;
    int last = 0; // point of the path at which the next link begins
    // Derived from those before:
    Point start;
    double heading = 0.0;
    Point along; // its direction
};

struct Run {
    Point origin;
    double offset = 0.0; // of the start from the origin, to the left of the first heading
    double heading = 0.0;
    Point normal;
    std::vector<Link> links;
    int first = 0;
    int trimFirst = 0;
    int trimLast = 0;
};

// The points of a run that crosses the start of the path are counted on beyond it, or from before it.
int Within(const PricedPath& ink, int i) {
    const int n = ink.path.Size();
    return (i + n) % n;
}

const Point& At(const PricedPath& ink, int i) {
    return ink.path.pts[static_cast<std::size_t>(Within(ink, i))];
}

Point Direction(double heading) {
    return {std::cos(heading), std::sin(heading)};
}

void Lay(Run& run) {
    Point at = run.origin + run.offset * run.normal;
    double heading = run.heading;
    for (Link& link : run.links) {
        link.start = at;
        link.heading = heading;
        link.along = Direction(heading);
        const double half = 0.5 * link.length * link.curvature;
        const double chord = std::fabs(half) > 1e-9 ? link.length * std::sin(half) / half : link.length;
        at += chord * Direction(heading + half);
        heading += 2.0 * half;
    }
}

// The parameters in a fixed order.
std::vector<double*> ParametersOf(Run& run) {
    std::vector<double*> parameters{&run.offset, &run.heading};
    for (std::size_t k = 0; k < run.links.size(); ++k) {
        if (run.links[k].isArc)
            parameters.push_back(&run.links[k].curvature);
        if (k + 1 < run.links.size())
            parameters.push_back(&run.links[k].length);
    }
    return parameters;
}

double Distance(const Link& link, const Point& p) {
    const Point to = p - link.start;
    const double left = link.along.Cross(to);
    if (!link.isArc)
        return left;
    // Of the circle through the start: exact, and without cancellation for a large radius.
    const double k = link.curvature;
    const double power = k * to.Dot(to) - 2.0 * left;
    return -power / (1.0 + std::sqrt(std::max(0.0, 1.0 + k * power)));
}

// Signed distances of the points, then what lines with a target turn too much.
void Measure(const PricedPath& ink, const Run& run, std::vector<double>& residuals) {
    residuals.clear();
    int at = run.first + run.trimFirst;
    for (std::size_t k = 0; k < run.links.size(); ++k) {
        const Link& link = run.links[k];
        const int end = k + 1 < run.links.size() ? link.last : link.last - run.trimLast + 1;
        for (; at < end; ++at) {
            const Point& p = At(ink, at);
            residuals.push_back(link.isArc ? Distance(link, p) : link.along.Cross(p - link.start));
        }
    }
    for (const Link& link : run.links)
        if (link.hasTarget)
            residuals.push_back(kTarget * std::remainder(link.heading - link.target, 2.0 * std::numbers::pi));
}

double SumSq(const std::vector<double>& values) {
    double sum = 0.0;
    for (const double v : values)
        sum += v * v;
    return sum;
}

// Points beyond the normal in a joint belong to the next link.
void AssignPoints(const PricedPath& ink, Run& run) {
    for (std::size_t k = 0; k + 1 < run.links.size(); ++k) {
        const Link& next = run.links[k + 1];
        const int low = (k > 0 ? run.links[k - 1].last : run.first) + 1;
        const int high = run.links[k + 1].last - 1;
        int& at = run.links[k].last;
        const auto isBeyond = [&](int i) { return (At(ink, i) - next.start).Dot(next.along) > 0.0; };
        while (at > low && isBeyond(at - 1))
            --at;
        while (at < high && !isBeyond(at))
            ++at;
    }
}

// Solves the symmetric positive equations m x = b in place; b becomes x.
void SolveSymmetric(std::vector<std::vector<double>>& m, std::vector<double>& b) {
    const std::size_t n = b.size();
    for (std::size_t r = 0; r < n; ++r)
        for (std::size_t q = r + 1; q < n; ++q) {
            const double f = m[q][r] / m[r][r];
            for (std::size_t k = r; k < n; ++k)
                m[q][k] -= f * m[r][k];
            b[q] -= f * b[r];
        }
    for (std::size_t r = n; r-- > 0;) {
        for (std::size_t k = r + 1; k < n; ++k)
            b[r] -= m[r][k] * b[k];
        b[r] /= m[r][r];
    }
}

std::vector<double> FindStep(const PricedPath& ink, Run& run, const std::vector<double>& residuals) {
    const std::vector<double*> parameters = ParametersOf(run);
    const std::size_t n = parameters.size();
    std::vector<std::vector<double>> slopes(n);
    for (std::size_t k = 0; k < n; ++k) {
        const double old = *parameters[k];
        *parameters[k] += kStep;
        Lay(run);
        Measure(ink, run, slopes[k]);
        *parameters[k] = old;
        for (std::size_t i = 0; i < slopes[k].size(); ++i)
            slopes[k][i] = (slopes[k][i] - residuals[i]) / kStep;
    }
    Lay(run);
    std::vector<std::vector<double>> m(n, std::vector<double>(n));
    std::vector<double> b(n);
    for (std::size_t r = 0; r < n; ++r) {
        // What lies before a parameter's link does not depend on it, and still less on a later one.
        std::size_t begin = 0;
        while (begin < residuals.size() && slopes[r][begin] == 0.0)
            ++begin;
        for (std::size_t c = 0; c <= r; ++c) {
            double sum = 0.0;
            for (std::size_t i = begin; i < residuals.size(); ++i)
                sum += slopes[r][i] * slopes[c][i];
            m[r][c] = m[c][r] = sum;
        }
        for (std::size_t i = begin; i < residuals.size(); ++i)
            b[r] -= slopes[r][i] * residuals[i];
    }
    for (std::size_t r = 0; r < n; ++r)
        m[r][r] += kDamping * m[r][r] + 1e-9;
    SolveSymmetric(m, b);
    return b;
}

// One step; false when none makes the fit better.
bool Improve(const PricedPath& ink, bool assign, Run& run) {
    std::vector<double> residuals;
    Lay(run);
    if (assign)
        AssignPoints(ink, run);
    Measure(ink, run, residuals);
    const double before = SumSq(residuals);
    const std::vector<double> step = FindStep(ink, run, residuals);
    const Run old = run;
    double share = 2.0;
    for (int half = 0; half < kHalvings; ++half) {
        share *= 0.5;
        run = old;
        const std::vector<double*> parameters = ParametersOf(run);
        for (std::size_t k = 0; k < step.size(); ++k)
            *parameters[k] += share * step[k];
        bool isSound = true;
        for (const Link& link : run.links)
            isSound = isSound && link.length > kShortestLink &&
                      std::fabs(link.curvature * link.length) < 2.0 * std::numbers::pi;
        if (!isSound)
            continue;
        Lay(run);
        Measure(ink, run, residuals);
        if (SumSq(residuals) < before)
            return SumSq(residuals) < (1.0 - 1e-4) * before;
    }
    run = old;
    return false;
}

Run MakeRun(const PricedPath& ink, const Chain& chain, std::size_t from, std::size_t to) {
    Run run;
    const ChainPiece& head = chain.pieces[from];
    const Point& start = At(ink, head.first);
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
            const Point a = At(ink, piece.first) - piece.circle.centre;
            const Point b = DirectionAt(ink, piece, false);
            link.curvature = (a.Cross(b) < 0.0 ? -1.0 : 1.0) / piece.circle.radius;
        }
        run.links.push_back(link);
    }
    return run;
}

void SetTargets(double snapRad, Run& run) {
    for (Link& link : run.links) {
        const double off = std::remainder(link.heading, 0.5 * std::numbers::pi);
        link.hasTarget = !link.isArc && std::fabs(off) <= snapRad;
        link.target = link.heading - off;
    }
}

// Directions exactly on their axes: an arc between takes up the rounding.
void MeetTargets(Run& run) {
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

void WriteBack(const PricedPath& ink, const Run& run, std::size_t from, Chain& chain) {
    for (std::size_t k = 0; k < run.links.size(); ++k) {
        const Link& link = run.links[k];
        ChainPiece& piece = chain.pieces[from + k];
        const Point d = Direction(link.heading);
        if (k > 0) {
            piece.isTouching = true;
            piece.meet = link.start;
            piece.first = Within(ink, run.links[k - 1].last);
        }
        piece.last = Within(ink, link.last);
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
void Reprice(const PricedPath& ink, const Run& run, std::size_t from, Chain& chain) {
    int at = run.first + run.trimFirst;
    for (std::size_t k = 0; k < run.links.size(); ++k) {
        const Link& link = run.links[k];
        const int end = k + 1 < run.links.size() ? link.last : link.last - run.trimLast + 1;
        double sumSq = 0.0;
        const int counted = std::max(1, end - at);
        for (; at < end; ++at) {
            const double off =
                link.isArc ? Distance(link, At(ink, at)) : link.along.Cross(At(ink, at) - link.start);
            sumSq += off * off;
        }
        ChainPiece& piece = chain.pieces[from + k];
        const double explained = piece.isArc ? 0.0 : piece.line.sumSq - piece.sumSq;
        // A chain's pieces count without what lies next to their ends.
        const int points = PointsIn(ink, piece);
        sumSq *= std::min(1.0, static_cast<double>(points + 1 - 2 * TrimOf(points)) / counted);
        const double left = std::max(0.0, sumSq - explained);
        chain.sumSq += left - piece.sumSq;
        piece.sumSq = left;
        if (!piece.isArc)
            piece.line.sumSq = left + explained;
    }
    for (std::size_t k = 1; k < run.links.size(); ++k) {
        ChainPiece& piece = chain.pieces[from + k];
        const JointPrice joint = PriceJoint(ink, AsPriced(ink, chain.pieces[from + k - 1]),
                                            AsPriced(ink, piece), {ink, piece.first});
        chain.price += joint.price - piece.jointPrice;
        piece.jointPrice = joint.price;
    }
}

void FitRun(const PricedPath& ink, double snapRad, double defiance, std::size_t from, std::size_t to,
            Chain& chain) {
    Run run = MakeRun(ink, chain, from, to);
    for (int round = 0; round < kRounds && (Improve(ink, round >= kSettled, run) || round < kSettled);
         ++round) {
    }
    std::vector<double> residuals;
    Measure(ink, run, residuals);
    const double spread = std::sqrt(SumSq(residuals) / static_cast<double>(residuals.size()));
    bool isSound = !residuals.empty() && spread <= defiance;
    for (const Link& link : run.links)
        isSound = isSound && (!link.isArc || std::fabs(link.curvature) > kStraight);
    if (!isSound) {
        for (std::size_t i = from + 1; i <= to; ++i)
            chain.pieces[i].joint = JointSight::Bend;
        return;
    }
    SetTargets(snapRad, run);
    if (std::any_of(run.links.begin(), run.links.end(), [](const Link& link) { return link.hasTarget; })) {
        for (int round = 0; round < kRounds && Improve(ink, true, run); ++round) {
        }
        MeetTargets(run);
    }
    WriteBack(ink, run, from, chain);
    if (snapRad <= 0.0)
        Reprice(ink, run, from, chain); // a snapped chain competes no more
    for (std::size_t i = from + 1; i <= to; ++i)
        chain.pieces[i].joint = JointSight::Tangent;
}

} // namespace

void FitTangentRuns(const PricedPath& ink, double snapRad, Chain& chain) {
    const std::size_t count = chain.pieces.size();
    // A run may go on over the joint before the first piece of a ring: the ring is begun at a corner, if any.
    const auto isCorner = [](const ChainPiece& piece) { return piece.joint == JointSight::Corner; };
    const auto corner = std::find_if(chain.pieces.begin(), chain.pieces.end(), isCorner);
    const auto turned = IsRing(chain) && corner != chain.pieces.end() ? corner - chain.pieces.begin() : 0;
    std::rotate(chain.pieces.begin(), chain.pieces.begin() + turned, chain.pieces.end());
    for (std::size_t from = 0; from < count;) {
        std::size_t to = from;
        bool isFree = false;
        while (to + 1 < count && chain.pieces[to + 1].joint != JointSight::Corner)
            isFree = chain.pieces[++to].joint == JointSight::Bend || isFree;
        if (to > from)
            FitRun(ink, snapRad, isFree ? kBendDefiance : kDefiance, from, to, chain);
        from = to + 1;
    }
    std::rotate(chain.pieces.begin(), chain.pieces.end() - turned, chain.pieces.end());
}

} // namespace Tessera::Geometry
