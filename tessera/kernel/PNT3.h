// PNT3 - spatial points. Inputs are read only and may be the output too; lengths are in model units.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/VexMath.h"

TESSERA_API double PNT3_distance_squared(const Vex::Math::Point3* a, const Vex::Math::Point3* b);
TESSERA_API double PNT3_distance(const Vex::Math::Point3* a, const Vex::Math::Point3* b);
/// Distance at most tol.
TESSERA_API bool PNT3_is_equal(const Vex::Math::Point3* a, const Vex::Math::Point3* b, double tol);
/// The vector from a to b.
TESSERA_API void PNT3_ask_vector(const Vex::Math::Point3* a, const Vex::Math::Point3* b,
                                 Vex::Math::Vector3* out);
/// a + t (b - a); exactly a and b at t = 0 and 1.
TESSERA_API void PNT3_interpolate(const Vex::Math::Point3* a, const Vex::Math::Point3* b, double t,
                                  Vex::Math::Point3* out);
