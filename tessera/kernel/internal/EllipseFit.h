// The ellipse fit with a limit, and its last stage, the deviations.
#pragma once

#include "tessera/kernel/VexMath.h"

struct EllipseShape {
    Vex::Math::Point2 centre;
    double a, b;  // semi-axes in either order
    double angle; // direction of the axis a, radians
};

/// LSFIT_ellipse_to_points_2d for a caller without use for an ellipse that passes some point at more than
/// `limit`: false then too, often much sooner. The shape as described there; undefined when false.
bool FitEllipseWithin(const Vex::Math::Point2* pts, int n, double limit, EllipseShape* ellipse,
                      double err[3]);

/// Largest, root mean square and mean distance of n >= 1 points from an ellipse with a >= b > 0, as described
/// at LSFIT_ellipse_to_points_2d.
void MeasureEllipseDeviations(const Vex::Math::Point2* pts, int n, const EllipseShape& ellipse,
                              double err[3]);
