#include "tessera/dimension/AxisDimension.h"

#include "tessera/dimension/HorizontalDimension.h"
#include "tessera/dimension/VerticalDimension.h"
#include "tessera/dimension/internal/SharedDimension.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"

// Binding updates the dimension and enters it in the lists of its curves: nothing that these do may depend on
// more than this class, as the concrete one is not there yet.

namespace Tessera::Dimension {

using Geometry::Arc;
using Geometry::Line;

template <class Kind, DimensionType_e type>
AxisDimension<Kind, type>::AxisDimension(Line* line, double fontHeight)
    : AxisDimension(line, kHeightOffsetPerFontHeight * fontHeight, fontHeight) {}

template <class Kind, DimensionType_e type>
AxisDimension<Kind, type>::AxisDimension(Line* line, double textHeightOffset, double fontHeight)
    : ProjectedDimension(kAxis, line, nullptr, nullptr, textHeightOffset, fontHeight) {
    Bind();
}

template <class Kind, DimensionType_e type>
AxisDimension<Kind, type>::AxisDimension(Line* line, Arc* arc, double textHeightOffset, double fontHeight)
    : ProjectedDimension(kAxis, line, arc, nullptr, textHeightOffset, fontHeight) {
    Bind();
}

template <class Kind, DimensionType_e type>
AxisDimension<Kind, type>::AxisDimension(Arc* first, Arc* second, double textHeightOffset, double fontHeight)
    : ProjectedDimension(kAxis, nullptr, first, second, textHeightOffset, fontHeight) {
    Bind();
}

template <class Kind, DimensionType_e type>
Kind* AxisDimension<Kind, type>::MakeDimension(Line* line, double fontHeight) {
    return FindOrMakeAlone<Kind>(type, line, fontHeight);
}

template <class Kind, DimensionType_e type>
Kind* AxisDimension<Kind, type>::MakeDimension(Line* line, Arc* arc, double textHeightOffset,
                                               double fontHeight) {
    return FindOrMake<Kind>(type, line, arc, textHeightOffset, fontHeight);
}

template <class Kind, DimensionType_e type>
Kind* AxisDimension<Kind, type>::MakeDimension(Arc* first, Arc* second, double textHeightOffset,
                                               double fontHeight) {
    return FindOrMake<Kind>(type, first, second, textHeightOffset, fontHeight);
}

template class AxisDimension<HorizontalDimension, Horizontal>;
template class AxisDimension<VerticalDimension, Vertical>;

HorizontalDimension* HorizontalDimension::Copy() const {
    return new HorizontalDimension(*this);
}

VerticalDimension* VerticalDimension::Copy() const {
    return new VerticalDimension(*this);
}

} // namespace Tessera::Dimension
