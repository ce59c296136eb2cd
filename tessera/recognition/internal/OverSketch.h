// OverSketch - ink drawn over an earlier curve gives that curve a new form.
//
// Distances  the first oversketch tolerance of the preferences holds for the ends of the ink, the second for
//            all of it, both adjusted to the drawing's context. What is near besides depends on the ink's
//            length, so that a small drawing is not swallowed by tolerances made for large ones.
// Meaning    ink that only starts and ends on a curve (a chord, a bump, a triangle standing on it) does not
//            retrace it: retracing ink runs in the curve's direction.
#pragma once

#include <span>

#include "tessera/recognition/InkInterpretation.h"
#include "tessera/recognition/internal/CurveTrack.h"
#include "tessera/recognition/internal/InkPath.h"

namespace Tessera::Geometry {

/// Ink over the curve that it retraces.
struct Retrace {
    int earlier = -1;            ///< index of the curve
    std::vector<Point> ink;      ///< evenly spaced, model units, turned to run the way the curve does
    std::vector<TrackFoot> feet; ///< of each of them
    bool isAgainst = false;      ///< the pen ran against the curve
    double reach = 0.0;          ///< how far an end may lie from where the ink ends to belong to it
    double CoveredLength() const { return feet.back().along - feet.front().along; }
};

/// The curve that the ink runs along most closely, of equally near ones the newest; earlier = -1 for none.
Retrace FindRetrace(const InkPath& path, const SketchRecognizerPreferences& preferences,
                    std::span<Curve* const> earlier);

/// Fills the reading when the ink retraces an earlier curve; false, with nothing changed, when it does not.
bool ReadRetrace(const InkPath& path, const SketchRecognizerPreferences& preferences,
                 std::span<Curve* const> earlier, InkReading& reading);

} // namespace Tessera::Geometry
