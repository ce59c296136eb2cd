#include "tessera/dimension/LinearDimension.h"

#include <algorithm>

#include "tessera/dimension/internal/LengthLayout.h"
#include "tessera/dimension/internal/MoveCurves.h"
#include "tessera/dimension/internal/SharedDimension.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"

// The curves come as const: a dimension reads them, but it also enters their lists and, when a value is
// typed, moves them.

namespace Tessera::Dimension {

using Geometry::Arc;
using Geometry::Curve;
using Geometry::Ellipse;
using Geometry::Line;
using Geometry::Point;
using Geometry::Vector;

namespace {

bool IsLine(const Curve& curve) {
    return curve.GetType() == Geometry::CurveType_Line;
}

bool CanMeasure(const Curve& curve) {
    return IsLine(curve) || curve.GetType() == Geometry::CurveType_Arc ||
           curve.GetType() == Geometry::CurveType_Ellipse;
}

/// Of an arc or ellipse.
Point CentreOf(const Curve& curve) {
    return curve.GetType() == Geometry::CurveType_Arc ? static_cast<const Arc&>(curve).GetCenter()
                                                      : static_cast<const Ellipse&>(curve).AskCenter();
}

Point FootOn(const Curve& line, const Point& p) {
    const Segment ends = EndsOf(line);
    return ends.At(ends.ParamOf(p));
}

double ParamOf(const Line* line, const Point* pick) {
    return HasRecord(line) && pick != nullptr ? EndsOf(*line).ParamOf(*pick) : 0.0;
}

} // namespace

// --- Life

LinearDimension::LinearDimension(const Curve* first, const Curve* second, double pickPointParam,
                                 double textHeightOffset, double fontHeight)
    : LengthDimension(Unbound{}, textHeightOffset, fontHeight), first_(const_cast<Curve*>(first)),
      second_(const_cast<Curve*>(second)), pickPointParam_(pickPointParam) {
    Bind();
}

LinearDimension::LinearDimension(const Line* first, const Line* second, const Point* pick,
                                 double textHeightOffset, double fontHeight)
    : LinearDimension(first, second, ParamOf(first, pick), textHeightOffset, fontHeight) {}

LinearDimension::LinearDimension(const Line* first, const Arc* second, double textHeightOffset,
                                 double fontHeight)
    : LinearDimension(first, second, 0.0, textHeightOffset, fontHeight) {}

LinearDimension::LinearDimension(const Line* first, const Ellipse* second, double textHeightOffset,
                                 double fontHeight)
    : LinearDimension(first, second, 0.0, textHeightOffset, fontHeight) {}

LinearDimension::LinearDimension(const Arc* first, const Arc* second, double textHeightOffset,
                                 double fontHeight)
    : LinearDimension(first, second, 0.0, textHeightOffset, fontHeight) {}

LinearDimension::LinearDimension(const Arc* first, const Ellipse* second, double textHeightOffset,
                                 double fontHeight)
    : LinearDimension(first, second, 0.0, textHeightOffset, fontHeight) {}

LinearDimension::LinearDimension(const Ellipse* first, const Ellipse* second, double textHeightOffset,
                                 double fontHeight)
    : LinearDimension(first, second, 0.0, textHeightOffset, fontHeight) {}

LinearDimension::~LinearDimension() {
    DetachFromCurves();
}

LinearDimension* LinearDimension::MakeDimension(const Line* first, const Line* second, const Point* pick,
                                                double textHeightOffset, double fontHeight) {
    return FindOrMake<LinearDimension>(Linear, first, second, pick, textHeightOffset, fontHeight);
}

LinearDimension* LinearDimension::MakeDimension(const Line* first, const Arc* second, double textHeightOffset,
                                                double fontHeight) {
    return FindOrMake<LinearDimension>(Linear, first, second, textHeightOffset, fontHeight);
}

LinearDimension* LinearDimension::MakeDimension(const Line* first, const Ellipse* second,
                                                double textHeightOffset, double fontHeight) {
    return FindOrMake<LinearDimension>(Linear, first, second, textHeightOffset, fontHeight);
}

LinearDimension* LinearDimension::MakeDimension(const Arc* first, const Arc* second, double textHeightOffset,
                                                double fontHeight) {
    return FindOrMake<LinearDimension>(Linear, first, second, textHeightOffset, fontHeight);
}

LinearDimension* LinearDimension::MakeDimension(const Arc* first, const Ellipse* second,
                                                double textHeightOffset, double fontHeight) {
    return FindOrMake<LinearDimension>(Linear, first, second, textHeightOffset, fontHeight);
}

LinearDimension* LinearDimension::MakeDimension(const Ellipse* first, const Ellipse* second,
                                                double textHeightOffset, double fontHeight) {
    return FindOrMake<LinearDimension>(Linear, first, second, textHeightOffset, fontHeight);
}

LinearDimension* LinearDimension::Copy() const {
    return new LinearDimension(*this);
}

void LinearDimension::AssignDimension(const LinearDimension* other) {
    if (other == nullptr || other == this)
        return;
    TakeOver(*other, [&] {
        LengthDimension::AssignDimension(other);
        Store(first_, other->first_);
        Store(second_, other->second_);
        SetPickPointParam(other->pickPointParam_);
    });
}

bool LinearDimension::Replace(Core::TaggedObject* other) {
    return ReplaceBy<LinearDimension>(other,
                                      [this](const LinearDimension* source) { AssignDimension(source); });
}

// --- Parents

void LinearDimension::SetPickPointParam(double t) {
    Store(pickPointParam_, t);
}

void LinearDimension::GetParentCurves(std::vector<Curve*>& curves) const {
    for (Curve* curve : {first_, second_})
        if (curve != nullptr)
            curves.push_back(curve);
}

void LinearDimension::AddGeometry(Curve* curve) {
    if (curve == nullptr || !CanMeasure(*curve))
        return;
    if (first_ == nullptr)
        Store(first_, curve);
    else if (second_ == nullptr)
        Store(second_, curve);
}

void LinearDimension::ReplaceCurve(Curve* c) {
    ReplaceParent(c);
}

void LinearDimension::ExchangeCurve(const Curve* parent, Curve* replacement) {
    if (parent == nullptr || (parent != first_ && parent != second_))
        return;
    if (first_ == parent)
        first_ = replacement;
    if (second_ == parent)
        second_ = replacement;
    if (replacement == nullptr)
        DropDecorations();
}

bool LinearDimension::IsValid() const {
    if (!HasRecord(first_) || !HasRecord(second_) || first_->IsZeroLength() || second_->IsZeroLength())
        return false;
    if (IsLine(*first_) && IsLine(*second_))
        return static_cast<const Line*>(first_)->IsParallel(static_cast<const Line*>(second_));
    return true;
}

// --- What is measured

bool LinearDimension::AskMeasured(Segment& measured) const {
    if (!IsValid())
        return false;
    const bool isFirstLine = IsLine(*first_);
    const bool isSecondLine = IsLine(*second_);
    const Point from =
        isFirstLine ? isSecondLine ? EndsOf(*first_).At(pickPointParam_) : FootOn(*first_, CentreOf(*second_))
                    : CentreOf(*first_);
    measured = {from, isSecondLine ? FootOn(*second_, from) : CentreOf(*second_)};
    return true;
}

Line* LinearDimension::GetDimensionLine() const {
    return ComputeTempDimensionLine();
}

Vector LinearDimension::AskGrowthAxis() const {
    // Lines move across themselves, whichever way the text of the vanished distance reads.
    const Curve* line = IsLine(*first_) ? first_ : second_;
    const Vector d = GetOrientation();
    if (!IsLine(*line))
        return d;
    const Vector across = EndsOf(*line).Direction(d).GetPerpendicular();
    return across.Dot(d) < 0.0 ? -1.0 * across : across;
}

void LinearDimension::GrowParents(double growth, const Vector& along) {
    if (ShareOf(1) > 0.0)
        Translate(*first_, -growth * ShareOf(1) * along);
    if (ShareOf(2) > 0.0)
        Translate(*second_, growth * ShareOf(2) * along);
}

// --- Feet

void LinearDimension::AdjustFeet() {
    for (const Curve* curve : {first_, second_}) {
        if (!HasRecord(curve))
            continue;
        if (IsLine(*curve))
            AdjustDimExtension(static_cast<const Line*>(curve));
        else
            PlaceFoot(SideOf(curve), CentreOf(*curve));
    }
}

void LinearDimension::AdjustDimExtension(const Line* line) {
    std::vector<Point> points;
    GetLengthDimDecoPoints(SideOf(line), points);
    if (!HasRecord(line) || points.size() < kEndPointCount)
        return;
    const Segment ends = EndsOf(*line);
    PlaceFoot(SideOf(line), ends.At(std::clamp(ends.ParamOf(points[kTip]), 0.0, 1.0)));
}

void LinearDimension::AdjustDimExtension(const Arc* arc) {
    if (HasRecord(arc))
        PlaceFoot(SideOf(arc), arc->GetCenter());
}

void LinearDimension::AdjustDimExtension(const Ellipse* ellipse) {
    if (HasRecord(ellipse))
        PlaceFoot(SideOf(ellipse), ellipse->AskCenter());
}

void LinearDimension::AdjustDimExtension(const Point& centre) {
    Segment measured;
    if (AskMeasured(measured))
        PlaceFoot(centre.Distance2(measured.start) <= centre.Distance2(measured.end) ? 1 : 2, centre);
}

} // namespace Tessera::Dimension
