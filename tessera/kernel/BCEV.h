// BCEV - evaluation and knot work on B-curve definitions.
//
// Parameters t run from 0 to 1, mapped linearly onto [knots[degree], knots[n]]; periodic curves accept
// any t and reduce it modulo 1. Functions return null when memory runs out. Poles are positions with a
// weight; only Bezier forms are homogeneous.
//
// Source: L. Piegl and W. Tiller, The NURBS Book, 2nd edition, Springer 1997 (A2.1, A5.1, A5.6).
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/CurveRecord.h"

/// Definition with uninitialised poles and knots; polynomial = 1, periodic = 0. Caller frees with ev0952.
TESSERA_API BCURVE_DATA* BCEV_alloc_bcurve_data(int numPoles, int order);
/// Index s with knots[s] <= u < knots[s + 1], degree <= s < n; the last non-empty span at the upper end.
TESSERA_API int BCEV_find_span(const BCURVE_DATA* d, double u);
/// Knot value of the curve parameter t: exact at 0 and 1; a periodic curve reduces a t outside [0, 1]
/// modulo 1.
TESSERA_API double BCEV_ask_knot_of_parameter(const BCURVE_DATA* d, double t);
/// n Greville-based sample parameters in [0, 1], strictly ascending from 0 to 1: the Greville abscissae
/// read by linear interpolation at n evenly spaced indices. Degree 1 with n = poles gives the vertices.
TESSERA_API void BCEV_sample_Greville_parameters(int numPoles, int order, const double* knots, int n,
                                                 double* params);
/// Forgets the span caches; call it after the definition has changed. O(n).
TESSERA_API void BCEV_reset_all_bez_pointers(EVC_bcurve_s* b);
/// The Bezier form of the span with index s (see BCEV_find_span), filled on first use: order x 4
/// homogeneous coefficients (w x, w y, w z, w) over [knots[s], knots[s + 1]].
TESSERA_API const BCURVE_SEGMENT* BCEV_ask_bez_segment(EVC_bcurve_s* b, int s);
/// The same Bezier form straight from the definition, without a cache: bezier holds 4 order doubles.
TESSERA_API void BCEV_ask_bezier_of_span(const BCURVE_DATA* d, int s, double* bezier);
/// New definition with knot u inserted `times` times; the curve does not change. Caller frees with ev0952.
/// Null also when u lies outside [knots[degree], knots[n]] or times outside [0, degree]. O(n + degree^2).
TESSERA_API BCURVE_DATA* BCEV_insert_knot(const BCURVE_DATA* d, double u, int times);
