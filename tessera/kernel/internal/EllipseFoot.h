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
