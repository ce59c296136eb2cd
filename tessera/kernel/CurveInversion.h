// Point inversion: the parameter of the curve point that is nearest to a given point.
//
// The answer is the global minimum, whatever the shape: kinks, cusps, loops, coincident poles, points on an
// axis or at the centre of an ellipse. Distances are measured in space, z included. The record is left
// unchanged, apart from Bezier forms that a B-curve caches on first use.
//
// Method   Lines and circles in closed form. Ellipses by EllipseFoot; of parts of them all local minima, as
//          sign changes of the derivative on each quarter turn. B-curves: spans are discarded by bounds on
//          their poles and by the Bernstein coefficients of the squared distance; on the others every
//          stationary point is isolated and polished by Newton's method; span ends always take part.
// Source   T. W. Sederberg and T. Nishita, Computer-Aided Design 22 (1990) 538-549; Y. L. Ma and
//          W. T. Hewitt, Computer Aided Geometric Design 20 (2003) 79-99.
// Cost     Constant for lines and conics; O(poles) plus the few spans near the point for B-curves, one
//          scan without Bezier forms for degree 1.
// Failure  Points, reserved forms, non-finite input, B-curves of order above 32, no memory.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/CurveRecord.h"

/// Success states of em015c.
enum { kInversionFailed = 0, kInversionInside = 1, kInversionAtEnd = 2, kInversionAmbiguous = 3 };

/// Nearest point on the carrier: the infinite line, the full circle or ellipse (the parameter lifted by
/// multiples of 2 pi into the record's limits when it fits, else in (-pi, pi]), the bounded B-curve.
/// Of several equally near points the one with the smallest parameter; of a circle's centre the lower limit.
/// A line without length answers its base point, parameter 0.
///
/// @param p       three doubles.
/// @param flag    reserved, ignored.
/// @param t       [out] parameter.
/// @param foot    [out] three doubles, the curve point; may be null.
/// @param tangent [out] three doubles, the first derivative there; may be null.
/// @return a success state (1 inside, 2 within 1e-10 of an end of the limits, 3 several points are equally
///         near, such as from a circle's centre), or 0 with nothing written.
TESSERA_API int em015c(KC_CURVE_struct_s* c, const double p[3], int flag, double* t, double foot[3],
                       double tangent[3]);

/// Nearest point on the bounded curve, always: of an arc the ends and every local minimum inside the limits
/// are compared. Returns as em015c; foot and distance (model units) may be null.
TESSERA_API int em015cBounded(KC_CURVE_struct_s* c, const double p[3], double* t, double foot[3],
                              double* distance);
