// LinkedRun - lines and arcs that touch each other, as one curve along a stretch of the path.
//
// Place and heading of a link follow from those before it, so that neighbours touch whatever the run's free
// values are: place and heading of its start, the curvature of each arc and the length of each link but the
// last.
#pragma once

#include <vector>

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

struct Link {
    bool isArc = false;
    double length = 0.0;
    double curvature = 0.0; ///< counter-clockwise positive
    double target = 0.0;    ///< heading that a line must have
    bool hasTarget = false;
    int last = 0; ///< point of the path at which the next link begins
    // Derived from those before:
    Point start;
    double heading = 0.0;
    Point along; ///< its direction
};

struct LinkedRun {
    Point origin;
    double offset = 0.0; ///< of the start from the origin, along the normal
    double heading = 0.0;
    Point normal; ///< to the left of the first heading that the run had
    std::vector<Link> links;
    int first = 0;     ///< counted on beyond the path's end, or from before its start, if it crosses that
    int trimFirst = 0; ///< points at either end that it is not fitted to
    int trimLast = 0;
};

/// Unit vector.
Point DirectionOf(double heading);

/// Places the links anew after a change of the free values.
void Lay(LinkedRun& run);

/// Squared distances of the points from their links, and what lines with a target turn too much.
struct Misfit {
    double sumSq = 0.0;
    int count = 0;
};

Misfit MisfitOf(const PricedPath& ink, const LinkedRun& run);

/// Squared distances of the points that a link is fitted to.
Misfit MisfitOf(const PricedPath& ink, const LinkedRun& run, std::size_t link);

/// Whether every link is longer than nothing, and no arc runs round into itself.
bool IsSound(const LinkedRun& run);

inline constexpr double kFirstDamping = 1e-3; ///< the place of a joint is hardly known

/// One step of a least-squares fit of all free values. O(points + links).
///
/// @param assign   whether points may go over to the neighbour of their link.
/// @param damping  of the normal matrix' diagonal, for the first step kFirstDamping; adapted.
/// @return false when no step makes the fit better worth mentioning.
bool Improve(const PricedPath& ink, bool assign, double& damping, LinkedRun& run);

} // namespace Tessera::Geometry
