#include <algorithm>
#include <cmath>
#include <vector>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/internal/Angles.h"
#include "tessera/geometry/internal/RecordData.h"
#include "tessera/kernel/EQ.h"

// Merging arcs of one circle: every arc is a sector of angles modulo a full turn, and the merged arc is what
// remains of the circle without the largest gap between the sectors, so that smaller gaps are bridged.

namespace Tessera::Geometry {
namespace {

struct Sector {
    double from; // in [0, 2 pi)
    double sweep;
};

Sector SectorOf(const Arc& arc) {
    const double low = std::min(arc.GetStartAngle(), arc.GetEndAngle());
    double from = std::fmod(low, kTwoPi);
    if (from < 0.0)
        from += kTwoPi;
    return {from, std::fabs(arc.GetEndAngle() - arc.GetStartAngle())};
}

/// The stretch of the circle outside the largest gap between the sectors, sorted by their starts.
Sector Hull(const std::vector<Sector>& sectors) {
    double reach = 0.0; // farthest end so far, from the first sector's start
    for (const Sector& sector : sectors)
        reach =
            std::max(reach, sector.from + sector.sweep - kTwoPi); // sectors that run across the zero angle
    double largestGap = 0.0;
    double afterGap = sectors.front().from;
    for (const Sector& sector : sectors) {
        if (sector.from - reach > largestGap) {
            largestGap = sector.from - reach;
            afterGap = sector.from;
        }
        reach = std::max(reach, sector.from + sector.sweep);
    }
    // The gap across the zero angle, from the last end to the first start.
    const double seamGap = sectors.front().from + kTwoPi - reach;
    if (seamGap > largestGap) {
        largestGap = seamGap;
        afterGap = sectors.front().from;
    }
    return {afterGap, kTwoPi - largestGap};
}

} // namespace

bool Arc::Merge(std::unordered_set<Curve*> curves) {
    std::vector<Sector> sectors = {SectorOf(*this)};
    for (const Curve* curve : curves) {
        if (curve == nullptr || curve == this || curve->GetType() != CurveType_Arc)
            continue;
        const auto& arc = static_cast<const Arc&>(*curve);
        if (arc.GetCenter() == GetCenter() &&
            std::fabs(arc.GetRadius() - GetRadius()) <= EQ_ask_length_tolerance())
            sectors.push_back(SectorOf(arc));
    }
    if (sectors.size() < 2)
        return false;
    LogForChange();
    std::sort(sectors.begin(), sectors.end(),
              [](const Sector& s, const Sector& t) { return s.from < t.from; });
    const Sector hull = Hull(sectors);
    if (hull.sweep >= kTwoPi - kAngleTol)
        StoreArc(*curve_, GetCenter(), GetRadius(), 0.0, kTwoPi);
    else
        StoreArc(*curve_, GetCenter(), GetRadius(), hull.from, hull.from + hull.sweep);
    FlagBoundingBoxForUpdate();
    return true;
}

} // namespace Tessera::Geometry
