// Point inversion: the parameter of the curve point that is nearest to a given point.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/CurveRecord.h"

/// Success states of em015c.
enum { kInversionFailed = 0, kInversionInside = 1, kInversionAtEnd = 2, kInversionAmbiguous = 3 };

/// Nearest point on the carrier: the infinite line, the full circle or ellipse (the parameter lifted by
/// multiples of 2 pi into the record's limits when it fits), the bounded B-curve. Global minimum.
///
/// @param p       three doubles.
/// @param flag    reserved, ignored.
/// @param t       [out] parameter.
/// @param foot    [out] three doubles, the curve point; may be null.
/// @param tangent [out] three doubles, the first derivative there; may be null.
/// @return a success state (1 inside, 2 at an end of the limits, 3 several points are equally near, such
///         as from a circle's centre), or 0 with nothing written. The record is left unchanged.
TESSERA_API int em015c(KC_CURVE_struct_s* c, const double p[3], int flag, double* t, double foot[3],
                       double tangent[3]);

/// Nearest point on the bounded curve, always. Returns as em015c; distance may be null.
TESSERA_API int em015cBounded(KC_CURVE_struct_s* c, const double p[3], double* t, double foot[3],
                              double* distance);
