// Dimensions for a recognised drawing: which ones, and where they stand.
//
// Pairs      length, horizontal and vertical measure each line; angular the corner of two lines that follow
//            each other in a stroke; radial each arc and circle; linear each line and the nearest parallel
//            one of its stroke beside it, unless a length between them tells the same.
// Placement  outside of the stroke, and where text covers neither geometry nor what stands already.
#pragma once

#include <string>
#include <vector>

#include "apps/cli/recognize/RecognizedDrawing.h"
#include "tessera/dimension/DimensionType.h"

namespace Tessera::Tool {

using DimensionKinds = std::vector<Dimension::DimensionType_e>;

/// "length,angular", or "all" for every kind.
///
/// @throw std::invalid_argument with a message for a name that is none.
DimensionKinds ParseDimensionKinds(const std::string& names);

/// "length", "horizontal" ...
const char* NameOf(Dimension::DimensionType_e kind);

/// Fills drawing.dimensions. Ink is read as pictures show it, y down: text stands upright there.
void AddDimensions(RecognizedDrawing& drawing, const DimensionKinds& kinds);

} // namespace Tessera::Tool
