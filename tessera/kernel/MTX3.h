// MTX3 - 3 x 3 matrices of doubles, row by row, acting on column vectors.
//
// Outputs may be any of the inputs. Nothing allocates.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/VexMath.h"

TESSERA_API void MTX3_identity(double m[3][3]);
/// out = B A, in this order: the transform a first, then b.
TESSERA_API void MTX3_multiply(const double a[3][3], const double b[3][3], double out[3][3]);
TESSERA_API void MTX3_transpose(const double m[3][3], double out[3][3]);
TESSERA_API double MTX3_determinant(const double m[3][3]);
/// Inverse through the adjugate. Returns 1, or 0 with out untouched when the matrix is singular to working
/// precision (the determinant is within the rounding of its own six products, whatever the scale of single
/// rows or columns) or holds a value that is not finite.
TESSERA_API int MTX3_invert(const double m[3][3], double out[3][3]);
/// out = m v.
TESSERA_API void MTX3_transform_vector(const double m[3][3], const Vex::Math::Vector3* v,
                                       Vex::Math::Vector3* out);
