// MoveCurves - what a typed value does to the curves of a dimension. Each curve reports its own change.
#pragma once

#include "tessera/geometry/Line.h"

namespace Tessera::Dimension {

void MoveLineEnds(Geometry::Line& line, const Geometry::Vector& startShift, const Geometry::Vector& endShift);

void Translate(Geometry::Curve& curve, const Geometry::Vector& shift);

/// Counter-clockwise.
void Turn(Geometry::Curve& curve, const Geometry::Point& centre, double angleRad);

/// The curve exists and has geometry.
inline bool HasRecord(const Geometry::Curve* curve) {
    return curve != nullptr && curve->AskCurveData() != nullptr;
}

} // namespace Tessera::Dimension
