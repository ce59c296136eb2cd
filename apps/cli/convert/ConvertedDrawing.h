// What a host's document holds after a drawing's ink has been put into it, free of the document.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/cli/recognize/RecognizedDrawing.h"
#include "tessera/host/HostInk.h"

namespace Tessera::Tool {

/// What the entry answered for a stroke.
struct ConvertedStroke {
    int index = 0;
    int points = 0;
    std::optional<std::int32_t> code; ///< nothing for a stroke that was not passed to it
    HostInkOutcome outcome = kHostInkNothing;
    Geometry::InkShape shape = Geometry::InkShape::Nothing;
    std::vector<HostElementId> elements; ///< as HostInkResult, also the next three
    std::vector<HostConstraintId> constraints;
    std::vector<HostElementId> erased;
    std::vector<HostElementId> trimmed;
    std::string problem; ///< why the stroke could not be used; empty when it could
};

/// Arcs run from start to end, clockwise where endAngle is below startAngle.
struct ConvertedElement {
    HostElementId id = 0;
    CurveShape shape; ///< ink units
};

struct ConvertedDrawing { // NOLINT(bugprone-exception-escape): moving a JSON value does not throw
    nlohmann::json id;
    std::vector<ConvertedStroke> strokes;
    std::vector<ConvertedElement> elements;    ///< in the order of their creation
    std::vector<HostConstraint2d> constraints; ///< likewise
    std::string problem;                       ///< as Drawing
};

/// In the order of HostInkOutcome.
inline constexpr const char* kOutcomeNames[] = {"nothing", "scribble", "curves", "rectangle", "retrace"};

} // namespace Tessera::Tool
