// Damped Gauss-Newton steps (D. W. Marquardt, SIAM J. Appl. Math. 11 (1963) 431-441). What comes before a
// link acts on it only through the place and heading of its start, so the normal equations are solved by a
// sweep from the last link to the first: each link's own values are eliminated, and the squares of all that
// follow remain as a function of where it starts (the backward sweep of A. E. Bryson, Y.-C. Ho, Applied
// Optimal Control (1969), chapter 5). Which points belong to which link is decided anew in each step, by the
// normals in the joints.
#include "tessera/recognition/internal/LinkedRun.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>

#include "tessera/recognition/internal/LinkMoves.h"

namespace Tessera::Geometry {

namespace {

constexpr int kAttempts = 6; // at a step that makes the fit better, each more timid than the last
constexpr double kDampingStep = 10.0;
constexpr double kLeastDamping = 1e-6; // of the normal matrix' diagonal
constexpr double kWorthwhile = 1e-4;   // of the squares: a step that saves less is the last
constexpr double kRidge = 1e-9;        // holds what nothing depends on
constexpr double kShortestLink = 0.1;  // sizes
constexpr double kFlatSweep = 1e-4; // radians of an arc, below which its ends' difference has no digits left

// The start of the run counts as a link without ink, of which offset and heading are its own.
constexpr std::size_t kOffset = kCurvature;
constexpr std::size_t kFirstHeading = kLength;

using Step = std::vector<std::array<double, kMoves - kOwn>>; // of the start, then of each link

using StartMatrix = std::array<Moves, kOwn>;

// The squares of a link's own ink, to second order in the link's moves. Where the link ends is no matter of
// its own ink.
struct Squares {
    std::array<std::array<double, kLength>, kLength> gram{};
    std::array<double, kLength> slope{};

    void Add(const Moves& moves, double residual) {
        for (std::size_t r = 0; r < kLength; ++r) {
            for (std::size_t c = 0; c <= r; ++c)
                gram[r][c] += moves[r] * moves[c];
            slope[r] += moves[r] * residual;
        }
    }
};

Squares SquaresOf(const PricedPath& ink, const LinkedRun& run, std::size_t k) {
    Squares squares;
    const Link& link = run.links[k];
    const PointRange range = FittedTo(run, k);
    for (int i = range.from; i < range.to; ++i) {
        const Point& p = ink.path.At(i);
        const Aside aside = AsideOf(link, p);
        squares.Add(SlopeOf(link, p, aside), aside.distance);
    }
    if (link.hasTarget)
        squares.Add({0.0, 0.0, kTarget, 0.0, 0.0}, OffTarget(link));
    return squares;
}

std::vector<Squares> SquaresOf(const PricedPath& ink, const LinkedRun& run) {
    std::vector<Squares> squares;
    squares.reserve(run.links.size());
    for (std::size_t k = 0; k < run.links.size(); ++k)
        squares.push_back(SquaresOf(ink, run, k));
    return squares;
}

// The squares of a link and of all that follow.
struct Stage {
    std::array<Moves, kMoves> gram{};    // normal matrix
    std::array<Moves, kMoves> reduced{}; // the same with all that is later in order set to suit
    Moves slope{};
    StartMatrix leads{}; // how the start of the next link moves

    void Add(const Squares& own) {
        for (std::size_t r = 0; r < kLength; ++r) {
            for (std::size_t c = 0; c < kLength; ++c)
                gram[r][c] += own.gram[std::max(r, c)][std::min(r, c)];
            slope[r] += own.slope[r];
        }
    }
};

// What the squares of the next link are in the moves of this one.
void AddThrough(const StartMatrix& leads, const std::array<Moves, kMoves>& next,
                std::array<Moves, kMoves>& squares) {
    StartMatrix half{};
    for (std::size_t s = 0; s < kOwn; ++s)
        for (std::size_t t = 0; t < kOwn; ++t)
            for (std::size_t c = 0; c < kMoves; ++c)
                half[s][c] += next[s][t] * leads[t][c];
    for (std::size_t r = 0; r < kMoves; ++r)
        for (std::size_t s = 0; s < kOwn; ++s)
            for (std::size_t c = 0; c < kMoves; ++c)
                squares[r][c] += leads[s][r] * half[s][c];
}

void AddNext(const Stage& next, Stage& stage) {
    for (std::size_t r = 0; r < kMoves; ++r)
        for (std::size_t s = 0; s < kOwn; ++s)
            stage.slope[r] += stage.leads[s][r] * next.slope[s];
    AddThrough(stage.leads, next.reduced, stage.reduced);
    AddThrough(stage.leads, next.gram, stage.gram);
}

// The row of the move then tells its value by those before it.
void Eliminate(std::size_t move, double damping, Stage& stage) {
    Moves& row = stage.reduced[move];
    row[move] += damping * stage.gram[move][move] + kRidge;
    for (std::size_t r = 0; r < move; ++r) {
        const double f = row[r] / row[move];
        for (std::size_t c = 0; c < move; ++c)
            stage.reduced[r][c] -= f * row[c];
        stage.slope[r] -= f * stage.slope[move];
    }
}

std::vector<Stage> SweepBack(const std::vector<Squares>& squares, const LinkedRun& run, double damping) {
    const std::size_t count = run.links.size();
    std::vector<Stage> stages(count + 1);
    for (std::size_t k = count + 1; k-- > 0;) {
        Stage& stage = stages[k];
        if (k == 0) {
            stage.leads[kX][kOffset] = run.normal.x;
            stage.leads[kY][kOffset] = run.normal.y;
            stage.leads[kHeading][kFirstHeading] = 1.0;
        } else {
            stage.Add(squares[k - 1]);
            stage.reduced = stage.gram;
            if (k < count)
                stage.leads = LeadsOf(run.links[k - 1], run.links[k]);
        }
        if (k < count)
            AddNext(stages[k + 1], stage);
        for (std::size_t move = kMoves; move-- > kOwn;)
            Eliminate(move, damping, stage);
    }
    return stages;
}

Step FindStep(const std::vector<Squares>& squares, const LinkedRun& run, double damping) {
    const std::vector<Stage> stages = SweepBack(squares, run, damping);
    Step step(stages.size());
    Moves moves{};
    for (std::size_t k = 0; k < stages.size(); ++k) {
        const Stage& stage = stages[k];
        for (std::size_t move = kOwn; move < kMoves; ++move) {
            double sum = stage.slope[move];
            for (std::size_t c = 0; c < move; ++c)
                sum += stage.reduced[move][c] * moves[c];
            moves[move] = step[k][move - kOwn] = -sum / stage.reduced[move][move];
        }
        Moves next{};
        for (std::size_t s = 0; s < kOwn; ++s)
            for (std::size_t c = 0; c < kMoves; ++c)
                next[s] += stage.leads[s][c] * moves[c];
        moves = next;
    }
    return step;
}

void Take(const Step& step, LinkedRun& run) {
    run.offset += step[0][kOffset - kOwn];
    run.heading += step[0][kFirstHeading - kOwn];
    for (std::size_t k = 0; k < run.links.size(); ++k) {
        run.links[k].curvature += step[k + 1][kCurvature - kOwn];
        run.links[k].length += step[k + 1][kLength - kOwn];
    }
}

} // namespace

PointRange FittedTo(const LinkedRun& run, std::size_t link) {
    const int from = run.first + run.trimFirst;
    const int to = run.links[link].last;
    return {link > 0 ? std::max(from, run.links[link - 1].last) : from,
            link + 1 < run.links.size() ? to : to - run.trimLast + 1};
}

Aside AsideOf(const Link& link, const Point& p) {
    const Point to = p - link.start;
    const double left = link.along.Cross(to);
    if (!link.isArc)
        return {left, 1.0};
    // Of the circle through the start: exact, and without cancellation for a large radius.
    const double k = link.curvature;
    const double power = k * to.Dot(to) - 2.0 * left;
    const double reach = std::sqrt(std::max(0.0, 1.0 + k * power));
    return {-power / (1.0 + reach), reach};
}

Moves SlopeOf(const Link& link, const Point& p, const Aside& aside) {
    const Point to = p - link.start;
    if (!link.isArc)
        return {link.along.y, -link.along.x, -link.along.Dot(to), 0.0, 0.0};
    const double k = link.curvature;
    const double share = 1.0 / std::max(aside.reach, 1e-9);
    return {(link.along.y + k * to.x) * share, (k * to.y - link.along.x) * share, -link.along.Dot(to) * share,
            0.5 * (aside.distance * aside.distance - to.Dot(to)) * share, 0.0};
}

double OffTarget(const Link& link) {
    return kTarget * std::remainder(link.heading - link.target, 2.0 * std::numbers::pi);
}

std::array<Moves, kOwn> LeadsOf(const Link& link, const Link& next) {
    const Point way = next.start - link.start;
    Point byCurvature;
    double turn = 0.0;
    if (link.isArc) {
        turn = link.length;
        const bool isStraight = std::fabs(link.curvature * link.length) < kFlatSweep;
        byCurvature = isStraight ? 0.5 * link.length * Point(-way.y, way.x)
                                 : (link.length * next.along - way) / link.curvature;
    }
    return {Moves{1.0, 0.0, -way.y, byCurvature.x, next.along.x},
            Moves{0.0, 1.0, way.x, byCurvature.y, next.along.y}, Moves{0.0, 0.0, 1.0, turn, link.curvature}};
}

void AssignPoints(const PricedPath& ink, LinkedRun& run) {
    for (std::size_t k = 0; k + 1 < run.links.size(); ++k) {
        const Link& next = run.links[k + 1];
        const int low = (k > 0 ? run.links[k - 1].last : run.first) + 1;
        const int high = run.links[k + 1].last - 1;
        int& at = run.links[k].last;
        const auto isBeyond = [&](int i) { return (ink.path.At(i) - next.start).Dot(next.along) > 0.0; };
        while (at > low && isBeyond(at - 1))
            --at;
        while (at < high && !isBeyond(at))
            ++at;
    }
}

Point DirectionOf(double heading) {
    return {std::cos(heading), std::sin(heading)};
}

void Lay(LinkedRun& run) {
    Point at = run.origin + run.offset * run.normal;
    double heading = run.heading;
    for (Link& link : run.links) {
        link.start = at;
        link.heading = heading;
        link.along = DirectionOf(heading);
        const double half = 0.5 * link.length * link.curvature;
        const double chord = std::fabs(half) > 1e-9 ? link.length * std::sin(half) / half : link.length;
        at += chord * DirectionOf(heading + half);
        heading += 2.0 * half;
    }
}

bool IsSound(const LinkedRun& run) {
    return std::all_of(run.links.begin(), run.links.end(), [](const Link& link) {
        return link.length > kShortestLink &&
               std::fabs(link.curvature * link.length) < 2.0 * std::numbers::pi;
    });
}

Misfit MisfitOf(const PricedPath& ink, const LinkedRun& run, std::size_t link) {
    Misfit misfit;
    const PointRange range = FittedTo(run, link);
    for (int i = range.from; i < range.to; ++i, ++misfit.count) {
        const double distance = AsideOf(run.links[link], ink.path.At(i)).distance;
        misfit.sumSq += distance * distance;
    }
    return misfit;
}

Misfit MisfitOf(const PricedPath& ink, const LinkedRun& run) {
    Misfit all;
    for (std::size_t k = 0; k < run.links.size(); ++k) {
        const Misfit one = MisfitOf(ink, run, k);
        all.sumSq += one.sumSq;
        all.count += one.count;
        if (run.links[k].hasTarget) {
            all.sumSq += OffTarget(run.links[k]) * OffTarget(run.links[k]);
            ++all.count;
        }
    }
    return all;
}

bool Improve(const PricedPath& ink, bool assign, double& damping, LinkedRun& run) {
    Lay(run);
    if (assign)
        AssignPoints(ink, run);
    const double before = MisfitOf(ink, run).sumSq;
    const std::vector<Squares> squares = SquaresOf(ink, run);
    double tried = damping;
    for (int attempt = 0; attempt < kAttempts; ++attempt, tried *= kDampingStep) {
        LinkedRun next = run;
        Take(FindStep(squares, run, tried), next);
        if (!IsSound(next))
            continue;
        Lay(next);
        const double after = MisfitOf(ink, next).sumSq;
        if (!(after < before))
            continue;
        run = std::move(next);
        damping = std::max(tried / kDampingStep, kLeastDamping);
        return after < (1.0 - kWorthwhile) * before;
    }
    return false;
}

} // namespace Tessera::Geometry
