#include "tessera/dimension/internal/DimensionKinds.h"

#include "tessera/dimension/HorizontalDimension.h"
#include "tessera/dimension/LinearDimension.h"
#include "tessera/dimension/VerticalDimension.h"
#include "tessera/geometry/Line.h"

// The one place that leads from a DimensionType_e to a class.

namespace Tessera::Dimension {

using Geometry::Curve;
using Geometry::Line;

DimensionBase* DimensionBase::CreateDimensionByType(DimensionType_e type) {
    switch (type) {
    case Length:
        return new LengthDimension();
    case Horizontal:
        return new HorizontalDimension();
    case Vertical:
        return new VerticalDimension();
    case Linear:
        return new LinearDimension();
    default:
        return nullptr;
    }
}

DimensionBase* DimensionBase::CreateDimensionByType(DimensionType_e type, Curve* curve,
                                                    double textHeightOffset, double fontHeight) {
    switch (type) {
    case Length:
        return new LengthDimension(static_cast<Line*>(curve), textHeightOffset, fontHeight);
    case Horizontal:
        return new HorizontalDimension(static_cast<Line*>(curve), textHeightOffset, fontHeight);
    case Vertical:
        return new VerticalDimension(static_cast<Line*>(curve), textHeightOffset, fontHeight);
    default:
        return nullptr;
    }
}

double DimensionBase::GetDisplayedValue() const {
    return GetAnnotation();
}

double DimensionBase::GetTextOffset() const {
    return GetTextHeightOffset();
}

const Geometry::Point* FindLeaderEnd(const DimensionBase& /*dim*/) {
    return nullptr;
}

} // namespace Tessera::Dimension
