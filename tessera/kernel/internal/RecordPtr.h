// Owners for curve records and B-curve definitions.
#pragma once

#include <memory>

#include "tessera/kernel/CurveRecord.h"

struct RecordRelease {
    void operator()(KC_CURVE_struct_s* c) const { evcrvf(c); }
};
using RecordPtr = std::unique_ptr<KC_CURVE_struct_s, RecordRelease>;

struct BcurveDataRelease {
    void operator()(BCURVE_DATA* d) const { ev0952(d); }
};
using BcurveDataPtr = std::unique_ptr<BCURVE_DATA, BcurveDataRelease>;
