#include "tessera/recognition/internal/ChainClosing.h"

#include <algorithm>
#include <cmath>

#include "tessera/recognition/internal/ChainGeometry.h"
#include "tessera/recognition/internal/ChainSearch.h"
#include "tessera/recognition/internal/CornerEvidence.h"
#include "tessera/recognition/internal/ReadingChoice.h"

namespace Tessera::Geometry {

namespace {

// How far a closing corner may lie from the ends, in closing tolerances: four sides and more hardly close by
// chance.
constexpr double kCloseReach = 1.04;
constexpr double kManySidesReach = 1.36;
constexpr double kMostGap = 1.2;     // between the ends of what closes with a corner, in closing tolerances
constexpr double kHookShare = 0.3;   // of the longest piece: how long a hook may be
constexpr double kFreeHook = 0.1;    // of the longest piece: a hook even on a shape that stays open
constexpr double kExtension = 1.0;   // of its length: as far as a side is drawn on to close a chain
constexpr double kLeastChord = 0.15; // of its arc: five sixths of a round with a flat

double Longest(const Chain& chain) {
    int longest = 0;
    for (const ChainPiece& piece : chain.pieces)
        longest = std::max(longest, piece.last - piece.first);
    return longest;
}

Chain Without(const Chain& chain, bool first, bool last) {
    Chain rest = chain; // what is left out still has to be described: the cost stays
    if (last)
        rest.pieces.pop_back();
    if (first)
        rest.pieces.erase(rest.pieces.begin());
    return rest;
}

// A line and an arc enclose something, unless the line is a slip of the pen on a round. Two lines do not; two
// arcs are what is left of a round, but for those that meet in two clear corners.
bool CanEnclose(const PricedPath& ink, const Chain& chain) {
    if (chain.pieces.size() != 2)
        return chain.pieces.size() > 2;
    if (AreArcs(chain))
        return ShowsAllCorners(chain);
    if (AreLines(chain))
        return false;
    const ChainPiece& line = chain.pieces[chain.pieces[0].isArc ? 1 : 0];
    const ChainPiece& arc = chain.pieces[chain.pieces[0].isArc ? 0 : 1];
    return PointsIn(ink, line) >= kLeastChord * PointsIn(ink, arc);
}

// The last piece meets the first near both ends of the ink.
bool CloseWithCorner(const PricedPath& ink, Chain& chain) {
    if (chain.pieces.size() < 2 || ink.path.Gap() > kMostGap * ink.closing)
        return false;
    const ChainPiece& first = chain.pieces.front();
    const ChainPiece& last = chain.pieces.back();
    const Point& start = ink.path.At(first.first);
    const Point& end = ink.path.At(last.last);
    Point meet;
    if (!IntersectPieces(last, first, 0.5 * (start + end), meet))
        return false;
    const double reach = (chain.pieces.size() < 4 ? kCloseReach : kManySidesReach) * ink.closing;
    const auto isTooFar = [&](const ChainPiece& piece, const Point& from) {
        return meet.Distance(from) > std::min(reach, kExtension * ink.path.step * (piece.last - piece.first));
    };
    if (isTooFar(first, start) || isTooFar(last, end) || !LeavesBoth(ink, last, first, meet))
        return false;
    const JointPrice seam = PriceSeam(ink, AsPriced(ink, last), AsPriced(ink, first));
    chain.isClosed = true;
    chain.price += seam.price - 2.0 * kNumberPrice;
    chain.pieces.front().joint = seam.sight;
    chain.pieces.front().jointPrice = seam.price;
    if (seam.sight == JointSight::Tangent) // a joint as any other: the pieces are fitted to touch there
        chain.pieces.back().last = chain.pieces.front().first;
    return CanEnclose(ink, chain);
}

// The last and the first piece are one.
bool CloseWithinPiece(const PricedPath& ink, Chain& chain) {
    if (chain.pieces.size() < 3)
        return false;
    const ChainPiece first = chain.pieces.front();
    const ChainPiece last = chain.pieces.back();
    // Ahead along the first piece the pen may have run on over it as far as it liked, but where two pieces
    // would be left, which come near to closing by chance; behind it left a gap.
    const Point gap = ink.path.At(last.last) - ink.path.At(first.first);
    const Point ahead = DirectionAt(ink, first, false);
    const double reach = kCloseReach * ink.closing;
    const double most = chain.pieces.size() < 4 ? 0.0 : ink.path.step * (first.last - first.first);
    if (std::fabs(gap.Cross(ahead)) > reach || gap.Dot(ahead) < -reach || gap.Dot(ahead) > most + reach)
        return false;
    // Two lines make one line: an arc would hide the corner between them, but where the path was begun within
    // a piece.
    const RunPrices both = PriceRun(ink, last.first, first.last);
    const bool isArc = both.hasArc && (first.isArc || last.isArc || ink.seam >= 0) &&
                       both.arc.CostFor(chain.squared) < both.line.CostFor(chain.squared);
    const PricedPiece& joined = isArc ? both.arc : both.line;
    ChainPiece whole = joined.piece;
    if (!isArc && !EndsApart(ink, whole))
        return false;
    whole.price = joined.BestFor(chain.squared).price;
    whole.sumSq = joined.BestFor(chain.squared).sumSq;
    whole.joint = last.joint;
    whole.jointPrice = last.jointPrice;
    chain.price += whole.price - first.price - last.price - 2.0 * kNumberPrice;
    chain.sumSq += whole.sumSq - first.sumSq - last.sumSq;
    chain.pieces.front() = whole;
    chain.pieces.pop_back();
    chain.isClosed = true;
    return CanEnclose(ink, chain);
}

} // namespace

Chain CloseChain(const PricedPath& ink, const Chain& open) {
    Chain best = open;
    const double longest = Longest(open);
    const auto isShort = [&](const ChainPiece& piece, double share) {
        return piece.last - piece.first < share * longest;
    };
    const std::size_t count = open.pieces.size();
    for (int hooks = 0; hooks < 4; ++hooks) {
        const bool dropFirst = (hooks & 1) != 0;
        const bool dropLast = (hooks & 2) != 0;
        if (count < 2U + (dropFirst ? 1U : 0U) + (dropLast ? 1U : 0U) ||
            (dropFirst && !isShort(open.pieces.front(), kHookShare)) ||
            (dropLast && !isShort(open.pieces.back(), kHookShare)))
            continue;
        const Chain rest = Without(open, dropFirst, dropLast);
        Chain corner = rest;
        if (CloseWithCorner(ink, corner) && LengthOf(ink, corner) < LengthOf(ink, best))
            best = corner;
        Chain within = rest;
        if (CloseWithinPiece(ink, within) && LengthOf(ink, within) < LengthOf(ink, best))
            best = within;
        if (!best.isClosed && (!dropFirst || isShort(open.pieces.front(), kFreeHook)) &&
            (!dropLast || isShort(open.pieces.back(), kFreeHook)))
            best = rest;
    }
    return best;
}

} // namespace Tessera::Geometry
