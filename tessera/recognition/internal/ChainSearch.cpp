// Dynamic programming over pieces: the best chain that ends with a piece follows from the best chains that
// end where it begins and the joint between. All hands are searched at once, for a joint's price is the same
// for all of them.
#include "tessera/recognition/internal/ChainSearch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
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
// For each hand: with arcs, with arcs and in doubt of tangent joints, without arcs.
constexpr std::size_t kSureSearches = kHandCount;
constexpr std::size_t kArcSearches = 2 * kHandCount;
constexpr std::size_t kSearches = 3 * kHandCount;

constexpr std::size_t kNodesPerCandidate = 10; // usually: room to begin with
constexpr int kSpacing = 5;                    // points between candidates where nothing turns
constexpr int kShortest = 3;                   // points of a piece
constexpr double kMixing = 1.0; // price of drawing both lines and arcs: most people draw one kind
// Of a tangent joint in doubt of it. Pieces that only nearly touch look tangent until they are made so; then
// the corner that was meant lies elsewhere.
constexpr double kDoubt = kNumberPrice;

struct Node {
    PricedPiece priced;
    int start = 0; // candidate at which it begins
};

// Of each search the cheapest chain that ends with a node: its cost, and the node before the last.
struct Ways {
    std::array<double, kSearches> cost;
    std::array<int, kSearches> from;
};

Ways NoWays() {
    Ways none;
    none.cost.fill(kInfinite);
    none.from.fill(-1);
    return none;
}

struct Lattice {
    std::vector<int> at;          // candidate breaks
    std::vector<JointSite> sites; // what the ink shows at each
    std::vector<Node> nodes;      // ascending by end
    std::vector<int> ending;      // the first node that ends at each candidate, and behind the last
    std::vector<Ways> ways;       // to each node
    std::vector<int> order;       // the nodes that end at a candidate, the cheapest to come to first
};

Lattice MakeLattice(const PricedPath& ink) {
    Lattice lattice;
    lattice.at = FindBreakCandidates(ink, kSpacing);
    lattice.sites.reserve(lattice.at.size());
    lattice.ending.reserve(lattice.at.size() + 1);
    lattice.nodes.reserve(kNodesPerCandidate * lattice.at.size());
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
    for (Node& node : lattice.nodes)
        FindDirections(ink, node.priced);
    return lattice;
}

// The cheapest ways to a node.
void FindWays(const PricedPath& ink, int n, Lattice& lattice) {
    const Node& node = lattice.nodes[static_cast<std::size_t>(n)];
    Ways& ways = lattice.ways[static_cast<std::size_t>(n)];
    const std::size_t searches = node.priced.piece.isArc ? kArcSearches : kSearches;
    if (node.start == 0)
        std::fill_n(ways.cost.begin(), searches, 0.0);
    const auto start = static_cast<std::size_t>(node.start);
    const double least = LeastJointPrice();
    for (int i = lattice.ending[start]; i < lattice.ending[start + 1]; ++i) {
        const int m = lattice.order[static_cast<std::size_t>(i)];
        const Ways& before = lattice.ways[static_cast<std::size_t>(m)];
        bool isWorth = false;
        for (std::size_t h = 0; h < searches; ++h)
            isWorth = isWorth || before.cost[h] + least < ways.cost[h];
        if (!isWorth)
            continue;
        const JointPrice joint = PriceJoint(ink, lattice.nodes[static_cast<std::size_t>(m)].priced,
                                            node.priced, lattice.sites[start]);
        const double doubted = std::min(joint.price + kDoubt, joint.untied);
        for (std::size_t h = 0; h < searches; ++h) {
            const bool inDoubt = h >= kSureSearches && h < kArcSearches;
            const double cost = before.cost[h] + (inDoubt ? doubted : joint.price);
            if (cost < ways.cost[h]) {
                ways.cost[h] = cost;
                ways.from[h] = m;
            }
        }
    }
    for (std::size_t h = 0; h < searches; ++h)
        ways.cost[h] += node.priced.CostFor(kHands[h % kHandCount]);
}

// The ways to all nodes. Joints are priced from the cheapest chain on: most others cannot come to less then.
void FindWays(const PricedPath& ink, Lattice& lattice) {
    lattice.ways.assign(lattice.nodes.size(), NoWays());
    lattice.order.resize(lattice.nodes.size());
    std::iota(lattice.order.begin(), lattice.order.end(), 0);
    const auto isCheaper = [&](int a, int b) {
        const double costA = lattice.ways[static_cast<std::size_t>(a)].cost[kUsualHand];
        const double costB = lattice.ways[static_cast<std::size_t>(b)].cost[kUsualHand];
        return costA < costB || (costA == costB && a < b); // one order everywhere
    };
    for (std::size_t j = 0; j + 1 < lattice.ending.size(); ++j) {
        for (int n = lattice.ending[j]; n < lattice.ending[j + 1]; ++n)
            FindWays(ink, n, lattice);
        std::sort(lattice.order.begin() + lattice.ending[j], lattice.order.begin() + lattice.ending[j + 1],
                  isCheaper);
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
Chain TraceBack(const PricedPath& ink, const Lattice& lattice, std::size_t search) {
    const std::size_t count = lattice.at.size();
    int last = -1;
    double least = kInfinite;
    for (int n = lattice.ending[count - 1]; n < lattice.ending[count]; ++n)
        if (lattice.ways[static_cast<std::size_t>(n)].cost[search] < least) {
            least = lattice.ways[static_cast<std::size_t>(n)].cost[search];
            last = n;
        }
    std::vector<const PricedPiece*> pieces;
    std::vector<JointPrice> joints; // of each piece with the one before
    for (int n = last; n >= 0;) {
        const Node& node = lattice.nodes[static_cast<std::size_t>(n)];
        n = lattice.ways[static_cast<std::size_t>(n)].from[search];
        pieces.push_back(&node.priced);
        joints.push_back(n < 0
                             ? JointPrice()
                             : PriceJoint(ink, lattice.nodes[static_cast<std::size_t>(n)].priced, node.priced,
                                          lattice.sites[static_cast<std::size_t>(node.start)]));
    }
    std::reverse(pieces.begin(), pieces.end());
    std::reverse(joints.begin(), joints.end());
    return Assemble(kHands[search % kHandCount], pieces, joints);
}

} // namespace

std::vector<Chain> SearchChains(const PricedPath& ink) {
    Lattice lattice = MakeLattice(ink);
    FindWays(ink, lattice);
    std::vector<Chain> chains;
    chains.reserve(kSearches);
    for (std::size_t search = 0; search < kSearches; ++search) {
        Chain chain = TraceBack(ink, lattice, search);
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
        FindDirections(ink, priced.back());
        pieces.push_back(&priced.back());
        joints.push_back(i == 0 ? JointPrice{} : PriceJoint(ink, priced[i - 1], priced[i], {ink, breaks[i]}));
    }
    std::vector<Chain> chains;
    chains.reserve(kHands.size());
    for (const double squared : kHands)
        chains.push_back(Assemble(squared, pieces, joints));
    return chains;
}

void PriceJoints(const PricedPath& ink, Chain& chain) {
    for (std::size_t i = 1; i < chain.pieces.size(); ++i) {
        const ChainPiece& after = chain.pieces[i];
        SetJoint(
            PriceJoint(ink, AsPriced(ink, chain.pieces[i - 1]), AsPriced(ink, after), {ink, after.first}), i,
            chain);
    }
    const PricedPiece first = AsPriced(ink, chain.pieces.front());
    const PricedPiece last = AsPriced(ink, chain.pieces.back());
    if (IsRing(chain))
        SetJoint(PriceJoint(ink, last, first, {ink, first.piece.first}), 0, chain);
    else if (chain.isClosed)
        SetJoint(PriceSeam(ink, last, first), 0, chain);
}

Chain WithCorner(const PricedPath& ink, Chain chain, std::size_t piece) {
    SetJoint({PriceCorner(ink, chain, piece), JointSight::Corner}, piece, chain);
    return chain;
}

double LengthOf(const PricedPath& ink, const Chain& chain) {
    const bool isMixed = !AreLines(chain) && !AreArcs(chain);
    return LengthOf(ink.path, {chain.price + (isMixed ? kMixing : 0.0), chain.sumSq});
}

} // namespace Tessera::Geometry
