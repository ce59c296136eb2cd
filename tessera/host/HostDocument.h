// HostDocument - the reference host's document: 2D elements and constraints in memory, seen through one view.
// It answers the services of the ink entry, for programs, tests and pages that have no CAD system.
//
// Ownership  made and deleted by the functions below; geometry that is read out is borrowed until the next
//            change of the document.
// Errors     0 or more for success; 0x80004003 null pointer, 0x80070057 unknown identifier, index out of
//            range or value out of range. Reported through HRerrEx; nothing is changed then.
// Order      elements and constraints are counted in the order of their creation.
#pragma once

#include <cstdint>

#include "tessera/core/Export.h"
#include "tessera/host/HostElement.h"

/// The view: model = origin + device / scale, with y turned over when isYDown.
struct HostView {
    tagGPosition2d origin; ///< model position of the device's (0, 0)
    double scale;          ///< device units in one model unit, above 0
    std::int32_t isYDown;  ///< 1: device y grows downwards
    std::int32_t reserved;
};

extern "C" {

/// Empty; view of scale 1 at the origin with y upwards, relationships shown, tolerance zone 10 device units.
/// Null when memory runs out.
TESSERA_API HostDocument* TesseraHost_CreateDocument(void);
/// Null is accepted.
TESSERA_API void TesseraHost_DeleteDocument(HostDocument* document);

TESSERA_API std::int32_t TesseraHost_SetView(HostDocument* document, const HostView* view);
/// @param toleranceZone device units, above 0.
TESSERA_API std::int32_t TesseraHost_SetPreferences(HostDocument* document, std::int32_t showRelationship,
                                                    double toleranceZone);

/// Makes the element that `geometry` describes; its id is not read.
TESSERA_API std::int32_t TesseraHost_CreateElement(HostDocument* document, const HostElement2d* geometry,
                                                   HostElementId* made);
/// With the constraints on it.
TESSERA_API std::int32_t TesseraHost_RemoveElement(HostDocument* document, HostElementId element);
/// Number of elements.
TESSERA_API std::int32_t TesseraHost_AskElementCount(const HostDocument* document);
TESSERA_API std::int32_t TesseraHost_AskElementAt(const HostDocument* document, std::int32_t index,
                                                  HostElement2d* geometry);
TESSERA_API std::int32_t TesseraHost_AskElement(const HostDocument* document, HostElementId element,
                                                HostElement2d* geometry);
/// Position at the fraction t in [0, 1] of the element's parameter range, from its start to its end.
TESSERA_API std::int32_t TesseraHost_EvaluateElement(const HostDocument* document, HostElementId element,
                                                     double t, tagGPosition2d* position);

/// Number of constraints.
TESSERA_API std::int32_t TesseraHost_AskConstraintCount(const HostDocument* document);
TESSERA_API std::int32_t TesseraHost_AskConstraintAt(const HostDocument* document, std::int32_t index,
                                                     HostConstraint2d* constraint);
/// How far the elements are from satisfying the constraint, as a distance in model units; what is an angle
/// counts with the shorter of the lengths it stands between.
TESSERA_API std::int32_t TesseraHost_AskConstraintError(const HostDocument* document,
                                                        HostConstraintId constraint, double* error);

} // extern "C"
