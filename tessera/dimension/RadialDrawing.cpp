#include <cmath>

#include "tessera/dimension/RadialDimension.h"
#include "tessera/dimension/internal/DecorationSizes.h"
#include "tessera/dimension/internal/MoveCurves.h"
#include "tessera/dimension/internal/RadialLayout.h"
#include "tessera/dimension/internal/TextBox.h"
#include "tessera/geometry/XYBox.h"

// The leader of a radial dimension as it is built, drawn and picked.

namespace Tessera::Dimension {

using Geometry::Curve;
using Geometry::Line;
using Geometry::Point;
using Geometry::Vector;

namespace {

constexpr double kBandTolDeg = 1e-10; // degrees
constexpr double kUprightEnd = 90.0000000001;

} // namespace

void RadialDimension::ComputeRadialDimensionDeco() {
    if (!HasRecord(arc_))
        return;
    Vector along;
    const Point foot = AskFoot(along);
    const Vector perp(-along.y, along.x);
    const double h = GetFontHeight();
    // The arrow comes from where the text stands.
    const Point base = foot.AffineCombine((textOffset_ < 0.0 ? -1.0 : 1.0) * kArrowLength * h, along);
    auto deco = std::make_unique<RadialDimDeco>();
    std::vector<Point>& points = deco->GetPoints();
    points.assign(kRadialPointCount, foot);
    points[kLeaderEnd] = foot.AffineCombine(textOffset_, along);
    points[kHeadRight] = base.AffineCombine(-kArrowHalfWidth * h, perp);
    points[kHeadLeft] = base.AffineCombine(kArrowHalfWidth * h, perp);
    SetRadialDimDeco(deco.release());
}

const std::vector<Point>* RadialDimension::Points() const {
    // Records may come from outside.
    return deco_ != nullptr && deco_->GetPoints().size() >= kRadialPointCount ? &deco_->GetPoints() : nullptr;
}

void RadialDimension::GetRadialDimDecoPoints(std::vector<Point>& points) const {
    if (deco_ != nullptr)
        points.insert(points.end(), deco_->GetPoints().begin(), deco_->GetPoints().end());
}

void RadialDimension::GetRadialDimDecoPolygon(std::vector<Point>& points) const {
    if (const std::vector<Point>* all = Points())
        for (const int i : {kLeaderEnd, kFoot, kHeadRight, kHeadLeft, kFoot})
            points.push_back((*all)[i]);
}

bool RadialDimension::AskXYBox(Geometry::XYBox& box) const {
    const std::vector<Point>* points = Points();
    if (points == nullptr)
        return false;
    box = Geometry::XYBox(*points);
    return true;
}

void RadialDimension::GetTempDimDecoObjects(std::vector<Curve*>& curves, std::vector<Point>& arrowPoints,
                                            bool /*flag*/) const {
    const std::vector<Point>* points = Points();
    if (points == nullptr)
        return;
    const auto& p = *points;
    curves.push_back(std::make_unique<Line>(p[kLeaderEnd], p[kFoot]).release());
    arrowPoints.insert(arrowPoints.end(), {p[kHeadTip], p[kHeadRight], p[kHeadLeft]});
}

double RadialDimension::GetDistanceToPoint(const Point& p, int& part) {
    NearestPart nearest(p);
    if (const std::vector<Point>* points = Points()) {
        std::vector<Point> corners;
        GetOrientedTextBox(corners);
        nearest.OfferText(corners);
        nearest.OfferSegment((*points)[kLeaderEnd], (*points)[kFoot], 1);
        for (int i = kHeadTip; i < kHeadClose; ++i)
            nearest.OfferSegment((*points)[i], (*points)[i + 1], 1);
    }
    part = nearest.GetPart();
    return nearest.GetDistance();
}

// --- Text

Point RadialDimension::GetAnnotationMidPoint() {
    return GetReferencePoint();
}

Point RadialDimension::GetReferencePoint() const {
    const double angle = GetTextAngle();
    const bool isRising = angle > kBandTolDeg && angle < kUprightEnd;
    const double rise = isRising || std::fabs(angle - 270.0) <= kBandTolDeg ? -0.5 : 0.5;
    return GetOrigin()
        .AffineCombine(0.5 * GetTextWidthOffset(), GetOrientation())
        .AffineCombine(rise * GetFontHeight(), ComputeOffsetVector(GetOrientation()));
}

void RadialDimension::GetOrientedTextBox(std::vector<Point>& corners) const {
    const Vector up = UpDirection(GetTextAngle());
    const Point foot = GetReferencePoint().AffineCombine(-0.5 * GetFontHeight(), up);
    AppendTextBox(foot, 0.5 * GetTextWidthOffset(), GetFontHeight(), GetTextAngle(), corners);
}

} // namespace Tessera::Dimension
