// InkHypotheses - a chain, a round, a slot, a rounded box, a regular polygon, an elliptic arc, a
// free form and what the rules say, of which the ink is read as the one that describes it most briefly.
#pragma once

#include <span>

#include "tessera/recognition/InkInterpretation.h"
#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// Fills the whole reading.
///
/// The rules' breaks and kinds compete as a chain of their own, which wins a tie: they know how fast the pen
/// was. Without reduceInkCurveDeviation they are the answer, tidied; without changeCurveType they are where
/// the winner has a curve of a kind that they have not. Where the winner strays from the ink beyond what the
/// rules' tolerances and a hand's rounded corners explain, and the rules' curves do not, the rules' reading
/// is the answer.
void ReadByHypotheses(const InkStroke& ink, PricedPath& priced,
                      const SketchRecognizerPreferences& preferences, std::span<Curve* const> earlier,
                      InkReading& reading);

} // namespace Tessera::Geometry
