#include "tessera/recognition/internal/ChainChoice.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "tessera/recognition/internal/ChainClosing.h"
#include "tessera/recognition/internal/ChainGeometry.h"
#include "tessera/recognition/internal/ChainSearch.h"
#include "tessera/recognition/internal/DeeShape.h"
#include "tessera/recognition/internal/MeantBows.h"
#include "tessera/recognition/internal/PiecePrices.h"
#include "tessera/recognition/internal/ReadingChoice.h"
#include "tessera/recognition/internal/TangentRun.h"

namespace Tessera::Geometry {

namespace {

// A chain of so much greater length than the best may come out briefer once its tangent joints are exact.
constexpr double kNear = 12.0;
// Lines that were given must be briefer by so much than the search's, which sees corners where they are: else
// their places depend on the way the pen ran (names of 1,537 drawn shapes kept when reversed: 98.6 to 99.8
// %). Where arcs begin the search looks coarsely.
constexpr double kFoundMargin = 2.0;
constexpr std::size_t kMostWork = 400; // pieces fitted for corners in place of tangent joints

bool IsSamePiece(const ChainPiece& a, const ChainPiece& b) {
    return a.first == b.first && a.last == b.last && a.isArc == b.isArc;
}

// Lines and arcs in the same places: found for two hands.
bool IsSameChain(const Chain& a, const Chain& b) {
    return a.isClosed == b.isClosed &&
           std::equal(a.pieces.begin(), a.pieces.end(), b.pieces.begin(), b.pieces.end(), IsSamePiece);
}

// Of the same kinds one after the other, whatever the breaks.
bool HasKindsOf(const Chain& a, const Chain& b) {
    return a.isClosed == b.isClosed &&
           std::equal(a.pieces.begin(), a.pieces.end(), b.pieces.begin(), b.pieces.end(),
                      [](const ChainPiece& p, const ChainPiece& q) { return p.isArc == q.isArc; });
}

// A chain as it was found, or closed; of a closed one also with the arcs that its bowed lines were meant as.
std::vector<Chain> Finished(const PricedPath& ink, Chain open, bool mayClose) {
    std::vector<Chain> finished;
    if (!mayClose || ink.path.Gap() > ink.closing) {
        finished.push_back(mayClose ? CloseChain(ink, open) : std::move(open));
        return finished;
    }
    Chain closed = CloseChain(ink, open);
    const bool isRing = IsRing(closed);
    if (std::optional<Chain> bent = WithMeantArcs(ink, isRing ? closed : open))
        finished.push_back(isRing ? std::move(*bent) : CloseChain(ink, *bent));
    if (std::optional<Chain> dee = AsDee(ink, closed))
        finished.push_back(std::move(*dee));
    finished.push_back(std::move(closed));
    return finished;
}

// The chains that may be the briefest, each once; of those found already what is briefer than the search's of
// the same kinds.
std::vector<Chain> FindChains(const PricedPath& ink, std::vector<Chain> found, bool mayClose) {
    std::vector<Chain> chains;
    for (Chain& searched : SearchChains(ink))
        for (Chain& chain : Finished(ink, std::move(searched), mayClose)) {
            const auto same = std::find_if(chains.begin(), chains.end(),
                                           [&](const Chain& other) { return IsSameChain(other, chain); });
            if (same == chains.end())
                chains.push_back(std::move(chain));
            else if (LengthOf(ink, chain) < LengthOf(ink, *same))
                *same = std::move(chain);
        }
    for (Chain& given : found)
        for (Chain& chain : Finished(ink, std::move(given), mayClose)) {
            const double most = LengthOf(ink, chain) + (AreLines(chain) ? kFoundMargin : 0.0);
            if (std::none_of(chains.begin(), chains.end(), [&](const Chain& other) {
                    return HasKindsOf(other, chain) && LengthOf(ink, other) <= most;
                }))
                chains.push_back(std::move(chain));
        }
    const std::size_t count = chains.size();
    for (std::size_t i = 0; i < count; ++i)
        if (std::optional<Chain> bracket = AsBracket(ink, chains[i]))
            chains.push_back(std::move(*bracket));
    return chains;
}

// A tangent joint, and the length of the chain with a corner there instead if no fit made it worse.
struct Doubt {
    double bound;
    std::size_t piece;
};

// The tangent joints of a chain that may be worth a corner, the likeliest first.
std::vector<Doubt> DoubtsOf(const PricedPath& ink, const Chain& chain, double least) {
    std::vector<Doubt> doubts;
    const double length = LengthOfHabit(ink, chain);
    for (std::size_t i = 1; i < chain.pieces.size(); ++i) {
        const ChainPiece& piece = chain.pieces[i];
        if (piece.joint != JointSight::Tangent)
            continue;
        const double bound = length + PriceCorner(ink, chain, i) - piece.jointPrice;
        if (bound < least)
            doubts.push_back({bound, i});
    }
    std::sort(doubts.begin(), doubts.end(), [](const Doubt& a, const Doubt& b) {
        return a.bound < b.bound || (a.bound == b.bound && a.piece < b.piece);
    });
    return doubts;
}

// Exact tangent joints tell whether they are: what looked like one from the pieces may cost more squares than
// a corner. One joint after the other becomes a corner as long as the description gets briefer.
Chain Settle(const PricedPath& ink, Chain chain) {
    Chain best = chain;
    FitTangentRuns(ink, 0.0, best);
    double least = LengthOfHabit(ink, best);
    std::size_t work = 0;
    for (bool isBetter = true; isBetter;) {
        isBetter = false;
        const Chain smooth = best;
        std::size_t corner = 0;
        for (const Doubt& doubt : DoubtsOf(ink, chain, least)) {
            if (doubt.bound >= least || work >= kMostWork)
                break;
            Chain sharp = smooth;
            work += CutTangentRun(ink, chain, doubt.piece, sharp);
            if (const double after = LengthOfHabit(ink, sharp); after < least) {
                least = after;
                best = std::move(sharp);
                corner = doubt.piece;
                isBetter = true;
            }
        }
        if (isBetter)
            chain = WithCorner(ink, std::move(chain), corner);
    }
    return best;
}

} // namespace

Chain FindChain(const PricedPath& ink, std::vector<Chain> found, bool mayClose, double tolerance,
                double rival) {
    std::vector<Chain> chains = FindChains(ink, std::move(found), mayClose);
    const auto straysOff = [&](const Chain& chain) {
        return chain.pieces.size() == 1 && !IsLoneCurve(ink, chain, tolerance);
    };
    const auto end = std::remove_if(chains.begin(), chains.end(), straysOff);
    if (end != chains.begin())
        chains.erase(end, chains.end());
    std::vector<double> lengths;
    lengths.reserve(chains.size());
    for (const Chain& chain : chains)
        lengths.push_back(LengthOfHabit(ink, chain));
    const double near = std::min(rival, *std::min_element(lengths.begin(), lengths.end())) + kNear;
    for (std::size_t i = 0; i < chains.size(); ++i)
        if (lengths[i] < near) {
            chains[i] = Settle(ink, std::move(chains[i]));
            lengths[i] = LengthOfHabit(ink, chains[i]);
        }
    const auto best = std::min_element(lengths.begin(), lengths.end()) - lengths.begin();
    return std::move(chains[static_cast<std::size_t>(best)]);
}

} // namespace Tessera::Geometry
