// PNTLST - lists of spatial points, as curve fits take them.
//
// Lists are arrays of n points; lengths are in model units. Every function is O(n) and allocates nothing.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/VexMath.h"

/// Corners of the axis-parallel box. Returns 1; 0 with the outputs untouched for n < 1.
TESSERA_API int PNTLST_ask_extent(int n, const Vex::Math::Point3* pts, Vex::Math::Point3* min,
                                  Vex::Math::Point3* max);
/// Mean of the points. Returns 1; 0 with the output untouched for n < 1.
TESSERA_API int PNTLST_ask_centroid(int n, const Vex::Math::Point3* pts, Vex::Math::Point3* centroid);
/// Length of the poly-line through the points; 0 for fewer than two.
TESSERA_API double PNTLST_ask_length(int n, const Vex::Math::Point3* pts);
/// Transforms the points in place by an affine or projective 4 x 4 matrix.
TESSERA_API void PNTLST_transform(int n, Vex::Math::Point3* pts, const Vex::Math::TransformMatrix* matrix);

/// Thins a planar poly-line: drops points that lie within tol of the chord of the points kept around them.
///
/// @param pts    n points; distances are measured in x and y, z is carried along.
/// @param window largest number of points from one kept point to the next, both included, >= 2.
/// @param tol    >= 0.
/// @param out    [out] the points kept, in order; room for n. May be pts itself.
/// @return       their number.
///
/// Never drops the first or the last point, the first one of smallest or largest x or y, or a point where the
/// pen turned back by more than tol. Source: C. M. Williams, An efficient algorithm for the piecewise linear
/// approximation of planar curves, Computer Graphics and Image Processing 8 (1978) 286-293.
TESSERA_API int PNTLST_thin(int n, const Vex::Math::Point3* pts, int window, double tol,
                            Vex::Math::Point3* out);
