#include "tessera/dimension/LengthDimension.h"

#include <cmath>

#include "tessera/dimension/internal/CopyOf.h"
#include "tessera/dimension/internal/LengthLayout.h"
#include "tessera/dimension/internal/MoveCurves.h"
#include "tessera/dimension/internal/SharedDimension.h"
#include "tessera/dimension/internal/TextHeightRaise.h"
#include "tessera/geometry/Line.h"
#include "tessera/kernel/EQ.h"

// Life, fields and update. The decoration is built in LengthDecoration.cpp, drawn and picked in
// LengthDrawing.cpp, dragged in LengthDrag.cpp; LengthEdit.cpp holds the protocol of value edits.

namespace Tessera::Dimension {

using Geometry::Curve;
using Geometry::Line;
using Geometry::Point;
using Geometry::Vector;

namespace {

constexpr double kDefaultHeightOffset = 15.0; // model units
constexpr double kUprightTol = 1e-10;         // x component of a unit direction that counts as upright

} // namespace

// --- Life

LengthDimension::LengthDimension() {
    SetTextHeightOffset(kDefaultHeightOffset);
}

LengthDimension::LengthDimension(Unbound /*tag*/, double textHeightOffset, double fontHeight)
    : DimensionBase(0.0, 0.0, textHeightOffset, 0.0, Point(), Vector(1.0, 0.0), false, fontHeight) {}

LengthDimension::LengthDimension(Line* line, double fontHeight)
    : LengthDimension(line, kHeightOffsetPerFontHeight * fontHeight, fontHeight) {}

LengthDimension::LengthDimension(Line* line, double textHeightOffset, double fontHeight)
    : LengthDimension(Unbound{}, textHeightOffset, fontHeight) {
    line_ = line;
    Bind();
}

LengthDimension::LengthDimension(const LengthDimension& other)
    : DimensionBase(other), line_(other.line_), relativeParam_(other.relativeParam_),
      deco1_(CopyOf(other.deco1_)), deco2_(CopyOf(other.deco2_)), decoEndDistance_(other.decoEndDistance_) {}

LengthDimension::~LengthDimension() {
    DetachFromCurves();
}

void LengthDimension::Bind() {
    UpdateDimension();
    SetIsFinalized(false);
    AttachToParents();
}

LengthDimension* LengthDimension::MakeDimension(Line* line, double fontHeight) {
    if (line == nullptr)
        return nullptr;
    std::vector<DimensionBase*> listed;
    line->FindDimensions(Length, listed);
    auto* known = FirstOf<LengthDimension>(listed);
    return known != nullptr ? known : new LengthDimension(line, fontHeight);
}

LengthDimension* LengthDimension::Copy() const {
    return new LengthDimension(*this);
}

void LengthDimension::AssignDimension(const LengthDimension* other) {
    SetLine(other->line_);
    AssignFields(*other);
    SetLengthDimDeco(1, CopyOf(other->deco1_).release());
    SetLengthDimDeco(2, CopyOf(other->deco2_).release());
    SetRelativeParam(other->relativeParam_);
    SetDecoEndDistance(other->decoEndDistance_);
}

bool LengthDimension::Replace(Core::TaggedObject* other) {
    return ReplaceBy<LengthDimension>(other,
                                      [this](const LengthDimension* source) { AssignDimension(source); });
}

void LengthDimension::Transform(double m[3][3]) {
    DimensionBase::Transform(m);
    decoEndDistance_ /= m[2][2];
}

// --- Fields and parents

void LengthDimension::SetLine(Line* line) {
    Store(line_, line);
}

void LengthDimension::SetRelativeParam(double u) {
    Store(relativeParam_, u);
}

void LengthDimension::SetDecoEndDistance(double distance) {
    Store(decoEndDistance_, distance);
}

LengthDimDeco* LengthDimension::GetLengthDimDeco(int side) const {
    return side == 1 ? deco1_.get() : side == 2 ? deco2_.get() : nullptr;
}

void LengthDimension::SetLengthDimDeco(int side, LengthDimDeco* deco) {
    if (side != 1 && side != 2)
        return;
    LogForChange();
    if (DecoOf(side).get() != deco)
        DecoOf(side).reset(deco);
}

void LengthDimension::SetIsFinalized(bool finalized) {
    ChangeIsFinalized(finalized);
}

void LengthDimension::GetParentCurves(std::vector<Curve*>& curves) const {
    if (line_ != nullptr)
        curves.push_back(line_);
}

void LengthDimension::AddGeometry(Curve* curve) {
    if (curve != nullptr && curve->GetType() == Geometry::CurveType_Line && curve != line_)
        SetLine(static_cast<Line*>(curve));
}

void LengthDimension::ExchangeCurve(const Curve* parent, Curve* replacement) {
    if (line_ == nullptr || line_ != parent)
        return;
    line_ = static_cast<Line*>(replacement);
    if (replacement == nullptr)
        DropDecorations();
}

void LengthDimension::DropDecorations() {
    deco1_.reset();
    deco2_.reset();
}

// --- What is measured

bool LengthDimension::AskMeasured(Segment& measured) const {
    if (!HasRecord(line_))
        return false;
    measured = {line_->GetStart(), line_->GetEnd()};
    return true;
}

Line* LengthDimension::GetDimensionLine() const {
    return line_;
}

Line* LengthDimension::ComputeTempDimensionLine() const {
    Segment measured;
    return AskMeasured(measured) ? new Line(measured.start, measured.end) : nullptr;
}

void LengthDimension::ComputeAnnotationOrientation(Vector& v) const {
    Segment measured;
    if (!AskMeasured(measured))
        return;
    v = Vector(measured.start, measured.end);
    v.Normalize();
    if (std::fabs(v.x) <= kUprightTol)
        v.y = 1.0;
    else if (v.x < -kUprightTol)
        v = -1.0 * v;
}

// --- Update

void LengthDimension::UpdateDimension() {
    if (TakePendingEdit())
        ApplyTypedValue();
    Segment measured;
    if (!AskMeasured(measured))
        return;
    UpdateOver(measured);
    AdjustFeet();
}

void LengthDimension::UpdateOver(const Segment& measured) {
    StoreAnnotation(measured.Length());
    if (!measured.IsZero()) {
        Vector direction;
        ComputeAnnotationOrientation(direction);
        SetOrientation(direction);
    }
    SetTextWidthOffset(ComputeAnnotationStringLength() * 0.5);
    PlaceText();
    ComputeLengthDimensionDeco(1);
    ComputeLengthDimensionDeco(2);
    AdjustPoint1s();
}

// The text is anchored at its lower edge, so it must be raised by its height wherever the tops of its letters
// point towards the measured line. That offset serves the anchor only; the one that the user set stays.
void LengthDimension::PlaceText() {
    const double kept = GetTextHeightOffset();
    const double angleDeg = ComputeAnnotationOrientationAngle();
    SetTextAngle(angleDeg);
    SetTextHeightOffset(kept + TextHeightRaise(angleDeg, kept, GetFontHeight(), EQ_ask_length_tolerance()));
    double anchor[2];
    ComputeAnnotationOrigin(anchor);
    SetOrigin(anchor[0], anchor[1]);
    SetTextHeightOffset(kept);
}

} // namespace Tessera::Dimension
