#include "tessera/recognition/internal/RulesTidying.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "tessera/geometry/Arc.h"
#include "tessera/recognition/internal/ChainClosing.h"
#include "tessera/recognition/internal/ChainReading.h"
#include "tessera/recognition/internal/ChainSearch.h"
#include "tessera/recognition/internal/InkCurves.h"
#include "tessera/recognition/internal/InkDeviations.h"
#include "tessera/recognition/internal/RulesRuns.h"
#include "tessera/recognition/internal/SmoothForms.h"

namespace Tessera::Geometry {

namespace {

constexpr double kFarOff = 1e300; // squared distance of what does not compete

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

void TakeCurves(const InkPath& path, const std::vector<RulesRun>& runs, Chain& chain) {
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
Chain ChainOf(const PricedPath& ink, bool mayChangeKinds, const std::vector<RulesRun>& runs) {
    const bool hasKept =
        std::any_of(runs.begin(), runs.end(), [](const RulesRun& run) { return run.isKept; });
    std::vector<Chain> chains = ChainsOfRuns(ink, runs);
    for (Chain& chain : chains) {
        TakeCurves(ink.path, runs, chain);
        if (hasKept)
            chain.isClosed = chain.pieces.size() > 1 && ink.path.Gap() <= ink.closing;
        else if (Chain closed = CloseChain(ink, chain); mayChangeKinds || KeepsKinds(chain, closed))
            chain = std::move(closed);
    }
    return BriefestOf(ink, chains);
}

// Each piece as the rules have it.
ExactChain LooseOf(const PricedPath& ink, const std::vector<RulesRun>& runs) {
    ExactChain loose;
    loose.isJoined = false;
    for (const RulesRun& run : runs) {
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

// Each piece by itself, for the very samples of the rules' curve.
void ReadAlone(const PricedPath& priced, const SketchRecognizerPreferences& preferences,
               std::span<Curve* const> earlier, const std::vector<RulesRun>& runs, InkReading& reading) {
    ReadLoose(priced, preferences, earlier, LooseOf(priced, runs), reading);
    for (std::size_t i = 0; i < runs.size(); ++i)
        if (runs[i].own != nullptr) {
            reading.curves[i].firstSample = runs[i].own->firstSample;
            reading.curves[i].lastSample = runs[i].own->lastSample;
        }
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

void ReadTidiedRules(const InkStroke& ink, const PricedPath& priced, RulesReading& rules,
                     const SketchRecognizerPreferences& preferences, std::span<Curve* const> earlier,
                     InkReading& reading) {
    const bool isTidy = preferences.GetCurveTidy();
    const double tolerance = rules.LineShare() * priced.path.length;
    const bool mayChangeKinds = preferences.GetChangeCurveType();
    const std::vector<const InterpretedCurve*> curves = rules.Curves(isTidy);
    if (isTidy && curves.size() == 1 && ReadClosedForm(ink, priced, *curves[0]->curve, reading))
        return;
    const bool isWhole = curves.size() == 1 && curves[0]->curve->IsClosed();
    std::vector<RulesRun> runs = isWhole ? std::vector<RulesRun>() : RunsOf(priced, curves);
    if (runs.empty()) {
        rules.Read(isTidy, reading);
        if (isTidy && reading.isClosed && reading.shape == InkShape::Spline)
            AppendSeam(*reading.curves[0].curve, reading);
        return;
    }
    const int samples = static_cast<int>(ink.samples.size());
    if (isTidy)
        if (const auto round = MergeIntoRound(priced, tolerance, mayChangeKinds, runs, samples)) {
            AppendRound(priced.path, *round, reading);
            MeasureDeviations(ink.samples, reading);
            return;
        }
    if (isTidy)
        MergeNeighbours(priced, tolerance, mayChangeKinds, runs);
    if (mayChangeKinds)
        SimplifyKinds(priced, tolerance, runs);
    const bool standAsTheyAre =
        !isTidy && !preferences.AskSnapping() &&
        std::all_of(runs.begin(), runs.end(), [](const RulesRun& run) { return run.own != nullptr; });
    if (standAsTheyAre) {
        rules.Read(isTidy, reading);
        return;
    }
    if (isTidy && runs.size() > 1)
        ReadChain(priced, preferences, earlier, ChainOf(priced, mayChangeKinds, runs), tolerance,
                  ChainPieces::Fixed, reading);
    else
        ReadAlone(priced, preferences, earlier, runs, reading);
    MeasureDeviations(ink.samples, reading);
}

} // namespace Tessera::Geometry
