// BCRVFIT - least-squares fits of B-curves to points.
//
// Result    a clamped polynomial B-curve through the first and the last point, of as few poles as a search
//           over pole counts finds within the tolerance: at most twice the points, and 512.
// Deviation distances of points from the curve: err[0] the largest, exactly; err[1] root mean square and
//           err[2] mean, each point taken from its own stretch of the curve where that crosses itself.
// Failure   status 1 and null: bad arguments, points that are not finite, a tolerance out of reach,
//           no memory.
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
/// @param pts       the points to fit, in drawing order: ends and parameters (chord length) are theirs.
/// @param nCheck    number of points of check; 0 or 1 stands for pts.
/// @param check     points on which squares are summed and the deviation is measured (say, the samples before
///                  thinning, pts among them), in drawing order; may be null.
/// @param order     degree + 1, 2 to 16.
/// @param closed    non-zero: the last point is taken to be the first; the seam is smooth (last pole = first
///                  pole, the poles beside it mirror images about it; not for order 2), periodic flag 0.
/// @param knots     where the knots go.
/// @param tol       largest distance allowed between a point and the curve, > 0.
/// @param status    [out] 0 success, 1 failure.
/// @param err       [out] largest, root mean square and mean distance; untouched on failure.
/// @return a form-9 record (caller frees with evcrvf) whose deviation is at most tol; null on failure.
///
/// O(n) time for a given curve: solutions use at most some 4,000 samples, all points are measured at the end.
/// One scratch block. Sources: J. Hoschek, CAGD 5 (1988) 27-40; C. de Boor, A Practical Guide to Splines.
TESSERA_API KC_CURVE_struct_s* BCRVFIT_least_squares_fit(int n, const Vex::Math::Point3* pts, int nCheck,
                                                         const Vex::Math::Point3* check, int order,
                                                         int closed, BCRVFIT_knots_t knots, double tol,
                                                         int* status, double err[3]);
