#include "apps/cli/write/ConstraintAnchors.h"

#include <cmath>

#include "apps/cli/recognize/CurveShapes.h"

namespace Tessera::Tool {

namespace {

using Geometry::Curve;
using Geometry::Point;
using Geometry::Vector;

/// In the frame: ends this close are the same point.
constexpr double kSamePoint = 1e-6;
/// Where along its range a closed curve is labelled: at the lower right in pictures.
constexpr double kClosedMiddle = 0.125;

Vector Unit(const Vector& v) {
    const double length = std::hypot(v.x, v.y);
    return length > 0.0 ? v / length : Vector(0.0, -1.0);
}

/// Upwards in the picture, or else to the right.
Vector NormalTo(const Vector& slope) {
    constexpr double kLevel = 1e-9;
    const Vector normal = Unit({slope.y, -slope.x});
    const bool isDown = normal.y > kLevel || (std::fabs(normal.y) <= kLevel && normal.x < 0.0);
    return isDown ? Vector(-normal.x, -normal.y) : normal;
}

Position CenterOf(const CurveShape& shape) {
    struct Center {
        Position operator()(const ArcShape& arc) const { return arc.center; }
        Position operator()(const CircleShape& circle) const { return circle.center; }
        Position operator()(const EllipseShape& ellipse) const { return ellipse.center; }
        Position operator()(const EllipticArcShape& arc) const { return arc.ellipse.center; }
        Position operator()(const LineShape& line) const { return line.start; }
        Position operator()(const SplineShape& spline) const { return spline.poles[0]; }
    };
    return std::visit(Center(), shape);
}

bool IsPoint(const DrawingElement& element) {
    return element.point != Geometry::SnapPointType_None;
}

} // namespace

ConstraintAnchors::ConstraintAnchors(const RecognizedDrawing& drawing, const WorkingFrame& frame)
    : drawing_(drawing), frame_(frame) {
    for (const RecognizedStroke& stroke : drawing.strokes) {
        std::vector<std::unique_ptr<Curve>>& curves = curves_.emplace_back();
        for (const RecognizedCurve& curve : stroke.curves) {
            curves.push_back(CurveOf(curve.shape, frame_));
        }
    }
}

std::vector<GlyphAnchor> ConstraintAnchors::Of(const RecognizedConstraint& constraint) const {
    const std::vector<DrawingElement>& elements = constraint.elements;
    GlyphAnchor anchor;
    switch (constraint.kind) {
    case Geometry::ConstraintKind_Coincident:
        anchor = At(elements[0]);
        anchor.isOn = true;
        return {anchor};
    case Geometry::ConstraintKind_Concentric:
    case Geometry::ConstraintKind_PointOnCurve:
    case Geometry::ConstraintKind_MidPoint:
        return {At(elements[0])};
    case Geometry::ConstraintKind_Tangent:
        if (IsPoint(elements[0]) || IsPoint(elements[1])) {
            return {At(elements[IsPoint(elements[0]) ? 0 : 1])};
        }
        break;
    case Geometry::ConstraintKind_Perpendicular:
        if (FindCorner(constraint, anchor)) {
            return {anchor};
        }
        break;
    default:
        break;
    }
    std::vector<GlyphAnchor> anchors = {At(elements[0])};
    if (elements.size() > 1) {
        anchors.push_back(At(elements[1]));
    }
    return anchors;
}

const Curve& ConstraintAnchors::CurveAt(const CurvePlace& place) const {
    return *curves_[place.stroke][place.curve];
}

GlyphAnchor ConstraintAnchors::At(const DrawingElement& element) const {
    if (element.point == Geometry::SnapPointType_Center) {
        const RecognizedStroke& stroke = drawing_.strokes[element.place.stroke];
        const Position center = frame_.ToWorking(CenterOf(stroke.curves[element.place.curve].shape));
        return {{center.x, center.y}, {0.0, -1.0}, true};
    }
    const Curve& curve = CurveAt(element.place);
    double along = curve.IsClosed() ? kClosedMiddle : 0.5;
    if (element.point == Geometry::SnapPointType_Start || element.point == Geometry::SnapPointType_End) {
        along = element.point == Geometry::SnapPointType_Start ? 0.0 : 1.0;
    }
    double limits[2];
    curve.AskRange(limits);
    GlyphAnchor anchor;
    Vector slope;
    curve.EvaluateAtParameter(limits[0] + along * (limits[1] - limits[0]), anchor.place, slope);
    anchor.away = NormalTo(slope);
    return anchor;
}

/// The corner that two lines share; the glyph stands between them.
bool ConstraintAnchors::FindCorner(const RecognizedConstraint& constraint, GlyphAnchor& corner) const {
    const Curve& a = CurveAt(constraint.elements[0].place);
    const Curve& b = CurveAt(constraint.elements[1].place);
    const Point ends[2][2] = {{a.GetStart(), a.GetEnd()}, {b.GetStart(), b.GetEnd()}};
    for (int i = 0; i < 2; ++i) {
        for (int j = 0; j < 2; ++j) {
            const Point& p = ends[0][i];
            if (p.Distance(ends[1][j]) <= kSamePoint) {
                const Point u = ends[0][1 - i] - p;
                const Point v = ends[1][1 - j] - p;
                corner = {p, Unit(Unit({u.x, u.y}) + Unit({v.x, v.y})), false};
                return true;
            }
        }
    }
    return false;
}

} // namespace Tessera::Tool
