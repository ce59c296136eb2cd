#include "tessera/recognition/internal/Description.h"

#include <cmath>

namespace Tessera::Geometry {

namespace {

constexpr double kIndependent = 0.15; // of the points: neighbours stray together
// Root mean square distances, sizes, that the ink of a sloppy hand hardly exceeds, and one sigma of that.
constexpr double kUsualMost = 0.03;
constexpr double kUsualSlack = 0.012;
// By RivalKind: the dearest beside a chain that tells the same without corners, the cheapest where nobody
// means the chain.
constexpr double kPolePrices[] = {2.5, 3.5, 1.7, 2.5, 1.7, 2.0};

} // namespace

double PriceOfPole(RivalKind rival) {
    return kPolePrices[static_cast<std::size_t>(rival)];
}

double LengthOf(int points, const Description& description) {
    const double meanSq = description.sumSq / points;
    const double astray = (std::sqrt(meanSq) - kUsualMost) / kUsualSlack;
    return description.price + (astray > 0.0 ? 0.5 * astray * astray : 0.0) +
           0.5 * kIndependent * points * std::log(meanSq + kLeastSpread * kLeastSpread);
}

} // namespace Tessera::Geometry
