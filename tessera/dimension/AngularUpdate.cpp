#include <cmath>

#include "tessera/dimension/AngularDimension.h"
#include "tessera/dimension/internal/AngularLayout.h"
#include "tessera/dimension/internal/MoveCurves.h"
#include "tessera/geometry/Arc.h"
#include "tessera/kernel/EQ.h"

// The update of an angular dimension once its arc stands: value, text and decoration.

namespace Tessera::Dimension {

using Geometry::Point;
using Geometry::Vector;

namespace {

constexpr double kBandTolDeg = 1e-10; // width of the right-angle bands, degrees

struct TextPlace {
    double angleDeg;
    double heightOffset;
};

bool IsAt(double angleDeg, double bandDeg) {
    return std::fabs(angleDeg - bandDeg) <= kBandTolDeg;
}

/// For an arc that runs along angleDeg: the angle that keeps the text upright, and the height offset that
/// puts its lower edge half a letter below the arc, as the text sees it.
TextPlace PlaceAlong(double angleDeg, double fontHeight) {
    const double a = angleDeg;
    const double below = fontHeight / 2.0;
    if (IsAt(a, 0.0) || IsAt(a, 180.0))
        return {0.0, -below};
    if (IsAt(a, 90.0) || IsAt(a, 270.0))
        return {90.0, below};
    if (a > 1e-10 && a < 89.9999999999)
        return {a, below};
    if (a > 90.0000000001 && a < 179.9999999999)
        return {a + 180.0, -below};
    if (a > 180.0000000001 && a < 269.9999999999)
        return {a - 180.0, below};
    return {a, -below};
}

/// Unit derivative of an arc by its angle.
Vector TangentAt(double angle) {
    return {-std::sin(angle), std::cos(angle)};
}

} // namespace

bool AngularDimension::AskLayout(AngularLayout& layout) const {
    if (!HasRecord(arc_.get()) || !HasLines())
        return false;
    layout.centre = arc_->GetCenter();
    layout.radius = arc_->GetRadius();
    layout.range = {arc_->GetStartAngle(), arc_->GetEndAngle()};
    layout.param = NearestTurn(param_, layout.range.Mid());
    layout.fontHeight = GetFontHeight();
    layout.widthOffset = GetTextWidthOffset();
    layout.tolerance = EQ_ask_length_tolerance();
    return layout.radius > 0.0;
}

void AngularDimension::UpdateDimension() {
    Refresh(TakePendingEdit());
}

void AngularDimension::Refresh(bool isEdited) {
    if (!HasRecord(arc_.get()) || !HasLines())
        return;
    const bool isCentred = IsCentred();
    // A typed angle is measured against where the lines are now.
    if (isEdited && FollowLines())
        ApplyTypedValue();
    if (!FollowLines())
        return;
    StoreAnnotation((arc_->GetEndAngle() - arc_->GetStartAngle()) * kDegPerRad);
    SetTextWidthOffset(ComputeAnnotationStringLength() * 0.5);
    SetParam(isCentred ? (arc_->GetStartAngle() + arc_->GetEndAngle()) / 2.0 : PlaceParam());
    PlaceText();
    ComputeAngularDimensionDeco(1);
    ComputeAngularDimensionDeco(2);
    AdjustPoint1s();
}

bool AngularDimension::IsCentred() const {
    const double mean = (arc_->GetStartAngle() + arc_->GetEndAngle()) / 2.0;
    return std::fabs(param_ - mean) <= kAngleTol || std::fabs(param_ - (mean + kTurn)) <= kAngleTol ||
           std::fabs(param_ - (mean - kTurn)) <= kAngleTol;
}

double AngularDimension::PlaceParam() const {
    double offset = paramOffset_;
    const double turn = std::fabs(distOffset_) / arc_->GetRadius();
    if (turn < std::fabs(offset) + EQ_ask_length_tolerance())
        offset = offset <= -kAngleTol ? -turn : turn;
    return arc_->GetMidParam() + offset;
}

void AngularDimension::PlaceText() {
    const Vector along = TangentAt(param_);
    SetOrientation(along);
    const TextPlace place = PlaceAlong(ComputeAnnotationOrientationAngle(), GetFontHeight());
    SetTextAngle(place.angleDeg);
    SetTextHeightOffset(place.heightOffset);
    double anchor[2] = {GetOrigin().x, GetOrigin().y};
    ComputeAnnotationOrigin(ComputeOffsetVector(along), anchor);
    SetOrigin(anchor[0], anchor[1]);
}

void AngularDimension::ComputeAnnotationOrigin(const Vector& across, double* out) const {
    if (out == nullptr || !HasRecord(arc_.get()))
        return;
    const Point anchor = arc_->GetPointFromAngle(param_).AffineCombine(GetTextHeightOffset(), across);
    out[0] = anchor.x;
    out[1] = anchor.y;
}

double AngularDimension::ComputeDecoEndDistance(double angle) const {
    AngularLayout layout;
    if (!AskLayout(layout))
        return 0.0;
    const double a = NearestTurn(angle, layout.range.Mid());
    return layout.radius * std::fmin(a - layout.range.start, layout.range.end - a);
}

// --- Decoration

std::vector<Point>* AngularDimension::PointsOf(int side) const {
    AngularDimDeco* deco = GetAngularDimDeco(side);
    // Records may come from outside; only complete ones are touched.
    return deco != nullptr && deco->GetPoints().size() >= kEndPointCount ? &deco->GetPoints() : nullptr;
}

void AngularDimension::ComputeAngularDimensionDeco(int side) {
    AngularLayout layout;
    if ((side != 1 && side != 2) || !AskLayout(layout))
        return;
    auto deco = std::make_unique<AngularDimDeco>();
    deco->GetPoints() = layout.Decorate(side, EndsOf(*lines_[side - 1]));
    SetAngularDimDeco(side, deco.release());
}

void AngularDimension::AdjustPoint1s() {
    AngularLayout layout;
    if (!AskLayout(layout))
        return;
    for (const int side : {1, 2}) {
        std::vector<Point>* points = PointsOf(side);
        if (points == nullptr)
            continue;
        const Vector back((*points)[kTip], layout.At(layout.End(side)));
        const bool hasExtension = (*points)[kExtensionStart] != (*points)[kTip];
        for (int i = kTip; i < kEndPointCount; ++i)
            if (i != kExtensionStart || !hasExtension)
                (*points)[i] = (*points)[i].AffineCombine(1.0, back);
    }
}

int AngularDimension::GetOutsideSide() const {
    AngularLayout layout;
    return AskLayout(layout) ? layout.OutsideSide(layout.param) : 0;
}

bool AngularDimension::ArrowheadFlipped() const {
    AngularLayout layout;
    return AskLayout(layout) && layout.IsFlipped();
}

} // namespace Tessera::Dimension
