// Arcs and ellipses in their own axes: the common ground of everything that treats the two alike.
#pragma once

#include "tessera/kernel/CurveRecord.h"

/// Principal axes of a form 5 or 6 record: P(t) = centre + a cos(t - phase) ex + b sin(t - phase) ey.
struct ConicFrame {
    double centre[3];
    double ex[3], ey[3]; ///< unit, perpendicular
    double a, b;         ///< radii along them, >= 0, in no order
    double phase;        ///< 0 unless the record's own axes are oblique
    double limits[2];    ///< ascending
    bool closed;         ///< the limits span a full turn
};

/// Frame of an arc or ellipse record (form 5 or 6).
ConicFrame MakeConicFrame(KC_CURVE_struct_s* c);

/// Coordinates of p in the frame.
void ConicLocal(const ConicFrame& f, const double p[3], double* x, double* y);
/// Point at the eccentric angle psi = t - phase.
void ConicPoint(const ConicFrame& f, double psi, double out[3]);
/// t + 2 pi k inside the limits, an end within `slack` included and snapped to; t unchanged when none fits.
bool LiftAngle(const double limits[2], double slack, double* t);

/// Eccentric angles at which the distance from the local point (x, y) may be least: every local minimum and
/// some other points. Returns how many were written, at most 24.
///
/// The derivative of the squared distance, (b^2 - a^2) sin cos + a x sin - b y cos, becomes a quartic in the
/// tangent of the half angle on each quarter turn; its sign changes are isolated in Bernstein form.
int ConicFootCandidates(const ConicFrame& f, double x, double y, double psi[24]);
