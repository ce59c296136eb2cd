// SplineRecognition - a free-form B-spline for the points of a piece that is no line, arc or ellipse.
#pragma once

#include <span>

#include "tessera/geometry/Spline.h"
#include "tessera/kernel/VexMath.h"

namespace Tessera::Geometry {

/// Clamped quadratic B-spline with uniform knots through the first and the last point, every point within
/// splineTol. Closed, with a smooth seam, when the ends lie within splineTol, or within closeTol and the pen
/// was heading across the gap.
///
/// @param pts        in drawing order.
/// @param interval   points that a tangent is taken over, >= 1; thinning looks at twice as many at a time.
/// @param splineTol, closeTol  in the points' units.
/// @param maxDev     [out] largest distance of a point from the spline; untouched when there is none.
/// @return caller deletes; null for fewer than 4 points or when no fit keeps the tolerance. O(n).
Spline* RecognizeSpline(std::span<const Vex::Math::Point2> pts, int interval, double splineTol,
                        double closeTol, double* maxDev);

} // namespace Tessera::Geometry
