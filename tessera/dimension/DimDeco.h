// DimDeco - the decoration records of dimensions: numbered points from which the host draws extension lines,
// dimension lines or arcs, leaders and arrowheads. Each update of a dimension makes new ones.
//
// Units  model units. What each point is for stands with the dimension that builds the record.
#pragma once

#include <cstdint>
#include <vector>

#include "tessera/core/Export.h"
#include "tessera/geometry/Point.h"

namespace Tessera::Dimension {

class TESSERA_API DimDeco {
public:
    std::vector<Geometry::Point>& GetPoints() { return points_; }
    const std::vector<Geometry::Point>& GetPoints() const { return points_; }

private:
    std::vector<Geometry::Point> points_;
};

/// One end of a length, horizontal, vertical or linear dimension:
/// 0 inner end of the dimension line, 1 arrow tip, 2 and 3 ends of the extension line, 4 to 7 the closed
/// arrowhead (tip, corner, corner, tip), 8 half a letter from the tip towards the measured geometry.
class TESSERA_API LengthDimDeco : public DimDeco {
public:
    /// Indices of the extension line's ends in the list; -1 until the points are built.
    int GetExtensionStartIndex() const { return extensionStartIndex_; }
    int GetExtensionEndIndex() const { return extensionEndIndex_; }
    void SetExtensionIndices(int start, int end) {
        extensionStartIndex_ = start;
        extensionEndIndex_ = end;
    }
    int GetExtensionCount() const { return extensionCount_; }

private:
    std::int32_t extensionStartIndex_ = -1;
    std::int32_t extensionEndIndex_ = -1;
    std::int32_t extensionCount_ = 1;
};

/// One end of an angular dimension; point 4 is the reference point of that end.
class TESSERA_API AngularDimDeco : public DimDeco {};

/// The leader of a radial dimension; point 1 is where it meets the arc.
class TESSERA_API RadialDimDeco : public DimDeco {};

} // namespace Tessera::Dimension
