// InkConversion - what the steps of the ink entry share. Model units.
//
// Operations return 0, or the code of the failure, which has been reported then.
#pragma once

#include <cstdint>
#include <vector>

#include "tessera/host/HostInk.h"
#include "tessera/host/internal/DocumentChange.h"
#include "tessera/host/internal/FFMGEOM.h"
#include "tessera/recognition/InkInterpretation.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"

namespace Tessera::Host {

/// A stroke and where it was drawn.
struct InkScene {
    HostDocument* document = nullptr;
    Geometry::InkStroke ink;
    Geometry::SketchRecognizerPreferences preferences; ///< with the zoom factor of the view
    double toleranceZone = 0.0;
    std::uint32_t relations = 0; ///< bit k: constraints of HostConstraintKind k are wanted
    // The elements around the stroke, in the order of their creation: as the host has them, and as curves.
    std::vector<ElementGeometry> elements;
    std::vector<ElementCurve> neighbours;
};

/// What a stroke did, as HostInkResult tells it.
struct InkOutcome {
    HostInkOutcome outcome = kHostInkNothing;
    std::vector<HostElementId> elements;
    std::vector<HostConstraintId> constraints;
    std::vector<HostElementId> erased;
    std::vector<HostElementId> trimmed;
};

/// Fills the scene from the host.
std::int32_t SetScene(const HostInkStroke& ink, HostDocument* document, const HostInkOptions& options,
                      InkScene& scene);

/// Creates what was read, with its constraints.
std::int32_t CreateReading(const InkScene& scene, Geometry::InkReading& reading, DocumentChange& change,
                           InkOutcome& outcome);
/// Gives the element that was drawn over the form of the reading's first curve.
std::int32_t RetraceElement(const InkScene& scene, const Geometry::InkReading& reading,
                            DocumentChange& change, InkOutcome& outcome);
/// Erases and trims the elements under a scribble.
std::int32_t EraseUnderScribble(const InkScene& scene, DocumentChange& change, InkOutcome& outcome);

} // namespace Tessera::Host
