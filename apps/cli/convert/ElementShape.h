// Elements of a host's document as the tool's own values.
#pragma once

#include "apps/cli/prepare/InkPreparation.h"
#include "apps/cli/recognize/RecognizedDrawing.h"
#include "tessera/host/HostElement.h"

namespace Tessera::Tool {

/// @param element of a document, in the frame's working units. Arcs that run clockwise have an end angle
/// below
///                the start angle.
CurveShape ShapeOf(const HostElement2d& element, const WorkingFrame& frame);

} // namespace Tessera::Tool
