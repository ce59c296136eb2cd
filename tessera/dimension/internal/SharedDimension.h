// SharedDimension - the dimension that curves carry already, for factories that make each only once.
#pragma once

#include <vector>

#include "tessera/geometry/Curve.h"

namespace Tessera::Dimension {

template <class Kind>
Kind* FirstOf(const std::vector<DimensionBase*>& listed) {
    for (DimensionBase* dim : listed)
        if (auto* kind = dynamic_cast<Kind*>(dim))
            return kind;
    return nullptr;
}

/// Measuring the curve and its partner, in either order; without a partner, measuring the curve alone.
template <class Kind>
Kind* FindShared(const Geometry::Curve& curve, Geometry::Curve* partner, DimensionType_e type) {
    std::vector<DimensionBase*> listed;
    curve.GetDimensionsOfType(partner, type, listed);
    return FirstOf<Kind>(listed);
}

} // namespace Tessera::Dimension
