#include "tessera/recognition/internal/PathLengths.h"

#include <cmath>

namespace Tessera::Geometry {

void SumPathLengths(std::span<const StrokePoint> pts, std::vector<double>& lengthTo) {
    lengthTo.clear();
    lengthTo.reserve(pts.size());
    double length = 0.0;
    for (std::size_t i = 0; i < pts.size(); ++i) {
        if (i > 0)
            length += std::sqrt(pts[i].Distance2(pts[i - 1]));
        lengthTo.push_back(length);
    }
}

} // namespace Tessera::Geometry
