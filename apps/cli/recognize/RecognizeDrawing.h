// A drawing through preparation, recogniser, closing step and scribbles, and back into ink units.
#pragma once

#include <optional>

#include "apps/cli/ink/Ink.h"
#include "apps/cli/recognize/Dimensions.h"
#include "apps/cli/recognize/RecognizedDrawing.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"

namespace Tessera::Tool {

struct RecognizeOptions {
    Geometry::SketchRecognizerPreferences preferences;
    std::optional<double> inkScale; ///< nothing: the drawing is brought to the working size
    bool useRulesOnly = false;      ///< samples as they are, at scale 1 unless inkScale says otherwise
    bool useScribbles = true;       ///< scribbles erase instead of becoming curves
    DimensionKinds dimensions;      ///< to annotate with; none without any
};

/// At the working size, which is made for telling shapes apart, splines are fitted a second time at a size at
/// which they follow the ink closely. Strokes with a problem are passed through without curves. Never throws
/// for what a drawing can hold.
RecognizedDrawing RecognizeDrawing(Drawing drawing, const RecognizeOptions& options);

} // namespace Tessera::Tool
