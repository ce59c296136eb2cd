// JoinedPieces - what a line or an arc over a run of the ink costs, and what a joint between two of them
// does.
//
// A hand does not draw straight: a line may be bowed, or wander slowly about where it should be, each by its
// share of the length; what is left is noise and costs by its squares, for the hand that drew it.
#pragma once

#include <array>

#include "tessera/recognition/internal/ChainSearch.h"

namespace Tessera::Geometry {

/// What squares weigh for a quick, a usual and a careful hand: each strays 2.5 times less than the one
/// before.
inline constexpr std::array<double, 3> kHands = {100.0, 600.0, 3600.0};

/// One kind of piece over one run of the path.
struct JoinedPiece {
    /// An explanation of the ink: a price, and the squares that it leaves unexplained.
    struct Account {
        double price = 1e300;
        double sumSq = 0.0;
    };

    ChainPiece piece;
    Point first; ///< directions of the pen at the ends
    Point last;
    double curvature = 0.0; ///< counter-clockwise positive

    /// As drawn; for a line also as one that is bowed, and as one that wanders.
    std::array<Account, 3> accounts{};

    const Account& BestFor(double squared) const;
    double CostFor(double squared) const {
        const Account& best = BestFor(squared);
        return best.price + squared * best.sumSq;
    }
};

struct JoinedPieces {
    JoinedPiece line;
    JoinedPiece arc;
    bool hasArc = false;
};

/// A line and, where the run is not straight, an arc.
///
/// @param haste  0 for a hand that takes its time, 1 for one that dashes the stroke off and so bows its
/// lines.
JoinedPieces PriceJoinedPieces(const PricedPath& ink, int first, int last, double haste);

double HasteOf(const InkPath& path);

struct JointPrice {
    double price = 0.0;
    JointSight sight = JointSight::Corner;
};

/// No joint costs less than this.
double LeastJointPrice(const PricedPath& ink);

/// The cheapest kind of joint between two pieces.
///
/// @param at      the point of the path where the first piece ends.
/// @param seen    turn of the ink there, as SignedTurn gives it.
JointPrice PriceJoint(const PricedPath& ink, const JoinedPiece& before, const JoinedPiece& after, int at,
                      double seen);

} // namespace Tessera::Geometry
