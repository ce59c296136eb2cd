// VEC3 - spatial vectors. Inputs are read only and may be the output too; lengths are in model units.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/VexMath.h"

TESSERA_API double VEC3_dot(const Vex::Math::Vector3* a, const Vex::Math::Vector3* b);
TESSERA_API void VEC3_cross(const Vex::Math::Vector3* a, const Vex::Math::Vector3* b,
                            Vex::Math::Vector3* out);
/// sqrt(x^2 + y^2 + z^2).
TESSERA_API double VEC3_length(const Vex::Math::Vector3* v);
/// Unit vector and length. Returns 1; 0 with zero length and vector when x^2 + y^2 + z^2 <= tol^2.
TESSERA_API int VEC3_unitize(const Vex::Math::Vector3* v, double tol, double* length,
                             Vex::Math::Vector3* out);
