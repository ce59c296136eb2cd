#include "tessera/dimension/AngularDimension.h"

#include <utility>

#include "tessera/dimension/internal/AngleRange.h"
#include "tessera/dimension/internal/CopyOf.h"
#include "tessera/dimension/internal/MoveCurves.h"
#include "tessera/geometry/Arc.h"

// Life, fields and parents. The arc is found in AngularArc.cpp and the rest of an update done in
// AngularUpdate.cpp; the decoration is drawn and picked in AngularDrawing.cpp; AngularEdit.cpp holds value
// edits and drags.

namespace Tessera::Dimension {

using Geometry::Arc;
using Geometry::Curve;
using Geometry::Line;
using Geometry::Point;
using Geometry::Vector;

namespace {

constexpr double kDefaultHeightOffset = 15.0; // model units

} // namespace

// --- Life

AngularDimension::AngularDimension() {
    SetTextHeightOffset(kDefaultHeightOffset);
}

// The lines come as const: a dimension reads them, but it also enters their lists and, when a value is typed,
// turns them.
AngularDimension::AngularDimension(const Line* line1, const Line* line2, const Point& pick1,
                                   const Point& pick2, double textHeightOffset, double fontHeight)
    : DimensionBase(0.0, 0.0, textHeightOffset, 0.0, Point(), Vector(1.0, 0.0), false, fontHeight),
      lines_{const_cast<Line*>(line1), const_cast<Line*>(line2)} {
    arc_.reset(ComputeDimensionArc(pick1, pick2, false));
    if (arc_ && arc_->IsMajorArc()) {
        std::swap(lines_[0], lines_[1]);
        arc_.reset(ComputeDimensionArc(pick2, pick1, false));
    }
    if (arc_) {
        StoreLineParams();
        param_ = arc_->GetMidParam();
    }
    UpdateDimension();
    SetIsFinalized(false);
    AttachToParents();
}

AngularDimension::AngularDimension(const AngularDimension& other)
    : DimensionBase(other), arc_(CopyOf(other.arc_)),
      param_(other.param_), decos_{CopyOf(other.decos_[0]), CopyOf(other.decos_[1])},
      decoEndDistance_(other.decoEndDistance_), lines_(other.lines_), lineParams_(other.lineParams_),
      paramUsed_(other.paramUsed_), paramOffset_(other.paramOffset_), distOffset_(other.distOffset_) {}

AngularDimension::~AngularDimension() {
    DetachFromCurves();
}

AngularDimension* AngularDimension::MakeDimension(const Line* line1, const Line* line2, const Point& pick1,
                                                  const Point& pick2, double textHeightOffset,
                                                  double fontHeight) {
    if (!HasRecord(line1) || !HasRecord(line2) || line1->IsZeroLength() || line2->IsZeroLength())
        return nullptr;
    AngularDimension* known = FindDimension(line1, line2, pick1, pick2);
    return known != nullptr ? known
                            : new AngularDimension(line1, line2, pick1, pick2, textHeightOffset, fontHeight);
}

AngularDimension* AngularDimension::Copy() const {
    return new AngularDimension(*this);
}

void AngularDimension::AssignDimension(const AngularDimension* other) {
    if (other == nullptr || other == this)
        return;
    TakeOver(*other, [&] {
        Store(lines_, other->lines_);
        AssignFields(*other);
        SetDimensionArc(CopyOf(other->arc_).release());
        SetParam(other->param_);
        SetAngularDimDeco(1, CopyOf(other->decos_[0]).release());
        SetAngularDimDeco(2, CopyOf(other->decos_[1]).release());
        SetDecoEndDistance(other->decoEndDistance_);
        Store(lineParams_, other->lineParams_);
        SetParamUsed(other->paramUsed_);
        SetAnnotCenterParamOffset(other->paramOffset_);
        SetAnnotCenterDistOffset(other->distOffset_);
    });
}

bool AngularDimension::Replace(Core::TaggedObject* other) {
    return ReplaceBy<AngularDimension>(other,
                                       [this](const AngularDimension* source) { AssignDimension(source); });
}

void AngularDimension::Transform(double m[3][3]) {
    DimensionBase::Transform(m);
    decoEndDistance_ /= m[2][2];
    distOffset_ /= m[2][2];
    if (!HasRecord(arc_.get()) || !std::isfinite(1.0 / m[2][2]))
        return;
    // The angle of the text is one of the arc's: it is found again from the point at which it stands.
    Point middle = arc_->GetPointFromAngle(param_);
    middle.Transform(m);
    arc_->Transform(m);
    if (m[0][0] * m[1][1] - m[0][1] * m[1][0] < 0.0) {
        ExchangeLines();
        paramOffset_ = -paramOffset_;
    }
    param_ = NearestTurn(arc_->GetAngleFromPoint(middle), arc_->GetMidParam() + paramOffset_);
}

// --- Fields

void AngularDimension::SetDimensionArc(Arc* arc) {
    LogForChange();
    if (arc_.get() != arc)
        arc_.reset(arc);
}

void AngularDimension::SetParam(double angle) {
    Store(param_, angle);
}

AngularDimDeco* AngularDimension::GetAngularDimDeco(int side) const {
    return side == 1 || side == 2 ? decos_[side - 1].get() : nullptr;
}

void AngularDimension::SetAngularDimDeco(int side, AngularDimDeco* deco) {
    if (side != 1 && side != 2)
        return;
    LogForChange();
    if (decos_[side - 1].get() != deco)
        decos_[side - 1].reset(deco);
}

void AngularDimension::SetDecoEndDistance(double distance) {
    Store(decoEndDistance_, distance);
}

void AngularDimension::SetLineParam(int which, double t) {
    Store(lineParams_[which == 1 ? 0 : 1], t);
}

void AngularDimension::SetParamUsed(int value) {
    Store(paramUsed_, std::int32_t{value});
}

void AngularDimension::SetAnnotCenterParamOffset(double angle) {
    Store(paramOffset_, angle);
}

void AngularDimension::SetAnnotCenterDistOffset(double distance) {
    Store(distOffset_, distance);
}

void AngularDimension::SetIsFinalized(bool finalized) {
    ChangeIsFinalized(finalized);
}

// --- Parents

void AngularDimension::GetParentCurves(std::vector<Curve*>& curves) const {
    for (Line* line : lines_)
        if (line != nullptr)
            curves.push_back(line);
}

void AngularDimension::AddGeometry(Curve* curve) {
    if (curve == nullptr || curve->GetType() != Geometry::CurveType_Line)
        return;
    auto* line = static_cast<Line*>(curve);
    if (lines_[0] == line || lines_[1] == line)
        return;
    if (lines_[0] == nullptr)
        Store(lines_[0], line);
    else if (lines_[1] == nullptr)
        Store(lines_[1], line);
}

void AngularDimension::ReplaceCurve(Line* line) {
    ReplaceParent(line);
}

void AngularDimension::ExchangeCurve(const Curve* parent, Curve* replacement) {
    if (parent == nullptr)
        return;
    for (Line*& line : lines_) {
        if (line != parent)
            continue;
        line = static_cast<Line*>(replacement);
        // What has lost a line shows nothing until the next update.
        if (replacement == nullptr)
            decos_ = {};
    }
}

bool AngularDimension::HasLines() const {
    return HasRecord(lines_[0]) && HasRecord(lines_[1]);
}

bool AngularDimension::IsValid() const {
    return HasRecord(arc_.get()) && HasLines() && !lines_[0]->IsZeroLength() && !lines_[1]->IsZeroLength() &&
           !lines_[0]->IsParallel(lines_[1]);
}

} // namespace Tessera::Dimension
