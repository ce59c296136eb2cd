// What a box does with pen samples.
#include "tessera/strokes/StrokePoint.h"

#include "tessera/geometry/XYBox.h"

namespace Tessera::Geometry {

XYBox::XYBox(const std::vector<StrokePoint>& points) {
    if (points.empty()) {
        return;
    }
    min = max = points.front();
    for (const StrokePoint& point : points) {
        Merge(point);
    }
}

} // namespace Tessera::Geometry
