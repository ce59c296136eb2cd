// SVG drawings: every polyline, polygon, line and sub-path of a path is a stroke, transforms applied. What is
// only defined and never drawn in its place (defs, symbols, clip paths ...) is passed over.

#include "apps/cli/ink/InkReader.h"

#include <cmath>

#include <pugixml.hpp>

#include "apps/cli/ink/NumberText.h"
#include "apps/cli/ink/SvgPath.h"
#include "apps/cli/ink/SvgTransform.h"
#include "apps/cli/ink/XmlName.h"

namespace Tessera::Tool {

namespace {

bool IsUndrawn(std::string_view name) {
    for (const std::string_view other :
         {"defs", "symbol", "clipPath", "mask", "marker", "pattern", "metadata"}) {
        if (name == other) {
            return true;
        }
    }
    return false;
}

std::vector<Position> ParsePoints(std::string_view text, std::string& problem) {
    std::vector<double> values;
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n,"), text.size()));
        if (text.empty()) {
            break;
        }
        const std::optional<double> value = TakeNumber(text);
        if (!value) {
            problem = "points: \"" + std::string(text.substr(0, 20)) + "\" is not a number";
            break;
        }
        values.push_back(*value);
    }
    if (values.size() % 2 != 0 && problem.empty()) {
        problem = "points: an odd number of coordinates";
    }
    std::vector<Position> points;
    for (std::size_t i = 0; i + 1 < values.size(); i += 2) {
        points.push_back({values[i], values[i + 1]});
    }
    return points;
}

class SvgBuilder {
public:
    SvgBuilder(std::string_view text, Drawing& drawing) : text_(text), drawing_(drawing) {}

    void ReadChildren(const pugi::xml_node& parent, const SvgTransform& outer) {
        for (const pugi::xml_node& node : parent.children()) {
            if (node.type() != pugi::node_element || IsUndrawn(LocalName(node))) {
                continue;
            }
            try {
                const SvgTransform transform = outer * ParseSvgTransform(node.attribute("transform").value());
                ReadShape(node, transform);
                ReadChildren(node, transform);
            } catch (const InkError& error) {
                const std::string message = error.what();
                if (message.starts_with("line ")) {
                    throw;
                }
                throw InkError("line " +
                               std::to_string(LineAt(text_, static_cast<std::size_t>(node.offset_debug()))) +
                               ": " + std::string(LocalName(node)) + ", " + message);
            }
        }
    }

private:
    void ReadShape(const pugi::xml_node& node, const SvgTransform& transform) {
        const std::string_view name = LocalName(node);
        std::string problem;
        std::vector<std::vector<Position>> lines;
        if (name == "path") {
            lines = FlattenSvgPath(node.attribute("d").value(), problem);
        } else if (name == "polyline" || name == "polygon") {
            lines.push_back(ParsePoints(node.attribute("points").value(), problem));
            if (name == "polygon" && !lines[0].empty()) {
                lines[0].push_back(lines[0].front());
            }
        } else if (name == "line") {
            lines.push_back({{node.attribute("x1").as_double(), node.attribute("y1").as_double()},
                             {node.attribute("x2").as_double(), node.attribute("y2").as_double()}});
        }
        if (!problem.empty() && lines.empty()) {
            lines.emplace_back();
        }
        for (const std::vector<Position>& line : lines) {
            AddStroke(line, transform, problem);
        }
    }

    void AddStroke(const std::vector<Position>& line, const SvgTransform& transform,
                   const std::string& problem) {
        InkStroke& stroke = drawing_.strokes.emplace_back();
        stroke.problem = problem;
        stroke.samples.reserve(line.size());
        for (const Position& point : line) {
            const Position p = transform.Apply(point);
            if (!std::isfinite(p.x) || !std::isfinite(p.y)) {
                throw InkError("a coordinate is not a finite number");
            }
            stroke.samples.push_back({p.x, p.y, 0.0});
        }
    }

    std::string_view text_;
    Drawing& drawing_;
};

} // namespace

Drawing ReadSvg(std::string_view text, const std::string& name) {
    pugi::xml_document document;
    const pugi::xml_parse_result result = document.load_buffer(text.data(), text.size());
    if (!result) {
        throw InkError("line " + std::to_string(LineAt(text, static_cast<std::size_t>(result.offset))) +
                       ": " + result.description());
    }
    Drawing drawing;
    drawing.id = name;
    SvgBuilder(text, drawing).ReadChildren(document, SvgTransform());
    return drawing;
}

} // namespace Tessera::Tool
