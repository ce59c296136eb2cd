// Which glyphs show a drawing's constraints, and where they stand: beside what they speak of, clear of each
// other, of dimension texts and, where there is room, of the geometry.
//
// A glyph stands on both sides of a curve's middle, or of a point, in rows along the curve, at the first
// place that is free. Cost is linear in the length of what is drawn and in the number of constraints.
#pragma once

#include <string>
#include <vector>

#include "apps/cli/recognize/RecognizedDrawing.h"

namespace Tessera::Tool {

struct PlacedGlyph {
    Geometry::ConstraintKind_e kind = Geometry::ConstraintKind_Coincident;
    Position center;     ///< ink units
    std::string meaning; ///< "parallel: 0.1 and 0.3", one line for each constraint that it stands for
};

/// @param size  of a glyph, ink units, > 0.
std::vector<PlacedGlyph> PlaceGlyphs(const RecognizedDrawing& drawing, double size);

} // namespace Tessera::Tool
