// Constraints that a recognised drawing was meant to satisfy, and the geometry that does.
#pragma once

#include <cstdint>
#include <string>

#include "apps/cli/recognize/Sketch.h"
#include "tessera/recognition/ConstraintInference.h"

namespace Tessera::Tool {

/// "horizontal,tangent" as bits of the kinds, "all" for every kind.
///
/// @throw std::invalid_argument with a message for a name that is none.
std::uint32_t ParseConstraintKinds(const std::string& names);

/// The names of all kinds, for help and messages.
std::string ListConstraintKinds();

/// Infers constraints of the kinds among all curves of the sketch, which take the geometry that satisfies
/// them. Ends that are joined stay joined whatever the kinds.
void ConstrainSketch(std::uint32_t kinds, Sketch& sketch, RecognizedDrawing& drawing);

} // namespace Tessera::Tool
