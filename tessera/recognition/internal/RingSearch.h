// RingSearch - the chain of a stroke whose ends meet, wherever the pen touched down.
#pragma once

#include <memory>
#include <optional>

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

struct Ring {
    std::unique_ptr<InkPath> path; ///< begun within a piece, its ends joined
    std::unique_ptr<PricedPath> ink;
    Chain chain;         ///< a ring of that path; its first piece is the one in which the pen touched down
    double length = 0.0; ///< of its description, as one of the stroke
};

/// The briefest ring when the stroke is begun within the longest piece of the chain that was found: the
/// search cuts no piece in two then where it was short already. Empty where the ends cannot be made to meet,
/// and when the chain found is as brief, or all lines of which none hides an arc: sides are told from each
/// other wherever they begin.
std::optional<Ring> FindRing(const PricedPath& ink, const Chain& found, double tolerance);

} // namespace Tessera::Geometry
