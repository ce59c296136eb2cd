// A drawing as a host takes it: a document, and the library's ink entry called once for each stroke.
#pragma once

#include <cstdint>
#include <optional>

#include "apps/cli/convert/ConvertedDrawing.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"

namespace Tessera::Tool {

struct ConvertOptions {
    Geometry::SketchRecognizerPreferences preferences;                   ///< its zoom factor zooms the view
    std::optional<double> inkScale;                                      ///< as in RecognizeOptions
    std::uint32_t constraintKinds = Geometry::ConstraintOptions().kinds; ///< to create; 0 for none
    std::optional<double> toleranceZone; ///< device units; nothing: what the host prefers
};

/// Passes the strokes, in drawing order, to ConvertInkingStrokeToGeometry with one document of the reference
/// host, which is in force from then on. The document has the size of a page, at which the preferences'
/// distances are right; what it holds is told in ink units. A stroke that the entry refuses has a problem and
/// changes nothing.
ConvertedDrawing ConvertDrawing(const Drawing& ink, const ConvertOptions& options);

} // namespace Tessera::Tool
