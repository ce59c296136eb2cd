#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/recognition/internal/ConstraintCandidates.h"
#include "tessera/recognition/internal/ConstraintDeviation.h"
#include "tessera/recognition/internal/DisjointSets.h"

// Sorted by direction (or length), lines that are alike are neighbours. A chain of neighbours connects each
// group; the neighbour after next is proposed too, should a link of the chain not enter.

namespace Tessera::Geometry {

namespace {

using std::numbers::pi;

/// Perpendicular lines that meet show it: before parallels that lie apart.
constexpr double kCornerBonus = 1.0;

struct DirectedLine {
    double angle; ///< radians, [0, pi)
    int curve;
    bool operator<(const DirectedLine& o) const {
        return angle != o.angle ? angle < o.angle : curve < o.curve;
    }
};

double DirectionOf(const CandidateList& list, int curve) {
    const double* p = list.sketch.Of(curve);
    const double angle = std::atan2(p[3] - p[1], p[2] - p[0]);
    return angle < 0.0 ? std::fmod(angle + pi, pi) : std::fmod(angle, pi);
}

SketchElement Whole(int curve) {
    return {curve, SnapPointType_None};
}

using Pairs = std::vector<std::pair<int, int>>;

void Add(Pairs& pairs, int a, int b) {
    if (a != b)
        pairs.push_back(std::minmax(a, b));
}

void Unify(Pairs& pairs) {
    std::sort(pairs.begin(), pairs.end());
    pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
}

void ProposeParallels(CandidateList& list, const std::vector<DirectedLine>& sorted) {
    const int n = static_cast<int>(sorted.size());
    Pairs pairs;
    for (int i = 0; i < n; ++i)
        for (int next = 1; next <= 2; ++next)
            Add(pairs, sorted[i].curve, sorted[(i + next) % n].curve);
    Unify(pairs);
    for (const auto& [a, b] : pairs)
        list.Propose(ConstraintKind_Parallel, {Whole(a), Whole(b)});
}

void ProposePerpendiculars(CandidateList& list, const std::vector<DirectedLine>& sorted) {
    const int n = static_cast<int>(sorted.size());
    Pairs corners;
    for (const Joint& joint : list.joints)
        if (list.sketch.At(joint.a.curve).shape == SketchShape::Line &&
            list.sketch.At(joint.b.curve).shape == SketchShape::Line)
            Add(corners, joint.a.curve, joint.b.curve);
    Unify(corners);
    Pairs apart;
    for (int i = 0; i < n; ++i) {
        const DirectedLine target{std::fmod(sorted[i].angle + 0.5 * pi, pi), -1};
        const int at =
            static_cast<int>(std::lower_bound(sorted.begin(), sorted.end(), target) - sorted.begin());
        Add(apart, sorted[i].curve, sorted[at % n].curve);
        Add(apart, sorted[i].curve, sorted[(at + n - 1) % n].curve);
    }
    Unify(apart);
    for (const auto& [a, b] : corners)
        list.Propose(ConstraintKind_Perpendicular, {Whole(a), Whole(b)}, 0, kCornerBonus);
    for (const auto& pair : apart)
        if (!std::binary_search(corners.begin(), corners.end(), pair))
            list.Propose(ConstraintKind_Perpendicular, {Whole(pair.first), Whole(pair.second)});
}

/// Whether the lines lie near enough to each other to be seen as one interrupted line: the gap is no longer
/// than their mean length.
bool AreInSight(const CandidateList& list, int a, int b) {
    const Curve& first = list.sketch.Original(a);
    const Curve& second = list.sketch.Original(b);
    const double reach = 0.5 * (first.Length() + second.Length());
    const double apart = list.sketch.At(a, SnapPointType_Mid).Distance(list.sketch.At(b, SnapPointType_Mid));
    return apart - reach <= reach;
}

/// Lines of one run have about the same direction: those with about the same offset may be collinear.
void ProposeCollinear(CandidateList& list, std::span<const DirectedLine> run) {
    const double ux = std::cos(run.front().angle);
    const double uy = std::sin(run.front().angle);
    std::vector<std::pair<double, int>> offsets;
    for (const DirectedLine& line : run) {
        const Point mid = list.sketch.At(line.curve, SnapPointType_Mid);
        offsets.push_back({ux * mid.y - uy * mid.x, line.curve});
    }
    std::sort(offsets.begin(), offsets.end());
    for (std::size_t i = 0; i < offsets.size(); ++i)
        for (std::size_t j = i + 1; j < std::min(i + 3, offsets.size()); ++j) {
            const auto [a, b] = std::minmax(offsets[i].second, offsets[j].second);
            // Joined lines share a point already: being parallel makes them collinear.
            if (!list.AreJoined(a, b) && AreInSight(list, a, b))
                list.Propose(ConstraintKind_Collinear, {Whole(a), Whole(b)});
        }
}

void ProposeCollinearRuns(CandidateList& list, const std::vector<DirectedLine>& sorted) {
    const double limit = kDeviationLimit * std::numbers::sqrt2 * list.options.directionSpreadDeg * pi / 180.0;
    // The seam at 0 = pi is cut between runs: start after the widest of the gaps near it would be no gain, so
    // the lines just below pi are put in front with negative angles.
    std::vector<DirectedLine> lines = sorted;
    for (DirectedLine& line : lines)
        if (line.angle > pi - limit)
            line.angle -= pi;
    std::sort(lines.begin(), lines.end());
    std::size_t first = 0;
    for (std::size_t i = 1; i <= lines.size(); ++i) {
        if (i < lines.size() && lines[i].angle - lines[i - 1].angle <= limit &&
            lines[i].angle - lines[first].angle <= 2.0 * limit)
            continue;
        ProposeCollinear(list, {lines.data() + first, i - first});
        first = i;
    }
}

DisjointSets JoinedGroups(const CandidateList& list) {
    DisjointSets groups(list.sketch.CurveCount());
    for (const Joint& joint : list.joints)
        groups.Unite(joint.a.curve, joint.b.curve);
    return groups;
}

/// Only among lines of one joined outline: equal lengths far apart are chance more often than intent.
void ProposeEqualLengths(CandidateList& list) {
    DisjointSets groups = JoinedGroups(list);
    struct Sized {
        int group;
        double length;
        int curve;
    };
    std::vector<Sized> sized;
    for (int curve : list.lines)
        sized.push_back({groups.RootOf(curve), list.sketch.Original(curve).Length(), curve});
    std::sort(sized.begin(), sized.end(), [](const Sized& a, const Sized& b) {
        if (a.group != b.group)
            return a.group < b.group;
        return a.length != b.length ? a.length < b.length : a.curve < b.curve;
    });
    for (std::size_t i = 0; i < sized.size(); ++i)
        for (std::size_t j = i + 1; j < std::min(i + 3, sized.size()) && sized[j].group == sized[i].group;
             ++j) {
            const auto [a, b] = std::minmax(sized[i].curve, sized[j].curve);
            list.Propose(ConstraintKind_EqualLength, {Whole(a), Whole(b)});
        }
}

} // namespace

void FindLineCandidates(CandidateList& list) {
    if (list.lines.empty())
        return;
    std::vector<DirectedLine> sorted;
    for (int curve : list.lines) {
        list.Propose(ConstraintKind_Horizontal, {Whole(curve)});
        list.Propose(ConstraintKind_Vertical, {Whole(curve)});
        sorted.push_back({DirectionOf(list, curve), curve});
    }
    std::sort(sorted.begin(), sorted.end());
    ProposeParallels(list, sorted);
    ProposePerpendiculars(list, sorted);
    ProposeCollinearRuns(list, sorted);
    ProposeEqualLengths(list);
}

} // namespace Tessera::Geometry
