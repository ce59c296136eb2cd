// A stroke read by the recogniser's rules alone.
#pragma once

#include "apps/cli/recognize/RecognizeDrawing.h"
#include "apps/cli/recognize/Sketch.h"

namespace Tessera::Tool {

/// The rules' curves, for the sketch; closed round strokes are closed with curveTidy. With an ink scale in
/// the options the samples go to the rules as they are, times that number; without one prepared, at the
/// working size of the rules.
std::vector<SketchCurve> ReadByRules(const Drawing& drawing, const InkStroke& ink,
                                     const RecognizeOptions& options, const WorkingFrame& page);

} // namespace Tessera::Tool
