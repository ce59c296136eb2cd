// Constraints in pictures: a small glyph for each, as drawing programs show them.
#pragma once

#include <string>

#include "apps/cli/recognize/RecognizedDrawing.h"

namespace Tessera::Tool {

inline constexpr const char* kGlyphColor = "#00606b";

/// A group of all glyphs, in ink units; empty without any.
///
/// @param size  of a glyph, ink units.
std::string DrawGlyphs(const RecognizedDrawing& drawing, double size);

} // namespace Tessera::Tool
