#include "apps/cli/convert/ElementShape.h"

#include <cmath>
#include <memory>
#include <numbers>
#include <utility>

#include "apps/cli/recognize/CurveShapes.h"
#include "tessera/geometry/Arc.h"

namespace Tessera::Tool {

namespace {

using Geometry::Point;
using Geometry::Vector;

Point PointOf(const tagGPosition2d& p) {
    return {p.x, p.y};
}

Position ToInk(const WorkingFrame& frame, const tagGPosition2d& p) {
    return frame.ToInk({p.x, p.y});
}

CurveShape ArcOf(const HostElement2d& e, const WorkingFrame& frame) {
    const Point start = PointOf(e.points[0]);
    const Point end = PointOf(e.points[1]);
    const Point between = PointOf(e.points[2]);
    const std::unique_ptr<Geometry::Arc> arc(Geometry::Arc::FromThreePoints(start, between, end));
    const Point center = arc->GetCenter();
    ArcShape shape{frame.ToInk({center.x, center.y}),
                   arc->GetRadius() / frame.scale,
                   arc->GetStartAngle(),
                   arc->GetEndAngle(),
                   ToInk(frame, e.points[0]),
                   ToInk(frame, e.points[1])};
    if (Vector(start, between).Cross(Vector(between, end)) < 0.0) {
        std::swap(shape.startAngle, shape.endAngle);
    }
    return shape;
}

EllipseShape EllipseOf(const HostElement2d& e, const WorkingFrame& frame) {
    const Vector first(PointOf(e.points[0]), PointOf(e.points[1]));
    const Vector second(PointOf(e.points[0]), PointOf(e.points[2]));
    return {ToInk(frame, e.points[0]),
            {first.Length() / frame.scale, second.Length() / frame.scale},
            std::atan2(first.y, first.x)};
}

/// In [0, 2 pi), counter-clockwise from the first axis.
double EccentricAngle(const HostElement2d& e, const tagGPosition2d& at) {
    const Vector first(PointOf(e.points[0]), PointOf(e.points[1]));
    const Vector second(PointOf(e.points[0]), PointOf(e.points[2]));
    const Vector to(PointOf(e.points[0]), PointOf(at));
    const double angle = std::atan2(first.Cross(to) / second.Length(), first.Dot(to) / first.Length());
    return angle < 0.0 ? angle + 2.0 * std::numbers::pi : angle;
}

CurveShape EllipticArcOf(const HostElement2d& e, const WorkingFrame& frame) {
    const Vector first(PointOf(e.points[0]), PointOf(e.points[1]));
    const Vector second(PointOf(e.points[0]), PointOf(e.points[2]));
    const bool isClockwise = first.Cross(second) < 0.0;
    EllipticArcShape shape{EllipseOf(e, frame), EccentricAngle(e, e.points[3]),
                           EccentricAngle(e, e.points[4]), ToInk(frame, e.points[3]),
                           ToInk(frame, e.points[4])};
    if (isClockwise && shape.startAngle <= shape.endAngle) {
        shape.startAngle += 2.0 * std::numbers::pi;
    } else if (!isClockwise && shape.endAngle <= shape.startAngle) {
        shape.endAngle += 2.0 * std::numbers::pi;
    }
    return shape;
}

CurveShape SplineOf(const HostElement2d& e, const WorkingFrame& frame) {
    SplineShape shape{e.degree, false, {e.knots, e.knots + e.poleCount + e.degree + 1}, {}, {}};
    for (int i = 0; i < e.poleCount; ++i) {
        shape.poles.push_back(ToInk(frame, e.poles[i]));
    }
    if (e.weights != nullptr) {
        shape.weights.assign(e.weights, e.weights + e.poleCount);
    }
    shape.isClosed = CurveOf(shape, frame)->IsClosed();
    return shape;
}

} // namespace

CurveShape ShapeOf(const HostElement2d& element, const WorkingFrame& frame) {
    switch (element.kind) {
    case kHostElementArc:
        return ArcOf(element, frame);
    case kHostElementCircle:
        return CircleShape{ToInk(frame, element.points[0]), element.radius / frame.scale};
    case kHostElementEllipse:
        return EllipseOf(element, frame);
    case kHostElementEllipticArc:
        return EllipticArcOf(element, frame);
    case kHostElementBSpline:
        return SplineOf(element, frame);
    default:
        return LineShape{ToInk(frame, element.points[0]), ToInk(frame, element.points[1])};
    }
}

} // namespace Tessera::Tool
