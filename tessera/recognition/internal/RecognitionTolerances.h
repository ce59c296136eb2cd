// RecognitionTolerances - lengths that the preferences give for a stroke or a piece of it, by their tolerance
// scheme and adjusted to the drawing's context.
#pragma once

#include "tessera/recognition/SketchRecognizerPreferences.h"

namespace Tessera::Geometry {

/// Line, arc, ellipse and spline tolerance of a piece of the given length.
void RecognitionTolerances(const SketchRecognizerPreferences& preferences, double length, double tol[4]);

/// A curve that is shorter is small beside the longest piece of its stroke.
double SmallCurveLength(double longest);

/// Largest gap between the ends of a closed stroke of the given length.
double ClosedStrokeTolerance(const SketchRecognizerPreferences& preferences, double length);

} // namespace Tessera::Geometry
