#include <algorithm>
#include <memory>
#include <utility>

#include "tessera/dimension/AngularDimension.h"
#include "tessera/dimension/internal/MoveCurves.h"
#include "tessera/dimension/internal/Segment.h"
#include "tessera/geometry/Arc.h"
#include "tessera/kernel/EQ.h"

// Which sector is measured: the arc between two rays that leave the meeting point of the lines, and how it
// follows lines that move.

namespace Tessera::Dimension {

using Geometry::Arc;
using Geometry::Line;
using Geometry::Point;
using Geometry::Vector;

namespace {

/// From the meeting point along one of the lines.
struct Ray {
    Vector direction; // unit
    double reach;     // to the point that it was drawn towards
};

bool FindMeetingPoint(const Line* line1, const Line* line2, Point& centre) {
    if (!HasRecord(line1) || !HasRecord(line2))
        return false;
    Segment a = EndsOf(*line1);
    Segment b = EndsOf(*line2);
    return Line::LineLineIntersect(a.start, a.end, b.start, b.end, centre);
}

Ray RayTowards(const Line& line, const Point& centre, const Point& pick) {
    const Segment ends = EndsOf(line);
    Point target = ends.At(ends.ParamOf(pick));
    if (target.Distance(centre) <= EQ_ask_length_tolerance())
        target = ends.start.Distance2(centre) > ends.end.Distance2(centre) ? ends.start : ends.end;
    Vector direction(centre, target);
    direction.Normalize();
    return {direction, centre.Distance(target)};
}

/// The ray on one of its lines that a dimension measures from or to.
Vector MeasuredRay(const AngularDimension& dim, int index, const Point& centre) {
    const Line& line = *dim.GetLine(index);
    return RayTowards(line, centre, EndsOf(line).At(dim.GetLineParam(index + 1))).direction;
}

} // namespace

Arc* AngularDimension::ComputeDimensionArc(const Point& p1, const Point& p2, bool through) const {
    Point centre;
    if (!FindMeetingPoint(lines_[0], lines_[1], centre))
        return nullptr;
    const Ray from = RayTowards(*lines_[0], centre, p1);
    const Ray to = RayTowards(*lines_[1], centre, p2);
    const double radius = through ? from.reach : std::min(from.reach, to.reach);
    return std::make_unique<Arc>(centre.AffineCombine(radius, from.direction),
                                 centre.AffineCombine(radius, to.direction), centre)
        .release();
}

AngularDimension* AngularDimension::FindDimension(const Line* line1, const Line* line2, const Point& pick1,
                                                  const Point& pick2) {
    Point centre;
    if (!FindMeetingPoint(line1, line2, centre))
        return nullptr;
    const Vector ray1 = RayTowards(*line1, centre, pick1).direction;
    const Vector ray2 = RayTowards(*line2, centre, pick2).direction;
    std::vector<DimensionBase*> listed;
    line1->GetDimensionsOfType(const_cast<Line*>(line2), Angular, listed);
    for (DimensionBase* entry : listed) {
        auto* dim = dynamic_cast<AngularDimension*>(entry);
        if (dim == nullptr || dim->arc_ == nullptr || !line2->HasDimension(dim))
            continue;
        // Lines and rays are unordered pairs: the sector below 180 degrees between two rays is one.
        const int index = dim->GetLine(0) == line1 ? 0 : 1;
        if (MeasuredRay(*dim, index, centre).Dot(ray1) > 0.0 &&
            MeasuredRay(*dim, 1 - index, centre).Dot(ray2) > 0.0)
            return dim;
    }
    return nullptr;
}

bool AngularDimension::CenterAtLineEnds() const {
    if (!HasRecord(arc_.get()) || !HasLines())
        return false;
    const double nearSq = 100.0 * EQ_ask_length_squared_tolerance();
    const Point centre = arc_->GetCenter();
    return std::all_of(lines_.begin(), lines_.end(), [&](const Line* line) {
        const Segment ends = EndsOf(*line);
        return ends.start.Distance2(centre) <= nearSq || ends.end.Distance2(centre) <= nearSq;
    });
}

void AngularDimension::StoreLineParams() {
    SetLineParam(1, EndsOf(*lines_[0]).ParamOf(arc_->GetStart()));
    SetLineParam(2, EndsOf(*lines_[1]).ParamOf(arc_->GetEnd()));
}

void AngularDimension::ExchangeLines() {
    std::swap(lines_[0], lines_[1]);
    std::swap(lineParams_[0], lineParams_[1]);
}

bool AngularDimension::HasArcMoved(const Point& q1, const Point& q2) const {
    const double t = EQ_ask_length_tolerance();
    // A line may also have turned about the very point where the arc meets it.
    Point centre;
    const bool hasCentre = FindMeetingPoint(lines_[0], lines_[1], centre);
    return !hasCentre || q1.Distance(arc_->GetStart()) > t || q2.Distance(arc_->GetEnd()) > t ||
           centre.Distance(arc_->GetCenter()) > t;
}

bool AngularDimension::FollowLines() {
    Point q1 = EndsOf(*lines_[0]).At(lineParams_[0]);
    Point q2 = EndsOf(*lines_[1]).At(lineParams_[1]);
    if (!HasArcMoved(q1, q2))
        return true;
    std::unique_ptr<Arc> moved(ComputeDimensionArc(q1, q2, true));
    if (moved == nullptr)
        return false;
    if (moved->IsMajorArc()) {
        // The lines have swung past each other: what was the end is now the start.
        LogForChange();
        ExchangeLines();
        moved.reset(ComputeDimensionArc(q2, q1, true));
        if (moved == nullptr)
            return false;
    }
    SetDimensionArc(moved.release());
    StoreLineParams();
    return true;
}

} // namespace Tessera::Dimension
