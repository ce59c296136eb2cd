// CRV_PROPS - measures of curve records. Status 0 success, 1 failure with the output untouched.
//
// Method  Lines and circles in closed form. Ellipses and B-curve spans: 16-point Gauss-Legendre rule on the
//         speed, halved until two halves agree with the whole to 1e-14 of the running length; halving homes
//         in on cusps and on the tips of thin ellipses. B. Guenter and R. Parent, IEEE Computer Graphics and
//         Applications 10 (1990) 72-78; nodes from Abramowitz and Stegun, table 25.4.
// Failure Points, reserved forms, B-curves of order above 32, non-finite data, no memory.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/CurveRecord.h"

/// Arc length between two parameters (limits[0] <= limits[1]), model units, 1e-12 relative; additive.
/// Closed curves accept ranges across the seam, of several turns too; on open B-curves the range is clamped
/// to [0, 1]; lines and conics are measured along their carrier.
TESSERA_API int CRV_PROPS_arc_length(KC_CURVE_struct_s* c, const double limits[2], double* length);

/// Signed curvature in the plane, (x'y'' - y'x'') / speed^3, positive where the curve turns to the left;
/// 0 for lines. Status 1 where the speed vanishes (a cusp, a line without length).
TESSERA_API int CRV_PROPS_curvature(KC_CURVE_struct_s* c, double t, double* curvature);
