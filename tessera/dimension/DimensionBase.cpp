#include "tessera/dimension/DimensionBase.h"

#include <algorithm>

#include "tessera/geometry/Curve.h"

// Fields and attachments. The text of a dimension is in DimensionText.cpp, picking in DimensionSelection.cpp,
// and whatever depends on the concrete kind in DimensionKinds.cpp.

namespace Tessera::Dimension {

using Geometry::Curve;
using Geometry::Point;
using Geometry::Vector;
using CurveList = std::vector<Curve*>;

namespace {

bool Contains(const CurveList& curves, const Curve* curve) {
    return std::find(curves.begin(), curves.end(), curve) != curves.end();
}

/// The parents of a dimension, none twice and none null.
CurveList DistinctParents(const DimensionBase& dim) {
    CurveList all;
    dim.GetParentCurves(all);
    CurveList distinct;
    for (Curve* curve : all)
        if (curve != nullptr && !Contains(distinct, curve))
            distinct.push_back(curve);
    return distinct;
}

} // namespace

DimensionBase::DimensionBase(double annotation, double textAngle, double textHeightOffset,
                             double textWidthOffset, const Point& origin, const Vector& orientation,
                             bool isFinalized, double fontHeight)
    : fields_{annotation, textAngle, textHeightOffset, textWidthOffset, origin, orientation, isFinalized,
              fontHeight, -1} {}

DimensionBase::DimensionBase(const DimensionBase& other) : DisplayableObject(other), fields_(other.fields_) {}

DimensionBase& DimensionBase::operator=(const DimensionBase& other) {
    DisplayableObject::operator=(other);
    fields_ = other.fields_;
    hasTypedValue_ = false;
    return *this;
}

DimensionBase::~DimensionBase() {
    // Parents have been left by the concrete destructor; what remains are copies of curves that list this
    // dimension without being its parents. They lose an entry, which is no change of theirs.
    for (Curve* curve : listedBy_)
        curve->DropDimension(this);
}

void DimensionBase::Transform(double m[3][3]) {
    LogForChange();
    fields_.origin.Transform(m);
    fields_.fontHeight /= m[2][2];
    fields_.textHeightOffset /= m[2][2];
    fields_.textWidthOffset /= m[2][2];
}

void DimensionBase::LogForChange() {
    if (fields_.isFinalized)
        TaggedObject::LogForChange();
}

bool DimensionBase::AskXYBox(Geometry::XYBox& /*box*/) const {
    return false;
}

// --- Fields

void DimensionBase::SetAnnotation(double value) {
    StoreAnnotation(value);
    hasTypedValue_ = true;
}

void DimensionBase::StoreAnnotation(double value) {
    Store(fields_.annotation, value);
}

bool DimensionBase::TakePendingEdit() {
    const bool wasTyped = hasTypedValue_;
    hasTypedValue_ = false;
    return wasTyped && GetUpdateSide() >= 0 && GetUpdateSide() <= 2 && CanUpdate();
}

void DimensionBase::SetTextAngle(double angleDeg) {
    Store(fields_.textAngle, angleDeg);
}

void DimensionBase::SetTextHeightOffset(double offset) {
    Store(fields_.textHeightOffset, offset);
}

void DimensionBase::SetTextWidthOffset(double offset) {
    Store(fields_.textWidthOffset, offset);
}

void DimensionBase::SetOrigin(const Point& origin) {
    Store(fields_.origin, origin);
}

void DimensionBase::SetOrigin(double x, double y) {
    SetOrigin(Point(x, y));
}

void DimensionBase::SetOrientation(const Vector& orientation) {
    Store(fields_.orientation, orientation);
}

void DimensionBase::SetFontHeight(double height) {
    Store(fields_.fontHeight, height);
}

void DimensionBase::SetUpdateSide(int side) {
    Store(fields_.updateSide, std::int32_t{side});
}

void DimensionBase::AssignFields(const DimensionBase& other) {
    StoreAnnotation(other.fields_.annotation);
    hasTypedValue_ = false;
    SetOrientation(other.fields_.orientation);
    SetOrigin(other.fields_.origin);
    SetTextAngle(other.fields_.textAngle);
    SetTextHeightOffset(other.fields_.textHeightOffset);
    SetTextWidthOffset(other.fields_.textWidthOffset);
    SetFontHeight(other.fields_.fontHeight);
    SetUpdateSide(other.fields_.updateSide);
    SetDisplayData(other.GetDisplayData());
}

void DimensionBase::ChangeIsFinalized(bool finalized) {
    if (finalized == fields_.isFinalized)
        return;
    for (Curve* curve : DistinctParents(*this))
        curve->LogDimensionFinalize(this, finalized);
    fields_.isFinalized = finalized;
}

// --- Attachments

bool DimensionBase::RemoveDimensionOnCurve(Curve* curve, DimensionBase* dim) {
    if (curve == nullptr || dim == nullptr || !curve->RemoveDimension(dim))
        return false;
    for (Curve* parent : DistinctParents(*dim))
        if (parent != curve)
            parent->RemoveDimension(dim);
    return true;
}

void DimensionBase::DetachFromCurves() {
    // A copy may outlive the curves that it measures: only curves that list this dimension are touched.
    for (Curve* parent : DistinctParents(*this))
        if (IsAttachedTo(parent))
            RemoveDimensionOnCurve(parent, this);
}

bool DimensionBase::IsAttachedTo(const Curve* curve) const {
    return Contains(listedBy_, curve);
}

void DimensionBase::AttachToParents() {
    for (Curve* parent : DistinctParents(*this))
        parent->AddDimension(this);
}

void DimensionBase::FollowParents(const CurveList& former) {
    const bool wasAttached =
        std::any_of(former.begin(), former.end(), [this](const Curve* curve) { return IsAttachedTo(curve); });
    if (!wasAttached)
        return;
    const CurveList parents = DistinctParents(*this);
    for (Curve* curve : former)
        if (curve != nullptr && IsAttachedTo(curve) && !Contains(parents, curve))
            curve->RemoveDimension(this);
    AttachToParents();
}

void DimensionBase::ReplaceParent(Curve* replacement) {
    if (replacement == nullptr)
        return;
    const CurveList former = DistinctParents(*this);
    auto place = std::find_if(former.begin(), former.end(),
                              [&](const Curve* curve) { return curve->GetId() == replacement->GetId(); });
    if (place == former.end())
        place = std::find_if(former.begin(), former.end(),
                             [&](const Curve* curve) { return curve->GetType() == replacement->GetType(); });
    if (place == former.end() || (*place)->GetType() != replacement->GetType())
        return;
    LogForChange();
    ExchangeCurve(*place, replacement);
    FollowParents(former);
}

DimensionBase* DimensionBase::DeepCopy(std::set<int>& ids, std::map<int, Core::TaggedObject*>& copies) const {
    const bool isCopied = copies.count(GetId()) != 0;
    // The base enters the copy in the map before any parent is copied: their dimensions lead back here.
    auto* copy = static_cast<DimensionBase*>(TaggedObject::DeepCopy(ids, copies));
    if (isCopied || copy == nullptr)
        return copy;
    for (const Curve* parent : DistinctParents(*this)) {
        Curve* copiedParent = parent->DeepCopy(ids, copies);
        copy->ExchangeCurve(parent, copiedParent);
        // Curves take the copies of finalized dimensions in themselves, in the order of their lists.
        if (copiedParent != nullptr && IsAttachedTo(parent) && !GetIsFinalized())
            copiedParent->AddDimension(copy);
    }
    return copy;
}

} // namespace Tessera::Dimension
