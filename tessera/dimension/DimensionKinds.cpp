#include "tessera/dimension/internal/DimensionKinds.h"

// The one place that leads from a DimensionType_e to a class.

namespace Tessera::Dimension {

DimensionBase* DimensionBase::CreateDimensionByType(DimensionType_e type) {
    switch (type) {
    default:
        return nullptr;
    }
}

DimensionBase* DimensionBase::CreateDimensionByType(DimensionType_e type, Geometry::Curve* /*curve*/,
                                                    double /*textHeightOffset*/, double /*fontHeight*/) {
    switch (type) {
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
