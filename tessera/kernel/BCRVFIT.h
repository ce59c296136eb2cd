// BCRVFIT - least-squares fits of B-curves to points.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/CurveRecord.h"
#include "tessera/kernel/VexMath.h"

enum BCRVFIT_knots_t {
    BCRVFIT_KNOTS_UNIFORM = 0, ///< clamped uniform: the poles alone reproduce the curve
    BCRVFIT_KNOTS_ADAPTIVE = 1 ///< placed where the error is
};

/// Fits a clamped polynomial B-curve of few poles to points in drawing order.
///
/// @param n         number of points, n >= order.
/// @param pts       n points the fit runs through; first and last are interpolated.
/// @param nCheck    number of points on which the deviation is measured; 0 measures on pts.
/// @param check     those points (say, the samples before thinning), in drawing order; may be null.
/// @param order     degree + 1, >= 2.
/// @param closed    non-zero: last point = first point; the seam is smooth (last pole = first pole,
///                  seam poles collinear), periodic flag 0.
/// @param knots     where the knots go.
/// @param tol       largest distance allowed between a point and the curve, > 0.
/// @param status    [out] 0 success, 1 failure.
/// @param err       [out] largest, root mean square and mean distance; untouched on failure.
/// @return a form-9 record (caller frees with evcrvf) whose deviation is at most tol; null on failure.
TESSERA_API KC_CURVE_struct_s* BCRVFIT_least_squares_fit(int n, const Vex::Math::Point3* pts, int nCheck,
                                                         const Vex::Math::Point3* check, int order,
                                                         int closed, BCRVFIT_knots_t knots, double tol,
                                                         int* status, double err[3]);
