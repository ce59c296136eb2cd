// HorizontalDimension - the horizontal extent of a line, of a line and an arc, or of two arcs, in a frame
// that can be turned. See ProjectedDimension for what is measured and how the sides are told apart.
#pragma once

#include "tessera/dimension/ProjectedDimension.h"

namespace Tessera::Dimension {

class TESSERA_API HorizontalDimension : public ProjectedDimension {
public:
    /// Not bound; the text height offset is 15.
    HorizontalDimension();
    /// Bound to the curves and listed by each; the text height offset is 0.75 font heights unless given.
    HorizontalDimension(Geometry::Line* line, double fontHeight);
    HorizontalDimension(Geometry::Line* line, double textHeightOffset, double fontHeight);
    HorizontalDimension(Geometry::Line* line, Geometry::Arc* arc, double textHeightOffset, double fontHeight);
    HorizontalDimension(Geometry::Arc* first, Geometry::Arc* second, double textHeightOffset,
                        double fontHeight);
    HorizontalDimension(const HorizontalDimension& other) = default;
    ~HorizontalDimension() override;

    /// The horizontal dimension that these curves carry already, in either order, else a new one (caller
    /// deletes); null when a curve is null.
    static HorizontalDimension* MakeDimension(Geometry::Line* line, double fontHeight);
    static HorizontalDimension* MakeDimension(Geometry::Line* line, Geometry::Arc* arc,
                                              double textHeightOffset, double fontHeight);
    static HorizontalDimension* MakeDimension(Geometry::Arc* first, Geometry::Arc* second,
                                              double textHeightOffset, double fontHeight);

    HorizontalDimension* Copy() const override;
    DimensionType_e GetType() const override { return Horizontal; }

    /// M as a new line (caller deletes); null when there is nothing to measure.
    Geometry::Line* GetHorizontalLineFromLine() const;
    /// Ends of the line, the lower one across the measuring axis first; order is 1 when that is its start,
    /// else -1.
    void GetYorderPoints(const Geometry::Line* line, Geometry::Point& a, Geometry::Point& b,
                         int& order) const;
};

} // namespace Tessera::Dimension
