// Boxes around curve records.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/CurveRecord.h"

/// Oriented box of the sub-range `limits` (either order): dimension (0 point, 1 segment, 2 planar, 3 solid),
/// centre and as many half-size vectors as the dimension, the rest zero. Sides whose half-size is below the
/// length tolerance are left out, so that every side has a direction. Returns 0; 1, with nothing written, for
/// null, unknown forms or when memory runs out.
///
/// Arc, ellipse  along the chord up to half a turn, else along x and y; tight in those directions.
/// B-curve       the box of the Bezier poles of its spans, with z as a third side where it varies; along
///               the axes, and tight, when a weight is not positive. A poly-line takes O(n) and leaves
///               the evaluation caches empty.
TESSERA_API int BoxCurve(KC_CURVE_struct_s* c, const double limits[2], int* dimension, double centre[3],
                         double halfSizes[3][3]);
/// Tight axis-aligned extent of the sub-range `limits` in the plane, to 1e-12 of its size: closed form for
/// lines and conics, halving of spans for B-curves. Returns as BoxCurve.
TESSERA_API int BoxCurveXY(KC_CURVE_struct_s* c, const double limits[2], double min[2], double max[2]);
