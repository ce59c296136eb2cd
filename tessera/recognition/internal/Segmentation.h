// Segmentation - finds the samples at which a pen stroke is cut: where the pen turned sharply and where it
// slowed down. A person who draws a corner does both.
//
// Breaks  ascending sample indices, appended to the list that the caller hands in.
// Cost    every pass is linear in the samples and allocates only its small lists.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "tessera/strokes/StrokePoint.h"

namespace Tessera::Geometry {

/// Look-ahead, in samples, of the turning tests of an n-sample stroke: `most`, or a twelfth of the samples,
/// at least 1.
int PointInterval(std::size_t n, int most);

/// Samples where the chords over k samples before and after enclose more than angleDeg, the sharpest of
/// each turn (the first of equals), at least minGap samples after the break before (or after sample 0).
///
/// A turn is reported once the stroke has clearly straightened again (cosine above 1.2 times the
/// threshold's); a candidate too near the break before is offered again at the next straight sample.
/// A turn still open at the end of the stroke is not reported. Nothing for k = 0 or n < 2k + 1.
void FindContinuityBreaks(std::span<const StrokePoint> pts, int minGap, double angleDeg, unsigned int k,
                          std::vector<int>& breaks);

/// Slowest sample of each run below ratio x mean speed; the outer three samples are left out.
void FindSlowBreaks(std::span<const StrokePoint> pts, double ratio, std::vector<int>& breaks);

/// Slowest sample of each run below the mean speed whose speeds vary by more than ratio (deviation over
/// mean), at least ten samples after the break before. Runs of fewer than three samples join the next run.
void FindVaryingSpeedBreaks(std::span<const StrokePoint> pts, double ratio, std::vector<int>& breaks);

/// Inserts the speed breaks of an n-sample stroke that lie three samples or more from both ends and four
/// or more from every continuity break. Both lists ascend, and so does the result in `breaks`.
void JoinBreaks(int n, const std::vector<int>& speedBreaks, std::vector<int>& breaks);

/// Removes breaks around pieces shorter than a twentieth of the longest: an end piece joins its neighbour,
/// an inner one shrinks to one break at its middle. `lengthTo` holds the sums of SumPathLengths.
void MergeShortPieces(std::span<const double> lengthTo, std::vector<int>& breaks);

} // namespace Tessera::Geometry
