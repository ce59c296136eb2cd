// JSON strokes: {"points": [[x, y], ...]} or [[x, y, t_ms], ...], several of them under "strokes", with an
// optional "id"; points may be objects with x, y and t as well.

#include "apps/cli/ink/InkReader.h"

#include <cmath>

namespace Tessera::Tool {

namespace {

using Json = nlohmann::json;

/// The parser's message without its own prefix "[json.exception...] ".
std::string ParserMessage(const Json::exception& error) {
    const std::string text = error.what();
    const std::size_t end = text.find("] ");
    return end == std::string::npos ? text : text.substr(end + 2);
}

double AskNumber(const Json& value, const char* what) {
    if (!value.is_number()) {
        throw InkError(std::string(what) + " is not a number");
    }
    return value.get<double>();
}

Sample ReadPoint(const Json& point, bool& isTimed) {
    const bool isArray = point.is_array() && point.size() >= 2;
    const bool isObject = point.is_object() && point.contains("x") && point.contains("y");
    if (!isArray && !isObject) {
        throw InkError("expected [x, y] or [x, y, t]");
    }
    Sample sample{AskNumber(isArray ? point[0] : point["x"], "x"),
                  AskNumber(isArray ? point[1] : point["y"], "y"), 0.0};
    isTimed = isArray ? point.size() >= 3 : point.contains("t");
    if (isTimed) {
        sample.timeMs = AskNumber(isArray ? point[2] : point["t"], "t");
    }
    return sample;
}

InkStroke ReadStroke(const Json& value) {
    InkStroke stroke;
    const Json* points = &value;
    if (value.is_object() && value.contains("points")) {
        points = &value["points"];
    }
    if (!points->is_array()) {
        stroke.problem = "no array of points";
        return stroke;
    }
    stroke.samples.reserve(points->size());
    stroke.isTimed = !points->empty();
    for (const Json& point : *points) {
        bool isTimed = false;
        try {
            stroke.samples.push_back(ReadPoint(point, isTimed));
        } catch (const InkError& error) {
            stroke.problem = "point " + std::to_string(stroke.samples.size()) + ": " + error.what();
            return stroke;
        }
        stroke.isTimed = stroke.isTimed && isTimed; // times of only a part of the points are of no use
    }
    return stroke;
}

/// A list whose first entry is a pair of numbers is one stroke, else a list of strokes.
bool IsPointList(const Json& value) {
    return value.is_array() && !value.empty() && value[0].is_array() && !value[0].empty() &&
           !value[0][0].is_array();
}

Drawing DrawingFrom(const Json& value, const std::string& name) {
    Drawing drawing;
    drawing.id = name;
    if (value.is_object() && value.contains("id") && (value["id"].is_string() || value["id"].is_number())) {
        drawing.id = value["id"];
    }
    const bool hasStrokes = value.is_object() && value.contains("strokes") && value["strokes"].is_array();
    if (hasStrokes || (value.is_array() && !IsPointList(value))) {
        for (const Json& stroke : hasStrokes ? value["strokes"] : value) {
            drawing.strokes.push_back(ReadStroke(stroke));
        }
    } else if (IsPointList(value) || (value.is_object() && value.contains("points"))) {
        drawing.strokes.push_back(ReadStroke(value));
    } else {
        drawing.problem = "neither \"points\" nor \"strokes\" found";
    }
    return drawing;
}

} // namespace

Drawing ReadJson(std::string_view text, const std::string& name) {
    try {
        return DrawingFrom(Json::parse(text), name);
    } catch (const Json::exception& error) {
        throw InkError(ParserMessage(error));
    }
}

std::vector<Drawing> ReadJsonLines(std::string_view text, const std::string& name) {
    std::vector<Drawing> drawings;
    for (std::size_t start = 0, line = 1; start < text.size(); ++line) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::string_view content = text.substr(start, end - start);
        start = end + 1;
        if (content.find_first_not_of(" \t\r") == std::string_view::npos) {
            continue;
        }
        const std::string place = "line " + std::to_string(line) + ": ";
        Drawing drawing;
        try {
            drawing = DrawingFrom(Json::parse(content), name + ":" + std::to_string(line));
        } catch (const Json::exception& error) {
            drawing.id = name + ":" + std::to_string(line);
            drawing.problem = ParserMessage(error);
        }
        if (!drawing.problem.empty()) {
            drawing.problem.insert(0, place);
        }
        drawing.place = place;
        drawings.push_back(std::move(drawing));
    }
    return drawings;
}

} // namespace Tessera::Tool
