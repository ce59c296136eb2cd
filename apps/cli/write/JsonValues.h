// What the writers of JSON share: objects that keep the order of their keys, one on a line.
#pragma once

#include <iosfwd>

#include <nlohmann/json.hpp>

#include "apps/cli/recognize/RecognizedDrawing.h"

namespace Tessera::Tool {

using Json = nlohmann::ordered_json;

/// [x, y]
Json Pair(const Position& p);

/// Adds the fields of the shape, after "kind" and whatever else the object has.
void AddShape(const CurveShape& shape, Json& json);

void WriteJsonLine(const Json& json, std::ostream& out);

} // namespace Tessera::Tool
