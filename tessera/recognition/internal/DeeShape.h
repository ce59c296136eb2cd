// DeeShape - a half circle, two legs that run on from it, parallel and alike, and a side across their ends.
#pragma once

#include <optional>

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

bool IsDee(const PricedPath& ink, const Chain& chain);

/// A closed segment of more than half a round as a half circle with legs: where these are short, the search
/// hardly tells the two apart and offers the one of fewer pieces.
std::optional<Chain> AsDee(const PricedPath& ink, const Chain& chain);

} // namespace Tessera::Geometry
