// ConstraintSolver - keeps a sketch on an independent set of constraints while further ones are tried.
//
// Invariant: between calls the sketch satisfies every accepted constraint, the rows of their equations are
// linearly independent, and no point has moved by the tolerance zone or more since the sketch was read.
#pragma once

#include <vector>

#include "tessera/recognition/internal/ConstraintEquations.h"
#include "tessera/recognition/internal/RowSpace.h"

namespace Tessera::Geometry {

class ConstraintSolver {
public:
    /// The sketch is borrowed for this object's life and changed by it, but for its first fixedCount curves.
    ConstraintSolver(SketchParameters& sketch, double toleranceZone, int fixedCount = 0);

    /// Accepts the constraint and adjusts the sketch, or returns false with everything as it was: its
    /// equations do not all raise the rank, or the sketch cannot satisfy it with the others inside the
    /// tolerance zone.
    bool TryAdd(const InferredConstraint& c);
    /// Moves the sketch to the point nearest to the drawing (least squares of the motions) among those that
    /// satisfy all constraints, and drops any constraint that has become dependent on earlier ones.
    void Settle();

    const std::vector<InferredConstraint>& Accepted() const { return accepted_; }
    double LargestMotion() const;

private:
    enum class Outcome { Accepted, Dependent, TooFar, Diverged };
    struct RowSource {
        int constraint;
        int part;
        double scale; ///< 1 / length of the gradient: residual times this is a distance
    };

    bool AppendRows(const InferredConstraint& c, int number, double* leastSine);
    void DropRows(int rowCount);
    std::vector<int> Rebuild();
    Outcome Attempt(const InferredConstraint& c);
    void Enlist(int number);
    void DropLast();
    Outcome Converge(int firstRow);
    bool ConvergeAll();
    bool MoveBy(double limit);
    double UpdateResiduals(int* firstRow);
    double LargestResidual() const;
    bool MotionsHold(double limit) const;
    double Relax();
    void Undo();
    void MarkChanged(int curve);
    void NoteDrift();
    double DriftNear(const InferredConstraint& c) const;

    SketchParameters& sketch_;
    double zone_;
    int movable_;     ///< index of the first parameter that may change
    double accuracy_; ///< model units: residuals below it are zero
    std::vector<int> curveOfParameter_;
    std::vector<double> extent_; ///< per curve: the length that turns a motion into an angle
    std::vector<InferredConstraint> accepted_;
    std::vector<int> firstRow_;                   ///< per constraint
    std::vector<std::vector<int>> constraintsOf_; ///< per curve
    std::vector<RowSource> sources_;              ///< per row
    RowSpace rows_;
    /// Per curve: radians, how far its directions may have turned since the rows were evaluated.
    std::vector<double> driftOf_;
    ///< were evaluated
    int renewals_ = 0; ///< how often the rows were evaluated anew
    // One attempt.
    std::vector<double> residuals_; ///< per row, distances
    std::vector<double> step_;      ///< per parameter, whitened
    std::vector<int> touched_;
    std::vector<int> changed_; ///< curves
    std::vector<char> isChanged_;
    std::vector<double> saved_; ///< per parameter
};

} // namespace Tessera::Geometry
