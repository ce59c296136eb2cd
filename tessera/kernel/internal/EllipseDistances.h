// Sum of squared distances of points from an ellipse, with the derivatives that a fit needs.
#pragma once

#include "tessera/kernel/VexMath.h"

struct EllipseShape {
    Vex::Math::Point2 centre;
    double a, b;  // semi-axes in either order
    double angle; // direction of the axis a, radians
};

inline constexpr int kEllipseParameters = 5;
inline constexpr int kMostEllipseSamples = 512;

/// Points along their principal axes. With xi = x / spread[0] and eta = y / spread[1], five parameters stand
/// for the conic
///   (xi^2 + eta^2) / 2 + p0 (xi^2 - eta^2) / 2 + p1 xi eta + p2 xi + p3 eta + p4 = 0,
/// an ellipse while p0^2 + p1^2 < 1; no ellipse is left out.
struct EllipseSamples {
    int count;
    Vex::Math::Point2 mean; ///< the origin of x and y, and
    double axis[2][2];      ///< their unit directions, row by row
    double spread[2];       ///< standard deviations along them
    double x[kMostEllipseSamples], y[kMostEllipseSamples];
    double roots[kMostEllipseSamples]; ///< 1 at first, then where FindEllipseFeet may start again
};

/// Turns `count` points, given by x and y in one unit or so about the origin, to their principal axes, and
/// finds their direct least-squares ellipse. False for points on a line, points that follow a hyperbola, and
/// data without a real ellipse.
bool FindStartConic(EllipseSamples* samples, double params[kEllipseParameters]);

/// The ellipse of a conic, a >= b; false when the conic is none. In the axes of the samples.
bool FindEllipseOfConic(const EllipseSamples& samples, const double* params, EllipseShape* ellipse);

/// The model of LSFIT_nonlinear_function for a conic; context is an EllipseSamples. Gives half the Hessian of
/// the sum where that is positive definite, else J^T J.
int EvaluateEllipseDistances(void* context, const double* params, double* jtj, double* jtr, double* sumSq);
