// RegularShapes - a polygon that was meant to be regular, made exactly so.
#pragma once

#include <vector>

#include "tessera/geometry/Point.h"
#include "tessera/recognition/InkInterpretation.h"

namespace Tessera::Geometry {

/// Makes the polygon a square, rectangle, rhombus, parallelogram or regular polygon if it nearly is one.
///
/// Rectangle: corners of 60 to 120 degrees; its direction is the circular mean of four times the sides'
/// angles. Square, rhombus and regular polygon: sides equal within 10 %, corners within 10 degrees.
/// Parallelogram: opposite sides parallel within 10 degrees.
///
/// @param corners  of a closed polygon, in drawing order; written only when the shape that is returned asks
///                 more than the number of corners.
InkShape MakeRegular(std::vector<Point>& corners);

/// Turns a shape about its centre so that its axes lie along the axes of the plane, if no farther than the
/// angle; sides along an axis then have equal coordinates to the last digit.
void AlignToAxes(InkShape shape, double withinRad, std::vector<Point>& corners);

} // namespace Tessera::Geometry
