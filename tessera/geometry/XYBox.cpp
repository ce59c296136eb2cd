// The constructor from pen samples is defined in tessera/strokes/StrokePoint.cpp.
#include "tessera/geometry/XYBox.h"

#include <algorithm>
#include <array>

#include "tessera/kernel/EQ.h"

namespace Tessera::Geometry {

namespace {

void Extend(double value, double& low, double& high) {
    if (value < low) {
        low = value;
    } else if (value > high) {
        high = value;
    }
}

std::array<Point, 4> Corners(const XYBox& box) {
    return {box.min, Point(box.max.x, box.min.y), box.max, Point(box.min.x, box.max.y)};
}

bool ContainsCornerOf(const XYBox& box, const XYBox& other) {
    const std::array<Point, 4> corners = Corners(other);
    return std::any_of(corners.begin(), corners.end(),
                       [&box](const Point& corner) { return box.ContainPoint(corner); });
}

// `wide` spans `tall` in x and `tall` spans `wide` in y: the arms of a plus sign.
bool FormCross(const XYBox& wide, const XYBox& tall, double tol) {
    return tall.min.x + tol > wide.min.x && wide.max.x > tall.max.x - tol && wide.min.y + tol > tall.min.y &&
           tall.max.y > wide.max.y - tol;
}

} // namespace

XYBox::XYBox(const std::vector<Point>& points) {
    if (points.empty()) {
        return;
    }
    min = max = points.front();
    for (const Point& point : points) {
        Merge(point);
    }
}

void XYBox::Merge(const Point& p) {
    Extend(p.x, min.x, max.x);
    Extend(p.y, min.y, max.y);
}

void XYBox::Merge(const XYBox& box) {
    const Point boxMax = box.max; // the box may be this one
    Merge(box.min);
    Merge(boxMax);
}

bool XYBox::ContainPoint(const Point& p) const {
    const double tol = EQ_ask_length_tolerance();
    return min.x - tol < p.x && p.x < max.x + tol && min.y - tol < p.y && p.y < max.y + tol;
}

bool XYBox::HasIntersect(const XYBox& box) const {
    const double tol = EQ_ask_length_tolerance();
    return ContainsCornerOf(*this, box) || ContainsCornerOf(box, *this) || FormCross(*this, box, tol) ||
           FormCross(box, *this, tol);
}

} // namespace Tessera::Geometry
