// LinkMoves - how the links of a run move with its free values, for the fits of an open run and of one that
// closes; defined in LinkedRun.cpp.
#pragma once

#include <array>
#include <cstddef>

#include "tessera/recognition/internal/LinkedRun.h"

namespace Tessera::Geometry {

inline constexpr double kTarget = 1e3; ///< weight of a direction on an axis against the distance of a point

/// With the place and heading of its start, and by what is the link's own.
enum Move : std::size_t { kX, kY, kHeading, kOwn, kCurvature = kOwn, kLength, kMoves };

using Moves = std::array<double, kMoves>;

/// The points that a link is fitted to, the end excluded: not those next to corners at the ends of the run.
struct PointRange {
    int from;
    int to;
};

PointRange FittedTo(const LinkedRun& run, std::size_t link);

/// A point beside a link's carrier.
struct Aside {
    double distance = 0.0; ///< signed, to the left positive
    double reach = 1.0;    ///< distance from the centre, of the radius
};

/// Where a point lies, and how its distance changes.
Aside AsideOf(const Link& link, const Point& p);
Moves SlopeOf(const Link& link, const Point& p, const Aside& aside);

/// Weighted angle by which a link misses its target.
double OffTarget(const Link& link);

/// How the place and heading at which a link ends move.
std::array<Moves, kOwn> LeadsOf(const Link& link, const Link& next);

/// Points beyond the normal in a joint become those of the next link.
void AssignPoints(const PricedPath& ink, LinkedRun& run);

} // namespace Tessera::Geometry
