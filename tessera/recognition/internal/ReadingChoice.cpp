#include "tessera/recognition/internal/ReadingChoice.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "tessera/recognition/internal/CornerEvidence.h"

namespace Tessera::Geometry {

namespace {

constexpr double kUsualSpread = 0.025;   // root mean square distance of a side's ink, sizes
constexpr double kMostCare = 8.0;        // limit on what a careful hand multiplies squares by
constexpr double kRectangleSaving = 3.0; // parameters: five instead of eight
constexpr double kBracketSaving = 4.0;   // parameters: two right angles, and the habit of straight sides
constexpr double kSeenCorner = 0.7;      // radians of turning within a few points
constexpr double kLeastCorner = 0.5;     // cosine of 60 degrees
constexpr double kMostBow = 0.16;        // sagitta of a straight side over its length
constexpr double kRunsBack = -0.9;       // cosine of 154 degrees

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

Chain LinesOver(const PricedPath& ink, const std::vector<int>& breaks) {
    Chain chain;
    for (std::size_t b = 1; b < breaks.size(); ++b) {
        chain.pieces.push_back(PriceBoth(ink, breaks[b - 1], breaks[b]).line);
        chain.cost += chain.pieces.back().cost;
    }
    return chain;
}

// Sides that hardly bow: what bows more was drawn as an arc.
bool AreStraight(const PricedPath& ink, const Chain& lines) {
    return std::none_of(lines.pieces.begin(), lines.pieces.end(), [&](const ChainPiece& side) {
        const RunFits fits = FitRun(ink, side.first, side.last, 0.0);
        return fits.hasArc && fits.BowOfLine() > kMostBow;
    });
}

// Three lines with two corners of 60 to 120 degrees, of which the last runs back along the first.
bool IsBracket(const PricedPath& ink, const Chain& lines) {
    const Point first = DirectionAt(ink, lines.pieces[0], true);
    const Point middle = DirectionAt(ink, lines.pieces[1], false);
    const Point last = DirectionAt(ink, lines.pieces[2], false);
    return std::fabs(first.Dot(middle)) <= kLeastCorner && std::fabs(middle.Dot(last)) <= kLeastCorner &&
           first.Dot(last) <= kRunsBack;
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

Chain StraightenBracket(const PricedPath& ink, const Chain& chain) {
    constexpr std::size_t kSides = 3;
    const std::size_t count = chain.pieces.size();
    const bool hasArc =
        std::any_of(chain.pieces.begin(), chain.pieces.end(), [](const ChainPiece& p) { return p.isArc; });
    if (chain.isClosed || (count == kSides && !hasArc) || count < kSides || count > kSides + 1)
        return chain;
    double cost = kBracketSaving * ink.prices.parameter;
    std::vector<int> breaks{0};
    for (const ChainPiece& piece : chain.pieces) {
        cost += PricePiece(ink, piece.first, piece.last).cost;
        breaks.push_back(piece.last);
    }
    Chain best = chain;
    for (std::size_t left = 1; left + 1 < breaks.size(); ++left) { // of four pieces one break goes
        std::vector<int> kept = breaks;
        if (count > kSides)
            kept.erase(kept.begin() + static_cast<std::ptrdiff_t>(left));
        const Chain lines = LinesOver(ink, kept);
        if (lines.cost <= cost && AreStraight(ink, lines) && IsBracket(ink, lines)) {
            cost = lines.cost;
            best = lines;
        }
    }
    return best;
}

} // namespace Tessera::Geometry
