#include <algorithm>
#include <cmath>

#include "tessera/dimension/AngularDimension.h"
#include "tessera/dimension/DragData.h"
#include "tessera/dimension/internal/AngularLayout.h"
#include "tessera/dimension/internal/MoveCurves.h"
#include "tessera/geometry/Arc.h"

// Value edits of angular dimensions, and dragging their text.

namespace Tessera::Dimension {

using Geometry::Curve;
using Geometry::Point;
using Geometry::Vector;

namespace {

constexpr double kLeastSine = 1e-10; // of a turn that changes the value
constexpr double kLeastDeg = 1e-10;  // values that an edit may give, degrees
constexpr double kMostDeg = 179.9999999999;

/// Distances of the text from the middle along the arc, model units. Only on approach: otherwise small steps
/// could never leave the middle again.
bool SnapsToMiddle(const DragData& drag, double before, double after) {
    return after <= drag.GetSecondParameter() && after < before && before > drag.GetFirstParameter();
}

} // namespace

// --- Value edits

int AngularDimension::ComputeUpdateSide(const Point& p) const {
    AngularLayout layout;
    if (!AskLayout(layout))
        return -1;
    const double a = layout.param;
    const double t = arc_->GetAngleFromPoint(p);
    const double halfText = (GetFontHeight() / 2.0 + ComputeAnnotationStringLength() / 2.0) / layout.radius;
    if (std::fabs(NearestTurn(t, a) - a) <= halfText)
        return 0;
    if (!layout.range.Contains(t))
        return layout.NearerSide(t);
    const double onArc = NearestTurn(t, layout.range.Mid());
    switch (layout.OutsideSide(a)) {
    case 0:
        return onArc <= a ? 1 : 2;
    case 1: // the text stands before the start
        return onArc <= layout.range.start ? 1 : 2;
    default:
        return onArc >= layout.range.end ? 2 : 1;
    }
}

double AngularDimension::ComputeNewValue(const Point& p, int side) const {
    const double current = GetAnnotation();
    const std::vector<Point>* points = PointsOf(side);
    if (points == nullptr || !HasRecord(arc_.get()))
        return current;
    const Point centre = arc_->GetCenter();
    Vector u(centre, (*points)[kArrowTip]);
    Vector w(centre, p);
    if (!u.Normalize() || !w.Normalize())
        return current;
    const double sine = w.Cross(u);
    // The arctangent of the sine, not the turn itself: far drags count less.
    const double change = std::fabs(sine) <= kLeastSine ? 0.0 : std::atan(sine) * kDegPerRad;
    const double value = side == 1 ? current + change : current - change;
    return value < kLeastDeg || std::fabs(value) > kMostDeg ? current : value;
}

void AngularDimension::GetUpdateCurves(int side, std::vector<Curve*>& curves) const {
    for (const int each : {1, 2})
        if ((side == each || side == 0) && lines_[each - 1] != nullptr)
            curves.push_back(lines_[each - 1]);
}

void AngularDimension::ApplyTypedValue() {
    const double value = GetAnnotation();
    if (!(value >= kLeastDeg && value <= kMostDeg))
        return;
    const double growth = value / kDegPerRad - (arc_->GetEndAngle() - arc_->GetStartAngle());
    const Point centre = arc_->GetCenter();
    if (growth == 0.0)
        return;
    if (ShareOf(1) > 0.0)
        Turn(*lines_[0], centre, -growth * ShareOf(1));
    if (ShareOf(2) > 0.0)
        Turn(*lines_[1], centre, growth * ShareOf(2));
}

// --- Dragging

bool AngularDimension::MoveDimDeco(const DragData* drag) {
    AngularLayout layout;
    if (drag == nullptr || !AskLayout(layout))
        return false;
    const Vector step(drag->GetPreviousPoint(), drag->GetCurrentPoint());
    const Vector toText(layout.centre, layout.At(layout.param).AffineCombine(1.0, step));
    const double radius = std::max(toText.Length(), GetFontHeight());
    if (!(radius > layout.tolerance && std::isfinite(radius)))
        return false;
    const double mid = layout.range.Mid();
    // Counted on from where the text stood, so that it may be taken all the way round.
    const double angle = toText.IsZero() ? param_ : NearestTurn(std::atan2(toText.y, toText.x), param_);
    double offset = angle - mid;
    const double fromMid = std::fabs(NearestTurn(offset, 0.0));
    if (SnapsToMiddle(*drag, std::fabs(layout.param - mid) * radius, fromMid * radius))
        offset = 0.0;
    TakePendingEdit(); // the measured value shown while dragging replaces a typed one
    LogForChange();
    arc_->SetRadius(radius);
    StoreLineParams();
    SetParam(mid + offset);
    SetAnnotCenterParamOffset(offset);
    SetAnnotCenterDistOffset(std::fabs(offset) * radius);
    Refresh(false);
    SetDecoEndDistance(ComputeDecoEndDistance(param_));
    return true;
}

} // namespace Tessera::Dimension
