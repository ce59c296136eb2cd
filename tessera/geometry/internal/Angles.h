// Angles as the curve classes compare and store them: radians, modulo full turns where stated.
#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/geometry/Point.h"
#include "tessera/geometry/internal/RecordData.h"
#include "tessera/kernel/CurveRecord.h"

namespace Tessera::Geometry {

inline constexpr double kTwoPi = 2.0 * std::numbers::pi;
/// Parameters and angles closer than this are equal; radians, independent of the length scale.
inline constexpr double kAngleTol = 1e-10;

/// Equal modulo full turns, from either side.
inline bool SameAngle(double a, double b) {
    return std::fabs(std::remainder(a - b, kTwoPi)) <= kAngleTol;
}

/// Position of theta between two ascending limits as a fraction; outside them 0 or 1 by the nearer limit.
inline double RelativeAngle(double theta, double start, double end) {
    if (start + kAngleTol < theta && theta < end + kAngleTol)
        return (theta - start) / (end - start);
    return std::fabs(theta - end) - kAngleTol > std::fabs(start - theta) ? 0.0 : 1.0;
}

/// Points that display a sweep of `chords` chords; 0 chords stands for a curve too large for its tolerance,
/// which takes seven chords to the radian.
inline int SamplesOfSweep(int chords, double sweep, bool isClosed) {
    const int points = 1 + (chords != 0 ? chords : static_cast<int>(std::floor(7.0 * sweep)));
    return std::max(points, isClosed ? 5 : 4);
}

/// The header of an arc or ellipse with these limits.
inline void SetAngularLimits(KC_CURVE_struct_s& c, double start, double end) {
    c.start = start;
    c.span = end - start;
    c.closed = std::fabs(c.span - kTwoPi) <= kAngleTol ? 1 : 0;
}

/// Rewrites a whole arc record, in the unturned frame.
inline void StoreArc(KC_CURVE_struct_s& c, const Point& centre, double radius, double start, double end) {
    ArcData(c) = {start, end, {centre.x, centre.y, 0.0}, radius, {radius, 0.0, 0.0}, {0.0, radius, 0.0}};
    SetAngularLimits(c, start, end);
}

} // namespace Tessera::Geometry
