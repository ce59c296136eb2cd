// Curves of the library as the tool's own values in ink units, and back.
#pragma once

#include <memory>

#include "apps/cli/prepare/InkPreparation.h"
#include "apps/cli/recognize/RecognizedDrawing.h"
#include "tessera/geometry/Curve.h"

namespace Tessera::Tool {

/// @param curve  in the frame's working units.
CurveShape ShapeOf(const Geometry::Curve& curve, const WorkingFrame& frame);

/// In the frame's working units.
std::unique_ptr<Geometry::Curve> CurveOf(const CurveShape& shape, const WorkingFrame& frame);

} // namespace Tessera::Tool
