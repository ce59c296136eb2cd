// Description - how briefly something describes the ink: the one currency in which all readings compete.
//
// A description costs natural logarithms of odds: a price for every number it takes and for everything that
// is odd about it, and for the squared distances it leaves the logarithm of their mean for each point that
// strays on its own. The spread of the hand is so taken from the ink itself (J. Rissanen, Automatica 14
// (1978) 465-471).
#pragma once

#include <algorithm>

#include "tessera/recognition/internal/InkPath.h"

namespace Tessera::Geometry {

inline constexpr double kNumberPrice = 4.0;   ///< logarithm of the size over the spread of the hand
inline constexpr double kLeastSpread = 0.004; ///< root mean square distance that no hand stays below, sizes

struct Description {
    double price = 0.0; ///< of all its numbers and oddities
    double sumSq = 0.0; ///< squared distances of the path's points that nothing explains
};

/// What a free form takes the place of: one curve, a chain that is smooth all along, a chain of arcs alone or
/// one whose corners do not show in the ink, a closed chain with corners or without, a round.
enum class RivalKind { Open, Smooth, Doubtful, Closed, SmoothClosed, Round };

/// Price of a coordinate of a free form's pole: less than that of a number, for it lies where its neighbours
/// let expect it.
double PriceOfPole(RivalKind rival);

double LengthOf(int points, const Description& description);
inline double LengthOf(const InkPath& path, const Description& description) {
    return LengthOf(path.Size(), description);
}

/// Squared distance as it counts for a shape that goes round: a tail at either end is no part of it.
inline double SquareWithoutTail(double distance) {
    constexpr double kTailSq = 0.15 * 0.15; // sizes
    return std::min(distance * distance, kTailSq);
}

} // namespace Tessera::Geometry
