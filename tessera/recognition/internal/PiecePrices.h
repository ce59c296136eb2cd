// PiecePrices - what a line or an arc over a run of the ink costs, and what a joint between two of them
// does.
//
// A hand does not draw straight: a line may be bowed, or wander slowly about where it should be, each by its
// share of the length; what is left is noise and costs by its squares, for the hand that drew it.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// What squares weigh for a quick, a usual and a careful hand: each strays 2.5 times less than the one
/// before.
inline constexpr std::array<double, 3> kHands = {100.0, 600.0, 3600.0};
inline constexpr std::size_t kUsualHand = 1;

/// Price from which a piece is not looked at: no saving makes it good.
inline constexpr double kHopeless = 20.0 * kNumberPrice;

/// One kind of piece over one run of the path.
struct PricedPiece {
    /// An explanation of the ink: a price, and the squares that it leaves unexplained.
    struct Account {
        double price = 1e300;
        double sumSq = 0.0;

        double CostFor(double squared) const { return price + squared * sumSq; }
    };

    ChainPiece piece;
    Point first; ///< directions of the pen at the ends
    Point last;
    double enter = 0.0; ///< their angles, radians
    double leave = 0.0;
    double curvature = 0.0; ///< counter-clockwise positive

    /// As drawn; for a line also as one that is bowed, and as one that wanders.
    std::array<Account, 3> accounts{};

    const Account& BestFor(double squared) const;
    double CostFor(double squared) const {
        return std::min(
            {accounts[0].CostFor(squared), accounts[1].CostFor(squared), accounts[2].CostFor(squared)});
    }
};

struct RunPrices {
    PricedPiece line;
    PricedPiece arc;
    bool hasArc = false;
};

/// A line and, where the run is bent evenly enough, an arc, over the points first to last (on across the
/// start of the path for last < first). Both without directions.
RunPrices PriceRun(const PricedPath& ink, int first, int last);

/// The directions of a piece, which its joints are priced by.
void FindDirections(const PricedPath& ink, PricedPiece& priced);

/// A piece as PriceJoint wants it; without accounts.
PricedPiece AsPriced(const PricedPath& ink, const ChainPiece& piece);

struct JointPrice {
    double price = 0.0;
    JointSight sight = JointSight::Corner;
    double untied = 0.0; ///< price of the cheapest joint that is not tangent
};

/// Takes another joint before a piece; the chain costs what the new one does.
void SetJoint(const JointPrice& joint, std::size_t piece, Chain& chain);

/// No joint costs less than this.
double LeastJointPrice();

/// What the ink shows at a point of the path.
struct JointSite {
    JointSite(const PricedPath& ink, int point);

    int at;
    double seen; ///< turn of the ink, as SignedTurn gives it
    double pace; ///< logarithm of the odds that so fast a pen drew no corner here
};

/// The price of a corner before a piece of a chain.
double PriceCorner(const PricedPath& ink, const Chain& chain, std::size_t piece);

/// The price of a joint before a piece at which the ink bends on smoothly and the pieces do not fit each
/// other.
double PriceBend(const PricedPath& ink, const Chain& chain, std::size_t piece);

/// The cheapest kind of joint between two pieces.
JointPrice PriceJoint(const PricedPath& ink, const PricedPiece& before, const PricedPiece& after,
                      const JointSite& site);

/// The price of closing a chain where the ends of the ink meet: there it tells nothing of the turn.
JointPrice PriceSeam(const PricedPath& ink, const PricedPiece& last, const PricedPiece& first);

} // namespace Tessera::Geometry
