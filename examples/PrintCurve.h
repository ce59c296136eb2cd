// Curves as SVG path data, one after the other.
#pragma once

#include <cstdio>
#include <numbers>

#include "tessera/Tessera.h"

namespace Tessera::Examples {

/// A line, or an arc or ellipse in two halves: SVG draws no full turn.
inline void PrintCurve(const Geometry::Curve& curve) {
    double radii[2] = {0.0, 0.0};
    double rest[5] = {}; // centre, rotation, angles
    if (curve.GetType() == Geometry::CurveType_Arc) {
        radii[0] = radii[1] = static_cast<const Geometry::Arc&>(curve).GetRadius();
    } else if (curve.GetType() == Geometry::CurveType_Ellipse) {
        static_cast<const Geometry::Ellipse&>(curve).AskEllipseData(rest, radii, &rest[2], &rest[3],
                                                                    &rest[4]);
    }
    const double turnDeg = rest[2] * 180.0 / std::numbers::pi;
    std::printf("M%.1f %.1f", curve.GetStart().x, curve.GetStart().y);
    if (radii[0] > 0.0) {
        std::printf("A%.1f %.1f %.1f 0 1 %.1f %.1f", radii[0], radii[1], turnDeg, curve.GetMidPoint().x,
                    curve.GetMidPoint().y);
        std::printf("A%.1f %.1f %.1f 0 1 %.1f %.1f", radii[0], radii[1], turnDeg, curve.GetEnd().x,
                    curve.GetEnd().y);
    } else {
        std::printf("L%.1f %.1f", curve.GetEnd().x, curve.GetEnd().y);
    }
}

} // namespace Tessera::Examples
