// HostServices - the one table through which the library reaches its host's own libraries, by role.
//
// Every function takes the table's context first. Positions, blocks and definitions are borrowed for the
// call. Status words start at 0; a service writes another value when it fails; the poly-line entry never
// looks at them. Services that return a result code fail with a negative one; they change nothing then and
// leave it to the library to report. The library runs on the host's modelling thread: install the table
// there, before the first entry is called.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tessera/core/Export.h"
#include "tessera/host/HostElement.h"
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

    // All that follows serves the ink entry alone: a table may end here, and any of it may be null, and then
    // that entry fails with 0x80004003.

    // 2D geometry service: each makes one element and tells its identifier
    std::int32_t (*HCreateLine2d)(void* context, HostDocument* document, const tagGPosition2d* start,
                                  const tagGPosition2d* end, HostElementId* made);
    std::int32_t (*HCreateArc2d)(void* context, HostDocument* document, const tagGPosition2d* start,
                                 const tagGPosition2d* end, const tagGPosition2d* onArc, HostElementId* made);
    std::int32_t (*HCreateCircle2d)(void* context, HostDocument* document, const tagGPosition2d* centre,
                                    double radius, HostElementId* made);
    /// Axes by their end points.
    std::int32_t (*HCreateEllipse2d)(void* context, HostDocument* document, const tagGPosition2d* centre,
                                     const tagGPosition2d* firstAxis, const tagGPosition2d* secondAxis,
                                     HostElementId* made);
    /// From start to end in the sense of rotation that leads from the first axis to the second.
    std::int32_t (*HCreateEllipArc2d)(void* context, HostDocument* document, const tagGPosition2d* centre,
                                      const tagGPosition2d* firstAxis, const tagGPosition2d* secondAxis,
                                      const tagGPosition2d* start, const tagGPosition2d* end,
                                      HostElementId* made);
    std::int32_t (*HCreateBspCurve2dEx)(void* context, HostDocument* document, const HostElement2d* bspline,
                                        HostElementId* made);
    /// Four lines: line i ends at corner i, where line i + 1 starts.
    std::int32_t (*HCreateRectangle2d)(void* context, HostDocument* document, const tagGPosition2d corners[4],
                                       HostElementId made[4]);
    /// Gives the element `geometry->id` that geometry, of whatever kind; all else about it stays.
    std::int32_t (*HModifyElement2d)(void* context, HostDocument* document, const HostElement2d* geometry);
    /// Until the constraints are committed HRestoreElement2d can bring the element back as it was.
    std::int32_t (*HRemoveElement2d)(void* context, HostDocument* document, HostElementId element);
    std::int32_t (*HRestoreElement2d)(void* context, HostDocument* document, HostElementId element);

    // View conversions: device coordinates of the view and model coordinates, a similarity
    std::int32_t (*DCToModel)(void* context, HostDocument* document, const tagGPosition2d* device,
                              tagGPosition2d* model);
    std::int32_t (*ModelToDC)(void* context, HostDocument* document, const tagGPosition2d* model,
                              tagGPosition2d* device);

    // Preferences
    /// Whether relationships between elements are shown, and so wanted: 0 or 1.
    std::int32_t (*GetShowRelationship)(void* context, HostDocument* document, std::int32_t* isShown);
    /// Pick radius of the view, device units, above 0.
    std::int32_t (*GetToleranceZone)(void* context, HostDocument* document, double* zone);

    // Constraint helper
    std::int32_t (*createConstraint)(void* context, HostDocument* document,
                                     const HostConstraint2d* constraint, HostConstraintId* made);
    /// Every constraint that names `from` names `to` instead.
    std::int32_t (*retargetConstraint)(void* context, HostDocument* document,
                                       const HostConstraintMember* from, const HostConstraintMember* to);
    std::int32_t (*removeConstraint)(void* context, HostDocument* document, HostConstraintId constraint);
    /// The last step of a change: drops constraints on removed elements, and those that changed elements do
    /// not satisfy any more.
    std::int32_t (*commitConstraints)(void* context, HostDocument* document);

    // Locate helper
    /// Elements whose box, their centre included, meets the given one, in the order of their creation; at
    /// most `capacity` are written, *count tells how many there are.
    std::int32_t (*Locate)(void* context, HostDocument* document, const tagGPosition2d* lower,
                           const tagGPosition2d* upper, std::int32_t capacity, HostElementId* found,
                           std::int32_t* count);
    /// The element that Evaluate speaks of.
    std::int32_t (*SetTarget)(void* context, HostDocument* document, HostElementId element);
    std::int32_t (*Evaluate)(void* context, HostDocument* document, HostElement2d* geometry);
    std::int32_t (*Clear)(void* context, HostDocument* document);
};

/// Puts a copy of the table in force; null puts the built-in reference host back.
/// @return 0; 0x80004003 when a function other than the ones that may be null is missing, 0x80070057 when
///         `size` ends before HCreateLine2d. A refused table changes nothing.
TESSERA_API std::int32_t TesseraHost_InstallServices(const HostServices* services);

/// Tells the table of the built-in reference host, to be installed with some of its functions replaced. They
/// make no use of the context, which is null.
/// @param services [out] `size` set by the caller; no more than that is written, and `size` tells how much.
/// @return 0; 0x80004003 for a null pointer, 0x80070057 when `size` ends before HCreateLine2d.
TESSERA_API std::int32_t TesseraHost_AskReferenceServices(HostServices* services);

} // extern "C"
