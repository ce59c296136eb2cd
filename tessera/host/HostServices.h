// HostServices - the one table through which the library reaches its host's own libraries, by role.
//
// Every function takes the table's context first. Positions and blocks are borrowed for the call.
// Status words start at 0; a service writes another value when it fails; the entries never look at them.
// The library runs on the host's modelling thread: install the table there, before the first entry is called.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tessera/core/Export.h"
#include "tessera/host/HostGeometry.h"

extern "C" {

struct HostServices {
    std::size_t size; ///< sizeof(HostServices) of the program that filled the table
    void* context;    ///< handed to every function

    // Math library
    tagGPosition2d (*buildPosition2d)(void* context, double x, double y);
    tagGVector2d (*buildVector2d)(void* context, double x, double y);
    /// Signed angle from one vector to another, radians, counter-clockwise positive.
    double (*giveAngle)(void* context, const tagGVector2d* from, const tagGVector2d* to);

    // 2D geometry kernel
    void (*lineFromPositions)(void* context, void* block, const tagGPosition2d* start,
                              const tagGPosition2d* end, std::int32_t* status);
    void (*arcThroughPositions)(void* context, const tagGPosition2d* start, const tagGPosition2d* end,
                                const tagGPosition2d* onArc, void* block, std::int32_t* status);
    /// Clamped uniform knots are understood. The two further outputs are ignored and may be null.
    void (*bsplineFromPoles)(void* context, void* block, std::uint8_t degree, std::int32_t poleCount,
                             const tagGPosition2d* poles, std::int32_t periodic, void* output1,
                             void* output2);
    void (*projectOnCurve)(void* context, const HostGeometryHandle* curve, const tagGPosition2d* position,
                           double reserved, tagGPosition2d* foot, double* parameter, std::int32_t* status);
    /// The pieces are new handles; one that the service does not make stays a handle with a null block.
    void (*splitCurve)(void* context, const HostGeometryHandle* curve, double parameter,
                       HostGeometryHandle* first, HostGeometryHandle* second, std::int32_t* status);
    /// Told when the library lets go of a handle that it made or got from a split and will not hand out;
    /// what becomes of the block is the host's business. May be null.
    void (*handleDropped)(void* context, HostGeometryHandle* handle);

    // Class library and error reporting
    /// The library announces itself once at load, and to each table installed later. May be null.
    void (*registerExtensionModule)(void* context, const char* moduleName);
    /// One call for each failure, where it is found. May be null.
    void (*HRerrEx)(void* context, std::int32_t code, const char* sourceFile, std::int32_t line,
                    const char* functionName);
};

/// Puts a copy of the table in force; null puts the built-in reference host back.
/// @return 0; 0x80004003 when a function other than the ones that may be null is missing, 0x80070057 when
///         `size` is smaller than this version of the table. A refused table changes nothing.
TESSERA_API std::int32_t TesseraHost_InstallServices(const HostServices* services);

} // extern "C"
