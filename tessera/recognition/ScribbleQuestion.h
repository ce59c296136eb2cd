// The scribble question as it is asked of real ink: a hand trembles and a device samples on a grid, and both
// add turns that no one meant. So the question is put to the stroke without its tremor, and a drawing that
// only looks like a scribble to the bare test (a star, an arrow drawn in one go, a circle drawn twice over)
// stays a drawing.
//
// Who erases covers: the legs lie close together, and there are many of them. Who draws a W, an M or the
// zigzag of a resistor opens them. So each reversal counts by how close its leg lies to the one before, from
// 1 where the pen runs back along it down to a half where they open by 50 degrees, and all of them must come
// to minNumCusps. With its default 3, a scribble takes five legs that open by 20 degrees, six that open by
// 35, seven that open by 45; four legs never are one.
//
// A leg is straight or a little bowed; one that strays from its chord by more than a fifth of it has a
// corner, is several sides of a poly-line, and counts for nothing. And who goes round and round bends, where
// a poly-line turns at its corners alone: a quarter of the turning that is asked for must lie off the
// corners, that is, where the ink turns by no more than 45 degrees within a twentieth of its box's diagonal.
//
// Who erases goes over ink again and again; who draws keeps clear of it. A spiral winds beside itself: ink
// that goes round and round is a scribble if a tenth of it lies over earlier ink, within a fortieth of the
// diagonal. The legs of a meander run side by side with a gap, where those of a scratch meet at a tip: a
// stroke with such a gap at more than three turns of five is a drawing.
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
/// either the reversing legs run forth and back (every second one the same way) and close together, or the
/// pen goes round by more than scribbleMinRotationAngle, and not at corners alone, without just drawing one
/// round shape over again.
///
/// @param cuspCount [out] inner cusps of the stroke without its tremor, also when it is no scribble. May be
///                  null.
/// @return false also for fewer than two different points and with the doScribble preference off.
TESSERA_API bool IsScribbleInk(std::span<const Point> ink, const SketchRecognizerPreferences& preferences,
                               int* cuspCount = nullptr);

} // namespace Tessera::Geometry
