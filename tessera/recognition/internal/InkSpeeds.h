// InkSpeeds - how fast the pen was at each sample.
#pragma once

#include <vector>

#include "tessera/recognition/InkInterpretation.h"

namespace Tessera::Geometry {

/// Speeds by Stroke::ComputeSpeed, scaled; all 0 when the times mean nothing.
std::vector<double> SpeedsOf(const InkStroke& ink, double scale);

} // namespace Tessera::Geometry
