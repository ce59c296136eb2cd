// Boxes around curve records.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/CurveRecord.h"

/// Oriented box of the sub-range `limits`: dimension (0 point, 1 segment, 2 planar, 3 solid), centre and
/// as many half-size vectors as the dimension. Returns 0; 1 for unknown forms or when memory runs out.
TESSERA_API int BoxCurve(KC_CURVE_struct_s* c, const double limits[2], int* dimension, double centre[3],
                         double halfSizes[3][3]);
/// Tight axis-aligned extent of the sub-range `limits` in the plane. Returns 0, or 1 as BoxCurve.
TESSERA_API int BoxCurveXY(KC_CURVE_struct_s* c, const double limits[2], double min[2], double max[2]);
