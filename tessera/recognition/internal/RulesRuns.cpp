#include "tessera/recognition/internal/RulesRuns.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <span>
#include <utility>

#include "tessera/recognition/internal/ChainGeometry.h"
#include "tessera/recognition/internal/ChainSearch.h"
#include "tessera/recognition/internal/EllipseEvidence.h"
#include "tessera/recognition/internal/EllipticRun.h"
#include "tessera/recognition/internal/InkCurves.h"

namespace Tessera::Geometry {

namespace {

double CostOf(const RunPrices& prices, bool isArc, double squared) {
    return (isArc ? prices.arc : prices.line).CostFor(squared);
}

bool IsWithin(const PricedPath& ink, const PricedPiece& priced, double tolerance) {
    for (int i = priced.piece.first; i <= priced.piece.last; ++i)
        if (std::fabs(DistanceFrom(priced.piece, ink.path.At(i))) > tolerance)
            return false;
    return true;
}

bool IsEllipticArc(const RulesRun& run) {
    return run.own != nullptr && run.own->curve->GetType() == CurveType_Ellipse &&
           !run.own->curve->IsClosed();
}

// The briefest description of a run by itself, and the piece that joints with its neighbours are priced by.
struct RunAlone {
    Description description;
    PricedPiece atStart;
    PricedPiece atEnd;
};

RunAlone DescribeAlone(const PricedPath& ink, const RulesRun& run) {
    const RunPrices prices = PriceRun(ink, run.first, run.last);
    RunAlone best;
    double least = 1e300;
    const auto offer = [&](const Description& description, const PricedPiece& atStart,
                           const PricedPiece& atEnd) {
        const double length = LengthOf(run.last - run.first, description);
        if (length >= least)
            return;
        least = length;
        best = {description, atStart, atEnd};
    };
    for (const bool isArc : {false, true}) {
        PricedPiece piece = isArc ? prices.arc : prices.line;
        if ((isArc && !prices.hasArc) || (isArc != run.isArc && !IsEllipticArc(run)))
            continue;
        FindDirections(ink, piece);
        for (const PricedPiece::Account& account : piece.accounts)
            offer({account.price, account.sumSq}, piece, piece);
    }
    if (!IsEllipticArc(run))
        return best;
    if (const std::optional<EllipticRun> arc = FindEllipticRun(ink, run.first, run.last))
        offer(arc->description, BendAt(*arc, false), BendAt(*arc, true));
    return best;
}

bool MayJoinEllipse(const RulesRun& run, bool mayChangeKinds) {
    return IsEllipticArc(run) || (mayChangeKinds && !run.isKept);
}

Description DescribeApart(const PricedPath& ink, std::span<const RulesRun> runs) {
    Description apart;
    RunAlone before;
    for (const RulesRun& run : runs) {
        RunAlone alone = DescribeAlone(ink, run);
        apart.price += alone.description.price;
        apart.sumSq += alone.description.sumSq;
        if (&run != &runs.front())
            apart.price += PriceJoint(ink, before.atEnd, alone.atStart, {ink, run.first}).price;
        before = std::move(alone);
    }
    return apart;
}

/// How runs are merged: for the hand that drew them.
struct Merger {
    const PricedPath& ink;
    double squared;
    double tolerance;
    bool mayChangeKinds;

    /// Takes the next run into a run; false, with nothing changed, if they are two.
    bool Merge(const RulesRun& next, RulesRun& run) const {
        if (run.isKept || next.isKept || (run.isArc != next.isArc && !mayChangeKinds))
            return false;
        const RunPrices whole = PriceRun(ink, run.first, next.last);
        const bool isArc = whole.hasArc && (run.isArc || next.isArc) &&
                           CostOf(whole, true, squared) < CostOf(whole, false, squared);
        const PricedPiece before = PieceOf(run);
        const PricedPiece after = PieceOf(next);
        const double apart = before.CostFor(squared) + after.CostFor(squared) +
                             PriceJoint(ink, before, after, {ink, next.first}).price;
        if ((!isArc && run.isArc && next.isArc) || CostOf(whole, isArc, squared) > apart ||
            !IsWithin(ink, isArc ? whole.arc : whole.line, tolerance))
            return false;
        run = {run.first, next.last, isArc};
        return true;
    }

    // The same of neighbours of which at least one is an elliptic arc. The squares that are left tell the
    // hand.
    bool MergeElliptic(std::span<RulesRun> both) const {
        RulesRun& run = both.front();
        const RulesRun& next = both.back();
        if ((!IsEllipticArc(run) && !IsEllipticArc(next)) || !MayJoinEllipse(run, mayChangeKinds) ||
            !MayJoinEllipse(next, mayChangeKinds))
            return false;
        const std::optional<EllipticRun> whole = FindEllipticRun(ink, run.first, next.last);
        const int points = next.last - run.first;
        if (!whole || whole->farthest > tolerance ||
            LengthOf(points, whole->description) > LengthOf(points, DescribeApart(ink, both)))
            return false;
        run.last = next.last;
        run.isArc = false;
        run.isKept = true;
        run.merged =
            std::make_unique<InterpretedCurve>(MakeEllipticArc(ink.path, whole->arc, run.first, run.last));
        run.own = run.merged.get();
        return true;
    }

    PricedPiece PieceOf(const RulesRun& run) const {
        const RunPrices prices = PriceRun(ink, run.first, run.last);
        PricedPiece piece = run.isArc ? prices.arc : prices.line;
        FindDirections(ink, piece);
        return piece;
    }
};

} // namespace

std::vector<RulesRun> RunsOf(const PricedPath& ink, const std::vector<const InterpretedCurve*>& curves) {
    std::vector<RulesRun> runs;
    for (const InterpretedCurve* made : curves) {
        RulesRun run{PointAt(ink.path, made->firstSample), PointAt(ink.path, made->lastSample)};
        if (!runs.empty())
            run.first = runs.back().last = (runs.back().last + run.first) / 2;
        run.own = made;
        runs.push_back(std::move(run));
    }
    for (RulesRun& run : runs) {
        if (run.last < run.first + 2)
            return {};
        const CurveType_e kind = run.own->curve->GetType();
        run.isArc = kind == CurveType_Arc;
        run.isKept = kind > CurveType_Arc || (run.isArc && !PriceRun(ink, run.first, run.last).hasArc);
    }
    return runs;
}

std::vector<Chain> ChainsOfRuns(const PricedPath& ink, const std::vector<RulesRun>& runs) {
    std::vector<int> breaks{runs.front().first};
    std::vector<bool> isArc;
    for (const RulesRun& run : runs) {
        breaks.push_back(run.last);
        isArc.push_back(run.isArc && !run.isKept);
    }
    return ChainsOver(ink, breaks, isArc);
}

const Chain& BriefestOf(const PricedPath& ink, const std::vector<Chain>& chains) {
    return *std::min_element(chains.begin(), chains.end(), [&](const Chain& a, const Chain& b) {
        return LengthOf(ink, a) < LengthOf(ink, b);
    });
}

void MergeNeighbours(const PricedPath& ink, double tolerance, bool mayChangeKinds,
                     std::vector<RulesRun>& runs) {
    const Merger merger{ink, BriefestOf(ink, ChainsOfRuns(ink, runs)).squared, tolerance, mayChangeKinds};
    for (std::size_t i = 1; i < runs.size();) {
        const bool isElliptic = merger.MergeElliptic({&runs[i - 1], 2});
        if (!isElliptic && !merger.Merge(runs[i], runs[i - 1])) {
            ++i;
            continue;
        }
        runs.erase(runs.begin() + static_cast<std::ptrdiff_t>(i));
        if (isElliptic && i > 1)
            --i; // what lies before it may be too short to tell of it alone
    }
}

std::optional<RoundShape> MergeIntoRound(const PricedPath& ink, double tolerance, bool mayChangeKinds,
                                         const std::vector<RulesRun>& runs, int samples) {
    const auto mayJoin = [&](const RulesRun& run) { return MayJoinEllipse(run, mayChangeKinds); };
    if (runs.size() < 2 || ink.path.Gap() > ink.closing ||
        std::none_of(runs.begin(), runs.end(), IsEllipticArc) ||
        !std::all_of(runs.begin(), runs.end(), mayJoin))
        return std::nullopt;
    const std::optional<EllipseEvidence> ellipse = FindEllipse(ink.path);
    std::optional<RoundShape> round;
    if (ellipse)
        round = FindRoundShape(ink, *ellipse, samples);
    if (!round || round->isCircle)
        return std::nullopt;
    const EllipseEvidence beside =
        EvidenceBeside(ink.path, round->centre, round->radii[0], round->radii[1], round->rotation);
    const bool isWithin = std::all_of(beside.distance.begin(), beside.distance.end(),
                                      [&](double d) { return std::fabs(d) <= tolerance; });
    Description apart = DescribeApart(ink, runs);
    apart.price += 2.0 * kNumberPrice; // the start point
    return isWithin && LengthOf(ink.path, round->description) <= LengthOf(ink.path, apart) ? round
                                                                                           : std::nullopt;
}

void SimplifyKinds(const PricedPath& ink, double tolerance, std::vector<RulesRun>& runs) {
    const double squared = BriefestOf(ink, ChainsOfRuns(ink, runs)).squared;
    for (RulesRun& run : runs) {
        if (!run.isArc || run.isKept)
            continue;
        const RunPrices prices = PriceRun(ink, run.first, run.last);
        if (CostOf(prices, false, squared) <= CostOf(prices, true, squared) &&
            IsWithin(ink, prices.line, tolerance))
            run = {run.first, run.last};
    }
}

} // namespace Tessera::Geometry
