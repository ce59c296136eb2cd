// ARC_SPLINE - circular arcs through points.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/VexMath.h"

/// Circumscribed circle of three points. Returns 1; 0 with the outputs untouched when the points are
/// collinear or coincide.
TESSERA_API int ARC_SPLINE_cre_circle_thru_3_points_2d(const Vex::Math::Point2* a, const Vex::Math::Point2* b,
                                                       const Vex::Math::Point2* c, Vex::Math::Point2* centre,
                                                       double* radius);
