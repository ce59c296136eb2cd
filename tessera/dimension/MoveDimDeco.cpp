#include "tessera/dimension/MoveDimDeco.h"

#include "tessera/dimension/DimensionBase.h"
#include "tessera/dimension/internal/CopyOf.h"
#include "tessera/dimension/internal/DimensionKinds.h"

namespace Tessera::Dimension {

using Geometry::Point;

MoveDimDeco::MoveDimDeco() : dragData_(std::make_unique<DragData>()) {}

MoveDimDeco::MoveDimDeco(const MoveDimDeco& other)
    : dimension_(other.dimension_), dragData_(CopyOf(other.dragData_)) {}

MoveDimDeco& MoveDimDeco::operator=(const MoveDimDeco& other) {
    if (this != &other) {
        dragData_ = CopyOf(other.dragData_);
        dimension_ = other.dimension_;
    }
    return *this;
}

MoveDimDeco::~MoveDimDeco() = default;

bool MoveDimDeco::BeginMove(const Point& p) {
    if (dimension_ == nullptr || dragData_ == nullptr)
        return false;
    dragData_->SetBeginPoint(p);
    dragData_->SetPreviousPoint(p);
    dragData_->SetCurrentPoint(p);
    dragData_->SetBeginReferencePoint(dimension_->GetReferencePoint());
    if (const Point* leaderEnd = FindLeaderEnd(*dimension_))
        dragData_->SetBeginDecorationPoint(*leaderEnd);
    return true;
}

bool MoveDimDeco::Move(const Point& p, double /*reserved1*/, double /*reserved2*/, bool /*flag*/) {
    if (dimension_ == nullptr || dragData_ == nullptr)
        return false;
    dragData_->SetPreviousPoint(dragData_->GetCurrentPoint());
    dragData_->SetCurrentPoint(p);
    dimension_->MoveDimDeco(dragData_.get());
    return true;
}

bool MoveDimDeco::EndMove() {
    return true;
}

void MoveDimDeco::SetDragData(DragData* data) {
    if (data != dragData_.get())
        dragData_.reset(data);
}

void MoveDimDeco::SetParameters(double first, double second) {
    if (dragData_)
        dragData_->SetParameters(first, second);
}

} // namespace Tessera::Dimension
