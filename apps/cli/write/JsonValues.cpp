#include "apps/cli/write/JsonValues.h"

#include <ostream>

namespace Tessera::Tool {

namespace {

struct ShapeFields {
    Json& json;

    void operator()(const LineShape& line) const {
        json["start"] = Pair(line.start);
        json["end"] = Pair(line.end);
    }
    void operator()(const ArcShape& arc) const {
        json["center"] = Pair(arc.center);
        json["radius"] = arc.radius;
        json["start_angle"] = arc.startAngle;
        json["end_angle"] = arc.endAngle;
        json["start"] = Pair(arc.start);
        json["end"] = Pair(arc.end);
    }
    void operator()(const CircleShape& circle) const {
        json["center"] = Pair(circle.center);
        json["radius"] = circle.radius;
    }
    void operator()(const EllipseShape& ellipse) const {
        json["center"] = Pair(ellipse.center);
        json["radii"] = Json::array({ellipse.radii[0], ellipse.radii[1]});
        json["rotation"] = ellipse.rotation;
    }
    void operator()(const EllipticArcShape& arc) const {
        (*this)(arc.ellipse);
        json["start_angle"] = arc.startAngle;
        json["end_angle"] = arc.endAngle;
        json["start"] = Pair(arc.start);
        json["end"] = Pair(arc.end);
    }
    void operator()(const SplineShape& spline) const {
        json["degree"] = spline.degree;
        json["closed"] = spline.isClosed;
        json["knots"] = spline.knots;
        json["poles"] = Json::array();
        for (const Position& pole : spline.poles) {
            json["poles"].push_back(Pair(pole));
        }
        if (!spline.weights.empty()) {
            json["weights"] = spline.weights;
        }
    }
};

} // namespace

Json Pair(const Position& p) {
    return Json::array({p.x, p.y});
}

void AddShape(const CurveShape& shape, Json& json) {
    std::visit(ShapeFields{json}, shape);
}

void WriteJsonLine(const Json& json, std::ostream& out) {
    // Identifiers and messages may hold bytes of the input that are not UTF-8.
    out << json.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
}

} // namespace Tessera::Tool
