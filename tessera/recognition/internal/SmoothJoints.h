// SmoothJoints - joints of a chain at which the pen did not turn.
#pragma once

#include "tessera/recognition/internal/ChainSearch.h"

namespace Tessera::Geometry {

/// How the joint between two neighbours looks in the ink; searched joints keep what they were found to be.
JointSight LookAtJoint(const PricedPath& ink, const ChainPiece& before, const ChainPiece& after);

} // namespace Tessera::Geometry
