// LinkedRing - a linked run that goes round and closes on itself.
#pragma once

#include "tessera/recognition/internal/LinkedRun.h"

namespace Tessera::Geometry {

/// Fits a run that goes round to the ink and closes it; directions with a target meet it. It starts from an
/// open fit; one of more than some thirty links is closed as that left it. False, and the run undefined, when
/// it cannot close.
bool FitRing(const PricedPath& ink, LinkedRun& run);

/// Makes the end of a run meet its start in place and heading, and its lines their targets, to the last
/// digit, with the least change of lengths and curvatures by how far they move what follows; the start slides
/// along its link. False, and the run undefined, when it cannot close.
bool CloseUp(LinkedRun& run);

} // namespace Tessera::Geometry
