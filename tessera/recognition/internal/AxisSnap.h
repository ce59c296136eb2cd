// AxisSnap - directions near an axis of the plane, which are turned onto it.
#pragma once

#include <cmath>
#include <numbers>
#include <optional>

#include "tessera/geometry/Point.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"

namespace Tessera::Geometry {

/// The angle within which lines are turned onto an axis, radians; 0 for no snapping.
inline double SnapAngle(const SketchRecognizerPreferences& preferences) {
    return preferences.AskSnapping() ? preferences.AskSnapAngleCreate() * std::numbers::pi / 180.0 : 0.0;
}

/// How far an angle lies beyond the nearest axis, radians.
inline double OffAxis(double angleRad) {
    return std::remainder(angleRad, 0.5 * std::numbers::pi);
}

/// Unit vector of the axis that a direction lies within an angle of, if any.
inline std::optional<Point> AxisNear(const Point& direction, double withinRad) {
    if (!(std::fabs(OffAxis(std::atan2(direction.y, direction.x))) <= withinRad))
        return std::nullopt;
    return std::fabs(direction.x) > std::fabs(direction.y) ? Point(direction.x < 0.0 ? -1.0 : 1.0, 0.0)
                                                           : Point(0.0, direction.y < 0.0 ? -1.0 : 1.0);
}

} // namespace Tessera::Geometry
