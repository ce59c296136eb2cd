// CurveType_e - kinds of curves; the values are the form codes of the records and an order of preference.
#pragma once

#include <cstdint>

namespace Tessera::Geometry {

enum CurveType_e : std::int32_t {
    CurveType_Line = 3,
    CurveType_Arc = 5,
    CurveType_Ellipse = 6,
    CurveType_Spline = 9
};

} // namespace Tessera::Geometry
