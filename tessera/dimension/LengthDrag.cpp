#include <cmath>

#include "tessera/dimension/DragData.h"
#include "tessera/dimension/LengthDimension.h"
#include "tessera/dimension/internal/LengthLayout.h"
#include "tessera/kernel/EQ.h"

// Dragging the text. Anchor, decoration, offset and relative parameter move by the same step, so that between
// updates the drawing follows the pointer; away from the measured line an update afterwards changes nothing.

namespace Tessera::Dimension {

using Geometry::Point;
using Geometry::Vector;

namespace {

/// The best alignment found so far, all lengths along the text direction, model units.
struct Snap {
    double capture;   // largest gap that snaps
    double alignedTo; // gap that counts as aligned already
    double moved;     // the step
    double gap = 0.0; // still missing
    bool isFound = false;

    void Try(double after) {
        const double before = after + moved;
        const bool isApproaching = std::fabs(after) < std::fabs(before) && std::fabs(before) > alignedTo;
        if (!isApproaching || std::fabs(after) > capture || (isFound && std::fabs(after) >= std::fabs(gap)))
            return;
        gap = after;
        isFound = true;
    }
};

} // namespace

bool LengthDimension::SnapAnnotationOrigin(const DragData* drag, Point& origin, Vector& step) const {
    origin = origin.AffineCombine(1.0, step);
    LengthLayout layout;
    if (drag == nullptr || !(drag->GetSecondParameter() > 0.0) || !AskLayout(layout))
        return false;
    const Segment& m = layout.measured;
    Snap snap{drag->GetSecondParameter(), drag->GetFirstParameter(), step.Dot(layout.d)};
    const auto missing = [&](double along, const Point& target) {
        return Vector(origin.AffineCombine(along, layout.d), target).Dot(layout.d);
    };
    for (const double along : {-layout.widthOffset, layout.widthOffset}) {
        snap.Try(missing(along, m.start));
        snap.Try(missing(along, m.end));
    }
    snap.Try(missing(0.0, m.At(0.5)));
    if (!snap.isFound)
        return false;
    origin = origin.AffineCombine(snap.gap, layout.d);
    step += snap.gap * layout.d;
    return true;
}

void LengthDimension::Move(int side, const Vector& step, bool /*crossed*/, double sign) {
    LengthLayout layout;
    std::vector<Point>* points = PointsOf(side);
    if (points == nullptr || !AskLayout(layout))
        return;
    LogForChange();
    auto& p = *points;
    const Vector across = step.Dot(layout.n) * layout.n;
    const Vector lineStep = layout.IsDrawnFlipped(side, p) ? across : step;
    p[kLineEnd] = p[kLineEnd].AffineCombine(1.0, lineStep);
    for (const int i : {kTip, kArrowTip, kArrowLow, kArrowHigh, kArrowClose})
        p[i] = p[i].AffineCombine(1.0, across);
    // The rest hangs between M and the tip and changes sides with it.
    const double h = sign * layout.fontHeight;
    p[kExtensionStart] = layout.End(side).AffineCombine(kExtensionGap * h, layout.n);
    p[kExtensionEnd] = p[kTip].AffineCombine(kHalfLetter * h, layout.n);
    p[kInnerMark] = p[kTip].AffineCombine(-kHalfLetter * h, layout.n);
}

bool LengthDimension::MoveDimDeco(const DragData* drag) {
    LengthLayout layout;
    if (drag == nullptr || !AskLayout(layout))
        return false;
    const double tolSq = EQ_ask_length_squared_tolerance();
    const Segment& m = layout.measured;
    Vector step(drag->GetPreviousPoint(), drag->GetCurrentPoint());
    Point origin = GetOrigin();
    const double before = Vector(m.start, origin).Dot(layout.n);
    SnapAnnotationOrigin(drag, origin, step);
    SetOrigin(origin);
    const double after = Vector(m.start, origin).Dot(layout.n);
    const bool crossed = after * before < -tolSq;
    const double sign = after < -tolSq ? -1.0 : 1.0;
    Move(1, step, crossed, sign);
    Move(2, step, crossed, sign);
    // The text keeps its clearance on its new side.
    double offset = step.Dot(layout.n) + GetTextHeightOffset();
    if (crossed)
        offset += after >= -layout.tolerance ? -GetFontHeight() : GetFontHeight();
    SetTextHeightOffset(offset);
    if (m.Length() > layout.tolerance)
        relativeParam_ = m.ParamOf(layout.Anchor().AffineCombine(step.Dot(layout.d), layout.d));
    AdjustPoint1s();
    SetDecoEndDistance(ComputeDecoEndDistance(relativeParam_));
    AdjustFeet();
    return true;
}

} // namespace Tessera::Dimension
