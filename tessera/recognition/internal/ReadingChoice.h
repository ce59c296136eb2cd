// ReadingChoice - what speaks for or against a chain as a whole.
#pragma once

#include <optional>

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// Length of a description less what its shape is worth: people draw rectangles and brackets far more often
/// than chance would have it.
double LengthOfHabit(const PricedPath& ink, const Chain& chain);

/// An open chain's first and last piece with one line between them, if that makes a bracket: the search knows
/// nothing of habits and does not offer it.
std::optional<Chain> AsBracket(const PricedPath& ink, const Chain& chain);

/// Whether the chain has a corner that the ink shows without doubt: two lines that turn little, and at which
/// the pen neither slowed down nor turned at once, may be a wave.
bool ShowsCorner(const PricedPath& ink, const Chain& chain);

/// Whether all joints of a chain are corners that the ink shows without doubt, the closing one included.
bool ShowsAllCorners(const Chain& chain);

/// Whether an open chain has a corner, shown or not.
bool HasCorner(const Chain& chain);

/// Whether the ink only bends at a joint of a chain: its pieces do not fit each other there.
bool HasBend(const Chain& chain);

} // namespace Tessera::Geometry
