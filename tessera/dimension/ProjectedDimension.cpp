#include "tessera/dimension/ProjectedDimension.h"

#include <algorithm>

#include "tessera/dimension/internal/LengthLayout.h"
#include "tessera/dimension/internal/MoveCurves.h"
#include "tessera/dimension/internal/TextHeightRaise.h"
#include "tessera/geometry/Arc.h"
#include "tessera/kernel/EQ.h"

namespace Tessera::Dimension {

using Geometry::Arc;
using Geometry::Curve;
using Geometry::Line;
using Geometry::Point;
using Geometry::Vector;

namespace {

constexpr double kOrderTol = 1e-10; // component of a unit direction that decides the order

Vector Turned(Vector v, double angleRad) {
    v.Rotate(angleRad);
    return v;
}

} // namespace

ProjectedDimension::ProjectedDimension(Axis axis, Line* line, Arc* first, Arc* second,
                                       double textHeightOffset, double fontHeight)
    : LengthDimension(Unbound{}, textHeightOffset, fontHeight), axis_(axis) {
    line_ = line;
    for (Arc* arc : {first, second})
        if (arc != nullptr)
            arcs_.push_back(arc);
}

void ProjectedDimension::AssignDimension(const ProjectedDimension* other) {
    LengthDimension::AssignDimension(other);
    Store(arcs_, other->arcs_);
    Store(rotateAngle_, other->rotateAngle_);
    Store(cachedRotateAngle_, other->cachedRotateAngle_);
}

bool ProjectedDimension::Replace(Core::TaggedObject* other) {
    return ReplaceBy<ProjectedDimension>(
        other, [this](const ProjectedDimension* source) { AssignDimension(source); });
}

// --- Parents

void ProjectedDimension::GetParentCurves(std::vector<Curve*>& curves) const {
    LengthDimension::GetParentCurves(curves);
    curves.insert(curves.end(), arcs_.begin(), arcs_.end());
}

void ProjectedDimension::AddGeometry(Curve* curve) {
    if (curve == nullptr)
        return;
    LogForChange(); // whether the curve is taken or not
    if (curve->GetType() == Geometry::CurveType_Arc)
        arcs_.push_back(static_cast<Arc*>(curve));
    else if (curve->GetType() == Geometry::CurveType_Line && line_ == nullptr)
        line_ = static_cast<Line*>(curve);
}

void ProjectedDimension::AddArc(Arc* arc) {
    if (arc == nullptr)
        return;
    LogForChange();
    arcs_.push_back(arc);
}

void ProjectedDimension::GetArcs(std::vector<Arc*>& arcs) const {
    arcs.insert(arcs.end(), arcs_.begin(), arcs_.end());
}

void ProjectedDimension::ReplaceCurve(Curve* c) {
    ReplaceParent(c);
}

void ProjectedDimension::ExchangeCurve(const Curve* parent, Curve* replacement) {
    LengthDimension::ExchangeCurve(parent, replacement);
    const auto isParent = [parent](const Arc* arc) { return arc == parent; };
    if (std::none_of(arcs_.begin(), arcs_.end(), isParent))
        return;
    std::replace_if(arcs_.begin(), arcs_.end(), isParent, static_cast<Arc*>(replacement));
    if (replacement == nullptr) {
        arcs_.erase(std::remove(arcs_.begin(), arcs_.end(), nullptr), arcs_.end());
        DropDecorations();
    }
}

// --- Frame

void ProjectedDimension::Rotate(double angleRad) {
    SetRotateAngle(angleRad);
    UpdateDimension();
}

void ProjectedDimension::SetRotateAngle(double angleRad) {
    Store(rotateAngle_, angleRad);
}

void ProjectedDimension::FinalizeRotate() {
    Store(cachedRotateAngle_, rotateAngle_);
}

void ProjectedDimension::SetCachedRotateAngle(double /*angleRad*/) {
    FinalizeRotate();
}

Vector ProjectedDimension::AskGrowthAxis() const {
    return Turned(axis_ == Axis::X ? Vector(1.0, 0.0) : Vector(0.0, 1.0), rotateAngle_);
}

// --- What is measured

bool ProjectedDimension::AskDimensionSegment(Segment& segment) const {
    if (!std::all_of(arcs_.begin(), arcs_.end(), HasRecord))
        return false;
    if (HasRecord(line_)) {
        segment = {line_->GetStart(), line_->GetEnd()};
        if (arcs_.empty())
            return true;
        const Point centre = arcs_.front()->GetCenter();
        const bool isEndNearer = centre.Distance2(segment.end) < centre.Distance2(segment.start);
        segment = {isEndNearer ? segment.end : segment.start, centre};
        return true;
    }
    if (arcs_.size() < 2)
        return false;
    segment = {arcs_[0]->GetCenter(), arcs_[1]->GetCenter()};
    return true;
}

Line* ProjectedDimension::GetDimensionLine() const {
    if (arcs_.empty())
        return line_;
    Segment segment;
    return AskDimensionSegment(segment) ? new Line(segment.start, segment.end) : nullptr;
}

void ProjectedDimension::OrderEnds(const Segment& line, Point& a, Point& b, int& order) const {
    const Vector along = AskGrowthAxis();
    const Vector across = Turned(axis_ == Axis::X ? Vector(0.0, 1.0) : Vector(1.0, 0.0), rotateAngle_);
    const Vector v = line.Direction(Vector());
    const bool startsFirst = v.Dot(v == along ? along : across) > kOrderTol;
    a = startsFirst ? line.start : line.end;
    b = startsFirst ? line.end : line.start;
    order = startsFirst ? 1 : -1;
}

void ProjectedDimension::OrderEnds(const Line* line, Point& a, Point& b, int& order) const {
    if (HasRecord(line))
        OrderEnds(Segment{line->GetStart(), line->GetEnd()}, a, b, order);
}

bool ProjectedDimension::AskMeasured(Segment& measured) const {
    Segment segment;
    if (!AskDimensionSegment(segment))
        return false;
    Point a;
    Point b;
    int order = 0;
    OrderEnds(segment, a, b, order);
    const Vector axis = AskGrowthAxis();
    const Point foot = a.AffineCombine(Vector(a, b).Dot(axis), axis);
    measured = order == 1 ? Segment{a, foot} : Segment{foot, a};
    return true;
}

// --- Update

void ProjectedDimension::UpdateOver(const Segment& measured) {
    if (measured.IsZero())
        SetOrientation(Vector(1.0, 0.0));
    LengthDimension::UpdateOver(measured);
}

void ProjectedDimension::AdjustFeet() {
    Segment measured;
    Segment segment;
    if (!AskMeasured(measured) || measured.IsZero() || !AskDimensionSegment(segment))
        return;
    PullFoot(1, segment.start);
    PullFoot(2, segment.end);
}

double ProjectedDimension::ComputeTextHeightOffset() {
    Segment measured;
    if (!AskMeasured(measured))
        return GetTextHeightOffset();
    const Vector n = ComputeOffsetVector(GetOrientation());
    const double raised = Vector(measured.start, GetOrigin()).Dot(n);
    return raised - TextHeightRaise(ComputeAnnotationOrientationAngle(), raised, GetFontHeight(),
                                    EQ_ask_length_tolerance());
}

void ProjectedDimension::GrowParents(double growth, const Vector& along) {
    const Vector outward1 = -growth * ShareOf(1) * along;
    const Vector outward2 = growth * ShareOf(2) * along;
    if (arcs_.empty()) {
        MoveLineEnds(*line_, outward1, outward2);
        return;
    }
    const bool hasLine = HasRecord(line_);
    Curve* first = hasLine ? static_cast<Curve*>(line_) : arcs_[0];
    Curve* second = hasLine ? arcs_[0] : arcs_[1];
    if (ShareOf(1) > 0.0)
        Translate(*first, outward1);
    if (ShareOf(2) > 0.0)
        Translate(*second, outward2);
}

} // namespace Tessera::Dimension
