// Measurements on strokes.
#include "tessera/core/NumericHelpers.h"
#include "tessera/strokes/Stroke.h"

#include <algorithm>

namespace Tessera::Geometry {

bool Stroke::IsInPolygon(int n, double* xs, double* ys) {
    return std::all_of(points_.begin(), points_.end(), [&](const StrokePoint& point) {
        return Core::PointInPolygon(point.x, point.y, n, xs, ys);
    });
}

bool Stroke::IsCrossPolygon(int n, double* xs, double* ys) {
    return std::any_of(points_.begin(), points_.end(), [&](const StrokePoint& point) {
        return Core::PointInPolygon(point.x, point.y, n, xs, ys);
    });
}

} // namespace Tessera::Geometry
