// Dynamic programming over pieces: the best chain that ends with a piece follows from the best chains that
// end where it begins and the joint between. All hands are searched at once, for a joint's price is the same
// for all of them.
#include "tessera/recognition/internal/ChainSearch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>
#include <utility>
#include <vector>

#include "tessera/recognition/internal/CornerEvidence.h"
#include "tessera/recognition/internal/Description.h"
#include "tessera/recognition/internal/PiecePrices.h"

namespace Tessera::Geometry {

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr std::size_t kHandCount = kHands.size();
constexpr std::size_t kSearches = 2 * kHandCount; // with arcs and without, for each hand

constexpr int kSpacing = 5;     // points between candidates where nothing turns
constexpr int kShortest = 3;    // points of a piece
constexpr double kMixing = 1.0; // price of drawing both lines and arcs: most people draw one kind

struct Node {
    PricedPiece priced;
    int start = 0; // candidate at which it begins
};

// For each hand: the best chain that ends with a node.
struct Best {
    double cost = kInfinite;
    int from = -1;
    double price = 0.0; // of the joint
    JointSight joint = JointSight::Corner;
};

struct Lattice {
    std::vector<int> at;          // candidate breaks
    std::vector<JointSite> sites; // what the ink shows at each
    std::vector<Node> nodes;      // ascending by end
    std::vector<int> ending;      // the first node that ends at each candidate, and behind the last
    std::vector<std::array<Best, kSearches>> best;
};

Lattice MakeLattice(const PricedPath& ink) {
    Lattice lattice;
    lattice.at = FindBreakCandidates(ink, kSpacing);
    for (const int at : lattice.at)
        lattice.sites.emplace_back(ink, at);
    for (std::size_t j = 0; j < lattice.at.size(); ++j) {
        lattice.ending.push_back(static_cast<int>(lattice.nodes.size()));
        bool isNearest = true; // without it there might be no way through
        for (std::size_t i = j; i-- > 0;) {
            if (lattice.at[j] - lattice.at[i] < kShortest)
                continue;
            const RunPrices both = PriceRun(ink, lattice.at[i], lattice.at[j]);
            const bool line = both.line.CostFor(kHands.front()) <= kHopeless;
            if (line || isNearest)
                lattice.nodes.push_back({both.line, static_cast<int>(i)});
            if (both.hasArc)
                lattice.nodes.push_back({both.arc, static_cast<int>(i)});
            if (!line && !both.hasArc)
                break; // a longer piece fits no better
            isNearest = false;
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
    const double least = LeastJointPrice();
    for (int m = lattice.ending[start]; m < lattice.ending[start + 1]; ++m) {
        const auto& before = lattice.best[static_cast<std::size_t>(m)];
        bool isWorth = false;
        for (std::size_t h = 0; h < kSearches; ++h)
            isWorth = isWorth || before[h].cost + least < best[h].cost;
        if (!isWorth)
            continue;
        const JointPrice joint = PriceJoint(ink, lattice.nodes[static_cast<std::size_t>(m)].priced,
                                            node.priced, lattice.sites[start]);
        for (std::size_t h = 0; h < kSearches; ++h)
            if (before[h].cost + joint.price < best[h].cost)
                best[h] = {before[h].cost + joint.price, m, joint.price, joint.sight};
    }
    for (std::size_t h = 0; h < kHandCount; ++h) {
        const double cost = node.priced.CostFor(kHands[h]);
        best[h].cost += cost;
        best[h + kHandCount].cost += node.priced.piece.isArc ? kInfinite : cost;
    }
}

Chain Assemble(double squared, std::span<const PricedPiece* const> priced,
               std::span<const JointPrice> joints) {
    Chain chain;
    chain.squared = squared;
    chain.price = 2.0 * kNumberPrice; // the start point
    for (std::size_t i = 0; i < priced.size(); ++i) {
        const PricedPiece::Account& account = priced[i]->BestFor(squared);
        chain.pieces.push_back(priced[i]->piece);
        ChainPiece& piece = chain.pieces.back();
        piece.price = account.price;
        piece.sumSq = account.sumSq;
        piece.joint = joints[i].sight;
        piece.jointPrice = i > 0 ? joints[i].price : 0.0;
        chain.price += account.price + (i > 0 ? joints[i].price : 0.0);
        chain.sumSq += account.sumSq;
    }
    return chain;
}

// The cheapest chain of a search; empty when there is none.
Chain TraceBack(const Lattice& lattice, std::size_t search) {
    const std::size_t count = lattice.at.size();
    int last = -1;
    const auto bestOf = [&](int n) -> const Best& {
        return lattice.best[static_cast<std::size_t>(n)][search];
    };
    for (int n = lattice.ending[count - 1]; n < lattice.ending[count]; ++n)
        if (bestOf(n).cost < (last < 0 ? kInfinite : bestOf(last).cost))
            last = n;
    std::vector<const PricedPiece*> pieces;
    std::vector<JointPrice> joints;
    for (int n = last; n >= 0; n = bestOf(n).from) {
        pieces.push_back(&lattice.nodes[static_cast<std::size_t>(n)].priced);
        joints.push_back({bestOf(n).price, bestOf(n).joint});
    }
    std::reverse(pieces.begin(), pieces.end());
    std::reverse(joints.begin(), joints.end());
    return Assemble(kHands[search % kHandCount], pieces, joints);
}

} // namespace

std::vector<Chain> SearchChains(const PricedPath& ink) {
    Lattice lattice = MakeLattice(ink);
    lattice.best.resize(lattice.nodes.size());
    for (std::size_t n = 0; n < lattice.nodes.size(); ++n)
        FindBest(ink, static_cast<int>(n), lattice);
    std::vector<Chain> chains;
    for (std::size_t search = 0; search < kSearches; ++search) {
        Chain chain = TraceBack(lattice, search);
        if (!chain.pieces.empty())
            chains.push_back(std::move(chain));
    }
    return chains;
}

std::vector<Chain> ChainsOver(const PricedPath& ink, const std::vector<int>& breaks,
                              const std::vector<bool>& isArc) {
    std::vector<PricedPiece> priced;
    std::vector<const PricedPiece*> pieces;
    std::vector<JointPrice> joints;
    priced.reserve(isArc.size());
    for (std::size_t i = 0; i < isArc.size(); ++i) {
        const RunPrices both = PriceRun(ink, breaks[i], breaks[i + 1]);
        if (isArc[i] && !both.hasArc)
            return {};
        priced.push_back(isArc[i] ? both.arc : both.line);
        pieces.push_back(&priced.back());
        joints.push_back(i == 0 ? JointPrice{} : PriceJoint(ink, priced[i - 1], priced[i], {ink, breaks[i]}));
    }
    std::vector<Chain> chains;
    chains.reserve(kHands.size());
    for (const double squared : kHands)
        chains.push_back(Assemble(squared, pieces, joints));
    return chains;
}

double LengthOf(const PricedPath& ink, const Chain& chain) {
    const bool isMixed = !AreLines(chain) && !AreArcs(chain);
    return LengthOf(ink.path, {chain.price + (isMixed ? kMixing : 0.0), chain.sumSq});
}

} // namespace Tessera::Geometry
