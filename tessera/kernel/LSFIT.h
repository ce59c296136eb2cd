// LSFIT - least-squares fits of analytic shapes to planar points.
//
// Points    n records in model units, read only; each fit works on a centred copy.
// Status    0 success, 1 failure; no function here throws or prints.
// Deviation err[0] largest, err[1] root mean square, err[2] mean; model units.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/VexMath.h"

/// Mean of n points.
TESSERA_API void LSFIT_ask_pts_centroid_2d(int n, Vex::Math::Point2* pts, Vex::Math::Point2* centroid);

TESSERA_API void LSFIT_line_to_points_2d(Vex::Math::Point2* pts, int n, Vex::Math::Point2* pointOnLine,
                                         Vex::Math::Vector2* dir, int* status, double* err);

TESSERA_API void LSFIT_circle_to_points_2d(Vex::Math::Point2* pts, int n, Vex::Math::Point2* centre,
                                           double* radius, int* status, double* err);

TESSERA_API void LSFIT_ellipse_to_points_2d(Vex::Math::Point2* pts, int n, Vex::Math::Point2* centre,
                                            double* a, double* b, double* angle, int* status, double* err);
