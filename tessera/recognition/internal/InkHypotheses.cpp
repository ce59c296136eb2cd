#include "tessera/recognition/internal/InkHypotheses.h"

#include <algorithm>
#include <numbers>
#include <optional>

#include "tessera/recognition/internal/ChainClosing.h"
#include "tessera/recognition/internal/ChainReading.h"
#include "tessera/recognition/internal/InkConnections.h"
#include "tessera/recognition/internal/InkCurves.h"
#include "tessera/recognition/internal/JoinedChain.h"
#include "tessera/recognition/internal/ReadingChoice.h"
#include "tessera/recognition/internal/RulesReading.h"
#include "tessera/recognition/internal/SharpPolygon.h"
#include "tessera/recognition/internal/SlotShape.h"
#include "tessera/recognition/internal/SmoothForms.h"
#include "tessera/recognition/internal/TangentRun.h"

namespace Tessera::Geometry {

namespace {

constexpr double kBowedLine = 1.2; // a hand's lone line strays so much farther than the rules allow
// Rules' tolerances by which a reading may stray farther than the rules' own: rounded corners and bowed sides
// of drawn polygons take up three.
constexpr double kMostStray = 4.0;
// Root mean square distance of a careful hand's ink, sizes, and how many times farther off what it did not
// mean lies: drawn circles and ovals, which a chain follows closely as well, stay below half of that.
constexpr double kCarefulSpread = 0.012;
constexpr double kMuchFarther = 3.0;
// Steps of the path that a piece takes up at least on average: what is drawn in shorter ones is left to the
// rules, which look at every sample.
constexpr int kLeastSteps = 6;
constexpr double kDegree = std::numbers::pi / 180.0;

void ReadRound(const InkPath& path, const RoundShape& shape, InkReading& reading) {
    reading.shape = shape.isCircle ? InkShape::Circle : InkShape::Ellipse;
    reading.isClosed = true;
    AppendRound(path, shape, reading);
}

// Curves between two ends take part in the joining of ends as the chord between these.
ExactChain ChordOf(const PricedPath& ink, PieceKind kind) {
    const int last = ink.path.Size() - 1;
    return {{{kind, ink.path.pts.front(), ink.path.pts.back(), {}, 0, last}}, false};
}

void ReadSlot(const InkPath& path, const SketchRecognizerPreferences& preferences, SlotShape slot,
              InkReading& reading) {
    if (preferences.AskSnapping())
        SnapSlot(preferences.AskSnapAngleCreate() * kDegree, slot);
    reading.shape = InkShape::Chain;
    reading.isClosed = true;
    AppendChain(path, MakeSlot(path, slot), reading);
}

void ReadEllipticArc(const PricedPath& ink, const SketchRecognizerPreferences& preferences,
                     std::span<Curve* const> earlier, const EllipticArc& arc, InkReading& reading) {
    ExactChain chord = ChordOf(ink, PieceKind::Line);
    reading.shape = InkShape::EllipticArc;
    reading.connections = ConnectEnds(ink.path, earlier, preferences, chord);
    if (!AppendEllipticArc(ink.path, arc, chord.pieces[0].from, chord.pieces[0].to, reading))
        reading.connections.clear();
    NameEnds(reading);
}

void ReadFreeShape(const PricedPath& ink, const SketchRecognizerPreferences& preferences,
                   std::span<Curve* const> earlier, FreeShape& shape, InkReading& reading) {
    reading.shape = InkShape::Spline;
    reading.isClosed = shape.isClosed;
    if (shape.isClosed) {
        AppendFreeShape(ink.path, shape, reading);
        return;
    }
    ExactChain chord = ChordOf(ink, PieceKind::Spline);
    reading.connections = ConnectEnds(ink.path, earlier, preferences, chord);
    AppendChain(ink.path, chord, reading);
}

Chain FindChain(PricedPath& priced, const RulesReading& rules,
                const SketchRecognizerPreferences& preferences) {
    Chain chain = SearchForHand(priced);
    const std::optional<Chain> byRules = rules.AsChain(priced);
    if (byRules && byRules->cost <= chain.cost)
        chain = *byRules;
    if (preferences.GetCurveTidy())
        chain = StraightenRectangle(priced, CloseChain(priced, chain));
    return chain;
}

// Three or four lines, the shapes that people draw most: a fifth corner is a slip of the pen.
bool IsSimplePolygon(const Chain& chain) {
    return chain.isClosed && chain.pieces.size() <= 4 &&
           std::none_of(chain.pieces.begin(), chain.pieces.end(),
                        [](const ChainPiece& p) { return p.isArc; });
}

// A hand that keeps so close to a chain did not mean the round that it strays from.
bool IsDrawnWithCare(const PricedPath& priced, const Chain& chain, const RoundShape& round) {
    const double chainSq = Describe(priced, chain).meanSq;
    return chainSq <= kCarefulSpread * kCarefulSpread &&
           round.meanSq >= kMuchFarther * kMuchFarther * chainSq;
}

// The hypotheses compared, and the best one read.
void ReadBest(int samples, PricedPath& priced, const RulesReading& rules,
              const SketchRecognizerPreferences& preferences, std::span<Curve* const> earlier,
              InkReading& reading) {
    Chain chain = FindChain(priced, rules, preferences);
    const double tolerance = rules.LineShare() * priced.path.length;
    const bool isLine = IsLoneLine(priced, chain, kBowedLine * tolerance);
    std::optional<Chain> sharp;
    if (preferences.GetCurveTidy() && !IsSimplePolygon(chain))
        sharp = FindSharpPolygon(priced);
    if (sharp)
        chain = *sharp;
    const std::optional<EllipseEvidence> ellipse = FindEllipse(priced.path);
    std::optional<RoundShape> round;
    if (ellipse && preferences.GetChangeCurveType())
        round = FindRoundShape(priced, *ellipse, samples);
    if (preferences.GetCurveTidy() && preferences.GetChangeCurveType())
        if (const std::optional<SlotShape> slot = FindSlot(priced, round, chain))
            return ReadSlot(priced.path, preferences, *slot, reading);
    if (round && (sharp || !IsRoundCheaper(priced, *round, chain) || IsDrawnWithCare(priced, chain, *round)))
        round.reset();
    bool isSmooth = false;
    if (!round && !chain.isClosed && !isLine) {
        chain = StraightenBracket(priced, SearchJoinedChain(priced));
        isSmooth = chain.pieces.size() > 1 && !ShowsCorner(priced, chain);
        if (isSmooth)
            FitTangentRuns(priced, 0.0, chain);
        if (preferences.GetCurveTidy())
            CloseTouching(priced, chain);
    }
    Description best = round ? Describe(*round) : Describe(priced, chain);
    std::optional<EllipticArc> arc;
    if (ellipse && !round && !chain.isClosed && !isLine)
        arc = FindEllipticArc(priced, *ellipse, best);
    if (arc)
        best = arc->description;
    std::optional<FreeShape> free;
    if (round || arc || chain.isClosed || (!isLine && !ShowsCorner(priced, chain))) {
        const RivalKind rival = round            ? RivalKind::Round
                                : chain.isClosed ? RivalKind::Closed
                                : isSmooth       ? RivalKind::Smooth
                                                 : RivalKind::Open;
        free = FindFreeShape(priced, best, rival, preferences.GetCurveTidy());
    }
    if (free)
        ReadFreeShape(priced, preferences, earlier, *free, reading);
    else if (round)
        ReadRound(priced.path, *round, reading);
    else if (arc)
        ReadEllipticArc(priced, preferences, earlier, *arc, reading);
    else
        ReadChain(priced, preferences, earlier, chain, tolerance, reading);
}

// By how many tolerances some curve strays farther than `allowed`.
double StrayOf(const RulesReading& rules, const InkReading& reading, double allowed) {
    double most = 0.0;
    for (const InterpretedCurve& made : reading.curves)
        most = std::max(most, (made.maxDeviation - allowed) / rules.ToleranceOf(made));
    return most;
}

} // namespace

void ReadByHypotheses(const InkStroke& ink, PricedPath& priced,
                      const SketchRecognizerPreferences& preferences, std::span<Curve* const> earlier,
                      InkReading& reading) {
    const InkPath& path = priced.path;
    RulesReading rules(ink, preferences);
    if (rules.Count() * kLeastSteps > path.Size()) {
        rules.Take(reading);
        return;
    }
    if (ink.hasTimes)
        priced.pace = PaceAlong(path, ink.samples);
    priced.closing = rules.ClosingShare(path.scale * path.length) * path.closingLength;
    ReadBest(static_cast<int>(ink.samples.size()), priced, rules, preferences, earlier, reading);
    MeasureDeviations(ink.samples, reading);
    if (StrayOf(rules, reading, 0.0) <= kMostStray)
        return;
    InkReading byRules;
    rules.Take(byRules);
    double allowed = 0.0;
    for (const InterpretedCurve& made : byRules.curves)
        allowed = std::max(allowed, made.maxDeviation);
    if (!byRules.curves.empty() && StrayOf(rules, reading, allowed) > kMostStray)
        reading = std::move(byRules);
}

} // namespace Tessera::Geometry
