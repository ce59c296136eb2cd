#include <algorithm>

#include "tessera/recognition/internal/ConstraintCandidates.h"
#include "tessera/recognition/internal/PointGrid.h"

// Every point is compared with its nearest few neighbours only: a hub where a thousand lines meet is joined
// all the same, by way of them.

namespace Tessera::Geometry {

namespace {

constexpr std::size_t kMostNeighbours = 8;
/// Of the larger radius: circles with centres farther apart than this do not look concentric.
constexpr double kCentreReach = 0.5;
/// Of a circle's radius: how near its centre a line must end to mean it.
constexpr double kRadiusReach = 0.3;

std::vector<Point> PositionsOf(const std::vector<KeyPoint>& points) {
    std::vector<Point> positions;
    positions.reserve(points.size());
    for (const KeyPoint& p : points)
        positions.push_back(p.at);
    return positions;
}

/// Splines may close on themselves; the two ends of other curves are never one point.
bool MayJoin(const CandidateList& list, const SketchElement& a, const SketchElement& b) {
    return a.curve != b.curve || list.sketch.At(a.curve).shape == SketchShape::Spline;
}

void JoinEnds(CandidateList& list) {
    const PointGrid grid(PositionsOf(list.ends), list.options.toleranceZone);
    std::vector<std::pair<int, int>> pairs;
    std::vector<int> near;
    for (int i = 0; i < static_cast<int>(list.ends.size()); ++i) {
        const KeyPoint& a = list.ends[i];
        grid.Near(a.at, list.ReachOf(a.element.curve), near);
        std::size_t taken = 0;
        for (int j : near) {
            const KeyPoint& b = list.ends[j];
            const double otherReach = list.ReachOf(b.element.curve);
            if (i == j || !MayJoin(list, a.element, b.element) ||
                a.at.Distance2(b.at) > otherReach * otherReach)
                continue;
            pairs.push_back(std::minmax(i, j));
            if (++taken == kMostNeighbours)
                break;
        }
    }
    std::sort(pairs.begin(), pairs.end());
    pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
    for (const auto& [i, j] : pairs) {
        list.joints.push_back({list.ends[i].element, list.ends[j].element});
        list.Propose(ConstraintKind_Coincident, {list.ends[i].element, list.ends[j].element});
    }
}

double SmallerRadius(const SketchParameters& sketch, int curve) {
    const double* p = sketch.Of(curve);
    return sketch.At(curve).IsElliptic() ? std::min(p[2], p[3]) : p[2];
}

void JoinEndsToCentres(CandidateList& list, const PointGrid& centres) {
    std::vector<int> near;
    for (const KeyPoint& end : list.ends) {
        centres.Near(end.at, list.ReachOf(end.element.curve), near);
        for (int k : near) {
            const KeyPoint& centre = list.centres[k];
            if (centre.element.curve == end.element.curve)
                continue;
            const double reach = kRadiusReach * SmallerRadius(list.sketch, centre.element.curve);
            if (centre.at.Distance2(end.at) <= reach * reach)
                list.Propose(ConstraintKind_Coincident, {end.element, centre.element});
        }
    }
}

void PairCentres(CandidateList& list, const PointGrid& centres) {
    std::vector<int> near;
    for (int i = 0; i < static_cast<int>(list.centres.size()); ++i) {
        const KeyPoint& a = list.centres[i];
        centres.Near(a.at, list.options.toleranceZone, near);
        std::size_t taken = 0;
        for (int j : near) {
            if (j <= i)
                continue;
            if (++taken > kMostNeighbours)
                break;
            const KeyPoint& b = list.centres[j];
            const double reach = kCentreReach * std::max(SmallerRadius(list.sketch, a.element.curve),
                                                         SmallerRadius(list.sketch, b.element.curve));
            if (a.at.Distance2(b.at) <= reach * reach)
                list.Propose(ConstraintKind_Concentric, {a.element, b.element});
        }
    }
}

} // namespace

void FindPointCandidates(CandidateList& list) {
    JoinEnds(list);
    const PointGrid centres(PositionsOf(list.centres), list.options.toleranceZone);
    JoinEndsToCentres(list, centres);
    PairCentres(list, centres);
}

} // namespace Tessera::Geometry
