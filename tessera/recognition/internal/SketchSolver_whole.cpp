#include <algorithm>

#include "tessera/recognition/internal/ConstraintBasis.h"
#include "tessera/recognition/internal/SketchSolver.h"

// A large sketch as a whole. What the windows have taken is replaced by an equivalent basis, whose factor
// stays sparse where the drawing has a plan; then all of it can move at once, and what the windows have
// refused is tried in bundles. Where chance holds everything together the factor fills up, which shows on the
// way and ends it: the products taken are counted.

namespace Tessera::Geometry {

namespace {

/// Products for each curve that the whole may cost, about as long as its windows have taken.
constexpr double kMostWork = 200e3;
/// The same for the first factor; more than that, and it is left to the windows.
constexpr double kMostFactorWork = 60e3;

} // namespace

bool SketchSolver::TryTogether(std::vector<InferredConstraint> set) {
    DisjointSets sizes = sizes_;
    std::erase_if(set, [&](const InferredConstraint& c) {
        if (GroupsOf(c.kind) != &sizes_)
            return false;
        const auto [a, b] = SidesOf(c);
        const bool isOne = sizes.RootOf(a) == sizes.RootOf(b);
        sizes.Unite(a, b);
        return isOne;
    });
    const std::size_t before = whole_.Accepted().size();
    if (!whole_.TryTogether(set))
        return false;
    for (std::size_t i = before; i < whole_.Accepted().size(); ++i)
        Note(whole_.Accepted()[i]);
    if (whole_.Accepted().size() > before)
        HoldWhole(); // with it in the basis
    return true;
}

/// The solver begins anew with a basis; false when that costs too much.
bool SketchSolver::HoldWhole() {
    const double mostWork = whole_.Work() + kMostFactorWork * sketch_.CurveCount();
    dependent_.clear();
    whole_.Begin(fixedCount_, ConstraintSolver::kLeastSineOfMany);
    for (const InferredConstraint& c : EquivalentBasis(accepted_, sketch_, fixedCount_)) {
        if (!isWhole_ && whole_.Work() > mostWork)
            return false;
        if (!whole_.Hold(c))
            dependent_.push_back(c);
    }
    isWhole_ = true;
    return true;
}

/// False when that costs too much.
bool SketchSolver::SettleWhole() {
    const double before = whole_.Work();
    if (!isWhole_)
        mostWork_ = before + kMostWork * sketch_.CurveCount();
    if (!HoldWhole())
        return false;
    while (!dependent_.empty()) {
        for (const InferredConstraint& c : dependent_)
            Drop(c);
        HoldWhole();
    }
    whole_.Approach(ConstraintSolver::kFinalAccuracy);
    workToSettle_ = whole_.Work() - before;
    return true;
}

/// Drops a constraint of the basis: of those that make a group the one that has brought its curves together.
void SketchSolver::Drop(const InferredConstraint& dependent) {
    const DisjointSets* groups = GroupsOf(dependent.kind);
    const auto [a, b] = SidesOf(dependent);
    DisjointSets joined(sketch_.CurveCount() + 1);
    const auto isMeant = [&, a = a, b = b](const InferredConstraint& c) {
        if (groups == nullptr || dependent.kind == ConstraintKind_Collinear)
            return c.kind == dependent.kind && c.elements == dependent.elements;
        if (GroupsOf(c.kind) == groups)
            joined.Unite(SidesOf(c).first, SidesOf(c).second);
        return joined.RootOf(a) == joined.RootOf(b);
    };
    const auto found = std::find_if(accepted_.begin(), accepted_.end(), isMeant);
    if (found != accepted_.end())
        accepted_.erase(found);
}

} // namespace Tessera::Geometry
