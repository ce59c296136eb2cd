// CurveTrack - ink followed along a curve: where its points lie beside the curve, in drawing order.
#pragma once

#include <span>
#include <vector>

#include "tessera/geometry/Curve.h"
#include "tessera/geometry/Point.h"

namespace Tessera::Geometry {

/// A curve as a poly-line with lengths along it, model units.
struct CurveTrack {
    explicit CurveTrack(const Curve& curve);

    /// The point at a length from the start; lengths beyond the ends of a closed track go on round it.
    Point At(double along) const;
    double Length() const { return at.back(); }

    std::vector<Point> pts;
    std::vector<double> at; ///< length up to each point
    bool isClosed = false;
};

/// What is nearest to a point of the ink.
struct TrackFoot {
    double along = 0.0; ///< length from the start; on a closed track it counts the rounds, backwards below 0
    double distance = 0.0;
};

/// The foot of each point: that of the first is the nearest of the whole track, each other one the nearest
/// within a few steps of the one before, so that a track that crosses itself is followed on its own branch.
///
/// @param step  distance between two points of the ink. O(points of the ink + points of the track) for
///              evenly spaced points of ink not much longer than the track; each point of longer ink is held
///              against the whole track at most once.
std::vector<TrackFoot> FollowTrack(const CurveTrack& track, std::span<const Point> ink, double step);

} // namespace Tessera::Geometry
