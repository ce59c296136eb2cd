// Gauss-Newton steps on all free values together: in a ring each link acts on every other, so there is no
// sweep. The end is pulled to the start by a heavy weight; what that leaves open is closed by the shortest
// Newton steps.
#include "tessera/recognition/internal/LinkedRing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>
#include <vector>

#include "tessera/kernel/NR.h"
#include "tessera/recognition/internal/LinkMoves.h"

namespace Tessera::Geometry {

namespace {

constexpr int kRounds = 12;
constexpr int kClosings = 20;
constexpr double kClosed = 1e-12;      // sizes and radians
constexpr double kPull = 1e3;          // weight of the gap against the distance of a point
constexpr double kWorthwhile = 1e-4;   // of the squares: a step that saves less is the last
constexpr double kLeastDamping = 1e-9; // of the normal matrix' diagonal, most of which is the pull
constexpr double kMostDamping = 1e3;
constexpr double kRidge = 1e-9;    // holds what nothing depends on
constexpr double kSlide = 10.0;    // how much rather the start slides along its link than any changes
constexpr double kTurnReach = 4.0; // sizes by which a turn of the whole moves its far side
constexpr std::size_t kMostLinks = 32;

// What would be the next link.
Link EndOf(const LinkedRun& run) {
    LinkedRun beyond = run;
    beyond.links.push_back({});
    Lay(beyond);
    return beyond.links.back();
}

double HeadingGap(const LinkedRun& run, const Link& end) {
    return std::remainder(run.heading - end.heading, 2.0 * std::numbers::pi);
}

// The free values: place and heading of the start, then curvature and length of each link.
std::size_t CountOf(const LinkedRun& run) {
    return kOwn + 2 * run.links.size();
}

// How place and heading of a link's start move with the free values.
using Sensitivity = std::array<std::vector<double>, kOwn>;

class NormalEquations {
public:
    explicit NormalEquations(std::size_t count) : count_(count), matrix_(count * count), slope_(count) {}

    /// A square whose residual depends on the start of a link and on the link's own values from `own` on.
    void Add(const Sensitivity& start, const Moves& moves, std::size_t own, double residual) {
        row_.assign(count_, 0.0);
        for (std::size_t s = 0; s < kOwn; ++s)
            for (std::size_t i = 0; i < own; ++i)
                row_[i] += moves[s] * start[s][i];
        for (std::size_t move = kOwn; move < kMoves && own < count_; ++move)
            row_[own + move - kOwn] += moves[move];
        Add(std::min(own + 2, count_), residual);
    }

    /// The gap in one of place and heading.
    void AddGap(const std::vector<double>& end, std::size_t of, double gap) {
        row_.assign(count_, 0.0);
        for (std::size_t i = 0; i < count_; ++i)
            row_[i] = kPull * end[i];
        row_[of] -= kPull;
        Add(count_, -kPull * gap);
    }

    bool Solve(double damping, std::vector<double>& step) const {
        std::vector<double> factor = matrix_;
        step = slope_;
        for (std::size_t i = 0; i < count_; ++i)
            factor[i * count_ + i] += damping * factor[i * count_ + i] + kRidge;
        if (NR_cholesky_decomp(static_cast<int>(count_), factor.data()) == 0)
            return false;
        NR_cholesky_solve(static_cast<int>(count_), factor.data(), step.data());
        return true;
    }

private:
    void Add(std::size_t used, double residual) {
        for (std::size_t r = 0; r < used; ++r) {
            for (std::size_t c = 0; c <= r; ++c)
                matrix_[r * count_ + c] += row_[r] * row_[c];
            slope_[r] -= row_[r] * residual;
        }
    }

    std::size_t count_;
    std::vector<double> matrix_; // lower triangle
    std::vector<double> slope_;
    std::vector<double> row_;
};

NormalEquations EquationsOf(const PricedPath& ink, const LinkedRun& run) {
    const std::size_t count = CountOf(run);
    NormalEquations equations(count);
    Sensitivity at;
    for (std::size_t s = 0; s < kOwn; ++s) {
        at[s].assign(count, 0.0);
        at[s][s] = 1.0;
    }
    const Link end = EndOf(run);
    for (std::size_t k = 0; k < run.links.size(); ++k) {
        const Link& link = run.links[k];
        const std::size_t own = kOwn + 2 * k;
        const PointRange range = FittedTo(run, k);
        for (int i = range.from; i < range.to; ++i) {
            const Point& p = ink.path.At(i);
            const Aside aside = AsideOf(link, p);
            equations.Add(at, SlopeOf(link, p, aside), own, aside.distance);
        }
        if (link.hasTarget)
            equations.Add(at, {0.0, 0.0, kTarget, 0.0, 0.0}, own, OffTarget(link));
        const std::array<Moves, kOwn> leads =
            LeadsOf(link, k + 1 < run.links.size() ? run.links[k + 1] : end);
        Sensitivity next = at;
        for (std::size_t s = 0; s < kOwn; ++s)
            for (std::size_t i = 0; i < own + 2; ++i) {
                next[s][i] = i >= own ? leads[s][kOwn + i - own] : 0.0;
                for (std::size_t t = 0; t < kOwn; ++t)
                    next[s][i] += leads[s][t] * at[t][i];
            }
        at = std::move(next);
    }
    const Point gap = run.links.front().start - end.start;
    equations.AddGap(at[kX], kX, gap.x);
    equations.AddGap(at[kY], kY, gap.y);
    equations.AddGap(at[kHeading], kHeading, HeadingGap(run, end));
    return equations;
}

double MeritOf(const PricedPath& ink, const LinkedRun& run) {
    const Link end = EndOf(run);
    const double turn = HeadingGap(run, end);
    return MisfitOf(ink, run).sumSq +
           kPull * kPull * (run.links.front().start.Distance2(end.start) + turn * turn);
}

void Take(const std::vector<double>& step, LinkedRun& run) {
    run.origin += Point(step[kX], step[kY]);
    run.heading += step[kHeading];
    for (std::size_t k = 0; k < run.links.size(); ++k) {
        run.links[k].curvature += step[kOwn + 2 * k];
        run.links[k].length += step[kOwn + 2 * k + 1];
    }
    Lay(run);
}

// One step; false when none makes the fit better worth mentioning.
bool ImproveRing(const PricedPath& ink, double& damping, LinkedRun& run) {
    AssignPoints(ink, run);
    const NormalEquations equations = EquationsOf(ink, run);
    const double before = MeritOf(ink, run);
    std::vector<double> step;
    for (double tried = damping; tried <= kMostDamping && equations.Solve(tried, step); tried *= 10.0) {
        LinkedRun next = run;
        Take(step, next);
        const double after = IsSound(next) ? MeritOf(ink, next) : before;
        if (!(after < before))
            continue;
        run = std::move(next);
        damping = std::max(0.1 * tried, kLeastDamping);
        return after < (1.0 - kWorthwhile) * before;
    }
    return false;
}

// A value of a run that closing may change, and what it changes: the end against the start, the directions
// that have a target.
struct Value {
    std::size_t link;
    Move move;
    double reach; // how far it moves what follows
    std::vector<double> rows;
};

std::vector<std::size_t> TargetsOf(const LinkedRun& run) {
    std::vector<std::size_t> targets;
    for (std::size_t k = 0; k < run.links.size(); ++k)
        if (run.links[k].hasTarget)
            targets.push_back(k);
    return targets;
}

Value ValueOf(const LinkedRun& run, std::size_t k, Move move, double reach,
              const std::vector<std::size_t>& targets, const Link& end) {
    const Link& next = k + 1 < run.links.size() ? run.links[k + 1] : end;
    const std::array<Moves, kOwn> leads = LeadsOf(run.links[k], next);
    const Point rest = end.start - next.start;
    const double turn = leads[kHeading][move];
    Value value{k, move, reach, {leads[kX][move] - turn * rest.y, leads[kY][move] + turn * rest.x, turn}};
    for (const std::size_t target : targets)
        value.rows.push_back(target > k ? turn : 0.0);
    return value;
}

double CurvatureOf(const Link& link) {
    return link.isArc ? link.curvature : 0.0;
}

std::vector<Value> ValuesOf(const LinkedRun& run, const std::vector<std::size_t>& targets, const Link& end) {
    const Link& first = run.links.front();
    const Point across = end.start - first.start;
    std::vector<Value> values{{0, kLength, 1.0 / kSlide, {first.along.x, first.along.y, CurvatureOf(first)}},
                              {0, kHeading, kTurnReach, {-across.y, across.x, 0.0}}};
    values[0].rows.resize(3 + targets.size(), 0.0);
    values[1].rows.resize(3 + targets.size(), 1.0);
    for (std::size_t k = 0; k < run.links.size(); ++k) {
        const Link& link = run.links[k];
        if (k > 0)
            values.push_back(ValueOf(run, k, kLength, 1.0, targets, end));
        if (link.isArc)
            values.push_back(ValueOf(run, k, kCurvature, 0.5 * link.length * link.length, targets, end));
    }
    return values;
}

} // namespace

bool CloseUp(LinkedRun& run) {
    const std::vector<std::size_t> targets = TargetsOf(run);
    const std::size_t rows = 3 + targets.size();
    for (int round = 0; round < kClosings; ++round) {
        Lay(run);
        const Link end = EndOf(run);
        const Point gap = run.links.front().start - end.start;
        std::vector<double> missing{gap.x, gap.y, HeadingGap(run, end)};
        for (const std::size_t k : targets)
            missing.push_back(-OffTarget(run.links[k]) / kTarget);
        if (std::all_of(missing.begin(), missing.end(), [](double m) { return std::fabs(m) < kClosed; }))
            return true;
        const std::vector<Value> values = ValuesOf(run, targets, end);
        std::vector<double> gram(rows * rows);
        for (const Value& value : values)
            for (std::size_t r = 0; r < rows; ++r)
                for (std::size_t c = 0; c <= r; ++c)
                    gram[r * rows + c] += value.rows[r] * value.rows[c] / (value.reach * value.reach);
        if (NR_cholesky_decomp(static_cast<int>(rows), gram.data()) == 0)
            return false;
        NR_cholesky_solve(static_cast<int>(rows), gram.data(), missing.data());
        const Point along = run.links.front().along;
        const double bend = CurvatureOf(run.links.front());
        for (const Value& value : values) {
            double step = 0.0;
            for (std::size_t r = 0; r < rows; ++r)
                step += value.rows[r] * missing[r] / (value.reach * value.reach);
            Link& link = run.links[value.link];
            (value.move == kHeading  ? run.heading
             : value.move == kLength ? link.length
                                     : link.curvature) += step;
            if (value.link == 0 && value.move == kLength) { // the link's other end stays
                run.origin += -step * along;
                run.heading -= step * bend;
            }
        }
    }
    return false;
}

bool FitRing(const PricedPath& ink, LinkedRun& run) {
    Lay(run);
    double damping = kLeastDamping;
    const int rounds = run.links.size() > kMostLinks ? 0 : kRounds;
    for (int round = 0; round < rounds && ImproveRing(ink, damping, run); ++round) {
    }
    return CloseUp(run) && IsSound(run);
}

} // namespace Tessera::Geometry
