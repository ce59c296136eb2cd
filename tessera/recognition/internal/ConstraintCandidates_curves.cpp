#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/recognition/internal/ConstraintCandidates.h"
#include "tessera/recognition/internal/SketchGeometry.h"

// Points on curves and curves that touch without a joint are found by a sweep over boxes.

namespace Tessera::Geometry {

namespace {

/// Of the tolerance zone: circles smaller than this are too small to be touched on purpose.
constexpr double kLeastTouchedRadius = 2.0;
/// Of the tolerance zone: lines shorter than this have no middle of their own.
constexpr double kLeastHalved = 4.0;
/// Of a circle's radius: how near a curve its centre must lie to mean it.
constexpr double kCentreReach = 0.3;

SketchElement Whole(int curve) {
    return {curve, SnapPointType_None};
}

void ProposeJointTangents(CandidateList& list) {
    for (const Joint& joint : list.joints) {
        const bool lines = list.sketch.At(joint.a.curve).shape == SketchShape::Line &&
                           list.sketch.At(joint.b.curve).shape == SketchShape::Line;
        if (!lines && joint.a.curve != joint.b.curve)
            list.Propose(ConstraintKind_Tangent, {joint.a, joint.b});
    }
}

/// Full circles among themselves, arcs among themselves: a fillet is no hole.
void ProposeEqualRadii(CandidateList& list) {
    struct Sized {
        bool full;
        double radius;
        int curve;
    };
    std::vector<Sized> sized;
    for (int i = 0; i < list.sketch.CurveCount(); ++i)
        if (list.sketch.At(i).IsCircular())
            sized.push_back({list.sketch.At(i).shape == SketchShape::Circle, list.sketch.Of(i)[2], i});
    std::sort(sized.begin(), sized.end(), [](const Sized& a, const Sized& b) {
        if (a.full != b.full)
            return a.full;
        return a.radius != b.radius ? a.radius < b.radius : a.curve < b.curve;
    });
    for (std::size_t i = 0; i < sized.size(); ++i)
        for (std::size_t j = i + 1; j < std::min(i + 3, sized.size()) && sized[j].full == sized[i].full;
             ++j) {
            const auto [a, b] = std::minmax(sized[i].curve, sized[j].curve);
            list.Propose(ConstraintKind_EqualRadius, {Whole(a), Whole(b)});
        }
}

// --- Near pairs -----------------------------------------------------------------------------------------

/// A curve (point -1) or a key point, with the box of the places that it may touch.
struct SweepItem {
    int curve;
    int point; ///< index into the sweep's points
    double low[2];
    double high[2];
};

SweepItem BoxOf(const CandidateList& list, int curve) {
    const SketchCurve& c = list.sketch.At(curve);
    const double* p = list.sketch.Of(curve);
    const double grow = 0.5 * list.options.toleranceZone;
    SweepItem item{curve, -1, {}, {}};
    for (int k = 0; k < 2; ++k) {
        const double radius = c.IsElliptic() ? std::max(p[2], p[3]) : p[2];
        item.low[k] = (c.HasCentre() ? p[k] - radius : std::min(p[k], p[2 + k])) - grow;
        item.high[k] = (c.HasCentre() ? p[k] + radius : std::max(p[k], p[2 + k])) + grow;
    }
    return item;
}

/// Calls visit(a, b) for the pairs of items with overlapping boxes that are not both points.
template <class Visit>
void SweepPairs(std::vector<SweepItem>& items, Visit visit) {
    std::sort(items.begin(), items.end(),
              [](const SweepItem& a, const SweepItem& b) { return a.low[0] < b.low[0]; });
    std::vector<const SweepItem*> open;
    for (const SweepItem& item : items) {
        std::size_t kept = 0;
        for (const SweepItem* other : open) {
            if (other->high[0] < item.low[0])
                continue;
            open[kept++] = other;
            if (other->low[1] <= item.high[1] && item.low[1] <= other->high[1] &&
                (other->point < 0 || item.point < 0))
                visit(*other, item);
        }
        open.resize(kept);
        open.push_back(&item);
    }
}

// --- Points on curves -----------------------------------------------------------------------------------

/// Whether a direction from the centre (an eccentric angle for ellipses) falls within the curve's sweep.
bool IsSwept(const SketchCurve& c, const double* p, double angle) {
    const double* limits = c.IsElliptic() ? p + 5 : p + 3;
    if (!c.HasEnds())
        return true;
    const double low = std::min(limits[0], limits[1]);
    const double turns = std::floor((angle - low) / (2.0 * std::numbers::pi));
    return angle - turns * 2.0 * std::numbers::pi <= std::max(limits[0], limits[1]);
}

/// Whether the foot of the point on the carrier belongs to the curve.
bool IsBeside(const SketchCurve& c, const double* p, const Point& at) {
    const Pair<double> from{at.x - p[0], at.y - p[1]};
    if (c.shape == SketchShape::Line) {
        const Pair<double> along{p[2] - p[0], p[3] - p[1]};
        const double u = DotOf(from, along);
        return u > 0.0 && u < DotOf(along, along);
    }
    if (c.IsCircular())
        return IsSwept(c, p, std::atan2(from.y, from.x));
    const Pair<double> u{std::cos(p[4]), std::sin(p[4])};
    return IsSwept(c, p, std::atan2(c.turn * CrossOf(u, from) / p[3], DotOf(from, u) / p[2]));
}

bool IsNearEnds(const CandidateList& list, int curve, const Point& at) {
    const double zone = list.options.toleranceZone;
    for (SnapPointType_e end : {SnapPointType_Start, SnapPointType_End})
        if (list.sketch.At(curve).HasEnds() && list.sketch.At(curve, end).Distance2(at) <= zone * zone)
            return true;
    return false;
}

/// How near a curve the point must lie to be on it.
double ReachOf(const CandidateList& list, const KeyPoint& point) {
    if (point.element.point != SnapPointType_Center)
        return list.ReachOf(point.element.curve);
    const double* p = list.sketch.Of(point.element.curve);
    return std::min(list.options.toleranceZone, kCentreReach * p[2]);
}

void ProposeOnCurve(CandidateList& list, const KeyPoint& point, int curve) {
    const SketchCurve& c = list.sketch.At(curve);
    const double* p = list.sketch.Of(curve);
    if (point.element.curve == curve || IsNearEnds(list, curve, point.at) || !IsBeside(c, p, point.at) ||
        list.sketch.Original(curve).Distance(point.at) > ReachOf(list, point))
        return;
    list.Propose(ConstraintKind_PointOnCurve, {point.element, Whole(curve)});
    const double zone = list.options.toleranceZone;
    if (c.shape == SketchShape::Line) {
        if (std::hypot(p[2] - p[0], p[3] - p[1]) >= kLeastHalved * zone)
            list.Propose(ConstraintKind_MidPoint, {point.element, {curve, SnapPointType_Mid}});
    } else if (c.IsCircular() && list.sketch.At(point.element.curve).shape == SketchShape::Line &&
               p[2] >= kLeastTouchedRadius * zone) {
        list.Propose(ConstraintKind_Tangent, {point.element, Whole(curve)});
    }
}

// --- Touching curves ------------------------------------------------------------------------------------

void ProposeTouchingLine(CandidateList& list, int line, int circle) {
    const double* l = list.sketch.Of(line);
    const double* c = list.sketch.Of(circle);
    const double zone = list.options.toleranceZone;
    const Point centre(c);
    for (SnapPointType_e end : {SnapPointType_Start, SnapPointType_End})
        if (std::fabs(list.sketch.At(line, end).Distance(centre) - c[2]) <= zone)
            return; // named by that end, or joined there
    const Pair<double> along{l[2] - l[0], l[3] - l[1]};
    const Pair<double> from{c[0] - l[0], c[1] - l[1]};
    const double u = DotOf(from, along) / DotOf(along, along);
    const Point foot(l[0] + u * along.x, l[1] + u * along.y);
    if (u <= 0.0 || u >= 1.0 || !IsBeside(list.sketch.At(circle), c, foot))
        return;
    list.Propose(ConstraintKind_Tangent, {Whole(line), Whole(circle)}, CrossOf(along, from) > 0.0 ? 1 : -1);
}

void ProposeTouchingCircles(CandidateList& list, int a, int b) {
    const SketchParameters& sketch = list.sketch;
    if (sketch.Of(a)[2] < sketch.Of(b)[2])
        std::swap(a, b);
    const double* big = sketch.Of(a);
    const double* small = sketch.Of(b);
    const double distance = Point(big).Distance(Point(small));
    const double zone = list.options.toleranceZone;
    if (distance <= zone)
        return; // concentric, if anything
    const int side = distance > big[2] ? 1 : -1;
    const double toSmall = std::atan2(small[1] - big[1], small[0] - big[0]);
    const double toBig = side > 0 ? toSmall + std::numbers::pi : toSmall;
    if (IsSwept(sketch.At(a), big, toSmall) && IsSwept(sketch.At(b), small, toBig))
        list.Propose(ConstraintKind_Tangent, {Whole(a), Whole(b)}, side);
}

void ProposeTouching(CandidateList& list, int a, int b) {
    const SketchCurve& ca = list.sketch.At(a);
    const SketchCurve& cb = list.sketch.At(b);
    const double least = kLeastTouchedRadius * list.options.toleranceZone;
    if (list.AreJoined(a, b) || (ca.IsCircular() && list.sketch.Of(a)[2] < least) ||
        (cb.IsCircular() && list.sketch.Of(b)[2] < least))
        return;
    if (ca.shape == SketchShape::Line && cb.IsCircular())
        ProposeTouchingLine(list, a, b);
    else if (cb.shape == SketchShape::Line && ca.IsCircular())
        ProposeTouchingLine(list, b, a);
    else if (ca.IsCircular() && cb.IsCircular())
        ProposeTouchingCircles(list, a, b);
}

void ProposeNearPairs(CandidateList& list) {
    std::vector<KeyPoint> points = list.ends;
    for (const KeyPoint& centre : list.centres)
        if (list.sketch.At(centre.element.curve).shape == SketchShape::Circle)
            points.push_back(centre);
    std::vector<SweepItem> items;
    for (int i = 0; i < list.sketch.CurveCount(); ++i) {
        const SketchCurve& c = list.sketch.At(i);
        if (c.shape == SketchShape::Line || c.HasCentre())
            items.push_back(BoxOf(list, i));
    }
    const double grown = 0.5 * list.options.toleranceZone;
    for (int i = 0; i < static_cast<int>(points.size()); ++i) {
        // The curves' boxes are grown by half the zone; the rest of this point's reach is here.
        const double reach = ReachOf(list, points[i]) - grown;
        const Point& at = points[i].at;
        items.push_back(
            {points[i].element.curve, i, {at.x - reach, at.y - reach}, {at.x + reach, at.y + reach}});
    }
    SweepPairs(items, [&](const SweepItem& a, const SweepItem& b) {
        if (a.point >= 0)
            ProposeOnCurve(list, points[a.point], b.curve);
        else if (b.point >= 0)
            ProposeOnCurve(list, points[b.point], a.curve);
        else
            ProposeTouching(list, std::min(a.curve, b.curve), std::max(a.curve, b.curve));
    });
}

} // namespace

void FindCurveCandidates(CandidateList& list) {
    ProposeJointTangents(list);
    ProposeEqualRadii(list);
    ProposeNearPairs(list);
}

} // namespace Tessera::Geometry
