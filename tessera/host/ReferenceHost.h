// The built-in reference host: the services over the library's own kernel, so that the entries work, and can
// be tested and drawn, without a CAD system. In force until another table is installed.
//
// Parameters of every curve run from 0 (start) to 1 (end); circles and ellipses take one turn.
#pragma once

#include <cstdint>

#include "tessera/core/Export.h"
#include "tessera/host/HostGeometry.h"
#include "tessera/kernel/CurveRecord.h"

// What the reference host writes into the blocks. Circles and ellipses: HostEllipseBlock, whose axis is the
// vector of the first radius and whose ratio is second to first radius.
struct ReferenceLineBlock {
    double startX, startY;
    double endX, endY;
};
struct ReferenceArcBlock {
    double centreX, centreY;
    double radius;
    double startAngle; ///< radians
    double sweep;      ///< radians, negative when clockwise from start to end
};
struct ReferenceBSplineBlock {
    std::int32_t degree;
    std::int32_t poleCount; ///< as given; a periodic definition holds its wrapped poles besides
    std::int32_t periodic;
    KC_CURVE_struct_s* definition; ///< owned by the block
};

extern "C" {

/// Releases the handle's block with all it owns and empties the handle. Null and empty handles are accepted.
/// Only for handles that were made while the reference host was in force.
TESSERA_API void TesseraHost_ReleaseHandle(HostGeometryHandle* handle);

/// Position at parameter t in [0, 1].
/// @return 0; 0x80004003 for a null pointer or an empty handle, 0x80070057 for an unfilled handle or a t
///         outside [0, 1], with the position untouched.
TESSERA_API std::int32_t TesseraHost_EvaluateHandle(const HostGeometryHandle* handle, double t,
                                                    tagGPosition2d* position);

/// How many times the library has announced itself to the reference host.
TESSERA_API std::int32_t TesseraHost_AskRegistrationCount(void);

} // extern "C"
