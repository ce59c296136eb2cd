// DimensionKinds - answers that depend on the concrete kind of a dimension, where the base must know it.
#pragma once

#include "tessera/dimension/DimensionBase.h"

namespace Tessera::Dimension {

/// Outer end of a radial dimension's leader, borrowed until its next update; null for the other kinds and
/// without a decoration.
const Geometry::Point* FindLeaderEnd(const DimensionBase& dim);

} // namespace Tessera::Dimension
