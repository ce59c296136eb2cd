// The form-specific data of a curve record, typed. The caller knows the form.
#pragma once

#include "tessera/kernel/CurveRecord.h"

namespace Tessera::Geometry {

inline EVC_line_s& LineData(const KC_CURVE_struct_s& c) {
    return *static_cast<EVC_line_s*>(c.data);
}
inline EVC_arc_s& ArcData(const KC_CURVE_struct_s& c) {
    return *static_cast<EVC_arc_s*>(c.data);
}
inline EVC_conic_s& ConicData(const KC_CURVE_struct_s& c) {
    return *static_cast<EVC_conic_s*>(c.data);
}
inline EVC_bcurve_s& BCurveData(const KC_CURVE_struct_s& c) {
    return *static_cast<EVC_bcurve_s*>(c.data);
}
inline BCURVE_DATA& Definition(const KC_CURVE_struct_s& c) {
    return *BCurveData(c).definition;
}

} // namespace Tessera::Geometry
