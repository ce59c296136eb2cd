// Reading of ink: InkML, JSON, NDJSON, CSV and SVG, told apart by their content.
//
// Failure  InkError for a file that is empty, broken, or holds a number that is not finite. A stroke that
//          cannot be used carries its problem; a drawing without a usable stroke likewise, and is an
//          InkError unless the file holds one drawing a line.
#pragma once

#include <string>
#include <string_view>

#include "apps/cli/ink/Ink.h"

namespace Tessera::Tool {

enum class InkFormat { InkML, Json, JsonLines, Csv, Svg };

/// Judged by the first characters; the name decides only between one JSON object and lines of them.
InkFormat SniffInkFormat(std::string_view text, std::string_view fileName);

/// @param text      the whole file.
/// @param fileName  for identifiers of drawings that have none.
InkFile ReadInk(std::string_view text, const std::string& fileName);

// --- One reader for each format; `name` is given to drawings without an identifier.
Drawing ReadInkml(std::string_view text, const std::string& name);
Drawing ReadJson(std::string_view text, const std::string& name);
/// Broken lines become drawings with a problem, so that every line keeps its place.
std::vector<Drawing> ReadJsonLines(std::string_view text, const std::string& name);
Drawing ReadCsv(std::string_view text, const std::string& name);
Drawing ReadSvg(std::string_view text, const std::string& name);

} // namespace Tessera::Tool
