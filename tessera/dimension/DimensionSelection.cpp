#include <algorithm>
#include <cmath>

#include "tessera/core/NumericHelpers.h"
#include "tessera/dimension/DimensionBase.h"
#include "tessera/dimension/internal/TempDecoration.h"
#include "tessera/geometry/Curve.h"
#include "tessera/geometry/Line.h"

// Picking a dimension with a point, a lasso or a curve. The lassos look at the drawn form: decoration curves,
// arrowheads and the corners of the text.

namespace Tessera::Dimension {

using Geometry::Curve;
using Geometry::Point;
using Geometry::Vector;

namespace {

bool Meets(const Curve& drawn, const Curve& curve, double tolerance) {
    int count = 0;
    std::vector<double> params1;
    std::vector<double> params2;
    std::vector<Point> points;
    return drawn.IntersectCurve(curve, &count, params1, params2, points, tolerance) && count > 0;
}

} // namespace

bool DimensionBase::AnnotationSelected(const Point& p, double tolerance) const {
    std::vector<Point> corners;
    GetOrientedTextBox(corners);
    if (corners.size() < 3)
        return false;
    const Point centre = (corners[0] + corners[2]) / 2.0;
    Vector u(corners[0], corners[1]);
    Vector v(corners[1], corners[2]);
    const double width = u.Length();
    const double height = v.Length();
    u.Normalize();
    v.Normalize();
    const Vector d(centre, p);
    return std::fabs(d.Dot(u)) < width / 2.0 + tolerance && std::fabs(d.Dot(v)) < height / 2.0 + tolerance;
}

bool DimensionBase::IsInPolygon(int n, double* xs, double* ys) {
    const TempDecoration drawn(*this);
    const auto isInside = [&](const Point& p) { return Core::PointInPolygon(p.x, p.y, n, xs, ys); };
    return std::all_of(drawn.curves.begin(), drawn.curves.end(),
                       [&](Curve* curve) { return curve->IsInPolygon(n, xs, ys); }) &&
           std::all_of(drawn.arrowPoints.begin(), drawn.arrowPoints.end(), isInside) &&
           std::all_of(drawn.textBox.begin(), drawn.textBox.end(), isInside);
}

bool DimensionBase::IsCrossPolygon(int n, double* xs, double* ys) {
    const TempDecoration drawn(*this);
    const auto isInside = [&](const Point& p) { return Core::PointInPolygon(p.x, p.y, n, xs, ys); };
    return std::any_of(drawn.curves.begin(), drawn.curves.end(),
                       [&](Curve* curve) { return curve->IsCrossPolygon(n, xs, ys); }) ||
           std::any_of(drawn.arrowPoints.begin(), drawn.arrowPoints.end(), isInside) ||
           std::any_of(drawn.textBox.begin(), drawn.textBox.end(), isInside);
}

bool DimensionBase::IntersectCurve(const Curve* curve, double tolerance, bool /*flag*/) const {
    if (curve == nullptr)
        return false;
    const TempDecoration drawn(*this);
    if (std::any_of(drawn.curves.begin(), drawn.curves.end(),
                    [&](const Curve* part) { return Meets(*part, *curve, tolerance); }))
        return true;
    if (drawn.textBox.size() < 3)
        return false;
    const Geometry::Line diagonal(drawn.textBox[0], drawn.textBox[2]);
    return Meets(diagonal, *curve, tolerance);
}

} // namespace Tessera::Dimension
