#include <algorithm>
#include <cmath>
#include <limits>

#include "tessera/recognition/internal/ConstraintSolver.h"

// How the sketch moves: chord iterations with the rows at hand. Only curves that move and the constraints on
// them are looked at again.

namespace Tessera::Geometry {

namespace {

/// Of the accuracy: curves that would move by less stay.
constexpr double kLeastStep = 0.01;
/// Of the largest residual: less of a step is not carried on from row to row; what that leaves open the next
/// step mends.
constexpr double kLeastInfluence = 1e-4;
constexpr int kMostSteps = 30;
/// Of the zone: how far a point may stray on the way to a solution that keeps it inside.
constexpr double kOvershoot = 1.2;
/// A turn that was there before may grow by this factor.
constexpr double kSameTurn = 1.1;

/// Angle between two lines' directions, radians.
double TurnBetween(const double* a, const double* b) {
    const Point u(a[2] - a[0], a[3] - a[1]);
    const Point v(b[2] - b[0], b[3] - b[1]);
    return std::fabs(std::atan2(u.Cross(v), u.Dot(v)));
}

} // namespace

void ConstraintSolver::MarkChanged(int curve) {
    if (isChanged_[curve] != 0)
        return;
    isChanged_[curve] = 1;
    changed_.push_back(curve);
    const SketchCurve& c = sketch_.At(curve);
    std::copy_n(sketch_.Of(curve), c.count, saved_.begin() + c.first);
}

void ConstraintSolver::Undo() {
    for (int curve : changed_) {
        const SketchCurve& c = sketch_.At(curve);
        std::copy_n(saved_.begin() + c.first, c.count, sketch_.Of(curve));
        isChanged_[curve] = 0;
    }
    changed_.clear();
}

/// Ends a successful attempt: notes how far directions may have turned.
void ConstraintSolver::NoteDrift() {
    for (int curve : changed_) {
        const SketchCurve& c = sketch_.At(curve);
        double motionSq = 0.0;
        double delta[kMaxDualSize];
        for (int k = 0; k < c.count; ++k)
            delta[k] = sketch_.Of(curve)[k] - saved_[c.first + k];
        sketch_.WhitenStep(curve, delta);
        for (int k = 0; k < c.count; ++k)
            motionSq += delta[k] * delta[k];
        driftOf_[curve] += std::sqrt(motionSq) / extent_[curve];
        isChanged_[curve] = 0;
    }
    changed_.clear();
}

/// Applies step_ to the curves of touched_ that it moves by more than is negligible and clears both; false
/// without a change when the step is longer than the limit (or no number).
bool ConstraintSolver::MoveBy(double limit, double negligible) {
    double largest = 0.0;
    bool fits = true;
    for (int column : touched_) {
        largest = std::max(largest, std::fabs(step_[column]));
        fits = fits && !std::isnan(step_[column]);
    }
    fits = fits && largest <= limit;
    for (int column : touched_) {
        const int curve = curveOfParameter_[column];
        const SketchCurve& c = sketch_.At(curve);
        double* step = step_.data() + c.first; // all zero when the curve has been moved already
        const bool moves =
            std::any_of(step, step + c.count, [&](double s) { return std::fabs(s) > negligible; });
        if (fits && moves) {
            MarkChanged(curve);
            sketch_.UnwhitenStep(curve, step);
            for (int k = 0; k < c.count; ++k)
                sketch_.Of(curve)[k] += step[k];
        }
        std::fill_n(step, c.count, 0.0);
    }
    touched_.clear();
    return fits;
}

/// Opens the rows of the constraints on changed curves. Returns the largest of their residuals.
double ConstraintSolver::UpdateResiduals() {
    open_.clear();
    for (int curve : changed_)
        for (int number : constraintsOf_[curve]) {
            if (isSeen_[number] != 0 || !IsFollowed(number))
                continue;
            isSeen_[number] = 1;
            double f[kMostEquations];
            EvaluateResiduals(accepted_[number], sketch_, f);
            for (int part = 0; part < EquationCount(accepted_[number]); ++part) {
                const int row = firstRow_[number] + part;
                residuals_[row] = f[part] * sources_[row].scale;
                open_.push_back(row);
            }
        }
    for (int row : open_)
        isSeen_[sources_[row].constraint] = 0;
    return LargestResidual();
}

double ConstraintSolver::LargestResidual() const {
    double largest = 0.0;
    for (int row : open_) {
        if (std::isnan(residuals_[row]))
            return std::numeric_limits<double>::infinity();
        largest = std::max(largest, std::fabs(residuals_[row]));
    }
    return largest;
}

/// Steps until all residuals vanish; those of rows that are not open do. Chord steps, with fresh rows where
/// these gain too little.
ConstraintSolver::Outcome ConstraintSolver::Converge(double relativeAccuracy, int mostRenewals) {
    const double accuracy = std::max(relativeAccuracy * zone_, rounding_);
    double before = LargestResidual();
    int renewals = 0;
    for (int step = 0; step < kMostSteps && before > accuracy; ++step) {
        rows_.ShortestStep(open_, residuals_, kLeastInfluence, step_, touched_);
        if (!MoveBy(kLongestStep * zone_, kLeastStep * accuracy) || !MotionsHold(kOvershoot * zone_))
            return Outcome::TooFar;
        double now = UpdateResiduals();
        if (now > kLeastProgress * before && now > accuracy) {
            if (++renewals > mostRenewals || !Renew())
                return Outcome::Diverged;
            now = UpdateResiduals();
        }
        before = now;
    }
    return before <= accuracy ? Outcome::Accepted : Outcome::Diverged;
}

bool ConstraintSolver::MotionsHold(double limit) const {
    for (int curve : changed_)
        if (!(sketch_.Motion(curve) < limit))
            return false;
    return true;
}

/// Opposite sides of a quadrilateral that are made equal turn the others: what was drawn clearly tilted must
/// not become parallel to an axis that way. Turns that joints have made before are none of its business.
bool ConstraintSolver::TurnsHold(ConstraintKind_e kind) const {
    if (kind != ConstraintKind_EqualLength && kind != ConstraintKind_EqualRadius)
        return true;
    return std::all_of(changed_.begin(), changed_.end(), [&](int curve) {
        const SketchCurve& c = sketch_.At(curve);
        if (c.shape != SketchShape::Line)
            return true;
        const double* drawn = sketch_.StartValuesOf(curve);
        const double turn = TurnBetween(drawn, sketch_.Of(curve));
        return turn <= mostTurn_ || turn <= kSameTurn * TurnBetween(drawn, saved_.data() + c.first);
    });
}

double ConstraintSolver::LargestMotion() const {
    double largest = 0.0;
    for (int curve = 0; curve < sketch_.CurveCount(); ++curve)
        largest = std::max(largest, sketch_.Motion(curve));
    return largest;
}

} // namespace Tessera::Geometry
