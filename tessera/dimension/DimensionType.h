// DimensionType_e - what a dimension measures.
#pragma once

#include <cstdint>

namespace Tessera::Dimension {

enum DimensionType_e : std::int32_t {
    Length = 1,
    Horizontal = 2,
    Vertical = 3,
    Radial = 4,
    Linear = 5,
    Angular = 6
};

} // namespace Tessera::Dimension
