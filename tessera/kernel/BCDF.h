// BCDF - copies and transforms of B-curve definitions.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/CurveRecord.h"
#include "tessera/kernel/VexMath.h"

/// Deep copy; null for null or when memory runs out. Caller frees with ev0952.
TESSERA_API BCURVE_DATA* BCDF_copy_bcdf_data(const BCURVE_DATA* d);
/// Transforms the poles in place by an affine 4 x 4 matrix.
TESSERA_API void BCDF_transform_bcdf_data(BCURVE_DATA* d, const Vex::Math::TransformMatrix* matrix);
/// Sets the polynomial flag from the weights (exactly 1.0; a NaN weight is rational).
TESSERA_API void BCDF_update_polynomial_flag(BCURVE_DATA* d);
