#include "tessera/dimension/LengthDimension.h"
#include "tessera/dimension/internal/LengthLayout.h"
#include "tessera/dimension/internal/TextBox.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/XYBox.h"
#include "tessera/kernel/EQ.h"

// The decoration as the host draws and picks it.

namespace Tessera::Dimension {

using Geometry::Curve;
using Geometry::Line;
using Geometry::Point;

namespace {

void OfferDecoration(const std::vector<Point>& points, int side, NearestPart& nearest) {
    nearest.OfferSegment(points[kLineEnd], points[kTip], side);
    nearest.OfferSegment(points[kExtensionStart], points[kExtensionEnd], side);
    for (int i = kArrowTip; i < kArrowClose; ++i)
        nearest.OfferSegment(points[i], points[i + 1], side);
}

} // namespace

void LengthDimension::GetLengthDimDecoPoints(int side, std::vector<Point>& points) const {
    if (const LengthDimDeco* deco = GetLengthDimDeco(side))
        points.insert(points.end(), deco->GetPoints().begin(), deco->GetPoints().end());
}

void LengthDimension::GetLengthDimDecoPolygon(int side, std::vector<Point>& points) const {
    if (const std::vector<Point>* all = PointsOf(side))
        for (const int i : {kLineEnd, kTip, kArrowLow, kArrowHigh, kTip})
            points.push_back((*all)[i]);
}

bool LengthDimension::AskXYBox(Geometry::XYBox& box) const {
    std::vector<Point> points;
    GetLengthDimDecoPoints(1, points);
    GetLengthDimDecoPoints(2, points);
    if (points.empty())
        return false;
    box = Geometry::XYBox(points);
    return true;
}

void LengthDimension::GetTempDimDecoObjects(std::vector<Curve*>& curves, std::vector<Point>& arrowPoints,
                                            bool /*flag*/) const {
    const double shortest = EQ_ask_length_tolerance();
    curves.reserve(curves.size() + 4);
    for (const int side : {1, 2}) {
        const std::vector<Point>* points = PointsOf(side);
        if (points == nullptr)
            continue;
        const auto& p = *points;
        curves.push_back(new Line(p[kLineEnd], p[kTip]));
        if (!(p[kExtensionStart].Distance(p[kExtensionEnd]) < shortest))
            curves.push_back(new Line(p[kExtensionStart], p[kExtensionEnd]));
        arrowPoints.insert(arrowPoints.end(), {p[kArrowTip], p[kArrowLow], p[kArrowHigh]});
    }
}

double LengthDimension::GetDistanceToPoint(const Point& p, int& part) {
    NearestPart nearest(p);
    const std::vector<Point>* points[] = {PointsOf(2), PointsOf(1)};
    if (points[0] != nullptr || points[1] != nullptr) {
        std::vector<Point> corners;
        GetOrientedTextBox(corners);
        nearest.OfferText(corners);
    }
    for (const int side : {2, 1})
        if (const std::vector<Point>* drawn = points[2 - side])
            OfferDecoration(*drawn, side, nearest);
    part = nearest.GetPart();
    return nearest.GetDistance();
}

void LengthDimension::GetOrientedTextBox(std::vector<Point>& corners) const {
    AppendTextBox(GetOrigin(), GetTextWidthOffset(), GetFontHeight(), GetTextAngle(), corners);
}

Point LengthDimension::GetAnnotationMidPoint() {
    return GetReferencePoint();
}

Point LengthDimension::GetReferencePoint() const {
    return GetOrigin().AffineCombine(0.5 * GetFontHeight(), UpDirection(GetTextAngle()));
}

} // namespace Tessera::Dimension
