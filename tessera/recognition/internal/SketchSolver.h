// SketchSolver - keeps a sketch of any size on an independent set of constraints while further ones are
// tried.
//
// What is connected and small is solved whole (ConstraintSolver). In a larger connected part an attempt moves
// only a window: curves near the candidate along the constraints, with all else fixed. A window's yes is
// safe: rows that are independent over some of the columns are independent, and a sketch that can be adjusted
// with the rest fixed can be adjusted. What only a motion of the whole part could satisfy is refused there,
// and may be tried together at the end.
#pragma once

#include <map>
#include <utility>
#include <vector>

#include "tessera/recognition/internal/ConstraintSolver.h"
#include "tessera/recognition/internal/DisjointSets.h"

namespace Tessera::Geometry {

class SketchSolver {
public:
    /// The sketch is borrowed for this object's life and changed by it, but for its first fixedCount curves.
    /// @param mostTurnRad as for ConstraintSolver.
    SketchSolver(SketchParameters& sketch, double toleranceZone, double mostTurnRad, int fixedCount);

    enum class Verdict { Taken, Implied, Refused };
    /// Takes the constraint and adjusts the sketch, or leaves everything as it was. Implied: the constraint
    /// holds and is redundant; not every redundant one is known for that.
    Verdict TryAdd(const InferredConstraint& c);
    /// Moves the sketch nearer to the drawing along the constraints, and drops those that have become
    /// dependent on others. The last call, but that TryTogether may follow, and then Settle again.
    void Settle();
    /// Takes those of the constraints that are independent, all of them, with the whole sketch giving way; or
    /// none, and false.
    bool TryTogether(std::vector<InferredConstraint> set);
    /// False when this would cost too much, or when small parts have been solved as a whole anyway.
    bool CanTryTogether() const { return isWhole_ && whole_.Work() + workToSettle_ < mostWork_; }

    const std::vector<InferredConstraint>& Accepted() const { return accepted_; }
    double LargestMotion() const { return whole_.LargestMotion(); }

private:
    bool MayMove(int curve) const { return curve >= fixedCount_; }
    int SizeWith(const InferredConstraint& c);
    DisjointSets* GroupsOf(ConstraintKind_e kind);
    std::pair<int, int> SidesOf(const InferredConstraint& c) const;
    void Note(const InferredConstraint& c);
    // Windows.
    void Open(int curve);
    void OpenNamed(const InferredConstraint& c);
    bool OpenGroups(const InferredConstraint& c, DisjointSets& groups);
    void OpenNear(std::size_t mostCurves);
    void CloseWindow(const InferredConstraint* candidate);
    void LeaveWindow();
    InferredConstraint InWindow(InferredConstraint c) const;
    void HoldAll(int fixedCount);
    Verdict TryInWindow(const InferredConstraint& c);
    Verdict TryWithGroups(const InferredConstraint& c, DisjointSets& groups);
    Verdict SolveWindow(const InferredConstraint& c);
    // The end.
    bool HoldWhole();
    bool SettleWhole();
    void Drop(const InferredConstraint& dependent);
    void SettleWindow(std::vector<char>& isDropped);
    void Polish();
    bool MoveBy(const std::vector<double>& step);

    /// Curves that are connected and solved whole.
    static constexpr int kMostWhole = 200;

    SketchParameters& sketch_;
    double zone_;
    int fixedCount_;
    ConstraintSolver whole_;
    SketchParameters part_;     ///< the window's curves
    ConstraintSolver inWindow_; ///< of part_
    std::vector<InferredConstraint> accepted_;
    std::vector<std::vector<int>> constraintsOf_; ///< per curve, ascending
    bool hasLarge_ = false;
    DisjointSets connected_; ///< curves
    // Curves that have one direction, or one size, by the constraints. The place after the last curve is what
    // no constraint can turn or change.
    DisjointSets directions_;
    DisjointSets sizes_;
    std::map<std::pair<int, int>, int> refusals_; ///< of making one of two groups
    // A large sketch as a whole.
    bool isWhole_ = false;
    double mostWork_ = 0.0; ///< of the solver, to try more
    double workToSettle_ = 0.0;
    std::vector<InferredConstraint> dependent_; ///< constraints of the basis
    // The window at hand: what stays where it is comes first.
    std::vector<int> curves_;
    int windowFixed_ = 0;          ///< so many of them
    int neverMoves_ = 0;           ///< so many of these may not move anywhere
    std::vector<int> constraints_; ///< all that name one of the others, ascending
    std::vector<int> placeOf_;     ///< per curve, in the window; -1: none
};

} // namespace Tessera::Geometry
