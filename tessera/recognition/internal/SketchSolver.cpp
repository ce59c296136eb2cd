#include "tessera/recognition/internal/SketchSolver.h"

#include <algorithm>

// Which curves a window needs follows from what the candidate asks for. Most constraints are satisfied by
// small motions near their points: the nearest curves will do. But directions and sizes are shared: when two
// groups of parallel lines become one, all lines of one of them turn. So a window for such a candidate holds
// the whole smaller group and what is near to its members; the other group stays. A curve changes from the
// smaller group to a larger one a logarithmic number of times, so that the cost stays near-linear.
//
// A small window is over-determined more easily than the sketch: what depends on the set with the rest fixed
// may be independent where the rest is free. The other way round nothing can go wrong: a constraint that
// depends on the window's constraints with all their curves free is redundant.

namespace Tessera::Geometry {

namespace {

/// Curves that a window moves, and more of them for each member of a group that turns together.
constexpr std::size_t kWindowCurves = 32;
constexpr std::size_t kCurvesPerMember = 4;
constexpr std::size_t kMostWindowCurves = 160;
/// A group with more members is never turned.
constexpr int kMostTied = 96;
/// Curves with more constraints than this stay where they are while others can move.
constexpr std::size_t kHub = 64;

/// Times that two groups may fail to become one.
constexpr int kMostRefusals = 2;

} // namespace

SketchSolver::SketchSolver(SketchParameters& sketch, double toleranceZone, double mostTurnRad, int fixedCount)
    : sketch_(sketch), zone_(toleranceZone), fixedCount_(fixedCount),
      whole_(sketch, toleranceZone, mostTurnRad), inWindow_(part_, toleranceZone, mostTurnRad),
      constraintsOf_(static_cast<std::size_t>(sketch.CurveCount())), connected_(sketch.CurveCount()),
      directions_(sketch.CurveCount() + 1), sizes_(sketch.CurveCount() + 1),
      placeOf_(static_cast<std::size_t>(sketch.CurveCount()), -1) {
    whole_.Begin(fixedCount);
    for (int curve = 0; curve < fixedCount; ++curve) {
        directions_.Unite(curve, sketch.CurveCount());
        sizes_.Unite(curve, sketch.CurveCount());
    }
}

SketchSolver::Verdict SketchSolver::TryAdd(const InferredConstraint& c) {
    Verdict verdict = Verdict::Refused;
    if (SizeWith(c) > kMostWhole) {
        verdict = TryInWindow(c);
        hasLarge_ = true;
    } else if (whole_.TryAdd(c) == ConstraintSolver::Verdict::Taken) {
        verdict = Verdict::Taken;
    }
    if (verdict == Verdict::Taken)
        Note(c);
    return verdict;
}

// --- What is connected ----------------------------------------------------------------------------------

/// Number of curves that would be connected with the constraint in the set. What cannot move connects
/// nothing.
int SketchSolver::SizeWith(const InferredConstraint& c) {
    int roots[3];
    int count = 0;
    int size = 0;
    for (int e = 0; e < c.elementCount; ++e) {
        const int root = connected_.RootOf(c.elements[e].curve);
        if (!MayMove(root) || std::find(roots, roots + count, root) != roots + count)
            continue;
        roots[count++] = root;
        size += connected_.SizeOf(root);
    }
    return size;
}

DisjointSets* SketchSolver::GroupsOf(ConstraintKind_e kind) {
    switch (kind) {
    case ConstraintKind_Horizontal:
    case ConstraintKind_Vertical:
    case ConstraintKind_Parallel:
    case ConstraintKind_Perpendicular:
    case ConstraintKind_Collinear:
        return &directions_;
    case ConstraintKind_EqualLength:
    case ConstraintKind_EqualRadius:
        return &sizes_;
    default:
        return nullptr;
    }
}

/// What the constraint makes one group: two curves, or a curve and the axes.
std::pair<int, int> SketchSolver::SidesOf(const InferredConstraint& c) const {
    return {c.elements[0].curve, c.elementCount == 1 ? sketch_.CurveCount() : c.elements[1].curve};
}

void SketchSolver::Note(const InferredConstraint& c) {
    const int number = static_cast<int>(accepted_.size());
    accepted_.push_back(c);
    int moving = -1;
    ForCurvesOf(c, [&](int curve) {
        constraintsOf_[curve].push_back(number);
        if (MayMove(curve)) {
            connected_.Unite(curve, moving < 0 ? curve : moving);
            moving = curve;
        }
    });
    if (DisjointSets* groups = GroupsOf(c.kind))
        groups->Unite(SidesOf(c).first, SidesOf(c).second);
}

// --- Windows --------------------------------------------------------------------------------------------

/// Adds a curve to those that the window moves.
void SketchSolver::Open(int curve) {
    if (placeOf_[curve] >= 0 || !MayMove(curve))
        return;
    placeOf_[curve] = 0;
    curves_.push_back(curve);
}

/// Opens the curves of a candidate; hubs only when nothing else can move.
void SketchSolver::OpenNamed(const InferredConstraint& c) {
    for (const bool withHubs : {false, true})
        for (int e = 0; e < c.elementCount && (curves_.empty() || !withHubs); ++e)
            if (withHubs || constraintsOf_[c.elements[e].curve].size() <= kHub)
                Open(c.elements[e].curve);
}

/// Opens the smaller of the groups that the candidate makes one, or both when they are small together; false
/// when neither can turn.
bool SketchSolver::OpenGroups(const InferredConstraint& c, DisjointSets& groups) {
    auto [small, big] = SidesOf(c);
    const auto sizeOf = [&](int side) {
        const bool isBound = groups.RootOf(side) == groups.RootOf(sketch_.CurveCount());
        return isBound ? kMostTied + 1 : groups.SizeOf(side);
    };
    if (sizeOf(big) < sizeOf(small))
        std::swap(small, big);
    if (sizeOf(small) > kMostTied)
        return false;
    groups.ForMembers(small, [&](int curve) { Open(curve); });
    if (sizeOf(small) + sizeOf(big) <= kMostTied)
        groups.ForMembers(big, [&](int curve) { Open(curve); });
    return true;
}

/// Opens curves along the constraints, nearest first.
void SketchSolver::OpenNear(std::size_t mostCurves) {
    for (std::size_t i = 0; i < curves_.size(); ++i)
        for (int number : constraintsOf_[curves_[i]]) {
            const InferredConstraint& c = accepted_[number];
            for (int e = 0; e < c.elementCount; ++e)
                if (curves_.size() < mostCurves && constraintsOf_[c.elements[e].curve].size() <= kHub)
                    Open(c.elements[e].curve);
        }
}

/// Collects the constraints on the curves that move and puts what they name besides in front.
void SketchSolver::CloseWindow(const InferredConstraint* candidate) {
    constraints_.clear();
    for (int curve : curves_)
        constraints_.insert(constraints_.end(), constraintsOf_[curve].begin(), constraintsOf_[curve].end());
    std::sort(constraints_.begin(), constraints_.end());
    constraints_.erase(std::unique(constraints_.begin(), constraints_.end()), constraints_.end());
    std::vector<int> fixed;
    const auto fix = [&](const InferredConstraint& c) {
        ForCurvesOf(c, [&](int curve) {
            if (placeOf_[curve] < 0) {
                placeOf_[curve] = 0;
                fixed.push_back(curve);
            }
        });
    };
    for (int number : constraints_)
        fix(accepted_[number]);
    if (candidate != nullptr)
        fix(*candidate);
    std::sort(fixed.begin(), fixed.end());
    std::sort(curves_.begin(), curves_.end());
    windowFixed_ = static_cast<int>(fixed.size());
    neverMoves_ = static_cast<int>(std::lower_bound(fixed.begin(), fixed.end(), fixedCount_) - fixed.begin());
    curves_.insert(curves_.begin(), fixed.begin(), fixed.end());
    for (std::size_t i = 0; i < curves_.size(); ++i)
        placeOf_[curves_[i]] = static_cast<int>(i);
}

void SketchSolver::LeaveWindow() {
    for (int curve : curves_)
        placeOf_[curve] = -1;
    curves_.clear();
}

InferredConstraint SketchSolver::InWindow(InferredConstraint c) const {
    for (int e = 0; e < c.elementCount; ++e)
        c.elements[e].curve = placeOf_[c.elements[e].curve];
    return c;
}

/// Starts the window's solver with its constraints.
void SketchSolver::HoldAll(int fixedCount) {
    inWindow_.Begin(fixedCount);
    for (int number : constraints_)
        inWindow_.Hold(InWindow(accepted_[number]));
}

SketchSolver::Verdict SketchSolver::TryInWindow(const InferredConstraint& c) {
    DisjointSets* groups = GroupsOf(c.kind);
    if (groups != nullptr && groups->RootOf(SidesOf(c).first) != groups->RootOf(SidesOf(c).second))
        return TryWithGroups(c, *groups);
    OpenNamed(c);
    return SolveWindow(c);
}

/// Two groups that more than once could not become one are left alone until they have grown.
SketchSolver::Verdict SketchSolver::TryWithGroups(const InferredConstraint& c, DisjointSets& groups) {
    const auto [a, b] = SidesOf(c);
    int& refusals = refusals_[std::minmax(groups.RootOf(a), groups.RootOf(b))];
    if (refusals >= kMostRefusals || !OpenGroups(c, groups))
        return Verdict::Refused;
    const Verdict verdict = SolveWindow(c);
    if (verdict == Verdict::Implied)
        groups.Unite(a, b);
    else if (verdict == Verdict::Refused && c.kind != ConstraintKind_Collinear)
        ++refusals; // collinear lines may fail by their offset
    return verdict;
}

SketchSolver::Verdict SketchSolver::SolveWindow(const InferredConstraint& c) {
    OpenNear(std::min(kWindowCurves + kCurvesPerMember * curves_.size(), kMostWindowCurves));
    CloseWindow(&c);
    part_.SetPart(sketch_, curves_);
    HoldAll(windowFixed_);
    Verdict verdict = Verdict::Refused;
    switch (inWindow_.TryAdd(InWindow(c))) {
    case ConstraintSolver::Verdict::Taken:
        sketch_.TakeBack(part_, curves_);
        verdict = Verdict::Taken;
        break;
    case ConstraintSolver::Verdict::Dependent:
        if (GroupsOf(c.kind) != nullptr) {
            HoldAll(neverMoves_);
            if (inWindow_.IsImplied(InWindow(c)))
                verdict = Verdict::Implied;
        }
        break;
    default:
        break;
    }
    LeaveWindow();
    return verdict;
}

} // namespace Tessera::Geometry
