#include "apps/cli/ink/InkReader.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace Tessera::Tool {

namespace {

std::string_view SkipBlank(std::string_view text) {
    const auto first = std::find_if(text.begin(), text.end(),
                                    [](char c) { return std::isspace(static_cast<unsigned char>(c)) == 0; });
    return text.substr(static_cast<std::size_t>(first - text.begin()));
}

/// Text without the byte order mark that some programs put in front.
std::string_view SkipMark(std::string_view text) {
    return text.substr(0, 3) == "\xEF\xBB\xBF" ? text.substr(3) : text;
}

/// Several lines, the first of which is a complete object, are lines of drawings.
bool IsJsonLines(std::string_view text, std::string_view fileName) {
    const std::string extension = std::filesystem::path(fileName).extension().string();
    if (extension == ".ndjson" || extension == ".jsonl") {
        return true;
    }
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos || text.front() != '{' || SkipBlank(text.substr(end)).empty()) {
        return false;
    }
    if (nlohmann::json::accept(text.substr(0, end))) {
        return true;
    }
    // Either one object over several lines, or lines of which the first is broken.
    return SkipBlank(text.substr(end)).front() == '{' && !nlohmann::json::accept(text);
}

/// Gives strokes that are too short their problem, and refuses a drawing of which nothing is left.
void CheckDrawing(Drawing& drawing) {
    if (!drawing.problem.empty()) {
        return;
    }
    if (drawing.strokes.empty()) {
        drawing.problem = drawing.place + "no strokes found";
        return;
    }
    bool isUsable = false;
    for (InkStroke& stroke : drawing.strokes) {
        const Sample* first = stroke.samples.data();
        const bool isDot = std::all_of(stroke.samples.begin(), stroke.samples.end(),
                                       [&](const Sample& s) { return s.x == first->x && s.y == first->y; });
        if (stroke.problem.empty() && isDot) {
            stroke.problem = stroke.samples.size() < 2 ? "fewer than two points" : "all points in one place";
        }
        isUsable = isUsable || stroke.problem.empty();
    }
    if (!isUsable) {
        drawing.problem = drawing.place + "no usable stroke; stroke 0: " + drawing.strokes.front().problem;
    }
}

} // namespace

InkFormat SniffInkFormat(std::string_view text, std::string_view fileName) {
    const std::string_view body = SkipBlank(SkipMark(text));
    if (body.empty()) {
        throw InkError("the file is empty");
    }
    if (body.front() == '{' || body.front() == '[') {
        return IsJsonLines(body, fileName) ? InkFormat::JsonLines : InkFormat::Json;
    }
    if (body.front() != '<') {
        return InkFormat::Csv;
    }
    // The root element tells; prologue, comments and document types come before it.
    const std::size_t svg = std::min(body.find("<svg"), body.find(":svg"));
    const std::size_t ink = std::min(body.find("<ink"), body.find(":ink"));
    if (svg == std::string_view::npos && ink == std::string_view::npos) {
        throw InkError("neither an InkML nor an SVG document");
    }
    return ink < svg ? InkFormat::InkML : InkFormat::Svg;
}

InkFile ReadInk(std::string_view text, const std::string& fileName) {
    const std::string name = fileName == "-" ? "stdin" : std::filesystem::path(fileName).stem().string();
    const InkFormat format = SniffInkFormat(text, fileName);
    const std::string_view body = SkipMark(text);
    InkFile file;
    switch (format) {
    case InkFormat::InkML:
        file.drawings.push_back(ReadInkml(body, name));
        break;
    case InkFormat::Json:
        file.drawings.push_back(ReadJson(body, name));
        break;
    case InkFormat::JsonLines:
        file.isLines = true;
        file.drawings = ReadJsonLines(body, name);
        break;
    case InkFormat::Csv:
        file.drawings.push_back(ReadCsv(body, name));
        break;
    case InkFormat::Svg:
        file.drawings.push_back(ReadSvg(body, name));
        break;
    }
    for (Drawing& drawing : file.drawings) {
        CheckDrawing(drawing);
    }
    const auto isBroken = [](const Drawing& drawing) { return !drawing.problem.empty(); };
    if (std::all_of(file.drawings.begin(), file.drawings.end(), isBroken)) {
        throw InkError(file.drawings.front().problem);
    }
    return file;
}

} // namespace Tessera::Tool
