#include <algorithm>
#include <cmath>

#include "tessera/geometry/Line.h"
#include "tessera/recognition/internal/ConstraintCandidates.h"
#include "tessera/recognition/internal/ConstraintDeviation.h"
#include "tessera/recognition/internal/PointGrid.h"

// An axis is a line that is marked as one or whose ends are both free, and that maps most of the sketch onto
// itself. Asking for most of the points, not for pairs, keeps chance pairs out.

namespace Tessera::Geometry {

namespace {

/// The longest free lines are tried; a sketch has one or two axes.
constexpr std::size_t kMostAxes = 8;
/// Points with a mate, of those off the axis, to call a line an axis: at least so many, and this share of
/// all.
constexpr int kLeastMated = 4;
constexpr double kLeastShare = 2.0 / 3.0;
/// Of the axis' length: what lies beyond its ends by more than this, or farther beside it, is another shape.
constexpr double kOverhang = 0.25;
constexpr double kWidestShape = 1.5;
/// Of the tolerance zone: no image is looked for farther away, however long the lever on the axis.
constexpr double kFarthestMate = 4.0;

std::vector<int> AxisCandidates(const CandidateList& list) {
    std::vector<char> isJoined(static_cast<std::size_t>(list.sketch.CurveCount()), 0);
    for (const Joint& joint : list.joints)
        isJoined[joint.a.curve] = isJoined[joint.b.curve] = 1;
    std::vector<int> axes;
    for (int curve : list.lines) {
        const auto& line = static_cast<const Line&>(list.sketch.Original(curve));
        if (line.IsReflectCenterLine() || isJoined[curve] == 0)
            axes.push_back(curve);
    }
    std::stable_sort(axes.begin(), axes.end(), [&](int a, int b) {
        return list.sketch.Original(a).Length() > list.sketch.Original(b).Length();
    });
    axes.resize(std::min(axes.size(), kMostAxes));
    return axes;
}

/// A point in the frame of an axis.
struct AxisView {
    double along;  ///< 0 at the axis' start, 1 at its end
    double across; ///< signed distance, model units
    Point mirrored;
};

AxisView ViewFrom(const SketchParameters& sketch, int axis, const Point& p) {
    const double* l = sketch.Of(axis);
    const double length = std::hypot(l[2] - l[0], l[3] - l[1]);
    const Point u((l[2] - l[0]) / length, (l[3] - l[1]) / length);
    const Point from(p.x - l[0], p.y - l[1]);
    const double across = u.Cross(from);
    return {u.Dot(from) / length, across, Point(p.x + 2.0 * across * u.y, p.y - 2.0 * across * u.x)};
}

class MirrorSearch {
public:
    MirrorSearch(CandidateList& list, const std::vector<KeyPoint>& points, const PointGrid& grid)
        : list_(list), points_(points), grid_(grid) {}

    void Try(int axis) {
        std::vector<int> mate(points_.size(), -1);
        int off = 0;
        int mated = 0;
        for (int i = 0; i < static_cast<int>(points_.size()); ++i) {
            if (points_[i].element.curve == axis)
                continue;
            const AxisView view = ViewFrom(list_.sketch, axis, points_[i].at);
            const double far = kWidestShape * list_.sketch.Original(axis).Length();
            if (view.along < -kOverhang || view.along > 1.0 + kOverhang || std::fabs(view.across) > far ||
                std::fabs(view.across) <= list_.options.toleranceZone)
                continue;
            ++off;
            mate[i] = MateOf(i, view.mirrored, axis);
            mated += mate[i] >= 0 ? 1 : 0;
        }
        if (mated < kLeastMated || mated < kLeastShare * off)
            return;
        for (int i = 0; i < static_cast<int>(points_.size()); ++i)
            if (mate[i] > i && mate[mate[i]] == i)
                list_.Propose(ConstraintKind_Symmetric,
                              {points_[i].element, points_[mate[i]].element, {axis, SnapPointType_None}});
    }

private:
    /// Nearest point to the mirror image that belongs to a curve of the same kind; -1: none.
    int MateOf(int i, const Point& mirrored, int axis) {
        const SketchElement& own = points_[i].element;
        const SketchShape shape = list_.sketch.At(own.curve).shape;
        const double spread =
            MirrorSpread(points_[i].at.Distance(list_.sketch.At(axis, SnapPointType_Mid)), list_.options);
        grid_.Near(mirrored, std::min(kDeviationLimit * spread, kFarthestMate * list_.options.toleranceZone),
                   near_);
        for (int j : near_) {
            const SketchElement& other = points_[j].element;
            if (j != i && other.curve != axis && list_.sketch.At(other.curve).shape == shape &&
                (other.point == SnapPointType_Center) == (own.point == SnapPointType_Center))
                return j;
        }
        return -1;
    }

    CandidateList& list_;
    const std::vector<KeyPoint>& points_;
    const PointGrid& grid_;
    std::vector<int> near_;
};

} // namespace

void FindSymmetryCandidates(CandidateList& list) {
    if ((list.options.kinds & ConstraintKindBit(ConstraintKind_Symmetric)) == 0)
        return;
    const std::vector<int> axes = AxisCandidates(list);
    if (axes.empty())
        return;
    std::vector<KeyPoint> points = list.ends;
    points.insert(points.end(), list.centres.begin(), list.centres.end());
    std::vector<Point> positions;
    positions.reserve(points.size());
    for (const KeyPoint& p : points)
        positions.push_back(p.at);
    const PointGrid grid(positions, list.options.toleranceZone);
    MirrorSearch search(list, points, grid);
    for (int axis : axes)
        search.Try(axis);
}

} // namespace Tessera::Geometry
