#include "tessera/recognition/internal/RulesTidying.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "tessera/geometry/Arc.h"
#include "tessera/recognition/internal/ChainClosing.h"
#include "tessera/recognition/internal/ChainReading.h"
#include "tessera/recognition/internal/ChainSearch.h"
#include "tessera/recognition/internal/InkCurves.h"
#include "tessera/recognition/internal/InkDeviations.h"
#include "tessera/recognition/internal/RulesReading.h"
#include "tessera/recognition/internal/SmoothForms.h"

namespace Tessera::Geometry {

namespace {

constexpr double kFarOff = 1e300; // squared distance of what does not compete

/// A piece of the rules, or several that became one.
struct Run {
    int first = 0; // points of the path
    int last = 0;
    bool isArc = false;
    bool isKept = false;                   // neither line nor arc, nor what the prices know as one
    const InterpretedCurve* own = nullptr; // the rules' curve, as long as it stands
};

int PointAt(const InkPath& path, int sample) { // the nearest
    const auto above = std::lower_bound(path.source.begin(), path.source.end(), static_cast<double>(sample));
    return std::min(static_cast<int>(above - path.source.begin()), path.Size() - 1);
}

// Crumbs that were swept leave gaps, which their neighbours share. Nothing when some piece takes up less than
// two steps of the path.
std::vector<Run> RunsOf(const PricedPath& ink, const std::vector<InterpretedCurve>& curves) {
    std::vector<Run> runs;
    for (const InterpretedCurve& made : curves) {
        Run run{PointAt(ink.path, made.firstSample), PointAt(ink.path, made.lastSample)};
        if (!runs.empty())
            run.first = runs.back().last = (runs.back().last + run.first) / 2;
        run.own = &made;
        runs.push_back(run);
    }
    for (Run& run : runs) {
        if (run.last < run.first + 2)
            return {};
        const CurveType_e kind = run.own->curve->GetType();
        run.isArc = kind == CurveType_Arc;
        run.isKept = kind > CurveType_Arc || (run.isArc && !PriceRun(ink, run.first, run.last).hasArc);
    }
    return runs;
}

std::vector<Chain> ChainsOf(const PricedPath& ink, const std::vector<Run>& runs) {
    std::vector<int> breaks{runs.front().first};
    std::vector<bool> isArc;
    for (const Run& run : runs) {
        breaks.push_back(run.last);
        isArc.push_back(run.isArc && !run.isKept);
    }
    return ChainsOver(ink, breaks, isArc);
}

const Chain& Briefest(const PricedPath& ink, const std::vector<Chain>& chains) {
    return *std::min_element(chains.begin(), chains.end(), [&](const Chain& a, const Chain& b) {
        return LengthOf(ink, a) < LengthOf(ink, b);
    });
}

/// What makes fewer or simpler curves of the runs.
class Simplifier {
public:
    Simplifier(const PricedPath& ink, double tolerance, bool mayChangeKinds, const std::vector<Run>& runs)
        : ink_(ink), tolerance_(tolerance), mayChangeKinds_(mayChangeKinds),
          squared_(Briefest(ink, ChainsOf(ink, runs)).squared) {}

    void MergeNeighbours(std::vector<Run>& runs) const {
        std::size_t kept = 0;
        for (std::size_t i = 1; i < runs.size(); ++i)
            if (!Merge(runs[i], runs[kept]))
                runs[++kept] = runs[i];
        runs.resize(kept + 1);
    }

    // An arc becomes a line that describes its ink as briefly.
    void SimplifyKinds(std::vector<Run>& runs) const {
        for (Run& run : runs) {
            if (!run.isArc || run.isKept)
                continue;
            const RunPrices prices = PriceRun(ink_, run.first, run.last);
            if (CostOf(prices, false) <= CostOf(prices, true) && IsWithin(prices.line))
                run = {run.first, run.last};
        }
    }

private:
    double CostOf(const RunPrices& prices, bool isArc) const {
        return (isArc ? prices.arc : prices.line).CostFor(squared_);
    }

    bool IsWithin(const PricedPiece& priced) const {
        for (int i = priced.piece.first; i <= priced.piece.last; ++i)
            if (std::fabs(DistanceFrom(priced.piece, ink_.path.At(i))) > tolerance_)
                return false;
        return true;
    }

    // One line or arc in place of two, if it describes their ink as briefly; false if not.
    bool Merge(const Run& next, Run& run) const {
        if (run.isKept || next.isKept || (run.isArc != next.isArc && !mayChangeKinds_))
            return false;
        const RunPrices whole = PriceRun(ink_, run.first, next.last);
        const bool isArc =
            whole.hasArc && (run.isArc || next.isArc) && CostOf(whole, true) < CostOf(whole, false);
        const double apart = CostOf(PriceRun(ink_, run.first, run.last), run.isArc) +
                             CostOf(PriceRun(ink_, next.first, next.last), next.isArc) + LeastJointPrice();
        if ((!isArc && run.isArc && next.isArc) || CostOf(whole, isArc) > apart ||
            !IsWithin(isArc ? whole.arc : whole.line))
            return false;
        run = {run.first, next.last, isArc};
        return true;
    }

    const PricedPath& ink_;
    double tolerance_; // sizes
    bool mayChangeKinds_;
    double squared_; // of the hand that drew the runs
};

// Where the rules have a curve, not where the prices' fit lies.
void TakeCarrier(const InkPath& path, const InterpretedCurve& own, ChainPiece& piece) {
    const Point start = path.FromModel(own.curve->GetStart());
    const Point end = path.FromModel(own.curve->GetEnd());
    if (piece.isArc) {
        const auto& arc = static_cast<const Arc&>(*own.curve);
        piece.circle.centre = path.FromModel(arc.GetCenter());
        piece.circle.radius = arc.GetRadius() / path.scale;
        return;
    }
    const Point along = own.isReversed ? start - end : end - start;
    piece.line.centre = 0.5 * (start + end);
    piece.line.direction = along / std::max(along.Length(), 1e-300);
}

void TakeCurves(const InkPath& path, const std::vector<Run>& runs, Chain& chain) {
    for (std::size_t i = 0; i < runs.size(); ++i) {
        ChainPiece& piece = chain.pieces[i];
        if (runs[i].own != nullptr && !runs[i].isKept)
            TakeCarrier(path, *runs[i].own, piece);
        if (!runs[i].isKept)
            continue;
        piece.kept = runs[i].own;
        piece.joint = JointSight::Corner;
        if (i + 1 < runs.size())
            chain.pieces[i + 1].joint = JointSight::Corner;
    }
}

// Whether the piece in which a chain is closed is of the kind of those that it was made of.
bool KeepsKinds(const Chain& open, const Chain& closed) {
    const ChainPiece& seam = closed.pieces.front();
    return std::none_of(open.pieces.begin(), open.pieces.end(), [&](const ChainPiece& piece) {
        return (piece.first == seam.first || piece.last == seam.last) && piece.isArc != seam.isArc;
    });
}

// The runs as a chain, closed where its ends meet.
Chain ChainOf(const PricedPath& ink, bool mayChangeKinds, const std::vector<Run>& runs) {
    const bool hasKept = std::any_of(runs.begin(), runs.end(), [](const Run& run) { return run.isKept; });
    std::vector<Chain> chains = ChainsOf(ink, runs);
    for (Chain& chain : chains) {
        TakeCurves(ink.path, runs, chain);
        if (hasKept)
            chain.isClosed = chain.pieces.size() > 1 && ink.path.Gap() <= ink.closing;
        else if (Chain closed = CloseChain(ink, chain); mayChangeKinds || KeepsKinds(chain, closed))
            chain = std::move(closed);
    }
    return Briefest(ink, chains);
}

// Each piece as the rules have it.
ExactChain LooseOf(const PricedPath& ink, const std::vector<Run>& runs) {
    ExactChain loose;
    loose.isJoined = false;
    for (const Run& run : runs) {
        if (run.own == nullptr) {
            Chain changed{ChainsOver(ink, {run.first, run.last}, {run.isArc})[0]};
            loose.pieces.push_back(MakeLoose(ink, changed).pieces[0]);
            continue;
        }
        const Curve& curve = *run.own->curve;
        const Point start = ink.path.FromModel(curve.GetStart());
        const Point end = ink.path.FromModel(curve.GetEnd());
        const bool isLine = curve.GetType() == CurveType_Line;
        loose.pieces.push_back({isLine ? PieceKind::Line : PieceKind::Kept,
                                run.own->isReversed ? end : start,
                                run.own->isReversed ? start : end,
                                {},
                                run.first,
                                run.last,
                                isLine ? nullptr : run.own});
    }
    return loose;
}

// One free form that the rules left open though its ends meet, closed with a smooth seam; false for anything
// else.
bool ReadClosedForm(const InkStroke& ink, const PricedPath& priced, const Curve& only, InkReading& reading) {
    if (only.GetType() != CurveType_Spline || only.IsClosed())
        return false;
    std::optional<FreeShape> shape = FindFreeShape(priced, kFarOff, RivalKind::Open, true);
    if (!shape || !shape->isClosed)
        return false;
    reading.shape = InkShape::Spline;
    reading.isClosed = true;
    AppendFreeShape(priced.path, *shape, reading);
    MeasureDeviations(ink.samples, reading);
    return true;
}

} // namespace

void ReadTidiedRules(const InkStroke& ink, const PricedPath& priced,
                     const SketchRecognizerPreferences& preferences, std::span<Curve* const> earlier,
                     InkReading& reading) {
    const bool isTidy = preferences.GetCurveTidy();
    RulesReading rules(ink, preferences, isTidy);
    const double tolerance = rules.LineShare() * priced.path.length;
    const bool mayChangeKinds = preferences.GetChangeCurveType();
    const std::vector<InterpretedCurve>& curves = rules.Curves();
    if (isTidy && curves.size() == 1 && ReadClosedForm(ink, priced, *curves[0].curve, reading))
        return;
    const bool isWhole = curves.size() == 1 && curves[0].curve->IsClosed();
    std::vector<Run> runs = isWhole ? std::vector<Run>() : RunsOf(priced, curves);
    if (runs.empty()) {
        rules.Take(reading);
        if (isTidy && reading.isClosed && reading.shape == InkShape::Spline)
            AppendSeam(*reading.curves[0].curve, reading);
        return;
    }
    const Simplifier simplifier(priced, tolerance, mayChangeKinds, runs);
    if (isTidy)
        simplifier.MergeNeighbours(runs);
    if (mayChangeKinds)
        simplifier.SimplifyKinds(runs);
    const bool standAsTheyAre =
        !isTidy && !preferences.AskSnapping() &&
        std::all_of(runs.begin(), runs.end(), [](const Run& run) { return run.own != nullptr; });
    if (standAsTheyAre) {
        rules.Take(reading);
        return;
    }
    if (isTidy)
        ReadChain(priced, preferences, earlier, ChainOf(priced, mayChangeKinds, runs), tolerance,
                  ChainPieces::Fixed, reading);
    else
        ReadLoose(priced, preferences, earlier, LooseOf(priced, runs), reading);
    MeasureDeviations(ink.samples, reading);
}

} // namespace Tessera::Geometry
