// CRV_PROPS - measures of curve records. Status 0 success, 1 failure with the output untouched.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/CurveRecord.h"

/// Arc length between two parameters (limits[0] <= limits[1]), 1e-12 relative. Closed curves accept
/// ranges across the seam.
TESSERA_API int CRV_PROPS_arc_length(KC_CURVE_struct_s* c, const double limits[2], double* length);
/// Signed curvature (x'y'' - y'x'') / speed^3; 0 for lines; status 1 where the speed vanishes.
TESSERA_API int CRV_PROPS_curvature(KC_CURVE_struct_s* c, double t, double* curvature);
