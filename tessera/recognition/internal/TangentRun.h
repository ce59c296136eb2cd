// TangentRun - lines and arcs that run on into each other, fitted to the ink together so that they touch.
#pragma once

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// Fits each run of pieces with tangent joints as a whole, by least squares over what such a run is free in:
/// place and direction of its start, the length of each piece and the curvature of each arc. Carriers and
/// `meet` of the pieces are then exact: neighbours touch in `meet`. Lines within an angle of an axis of the
/// plane get the axis' direction, unless that pulls the run off its ink. A run with bends is tried too: a
/// coarse break may have hidden that its pieces touch. A run that the ink defies becomes free-form: its
/// joints become bends. A ring that is one such run, a line in it, is closed as a whole where it can be; a
/// chain closed at its seam is fitted open.
///
/// @param snapRad  0: no line is turned.
void FitTangentRuns(const PricedPath& ink, double snapRad, Chain& chain);

/// What FitTangentRuns makes of a chain that has a corner instead of the tangent joint before a piece: only
/// the run that it cuts is fitted anew. No line is turned.
///
/// @param found   the chain before any fit.
/// @param fitted  the same after FitTangentRuns.
/// @return pieces of that run.
std::size_t CutTangentRun(const PricedPath& ink, const Chain& found, std::size_t piece, Chain& fitted);

} // namespace Tessera::Geometry
