// MTX4 - 4 x 4 transforms of spatial points, row by row, acting on column vectors (x, y, z, w).
//
// Outputs may be any of the inputs. Nothing allocates.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/VexMath.h"

TESSERA_API void MTX4_identity(Vex::Math::TransformMatrix* out);
/// out = B A, in this order: the transform a first, then b.
TESSERA_API void MTX4_multiply(const Vex::Math::TransformMatrix* a, const Vex::Math::TransformMatrix* b,
                               Vex::Math::TransformMatrix* out);
/// Inverse. Returns 1, or 0 with out untouched when the matrix is singular to working precision (the
/// determinant is within the rounding of its own products, whatever the scale of single rows or columns) or
/// not finite.
TESSERA_API int MTX4_invert(const Vex::Math::TransformMatrix* m, Vex::Math::TransformMatrix* out);
/// out = m p, divided by the resulting w (1 for affine matrices).
TESSERA_API void MTX4_transform_point(const Vex::Math::TransformMatrix* m, const Vex::Math::Point3* p,
                                      Vex::Math::Point3* out);

/// p -> p + v.
TESSERA_API void MTX4_make_translation(const Vex::Math::Vector3* v, Vex::Math::TransformMatrix* out);
/// p -> centre + factor (p - centre).
TESSERA_API void MTX4_make_scale(const Vex::Math::Point3* centre, double factor,
                                 Vex::Math::TransformMatrix* out);
/// Rotation by angle (radians, right-handed) about the line through centre along axis. Returns 1; 0 with out
/// untouched when the axis is shorter than 1e-10.
TESSERA_API int MTX4_make_rotation(const Vex::Math::Point3* centre, const Vex::Math::Vector3* axis,
                                   double angle, Vex::Math::TransformMatrix* out);
