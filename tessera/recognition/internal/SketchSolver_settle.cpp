#include <algorithm>
#include <cmath>

#include "tessera/recognition/internal/SketchSolver.h"

// Where the whole is too much, a large part of the sketch is settled by windows that overlap by half. Each
// leaves its constraints satisfied but for those that its fixed surroundings have to satisfy, which keep the
// accuracy of trials; conjugate gradients over the whole sketch take away what is left (M. R. Hestenes, E.
// Stiefel, J. Res. Nat. Bur. Standards 49 (1952) 409-436). They need no factor, and a step this small needs
// no full accuracy.

namespace Tessera::Geometry {

namespace {

/// Curves of a window that is settled, where more are connected.
constexpr int kSettledCurves = 100;
/// Of the zone: more than trials leave.
constexpr double kWindowAccuracy = 1e-5;
constexpr int kMostPolishes = 3;
constexpr int kMostIterations = 300;
/// Of the largest residual before: what one step leaves.
constexpr double kLeastGain = 1e-5;

using Rows = std::vector<UnitRow>;

/// step := J^T weights.
void Combine(const Rows& rows, const std::vector<double>& weights, std::vector<double>& step) {
    std::fill(step.begin(), step.end(), 0.0);
    for (std::size_t i = 0; i < rows.size(); ++i)
        for (int k = 0; k < rows[i].count; ++k)
            step[rows[i].entries[k].at] += weights[i] * rows[i].entries[k].value;
}

double Along(const UnitRow& row, const std::vector<double>& step) {
    double sum = 0.0;
    for (int k = 0; k < row.count; ++k)
        sum += row.entries[k].value * step[row.entries[k].at];
    return sum;
}

double Dot(const std::vector<double>& a, const std::vector<double>& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += a[i] * b[i];
    return sum;
}

/// The shortest step that takes the residuals away: J step = -residuals, step = J^T weights.
std::vector<double> ShortestStep(const Rows& rows, std::size_t parameters) {
    std::vector<double> rest(rows.size());
    std::vector<double> step(parameters, 0.0);
    std::vector<double> move(parameters);
    std::vector<double> image(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
        rest[i] = -rows[i].residual;
    std::vector<double> direction = rest;
    double restSq = Dot(rest, rest);
    const double enough = kLeastGain * kLeastGain * restSq;
    for (int iteration = 0; iteration < kMostIterations && restSq > enough; ++iteration) {
        Combine(rows, direction, move);
        for (std::size_t i = 0; i < rows.size(); ++i)
            image[i] = Along(rows[i], move);
        const double length = restSq / Dot(direction, image);
        for (std::size_t i = 0; i < parameters; ++i)
            step[i] += length * move[i];
        for (std::size_t i = 0; i < rows.size(); ++i)
            rest[i] -= length * image[i];
        const double before = restSq;
        restSq = Dot(rest, rest);
        for (std::size_t i = 0; i < rows.size(); ++i)
            direction[i] = rest[i] + restSq / before * direction[i];
    }
    return step;
}

} // namespace

void SketchSolver::Settle() {
    if (!hasLarge_) {
        whole_.Settle();
        accepted_ = whole_.Accepted();
        return;
    }
    if (SettleWhole())
        return;
    std::vector<char> isDropped(accepted_.size(), 0);
    std::vector<char> isSettled(placeOf_.size(), 0);
    for (int curve = fixedCount_; curve < sketch_.CurveCount(); ++curve) {
        if (isSettled[curve] != 0 || constraintsOf_[curve].empty())
            continue;
        Open(curve);
        const int connected = connected_.SizeOf(curve);
        OpenNear(static_cast<std::size_t>(connected > kMostWhole ? kSettledCurves : connected));
        // The outer half of a window comes again.
        const std::size_t settled = connected > kMostWhole ? (curves_.size() + 1) / 2 : curves_.size();
        for (std::size_t i = 0; i < settled; ++i)
            isSettled[curves_[i]] = 1;
        CloseWindow(nullptr);
        SettleWindow(isDropped);
        LeaveWindow();
    }
    std::vector<InferredConstraint> kept;
    for (std::size_t i = 0; i < accepted_.size(); ++i)
        if (isDropped[i] == 0)
            kept.push_back(accepted_[i]);
    accepted_ = std::move(kept);
    Polish();
}

/// Drops what depends on earlier constraints of the window, all curves free, then moves the window's curves.
void SketchSolver::SettleWindow(std::vector<char>& isDropped) {
    part_.SetPart(sketch_, curves_);
    inWindow_.Begin(neverMoves_);
    std::erase_if(constraints_, [&](int number) {
        if (isDropped[number] == 0 && inWindow_.Keep(InWindow(accepted_[number])))
            return false;
        isDropped[number] = 1;
        return true;
    });
    HoldAll(windowFixed_);
    inWindow_.Approach(windowFixed_ > neverMoves_ ? kWindowAccuracy : ConstraintSolver::kFinalAccuracy);
    sketch_.TakeBack(part_, curves_);
}

/// Takes away the last residuals.
void SketchSolver::Polish() {
    const int movable =
        fixedCount_ < sketch_.CurveCount() ? sketch_.At(fixedCount_).first : sketch_.ParameterCount();
    Rows rows;
    for (int round = 0; round < kMostPolishes; ++round) {
        rows.clear();
        double largest = 0.0;
        for (const InferredConstraint& c : accepted_) {
            UnitRow unit[kMostEquations];
            const int count = EvaluateUnitRows(c, sketch_, movable, unit);
            for (int part = 0; part < count; ++part) {
                rows.push_back(unit[part]);
                largest = std::max(largest, std::fabs(unit[part].residual));
            }
        }
        if (largest <= ConstraintSolver::kFinalAccuracy * zone_ ||
            !MoveBy(ShortestStep(rows, static_cast<std::size_t>(sketch_.ParameterCount()))))
            return;
    }
}

/// False, with nothing moved, when a point would leave the tolerance zone.
bool SketchSolver::MoveBy(const std::vector<double>& step) {
    bool fits = true;
    std::vector<double> before;
    for (int curve = 0; curve < sketch_.CurveCount(); ++curve) {
        const SketchCurve& c = sketch_.At(curve);
        double delta[kMaxDualSize];
        std::copy_n(step.data() + c.first, c.count, delta);
        sketch_.UnwhitenStep(curve, delta);
        before.insert(before.end(), sketch_.Of(curve), sketch_.Of(curve) + c.count);
        for (int k = 0; k < c.count; ++k)
            sketch_.Of(curve)[k] += delta[k];
        fits = fits && (sketch_.Motion(curve) < zone_ || !MayMove(curve));
    }
    if (!fits)
        for (int curve = 0; curve < sketch_.CurveCount(); ++curve)
            std::copy_n(before.data() + sketch_.At(curve).first, sketch_.At(curve).count, sketch_.Of(curve));
    return fits;
}

} // namespace Tessera::Geometry
