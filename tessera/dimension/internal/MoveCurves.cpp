#include "tessera/dimension/internal/MoveCurves.h"

#include <cmath>

#include "tessera/kernel/internal/RecordPtr.h"

namespace Tessera::Dimension {

using Geometry::Point;
using Geometry::Vector;

void MoveLineEnds(Geometry::Line& line, const Vector& startShift, const Vector& endShift) {
    const Point start = line.GetStart().AffineCombine(1.0, startShift);
    const Point end = line.GetEnd().AffineCombine(1.0, endShift);
    const double from[3] = {start.x, start.y, 0.0};
    const double to[3] = {end.x, end.y, 0.0};
    // A fresh record instead of SetLimits, which would project the ends back onto the old line.
    RecordPtr record(ev03p0(from, to));
    if (record == nullptr)
        return;
    line.SetCurveData(record.get());
    static_cast<void>(record.release()); // only now does the line own it
    line.UpdateBoundingBox();
    line.UpdateCachedBasePoint();
}

void Translate(Geometry::Curve& curve, const Vector& shift) {
    double m[3][3] = {{1.0, 0.0, shift.x}, {0.0, 1.0, shift.y}, {0.0, 0.0, 1.0}};
    curve.Transform(m);
}

void Turn(Geometry::Curve& curve, const Point& centre, double angleRad) {
    const double c = std::cos(angleRad);
    const double s = std::sin(angleRad);
    double m[3][3] = {{c, -s, centre.x - c * centre.x + s * centre.y},
                      {s, c, centre.y - s * centre.x - c * centre.y},
                      {0.0, 0.0, 1.0}};
    curve.Transform(m);
}

} // namespace Tessera::Dimension
