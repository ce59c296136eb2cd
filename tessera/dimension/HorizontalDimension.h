// HorizontalDimension - the horizontal extent of a line, of a line and an arc, or of two arcs, in a frame
// that can be turned. See AxisDimension for constructors and factories, ProjectedDimension for what is
// measured and how the sides are told apart.
#pragma once

#include "tessera/dimension/AxisDimension.h"

namespace Tessera::Dimension {

class TESSERA_API HorizontalDimension : public AxisDimension<HorizontalDimension, Horizontal> {
public:
    using AxisDimension::AxisDimension;

    HorizontalDimension* Copy() const override;

    /// M as a new line (caller deletes); null when there is nothing to measure.
    Geometry::Line* GetHorizontalLineFromLine() const { return ComputeTempDimensionLine(); }
    /// Ends of the line, the lower one across the measuring axis first; order is 1 when that is its start,
    /// else -1.
    void GetYorderPoints(const Geometry::Line* line, Geometry::Point& a, Geometry::Point& b,
                         int& order) const {
        OrderEnds(line, a, b, order);
    }
};

} // namespace Tessera::Dimension
