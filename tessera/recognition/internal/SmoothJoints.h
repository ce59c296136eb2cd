// SmoothJoints - joints of a chain at which the pen did not turn.
#pragma once

#include "tessera/recognition/internal/ChainSearch.h"

namespace Tessera::Geometry {

enum class JointSight {
    Corner,  ///< the ink turns here
    Tangent, ///< the fits run on into each other within the angle that a hand keeps
    Bend     ///< the fits enclose an angle, but the ink only bends: no chain of these pieces was meant
};

/// How the joint between two neighbours looks in the ink.
JointSight LookAtJoint(const PricedPath& ink, const ChainPiece& before, const ChainPiece& after);

/// Of an open chain: pieces beside a bend become arcs (or lines) where that makes the bend smoother and costs
/// no more than the bend did.
void BendPieces(const PricedPath& ink, Chain& chain);

} // namespace Tessera::Geometry
