#include "apps/cli/recognize/DimensionLayout.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Tessera::Tool {

namespace {

using Geometry::Curve;
using Geometry::Point;

constexpr int kArcChords = 24;

/// Part of the segment at which the coordinate, going from p to q, lies within +-half: cuts [from, to].
bool Clip(double p, double q, double half, double& from, double& to) {
    const double step = q - p;
    if (step == 0.0) {
        return std::fabs(p) <= half;
    }
    const double t0 = (-half - p) / step;
    const double t1 = (half - p) / step;
    from = std::max(from, std::min(t0, t1));
    to = std::min(to, std::max(t0, t1));
    return from <= to;
}

} // namespace

void Segment::Widen(Point& low, Point& high) const {
    for (const Point& p : {a, b}) {
        low = Point(std::min(low.x, p.x), std::min(low.y, p.y));
        high = Point(std::max(high.x, p.x), std::max(high.y, p.y));
    }
}

bool TextBox::Meets(const Segment& segment) const {
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const auto along = [&](const Point& p) { return (p.x - center.x) * c + (p.y - center.y) * s; };
    const auto across = [&](const Point& p) { return (p.y - center.y) * c - (p.x - center.x) * s; };
    double from = 0.0;
    double to = 1.0;
    return Clip(along(segment.a), along(segment.b), halfWidth, from, to) &&
           Clip(across(segment.a), across(segment.b), halfHeight, from, to);
}

std::array<Segment, 6> TextBox::Outline() const {
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const auto corner = [&](double u, double v) {
        return Point(center.x + u * halfWidth * c - v * halfHeight * s,
                     center.y + u * halfWidth * s + v * halfHeight * c);
    };
    const Point p[] = {corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, 1)};
    return {{{p[0], p[1]}, {p[1], p[2]}, {p[2], p[3]}, {p[3], p[0]}, {p[0], p[2]}, {p[1], p[3]}}};
}

bool TextBox::Meets(const TextBox& other) const {
    const auto meets = [](const TextBox& box, const TextBox& with) {
        const auto outline = with.Outline();
        return std::any_of(outline.begin(), outline.end(), [&](const Segment& s) { return box.Meets(s); });
    };
    return meets(*this, other) || meets(other, *this);
}

void AppendChords(const Curve& curve, int count, std::vector<Segment>& segments) {
    if (curve.GetType() == Geometry::CurveType_Line) {
        segments.push_back({curve.GetStart(), curve.GetEnd()});
        return;
    }
    std::vector<Point> points;
    curve.CreatePolylinePoints(count + 1, points);
    for (std::size_t i = 1; i < points.size(); ++i) {
        segments.push_back({points[i - 1], points[i]});
    }
}

std::unique_ptr<DimensionLayout> LayOut(const Dimension::DimensionBase& dimension) {
    auto layout = std::make_unique<DimensionLayout>();
    std::vector<Curve*> curves;
    std::vector<Point> arrows;
    dimension.GetTempDimDecoObjects(curves, arrows, false);
    for (Curve* curve : curves) {
        layout->curves.emplace_back(curve);
        AppendChords(*curve, kArcChords, layout->segments);
    }
    for (std::size_t i = 0; i + 2 < arrows.size(); i += 3) {
        layout->arrowheads.push_back({arrows[i], arrows[i + 1], arrows[i + 2]});
    }
    std::vector<Point> corners;
    dimension.GetOrientedTextBox(corners);
    if (curves.empty() || corners.size() < 4) {
        return nullptr;
    }
    TextBox& text = layout->text;
    text.center = Point(0.5 * (corners[0].x + corners[2].x), 0.5 * (corners[0].y + corners[2].y));
    text.angle = dimension.GetTextAngle() * std::numbers::pi / 180.0;
    const double diagonal = std::hypot(corners[2].x - corners[0].x, corners[2].y - corners[0].y);
    text.halfHeight = 0.5 * dimension.GetFontHeight();
    text.halfWidth = std::sqrt(std::max(0.25 * diagonal * diagonal - text.halfHeight * text.halfHeight, 0.0));
    return std::isfinite(diagonal) ? std::move(layout) : nullptr;
}

} // namespace Tessera::Tool
