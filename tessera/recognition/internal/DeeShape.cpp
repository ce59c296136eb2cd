#include "tessera/recognition/internal/DeeShape.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "tessera/recognition/internal/ChainSearch.h"
#include "tessera/recognition/internal/CornerEvidence.h"
#include "tessera/recognition/internal/PiecePrices.h"

namespace Tessera::Geometry {

namespace {

constexpr double kOpposite = -0.9;  // cosine of 154 degrees
constexpr double kSquare = 0.35;    // cosine of 70 degrees
constexpr double kLikeLegs = 0.5;   // shorter over longer
constexpr int kShortestLeg = 4;     // points
constexpr double kLongestLeg = 1.0; // of the side: longer ones are seen anyway

bool IsArc(const ChainPiece& piece) {
    return piece.isArc;
}

void Add(const PricedPiece& priced, Chain& chain) {
    const PricedPiece::Account& account = priced.BestFor(chain.squared);
    chain.pieces.push_back(priced.piece);
    chain.pieces.back().price = account.price;
    chain.pieces.back().sumSq = account.sumSq;
    chain.price += account.price;
    chain.sumSq += account.sumSq;
}

} // namespace

bool IsDee(const PricedPath& ink, const Chain& chain) {
    const std::vector<ChainPiece>& pieces = chain.pieces;
    if (pieces.size() != 4 || !chain.isClosed || std::count_if(pieces.begin(), pieces.end(), IsArc) != 1)
        return false;
    const auto arc =
        static_cast<std::size_t>(std::find_if(pieces.begin(), pieces.end(), IsArc) - pieces.begin());
    const ChainPiece& out = pieces[(arc + 1) % 4];
    const ChainPiece& side = pieces[(arc + 2) % 4];
    const ChainPiece& back = pieces[(arc + 3) % 4];
    if (pieces[arc].joint != JointSight::Tangent || out.joint != JointSight::Tangent ||
        side.joint != JointSight::Corner || back.joint != JointSight::Corner)
        return false;
    const Point first = DirectionAt(ink, out, false);
    const Point across = DirectionAt(ink, side, false);
    const Point second = DirectionAt(ink, back, false);
    const int legs[] = {PointsIn(ink, out), PointsIn(ink, back)};
    return first.Dot(second) <= kOpposite && std::fabs(first.Dot(across)) <= kSquare &&
           std::fabs(second.Dot(across)) <= kSquare &&
           std::min(legs[0], legs[1]) >= kLikeLegs * std::max(legs[0], legs[1]);
}

std::optional<Chain> AsDee(const PricedPath& ink, const Chain& chain) {
    if (!chain.isClosed || chain.pieces.size() != 2 || chain.pieces[0].isArc == chain.pieces[1].isArc)
        return std::nullopt;
    const ChainPiece& arc = chain.pieces[chain.pieces[0].isArc ? 0 : 1];
    const double across = PointsIn(ink, chain.pieces[chain.pieces[0].isArc ? 1 : 0]);
    const double leg = 0.5 * (PointsIn(ink, arc) - 0.5 * std::numbers::pi * across);
    const int points = static_cast<int>(std::lround(leg));
    const int from = arc.first + points;
    const int to = arc.last - points;
    const bool isCrossing = arc.last < arc.first; // the start of the path
    if (points < kShortestLeg || leg > kLongestLeg * across || (from < to) == isCrossing || to <= 0 ||
        from >= ink.path.Size() - 1)
        return std::nullopt;
    Chain dee;
    dee.isClosed = true;
    dee.squared = chain.squared;
    for (const ChainPiece& piece : chain.pieces) {
        if (!piece.isArc) {
            Add(PriceRun(ink, piece.first, piece.last).line, dee);
            continue;
        }
        const RunPrices half = PriceRun(ink, from, to);
        if (!half.hasArc)
            return std::nullopt;
        Add(PriceRun(ink, arc.first, from).line, dee);
        Add(half.arc, dee);
        Add(PriceRun(ink, to, arc.last).line, dee);
    }
    if (isCrossing) // a ring begins with the piece that does
        std::rotate(dee.pieces.begin(), std::find_if(dee.pieces.begin(), dee.pieces.end(), IsArc),
                    dee.pieces.end());
    PriceJoints(ink, dee);
    return dee;
}

} // namespace Tessera::Geometry
