// LSFIT - least-squares fits of analytic shapes to planar points.
//
// Points    n records in model units, read only, in any order; moments are taken about their centroid, so
//           that a drawing far from the origin keeps its digits.
// Status    0 success, 1 failure; no function here throws or prints. A NaN among the points fails.
// Deviation err[0] largest, err[1] root mean square (as each fit defines it), err[2] mean; model units.
// Memory    none from the heap; every fit is O(n), a few passes over the points.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/VexMath.h"

/// Mean of n points, n >= 1; NaN for none.
TESSERA_API void LSFIT_ask_pts_centroid_2d(int n, Vex::Math::Point2* pts, Vex::Math::Point2* centroid);

/// Total-least-squares line: minimises the sum of squared perpendicular distances.
///
/// @param pts         n points, n >= 1.
/// @param pointOnLine [out] the centroid.
/// @param dir         [out] unit NORMAL of the line, not its direction; zero on failure.
/// @param status      [out] 1 when all points lie within 1e-6 of the centroid.
/// @param err         [out] three deviations, err[1] = sqrt(lambda / n) with lambda the smaller eigenvalue
///                    of the scatter matrix (up to 1e-9 it counts as 0); untouched on failure.
///
/// Source: K. Pearson, Phil. Mag. 2 (1901) 559-572.
TESSERA_API void LSFIT_line_to_points_2d(Vex::Math::Point2* pts, int n, Vex::Math::Point2* pointOnLine,
                                         Vex::Math::Vector2* dir, int* status, double* err);

/// Circle by Pratt's algebraic fit: nearly unbiased, also on short arcs.
///
/// @param pts     n points, n >= 3 for an answer.
/// @param centre  [out] (0, 0) on failure.
/// @param radius  [out] 1e19 on failure.
/// @param status  [out] 1 when the points coincide or lie on a line (largest deviation from the fitted line
///                at most 1e-12 of their rms distance from the centroid, or the rounding of their
///                coordinates).
/// @param err     [out] three deviations; err[1] = sqrt(n / lambda), lambda the eigenvalue of the fit, which
///                is n times the root mean square of the algebraic distances. 1e19 each on failure.
///
/// Should the eigenvalue be unusable although the points do not lie on a line, the answer is the circle
/// through the first, the middle (index n / 2) and the last point, with err[1] = 0. Source: V. Pratt, Direct
/// least-squares fitting of algebraic surfaces, Computer Graphics 21 (1987) 145-152.
TESSERA_API void LSFIT_circle_to_points_2d(Vex::Math::Point2* pts, int n, Vex::Math::Point2* centre,
                                           double* radius, int* status, double* err);

/// Ellipse of least orthogonal distances.
///
/// @param pts     n points, n >= 5 for an answer.
/// @param centre  [out] (0, 0) on failure.
/// @param a, b    [out] semi-axes, a >= b; 1e19 on failure.
/// @param angle   [out] direction of the axis a, radians in [0, pi); 0 on failure.
/// @param status  [out] 1 for fewer than 5 points, points on a line, points that follow a hyperbola, an axis
///                ratio b / a below 1e-4, or a above 1000 times the longer side of the points' box.
/// @param err     [out] three deviations; 1e19 each on failure. err[0] is exact to 1e-15 of a. err[1] and
///                err[2] are exact up to 512 points; beyond, to first order: taken, for points within some 5
///                % of the ellipse |F| / |grad F| of its implicit equation, farther out the distance to a
///                foot found by one step along the gradient, never below the true distance.
///
/// The start is the direct algebraic fit; damped Newton steps on orthogonal distances follow. Beyond
/// 512 points the iteration sees 512 samples, evenly spaced by index with both ends; the deviations are
/// always those of all points. 64 points or more that no ellipse describes, rms distance above 3 % of their
/// box after a few steps that did not settle, keep the ellipse reached by then. Source: R. Halir, J. Flusser,
/// Proc. WSCG (1998) 125-132; S. J. Ahn, W. Rauh, H.-J. Warnecke, Pattern Recognition 34 (2001) 2283-2303.
TESSERA_API void LSFIT_ellipse_to_points_2d(Vex::Math::Point2* pts, int n, Vex::Math::Point2* centre,
                                            double* a, double* b, double* angle, int* status, double* err);

/// Most parameters LSFIT_nonlinear_function takes.
constexpr int LSFIT_MAX_PARAMETERS = 8;

/// A sum of squared residuals, as LSFIT_nonlinear_function asks for it.
///
/// @param context  what the caller handed in.
/// @param params   the parameters to evaluate at.
/// @param jtj      [out] J^T J, m x m row by row, J the Jacobian of the residuals; or half the Hessian of the
///                 sum where that is positive definite. The lower triangle suffices.
/// @param jtr      [out] J^T r, m values.
/// @param sumSq    [out] sum of squared residuals.
/// @return 1; 2 when jtj is half the Hessian; 0 when the parameters are inadmissible (the step is then
///         shortened).
using LSFIT_model_t = int (*)(void* context, const double* params, double* jtj, double* jtr, double* sumSq);

/// Minimises a sum of squares by Levenberg-Marquardt steps with Marquardt's scaling.
///
/// @param m             number of parameters, 1 ... LSFIT_MAX_PARAMETERS.
/// @param params        m parameters: in the start, out the best found; unchanged when the start fails.
/// @param maxIterations limit on evaluations of the model after the first, inadmissible ones not counted.
/// @param relativeTol, absoluteTol  converged when an undamped step promises to lower the sum by at most
///                      relativeTol times the sum plus absoluteTol; or when it follows from the fall of the
///                      promises that the next step will, and then this one is taken unseen.
/// @param sumSq         [out] sum of squares at params, to the tolerance.
/// @param status        [out] 0 converged; 1 when m is out of range, the start inadmissible or the limit met.
///
/// Source: K. Levenberg, Quart. Appl. Math. 2 (1944) 164-168; D. W. Marquardt, SIAM J. 11 (1963) 431-441.
TESSERA_API void LSFIT_nonlinear_function(int m, double* params, LSFIT_model_t model, void* context,
                                          int maxIterations, double relativeTol, double absoluteTol,
                                          double* sumSq, int* status);
