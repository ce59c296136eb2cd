// VerticalDimension - the vertical extent of a line, of a line and an arc, or of two arcs, in a frame
// that can be turned. See AxisDimension for constructors and factories, ProjectedDimension for what is
// measured and how the sides are told apart.
#pragma once

#include "tessera/dimension/AxisDimension.h"

namespace Tessera::Dimension {

class TESSERA_API VerticalDimension : public AxisDimension<VerticalDimension, Vertical> {
public:
    using AxisDimension::AxisDimension;

    VerticalDimension* Copy() const override;

    /// M as a new line (caller deletes); null when there is nothing to measure.
    Geometry::Line* GetVerticalLineFromLine() const { return ComputeTempDimensionLine(); }
    /// Ends of the line, the left one across the measuring axis first; order is 1 when that is its start,
    /// else -1.
    void GetXorderPoints(const Geometry::Line* line, Geometry::Point& a, Geometry::Point& b,
                         int& order) const {
        OrderEnds(line, a, b, order);
    }
};

} // namespace Tessera::Dimension
