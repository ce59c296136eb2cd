// Path data of SVG (SVG 2, chapter 9), flattened into poly-lines.
#pragma once

#include <string_view>
#include <vector>

#include "apps/cli/ink/Ink.h"

namespace Tessera::Tool {

/// One poly-line for each sub-path that draws something; a closed one ends in its first point. Curves are
/// flattened into chords that turn by a few degrees. As renderers do, a path broken off by an error still
/// draws what comes before it, so `problem` (untouched without an error) comes beside the poly-lines.
std::vector<std::vector<Position>> FlattenSvgPath(std::string_view data, std::string& problem);

} // namespace Tessera::Tool
