// InkDeviations - how far the ink lies from the curves that a reading makes of it.
#pragma once

#include <span>
#include <vector>

#include "tessera/kernel/VexMath.h"
#include "tessera/recognition/InkInterpretation.h"

namespace Tessera::Geometry {

/// The samples that a curve stands for.
void TakeInk(std::span<const InkSample> samples, const InterpretedCurve& made,
             std::vector<Vex::Math::Point2>& pts);

/// The largest distance from a curve of those of its samples that lie from `first` to `last`; 0 without any.
double DeviationAmong(std::span<const InkSample> samples, const InterpretedCurve& made, int first, int last);

/// Moves the breaks between curves to the samples nearest to their joints, then fills the largest distance of
/// each curve's samples from it, and the spread of the hand.
void MeasureDeviations(std::span<const InkSample> samples, InkReading& reading);

} // namespace Tessera::Geometry
