// RulesReading - what the recogniser's rules alone make of a stroke, at the size at which their tolerances
// fit.
#pragma once

#include "tessera/recognition/InkInterpretation.h"

namespace Tessera::Geometry {

/// Fills curves (with deviations and the samples they stand for) and shape; joins nothing.
///
/// The rules' tolerances suit a drawing whose box has a diagonal of some forty-five units; the ink is brought
/// to that size and the curves are mapped back.
void ReadByRules(const InkStroke& ink, const SketchRecognizerPreferences& preferences, InkReading& reading);

/// Largest gap between the ends of closed ink at that size, as a share of the ink's length.
double ClosingShare(const InkStroke& ink, double length, const SketchRecognizerPreferences& preferences);

} // namespace Tessera::Geometry
