// ClosedShape - the full circle or ellipse that a closed round stroke was meant to be.
#pragma once

#include "tessera/core/Export.h"

namespace Tessera::Geometry {

class SketchRecognizer;

/// Replaces the spline of a closed round stroke by a full circle or ellipse.
///
/// Recognition itself makes no full circles or ellipses: a closed round stroke comes back as one spline, or
/// as nothing. Call this after SketchRecognizer::Recognize and before anybody takes the results: the spline
/// and its result are deleted, the new ones belong to the caller of GetResults as all others do.
///
/// A stroke qualifies when its only result is a spline over all its samples, or it has none, and its ends
/// lie within SketchRecognizer::AskClosedStrokeTolerance. The shape must keep the arc or ellipse tolerance of
/// the whole stroke. A circle is preferred, unless the ellipse halves its deviation and is clearly oblong.
///
/// @return whether the results now hold such a shape; they are unchanged if not. Never throws: what goes
///         wrong is written to standard error as in Recognize.
TESSERA_API bool CloseRoundStroke(SketchRecognizer& recognizer);

} // namespace Tessera::Geometry
