// SharedDimension - the dimension that curves carry already, for factories that make each only once.
#pragma once

#include <type_traits>
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

/// The dimension of these two curves, in either order, else a new one from the constructor that takes both
/// and the rest; null when a curve is null.
template <class Kind, class First, class Second, class... Rest>
Kind* FindOrMake(DimensionType_e type, First* first, Second* second, Rest... rest) {
    if (first == nullptr || second == nullptr)
        return nullptr;
    std::vector<DimensionBase*> listed;
    first->GetDimensionsOfType(const_cast<std::remove_const_t<Second>*>(second), type, listed);
    Kind* known = FirstOf<Kind>(listed);
    return known != nullptr ? known : new Kind(first, second, rest...);
}

/// The dimension of the curve alone, else a new one from the constructor that takes it and the font height.
template <class Kind, class Only>
Kind* FindOrMakeAlone(DimensionType_e type, Only* curve, double fontHeight) {
    if (curve == nullptr)
        return nullptr;
    std::vector<DimensionBase*> listed;
    curve->GetDimensionsOfType(nullptr, type, listed);
    Kind* known = FirstOf<Kind>(listed);
    return known != nullptr ? known : new Kind(curve, fontHeight);
}

} // namespace Tessera::Dimension
