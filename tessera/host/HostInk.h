// What ConvertInkingStrokeToGeometry takes and gives. Plain data with a fixed layout; set every `size` to the
// size of its struct, the rest may be zero where nothing else is said.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tessera/core/Export.h"
#include "tessera/host/HostElement.h"

namespace Tessera::Geometry {
class SketchRecognizerPreferences;
}

/// One pen stroke, borrowed for the call.
struct HostInkStroke {
    std::size_t size;
    std::int32_t pointCount;
    std::int32_t reserved;
    const tagGPosition2d* points; ///< pointCount, device coordinates of the document's view
    const double* times;          ///< pointCount time stamps, not descending, in any unit; null when unknown
};

/// Whether a stroke gets constraints.
enum HostInkRelationships : std::int32_t {
    kHostInkAsShown = 0, ///< when the host shows relationships (GetShowRelationship)
    kHostInkNever = 1,
    kHostInkAlways = 2
};

struct HostInkOptions {
    std::size_t size;
    /// Borrowed; null: the defaults. The zoom factor is taken from the view in either case.
    const Tessera::Geometry::SketchRecognizerPreferences* preferences;
    std::int32_t relationships;      ///< HostInkRelationships
    std::uint32_t excludedRelations; ///< bit k: no constraint of HostConstraintKind k
    double toleranceZone;            ///< device units; 0: the host's GetToleranceZone
};

enum HostInkOutcome : std::int32_t {
    kHostInkNothing = 0,
    kHostInkScribble = 1,  ///< elements erased and trimmed
    kHostInkCurves = 2,    ///< one element for each curve
    kHostInkRectangle = 3, ///< four lines
    kHostInkRetrace = 4    ///< an element drawn over; it keeps its identifier
};

/// What became of a stroke. Every array belongs to the result; null when its count is 0.
struct HostInkResult {
    std::size_t size;
    std::int32_t outcome; ///< HostInkOutcome
    std::int32_t shape;   ///< Tessera::Geometry::InkShape
    std::int32_t elementCount;
    std::int32_t constraintCount;
    std::int32_t erasedCount;
    std::int32_t trimmedCount;
    HostElementId* elements;       ///< made, in drawing order; of a scribble the further pieces of trimmed
                                   ///< elements; of a retrace the element drawn over
    HostConstraintId* constraints; ///< made, strongest first
    HostElementId* erased;
    HostElementId* trimmed; ///< shortened; each keeps its identifier for its first piece
};

/// Frees the arrays and zeroes all but the size. Null is accepted.
extern "C" TESSERA_API void TesseraHost_ReleaseInkResult(HostInkResult* result);
