// MeantBows - sides of a closed outline that are bowed too far for the hand that drew them: arcs were meant.
#pragma once

#include <optional>

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// How many lines of a chain are bowed by many times what the hand strays along the whole chain.
int CountMeantBows(const PricedPath& ink, const Chain& chain);

/// Whether a side of a quadrilateral is bowed that a careful hand drew, and so was meant as an arc.
bool HasMeantBow(const PricedPath& ink, const Chain& lines);

/// An open chain or a ring with arcs in place of such lines, nothing where it has none: a piece alone hardly
/// tells the two apart.
std::optional<Chain> WithMeantArcs(const PricedPath& ink, const Chain& chain);

} // namespace Tessera::Geometry
