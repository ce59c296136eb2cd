#include "tessera/dimension/RadialDimension.h"

#include <algorithm>
#include <cmath>

#include "tessera/dimension/internal/CopyOf.h"
#include "tessera/dimension/internal/MoveCurves.h"
#include "tessera/dimension/internal/RadialLayout.h"
#include "tessera/dimension/internal/SharedDimension.h"
#include "tessera/dimension/internal/TextBox.h"
#include "tessera/kernel/EQ.h"

// Life, fields and update. The leader is built, drawn and picked in RadialDrawing.cpp; RadialEdit.cpp holds
// value edits and drags.

namespace Tessera::Dimension {

using Geometry::Arc;
using Geometry::Curve;
using Geometry::Point;
using Geometry::Vector;

namespace {

constexpr double kClearance = 0.25;    // of the text from the leader, font heights
constexpr double kRadiusPrefix = 0.25; // room for the prefix, font heights
constexpr double kDiameterPrefix = 0.5;
constexpr double kDefaultTextOffset = 2.0; // lengths of the text

} // namespace

// --- Life

RadialDimension::RadialDimension(Arc* arc, const Point* pick, double textHeightOffset, double fontHeight)
    : DimensionBase(0.0, 0.0, textHeightOffset, 0.0, Point(), Vector(1.0, 0.0), false, fontHeight),
      arc_(arc) {
    if (arc_ == nullptr)
        return;
    if (HasRecord(arc_))
        PlaceAt(pick);
    UpdateDimension();
    SetIsFinalized(false);
    AttachToParents();
}

void RadialDimension::PlaceAt(const Point* pick) {
    // Each coordinate for itself, so that picks left of or below the origin count as none too.
    const double t = EQ_ask_length_tolerance();
    const bool isPicked = pick != nullptr && pick->x > t && pick->y > t;
    PlaceFoot(isPicked ? arc_->GetAngleFromPoint(*pick) : arc_->GetMidParam());
    SetTextHeightOffset(kClearance * GetFontHeight());
    StoreAnnotation(arc_->GetRadius());
    SetTextWidthOffset(ComputeAnnotationStringLength());
    SetTextOffset(kDefaultTextOffset * GetTextWidthOffset());
}

RadialDimension::RadialDimension(Arc* arc, const Point& pick, double fontHeight)
    : RadialDimension(arc, &pick, 0.0, fontHeight) {}

RadialDimension::RadialDimension(Arc* arc, double fontHeight)
    : RadialDimension(arc, nullptr, 0.0, fontHeight) {}

RadialDimension::RadialDimension(Arc* arc, double textHeightOffset, double fontHeight)
    : RadialDimension(arc, nullptr, textHeightOffset, fontHeight) {}

RadialDimension::RadialDimension(const RadialDimension& other)
    : DimensionBase(other), arc_(other.arc_), param_(other.param_), relativeParam_(other.relativeParam_),
      deco_(CopyOf(other.deco_)), textOffset_(other.textOffset_) {}

RadialDimension::~RadialDimension() {
    DetachFromCurves();
}

RadialDimension* RadialDimension::FindOrMake(Arc* arc, const Point* pick, double fontHeight) {
    if (arc == nullptr)
        return nullptr;
    std::vector<DimensionBase*> listed;
    arc->FindDimensions(Radial, listed);
    auto* known = FirstOf<RadialDimension>(listed);
    return known != nullptr ? known : new RadialDimension(arc, pick, 0.0, fontHeight);
}

RadialDimension* RadialDimension::MakeDimension(Arc* arc, const Point& pick, double fontHeight) {
    return FindOrMake(arc, &pick, fontHeight);
}

RadialDimension* RadialDimension::MakeDimension(Arc* arc, double fontHeight) {
    return FindOrMake(arc, nullptr, fontHeight);
}

RadialDimension* RadialDimension::Copy() const {
    return new RadialDimension(*this);
}

void RadialDimension::AssignDimension(const RadialDimension* other) {
    SetArc(other->arc_);
    AssignFields(*other);
    Store(param_, other->param_);
    SetRelativeParam(other->relativeParam_);
    SetRadialDimDeco(CopyOf(other->deco_).release());
    SetTextOffset(other->textOffset_);
}

bool RadialDimension::Replace(Core::TaggedObject* other) {
    return ReplaceBy<RadialDimension>(other,
                                      [this](const RadialDimension* source) { AssignDimension(source); });
}

void RadialDimension::Transform(double m[3][3]) {
    DimensionBase::Transform(m);
    textOffset_ /= m[2][2];
    // A reflected arc runs the other way.
    if (m[0][0] * m[1][1] - m[0][1] * m[1][0] < 0.0)
        relativeParam_ = 1.0 - relativeParam_;
}

// --- Fields and parents

void RadialDimension::SetArc(Arc* arc) {
    Store(arc_, arc);
}

void RadialDimension::SetRelativeParam(double u) {
    Store(relativeParam_, u);
}

void RadialDimension::SetTextOffset(double offset) {
    Store(textOffset_, offset);
}

void RadialDimension::SetRadialDimDeco(RadialDimDeco* deco) {
    LogForChange();
    if (deco_.get() != deco)
        deco_.reset(deco);
}

void RadialDimension::SetIsFinalized(bool finalized) {
    ChangeIsFinalized(finalized);
}

void RadialDimension::GetParentCurves(std::vector<Curve*>& curves) const {
    if (arc_ != nullptr)
        curves.push_back(arc_);
}

void RadialDimension::AddGeometry(Curve* curve) {
    if (curve != nullptr && curve->GetType() == Geometry::CurveType_Arc && curve != arc_)
        SetArc(static_cast<Arc*>(curve));
}

void RadialDimension::ExchangeCurve(const Curve* parent, Curve* replacement) {
    if (arc_ == nullptr || arc_ != parent)
        return;
    arc_ = static_cast<Arc*>(replacement);
    // What has lost its arc shows nothing until the next update.
    if (replacement == nullptr)
        deco_.reset();
}

bool RadialDimension::DisplayR() const {
    return !HasRecord(arc_) || !arc_->IsMajorArc();
}

double RadialDimension::ComputeAnnotationStringLength() const {
    return DimensionBase::ComputeAnnotationStringLength() +
           (DisplayR() ? kRadiusPrefix : kDiameterPrefix) * GetFontHeight();
}

// --- Update

void RadialDimension::PlaceFoot(double angle) {
    Store(param_, RangeOf(*arc_).Clamp(angle));
    SetRelativeParam(arc_->GetRelativeParam(param_));
}

void RadialDimension::UpdateDimension() {
    if (TakePendingEdit())
        ApplyTypedValue();
    Refresh();
}

void RadialDimension::Refresh() {
    if (!HasRecord(arc_))
        return;
    // The foot keeps its place on an arc that has changed.
    Store(param_, arc_->GetParamFromRelativeParam(std::clamp(relativeParam_, 0.0, 1.0)));
    SetTextHeightOffset(kClearance * GetFontHeight());
    StoreAnnotation(arc_->GetRadius());
    Vector along;
    Vector across;
    ComputeAnnotationOrientation(along, across);
    SetOrientation(along);
    SetTextWidthOffset(ComputeAnnotationStringLength());
    PlaceText();
    ComputeRadialDimensionDeco();
}

// Turned text hangs below the leader with its heads towards it. The offset that says so serves the anchor
// only.
void RadialDimension::PlaceText() {
    const double clear = GetTextHeightOffset();
    double angleDeg = 0.0;
    double offset = clear;
    ComputeTextAngleAndHeightOffset(Radial, ComputeAnnotationOrientationAngle(), GetFontHeight(), &angleDeg,
                                    &offset);
    SetTextAngle(angleDeg);
    SetTextHeightOffset(offset);
    double anchor[2];
    ComputeAnnotationOrigin(anchor);
    SetOrigin(anchor[0], anchor[1]);
    SetTextHeightOffset(clear);
}

Point RadialDimension::AskFoot(Vector& along) const {
    along = Vector(std::cos(param_), std::sin(param_));
    return arc_->GetCenter().AffineCombine(arc_->GetRadius(), along);
}

void RadialDimension::ComputeAnnotationOrientation(Vector& along, Vector& across) const {
    if (!HasRecord(arc_))
        return;
    AskFoot(along);
    double angleDeg = 0.0;
    double raise = 0.0;
    ComputeTextAngleAndHeightOffset(Radial, ReadingAngle(along), 1.0, &angleDeg, &raise);
    across = (raise > 0.0 ? -1.0 : 1.0) * UpDirection(angleDeg);
}

void RadialDimension::ComputeAnnotationOrigin(double* out) const {
    if (out == nullptr || !HasRecord(arc_))
        return;
    Vector along;
    Vector across;
    const Point foot = AskFoot(along);
    ComputeAnnotationOrientation(along, across);
    const Point anchor = foot.AffineCombine(GetAnnotationOffsetFromDecoEnd(GetTextWidthOffset()), along)
                             .AffineCombine(GetTextHeightOffset(), across);
    out[0] = anchor.x;
    out[1] = anchor.y;
}

} // namespace Tessera::Dimension
