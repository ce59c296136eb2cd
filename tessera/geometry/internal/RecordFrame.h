// The frame in which the curve classes keep arcs and ellipses: right-handed, arcs unturned, so that radius,
// rotation and angles read from a record rebuild the curve that it evaluates to.
#pragma once

#include "tessera/kernel/CurveRecord.h"

namespace Tessera::Geometry {

/// Axes (r, 0) and (0, r): a turn by alpha adds alpha to the angles, a mirror makes them alpha - end and
/// alpha - start. The points of the curve and the closed flag stay; a record in the frame is untouched.
void RestoreArcFrame(KC_CURVE_struct_s& record);

/// Perpendicular axes, the minor one a quarter turn counter-clockwise from the major: a mirror makes the
/// angles -end and -start, lifted into [0, 2 pi); sheared axes are replaced by the principal ones. Forms
/// other than conics are untouched.
void RestoreConicFrame(KC_CURVE_struct_s& record);

} // namespace Tessera::Geometry
