// The search for what a new end point may snap to: key points of existing curves, and directions.
//
// Distances are compared with the snap distances of the preferences, adjusted to the drawing's context;
// angles with the snap angles. Nothing snaps while the snapping preference is off.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "tessera/core/Export.h"
#include "tessera/geometry/Vector.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tessera/recognition/SnapPoint.h"

namespace Tessera::Geometry {

class Curve;

/// Which pair of thresholds holds: for curves being drawn, or being edited.
enum class SnapUse { Create, Edit };

struct SnapCandidate {
    SnapPoint point;
    double distance; ///< from the point asked about
};

/// Key points of the curves within the snap distance, nearest first; of equally near ones end points come
/// before mid points, these before centres, then in the order of the curves. At most snapCandidateCount.
/// Closed arcs and ellipses offer their centre alone: they have no ends. Null curves are passed over.
TESSERA_API std::vector<SnapCandidate> FindSnapPoints(const Point& p, std::span<Curve* const> curves,
                                                      const SketchRecognizerPreferences& preferences,
                                                      SnapUse use);

struct SnapDirection {
    Vector direction; ///< unit
    Point freeEnd;    ///< the free end turned onto the direction, its distance from the fixed end kept
    double angleDeg;  ///< how far it was turned, unsigned
};

/// Turns a line's free end onto the nearest of the axes and the given neighbour directions (both senses)
/// within the snap angle (inclusive); an axis before a neighbour when equally near. None for a zero length.
TESSERA_API std::optional<SnapDirection> FindSnapDirection(const Point& fixedEnd, const Point& freeEnd,
                                                           std::span<const Vector> neighbourDirections,
                                                           const SketchRecognizerPreferences& preferences,
                                                           SnapUse use);

} // namespace Tessera::Geometry
