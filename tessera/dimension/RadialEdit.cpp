#include <algorithm>
#include <cmath>

#include "tessera/dimension/DragData.h"
#include "tessera/dimension/RadialDimension.h"
#include "tessera/dimension/internal/MoveCurves.h"
#include "tessera/dimension/internal/RadialLayout.h"
#include "tessera/kernel/EQ.h"

// Value edits of radial dimensions, and dragging their text.

namespace Tessera::Dimension {

using Geometry::Curve;
using Geometry::Point;
using Geometry::Vector;

namespace {

constexpr double kLeastRadius = 0.05; // that a drag may give, model units
constexpr double kLeastLeader = 1.5;  // beyond the length of the text, font heights

} // namespace

// --- Value edits

int RadialDimension::ComputeUpdateSide(const Point& p) const {
    if (Points() == nullptr)
        return -1;
    return AnnotationSelected(p, EQ_ask_length_tolerance()) ? 0 : 1;
}

double RadialDimension::ComputeNewValue(const Point& p, int /*side*/) const {
    const std::vector<Point>* points = Points();
    if (points == nullptr || !HasRecord(arc_))
        return GetAnnotation();
    const double t = EQ_ask_length_tolerance();
    const Point& foot = (*points)[kFoot];
    Vector w(arc_->GetCenter(), foot);
    const double rho = w.Length();
    if (!(rho > t + kLeastRadius))
        return GetAnnotation();
    w.Normalize();
    const double value = rho + w.Dot(Vector(foot, p));
    return value < kLeastRadius - t ? GetAnnotation() : value;
}

void RadialDimension::GetUpdateCurves(int /*side*/, std::vector<Curve*>& curves) const {
    GetParentCurves(curves);
}

void RadialDimension::ApplyTypedValue() {
    const double radius = GetAnnotation();
    if (HasRecord(arc_) && std::isfinite(radius) && radius > EQ_ask_length_tolerance() &&
        radius != arc_->GetRadius())
        arc_->SetRadius(radius);
}

// --- Dragging

bool RadialDimension::MoveDimDeco(const DragData* drag) {
    if (drag == nullptr || !HasRecord(arc_))
        return false;
    // From the start of the drag: steps would add up what the limits below cut off.
    const Vector moved(drag->GetBeginPoint(), drag->GetCurrentPoint());
    const Point leaderEnd = drag->GetBeginDecorationPoint().AffineCombine(1.0, moved);
    const Vector fromCentre(arc_->GetCenter(), leaderEnd);
    if (!std::isfinite(fromCentre.Length()))
        return false;
    TakePendingEdit(); // the measured value shown while dragging replaces a typed one
    if (!fromCentre.IsZero())
        PlaceFoot(std::atan2(fromCentre.y, fromCentre.x));
    const double offset = fromCentre.Length() - arc_->GetRadius();
    const double least = GetTextWidthOffset() + kLeastLeader * GetFontHeight();
    SetTextOffset(std::copysign(std::max(std::fabs(offset), least), offset));
    Refresh();
    return true;
}

} // namespace Tessera::Dimension
