// VerticalDimension - the vertical extent of a line, of a line and an arc, or of two arcs, in a frame that
// can be turned. See ProjectedDimension for what is measured and how the sides are told apart.
#pragma once

#include "tessera/dimension/ProjectedDimension.h"

namespace Tessera::Dimension {

class TESSERA_API VerticalDimension : public ProjectedDimension {
public:
    /// Not bound; the text height offset is 15.
    VerticalDimension();
    /// Bound to the curves and listed by each; the text height offset is 0.75 font heights unless given.
    VerticalDimension(Geometry::Line* line, double fontHeight);
    VerticalDimension(Geometry::Line* line, double textHeightOffset, double fontHeight);
    VerticalDimension(Geometry::Line* line, Geometry::Arc* arc, double textHeightOffset, double fontHeight);
    VerticalDimension(Geometry::Arc* first, Geometry::Arc* second, double textHeightOffset,
                      double fontHeight);
    VerticalDimension(const VerticalDimension& other) = default;
    ~VerticalDimension() override;

    /// The vertical dimension that these curves carry already, in either order, else a new one (caller
    /// deletes); null when a curve is null.
    static VerticalDimension* MakeDimension(Geometry::Line* line, double fontHeight);
    static VerticalDimension* MakeDimension(Geometry::Line* line, Geometry::Arc* arc, double textHeightOffset,
                                            double fontHeight);
    static VerticalDimension* MakeDimension(Geometry::Arc* first, Geometry::Arc* second,
                                            double textHeightOffset, double fontHeight);

    VerticalDimension* Copy() const override;
    DimensionType_e GetType() const override { return Vertical; }

    /// M as a new line (caller deletes); null when there is nothing to measure.
    Geometry::Line* GetVerticalLineFromLine() const;
    /// Ends of the line, the left one across the measuring axis first; order is 1 when that is its start,
    /// else -1.
    void GetXorderPoints(const Geometry::Line* line, Geometry::Point& a, Geometry::Point& b,
                         int& order) const;
};

} // namespace Tessera::Dimension
