// Frames to compute in, and the preparation of real ink for the recogniser's rules, which expect shapes some
// tens of units large, sampled evenly about a hundred times along their size.
//
// For the rules a drawing is brought to a working size, all its strokes alike. Each stroke loses repeated
// points and equal time stamps, is smoothed when it is sampled far more densely than the rules look, and is
// resampled evenly by arc length; vertices of sparse poly-lines stay. Speeds are those of the original
// samples. Every prepared sample knows where in the input it comes from. Linear in the number of samples.
#pragma once

#include <cmath>
#include <optional>
#include <vector>

#include "apps/cli/ink/Ink.h"

namespace Tessera::Tool {

/// From ink to working units and back: working = (ink - origin) * scale.
struct WorkingFrame {
    Position origin;
    double scale = 1.0;
    double grid = 0.0; ///< points come back rounded to whole multiples of 1 / grid; 0 for not rounded

    Position ToWorking(Position p) const { return {(p.x - origin.x) * scale, (p.y - origin.y) * scale}; }
    Position ToInk(Position p) const {
        return {Rounded(p.x / scale + origin.x), Rounded(p.y / scale + origin.y)};
    }
    /// False for a drawing that is too large or too small to compute with.
    bool IsUsable() const;

private:
    /// Nor is there a negative zero.
    double Rounded(double x) const { return (grid > 0.0 ? std::round(x * grid) / grid : x) + 0.0; }
};

struct PreparedSample {
    double x = 0.0; ///< working units, as y
    double y = 0.0;
    double speed = 0.0; ///< working units per second; 0 without times
    double timeMs = 0.0;
    double source = 0.0; ///< index in the input's samples, fractional in between
};

/// Frame that brings the whole drawing to the size of a page, at which the distances between strokes that the
/// preferences hold are right; strokes with a problem are left out. Points come back without the
/// last digits, which only tell of rounding: 100, not 100.00000000000001.
WorkingFrame PageFrame(const Drawing& drawing);

/// Frame that brings the drawing's strokes to the working size of the rules, likewise.
WorkingFrame AutomaticFrame(const Drawing& drawing);

/// Frame about the origin: the input's coordinates times `scale`.
WorkingFrame FixedFrame(double scale);

/// The fixed frame where a scale is given, else that of the page.
WorkingFrame ChosenFrame(const Drawing& drawing, const std::optional<double>& inkScale);

/// The problem of a stroke in a frame that is not usable.
inline constexpr const char* kFrameProblem = "too large or too small to compute with";

/// The stroke's samples as they are, with their speeds.
std::vector<PreparedSample> TakeSamples(const InkStroke& stroke, const WorkingFrame& frame);

/// The stroke prepared as described above; the first and the last sample keep their places.
std::vector<PreparedSample> PrepareStroke(const InkStroke& stroke, const WorkingFrame& frame);

} // namespace Tessera::Tool
