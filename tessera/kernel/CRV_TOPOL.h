// CRV_TOPOL - how two curve records lie to each other: intersections and overlaps.
//
// Status 0 success, 1 failure (unknown form, no memory) with no result. Planar: z is ignored.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/CurveRecord.h"

/// What of a record takes part: the bounded curve, or its carrier (infinite line, full circle or ellipse;
/// a B-curve has no carrier beyond itself).
enum CRV_TOPOL_extent_t { CRV_TOPOL_BOUNDED = 0, CRV_TOPOL_CARRIER = 1 };

struct CRV_TOPOL_hit_t {
    double t1, t2; ///< parameters on the first and second record, lifted into the limits where they fit
    double point[3];
    int tangent; ///< 1 when the curves touch there
};

/// All intersections, each crossing once and each touch once, ordered by t1. Stretches on which the
/// curves coincide are not points: see CRV_TOPOL_overlap.
///
/// @param tol  distance below which two hits are one and an end still counts as on the curve, > 0.
/// @param hits [out] SM_alloc'd array of *n records, null when *n is 0; caller frees with SM_free.
TESSERA_API int CRV_TOPOL_intersect(KC_CURVE_struct_s* a, CRV_TOPOL_extent_t extentA, KC_CURVE_struct_s* b,
                                    CRV_TOPOL_extent_t extentB, double tol, int* n, CRV_TOPOL_hit_t** hits);

enum CRV_TOPOL_state_t {
    CRV_TOPOL_SEPARATE = 0,  ///< no common stretch
    CRV_TOPOL_PARTIAL = 1,   ///< a common stretch, and each has some of its own
    CRV_TOPOL_CONTAINS = 2,  ///< the first covers the second and more
    CRV_TOPOL_CONTAINED = 3, ///< the second covers the first and more
    CRV_TOPOL_IDENTICAL = 4  ///< both cover the same stretch
};

/// Longest common stretch of two records on one carrier.
///
/// @param distTol   how far apart two points may lie and still coincide, model units.
/// @param angTolRad angle between carriers that still counts as parallel.
/// @param paramTol  smallest parameter length of a stretch on the first record.
/// @param rangeA    [out] the stretch in the first record's parameters; may be null.
/// @param rangeB    [out] in the second's (descending when it runs the other way); may be null.
TESSERA_API int CRV_TOPOL_overlap(KC_CURVE_struct_s* a, KC_CURVE_struct_s* b, double distTol,
                                  double angTolRad, double paramTol, CRV_TOPOL_state_t* state,
                                  double rangeA[2], double rangeB[2]);
