// LinkedRing - a linked run that goes round and closes on itself.
#pragma once

#include "tessera/recognition/internal/LinkedRun.h"

namespace Tessera::Geometry {

/// Fits a run that goes round to the ink and closes it; directions with a target meet it. It starts from an
/// open fit and begins with a line. False, and the run undefined, when it cannot close, and for runs of more
/// than some thirty links.
bool FitRing(const PricedPath& ink, LinkedRun& run);

/// Makes the end of a run meet its start in place and heading, and its lines their targets, to the last
/// digit, with the least change of lengths and curvatures by how far they move what follows; the start slides
/// along its line. False, and the run undefined, when it does not begin with a line or cannot close.
bool CloseUp(LinkedRun& run);

} // namespace Tessera::Geometry
