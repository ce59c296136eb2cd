#include "apps/cli/recognize/CurveShapes.h"

#include <array>
#include <numbers>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/Spline.h"

namespace Tessera::Tool {

namespace {

using Geometry::Arc;
using Geometry::Curve;
using Geometry::Ellipse;
using Geometry::Line;
using Geometry::Point;
using Geometry::Spline;

constexpr double kTurn = 2.0 * std::numbers::pi;

Position ToInk(const WorkingFrame& frame, const Point& p) {
    return frame.ToInk({p.x, p.y});
}

CurveShape ShapeOf(const Arc& arc, const WorkingFrame& frame) {
    const Position center = ToInk(frame, arc.GetCenter());
    const double radius = arc.GetRadius() / frame.scale;
    if (arc.IsClosed()) {
        return CircleShape{center, radius};
    }
    return ArcShape{center,
                    radius,
                    arc.GetStartAngle(),
                    arc.GetEndAngle(),
                    ToInk(frame, arc.GetStart()),
                    ToInk(frame, arc.GetEnd())};
}

CurveShape ShapeOf(const Ellipse& ellipse, const WorkingFrame& frame) {
    double center[2];
    double radii[2];
    double rotation = 0.0;
    double start = 0.0;
    double end = 0.0;
    const bool isClosed = ellipse.AskEllipseData(center, radii, &rotation, &start, &end);
    const EllipseShape shape{
        frame.ToInk({center[0], center[1]}), {radii[0] / frame.scale, radii[1] / frame.scale}, rotation};
    if (isClosed) {
        return shape;
    }
    return EllipticArcShape{shape, start, end, ToInk(frame, ellipse.GetStart()),
                            ToInk(frame, ellipse.GetEnd())};
}

CurveShape ShapeOf(const Spline& spline, const WorkingFrame& frame) {
    const BCURVE_DATA& data = *static_cast<const EVC_bcurve_s*>(spline.AskCurveData()->data)->definition;
    SplineShape shape{data.degree, spline.IsClosed(), {}, {}, {}};
    shape.knots.assign(data.knots, data.knots + data.numPoles + data.order);
    for (int i = 0; i < data.numPoles; ++i) {
        shape.poles.push_back(frame.ToInk({data.poles[i][0], data.poles[i][1]}));
        if (data.polynomial == 0) {
            shape.weights.push_back(data.poles[i][3]);
        }
    }
    return shape;
}

struct CurveMaker {
    const WorkingFrame& frame;

    Point At(Position ink) const {
        const Position p = frame.ToWorking(ink);
        return {p.x, p.y};
    }
    std::unique_ptr<Curve> CircularArc(Position center, double radius, double start, double end) const {
        const Point c = At(center);
        double at[3] = {c.x, c.y, 0.0};
        return std::make_unique<Arc>(at, radius * frame.scale, start, end);
    }
    std::unique_ptr<Curve> EllipticArc(const EllipseShape& shape, double start, double end) const {
        const Point c = At(shape.center);
        double at[2] = {c.x, c.y};
        double radii[2] = {shape.radii[0] * frame.scale, shape.radii[1] * frame.scale};
        return std::make_unique<Ellipse>(at, radii, shape.rotation, start, end);
    }
    std::unique_ptr<Curve> operator()(const LineShape& line) const {
        return std::make_unique<Line>(At(line.start), At(line.end));
    }
    std::unique_ptr<Curve> operator()(const ArcShape& arc) const {
        return CircularArc(arc.center, arc.radius, arc.startAngle, arc.endAngle);
    }
    std::unique_ptr<Curve> operator()(const CircleShape& circle) const {
        return std::make_unique<Arc>(At(circle.center), circle.radius * frame.scale);
    }
    std::unique_ptr<Curve> operator()(const EllipseShape& ellipse) const {
        return EllipticArc(ellipse, 0.0, kTurn);
    }
    std::unique_ptr<Curve> operator()(const EllipticArcShape& arc) const {
        return EllipticArc(arc.ellipse, arc.startAngle, arc.endAngle);
    }
    std::unique_ptr<Curve> operator()(const SplineShape& spline) const {
        std::vector<double> knots = spline.knots;
        std::vector<std::array<double, 4>> poles;
        for (std::size_t i = 0; i < spline.poles.size(); ++i) {
            const Point p = At(spline.poles[i]);
            poles.push_back({p.x, p.y, 0.0, spline.weights.empty() ? 1.0 : spline.weights[i]});
        }
        return std::make_unique<Spline>(static_cast<int>(poles.size()), spline.degree + 1, 0, knots.data(),
                                        reinterpret_cast<double(*)[4]>(poles.data()));
    }
};

} // namespace

CurveShape ShapeOf(const Curve& curve, const WorkingFrame& frame) {
    switch (curve.GetType()) {
    case Geometry::CurveType_Arc:
        return ShapeOf(static_cast<const Arc&>(curve), frame);
    case Geometry::CurveType_Ellipse:
        return ShapeOf(static_cast<const Ellipse&>(curve), frame);
    case Geometry::CurveType_Spline:
        return ShapeOf(static_cast<const Spline&>(curve), frame);
    case Geometry::CurveType_Line:
        break;
    }
    return LineShape{ToInk(frame, curve.GetStart()), ToInk(frame, curve.GetEnd())};
}

std::unique_ptr<Curve> CurveOf(const CurveShape& shape, const WorkingFrame& frame) {
    return std::visit(CurveMaker{frame}, shape);
}

} // namespace Tessera::Tool
