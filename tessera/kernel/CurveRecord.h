// Curve records: one header for every form, the data of each form, and the routines that dispatch on it.
//
// Units      model units; angles in radians; line and B-curve parameters run from 0 to 1.
// Ownership  a record owns its data; free it with evcrvf. Makers and copies return null when
//            memory runs out, with everything freed. No function here throws or prints.
// Caches     evaluating a B-curve fills the caches of its record: one thread per record. After changing a
//            definition in place call BCEV_reset_all_bez_pointers.
// Source     L. Piegl and W. Tiller, The NURBS Book, 2nd edition, Springer 1997: evaluation (chapter 4),
//            knot insertion (A5.1), conics (A7.1). Derivatives from the Bezier form: G. Farin, Curves and
//            Surfaces for CAGD, 5th edition, 2002, section 5.4.
#pragma once

#include "tessera/core/Export.h"

/// Header of a record. `span` is end minus start and may be negative.
struct KC_CURVE_struct_s {
    void* data;
    int form;
    double start;
    double span;
    int closed;
};

// Form codes. 4, 7, 8 and 10 are reserved: nothing creates them.
inline constexpr int kFormPoint = 2;  // data: three doubles
inline constexpr int kFormLine = 3;   // EVC_line_s
inline constexpr int kFormArc = 5;    // EVC_arc_s
inline constexpr int kFormConic = 6;  // EVC_conic_s
inline constexpr int kFormBCurve = 9; // EVC_bcurve_s

/// P(t) = base + t direction, t in [0, 1].
struct EVC_line_s {
    double base[3];
    double direction[3]; ///< end - start, not normalised
};

/// P(theta) = centre + cos theta xAxis + sin theta yAxis; the axes carry the radius.
struct EVC_arc_s {
    double startAngle;
    double endAngle;
    double centre[3];
    double radius;
    double xAxis[3];
    double yAxis[3];
};

/// P(theta) = centre + cos theta majorAxis + sin theta minorAxis; the axes carry the radii.
struct EVC_conic_s {
    double startAngle;
    double endAngle;
    double radius1;
    double radius2;
    int conicType; ///< 2: ellipse, the only kind that is made
    double centre[3];
    double majorAxis[3];
    double minorAxis[3];
};

/// B-curve definition: P(t) = sum N w P / sum N w. Poles are positions with a separate weight.
/// The curve's 0..1 is mapped linearly onto [knots[degree], knots[numPoles]]. A periodic curve
/// holds its wrapped poles: n poles and n + order knots, n - degree segments.
struct BCURVE_DATA {
    double (*poles)[4]; ///< n x (x, y, z, weight)
    double* knots;      ///< n + order
    int numPoles;
    int order;
    int degree;
    int periodic;   ///< 1: closed and periodic
    int polynomial; ///< 1: every weight is exactly 1.0
};

/// Working record of one span: the Bezier form of the definition over a knot interval.
struct BCURVE_SEGMENT {
    double from, to; ///< knot interval
    double* bezier;  ///< order x 4 homogeneous coefficients, inside EVC_bcurve_s::coefficients
};

/// Evaluation record around a definition. Caches are filled span by span on first use.
struct EVC_bcurve_s {
    BCURVE_DATA* definition;
    double* spanCache;        ///< n doubles, zero at creation; non-zero once span i is filled
    BCURVE_SEGMENT* segments; ///< n records
    double* coefficients;     ///< n x k x 4
    int k;                    ///< rows per span: 4, 5, 7 for order < 2, 2, 3; 4 order - 6 above
};

// --- Makers -----------------------------------------------------------------------------------------

TESSERA_API KC_CURVE_struct_s* ev02p0(const double point[3]);
TESSERA_API KC_CURVE_struct_s* ev03p0(const double start[3], const double end[3]);
/// Axes (r, 0, 0) and (0, r, 0); span end - start, also negative; closed when |span - 2 pi| <= 1e-10.
TESSERA_API KC_CURVE_struct_s* ev05p0(const double centre[3], double radius, double startAngle,
                                      double endAngle);
/// Conic type 2 with the major axis at `rotation`.
TESSERA_API KC_CURVE_struct_s* ev06p0(const double centre[3], double radius1, double radius2, double rotation,
                                      double startAngle, double endAngle);
/// Definition from copies of the knots and poles; sizes = {number of poles, order, periodic flag}. Null also
/// for fewer poles than the order or an order below 1. Knots must not descend.
TESSERA_API BCURVE_DATA* ev091p(int* const sizes, double* knots, double (*poles)[4]);
/// Evaluation record straight from the same inputs.
TESSERA_API EVC_bcurve_s* ev09p0(int* const sizes, double* knots, double (*poles)[4]);
/// Form-9 record around d, which the record owns from then on. On failure d stays the caller's. The tables
/// hold 4 order - 6 rows a span but are not written until a span is used, so untouched pages cost nothing.
TESSERA_API KC_CURVE_struct_s* ev09p1(BCURVE_DATA* d);

// --- Freeing ----------------------------------------------------------------------------------------

/// Frees data and header; null does nothing. Forms 4 and 7 are left alone, of 8 and 10 only the header goes.
TESSERA_API void evcrvf(KC_CURVE_struct_s* c);
TESSERA_API void ev0250(double* point);
TESSERA_API void ev0350(EVC_line_s* line);
TESSERA_API void ev0550(EVC_arc_s* arc);
TESSERA_API void ev0650(EVC_conic_s* conic);
TESSERA_API void ev0950(EVC_bcurve_s* bcurve); ///< with its definition
TESSERA_API void ev0952(BCURVE_DATA* d);

// --- Reading ----------------------------------------------------------------------------------------

/// Parameter limits in ascending order.
TESSERA_API void evcrvp(KC_CURVE_struct_s* c, double limits[2]);
/// The closed flag of an arc or ellipse of this span: 1 when |span - 2 pi| <= 1e-10, else 0.
TESSERA_API int evcrvIsFullTurn(double span);
/// Position and nderiv derivatives (none when negative) by the record's parameter at t: out holds
/// 3 (nderiv + 1) doubles, position
/// first, then x, y, z of each derivative. An unknown form leaves out untouched.
///
/// Arcs and ellipses accept any angle, lines any t. An open B-curve continues its end spans outside [0, 1];
/// a periodic one reduces t modulo 1. At a knot the span above it counts, at 1 the last span.
/// Allocates nothing. B-curves: O(log n + order^2), 1e-12 relative; a curve without any parameter interval
/// answers a pole and zero derivatives.
TESSERA_API void evcrve(KC_CURVE_struct_s* c, int nderiv, double t, double* out);
TESSERA_API void ev0200(KC_CURVE_struct_s* c, int nderiv, double t, double* out);
TESSERA_API void ev0300(KC_CURVE_struct_s* c, int nderiv, double t, double* out);
TESSERA_API void ev0500(KC_CURVE_struct_s* c, int nderiv, double t, double* out);
TESSERA_API void ev0600(KC_CURVE_struct_s* c, int nderiv, double t, double* out);
TESSERA_API void ev0900(KC_CURVE_struct_s* c, int nderiv, double t, double* out);

// --- Copying and moving -----------------------------------------------------------------------------

/// Transformed copy p' = m p + v, m row by row; same start, span and closed. Null for other forms or
/// when memory runs out. Points keep their parameters: only the vectors of the record change, so a rotated
/// or mirrored arc has turned axes until evcrvNormalizeAxes is called. Radii are taken from the
/// transformed axes. Where m is no similarity, an ellipse is turned onto its new principal axes, its angles
/// shifted by at most pi / 4 with them; an arc cannot follow: it still evaluates exactly, as an ellipse, but
/// its radius is that of the x axis only.
TESSERA_API KC_CURVE_struct_s* evcrvx(KC_CURVE_struct_s* c, double m[][3], double* v);
/// Scales the record in place about the origin. Returns 0, or 1 with nothing changed for a null or
/// unknown record or a scale that is not finite.
TESSERA_API int evcrvxScale(KC_CURVE_struct_s* c, double s);
/// Brings an arc or ellipse in a plane of constant z back to standard axes, in place; the curve does not
/// change as a set of points, nor do span and closed. Other forms are left as they are. Returns 0, or
/// 1 with nothing changed for null or axes that leave the plane.
///
/// Arc     axes (r, 0, 0) and (0, r, 0), angles counter-clockwise from the x axis: with alpha the x
///         axis' direction, start becomes alpha + start, or alpha - end for a mirrored record.
/// Ellipse minor axis a quarter turn ahead of the major one: for a mirrored record start becomes - end
///         brought into [0, 2 pi).
TESSERA_API int evcrvNormalizeAxes(KC_CURVE_struct_s* c);
/// Exact copy; null for null, unknown forms or when memory runs out.
TESSERA_API KC_CURVE_struct_s* evcrvCopy(KC_CURVE_struct_s* c);
/// Exact sub-range [limits[0], limits[1]] as a new record of the same form; ranges across the seam of a
/// closed curve are valid, open B-curves are clamped to [0, 1]. B-curves come back open and clamped with
/// knots 0..1, P_new(u) = P(a + u (b - a)), weights kept; a range end within 1e-12 of a knot is taken to
/// be that knot. Null when the range is empty or memory runs out, or when it is longer than one turn of a
/// periodic curve whose poles do not wrap. Cost follows the piece, not the curve.
TESSERA_API KC_CURVE_struct_s* em0941(KC_CURVE_struct_s* c, const double limits[2]);
/// Exact (rational) B-curve of any form, start to end in ascending limits; caller frees (ev0952, or the
/// record made of it with ev09p1). Null for points, unknown forms or when memory runs out.
///
/// Lines have degree 1. Arcs and ellipses become rational quadratics of at most a quarter turn each, at most
/// four for a full turn, whose ends then coincide exactly. B-curves are copied, periodic ones as they are.
TESSERA_API BCURVE_DATA* em0960(KC_CURVE_struct_s* c);
