#include "tessera/recognition/internal/ConstraintBasis.h"

#include <algorithm>
#include <bit>
#include <tuple>
#include <utility>

#include "tessera/recognition/internal/ConstraintEquations.h"
#include "tessera/recognition/internal/DirectionClasses.h"
#include "tessera/recognition/internal/DisjointSets.h"

// Curves are put in order: the axes and the fixed curves, which cannot move, then the others, so that each
// half of them, each quarter and so on lies together on the drawing.

namespace Tessera::Geometry {

namespace {

bool IsEqualSize(ConstraintKind_e kind) {
    return kind == ConstraintKind_EqualLength || kind == ConstraintKind_EqualRadius;
}

/// Constraints that only say that curves belong to one group.
bool IsTie(ConstraintKind_e kind) {
    return kind == ConstraintKind_Horizontal || kind == ConstraintKind_Vertical ||
           kind == ConstraintKind_Parallel || kind == ConstraintKind_Perpendicular || IsEqualSize(kind);
}

InferredConstraint Tie(ConstraintKind_e kind, int a, int b = -1) {
    InferredConstraint c;
    c.kind = kind;
    c.elementCount = b < 0 ? 1 : 2;
    c.elements[0].curve = a;
    c.elements[1].curve = std::max(b, 0);
    return c;
}

/// Sorts curves into halves along the longer side of their box, and these again. The first half is a power of
/// two.
void Halve(std::span<int> curves, const SketchParameters& sketch) {
    if (curves.size() < 2)
        return;
    const auto at = [&](int curve, int axis) {
        return sketch.At(curve).count > 0 ? sketch.Of(curve)[axis] : 0.0; // of its start or centre
    };
    double size[2];
    for (int axis = 0; axis < 2; ++axis) {
        const auto isLess = [&](int a, int b) { return at(a, axis) < at(b, axis); };
        const auto [low, high] = std::minmax_element(curves.begin(), curves.end(), isLess);
        size[axis] = at(*high, axis) - at(*low, axis);
    }
    const int axis = size[0] >= size[1] ? 0 : 1;
    const std::size_t half = std::bit_floor(curves.size() - 1);
    std::nth_element(curves.begin(), curves.begin() + static_cast<std::ptrdiff_t>(half), curves.end(),
                     [&](int a, int b) { return std::pair(at(a, axis), a) < std::pair(at(b, axis), b); });
    Halve(curves.first(half), sketch);
    Halve(curves.subspan(half), sketch);
}

/// Ties each curve of the order to the one before it in its group, or to one of the first `still`, which
/// cannot move.
template <class GroupOf, class Join>
void TieGroups(const std::vector<int>& order, int still, GroupOf groupOf, Join join) {
    std::vector<int> last(order.size(), -1); // places, per group
    for (int place = 0; place < static_cast<int>(order.size()); ++place) {
        int& before = last[groupOf(order[place])];
        if (before >= 0 && place >= still)
            join(order[before], order[place]);
        if (before < 0 || before >= still)
            before = place;
    }
}

/// Each constraint has its place at the end of the smallest range, as halving has made them, that holds its
/// curves; the first `still` of the order count for none.
void SortByRanges(std::vector<InferredConstraint>& basis, const std::vector<int>& order, int still) {
    std::vector<int> placeOf(order.size());
    for (std::size_t place = 0; place < order.size(); ++place)
        placeOf[order[place]] = static_cast<int>(place) - still;
    std::vector<std::tuple<int, int, std::size_t>> keys;
    for (std::size_t i = 0; i < basis.size(); ++i) {
        int first = static_cast<int>(order.size());
        int last = 0;
        ForCurvesOf(basis[i], [&](int curve) {
            if (placeOf[curve] >= 0) {
                first = std::min(first, placeOf[curve]);
                last = std::max(last, placeOf[curve]);
            }
        });
        const int level = std::bit_width(static_cast<unsigned>(first ^ last));
        keys.emplace_back(((last >> level) + 1) << level, level, i);
    }
    std::sort(keys.begin(), keys.end());
    std::vector<InferredConstraint> sorted;
    sorted.reserve(keys.size());
    for (const auto& [end, level, number] : keys)
        sorted.push_back(basis[number]);
    basis = std::move(sorted);
}

} // namespace

std::vector<InferredConstraint> EquivalentBasis(std::span<const InferredConstraint> set,
                                                const SketchParameters& sketch, int fixedCount) {
    const int axes = sketch.CurveCount();
    const int still = fixedCount + 1;
    std::vector<int> order(static_cast<std::size_t>(axes) + 1, axes);
    for (int curve = 0; curve < axes; ++curve)
        order[curve + 1] = curve;
    Halve(std::span(order).subspan(static_cast<std::size_t>(still)), sketch);

    std::vector<InferredConstraint> basis;
    DirectionClasses directions(axes);
    DisjointSets tied(axes + 1); // by direction
    DisjointSets sizes(axes + 1);
    for (const InferredConstraint& c : set) {
        directions.Add(c);
        if (!IsTie(c.kind))
            basis.push_back(c);
        if (c.kind == ConstraintKind_Collinear)
            tied.Unite(c.elements[0].curve, c.elements[1].curve);
        if (IsEqualSize(c.kind))
            sizes.Unite(c.elements[0].curve, c.elements[1].curve);
    }
    const auto tieDirections = [&](int before, int curve) {
        if (tied.RootOf(before) == tied.RootOf(curve))
            return;
        tied.Unite(before, curve);
        const bool isSquare = directions.ClassOf(before).second != directions.ClassOf(curve).second;
        if (before == axes)
            basis.push_back(Tie(isSquare ? ConstraintKind_Vertical : ConstraintKind_Horizontal, curve));
        else
            basis.push_back(
                Tie(isSquare ? ConstraintKind_Perpendicular : ConstraintKind_Parallel, before, curve));
    };
    const auto tieSizes = [&](int before, int curve) {
        const bool isLine = sketch.At(curve).shape == SketchShape::Line;
        basis.push_back(Tie(isLine ? ConstraintKind_EqualLength : ConstraintKind_EqualRadius, before, curve));
    };
    TieGroups(
        order, still, [&](int curve) { return directions.ClassOf(curve).first; }, tieDirections);
    TieGroups(
        order, still, [&](int curve) { return sizes.RootOf(curve); }, tieSizes);
    SortByRanges(basis, order, still);
    return basis;
}

} // namespace Tessera::Geometry
