// Lengths along the poly-line through a stroke's samples, summed once and asked in constant time.
#pragma once

#include <span>
#include <vector>

#include "tessera/strokes/StrokePoint.h"

namespace Tessera::Geometry {

/// Overwrites `lengthTo` with the length from the first sample to each sample.
void SumPathLengths(std::span<const StrokePoint> pts, std::vector<double>& lengthTo);

/// Length from sample `first` to sample `last` - 1, given the sums of SumPathLengths: the segment that ends
/// at `last` is left out. 0 unless first + 1 < last.
inline double PieceLength(std::span<const double> lengthTo, int first, int last) {
    if (first + 1 >= last)
        return 0.0;
    return lengthTo[static_cast<std::size_t>(last) - 1] - lengthTo[static_cast<std::size_t>(first)];
}

} // namespace Tessera::Geometry
