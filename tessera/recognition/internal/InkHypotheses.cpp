#include "tessera/recognition/internal/InkHypotheses.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "tessera/recognition/internal/AxisSnap.h"
#include "tessera/recognition/internal/ChainChoice.h"
#include "tessera/recognition/internal/ChainGeometry.h"
#include "tessera/recognition/internal/ChainReading.h"
#include "tessera/recognition/internal/ChainSearch.h"
#include "tessera/recognition/internal/CoarseRound.h"
#include "tessera/recognition/internal/EllipticPieces.h"
#include "tessera/recognition/internal/InkConnections.h"
#include "tessera/recognition/internal/InkCurves.h"
#include "tessera/recognition/internal/InkDeviations.h"
#include "tessera/recognition/internal/ReadingChoice.h"
#include "tessera/recognition/internal/RegularPolygon.h"
#include "tessera/recognition/internal/RegularShapes.h"
#include "tessera/recognition/internal/RingSearch.h"
#include "tessera/recognition/internal/RoundedBox.h"
#include "tessera/recognition/internal/RoundedCourse.h"
#include "tessera/recognition/internal/RulesReading.h"
#include "tessera/recognition/internal/RulesTidying.h"
#include "tessera/recognition/internal/SharpPolygon.h"
#include "tessera/recognition/internal/SlotShape.h"
#include "tessera/recognition/internal/SmoothForms.h"

namespace Tessera::Geometry {

namespace {

// By so much a slot is briefer than the round, for ovals have long sides, too; so are closed chains without
// clear corners, and elliptic arcs against lines and arcs.
constexpr double kClear = 5.0;
// Squares of a slot beside those of a polygon with sharp corners, beyond which it is none: of slots that look
// like one twice as many, of octagons ten times.
constexpr double kSharperThanSlot = 6.0;
constexpr double kNoTurnDeg = 1e-9; // onto an axis
// Of the tolerance, by which a shape that was made regular may lie farther from the ink of one of its sides:
// it is known from all of them. Of 1,537 drawn shapes 21 more come back regular so.
constexpr double kRegularSlack = 0.4;

// Curves between two ends take part in the joining of ends as the chord between these.
ExactChain ChordOf(const PricedPath& ink, PieceKind kind) {
    const int last = ink.path.Size() - 1;
    return {{{kind, ink.path.pts.front(), ink.path.pts.back(), {}, 0, last}}, false};
}

void ReadRounded(const InkPath& path, const SketchRecognizerPreferences& preferences, RoundedOutline outline,
                 InkReading& reading) {
    if (!outline.IsSlot() && preferences.GetRegularPolygonRecognition())
        MakeSquare(outline);
    SnapOutline(SnapAngle(preferences), outline);
    reading.shape = InkShape::Chain;
    reading.isClosed = true;
    AppendChain(path, RoundedCourse(path, outline).AsChain(path), reading);
}

void ReadRegular(const InkPath& path, const SketchRecognizerPreferences& preferences,
                 const RegularPolygon& polygon, InkReading& reading) {
    std::vector<Point> corners = polygon.corners;
    if (const double snapRad = SnapAngle(preferences); snapRad > 0.0)
        AlignToAxes(InkShape::RegularPolygon, snapRad, corners);
    ExactChain exact;
    exact.isClosed = true;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const ChainPiece& side = polygon.sides.pieces[i];
        exact.pieces.push_back(
            {PieceKind::Line, corners[i], corners[(i + 1) % corners.size()], {}, side.first, side.last});
    }
    reading.shape = InkShape::RegularPolygon;
    reading.isClosed = true;
    AppendChain(path, exact, reading);
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

// Three or four lines, the shapes that people draw most: a fifth corner is a slip of the pen.
bool IsSimplePolygon(const Chain& chain) {
    return chain.isClosed && chain.pieces.size() <= 4 && AreLines(chain);
}

// A closed chain that nobody means: all arcs that do not all meet in clear corners, or with a joint at which
// the ink bends on.
bool IsDoubtful(const Chain& chain) {
    return (AreArcs(chain) && !ShowsAllCorners(chain)) || HasBend(chain);
}

SketchRecognizerPreferences WithoutAxes(SketchRecognizerPreferences preferences) {
    preferences.SetSnapAngleCreate(kNoTurnDeg);
    return preferences;
}

// Nothing made regular or turned.
SketchRecognizerPreferences AsDrawn(SketchRecognizerPreferences preferences) {
    preferences.SetRegularPolygonRecognition(false);
    return WithoutAxes(preferences);
}

/// All readings of a stroke, of which the briefest stands; a later one must be briefer than those before.
class Readings {
public:
    Readings(const PricedPath& priced, std::span<const InkSample> ink, const RulesReading& rules,
             const SketchRecognizerPreferences& preferences)
        : priced_(priced), preferences_(preferences), samples_(static_cast<int>(ink.size())),
          ellipse_(FindCoarseRound(priced.path, ink)), isCoarse_(ellipse_.has_value()),
          tolerance_(rules.LineShare() * priced.path.length) {
        if (!isCoarse_)
            ellipse_ = FindEllipse(priced.path);
    }

    void Compare(const RulesReading& rules) {
        Offer(rules.AsRound(priced_), round_);
        if (ellipse_ && preferences_.GetCurveTidy())
            Offer(FindRoundShape(priced_, *ellipse_, samples_), round_);
        CompareChains(rules);
        if (rounded_) {
            round_.reset();
            return;
        }
        const bool isLine = !chain_.pieces[0].isArc && IsLoneCurve(priced_, chain_, tolerance_);
        if (ellipse_ && !round_ && !chain_.isClosed && !isLine)
            Offer(FindEllipticArc(priced_, *ellipse_), arc_,
                  chain_.pieces.size() > 1 && !HasCorner(chain_) ? kClear : 0.0);
        if (!isLine || round_ || chain_.isClosed)
            CompareFree();
        if (!round_ && !arc_ && !free_)
            kept_ = TakeEllipticPieces(ChainInk(), tolerance_, kClear, preferences_.GetCurveTidy(), chain_);
    }

    void ReadBest(std::span<Curve* const> earlier, InkReading& reading) {
        if (free_)
            ReadFreeShape(priced_, preferences_, earlier, *free_, reading);
        else if (arc_)
            ReadEllipticArc(priced_, preferences_, earlier, *arc_, reading);
        else if (round_)
            AppendRound(priced_.path, *round_, reading);
        else
            ReadAgain(preferences_, earlier, reading);
    }

    /// A chain or a rounded outline by other preferences than the stroke's; nothing where another shape is
    /// the briefest.
    void ReadAgain(const SketchRecognizerPreferences& preferences, std::span<Curve* const> earlier,
                   InkReading& reading) {
        if (free_ || arc_ || round_)
            return;
        if (rounded_)
            ReadRounded(priced_.path, preferences, rounded_->outline, reading);
        else if (regular_ && preferences.GetRegularPolygonRecognition())
            ReadRegular(priced_.path, preferences, *regular_, reading);
        else
            ReadChain(ChainInk(), preferences, earlier, chain_, tolerance_, ChainPieces::AsFound, reading);
    }

private:
    template <typename Shape>
    void Offer(std::optional<Shape> shape, std::optional<Shape>& best, double margin = 0.0) {
        if (!shape || LengthOf(priced_.path, shape->description) + margin >= least_)
            return;
        least_ = LengthOf(priced_.path, shape->description);
        best = std::move(shape);
    }

    // The chain against the rounds, then rings and rounded outlines against both.
    void CompareChains(const RulesReading& rules) {
        const bool isTidy = preferences_.GetCurveTidy();
        chain_ = FindChain(priced_, rules.AsChains(priced_), isTidy, tolerance_, least_);
        std::optional<Chain> sharp;
        if (isTidy && !isCoarse_ && !IsSimplePolygon(chain_)) {
            if (ellipse_)
                regular_ = FindRegularPolygon(priced_, *ellipse_, samples_);
            sharp = regular_ ? regular_->sides : FindSharpPolygon(priced_);
        }
        if (sharp)
            chain_ = *sharp;
        const double margin =
            chain_.isClosed && (!ShowsCorner(priced_, chain_) || IsDoubtful(chain_)) ? kClear : 0.0;
        if (sharp || LengthOfHabit(priced_, chain_) + margin < least_) {
            least_ = LengthOfHabit(priced_, chain_);
            round_.reset();
        }
        if (isTidy && !round_ && !regular_)
            ring_ = FindRing(priced_, chain_, tolerance_);
        if (ring_) {
            chain_ = ring_->chain;
            least_ = ring_->length;
        }
        if (isTidy)
            OfferRounded(sharp.has_value());
    }

    void CompareFree() {
        if (round_)
            OfferFree(round_->meanSq, RivalKind::Round);
        else if (arc_)
            OfferFree(arc_->description.sumSq / priced_.path.Size(), RivalKind::Open);
        else if (chain_.isClosed)
            OfferFree(MeanSqFrom(ChainInk(), chain_), ShowsCorner(ChainInk(), chain_) && !IsDoubtful(chain_)
                                                          ? RivalKind::Closed
                                                          : RivalKind::SmoothClosed);
        else if (!ShowsCorner(ChainInk(), chain_))
            OfferFree(MeanSqFrom(priced_, chain_), chain_.pieces.size() == 1 ? RivalKind::Open
                                                   : HasCorner(chain_) || AreArcs(chain_)
                                                       ? RivalKind::Doubtful
                                                       : RivalKind::Smooth);
    }

    // Chains of lines leave the ink at their corners to the hand: whether it rounded them, the box has asked.
    void OfferRounded(bool isSharp) {
        const double margin = round_ ? kClear : 0.0;
        std::optional<RoundedShape> slot = InFull(FindSlot(priced_));
        if (isSharp && slot && slot->sumSq > kSharperThanSlot * chain_.sumSq)
            slot.reset();
        Offer(std::move(slot), rounded_, margin);
        std::optional<RoundedShape> box = isSharp ? std::nullopt : InFull(FindBox(priced_));
        if (box && !round_ && !rounded_ && IsSimplePolygon(chain_))
            rounded_ = std::move(box);
        else
            Offer(std::move(box), rounded_, rounded_ ? 0.0 : margin);
    }

    // Where lines and arcs meet in clear corners all round, all squares of a rounded outline count.
    std::optional<RoundedShape> InFull(std::optional<RoundedShape> shape) const {
        if (shape && !round_ && chain_.isClosed && !AreLines(chain_) && ShowsAllCorners(chain_))
            shape->description.sumSq = shape->sumSq;
        return shape;
    }

    void OfferFree(double rivalMeanSq, RivalKind rival) {
        Offer(FindFreeShape(priced_, rivalMeanSq, rival, preferences_.GetCurveTidy()), free_);
    }

    const PricedPath& ChainInk() const { return ring_ ? *ring_->ink : priced_; }

    const PricedPath& priced_;
    const SketchRecognizerPreferences& preferences_;
    int samples_;
    std::optional<EllipseEvidence> ellipse_;
    bool isCoarse_; ///< a round of too few samples to show corners
    Chain chain_;
    std::vector<std::unique_ptr<InterpretedCurve>> kept_; ///< curves of the chain
    double tolerance_;
    double least_ = std::numeric_limits<double>::infinity();
    std::optional<Ring> ring_; ///< where the chain was found, if not along the path as it was drawn
    std::optional<RegularPolygon> regular_; ///< of which the chain is the sides
    std::optional<RoundShape> round_;
    std::optional<RoundedShape> rounded_;
    std::optional<EllipticArc> arc_;
    std::optional<FreeShape> free_;
};

// How far the ends of the ink were moved onto earlier curves.
double LargestMove(const InkStroke& ink, const InkReading& reading) {
    double largest = 0.0;
    for (const InkConnection& connection : reading.connections) {
        const InterpretedCurve& made = reading.curves[static_cast<std::size_t>(connection.curve)];
        const int sample = connection.end == made.First() ? made.firstSample : made.lastSample;
        const InkSample& end = ink.samples[static_cast<std::size_t>(sample)];
        largest = std::max(largest, connection.position.Distance({end.x, end.y}));
    }
    return largest;
}

double LargestDeviation(const InkReading& reading) {
    double largest = 0.0;
    for (const InterpretedCurve& made : reading.curves)
        largest = std::max(largest, made.maxDeviation);
    return largest;
}

// Whether a curve is shorter than its ink lies away from it: what joined it on both sides left nothing of it.
bool HasShrunk(const InkReading& reading) {
    return std::any_of(reading.curves.begin(), reading.curves.end(), [](const InterpretedCurve& made) {
        return made.curve->GetStart().Distance(made.curve->GetEnd()) < made.maxDeviation &&
               made.curve->Length() < made.maxDeviation;
    });
}

bool IsOutside(const InkReading& reading, const XYBox& bounds) {
    return std::any_of(reading.curves.begin(), reading.curves.end(), [&](const InterpretedCurve& made) {
        XYBox reach;
        return made.curve->AskXYBox(reach) && (reach.min.x < bounds.min.x || reach.min.y < bounds.min.y ||
                                               reach.max.x > bounds.max.x || reach.max.y > bounds.max.y);
    });
}

bool IsRegular(InkShape shape) {
    switch (shape) {
    case InkShape::Square:
    case InkShape::Rectangle:
    case InkShape::Rhombus:
    case InkShape::Parallelogram:
    case InkShape::RegularPolygon:
        return true;
    default:
        return false;
    }
}

/// Tells readings that lie farther from the ink than the rules' own.
class Judge {
public:
    /// Model units.
    /// @param ends       along the ink: what lies so near to its ends does not count.
    /// @param tolerance  by which curves may reach out of the ink's box.
    Judge(const InkStroke& ink, RulesReading& rules, double ends, double tolerance)
        : ink_(ink), rules_(rules), ends_(ends), tolerance_(tolerance) {}

    /// By more than a tolerance, or with curves outside of the ink's box, or of which nothing is left; no
    /// reading does where the rules have none.
    bool Strays(const InkReading& reading) {
        const double moved = LargestMove(ink_, reading);
        const double allowed = moved + (IsRegular(reading.shape) ? kRegularSlack * tolerance_ : 0.0);
        const bool isLost = reading.curves.empty() || HasShrunk(reading) || IsOutside(reading, Bounds(moved));
        return (isLost || rules_.Strays(reading, allowed, ends_)) && !ByRules().curves.empty() &&
               (isLost || rules_.Strays(reading, allowed + LargestDeviation(ByRules()), ends_));
    }

    /// The rules' own curves.
    InkReading& ByRules() {
        if (!byRules_)
            rules_.Read(false, byRules_.emplace());
        return *byRules_;
    }

private:
    XYBox Bounds(double moved) const {
        const Point margin(tolerance_ + moved, tolerance_ + moved);
        XYBox box({ink_.samples[0].x, ink_.samples[0].y}, {ink_.samples[0].x, ink_.samples[0].y});
        for (const InkSample& s : ink_.samples)
            box.Merge(Point(s.x, s.y));
        return {box.min - margin, box.max + margin};
    }

    const InkStroke& ink_;
    RulesReading& rules_;
    double ends_;
    double tolerance_;
    std::optional<InkReading> byRules_;
};

// The rules' pieces, tidied as far as that does not take them off the ink.
void ReadRules(const InkStroke& ink, const PricedPath& priced, RulesReading& rules,
               const SketchRecognizerPreferences& preferences, std::span<Curve* const> earlier, Judge& judge,
               InkReading& reading) {
    for (const auto& asked : {preferences, AsDrawn(preferences)}) {
        reading = InkReading();
        ReadTidiedRules(ink, priced, rules, asked, earlier, reading);
        if (!judge.Strays(reading))
            return;
    }
    reading = std::move(judge.ByRules());
}

} // namespace

void ReadByHypotheses(const InkStroke& ink, PricedPath& priced,
                      const SketchRecognizerPreferences& preferences, std::span<Curve* const> earlier,
                      InkReading& reading) {
    const InkPath& path = priced.path;
    RulesReading rules(ink, preferences);
    if (ink.hasTimes)
        priced.pace = PaceAlong(path, ink.samples);
    priced.closing = rules.ClosingShare(path.scale * path.length) * path.closingLength;
    Judge judge(ink, rules, path.scale * priced.closing, path.scale * rules.LineShare() * path.length);
    // Where the rules find nothing, as of two samples by tolerances that are shares of the length, the
    // hypotheses do.
    if (!preferences.GetReduceInkCurveDeviation() && !rules.Curves(false).empty()) {
        ReadRules(ink, priced, rules, preferences, earlier, judge, reading);
        return;
    }
    Readings readings(priced, ink.samples, rules, preferences);
    readings.Compare(rules);
    readings.ReadBest(earlier, reading);
    MeasureDeviations(ink.samples, reading);
    const bool keepsKinds = preferences.GetChangeCurveType() ||
                            std::all_of(reading.curves.begin(), reading.curves.end(),
                                        [&](const InterpretedCurve& made) { return rules.SawKindOf(made); });
    // What was turned onto axes, or made regular, may have been led away from its ink.
    for (const auto& asked : {WithoutAxes(preferences), AsDrawn(preferences)}) {
        if (!keepsKinds || !judge.Strays(reading))
            break;
        reading = InkReading();
        readings.ReadAgain(asked, earlier, reading);
        MeasureDeviations(ink.samples, reading);
    }
    if (!keepsKinds || judge.Strays(reading))
        ReadRules(ink, priced, rules, preferences, earlier, judge, reading);
}

} // namespace Tessera::Geometry
