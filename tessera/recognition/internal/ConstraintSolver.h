// ConstraintSolver - keeps a sketch on an independent set of constraints while further ones are tried.
//
// Invariant: between calls the sketch satisfies every accepted constraint, the rows of their equations are
// linearly independent, and no point has moved by the tolerance zone or more since the sketch was read.
// An attempt costs what the connected part of the sketch costs that it touches.
#pragma once

#include <span>
#include <vector>

#include "tessera/recognition/internal/ConstraintEquations.h"
#include "tessera/recognition/internal/RowSpace.h"

namespace Tessera::Geometry {

class ConstraintSolver {
public:
    /// Of the zone: residuals below this are zero at the end.
    static constexpr double kFinalAccuracy = 1e-9;
    /// Sine of the angle between a row and the span of the others below which it adds nothing: a motion of
    /// the zone in the one direction that is left would take one of fifty zones. A dependent row at a
    /// satisfied sketch leaves 1e-6; between the two lie the neighbours of singular shapes, such as the third
    /// parallel pair of an equilateral hexagon, which solvers find redundant as well.
    static constexpr double kLeastSine = 0.02;
    /// The same where hundreds of curves give way as one, none of them far: their motions add up to a long
    /// step.
    static constexpr double kLeastSineOfMany = 2e-4;

    /// The sketch is borrowed for this object's life.
    /// @param mostTurnRad an equal size that would turn a line by more is not taken.
    ConstraintSolver(SketchParameters& sketch, double toleranceZone, double mostTurnRad);

    /// Starts with the sketch as it is and no constraints. The first fixedCount curves will stay as they are.
    /// To be called first, and whenever the sketch has been changed from outside.
    void Begin(int fixedCount, double leastSine = kLeastSine);

    enum class Verdict {
        Taken,
        Dependent, ///< its equations do not all raise the rank
        OutOfReach ///< the sketch cannot satisfy it with the others inside the tolerance zone
    };
    /// Takes the constraint and adjusts the sketch, or leaves everything as it was.
    Verdict TryAdd(const InferredConstraint& c);
    /// Takes those of the constraints whose rows are independent, all of them, and adjusts the sketch; or
    /// leaves everything as it was, and false. When a few curves would leave their zones it is tried once
    /// more with these pinned: after a success the next call is Begin.
    bool TryTogether(std::span<const InferredConstraint> set);
    /// Takes in a constraint that the sketch satisfies already, to be kept. Its rows may depend on earlier
    /// ones (then false): where these keep it satisfied that does no harm, and nothing is accepted where they
    /// do not.
    bool Hold(const InferredConstraint& c);
    /// Takes in a constraint that the sketch satisfies already if its rows are independent of earlier ones.
    bool Keep(const InferredConstraint& c);
    /// Whether the constraint holds already and its rows all depend on those of the set.
    bool IsImplied(const InferredConstraint& c);
    /// Moves every connected part of the sketch to the point nearest to the drawing (least squares of the
    /// motions) among those that satisfy all constraints, and drops any constraint that has become dependent
    /// on earlier ones. The last call.
    void Settle();
    /// The same without asking for the rank, with residuals up to this part of the zone.
    void Approach(double accuracy);

    const std::vector<InferredConstraint>& Accepted() const { return accepted_; }
    double LargestMotion() const;
    /// As RowSpace::Work.
    double Work() const { return rows_.Work(); }

private:
    /// A step that does not bring the residual below this part of the one before counts as a failure of the
    /// iteration.
    static constexpr double kLeastProgress = 0.5;
    /// Times that the rows are evaluated anew within one attempt before it is given up.
    static constexpr int kMostRenewals = 4;
    /// A single step of several zones leads nowhere: the constraint asks for another sketch.
    static constexpr double kLongestStep = 4.0;
    enum class Outcome { Accepted, TooFar, Diverged };
    enum class Role : char { Independent, Given, Dropped };
    struct RowSource {
        int constraint; ///< -1: none
        int part;
        double scale; ///< as in UnitRow
    };
    // Attempts at several.
    bool Reaches(std::span<const InferredConstraint> set, std::vector<int>& strayed);
    void Pin(int curve);
    void ResizeRows(int rowCount);
    // The set.
    void Append(const InferredConstraint& c, Role role);
    double Enter(const InferredConstraint& c);
    bool IsCombination(const InferredConstraint& c);
    bool Fill(int number, double limit, double* leastSine);
    bool IsCombination(const UnitRow& row);
    void AddToStep(const UnitRow& row, double factor);
    void Leave();
    void AnchorAt(const InferredConstraint& c);
    void AddToAnchor(const InferredConstraint& c);
    void CollectComponent();
    bool Renew();
    void DropLost();
    int FilledCount(int number) const;
    /// Whether the constraint's residuals count.
    bool IsFollowed(int number) const {
        return roles_[number] == Role::Given || rows_.IsFilled(firstRow_[number]);
    }
    double DriftNear(const InferredConstraint& c) const;
    // Moving the sketch.
    Outcome Converge(double accuracy, int mostRenewals = kMostRenewals);
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
    void SettleComponent(double accuracy);
    double Relax(double accuracy);
    std::vector<int> CurvesOfComponent() const;

    SketchParameters& sketch_;
    double zone_;
    double mostTurn_; ///< radians
    double leastSine_ = kLeastSine;
    int movable_ = 0;       ///< index of the first parameter that may change
    double rounding_ = 0.0; ///< model units: what no residual can be expected to go below
    std::vector<int> curveOfParameter_;
    std::vector<double> extent_; ///< per curve: the length that turns a motion into an angle
    std::vector<InferredConstraint> accepted_;
    std::vector<Role> roles_;                     ///< per constraint
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
