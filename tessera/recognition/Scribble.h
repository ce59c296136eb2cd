// Scribbles: the gesture of scratching back and forth, or round and round, over something to erase it.
//
// Both functions have C linkage; no exception leaves them.
#pragma once

#include "tessera/core/Export.h"

namespace Tessera::Geometry {

class Curve;
class SketchRecognizerPreferences;
class Stroke;

extern "C" {

/// Whether a stroke is a scribble: enough consecutive legs that reverse, or enough turning in all.
/// @param cuspCount [out] inner cusps of the stroke, also when it is no scribble. May be null.
/// @return false also for a null stroke or null preferences.
TESSERA_API bool StrokeIsScribbleShape(Stroke* stroke, SketchRecognizerPreferences* prefs, int* cuspCount);

/// What a scribble erases. The region under a scribble is the band between its consecutive legs, at least
/// the minimum spacing wide; for a round scribble what each of its turns encloses.
///
/// A curve is hit when some of it lies under the region, and then erased when at least 0.75 of its length
/// does. Between 0.25 and 0.75 it is trimmed, if the scribbleOverCurve preference allows; below that it is
/// hit but left alone. An end of a trimmed range moves to an intersection with another of the curves that
/// lies within the trim tolerance along the curve.
///
/// Output arrays come from SM_alloc, are null when their count is 0, and are freed by the caller with
/// SM_free.
///
/// @param curves     curveCount curves, borrowed; null ones are passed over.
/// @param hitIds     [out] identifiers of the curves hit, in the order of `curves`.
/// @param erasedIds  [out] of those erased.
/// @param trimIds    [out] trimCount identifiers, one for each trimmed range; a curve may come several times.
/// @param trimRanges [out] 2 trimCount parameters of these curves, start below end; a range across the seam
///                   of a closed arc or ellipse ends beyond the upper limit.
/// @param cusps      [out] cuspCount indices of the stroke's inner cusps.
/// @param status     [out] 0; 1 for a null argument or when memory runs out, with every output empty.
/// @return 1 for a scribble; 0 for none (also with the doScribble preference off), with no curve reported.
TESSERA_API int StrokeRecognizeScribble(Stroke* stroke, SketchRecognizerPreferences* prefs, int curveCount,
                                        Curve** curves, int* hitCount, int** hitIds, int* erasedCount,
                                        int** erasedIds, int* trimCount, int** trimIds, double** trimRanges,
                                        int* cuspCount, int** cusps, int* status);

} // extern "C"

} // namespace Tessera::Geometry
