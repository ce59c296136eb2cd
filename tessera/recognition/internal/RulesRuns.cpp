#include "tessera/recognition/internal/RulesRuns.h"

#include <algorithm>
#include <cmath>

#include "tessera/recognition/internal/ChainGeometry.h"
#include "tessera/recognition/internal/ChainSearch.h"

namespace Tessera::Geometry {

namespace {

// The first point that lies not before a sample.
int PointAt(const InkPath& path, int sample) {
    const auto at = std::lower_bound(path.source.begin(), path.source.end(), static_cast<double>(sample));
    return std::min(static_cast<int>(at - path.source.begin()), path.Size() - 1);
}

double CostOf(const RunPrices& prices, bool isArc, double squared) {
    return (isArc ? prices.arc : prices.line).CostFor(squared);
}

bool IsWithin(const PricedPath& ink, const PricedPiece& priced, double tolerance) {
    for (int i = priced.piece.first; i <= priced.piece.last; ++i)
        if (std::fabs(DistanceFrom(priced.piece, ink.path.At(i))) > tolerance)
            return false;
    return true;
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

    PricedPiece PieceOf(const RulesRun& run) const {
        const RunPrices prices = PriceRun(ink, run.first, run.last);
        PricedPiece piece = run.isArc ? prices.arc : prices.line;
        FindDirections(ink, piece);
        return piece;
    }
};

} // namespace

std::vector<RulesRun> RunsOf(const PricedPath& ink, const std::vector<InterpretedCurve>& curves) {
    std::vector<RulesRun> runs;
    for (const InterpretedCurve& made : curves) {
        RulesRun run{PointAt(ink.path, made.firstSample), PointAt(ink.path, made.lastSample)};
        if (!runs.empty())
            run.first = runs.back().last = (runs.back().last + run.first) / 2;
        run.own = &made;
        runs.push_back(run);
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
    std::size_t kept = 0;
    for (std::size_t i = 1; i < runs.size(); ++i)
        if (!merger.Merge(runs[i], runs[kept]))
            runs[++kept] = runs[i];
    runs.resize(kept + 1);
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
