// A drawing stroke by stroke through the scribble question and the reading of ink, then through the inference
// of constraints, and back into ink units.
#pragma once

#include <cstdint>
#include <optional>

#include "apps/cli/ink/Ink.h"
#include "apps/cli/recognize/Dimensions.h"
#include "apps/cli/recognize/RecognizedDrawing.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"

namespace Tessera::Tool {

struct RecognizeOptions {
    Geometry::SketchRecognizerPreferences preferences;
    /// The preferences' lengths are in ink units times this number. Nothing: the drawing is brought to the
    /// size of a page, and for the rules to their working size.
    std::optional<double> inkScale;
    bool useRulesOnly = false; ///< the rules' reading of each stroke by itself, without constraints
    bool useScribbles = true;  ///< scribbles erase instead of becoming curves
    std::uint32_t constraintKinds = Geometry::ConstraintOptions().kinds; ///< to infer; 0 for none
    DimensionKinds dimensions; ///< to annotate with; none without any
};

/// Strokes with a problem are passed through without curves. Never throws for what a drawing can hold.
RecognizedDrawing RecognizeDrawing(Drawing drawing, const RecognizeOptions& options);

} // namespace Tessera::Tool
