// AxisDimension - constructors and factories of HorizontalDimension and VerticalDimension, which differ in
// their axis only. See ProjectedDimension for what is measured and how the sides are told apart.
#pragma once

#include "tessera/dimension/ProjectedDimension.h"

namespace Tessera::Dimension {

/// Base of the class Kind.
template <class Kind, DimensionType_e type>
class TESSERA_API AxisDimension : public ProjectedDimension {
public:
    /// Not bound; the text height offset is 15.
    AxisDimension() : ProjectedDimension(kAxis) {}
    /// Bound to the curves and listed by each; the text height offset is 0.75 font heights unless given.
    AxisDimension(Geometry::Line* line, double fontHeight);
    AxisDimension(Geometry::Line* line, double textHeightOffset, double fontHeight);
    AxisDimension(Geometry::Line* line, Geometry::Arc* arc, double textHeightOffset, double fontHeight);
    AxisDimension(Geometry::Arc* first, Geometry::Arc* second, double textHeightOffset, double fontHeight);

    /// The dimension of this kind that these curves carry already, in either order, else a new one (caller
    /// deletes); null when a curve is null.
    static Kind* MakeDimension(Geometry::Line* line, double fontHeight);
    static Kind* MakeDimension(Geometry::Line* line, Geometry::Arc* arc, double textHeightOffset,
                               double fontHeight);
    static Kind* MakeDimension(Geometry::Arc* first, Geometry::Arc* second, double textHeightOffset,
                               double fontHeight);

    DimensionType_e GetType() const override { return type; }

private:
    static constexpr Axis kAxis = type == Horizontal ? Axis::X : Axis::Y;
};

class TESSERA_API HorizontalDimension;
class TESSERA_API VerticalDimension;
extern template class AxisDimension<HorizontalDimension, Horizontal>;
extern template class AxisDimension<VerticalDimension, Vertical>;

} // namespace Tessera::Dimension
