#include "apps/cli/write/CurveText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>

namespace Tessera::Tool {

namespace {

std::string PairText(const Position& p) {
    return "(" + ShortNumber(p.x) + ", " + ShortNumber(p.y) + ")";
}

std::string Degrees(double angle) {
    return ShortNumber(angle * 180.0 / std::numbers::pi) + " deg";
}

struct ShapeText {
    std::string operator()(const LineShape& line) const {
        return "from " + PairText(line.start) + " to " + PairText(line.end);
    }
    std::string operator()(const ArcShape& arc) const {
        return "center " + PairText(arc.center) + ", radius " + ShortNumber(arc.radius) + ", " +
               Degrees(arc.startAngle) + " to " + Degrees(arc.endAngle);
    }
    std::string operator()(const CircleShape& circle) const {
        return "center " + PairText(circle.center) + ", radius " + ShortNumber(circle.radius);
    }
    std::string operator()(const EllipseShape& ellipse) const {
        return "center " + PairText(ellipse.center) + ", radii " + ShortNumber(ellipse.radii[0]) + " and " +
               ShortNumber(ellipse.radii[1]) + ", turned " + Degrees(ellipse.rotation);
    }
    std::string operator()(const EllipticArcShape& arc) const {
        return (*this)(arc.ellipse) + ", " + Degrees(arc.startAngle) + " to " + Degrees(arc.endAngle);
    }
    std::string operator()(const SplineShape& spline) const {
        return (spline.isClosed ? "closed, degree " : "degree ") + std::to_string(spline.degree) + ", " +
               std::to_string(spline.poles.size()) + " poles";
    }
};

} // namespace

std::string ShortNumber(double value) {
    constexpr int kDigits = 5;
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, kDigits).ptr;
    return {text, end};
}

std::string IdText(const nlohmann::json& id) {
    return id.is_string() ? id.get<std::string>() : id.dump();
}

std::string DescribeShape(const CurveShape& shape) {
    return std::visit(ShapeText(), shape);
}

std::string Spaced(std::string name) {
    std::replace(name.begin(), name.end(), '_', ' ');
    return name;
}

void CountKinds(const RecognizedStroke& stroke, KindCounts& counts) {
    for (const RecognizedCurve& curve : stroke.curves) {
        ++counts[curve.shape.index()];
    }
}

std::string DescribeCounts(const KindCounts& counts) {
    std::string text;
    for (int kind = 0; kind < kCurveKinds; ++kind) {
        if (counts[kind] == 0) {
            continue;
        }
        text += (text.empty() ? "" : ", ") + std::to_string(counts[kind]) + " " +
                Spaced(kCurveKindNames[kind]) + (counts[kind] == 1 ? "" : "s");
    }
    return text.empty() ? "nothing" : text;
}

std::string DescribeTotals(std::size_t drawings, std::size_t strokes, const KindCounts& counts) {
    return "all together: " + Plural(drawings, "drawing") + ", " + Plural(strokes, "stroke") + ", " +
           DescribeCounts(counts);
}

std::string DescribeConstraints(const ConstraintCounts& counts) {
    std::string text;
    for (int kind = 0; kind < Geometry::kConstraintKindCount; ++kind) {
        if (counts[kind] > 0) {
            text += (text.empty() ? "" : ", ") + std::to_string(counts[kind]) + " " +
                    Spaced(kConstraintNames[kind]);
        }
    }
    return text.empty() ? "none" : text;
}

std::string Plural(std::size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

} // namespace Tessera::Tool
