// VEC2 - planar vectors.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/VexMath.h"

/// Perpendicular with the larger component in the first slot: (-y, x) when |y| > |x|, else (y, -x).
/// Returns 1; 0 and a zero vector when x^2 + y^2 <= 1e-20.
TESSERA_API int VEC2_ask_perpendicular(const Vex::Math::Vector2* v, Vex::Math::Vector2* out);
/// Unit vector and length. Returns 1; 0 with zero length and vector when x^2 + y^2 <= tol^2.
TESSERA_API int VEC2_unitize(const Vex::Math::Vector2* v, double tol, double* length,
                             Vex::Math::Vector2* out);
/// Sine of the enclosed angle at most tol in magnitude; true when either vector is (near) zero.
TESSERA_API bool VEC2_is_parallel(const Vex::Math::Vector2* a, const Vex::Math::Vector2* b, double tol);
/// Cosine of the enclosed angle at most tol in magnitude; true when either vector is (near) zero.
TESSERA_API bool VEC2_is_perpendicular(const Vex::Math::Vector2* a, const Vex::Math::Vector2* b, double tol);
