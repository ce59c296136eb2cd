// VEC2 - planar vectors.
//
// Vectors are read only and may be the output too. Lengths are in model units; the fixed limit 1e-20 on
// squared lengths tells a zero vector from others and does not follow the length scale.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/VexMath.h"

/// a.x b.x + a.y b.y.
TESSERA_API double VEC2_dot(const Vex::Math::Vector2* a, const Vex::Math::Vector2* b);
/// a.x b.y - a.y b.x: positive when b lies counter-clockwise of a.
TESSERA_API double VEC2_cross(const Vex::Math::Vector2* a, const Vex::Math::Vector2* b);
/// sqrt(x^2 + y^2).
TESSERA_API double VEC2_length(const Vex::Math::Vector2* v);

/// Perpendicular with the larger component in the first slot: (-y, x) when |y| > |x|, else (y, -x).
/// The turn direction thus depends on which component dominates; test the sign where the side matters.
/// Returns 1; 0 and a zero vector when x^2 + y^2 <= 1e-20.
TESSERA_API int VEC2_ask_perpendicular(const Vex::Math::Vector2* v, Vex::Math::Vector2* out);
/// Unit vector and length. Returns 1; 0 with zero length and vector when x^2 + y^2 <= tol^2.
TESSERA_API int VEC2_unitize(const Vex::Math::Vector2* v, double tol, double* length,
                             Vex::Math::Vector2* out);
/// Sine of the enclosed angle at most tol in magnitude; true when either vector is (near) zero.
TESSERA_API bool VEC2_is_parallel(const Vex::Math::Vector2* a, const Vex::Math::Vector2* b, double tol);
/// Cosine of the enclosed angle at most tol in magnitude; true when either vector is (near) zero.
TESSERA_API bool VEC2_is_perpendicular(const Vex::Math::Vector2* a, const Vex::Math::Vector2* b, double tol);
