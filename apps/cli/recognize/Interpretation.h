// A stroke read as what its drawer meant, among the curves of the strokes before it.
#pragma once

#include "apps/cli/recognize/RecognizeDrawing.h"
#include "apps/cli/recognize/Sketch.h"

namespace Tessera::Tool {

/// Reads the ink of the sketch's last stroke. A stroke drawn over an earlier curve gives that a new form and
/// has no curve of its own.
///
/// Throws the library's text (char*) when coordinates leave the range of numbers; the sketch stays as it was.
void InterpretStroke(const InkStroke& ink, const RecognizeOptions& options, Sketch& sketch,
                     RecognizedStroke& stroke);

} // namespace Tessera::Tool
