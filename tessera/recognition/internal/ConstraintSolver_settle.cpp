#include <algorithm>

#include "tessera/recognition/internal/ConstraintSolver.h"

// The end: of all sketches that satisfy the set, the one nearest to the drawing.

namespace Tessera::Geometry {

namespace {

constexpr int kRelaxations = 4;
/// The sketch is near enough to the drawing when relaxing moves it by less than this part of the zone.
constexpr double kRelaxed = 1e-4;

} // namespace

void ConstraintSolver::Settle() {
    ReplayAll();
    Approach(kFinalAccuracy);
}

void ConstraintSolver::Approach(double accuracy) {
    std::vector<char> isSettled(sources_.size(), 0);
    for (int row = 0; row < rows_.RowCount(); ++row) {
        if (isSettled[row] != 0 || !rows_.IsFilled(row))
            continue;
        AnchorAt(accepted_[sources_[row].constraint]);
        SettleComponent(accuracy);
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
void ConstraintSolver::SettleComponent(double accuracy) {
    lost_.clear();
    CollectComponent();
    open_ = component_; // evaluated by ReplayAll
    if (Converge(accuracy) == Outcome::Accepted && MotionsHold(zone_))
        NoteDrift();
    else
        Undo();
    for (int round = 0; round < kRelaxations && Relax(accuracy) > kRelaxed * zone_; ++round) {
    }
}

/// Those that may move.
std::vector<int> ConstraintSolver::CurvesOfComponent() const {
    std::vector<int> curves;
    for (int row : component_)
        ForCurvesOf(accepted_[sources_[row].constraint], [&](int curve) {
            if (sketch_.At(curve).first >= movable_)
                curves.push_back(curve);
        });
    std::sort(curves.begin(), curves.end());
    curves.erase(std::unique(curves.begin(), curves.end()), curves.end());
    return curves;
}

/// One step towards the drawing along the constraints, then back onto them. Returns its size, 0 when it was
/// taken back.
double ConstraintSolver::Relax(double accuracy) {
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
    if (hasMoved && Renew()) {
        UpdateResiduals(); // also of what goes without rows
        if (Converge(accuracy) == Outcome::Accepted && MotionsHold(zone_)) {
            NoteDrift();
            return largest;
        }
    }
    Undo();
    return 0.0;
}

} // namespace Tessera::Geometry
