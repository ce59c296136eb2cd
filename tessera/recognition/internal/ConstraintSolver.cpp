#include "tessera/recognition/internal/ConstraintSolver.h"

#include <algorithm>
#include <cmath>
#include <limits>

// Gauss-Newton in the minimum-motion norm. The rows of the accepted equations are kept factored (RowSpace),
// and a candidate's step is solved with the factor at hand: the sketch moves by a few hundredths of its size,
// so a chord iteration gains one to two digits a step. Only curves that move and the constraints on them are
// looked at again.
//
// The rank is a property of the satisfied sketch: rows taken elsewhere hide dependencies. When the sketch has
// moved since the rows were evaluated and a new row comes close to their span, the rows that are connected
// with it are evaluated anew before the decision is made.

namespace Tessera::Geometry {

namespace {

/// Sine of the angle between a row and the span of the others below which it adds nothing: a motion of the
/// zone in the one direction that is left would take one of fifty zones. A dependent row at a satisfied
/// sketch leaves 1e-6; between the two lie the neighbours of singular shapes, such as the third parallel pair
/// of an equilateral hexagon, which solvers find redundant as well.
constexpr double kLeastSine = 0.02;
/// The same for rows of the set that are evaluated anew on the way: one that the moving sketch has brought a
/// little below the limit is judged at the end.
constexpr double kLeastKeptSine = 0.01;
/// A sine above this many drifts is trusted although the rows are not fresh.
constexpr double kDriftMargin = 2.0;
/// Components of a unit row below this are left out: far less than the drift that rows endure, and what a
/// line that is horizontal to the accuracy of trials leaves in its other direction, which would tie the two
/// directions of a drawing together.
constexpr double kNegligible = 1e-6;
/// Rows with a smaller part in a combination are left out of it.
constexpr double kLeastShare = 1e-5;
/// Residuals are zero below this part of the tolerance zone while constraints are tried, and at the end; or
/// below rounding of the coordinates.
constexpr double kTrialAccuracy = 1e-6;
constexpr double kFinalAccuracy = 1e-9;
constexpr double kRounding = 256.0 * std::numeric_limits<double>::epsilon();
/// Of the accuracy: curves that would move by less stay.
constexpr double kLeastStep = 0.01;
/// Of the largest residual: less of a step is not carried on from row to row; what that leaves open the next
/// step mends.
constexpr double kLeastInfluence = 1e-4;
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
/// A turn that was there before may grow by this factor.
constexpr double kSameTurn = 1.1;
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

/// Angle between two lines' directions, radians.
double TurnBetween(const double* a, const double* b) {
    const Point u(a[2] - a[0], a[3] - a[1]);
    const Point v(b[2] - b[0], b[3] - b[1]);
    return std::fabs(std::atan2(u.Cross(v), u.Dot(v)));
}

} // namespace

ConstraintSolver::ConstraintSolver(SketchParameters& sketch, double toleranceZone, double mostTurnRad,
                                   int fixedCount)
    : sketch_(sketch), zone_(toleranceZone), mostTurn_(mostTurnRad),
      movable_(fixedCount < sketch.CurveCount() ? sketch.At(fixedCount).first : sketch.ParameterCount()),
      constraintsOf_(static_cast<std::size_t>(sketch.CurveCount())), rows_(sketch.ParameterCount()),
      driftOf_(static_cast<std::size_t>(sketch.CurveCount()), 0.0),
      step_(static_cast<std::size_t>(sketch.ParameterCount()), 0.0),
      isTouched_(static_cast<std::size_t>(sketch.ParameterCount()), 0),
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
    rounding_ = kRounding * largest;
}

bool ConstraintSolver::TryAdd(const InferredConstraint& c) {
    const double drift = DriftNear(c);
    AnchorAt(c);
    double sine = Enter(c);
    if (sine < kDriftMargin * drift) {
        if (sine > kLeastSine)
            Leave();
        if (IsCombination(c))
            return false;
        Renew();
        lost_.clear();
        sine = Enter(c);
    }
    if (!(sine > kLeastSine))
        return false;
    const int renewalsBefore = renewals_;
    if (Converge(kTrialAccuracy) == Outcome::Accepted && MotionsHold(zone_) && TurnsHold(c.kind)) {
        NoteDrift();
        return true;
    }
    Undo();
    Leave();
    if (renewals_ != renewalsBefore) {
        Renew(); // the rows were taken at a place that the sketch has left
        lost_.clear();
    }
    return false;
}

// --- The set --------------------------------------------------------------------------------------------

/// Calls visit for each curve that the constraint names, once.
template <class Visit>
void ConstraintSolver::ForCurvesOf(const InferredConstraint& c, Visit visit) const {
    for (int e = 0; e < c.elementCount; ++e) {
        bool isFirst = true;
        for (int k = 0; k < e; ++k)
            isFirst = isFirst && c.elements[k].curve != c.elements[e].curve;
        if (isFirst)
            visit(c.elements[e].curve);
    }
}

/// Adds the constraint to the set if its rows are independent. Returns the smallest of their sines.
double ConstraintSolver::Enter(const InferredConstraint& c) {
    const int number = static_cast<int>(accepted_.size());
    accepted_.push_back(c);
    firstRow_.push_back(rows_.RowCount());
    isSeen_.push_back(0);
    for (int part = 0; part < EquationCount(c); ++part)
        sources_.push_back({number, part, 0.0});
    rows_.Extend(EquationCount(c));
    residuals_.resize(sources_.size());
    ForCurvesOf(c, [&](int curve) { constraintsOf_[curve].push_back(number); });
    open_.clear();
    double sine = 0.0;
    if (!Fill(number, kLeastSine, &sine))
        Leave();
    return sine;
}

/// Takes back the last constraint.
void ConstraintSolver::Leave() {
    ForCurvesOf(accepted_.back(), [&](int curve) { constraintsOf_[curve].pop_back(); });
    rows_.Truncate(firstRow_.back());
    sources_.resize(static_cast<std::size_t>(firstRow_.back()));
    residuals_.resize(sources_.size());
    accepted_.pop_back();
    firstRow_.pop_back();
    isSeen_.pop_back();
    std::erase(lost_, static_cast<int>(accepted_.size()));
}

/// The rows of a constraint at the present sketch. Returns their number.
int ConstraintSolver::UnitRows(const InferredConstraint& c, UnitRow* unit) const {
    EquationRow rows[kMostEquations];
    EvaluateRows(c, sketch_, rows);
    for (int part = 0; part < EquationCount(c); ++part) {
        const EquationRow& row = rows[part];
        // What cannot move has no column. A constraint between fixed curves has no row, and is never taken.
        double lengthSq = 0.0;
        for (int i = 0; i < row.count; ++i)
            lengthSq += row.index[i] < movable_ ? 0.0 : row.value[i] * row.value[i];
        const double length = std::sqrt(lengthSq);
        unit[part].count = 0;
        for (int i = 0; i < row.count; ++i)
            if (row.index[i] >= movable_ && std::fabs(row.value[i]) > kNegligible * length)
                unit[part].entries[unit[part].count++] = {row.index[i], row.value[i] / length};
        unit[part].scale = 1.0 / length;
        unit[part].residual = row.residual / length;
    }
    return EquationCount(c);
}

/// Evaluates the rows of a constraint and fills their places, which become open; none when one is dependent.
bool ConstraintSolver::Fill(int number, double limit, double* leastSine) {
    UnitRow rows[kMostEquations];
    const int parts = UnitRows(accepted_[number], rows);
    *leastSine = 1.0;
    for (int part = 0; part < parts; ++part) {
        const UnitRow& row = rows[part];
        const int place = firstRow_[number] + part;
        const double sine = rows_.Fill(place, {row.entries, static_cast<std::size_t>(row.count)}, limit);
        *leastSine = std::min(*leastSine, sine);
        if (!(sine > limit)) {
            for (int filled = part; filled-- > 0;) {
                rows_.Empty(firstRow_[number] + filled);
                open_.pop_back();
            }
            return false;
        }
        sources_[place].scale = row.scale;
        residuals_[place] = row.residual;
        open_.push_back(place);
    }
    return true;
}

/// Whether one of the constraint's rows is certainly dependent at the present sketch, as far as can be told
/// without evaluating and factoring everything that is connected with it anew.
bool ConstraintSolver::IsCombination(const InferredConstraint& c) {
    UnitRow rows[kMostEquations];
    const int parts = UnitRows(c, rows);
    for (int part = 0; part < parts; ++part)
        if (IsCombination(rows[part]))
            return true;
    return false;
}

/// Any combination of fresh rows bounds the sine from above. The one asked for is found with the factor of
/// the rows as they were, which takes off all but a few hundredths each time.
bool ConstraintSolver::IsCombination(const UnitRow& row) {
    AddToStep(row, 1.0);
    double rest = 1.0;
    double before = 4.0;
    while (rest > kLeastSine && rest < kLeastProgress * before) {
        rows_.Combine(touched_, step_, kLeastShare, combination_);
        for (const SparseEntry& e : combination_)
            if (std::fabs(e.value) > kLeastShare) {
                UnitRow rows[kMostEquations];
                UnitRows(accepted_[sources_[e.at].constraint], rows);
                AddToStep(rows[sources_[e.at].part], -e.value);
            }
        before = rest;
        double restSq = 0.0;
        for (int column : touched_)
            restSq += step_[column] * step_[column];
        rest = std::sqrt(restSq);
    }
    for (int column : touched_)
        step_[column] = isTouched_[column] = 0;
    touched_.clear();
    return rest <= kLeastSine;
}

void ConstraintSolver::AddToStep(const UnitRow& row, double factor) {
    for (int i = 0; i < row.count; ++i) {
        const int column = row.entries[i].at;
        if (isTouched_[column] == 0) {
            isTouched_[column] = 1;
            touched_.push_back(column);
        }
        step_[column] += factor * row.entries[i].value;
    }
}

void ConstraintSolver::AnchorAt(const InferredConstraint& c) {
    anchor_.clear();
    AddToAnchor(c);
}

void ConstraintSolver::AddToAnchor(const InferredConstraint& c) {
    ForCurvesOf(c, [&](int curve) {
        for (int k = 0; k < sketch_.At(curve).count; ++k)
            anchor_.push_back(sketch_.At(curve).first + k);
    });
}

/// The rows connected with the anchor, constraints whole, and the places that have lost theirs, which may
/// come back.
void ConstraintSolver::CollectComponent() {
    for (int number : lost_)
        AddToAnchor(accepted_[number]);
    std::size_t known = 0;
    do { // the two rows of a constraint may belong to different components
        known = anchor_.size();
        rows_.CollectConnected(anchor_, component_);
        for (int row : component_)
            ++isSeen_[sources_[row].constraint];
        for (int row : component_) {
            const InferredConstraint& c = accepted_[sources_[row].constraint];
            char& seen = isSeen_[sources_[row].constraint];
            if (seen != 0 && seen < EquationCount(c))
                AddToAnchor(c);
            seen = 0;
        }
    } while (anchor_.size() > known);
    for (int number : lost_)
        for (int part = 0; part < EquationCount(accepted_[number]); ++part)
            component_.push_back(firstRow_[number] + part);
    std::sort(component_.begin(), component_.end());
}

/// Evaluates the rows that are connected with the anchor at the present sketch, and opens them. Constraints
/// that are dependent on earlier ones lose their rows; false when there are any.
bool ConstraintSolver::Renew() {
    ++renewals_;
    CollectComponent();
    rows_.EmptyComponents(component_);
    open_.clear();
    lost_.clear();
    for (int row : component_) {
        const int number = sources_[row].constraint;
        if (sources_[row].part != 0)
            continue;
        double sine = 0.0;
        if (!Fill(number, kLeastKeptSine, &sine))
            lost_.push_back(number);
        ForCurvesOf(accepted_[number], [&](int curve) { driftOf_[curve] = 0.0; });
    }
    return lost_.empty();
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
            if (isSeen_[number] != 0 || !rows_.IsFilled(firstRow_[number]))
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
ConstraintSolver::Outcome ConstraintSolver::Converge(double relativeAccuracy) {
    const double accuracy = std::max(relativeAccuracy * zone_, rounding_);
    double before = LargestResidual();
    int renewals = 0;
    for (int step = 0; step < kMostSteps && before > accuracy; ++step) {
        rows_.ShortestStep(open_, residuals_, kLeastInfluence, step_, touched_);
        if (!MoveBy(kLongestStep * zone_, kLeastStep * accuracy) || !MotionsHold(kOvershoot * zone_))
            return Outcome::TooFar;
        double now = UpdateResiduals();
        if (now > kLeastProgress * before && now > accuracy) {
            if (++renewals > kMostRenewals || !Renew())
                return Outcome::Diverged;
            now = LargestResidual();
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

// --- The end --------------------------------------------------------------------------------------------

void ConstraintSolver::Settle() {
    ReplayAll();
    std::vector<char> isSettled(sources_.size(), 0);
    for (int row = 0; row < rows_.RowCount(); ++row) {
        if (isSettled[row] != 0)
            continue;
        AnchorAt(accepted_[sources_[row].constraint]);
        SettleComponent();
        for (int member : component_)
            isSettled[member] = 1;
    }
}

/// Enters the constraints that still have rows again, in order, at the present sketch.
void ConstraintSolver::ReplayAll() {
    std::vector<InferredConstraint> held;
    for (std::size_t number = 0; number < accepted_.size(); ++number)
        if (rows_.IsFilled(firstRow_[number]))
            held.push_back(accepted_[number]);
    while (!accepted_.empty())
        Leave();
    for (const InferredConstraint& c : held)
        Enter(c);
}

/// Settles what is connected with the anchor.
void ConstraintSolver::SettleComponent() {
    lost_.clear();
    CollectComponent();
    open_ = component_; // evaluated by ReplayAll
    if (Converge(kFinalAccuracy) == Outcome::Accepted && MotionsHold(zone_))
        NoteDrift();
    else
        Undo();
    for (int round = 0; round < kRelaxations && Relax() > kRelaxed * zone_; ++round) {
    }
}

std::vector<int> ConstraintSolver::CurvesOfComponent() const {
    std::vector<int> curves;
    for (int row : component_)
        ForCurvesOf(accepted_[sources_[row].constraint], [&](int curve) { curves.push_back(curve); });
    std::sort(curves.begin(), curves.end());
    curves.erase(std::unique(curves.begin(), curves.end()), curves.end());
    return curves;
}

/// One step towards the drawing along the constraints, then back onto them. Returns its size, 0 when it was
/// taken back.
double ConstraintSolver::Relax() {
    double largest = 0.0;
    for (int curve : CurvesOfComponent()) {
        const SketchCurve& c = sketch_.At(curve);
        for (int k = 0; k < c.count; ++k) {
            step_[c.first + k] = sketch_.StartValuesOf(curve)[k] - sketch_.Of(curve)[k];
            touched_.push_back(c.first + k);
        }
        sketch_.WhitenStep(curve, step_.data() + c.first);
    }
    rows_.RemoveSpan(component_, step_);
    for (int column : touched_)
        largest = std::max(largest, std::fabs(step_[column]));
    const bool hasMoved = MoveBy(kLongestStep * zone_, 0.0);
    if (hasMoved && Renew() && Converge(kFinalAccuracy) == Outcome::Accepted && MotionsHold(zone_)) {
        NoteDrift();
        return largest;
    }
    Undo();
    return 0.0;
}

} // namespace Tessera::Geometry
