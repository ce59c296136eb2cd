// SingleShapes - one curve for all points of a piece: the tests that a recogniser makes on each piece.
//
// Points     in drawing order, in any frame; the fits work on copies.
// Limit      null also when the largest deviation exceeds `limit`; equality passes.
// Deviation  *maxDev receives the largest deviation of a point from the fitted shape, in the points' units;
//            it is written as soon as the shape could be fitted at all. An ellipse that covers the turn
//            beyond doubt is not fitted.
#pragma once

#include <memory>
#include <span>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/kernel/VexMath.h"

namespace Tessera::Geometry {

/// Segment of the least-squares line between the outermost projections, running the way the pen did.
std::unique_ptr<Line> RecognizeLine(std::span<Vex::Math::Point2> pts, double limit, double* maxDev);

/// Arc of the least-squares circle over the points, counter-clockwise; the full circle when `full`. Null
/// when more than 95 % of the turn are covered or the rest is shorter than closeTol.
std::unique_ptr<Arc> RecognizeArc(std::span<Vex::Math::Point2> pts, bool full, double closeTol, double limit,
                                  double* maxDev);

/// Elliptical arc of the least-squares ellipse over the points, parameters ascending; the full ellipse when
/// `full`. Null when more than 95 % of the turn are covered.
std::unique_ptr<Ellipse> RecognizeEllipse(std::span<Vex::Math::Point2> pts, bool full, double limit,
                                          double* maxDev);

/// Whether every sample of the ellipse lies within tol of the poly-line through the points: false for an
/// ellipse that fits the points but bulges away between them.
bool CheckEllipse(std::span<const Vex::Math::Point2> pts, double tol, const Ellipse& ellipse);

} // namespace Tessera::Geometry
