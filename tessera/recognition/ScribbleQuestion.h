// The scribble question as it is asked of real ink: a hand trembles and a device samples on a grid, and both
// add turns that no one meant. So the question is put to the stroke without its tremor, and a drawing that
// only looks like a scribble to the bare test (a star, an arrow drawn in one go, a circle drawn twice over)
// stays a drawing.
//
// Nothing in the answer depends on the place, the size or the sampling rate of the ink.
#pragma once

#include <memory>
#include <span>

#include "tessera/core/Export.h"
#include "tessera/geometry/Point.h"

namespace Tessera::Geometry {

class SketchRecognizerPreferences;
class Stroke;

/// The ink sampled again wherever the pen has moved on by a hundredth of the diagonal of the ink's box, from
/// its first to its last point; speeds are 0. This is the stroke to give to StrokeRecognizeScribble when
/// IsScribbleInk has said yes. Of ink longer than two hundred diagonals the walk takes the beginning. O(n).
/// The points must be finite.
TESSERA_API std::unique_ptr<Stroke> WithoutTremor(std::span<const Point> ink);

/// Whether a pen stroke is a scribble: StrokeIsScribbleShape holds for the stroke without its tremor, and
/// either the reversing legs run forth and back (every second one the same way) or the pen goes round,
/// corners not counted, by more than scribbleMinRotationAngle without just drawing one round shape over
/// again.
///
/// @param cuspCount [out] inner cusps of the stroke without its tremor, also when it is no scribble. May be
///                  null.
/// @return false also for fewer than two different points and with the doScribble preference off.
TESSERA_API bool IsScribbleInk(std::span<const Point> ink, const SketchRecognizerPreferences& preferences,
                               int* cuspCount = nullptr);

} // namespace Tessera::Geometry
