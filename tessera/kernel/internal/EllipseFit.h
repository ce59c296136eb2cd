// Stages of the ellipse fit: direct start and deviations.
#pragma once

#include "tessera/kernel/VexMath.h"

struct EllipseShape {
    Vex::Math::Point2 centre;
    double a, b;  // semi-axes in either order
    double angle; // direction of the axis a, radians
};

/// Direct least-squares ellipse of m points in one unit or so about the origin; false for points on a line,
/// points that follow a hyperbola, and data without a real ellipse.
bool FindStartEllipse(const Vex::Math::Point2* pts, int m, EllipseShape* ellipse);

/// Largest, root mean square and mean distance of n >= 1 points from an ellipse with a >= b > 0, as described
/// at LSFIT_ellipse_to_points_2d.
void MeasureEllipseDeviations(const Vex::Math::Point2* pts, int n, const EllipseShape& ellipse,
                              double err[3]);
