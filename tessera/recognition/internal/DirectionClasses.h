// Which lines have directions that are tied to each other, or to the axes, by multiples of a quarter turn.
//
// A shortcut for the rank: a candidate between lines of one class is redundant (or in conflict) without
// asking the Jacobian. Union by root with the number of quarter turns, even or odd, to the root.
#pragma once

#include <numeric>
#include <utility>
#include <vector>

#include "tessera/recognition/ConstraintInference.h"

namespace Tessera::Geometry {

class DirectionClasses {
public:
    explicit DirectionClasses(int curveCount)
        : parent_(static_cast<std::size_t>(curveCount) + 1),
          odd_(static_cast<std::size_t>(curveCount) + 1, 0), axis_(curveCount) {
        std::iota(parent_.begin(), parent_.end(), 0);
    }

    bool Implies(const InferredConstraint& c) {
        const Tie tie = TieOf(c);
        return tie.ties && Find(tie.a).first == Find(tie.b).first;
    }
    /// The line that the constraint would tie to the axes, by way of one that is; -1: none.
    int NewToAxes(const InferredConstraint& c) {
        const Tie tie = TieOf(c, true);
        if (!tie.ties || tie.b == axis_)
            return -1;
        const int root = Find(axis_).first;
        const bool isTiedA = Find(tie.a).first == root;
        const bool isTiedB = Find(tie.b).first == root;
        return isTiedA == isTiedB ? -1 : isTiedA ? tie.b : tie.a;
    }
    /// A number for the class of a line, or of the axes after the last line, and its quarter turns, odd or
    /// even, against others of the class.
    std::pair<int, char> ClassOf(int line) { return Find(line); }
    void Add(const InferredConstraint& c) {
        const Tie tie = TieOf(c, true);
        if (!tie.ties)
            return;
        const auto [rootA, oddA] = Find(tie.a);
        const auto [rootB, oddB] = Find(tie.b);
        if (rootA == rootB)
            return;
        parent_[rootA] = rootB;
        odd_[rootA] = static_cast<char>(oddA ^ oddB ^ tie.odd);
    }

private:
    struct Tie {
        bool ties;
        int a;
        int b;
        char odd;
    };
    /// Collinear lines are parallel, but only the rank knows whether collinearity is redundant.
    Tie TieOf(const InferredConstraint& c, bool withCollinear = false) const {
        const int a = c.elements[0].curve;
        const int b = c.elements[1].curve;
        switch (c.kind) {
        case ConstraintKind_Horizontal:
            return {true, a, axis_, 0};
        case ConstraintKind_Vertical:
            return {true, a, axis_, 1};
        case ConstraintKind_Parallel:
            return {true, a, b, 0};
        case ConstraintKind_Perpendicular:
            return {true, a, b, 1};
        case ConstraintKind_Collinear:
            return {withCollinear, a, b, 0};
        default:
            return {false, 0, 0, 0};
        }
    }
    std::pair<int, char> Find(int i) {
        if (parent_[i] == i)
            return {i, 0};
        const auto [root, odd] = Find(parent_[i]);
        odd_[i] = static_cast<char>(odd_[i] ^ odd);
        parent_[i] = root;
        return {root, odd_[i]};
    }

    std::vector<int> parent_;
    std::vector<char> odd_; ///< quarter turns to the parent, modulo 2
    int axis_;
};

} // namespace Tessera::Geometry
