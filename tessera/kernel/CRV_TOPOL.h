// CRV_TOPOL - how two curve records lie to each other: intersections and overlaps.
//
// Status  0 success, 1 failure with no result: null or unknown forms, non-finite data, B-curves of order
//         above 32, of two B-curves one with a weight that is not positive, no memory.
// Planar  z is ignored; a record that leaves z = 0 is copied.
// Scale   Answers follow the size of the curves; no tolerance is finer than 32 roundings of the largest
//         coordinate.
//
// Sources T. W. Sederberg and T. Nishita, Curve intersection using Bezier clipping, Computer-Aided Design 22
//         (1990) 538-549;
//         T. W. Sederberg and R. J. Meyers, Computer Aided Geometric Design 5 (1988) 161-171 (tangent cones);
//         P. A. Koparkar and S. P. Mudur, Computer-Aided Design 15 (1983) 41-45 (box subdivision);
//         T. W. Sederberg, Computer-Aided Design 21 (1989) 547-555 (curves in implicit form).
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/CurveRecord.h"

/// What of a record takes part: the bounded curve, or its carrier (infinite line, full circle or ellipse;
/// a B-curve has no carrier beyond itself).
enum CRV_TOPOL_extent_t { CRV_TOPOL_BOUNDED = 0, CRV_TOPOL_CARRIER = 1 };

struct CRV_TOPOL_hit_t {
    double t1, t2;   ///< parameters on the first and second record, lifted into the limits where they fit
    double point[3]; ///< midway between the two curve points; z = 0
    int tangent;     ///< 1 when the curves touch there: common tangent to a sine of 1e-6
};

/// All intersections, each crossing once and each touch once, ordered by t1; the same set when the records
/// are swapped. Stretches on which the curves coincide are not points: see CRV_TOPOL_overlap.
///
/// Curves that come within tol of each other without crossing, ends and corners included, meet there. Two
/// crossings between which the curves never part by more than tol are one touch, and so is an overlap
/// too short to tell from a touch, 4 (tol size^3)^(1/4); longer ones give nothing. A place that one curve
/// passes twice is one hit, with one of its parameters.
///
/// @param tol  distance below which two hits are one and an end still counts as on the curve, > 0.
/// @param hits [out] SM_alloc'd array of *n records, null when *n is 0; caller frees with SM_free.
///
/// Lines and conics in constant time; those with a B-curve in one pass over its poles, Bezier forms made only
/// near the carrier and never for degree 1; two B-curves in O(n log n + pairs of spans that come near each
/// other).
TESSERA_API int CRV_TOPOL_intersect(KC_CURVE_struct_s* a, CRV_TOPOL_extent_t extentA, KC_CURVE_struct_s* b,
                                    CRV_TOPOL_extent_t extentB, double tol, int* n, CRV_TOPOL_hit_t** hits);

enum CRV_TOPOL_state_t {
    CRV_TOPOL_SEPARATE = 0,  ///< no common stretch
    CRV_TOPOL_PARTIAL = 1,   ///< a common stretch, and each has some of its own
    CRV_TOPOL_CONTAINS = 2,  ///< the first covers the second and more
    CRV_TOPOL_CONTAINED = 3, ///< the second covers the first and more
    CRV_TOPOL_IDENTICAL = 4  ///< both cover the same stretch
};

/// Longest common stretch of two bounded records, of any forms: a B-curve may run along a line or an arc. Of
/// equally long ones the first. Length is measured in the first record's parameter; stretches no longer than
/// distTol do not count.
///
/// @param distTol   how far apart two points may lie and still coincide, model units, > 0.
/// @param angTolRad angle between tangents that still counts as parallel, >= 0; 1e-9 at least.
/// @param paramTol  smallest parameter length of a stretch on the first record.
/// @param rangeA    [out] the stretch in the first record's parameters, ascending; beyond the upper limit
///                  when it runs over the seam of a closed curve; may be null; untouched when separate.
/// @param rangeB    [out] in the second's (descending when it runs the other way), likewise; may be null.
///
/// Both records are cut at the ends and knots of either; each piece is judged by distance and tangent at more
/// inner samples than two different pieces can share. O(n log n) for B-curves of n poles.
TESSERA_API int CRV_TOPOL_overlap(KC_CURVE_struct_s* a, KC_CURVE_struct_s* b, double distTol,
                                  double angTolRad, double paramTol, CRV_TOPOL_state_t* state,
                                  double rangeA[2], double rangeB[2]);
