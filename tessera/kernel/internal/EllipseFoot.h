// Nearest point on an axis-aligned ellipse about the origin.
#pragma once

/// The foot is (a cosT, b sinT); cosT^2 + sinT^2 = 1 to rounding.
struct EllipseFoot {
    double cosT, sinT;
};

/// Foot of the shortest distance from (px, py) to the ellipse with semi-axes a and b along x and y.
///
/// @param a, b  semi-axes >= 0 in either order; a zero axis makes the ellipse a doubled segment.
///
/// Always the global minimum, in the quadrant of the point: at the centre, on the axes, on and inside the
/// evolute, and at every aspect ratio. Where several feet are equally near, the one with non-negative sine
/// (or cosine, for b > a) in the point's quadrant; at the centre of a circle cosT = 1. O(1), a handful of
/// Newton steps for points near the ellipse.
///
/// Source: D. Eberly, Distance from a Point to an Ellipse, an Ellipsoid, or a Hyperellipsoid (2013), with the
/// bisection replaced by Newton's method, which is monotone on a convex function.
EllipseFoot FindEllipseFoot(double a, double b, double px, double py);

/// Points of one call of FindEllipseFeet at most.
inline constexpr int kEllipseFootBlock = 64;

/// FindEllipseFoot for a block of points, many times faster where they lie near the ellipse.
///
/// @param a, b   semi-axes, a >= b > 0.
/// @param count  number of points, up to kEllipseFootBlock.
/// @param roots  [in, out] per point where to start: 1 at first, then what the call for a similar ellipse
/// left.
/// @param cosT, sinT  [out] the feet.
void FindEllipseFeet(double a, double b, int count, const double* px, const double* py, double* roots,
                     double* cosT, double* sinT);
