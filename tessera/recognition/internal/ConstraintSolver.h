// ConstraintSolver - keeps a sketch on an independent set of constraints while further ones are tried.
//
// Invariant: between calls the sketch satisfies every accepted constraint, the rows of their equations are
// linearly independent, and no point has moved by the tolerance zone or more since the sketch was read.
// An attempt costs what the connected part of the sketch costs that it touches.
#pragma once

#include <vector>

#include "tessera/recognition/internal/ConstraintEquations.h"
#include "tessera/recognition/internal/RowSpace.h"

namespace Tessera::Geometry {

class ConstraintSolver {
public:
    /// The sketch is borrowed for this object's life and changed by it, but for its first fixedCount curves.
    /// @param mostTurnRad an equal size that would turn a line by more is not taken.
    ConstraintSolver(SketchParameters& sketch, double toleranceZone, double mostTurnRad, int fixedCount);

    /// Accepts the constraint and adjusts the sketch, or returns false with everything as it was: its
    /// equations do not all raise the rank, or the sketch cannot satisfy it with the others inside the
    /// tolerance zone.
    bool TryAdd(const InferredConstraint& c);
    /// Moves every connected part of the sketch to the point nearest to the drawing (least squares of the
    /// motions) among those that satisfy all constraints, and drops any constraint that has become dependent
    /// on earlier ones. The last call.
    void Settle();

    const std::vector<InferredConstraint>& Accepted() const { return accepted_; }
    double LargestMotion() const;

private:
    enum class Outcome { Accepted, Dependent, TooFar, Diverged };
    struct RowSource {
        int constraint;
        int part;
        double scale; ///< as in UnitRow
    };
    /// A row over what can move.
    struct UnitRow {
        int count = 0; ///< of entries; 0: nothing that the equation speaks of can move
        SparseEntry entries[kMaxDualSize];
        double residual = 0.0;
        double scale = 0.0; ///< 1 / length of the gradient: residual times this is a distance
    };

    // The set.
    double Enter(const InferredConstraint& c);
    bool IsCombination(const InferredConstraint& c);
    int UnitRows(const InferredConstraint& c, UnitRow* rows) const;
    bool Fill(int number, double limit, double* leastSine);
    bool IsCombination(const UnitRow& row);
    void AddToStep(const UnitRow& row, double factor);
    void Leave();
    void AnchorAt(const InferredConstraint& c);
    void AddToAnchor(const InferredConstraint& c);
    void CollectComponent();
    bool Renew();
    double DriftNear(const InferredConstraint& c) const;
    template <class Visit>
    void ForCurvesOf(const InferredConstraint& c, Visit visit) const;
    // Moving the sketch.
    Outcome Converge(double accuracy);
    bool MoveBy(double limit, double negligible);
    double UpdateResiduals();
    double LargestResidual() const;
    bool MotionsHold(double limit) const;
    bool TurnsHold(ConstraintKind_e kind) const;
    void MarkChanged(int curve);
    void Undo();
    void NoteDrift();
    // The end.
    void ReplayAll();
    void SettleComponent();
    double Relax();
    std::vector<int> CurvesOfComponent() const;

    SketchParameters& sketch_;
    double zone_;
    double mostTurn_; ///< radians
    int movable_;     ///< index of the first parameter that may change
    double rounding_; ///< model units: what no residual can be expected to go below
    std::vector<int> curveOfParameter_;
    std::vector<double> extent_; ///< per curve: the length that turns a motion into an angle
    std::vector<InferredConstraint> accepted_;
    std::vector<int> firstRow_;                   ///< per constraint
    std::vector<std::vector<int>> constraintsOf_; ///< per curve
    std::vector<RowSource> sources_;              ///< per row
    RowSpace rows_;
    /// Per curve: radians, how far its directions may have turned since its rows were evaluated.
    std::vector<double> driftOf_;
    std::vector<int> lost_; ///< constraints whose rows were found dependent when last evaluated
    int renewals_ = 0;      ///< how often rows were evaluated anew
    // One attempt.
    std::vector<int> anchor_;       ///< parameters; what is connected with them may move
    std::vector<int> component_;    ///< rows connected with the anchor, when last asked for
    std::vector<double> residuals_; ///< per row, distances
    std::vector<int> open_;         ///< the rows whose residuals need not be 0
    std::vector<double> step_;      ///< per parameter, whitened; zero between steps
    std::vector<int> touched_;      ///< parameters of the step
    std::vector<char> isTouched_;
    std::vector<SparseEntry> combination_;
    std::vector<int> changed_; ///< curves
    std::vector<char> isChanged_;
    std::vector<double> saved_; ///< per parameter
    std::vector<char> isSeen_;  ///< per constraint; zero between uses
};

} // namespace Tessera::Geometry
