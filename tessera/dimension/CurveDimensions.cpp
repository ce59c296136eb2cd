#include <algorithm>
#include <memory>

#include "tessera/dimension/DimensionBase.h"
#include "tessera/geometry/Curve.h"
#include "tessera/geometry/Line.h"

// What curves do with the dimensions attached to them. A curve reports a change of its list only when a
// finalized dimension comes or goes: previews attach and detach unseen by the host.

namespace Tessera::Geometry {

using Dimension::DimensionBase;
using DimensionList = std::vector<DimensionBase*>;

namespace {

bool Contains(const std::vector<Curve*>& curves, const Curve* curve) {
    return std::find(curves.begin(), curves.end(), curve) != curves.end();
}

template <class T>
void Erase(std::vector<T*>& list, const T* entry) {
    const auto place = std::find(list.begin(), list.end(), entry);
    if (place != list.end())
        list.erase(place);
}

bool IsAnyFinalized(const DimensionList& list) {
    return std::any_of(list.begin(), list.end(), [](const DimensionBase* d) { return d->GetIsFinalized(); });
}

/// Dimensions of one curve, by the kind of curve that they measure.
bool CanCarry(const Curve& curve, int type) {
    switch (type) {
    case Dimension::Length:
    case Dimension::Horizontal:
    case Dimension::Vertical:
        return curve.GetType() == CurveType_Line;
    case Dimension::Radial:
        return curve.GetType() == CurveType_Arc;
    default:
        return false;
    }
}

} // namespace

// --- Copies

Curve* Curve::Copy() const {
    std::unique_ptr<Curve> copy(CopyCurveOnly());
    if (copy == nullptr)
        return nullptr;
    for (DimensionBase* d : dimensions_)
        if (d->GetIsFinalized())
            copy->AddDimension(d);
    return copy.release();
}

Curve* Curve::DeepCopy(std::set<int>& ids, std::map<int, Core::TaggedObject*>& copies) const {
    const auto known = copies.find(GetId());
    if (known != copies.end())
        return static_cast<Curve*>(known->second);
    std::unique_ptr<Curve> copy(CopyCurveOnly());
    if (copy == nullptr)
        return nullptr;
    SetIdOf(*copy, GetId());
    // Known before its dimensions are copied: they lead back to this curve.
    copies[GetId()] = copy.get();
    for (const DimensionBase* d : dimensions_) {
        if (!d->GetIsFinalized())
            continue;
        if (Core::TaggedObject* made = d->DeepCopy(ids, copies))
            copy->AddDimension(static_cast<DimensionBase*>(made));
    }
    return copy.release();
}

// --- The list. Every entry has its back reference in the dimension, so that either side can go first.

void Curve::AddDimension(DimensionBase* d) {
    if (d == nullptr || HasDimension(d))
        return;
    if (d->GetIsFinalized())
        LogForChange();
    d->listedBy_.push_back(this);
    dimensions_.push_back(d);
}

bool Curve::RemoveDimension(DimensionBase* d) {
    if (!HasDimension(d))
        return false;
    if (d->GetIsFinalized())
        LogForChange();
    Erase(d->listedBy_, this);
    DropDimension(d);
    return true;
}

void Curve::ClearDimensions() {
    if (IsAnyFinalized(dimensions_))
        LogForChange();
    for (DimensionBase* d : dimensions_)
        Erase(d->listedBy_, this);
    dimensions_.clear();
}

void Curve::DropDimension(const DimensionBase* d) {
    Erase(dimensions_, d);
}

void Curve::ReleaseDimensions() {
    for (DimensionBase* d : dimensions_) {
        Erase(d->listedBy_, this);
        d->ExchangeCurve(this, nullptr);
    }
}

bool Curve::HasDimension(DimensionBase* d) const {
    return std::find(dimensions_.begin(), dimensions_.end(), d) != dimensions_.end();
}

int Curve::GetNumDimensions() const {
    return static_cast<int>(dimensions_.size());
}

void Curve::GetDimensions(DimensionList& list) const {
    list.insert(list.end(), dimensions_.begin(), dimensions_.end());
}

void Curve::AddDimensions(DimensionList& list) {
    for (DimensionBase* d : list)
        AddDimension(d);
}

void Curve::ReplaceDimension(int index, DimensionBase* d) {
    if (d == nullptr || index < 0 || index >= GetNumDimensions() || dimensions_[index] == d)
        return;
    if (d->GetIsFinalized() || dimensions_[index]->GetIsFinalized())
        LogForChange();
    Erase(dimensions_[index]->listedBy_, this);
    // One entry per dimension, also when d was listed elsewhere.
    const auto listed = std::find(dimensions_.begin(), dimensions_.end(), d);
    dimensions_[index] = d;
    if (listed != dimensions_.end())
        dimensions_.erase(listed);
    else
        d->listedBy_.push_back(this);
}

// --- Queries by kind

void Curve::FindDimensions(int type, DimensionList& list) const {
    for (DimensionBase* d : dimensions_)
        if (d->GetType() == type)
            list.push_back(d);
}

void Curve::GetDimensionsOfType(Curve* other, int type, DimensionList& list) const {
    for (DimensionBase* d : dimensions_) {
        if (d->GetType() != type)
            continue;
        std::vector<Curve*> parents;
        d->GetParentCurves(parents);
        const bool matches = other == nullptr ? parents.size() == 1 && parents.front() == this
                                              : Contains(parents, this) && Contains(parents, other);
        if (matches)
            list.push_back(d);
    }
}

void Line::GetInvalidDimensions(DimensionList& invalid) const {
    DimensionList listed;
    GetDimensions(listed);
    for (DimensionBase* d : listed)
        if (!d->IsValid())
            invalid.push_back(d);
}

// --- Keeping dimensions up to date

void Curve::UpdateDimensions() {
    // An update may attach or detach dimensions.
    const DimensionList listed = dimensions_;
    for (DimensionBase* d : listed)
        if (HasDimension(d))
            d->UpdateDimension();
}

void Curve::LogDimensionFinalize(DimensionBase* d, bool /*finalized*/) {
    if (HasDimension(d))
        LogForChange();
}

// --- Dimensions made for a curve

DimensionBase* Curve::CreateUpdateDimension(int type, bool create, double textHeightOffset,
                                            double fontHeight) {
    DimensionList listed;
    GetDimensionsOfType(nullptr, type, listed);
    if (!listed.empty()) {
        listed.front()->UpdateDimension();
        return listed.front();
    }
    if (!create || !CanCarry(*this, type))
        return nullptr;
    return DimensionBase::CreateDimensionByType(static_cast<Dimension::DimensionType_e>(type), this,
                                                textHeightOffset, fontHeight);
}

void Curve::CreateSameDimensions(Curve* other) {
    for (const int type : {Dimension::Length, Dimension::Horizontal, Dimension::Vertical, Dimension::Radial})
        CreateSameDimensionOfType(other, type);
}

void Curve::CreateSameDimensionOfType(Curve* other, int type) {
    if (other == nullptr || other == this)
        return;
    DimensionList theirs;
    other->GetDimensionsOfType(nullptr, type, theirs);
    if (theirs.empty())
        return;
    const DimensionBase& model = *theirs.front();
    DimensionList ours;
    GetDimensionsOfType(nullptr, type, ours);
    DimensionBase* same =
        CreateUpdateDimension(type, true, model.GetTextHeightOffset(), model.GetFontHeight());
    if (same == nullptr || !ours.empty())
        return;
    same->SetDisplayData(model.GetDisplayData());
    same->Rotate(model.GetRotateAngle());
    same->FinalizeRotate();
    same->SetIsFinalized(model.GetIsFinalized());
}

} // namespace Tessera::Geometry
