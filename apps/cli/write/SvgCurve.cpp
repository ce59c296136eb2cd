// Arcs run towards growing angles, which SVG calls the positive direction in whatever way the axes point: the
// sweep flag is always 1. Splines are cut into Bezier segments by inserting every knot up to the degree
// (Boehm 1980), which leaves the curve as it is.

#include "apps/cli/write/SvgCurve.h"

#include <cassert>
#include <charconv>
#include <cmath>
#include <numbers>

namespace Tessera::Tool {

namespace {

std::string PairText(Position p) {
    return ExactNumber(p.x) + " " + ExactNumber(p.y);
}

/// Inserts one more knot u into the poly-line of poles; knots[span] <= u < knots[span + 1].
void InsertKnot(int degree, double u, std::vector<double>& knots, std::vector<Position>& poles) {
    std::size_t span = static_cast<std::size_t>(degree);
    while (span + 1 < poles.size() && knots[span + 1] <= u) {
        ++span;
    }
    std::vector<Position> moved;
    for (std::size_t i = span - degree + 1; i <= span; ++i) {
        const double width = knots[i + degree] - knots[i];
        const double f = width > 0.0 ? (u - knots[i]) / width : 0.0;
        moved.push_back(
            {(1.0 - f) * poles[i - 1].x + f * poles[i].x, (1.0 - f) * poles[i - 1].y + f * poles[i].y});
    }
    poles.insert(poles.begin() + static_cast<std::ptrdiff_t>(span), Position());
    std::copy(moved.begin(), moved.end(), poles.begin() + static_cast<std::ptrdiff_t>(span) - degree + 1);
    knots.insert(knots.begin() + static_cast<std::ptrdiff_t>(span) + 1, u);
}

std::string ArcCommand(double rx, double ry, double rotationDeg, bool isLarge, Position end) {
    return " A" + ExactNumber(rx) + " " + ExactNumber(ry) + " " + ExactNumber(rotationDeg) + " " +
           (isLarge ? "1" : "0") + " 1 " + PairText(end);
}

struct ElementOf {
    std::string operator()(const LineShape& line) const {
        return "<line x1=\"" + ExactNumber(line.start.x) + "\" y1=\"" + ExactNumber(line.start.y) +
               "\" x2=\"" + ExactNumber(line.end.x) + "\" y2=\"" + ExactNumber(line.end.y) + "\"";
    }
    std::string operator()(const ArcShape& arc) const {
        return "<path d=\"M" + PairText(arc.start) +
               ArcCommand(arc.radius, arc.radius, 0.0, arc.endAngle - arc.startAngle > std::numbers::pi,
                          arc.end) +
               "\"";
    }
    std::string operator()(const CircleShape& circle) const {
        return "<circle cx=\"" + ExactNumber(circle.center.x) + "\" cy=\"" + ExactNumber(circle.center.y) +
               "\" r=\"" + ExactNumber(circle.radius) + "\"";
    }
    std::string operator()(const EllipseShape& ellipse) const {
        return "<ellipse cx=\"" + ExactNumber(ellipse.center.x) + "\" cy=\"" + ExactNumber(ellipse.center.y) +
               "\" rx=\"" + ExactNumber(ellipse.radii[0]) + "\" ry=\"" + ExactNumber(ellipse.radii[1]) +
               "\" transform=\"rotate(" + ExactNumber(ellipse.rotation * 180.0 / std::numbers::pi) + " " +
               PairText(ellipse.center) + ")\"";
    }
    std::string operator()(const EllipticArcShape& arc) const {
        const EllipseShape& ellipse = arc.ellipse;
        return "<path d=\"M" + PairText(arc.start) +
               ArcCommand(ellipse.radii[0], ellipse.radii[1], ellipse.rotation * 180.0 / std::numbers::pi,
                          arc.endAngle - arc.startAngle > std::numbers::pi, arc.end) +
               "\"";
    }
    std::string operator()(const SplineShape& spline) const {
        constexpr const char* kCommands[] = {"", " L", " Q", " C"};
        const std::vector<Position> poles = BezierPoles(spline);
        std::string path = "<path d=\"M" + PairText(poles[0]);
        for (std::size_t i = 1; i < poles.size(); ++i) {
            const bool isFirst = (i - 1) % static_cast<std::size_t>(spline.degree) == 0;
            path += (isFirst ? kCommands[spline.degree] : " ") + PairText(poles[i]);
        }
        return path + (spline.isClosed ? " Z\"" : "\"");
    }
};

} // namespace

std::string ExactNumber(double value) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return {text, end};
}

std::string EscapeXml(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
            break;
        }
    }
    return escaped;
}

std::vector<Position> BezierPoles(const SplineShape& spline) {
    // The recogniser fits plain curves of degree 2; SVG can draw those up to degree 3.
    assert(spline.weights.empty() && spline.degree >= 1 && spline.degree <= 3);
    const int degree = spline.degree;
    std::vector<double> knots = spline.knots;
    std::vector<Position> poles = spline.poles;
    const double last = knots[poles.size()];
    for (std::size_t i = static_cast<std::size_t>(degree); i < poles.size();) {
        const double u = knots[i + 1];
        std::size_t end = i + 1;
        while (end < knots.size() && knots[end] == u) {
            ++end;
        }
        int multiplicity = static_cast<int>(end - i - 1);
        if (u >= last) {
            break;
        }
        for (; multiplicity < degree; ++multiplicity, ++end) {
            InsertKnot(degree, u, knots, poles);
        }
        i = end - 1;
    }
    return poles;
}

std::string SvgElement(const CurveShape& shape) {
    return std::visit(ElementOf(), shape);
}

} // namespace Tessera::Tool
