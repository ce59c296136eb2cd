// ClosedShape - the full circle or ellipse that a closed round stroke was meant to be.
#pragma once

#include "tessera/core/Export.h"

namespace Tessera::Geometry {

class SketchRecognizer;

/// Gives a closed round stroke its full circle or ellipse.
///
/// Recognition itself makes no full circles or ellipses: a closed round stroke comes back as one spline, as
/// arcs between the places where it bends most, or as nothing. Call this after SketchRecognizer::Recognize
/// and before anybody takes the results: those that are replaced are deleted with their curves, the new one
/// belongs to the caller of GetResults as all others do.
///
/// A stroke qualifies when the results would give way to a whole-stroke curve (there are none, or fewer lines
/// than other curves, or a line and an arc of more than three quarters of a turn) and
/// SketchRecognizer::RecognizePeriodic finds a round. Ends that lie within AskClosedStrokeTolerance close it
/// whatever angle is left between them; ends farther apart do where the pen ran on past its start.
///
/// @return whether the results now hold just such a shape; they are unchanged if not. Never throws: what
///         goes wrong is written to standard error as in Recognize.
TESSERA_API bool CloseRoundStroke(SketchRecognizer& recognizer);

} // namespace Tessera::Geometry
