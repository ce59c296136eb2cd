// All short runs of pieces with an arc in them are asked; most can be ruled out by what the best elliptic arc
// would save, before one is fitted.
#include "tessera/recognition/internal/EllipticPieces.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <optional>
#include <utility>

#include "tessera/recognition/internal/ChainGeometry.h"
#include "tessera/recognition/internal/EllipticRun.h"
#include "tessera/recognition/internal/InkCurves.h"

namespace Tessera::Geometry {

namespace {

constexpr std::size_t kMostPieces = 4; // that one elliptic arc takes the place of
constexpr double kReach = 0.5;         // radians along an ellipse to where it meets a neighbour
constexpr double kLeastGap = 0.1;      // of a whole ellipse: what its arc leaves open
constexpr int kSteps = 10;
constexpr int kHalvings = 50;

/// An elliptic arc for some pieces of a chain.
struct Substitute {
    std::size_t first = 0; // pieces
    std::size_t last = 0;
    EllipticRun run;
    Description description; // of the chain with it
    double before = 0.0;     // prices of its joints
    double after = 0.0;
};

// The chain without some of its pieces and their joints; the seam of a closed one stays.
Description Without(const Chain& chain, std::size_t first, std::size_t last) {
    Description rest{chain.price, chain.sumSq};
    for (std::size_t i = first; i <= last; ++i) {
        rest.price -= chain.pieces[i].price + (i > 0 ? chain.pieces[i].jointPrice : 0.0);
        rest.sumSq -= chain.pieces[i].sumSq;
    }
    if (last + 1 < chain.pieces.size())
        rest.price -= chain.pieces[last + 1].jointPrice;
    rest.sumSq = std::max(0.0, rest.sumSq);
    return rest;
}

/// The elliptic arcs over runs of the path, by their first and last points, each fitted once: a search begins
/// anew for every one that was taken.
class RunCache {
public:
    const std::optional<EllipticRun>& Find(const PricedPath& ink, int first, int last) {
        const auto [at, isNew] = runs_.try_emplace({first, last});
        if (isNew)
            at->second = FindEllipticRun(ink, first, last);
        return at->second;
    }

private:
    std::map<std::pair<int, int>, std::optional<EllipticRun>> runs_;
};

/// Looks for the elliptic arcs of a chain.
struct Search {
    const PricedPath& ink;
    const Chain& chain;
    double tolerance;
    RunCache& runs;

    bool IsLast(std::size_t piece) const { return piece + 1 == chain.pieces.size(); }

    // Whether one of the pieces runs on over the place where the chain closes.
    bool RunOnOverSeam(std::size_t first, std::size_t last) const {
        return chain.isClosed && (first == 0 || IsLast(last)) &&
               chain.pieces.front().joint != JointSight::Corner;
    }

    // Some of the pieces, not all: these have been asked as a whole.
    bool MayBeOne(std::size_t first, std::size_t last) const {
        const auto isKept = [&](std::size_t i) { return chain.pieces[i].kept != nullptr; };
        const bool areAll = first == 0 && IsLast(last);
        if (areAll || RunOnOverSeam(first, last) || (first > 0 && isKept(first - 1)) ||
            (!IsLast(last) && isKept(last + 1)))
            return false;
        bool hasArc = false;
        for (std::size_t i = first; i <= last; ++i) {
            const ChainPiece& piece = chain.pieces[i];
            if (isKept(i) || piece.last <= piece.first)
                return false;
            hasArc = hasArc || piece.isArc;
        }
        return hasArc;
    }

    // Nothing unless the chain gets shorter than `most`.
    std::optional<Substitute> Find(std::size_t first, std::size_t last, double most) const {
        if (!MayBeOne(first, last))
            return std::nullopt;
        Substitute made{first, last, {}, Without(chain, first, last)};
        Description best = made.description;
        best.price += kEllipticRunPrice + LeastJointPrice() * ((first > 0 ? 1 : 0) + (IsLast(last) ? 0 : 1));
        if (LengthOf(ink.path, best) >= most)
            return std::nullopt;
        const std::optional<EllipticRun>& run =
            runs.Find(ink, chain.pieces[first].first, chain.pieces[last].last);
        if (!run || run->farthest > tolerance)
            return std::nullopt;
        made.run = *run;
        if (!PriceCorners(made))
            return std::nullopt;
        made.description.price += run->description.price + made.before + made.after;
        made.description.sumSq += run->description.sumSq;
        return LengthOf(ink.path, made.description) < most ? std::optional<Substitute>(made) : std::nullopt;
    }

    // False where the elliptic arc runs on smoothly into a neighbour.
    bool PriceCorners(Substitute& made) const {
        JointPrice before;
        JointPrice after;
        if (made.first > 0)
            before = PriceJoint(ink, AsPriced(ink, chain.pieces[made.first - 1]), BendAt(made.run, false),
                                {ink, made.run.first});
        if (!IsLast(made.last))
            after = PriceJoint(ink, BendAt(made.run, true), AsPriced(ink, chain.pieces[made.last + 1]),
                               {ink, made.run.last});
        made.before = before.price;
        made.after = after.price;
        return before.sight == JointSight::Corner && after.sight == JointSight::Corner;
    }

    // Whether a line and an arc touch between two of the pieces: people mean that.
    bool HasTangent(std::size_t first, std::size_t last) const {
        const auto touches = [&](std::size_t i) {
            return chain.pieces[i].joint == JointSight::Tangent &&
                   chain.pieces[i].isArc != chain.pieces[i - 1].isArc;
        };
        for (std::size_t i = first + 1; i <= last; ++i)
            if (touches(i))
                return true;
        return false;
    }

    std::optional<Substitute> FindBest(double margin) const {
        std::optional<Substitute> best;
        double least = LengthOf(ink.path, {chain.price, chain.sumSq}) - margin;
        const std::size_t count = chain.pieces.size();
        for (std::size_t i = 0; i < count; ++i)
            for (std::size_t k = i; k < std::min(count, i + kMostPieces); ++k) {
                const double doubt = HasTangent(i, k) ? margin : 0.0;
                if (std::optional<Substitute> made = Find(i, k, least - doubt)) {
                    least = LengthOf(ink.path, made->description) + doubt;
                    best = std::move(made);
                }
            }
        return best;
    }
};

// Draws an end of an elliptic arc on, or cuts it off, to where it meets the carrier of the neighbour there:
// neither leaves its ink for the corner. False where they do not meet within reach.
bool DrawOnto(const ChainPiece& neighbour, bool atEnd, EllipticArc& arc) {
    double& end = atEnd != arc.isReversed ? arc.to : arc.from;
    const double onward = &end == &arc.to ? 1.0 : -1.0;
    const double open = (1.0 - kLeastGap) * 2.0 * std::numbers::pi - (arc.to - arc.from);
    const auto isLeft = [&](double t) { return DistanceFrom(neighbour, PointOn(arc, t)) < 0.0; };
    for (int i = 0; i < kSteps; ++i)
        for (const double way : {1.0, -1.0}) {
            const double reach = onward * way * (way > 0.0 ? std::clamp(open, 0.0, kReach) : kReach);
            double a = end + reach * i / kSteps;
            double b = end + reach * (i + 1) / kSteps;
            const bool isLeftOfA = isLeft(a);
            if (isLeftOfA == isLeft(b))
                continue;
            for (int k = 0; k < kHalvings; ++k) {
                const double middle = 0.5 * (a + b);
                (isLeft(middle) == isLeftOfA ? a : b) = middle;
            }
            end = 0.5 * (a + b);
            return true;
        }
    return false;
}

// A neighbour that was fitted to touch what is gone lies where its ink is.
void LoosenFrom(const PricedPath& ink, ChainPiece& neighbour) {
    const RunFits fits = FitRun(ink, neighbour.first, neighbour.last, 0.0);
    neighbour.line = fits.line;
    if (neighbour.isArc && fits.hasArc)
        neighbour.circle = fits.circle;
}

// The corner before a piece, one of whose sides is the elliptic arc.
void MeetAt(const EllipticArc& arc, bool atEnd, double price, bool isMet, ChainPiece& after) {
    after.joint = JointSight::Corner;
    after.jointPrice = price;
    after.isTouching = isMet;
    after.meet = PointOn(arc, atEnd != arc.isReversed ? arc.to : arc.from);
}

std::unique_ptr<InterpretedCurve> Take(const PricedPath& ink, bool mayJoin, Substitute& made, Chain& chain) {
    EllipticArc& arc = made.run.arc;
    std::vector<ChainPiece>& pieces = chain.pieces;
    ChainPiece piece{made.run.first, made.run.last};
    piece.price = made.run.description.price;
    piece.sumSq = made.run.description.sumSq;
    piece.line = FitRun(ink, piece.first, piece.last, 0.0).line;
    piece.joint = pieces[made.first].joint;
    piece.jointPrice = pieces[made.first].jointPrice;
    if (made.first > 0) {
        LoosenFrom(ink, pieces[made.first - 1]);
        MeetAt(arc, false, made.before, mayJoin && DrawOnto(pieces[made.first - 1], false, arc), piece);
    }
    if (made.last + 1 < pieces.size()) {
        ChainPiece& after = pieces[made.last + 1];
        LoosenFrom(ink, after);
        MeetAt(arc, true, made.after, mayJoin && DrawOnto(after, true, arc), after);
    }
    auto kept = std::make_unique<InterpretedCurve>(MakeEllipticArc(ink.path, arc, piece.first, piece.last));
    piece.kept = kept.get();
    pieces[made.first] = piece;
    pieces.erase(pieces.begin() + static_cast<std::ptrdiff_t>(made.first) + 1,
                 pieces.begin() + static_cast<std::ptrdiff_t>(made.last) + 1);
    chain.price = made.description.price;
    chain.sumSq = made.description.sumSq;
    return kept;
}

} // namespace

std::vector<std::unique_ptr<InterpretedCurve>> TakeEllipticPieces(const PricedPath& ink, double tolerance,
                                                                  double margin, bool mayJoin, Chain& chain) {
    std::vector<std::unique_ptr<InterpretedCurve>> kept;
    RunCache runs;
    while (std::optional<Substitute> best = Search{ink, chain, tolerance, runs}.FindBest(margin))
        kept.push_back(Take(ink, mayJoin, *best, chain));
    return kept;
}

} // namespace Tessera::Geometry
