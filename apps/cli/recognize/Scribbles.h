// Scribbles in a drawing: which strokes are, and what they erase of the strokes before them.
#pragma once

#include "apps/cli/recognize/RecognizeDrawing.h"
#include "apps/cli/recognize/Sketch.h"

namespace Tessera::Tool {

/// Puts the scribble question to a stroke and notes its cusps; false when options ask for no scribbles. The
/// bare test decides under the rules alone, else the question that is asked of real ink.
bool AskScribble(const InkStroke& ink, const RecognizeOptions& options, const WorkingFrame& page,
                 RecognizedStroke& stroke);

/// Lets the scribble, the sketch's last stroke, erase or trim the curves of the strokes before it.
void EraseScribbled(const RecognizeOptions& options, Sketch& sketch, RecognizedDrawing& drawing,
                    RecognizedStroke& scribble);

} // namespace Tessera::Tool
