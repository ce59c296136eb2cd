#include "tessera/recognition/internal/ReadingChoice.h"

#include <algorithm>
#include <cmath>

#include "tessera/recognition/internal/CornerEvidence.h"

namespace Tessera::Geometry {

namespace {

constexpr double kUsualSpread = 0.025;   // root mean square distance of a side's ink, sizes
constexpr double kMostCare = 8.0;        // limit on what a careful hand multiplies squares by
constexpr double kRectangleSaving = 3.0; // parameters: five instead of eight
constexpr double kSeenCorner = 0.7;      // radians of turning within a few points
constexpr double kLeastCorner = 0.5;     // cosine of 60 degrees

int PointsOf(const PricedPath& ink, const ChainPiece& piece) {
    return piece.last > piece.first ? piece.last - piece.first : piece.last + ink.path.Size() - piece.first;
}

bool IsPolygon(const Chain& chain) {
    return chain.isClosed && std::none_of(chain.pieces.begin(), chain.pieces.end(),
                                          [](const ChainPiece& p) { return p.isArc; });
}

// Joints of a chain at which the ink shows no corner: nobody goes round in arcs that join smoothly.
int SmoothJoints(const PricedPath& ink, const Chain& chain) {
    int smooth = 0;
    for (std::size_t i = 1; i < chain.pieces.size(); ++i) {
        const ChainPiece& piece = chain.pieces[i];
        const bool isSmooth = piece.isJudged ? piece.joint != JointSight::Corner
                                             : SharpestTurn(ink.path, piece.first) < kSeenCorner;
        smooth += isSmooth ? 1 : 0;
    }
    return smooth;
}

} // namespace

bool IsRoundCheaper(const PricedPath& ink, const RoundShape& round, const Chain& chain) {
    double chainCost = chain.cost + PriceOfSoftCorners(ink, chain);
    double roundCost = round.cost;
    if (IsPolygon(chain)) {
        double sumSq = 0.0;
        int points = 0;
        for (const ChainPiece& piece : chain.pieces) {
            sumSq += piece.line.sumSq;
            points += PointsOf(ink, piece);
        }
        const double care =
            std::clamp(kUsualSpread * kUsualSpread * points / std::max(sumSq, 1e-12), 1.0, kMostCare);
        chainCost += (care - 1.0) * ink.prices.squared * sumSq;
        roundCost += (care - 1.0) * round.deviationCost;
    } else
        chainCost += SmoothJoints(ink, chain) * ink.prices.parameter;
    return roundCost < chainCost;
}

bool ShowsCorner(const PricedPath& ink, const Chain& chain) {
    return SmoothJoints(ink, chain) + 1 < static_cast<int>(chain.pieces.size());
}

Chain StraightenRectangle(const PricedPath& ink, const Chain& chain) {
    if (!chain.isClosed || chain.pieces.size() != 4 || IsPolygon(chain))
        return chain;
    Chain straight = chain;
    for (ChainPiece& piece : straight.pieces)
        if (piece.isArc) {
            straight.cost -= piece.cost;
            piece = PriceBoth(ink, piece.first, piece.last).line;
            straight.cost += piece.cost;
        }
    for (std::size_t i = 0; i < 4; ++i) {
        const Point& a = straight.pieces[i].line.direction;
        const Point& b = straight.pieces[(i + 1) % 4].line.direction;
        if (std::fabs(a.Dot(b)) > kLeastCorner)
            return chain;
    }
    return straight.cost - kRectangleSaving * ink.prices.parameter <= chain.cost ? straight : chain;
}

} // namespace Tessera::Geometry
