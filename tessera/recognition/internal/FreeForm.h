// FreeForm - a B-spline through ink that is no line, arc or ellipse.
#pragma once

#include <memory>
#include <span>

#include "tessera/geometry/Curve.h"
#include "tessera/geometry/Point.h"

namespace Tessera::Geometry {

/// Cubic B-spline of few poles within the tolerance of the points, from the first to the last; closed, it
/// ends in its start with a smooth seam, whether or not the last point repeats the first.
///
/// @param tol  model units; doubled as often as a fit needs it. Null only for fewer than four points and when
///             memory runs out.
/// @param rms  [out] root mean square distance of the points; may be null.
std::unique_ptr<Curve> FitFreeForm(std::span<const Point> pts, bool isClosed, double tol,
                                   double* rms = nullptr);

/// Diagonal of the points' box.
double DiagonalOf(std::span<const Point> pts);

} // namespace Tessera::Geometry
