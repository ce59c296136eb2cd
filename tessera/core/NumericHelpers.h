// Small numeric helpers that the model and the recogniser share.
//
// Transforms  3 x 3, row by row, on column vectors (x, y, w); consumers divide by w.
// Lists       are read only; a null result pointer is skipped.
#pragma once

#include <vector>

#include "tessera/core/Export.h"

namespace Tessera::Geometry {
class Point;
}

namespace Tessera::Core {

TESSERA_API void ComposeIdentityTransform(double M[3][3]);
/// Scaling by s about (centre[0], centre[1]); the scale is carried by the bottom-right element 1/s,
/// infinite for s = 0.
TESSERA_API void ComposeScaleTransform(double* centre, double s, double M[3][3]);
/// Reflection across the straight line through a and b; the identity when a and b coincide.
TESSERA_API void ComposeMirrorTransform(Geometry::Point a, Geometry::Point b, double M[3][3]);

/// Mean and population standard deviation; false and nothing written for an empty list.
TESSERA_API bool FindMeanAndStdDev(std::vector<double>& v, double* mean, double* stdDev);
/// The same after one pass that drops values more than two standard deviations from the mean (a value on the
/// bound stays); false also when NaN leaves nothing to keep.
TESSERA_API bool FindMeanAndStdDevWithOutlierRejection(std::vector<double>& v, double* mean, double* stdDev);
/// Smallest and largest value; false for an empty list.
TESSERA_API bool FindRange(std::vector<double>& v, double range[2]);

/// Even-odd test against the implicitly closed polygon of n vertices; false for n < 3. Left and lower edges
/// of a rectangle lie inside, right and upper ones outside.
TESSERA_API bool PointInPolygon(double x, double y, int n, double* xs, double* ys);

} // namespace Tessera::Core
