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
// moved since the rows were evaluated and a new row comes close to their span, the rows that are connected
// with it are evaluated anew before the decision is made.

namespace Tessera::Geometry {

namespace {

/// Of the least sine, for rows of the set that are evaluated anew on the way: one that the moving sketch has
/// brought a little below the limit is judged at the end.
constexpr double kKeptShare = 0.5;
/// Curves that a second attempt leaves where they are.
constexpr std::size_t kMostPinned = 12;
/// A sine above this many drifts is trusted although the rows are not fresh.
constexpr double kDriftMargin = 2.0;
/// Rows with a smaller part in a combination are left out of it.
constexpr double kLeastShare = 1e-5;
/// Residuals are zero below this part of the tolerance zone while constraints are tried; or below rounding of
/// the coordinates.
constexpr double kTrialAccuracy = 1e-6;
/// What follows from constraints that hold to the accuracy of trials holds to this.
constexpr double kImpliedAccuracy = 1e-4;
constexpr double kRounding = 256.0 * std::numeric_limits<double>::epsilon();

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

ConstraintSolver::ConstraintSolver(SketchParameters& sketch, double toleranceZone, double mostTurnRad)
    : sketch_(sketch), zone_(toleranceZone), mostTurn_(mostTurnRad) {}

void ConstraintSolver::Begin(int fixedCount, double leastSine) {
    const auto curveCount = static_cast<std::size_t>(sketch_.CurveCount());
    const auto parameterCount = static_cast<std::size_t>(sketch_.ParameterCount());
    leastSine_ = leastSine;
    movable_ = fixedCount < sketch_.CurveCount() ? sketch_.At(fixedCount).first : sketch_.ParameterCount();
    curveOfParameter_.clear();
    extent_.clear();
    double largest = 0.0;
    for (int i = 0; i < sketch_.CurveCount(); ++i) {
        const SketchCurve& c = sketch_.At(i);
        curveOfParameter_.insert(curveOfParameter_.end(), static_cast<std::size_t>(c.count), i);
        extent_.push_back(std::max(ExtentOf(c, sketch_.Of(i)), 0.1 * zone_));
        for (int k = 0; k < c.count; ++k)
            largest = std::max(largest, std::fabs(sketch_.Of(i)[k]));
    }
    rounding_ = kRounding * largest;
    accepted_.clear();
    roles_.clear();
    firstRow_.clear();
    sources_.clear();
    lost_.clear();
    isSeen_.clear();
    if (constraintsOf_.size() < curveCount)
        constraintsOf_.resize(curveCount);
    for (std::vector<int>& numbers : constraintsOf_)
        numbers.clear();
    rows_.Reset(sketch_.ParameterCount());
    driftOf_.assign(curveCount, 0.0);
    isChanged_.assign(curveCount, 0);
    step_.assign(parameterCount, 0.0);
    isTouched_.assign(parameterCount, 0);
    saved_.resize(parameterCount);
}

ConstraintSolver::Verdict ConstraintSolver::TryAdd(const InferredConstraint& c) {
    const double drift = DriftNear(c);
    AnchorAt(c);
    double sine = Enter(c);
    if (sine < kDriftMargin * drift) {
        if (sine > leastSine_)
            Leave();
        if (IsCombination(c))
            return Verdict::Dependent;
        Renew();
        DropLost();
        sine = Enter(c);
    }
    if (!(sine > leastSine_))
        return Verdict::Dependent;
    const int renewalsBefore = renewals_;
    if (Converge(kTrialAccuracy) == Outcome::Accepted && MotionsHold(zone_) && TurnsHold(c.kind)) {
        NoteDrift();
        return Verdict::Taken;
    }
    Undo();
    Leave();
    if (renewals_ != renewalsBefore) {
        Renew(); // the rows were taken at a place that the sketch has left
        DropLost();
    }
    return Verdict::OutOfReach;
}

bool ConstraintSolver::TryTogether(std::span<const InferredConstraint> set) {
    std::vector<int> strayed;
    if (Reaches(set, strayed))
        return true;
    if (strayed.empty() || strayed.size() > kMostPinned)
        return false;
    const int rowCount = rows_.RowCount();
    for (const int curve : strayed)
        Pin(curve);
    if (Reaches(set, strayed))
        return true;
    ResizeRows(rowCount);
    return false;
}

/// Enters what is independent and moves the sketch onto it; or leaves everything as it was and tells which
/// curves would leave their zones.
bool ConstraintSolver::Reaches(std::span<const InferredConstraint> set, std::vector<int>& strayed) {
    const std::size_t before = accepted_.size();
    const int firstRow = rows_.RowCount();
    for (const InferredConstraint& c : set)
        Enter(c);
    open_.resize(static_cast<std::size_t>(rows_.RowCount() - firstRow));
    std::iota(open_.begin(), open_.end(), firstRow);
    if (Converge(kTrialAccuracy, 0) == Outcome::Accepted && MotionsHold(zone_) &&
        TurnsHold(ConstraintKind_EqualLength)) {
        NoteDrift();
        return true;
    }
    strayed.clear();
    std::copy_if(changed_.begin(), changed_.end(), std::back_inserter(strayed),
                 [&](int curve) { return !(sketch_.Motion(curve) < zone_); });
    Undo();
    while (accepted_.size() > before)
        Leave();
    return false;
}

/// The curve's coordinates become rows of no constraint.
void ConstraintSolver::Pin(int curve) {
    for (int k = 0; k < sketch_.At(curve).count; ++k) {
        const int place = rows_.RowCount();
        const SparseEntry entry{sketch_.At(curve).first + k, 1.0};
        ResizeRows(place + 1);
        rows_.Fill(place, {&entry, 1}, leastSine_);
    }
}

void ConstraintSolver::ResizeRows(int rowCount) {
    rows_.Truncate(rowCount);
    rows_.Extend(rowCount - rows_.RowCount());
    sources_.resize(static_cast<std::size_t>(rowCount), {-1, 0, 0.0});
    residuals_.resize(sources_.size(), 0.0);
}

// --- The set --------------------------------------------------------------------------------------------

bool ConstraintSolver::Hold(const InferredConstraint& c) {
    Append(c, Role::Given);
    double sine = 0.0;
    Fill(static_cast<int>(accepted_.size()) - 1, kKeptShare * leastSine_, &sine);
    return sine > kKeptShare * leastSine_;
}

bool ConstraintSolver::Keep(const InferredConstraint& c) {
    return Enter(c) > leastSine_;
}

bool ConstraintSolver::IsImplied(const InferredConstraint& c) {
    Hold(c);
    const int number = static_cast<int>(accepted_.size()) - 1;
    const bool isImplied = FilledCount(number) == 0 && LargestResidual() <= kImpliedAccuracy * zone_;
    Leave();
    return isImplied;
}

/// Adds the constraint to the set if its rows are independent. Returns the smallest of their sines.
double ConstraintSolver::Enter(const InferredConstraint& c) {
    Append(c, Role::Independent);
    double sine = 0.0;
    if (!Fill(static_cast<int>(accepted_.size()) - 1, leastSine_, &sine))
        Leave();
    return sine;
}

/// Makes places for the constraint's rows.
void ConstraintSolver::Append(const InferredConstraint& c, Role role) {
    const int number = static_cast<int>(accepted_.size());
    accepted_.push_back(c);
    roles_.push_back(role);
    firstRow_.push_back(rows_.RowCount());
    isSeen_.push_back(0);
    for (int part = 0; part < EquationCount(c); ++part)
        sources_.push_back({number, part, 0.0});
    rows_.Extend(EquationCount(c));
    residuals_.resize(sources_.size());
    ForCurvesOf(c, [&](int curve) { constraintsOf_[curve].push_back(number); });
    open_.clear();
}

/// Takes back the last constraint.
void ConstraintSolver::Leave() {
    ForCurvesOf(accepted_.back(), [&](int curve) { constraintsOf_[curve].pop_back(); });
    rows_.Truncate(firstRow_.back());
    sources_.resize(static_cast<std::size_t>(firstRow_.back()));
    residuals_.resize(sources_.size());
    accepted_.pop_back();
    roles_.pop_back();
    firstRow_.pop_back();
    isSeen_.pop_back();
    std::erase(lost_, static_cast<int>(accepted_.size()));
}

/// Evaluates the rows of a constraint and fills their places, which become open. When one is dependent, a
/// given constraint goes without that row; of others none is filled, and the answer is false.
bool ConstraintSolver::Fill(int number, double limit, double* leastSine) {
    UnitRow rows[kMostEquations];
    const int parts = EvaluateUnitRows(accepted_[number], sketch_, movable_, rows);
    const std::size_t openBefore = open_.size();
    *leastSine = 1.0;
    for (int part = 0; part < parts; ++part) {
        const UnitRow& row = rows[part];
        const int place = firstRow_[number] + part;
        const double sine = rows_.Fill(place, {row.entries, static_cast<std::size_t>(row.count)}, limit);
        *leastSine = std::min(*leastSine, sine);
        if (!(sine > limit) && roles_[number] != Role::Given) {
            for (int filled = part; filled-- > 0;)
                rows_.Empty(firstRow_[number] + filled);
            open_.resize(openBefore);
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
    const int parts = EvaluateUnitRows(c, sketch_, movable_, rows);
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
    while (rest > leastSine_ && rest < kLeastProgress * before) {
        rows_.Combine(touched_, step_, kLeastShare, combination_);
        for (const SparseEntry& e : combination_)
            if (std::fabs(e.value) > kLeastShare) {
                UnitRow rows[kMostEquations];
                EvaluateUnitRows(accepted_[sources_[e.at].constraint], sketch_, movable_, rows);
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
    return rest <= leastSine_;
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
            if (seen != 0 && seen < FilledCount(sources_[row].constraint))
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
    int last = -1;
    for (int row : component_) {
        const int number = sources_[row].constraint;
        if (number == last)
            continue;
        last = number;
        double sine = 0.0;
        if (!Fill(number, kKeptShare * leastSine_, &sine))
            lost_.push_back(number);
        ForCurvesOf(accepted_[number], [&](int curve) { driftOf_[curve] = 0.0; });
    }
    return lost_.empty();
}

/// Constraints that are dependent on earlier ones where the sketch satisfies all leave the set for good.
void ConstraintSolver::DropLost() {
    for (int number : lost_)
        roles_[number] = Role::Dropped;
    lost_.clear();
}

int ConstraintSolver::FilledCount(int number) const {
    int filled = 0;
    for (int part = 0; part < EquationCount(accepted_[number]); ++part)
        filled += rows_.IsFilled(firstRow_[number] + part) ? 1 : 0;
    return filled;
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

} // namespace Tessera::Geometry
