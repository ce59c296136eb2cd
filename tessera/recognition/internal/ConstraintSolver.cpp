#include "tessera/recognition/internal/ConstraintSolver.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

// Gauss-Newton in the minimum-motion norm. The rows of the accepted equations are kept factored (RowSpace),
// and a candidate's step is solved with the factor at hand: the sketch moves by a few hundredths of its size,
// so a chord iteration gains one to two digits a step. Only curves that move and the constraints on them are
// looked at again.
//
// The rank is a property of the satisfied sketch: rows taken elsewhere hide dependencies. When the sketch has
// moved since the rows were evaluated and a new row comes close to their span, the rows are evaluated anew
// before the decision is made.

namespace Tessera::Geometry {

namespace {

/// Sine of the angle between a row and the span of the others below which it adds nothing: a motion of the
/// zone in the one direction that is left would take one of fifty zones. A dependent row at a satisfied
/// sketch leaves 1e-8; between the two lie the neighbours of singular shapes, such as the third parallel pair
/// of an equilateral hexagon, which solvers find redundant as well.
constexpr double kLeastSine = 0.02;
/// A sine above this many drifts is trusted although the rows are not fresh.
constexpr double kDriftMargin = 2.0;
/// Residuals are zero below this part of the tolerance zone, or below rounding of the coordinates.
constexpr double kAccuracy = 1e-9;
constexpr double kRounding = 256.0 * std::numeric_limits<double>::epsilon();
constexpr int kMostSteps = 30;
/// A step that does not bring the residual below this part of the one before counts as a failure of the
/// iteration.
constexpr double kLeastProgress = 0.5;
/// Times that the rows are evaluated anew within one attempt before it is given up.
constexpr int kMostRenewals = 4;
/// A single step of several zones leads nowhere: the constraint asks for another sketch.
constexpr double kLongestStep = 4.0;
/// Of the zone: how far a point may stray on the way to a solution that keeps it inside.
constexpr double kOvershoot = 1.2;
constexpr int kRelaxations = 4;
/// The sketch is near enough to the drawing when relaxing moves it by less than this part of the zone.
constexpr double kRelaxed = 1e-4;

double ExtentOf(const SketchCurve& c, const double* p) {
    switch (c.shape) {
    case SketchShape::Circle:
        return p[2];
    case SketchShape::Arc:
        return p[2] * std::min(1.0, std::fabs(p[4] - p[3]));
    case SketchShape::Ellipse:
    case SketchShape::EllipseArc:
        return std::min(p[2], p[3]);
    case SketchShape::Fixed:
        return 1.0;
    default:
        return std::hypot(p[2] - p[0], p[3] - p[1]);
    }
}

} // namespace

ConstraintSolver::ConstraintSolver(SketchParameters& sketch, double toleranceZone, int fixedCount)
    : sketch_(sketch), zone_(toleranceZone),
      movable_(fixedCount < sketch.CurveCount() ? sketch.At(fixedCount).first : sketch.ParameterCount()),
      constraintsOf_(static_cast<std::size_t>(sketch.CurveCount())), rows_(sketch.ParameterCount()),
      driftOf_(static_cast<std::size_t>(sketch.CurveCount()), 0.0),
      step_(static_cast<std::size_t>(sketch.ParameterCount()), 0.0),
      isChanged_(static_cast<std::size_t>(sketch.CurveCount()), 0),
      saved_(static_cast<std::size_t>(sketch.ParameterCount())) {
    double largest = 0.0;
    for (int i = 0; i < sketch.CurveCount(); ++i) {
        const SketchCurve& c = sketch.At(i);
        curveOfParameter_.insert(curveOfParameter_.end(), static_cast<std::size_t>(c.count), i);
        extent_.push_back(std::max(ExtentOf(c, sketch.Of(i)), 0.1 * zone_));
        for (int k = 0; k < c.count; ++k)
            largest = std::max(largest, std::fabs(sketch.Of(i)[k]));
    }
    accuracy_ = std::max(kAccuracy * zone_, kRounding * largest);
}

bool ConstraintSolver::TryAdd(const InferredConstraint& c) {
    return Attempt(c) == Outcome::Accepted;
}

void ConstraintSolver::Enlist(int number) {
    const InferredConstraint& c = accepted_[number];
    for (int e = 0; e < c.elementCount; ++e) {
        std::vector<int>& list = constraintsOf_[c.elements[e].curve];
        if (list.empty() || list.back() != number)
            list.push_back(number);
    }
}

void ConstraintSolver::DropLast() {
    const InferredConstraint& c = accepted_.back();
    const int number = static_cast<int>(accepted_.size()) - 1;
    for (int e = 0; e < c.elementCount; ++e) {
        std::vector<int>& list = constraintsOf_[c.elements[e].curve];
        if (!list.empty() && list.back() == number)
            list.pop_back();
    }
    DropRows(firstRow_.back());
    accepted_.pop_back();
    firstRow_.pop_back();
}

ConstraintSolver::Outcome ConstraintSolver::Attempt(const InferredConstraint& c) {
    const int number = static_cast<int>(accepted_.size());
    int rowsBefore = rows_.RowCount();
    double sine = 1.0;
    bool independent = AppendRows(c, number, &sine);
    if (sine < kDriftMargin * DriftNear(c)) {
        Rebuild();
        rowsBefore = rows_.RowCount();
        independent = AppendRows(c, number, &sine);
    }
    if (!independent) {
        DropRows(rowsBefore);
        return Outcome::Dependent;
    }
    accepted_.push_back(c);
    firstRow_.push_back(rowsBefore);
    Enlist(number);
    changed_.clear();
    const int renewalsBefore = renewals_;
    Outcome outcome = Converge(rowsBefore);
    if (outcome == Outcome::Accepted && !MotionsHold(zone_))
        outcome = Outcome::TooFar;
    if (outcome == Outcome::Accepted) {
        NoteDrift();
    } else {
        Undo();
        DropLast();
        if (renewals_ != renewalsBefore)
            Rebuild(); // the rows were taken at a place that the sketch has left
    }
    return outcome;
}

/// Appends the rows of a constraint; false at the first that is dependent. The smallest sine is told.
bool ConstraintSolver::AppendRows(const InferredConstraint& c, int number, double* leastSine) {
    EquationRow rows[kMostEquations];
    EvaluateRows(c, sketch_, rows);
    *leastSine = 1.0;
    for (int part = 0; part < EquationCount(c); ++part) {
        EquationRow& row = rows[part];
        // What cannot move has no column. A constraint between fixed curves has no row, and is never taken.
        for (int i = 0; i < row.count; ++i)
            row.value[i] = row.index[i] < movable_ ? 0.0 : row.value[i];
        const double length = std::sqrt(std::inner_product(row.value, row.value + row.count, row.value, 0.0));
        if (!(length > 0.0)) {
            *leastSine = 0.0;
            return false;
        }
        for (int i = 0; i < row.count; ++i)
            row.value[i] /= length;
        const double sine = rows_.Append({row.index, static_cast<std::size_t>(row.count)},
                                         {row.value, static_cast<std::size_t>(row.count)}, kLeastSine);
        *leastSine = std::min(*leastSine, sine);
        if (!(sine > kLeastSine))
            return false;
        sources_.push_back({number, part, 1.0 / length});
        residuals_.push_back(row.residual / length);
    }
    return true;
}

void ConstraintSolver::DropRows(int rowCount) {
    rows_.Truncate(rowCount);
    sources_.resize(static_cast<std::size_t>(rowCount));
    residuals_.resize(static_cast<std::size_t>(rowCount));
}

/// Evaluates all rows at the present sketch. Returns the constraints that are dependent on earlier ones, in
/// order; they keep their places but have no rows.
std::vector<int> ConstraintSolver::Rebuild() {
    std::vector<int> dependent;
    ++renewals_;
    DropRows(0);
    for (int number = 0; number < static_cast<int>(accepted_.size()); ++number) {
        const int before = rows_.RowCount();
        firstRow_[number] = before;
        double sine = 0.0;
        if (!AppendRows(accepted_[number], number, &sine)) {
            DropRows(before);
            dependent.push_back(number);
        }
    }
    std::fill(driftOf_.begin(), driftOf_.end(), 0.0);
    return dependent;
}

/// Largest drift of the constraint's curves and of those that share a constraint with them: theirs are the
/// rows that the constraint's rows are compared with.
double ConstraintSolver::DriftNear(const InferredConstraint& c) const {
    double largest = 0.0;
    for (int e = 0; e < c.elementCount; ++e) {
        const int curve = c.elements[e].curve;
        largest = std::max(largest, driftOf_[curve]);
        for (int number : constraintsOf_[curve])
            for (int k = 0; k < accepted_[number].elementCount; ++k)
                largest = std::max(largest, driftOf_[accepted_[number].elements[k].curve]);
    }
    return largest;
}

// --- Moving the sketch ----------------------------------------------------------------------------------

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

/// Applies step_ to the curves of touched_ and clears both; false without a change when the step is longer
/// than the limit (or no number).
bool ConstraintSolver::MoveBy(double limit) {
    double lengthSq = 0.0;
    std::sort(touched_.begin(), touched_.end());
    touched_.erase(std::unique(touched_.begin(), touched_.end()), touched_.end());
    for (int column : touched_)
        lengthSq = std::max(lengthSq, step_[column] * step_[column]);
    const bool fits = lengthSq <= limit * limit;
    const double negligible = 0.01 * accuracy_;
    for (std::size_t i = 0; i < touched_.size();) {
        const int curve = curveOfParameter_[touched_[i]];
        const SketchCurve& c = sketch_.At(curve);
        double largest = 0.0;
        for (; i < touched_.size() && touched_[i] < c.first + c.count; ++i)
            largest = std::max(largest, std::fabs(step_[touched_[i]]));
        double* step = step_.data() + c.first;
        if (fits && largest > negligible) {
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

/// Residuals of the constraints on changed curves. Returns the largest; *firstRow the first row that has one.
double ConstraintSolver::UpdateResiduals(int* firstRow) {
    double largest = 0.0;
    *firstRow = rows_.RowCount();
    for (int curve : changed_)
        for (int number : constraintsOf_[curve]) {
            double f[kMostEquations];
            EvaluateResiduals(accepted_[number], sketch_, f);
            for (int part = 0; part < EquationCount(accepted_[number]); ++part) {
                const int row = firstRow_[number] + part;
                if (row >= rows_.RowCount() || sources_[row].constraint != number)
                    continue; // found dependent by Rebuild
                residuals_[row] = f[part] * sources_[row].scale;
                *firstRow = std::min(*firstRow, row);
                largest = std::max(largest, std::fabs(residuals_[row]));
                if (std::isnan(f[part]))
                    return std::numeric_limits<double>::infinity();
            }
        }
    return largest;
}

/// Steps until all residuals vanish; those of rows before firstRow do so at the start. Chord steps, with
/// fresh rows where these gain too little.
ConstraintSolver::Outcome ConstraintSolver::Converge(int firstRow) {
    std::fill(residuals_.begin(), residuals_.begin() + firstRow, 0.0);
    double before = LargestResidual();
    int renewals = 0;
    for (int step = 0; step < kMostSteps && before > accuracy_; ++step) {
        rows_.ShortestStep(residuals_, firstRow, step_, touched_);
        if (!MoveBy(kLongestStep * zone_) || !MotionsHold(kOvershoot * zone_))
            return Outcome::TooFar;
        double now = UpdateResiduals(&firstRow);
        if (now > kLeastProgress * before && now > accuracy_) {
            if (++renewals > kMostRenewals || !Rebuild().empty())
                return Outcome::Diverged;
            firstRow = 0;
            now = LargestResidual();
        }
        before = now;
    }
    return before <= accuracy_ ? Outcome::Accepted : Outcome::Diverged;
}

double ConstraintSolver::LargestResidual() const {
    double largest = 0.0;
    for (double r : residuals_)
        largest = std::max(largest, std::fabs(r));
    return largest;
}

bool ConstraintSolver::MotionsHold(double limit) const {
    for (int curve : changed_)
        if (!(sketch_.Motion(curve) < limit))
            return false;
    return true;
}

/// From wherever the sketch is: fresh rows, then steps.
bool ConstraintSolver::ConvergeAll() {
    for (int round = 0; round < 3; ++round) {
        Rebuild();
        if (Converge(0) == Outcome::Accepted)
            return true;
    }
    return false;
}

void ConstraintSolver::Settle() {
    const std::vector<int> dependent = Rebuild();
    for (std::size_t i = dependent.size(); i-- > 0;) {
        accepted_.erase(accepted_.begin() + dependent[i]);
        firstRow_.pop_back();
    }
    for (std::vector<int>& list : constraintsOf_)
        list.clear();
    for (int number = 0; number < static_cast<int>(accepted_.size()); ++number)
        Enlist(number);
    Rebuild();
    for (int round = 0; round < kRelaxations && Relax() > kRelaxed * zone_; ++round) {
    }
}

/// One step towards the drawing along the constraints, then back onto them. Returns its size, 0 when it was
/// taken back.
double ConstraintSolver::Relax() {
    std::vector<double> back(step_.size());
    for (int curve = 0; curve < sketch_.CurveCount(); ++curve) {
        const SketchCurve& c = sketch_.At(curve);
        for (int k = 0; k < c.count; ++k)
            back[c.first + k] = sketch_.StartValuesOf(curve)[k] - sketch_.Of(curve)[k];
        sketch_.WhitenStep(curve, back.data() + c.first);
    }
    rows_.RemoveRowSpace(back);
    double largest = 0.0;
    for (double v : back)
        largest = std::max(largest, std::fabs(v));
    step_ = back;
    touched_.resize(step_.size());
    std::iota(touched_.begin(), touched_.end(), 0);
    changed_.clear();
    if (MoveBy(kLongestStep * zone_) && ConvergeAll() && MotionsHold(zone_)) {
        NoteDrift();
        Rebuild();
        return largest;
    }
    Undo();
    Rebuild();
    return 0.0;
}

double ConstraintSolver::LargestMotion() const {
    double largest = 0.0;
    for (int curve = 0; curve < sketch_.CurveCount(); ++curve)
        largest = std::max(largest, sketch_.Motion(curve));
    return largest;
}

} // namespace Tessera::Geometry
