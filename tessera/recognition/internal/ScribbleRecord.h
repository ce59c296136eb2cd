// What a scribble test works with: its thresholds, and the cusps that it finds.
#pragma once

#include <vector>

#include "tessera/geometry/Point.h"

namespace Tessera::Geometry {

class SketchRecognizerPreferences;
class Stroke;

struct ScribbleRecord {
    explicit ScribbleRecord(const SketchRecognizerPreferences& preferences);

    double cuspAngleDeg;
    int pointInterval;
    int minNumCusps;
    double eraseRatio = 0.75; ///< part of a curve under the scribble from which it is erased
    double trimRatio = 0.25;  ///< and from which it is trimmed
    double trimTolerance;
    double minRotationAngleDeg;
    double minSpacing;
    double segmentThreshold;

    std::vector<int> cusps; ///< inner cusps, indices into the stroke under test
    bool isZigzag = false;  ///< which of the two tests found the scribble
    bool isRound = false;

    /// Runs the test; true for a scribble.
    bool Test(const Stroke& stroke);
};

/// Whether enough consecutive legs between the listed samples reverse.
bool IsZigzag(const Stroke& stroke, const std::vector<int>& cusps, const ScribbleRecord& record);

/// The region under a tested scribble, as convex polygons that together cover it.
std::vector<std::vector<Point>> ScribbleRegion(const Stroke& stroke, const ScribbleRecord& record);

} // namespace Tessera::Geometry
