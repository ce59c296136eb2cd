// The oriented box of a run of planar points, for poly-lines, poles and samples alike.
#pragma once

/// Box of the n >= 1 points (xy[i stride], xy[i stride + 1]): the smaller of the rectangle along the
/// principal axes and the axis-aligned one. A side whose half-size is below the length tolerance is dropped,
/// the longer side comes first: two half-size vectors, one for points on a line, none for coincident points.
///
/// @param stride    doubles from one point to the next: 2 for plain points, 4 for pen samples and poles.
/// @param dimension [out] 0, 1 or 2.
/// @param halfSizes [out] as many vectors as the dimension; the others are zero.
///
/// O(n) in two passes, nothing allocated. z is 0 throughout.
void BoxPoints(int n, const double* xy, int stride, int* dimension, double centre[3], double halfSizes[3][3]);
