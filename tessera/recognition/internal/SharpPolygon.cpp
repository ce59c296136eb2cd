#include "tessera/recognition/internal/SharpPolygon.h"

#include <algorithm>
#include <cmath>

#include "tessera/recognition/internal/ChainGeometry.h"
#include "tessera/recognition/internal/CornerEvidence.h"
#include "tessera/recognition/internal/PiecePrices.h"

namespace Tessera::Geometry {

namespace {

constexpr double kGapShare = 0.75;     // of a side: where the ends are farther apart, one is missing
constexpr std::size_t kFewest = 5;     // sides
constexpr double kLeastTurn = 0.45;    // radians: the sides of a dodecagon turn by 0.52
constexpr double kLeastSeen = 0.6;     // of a corner's turn that lies within a few points of it
constexpr double kWander = 0.04;       // root mean square distance of a side's ink, of its length
constexpr double kShortestShare = 0.2; // of the longest side: what is shorter is a slip of the pen

double Turn(const PricedPath& ink, const ChainPiece& before, const ChainPiece& after) {
    return SignedAngle(DirectionAt(ink, before, true), DirectionAt(ink, after, false));
}

std::vector<ChainPiece> LinesThrough(const PricedPath& ink, const std::vector<int>& breaks) {
    std::vector<ChainPiece> lines;
    for (std::size_t b = 1; b < breaks.size(); ++b)
        lines.push_back(PriceRun(ink, breaks[b - 1], breaks[b]).line.piece);
    return lines;
}

// Breaks at which the lines on either side go on almost straight were tremor.
void DropFlatBreaks(const PricedPath& ink, std::vector<int>& breaks) {
    const std::vector<ChainPiece> lines = LinesThrough(ink, breaks);
    std::vector<int> kept{breaks.front()};
    for (std::size_t b = 1; b + 1 < breaks.size(); ++b)
        if (std::fabs(Turn(ink, lines[b - 1], lines[b])) >= kLeastTurn)
            kept.push_back(breaks[b]);
    kept.push_back(breaks.back());
    breaks = std::move(kept);
}

bool IsSharp(const PricedPath& ink, const Chain& chain) {
    int longest = 0;
    for (const ChainPiece& piece : chain.pieces)
        longest = std::max(longest, PointsIn(ink, piece));
    for (std::size_t i = 0; i < chain.pieces.size(); ++i) {
        const ChainPiece& piece = chain.pieces[i];
        const ChainPiece& next = chain.pieces[(i + 1) % chain.pieces.size()];
        const int points = PointsIn(ink, piece);
        const double wander = kWander * ink.path.step * points;
        const double turn = std::fabs(Turn(ink, piece, next));
        const bool isSeam = piece.last != next.first; // the ink has no corner there, but two ends
        Point meet;
        if (isSeam && IntersectPieces(piece, next, ink.path.At(next.first), meet) &&
            !LeavesBoth(ink, piece, next, meet))
            return false;
        if (!EndsApart(ink, piece) || points < kShortestShare * longest ||
            piece.line.sumSq > points * wander * wander || turn < kLeastTurn ||
            (!isSeam && std::fabs(SignedTurn(ink.path, piece.last)) < kLeastSeen * turn))
            return false;
    }
    return true;
}

} // namespace

std::optional<Chain> FindSharpPolygon(const PricedPath& ink) {
    const double side = ink.path.length / static_cast<double>(ink.peaks.size() + 1); // on average
    if (ink.peaks.size() + 1 < kFewest || ink.path.Gap() > std::min(ink.closing, kGapShare * side))
        return std::nullopt;
    const int n = ink.path.Size();
    std::vector<int> breaks{0};
    for (const TurningPeak& peak : ink.peaks)
        if (std::fabs(peak.turn) >= kLeastTurn)
            breaks.push_back(peak.at);
    breaks.push_back(n - 1);
    DropFlatBreaks(ink, breaks);
    Chain chain;
    chain.isClosed = true;
    chain.pieces = LinesThrough(ink, breaks);
    if (chain.pieces.size() < kFewest)
        return std::nullopt;
    if (std::fabs(Turn(ink, chain.pieces.back(), chain.pieces.front())) < kLeastTurn) {
        chain.pieces.front() = PriceRun(ink, chain.pieces.back().first, chain.pieces.front().last).line.piece;
        chain.pieces.pop_back();
    }
    if (chain.pieces.size() < kFewest || !IsSharp(ink, chain))
        return std::nullopt;
    chain.price = (2.0 * static_cast<double>(chain.pieces.size())) * kNumberPrice;
    for (ChainPiece& piece : chain.pieces)
        chain.sumSq += piece.sumSq = piece.line.sumSq;
    return chain;
}

} // namespace Tessera::Geometry
