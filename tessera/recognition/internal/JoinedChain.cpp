// Dynamic programming over pieces: the best chain that ends with a piece follows from the best chains that
// end where it begins and the joint between. All hands are searched at once, for a joint's price is the same
// for all of them.
#include "tessera/recognition/internal/JoinedChain.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "tessera/recognition/internal/CornerEvidence.h"
#include "tessera/recognition/internal/JoinedPieces.h"

namespace Tessera::Geometry {

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr std::size_t kHandCount = kHands.size();
constexpr std::size_t kSearches = 2 * kHandCount; // with arcs and without, for each hand

constexpr int kSpacing = 5;            // points between candidates where nothing turns
constexpr int kShortest = 3;           // points of a piece
constexpr double kIndependent = 0.125; // of the points: neighbours stray together
// Root mean square distances, sizes, that the ink of a sloppy hand hardly exceeds, and one sigma of that.
constexpr double kUsualMost = 0.03;
constexpr double kUsualSlack = 0.012;
constexpr double kLeastSpread = 0.004; // no hand is more careful, sizes
constexpr double kMixing = 2.0;        // price of drawing both lines and arcs: most people draw one kind
constexpr double kHopeless = 20.0;     // parameters' worth of squares that no saving makes good

struct Node {
    JoinedPiece priced;
    int start = 0; // candidate at which it begins
};

// For each hand: the best chain that ends with a node.
struct Best {
    double cost = kInfinite;
    int from = -1;
    JointSight joint = JointSight::Corner;
};

struct Lattice {
    std::vector<int> at;      // candidate breaks
    std::vector<double> seen; // turn of the ink at each
    std::vector<Node> nodes;  // ascending by end
    std::vector<int> ending;  // the first node that ends at each candidate, and behind the last
    std::vector<std::array<Best, kSearches>> best;
};

Lattice MakeLattice(const PricedPath& ink) {
    Lattice lattice;
    lattice.at = FindBreakCandidates(ink, kSpacing);
    for (const int at : lattice.at)
        lattice.seen.push_back(SignedTurn(ink.path, at));
    const double haste = HasteOf(ink.path);
    const double hopeless = kHopeless * ink.prices.parameter;
    for (std::size_t j = 0; j < lattice.at.size(); ++j) {
        lattice.ending.push_back(static_cast<int>(lattice.nodes.size()));
        for (std::size_t i = j; i-- > 0;) {
            if (lattice.at[j] - lattice.at[i] < kShortest)
                continue;
            const JoinedPieces both = PriceJoinedPieces(ink, lattice.at[i], lattice.at[j], haste);
            const bool line = both.line.CostFor(kHands.front()) <= hopeless;
            const bool arc = both.hasArc && both.arc.CostFor(kHands.front()) <= hopeless;
            if (line)
                lattice.nodes.push_back({both.line, static_cast<int>(i)});
            if (arc)
                lattice.nodes.push_back({both.arc, static_cast<int>(i)});
            if (!line && !arc)
                break; // a longer piece fits no better
        }
    }
    lattice.ending.push_back(static_cast<int>(lattice.nodes.size()));
    return lattice;
}

// The best ways to a node, for each hand.
void FindBest(const PricedPath& ink, int n, Lattice& lattice) {
    const Node& node = lattice.nodes[static_cast<std::size_t>(n)];
    std::array<Best, kSearches>& best = lattice.best[static_cast<std::size_t>(n)];
    if (node.start == 0)
        for (Best& b : best)
            b.cost = 0.0;
    const auto start = static_cast<std::size_t>(node.start);
    const double least = LeastJointPrice(ink);
    for (int m = lattice.ending[start]; m < lattice.ending[start + 1]; ++m) {
        const auto& before = lattice.best[static_cast<std::size_t>(m)];
        bool isWorth = false;
        for (std::size_t h = 0; h < kSearches; ++h)
            isWorth = isWorth || before[h].cost + least < best[h].cost;
        if (!isWorth)
            continue;
        const JointPrice joint = PriceJoint(ink, lattice.nodes[static_cast<std::size_t>(m)].priced,
                                            node.priced, lattice.at[start], lattice.seen[start]);
        for (std::size_t h = 0; h < kSearches; ++h)
            if (before[h].cost + joint.price < best[h].cost)
                best[h] = {before[h].cost + joint.price, m, joint.sight};
    }
    for (std::size_t h = 0; h < kSearches; ++h)
        best[h].cost += node.priced.piece.isArc && h >= kHandCount
                            ? kInfinite
                            : node.priced.CostFor(kHands[h % kHandCount]);
}

// The cheapest chain for a hand, and its length as a description when the spread is taken from the ink.
Chain TraceBack(const PricedPath& ink, const Lattice& lattice, std::size_t hand, double& length) {
    const double squared = kHands[hand % kHandCount];
    const std::size_t count = lattice.at.size();
    int last = -1;
    for (int n = lattice.ending[count - 1]; n < lattice.ending[count]; ++n)
        if (last < 0 || lattice.best[static_cast<std::size_t>(n)][hand].cost <
                            lattice.best[static_cast<std::size_t>(last)][hand].cost)
            last = n;
    Chain chain;
    if (last < 0 || lattice.best[static_cast<std::size_t>(last)][hand].cost == kInfinite)
        return chain;
    chain.cost = 2.0 * ink.prices.parameter + lattice.best[static_cast<std::size_t>(last)][hand].cost;
    double sumSq = 0.0;
    bool hasArc = false;
    bool hasLine = false;
    for (int n = last; n >= 0; n = lattice.best[static_cast<std::size_t>(n)][hand].from) {
        const JoinedPiece& priced = lattice.nodes[static_cast<std::size_t>(n)].priced;
        sumSq += priced.BestFor(squared).sumSq;
        ChainPiece piece = priced.piece;
        piece.cost = priced.CostFor(squared);
        piece.joint = lattice.best[static_cast<std::size_t>(n)][hand].joint;
        piece.isJudged = true;
        chain.pieces.push_back(piece);
        (piece.isArc ? hasArc : hasLine) = true;
    }
    std::reverse(chain.pieces.begin(), chain.pieces.end());
    const int n = ink.path.Size();
    const double astray = (std::sqrt(sumSq / n) - kUsualMost) / kUsualSlack;
    length = (astray > 0.0 ? 0.5 * astray * astray : 0.0) + chain.cost - squared * sumSq +
             (hasArc && hasLine ? kMixing : 0.0) +
             0.5 * kIndependent * n * std::log(sumSq / n + kLeastSpread * kLeastSpread);
    return chain;
}

} // namespace

Chain SearchJoinedChain(const PricedPath& ink) {
    Lattice lattice = MakeLattice(ink);
    lattice.best.resize(lattice.nodes.size());
    for (std::size_t n = 0; n < lattice.nodes.size(); ++n)
        FindBest(ink, static_cast<int>(n), lattice);
    Chain briefest;
    double least = kInfinite;
    for (std::size_t hand = 0; hand < kSearches; ++hand) {
        double length = kInfinite;
        Chain chain = TraceBack(ink, lattice, hand, length);
        if (length < least) {
            least = length;
            briefest = std::move(chain);
        }
    }
    return briefest;
}

} // namespace Tessera::Geometry
