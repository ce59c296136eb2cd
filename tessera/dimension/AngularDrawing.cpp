#include <memory>

#include "tessera/dimension/AngularDimension.h"
#include "tessera/dimension/internal/AngularLayout.h"
#include "tessera/dimension/internal/TextBox.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/XYBox.h"

// The decoration of an angular dimension as the host draws and picks it.

namespace Tessera::Dimension {

using Geometry::Arc;
using Geometry::Curve;
using Geometry::Line;
using Geometry::Point;

bool AngularDimension::AskXYBox(Geometry::XYBox& box) const {
    AngularLayout layout;
    if (!AskLayout(layout))
        return false;
    std::vector<Point> points;
    for (const int side : {1, 2}) {
        if (const std::vector<Point>* drawn = PointsOf(side)) {
            points.insert(points.end(), drawn->begin(), drawn->end());
            layout.AppendExtent(layout.DrawnArc(side), points);
        }
    }
    if (points.empty())
        return false;
    layout.AppendExtent(layout.range, points);
    box = Geometry::XYBox(points);
    return true;
}

void AngularDimension::GetTempDimDecoObjects(std::vector<Curve*>& curves, std::vector<Point>& arrowPoints,
                                             bool /*flag*/) const {
    AngularLayout layout;
    if (!AskLayout(layout))
        return;
    for (const int side : {1, 2}) {
        const std::vector<Point>* points = PointsOf(side);
        if (points == nullptr)
            continue;
        const auto& p = *points;
        const AngleRange drawn = layout.DrawnArc(side);
        double centre[3] = {layout.centre.x, layout.centre.y, 0.0};
        if (!(layout.radius * drawn.Sweep() < layout.tolerance))
            curves.push_back(std::make_unique<Arc>(centre, layout.radius, drawn.start, drawn.end).release());
        if (!(p[kExtensionStart].Distance(p[kExtensionEnd]) < layout.tolerance))
            curves.push_back(std::make_unique<Line>(p[kExtensionStart], p[kExtensionEnd]).release());
        arrowPoints.insert(arrowPoints.end(), {p[kArrowTip], p[kArrowLow], p[kArrowHigh]});
    }
}

double AngularDimension::GetDistanceToPoint(const Point& p, int& part) {
    NearestPart nearest(p);
    AngularLayout layout;
    const bool isDrawn = AskLayout(layout) && (PointsOf(1) != nullptr || PointsOf(2) != nullptr);
    if (isDrawn) {
        std::vector<Point> corners;
        GetOrientedTextBox(corners);
        nearest.OfferText(corners);
    }
    for (const int side : {2, 1}) {
        const std::vector<Point>* points = PointsOf(side);
        if (!isDrawn || points == nullptr)
            continue;
        nearest.Offer(layout.DistanceToArc(p, layout.DrawnArc(side)), side);
        nearest.OfferSegment((*points)[kExtensionStart], (*points)[kExtensionEnd], side);
        for (int i = kArrowTip; i < kArrowClose; ++i)
            nearest.OfferSegment((*points)[i], (*points)[i + 1], side);
    }
    part = nearest.GetPart();
    return nearest.GetDistance();
}

void AngularDimension::GetOrientedTextBox(std::vector<Point>& corners) const {
    AppendTextBox(GetOrigin(), GetTextWidthOffset(), GetFontHeight(), GetTextAngle(), corners);
}

Point AngularDimension::GetAnnotationMidPoint() {
    return GetReferencePoint();
}

Point AngularDimension::GetReferencePoint() const {
    return GetOrigin().AffineCombine(0.5 * GetFontHeight(), UpDirection(GetTextAngle()));
}

} // namespace Tessera::Dimension
