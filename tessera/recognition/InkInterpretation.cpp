// The stages: the ink in a frame of its own; scribbles; hypotheses, each with the cost of describing the ink
// with it; the cheapest made exact; curves in model units.
#include "tessera/recognition/InkInterpretation.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

#include "tessera/core/ThrowMessage.h"
#include "tessera/recognition/ScribbleQuestion.h"
#include "tessera/recognition/internal/ChainClosing.h"
#include "tessera/recognition/internal/ChainGeometry.h"
#include "tessera/recognition/internal/ChainSearch.h"
#include "tessera/recognition/internal/InkConnections.h"
#include "tessera/recognition/internal/InkCurves.h"
#include "tessera/recognition/internal/InkPath.h"
#include "tessera/recognition/internal/OverSketch.h"
#include "tessera/recognition/internal/ReadingChoice.h"
#include "tessera/recognition/internal/RegularShapes.h"
#include "tessera/recognition/internal/RoundShape.h"
#include "tessera/recognition/internal/RulesReading.h"
#include "tessera/recognition/internal/SmoothForms.h"
#include "tessera/recognition/internal/SmoothJoints.h"
#include "tessera/recognition/internal/ThinWall.h"

namespace Tessera::Geometry {

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;

// Turns a line's direction onto an axis of the plane within the angle, about the middle of its ink.
void SnapLines(double angleRad, Chain& chain) {
    for (ChainPiece& piece : chain.pieces) {
        Point& d = piece.line.direction;
        const double off = std::remainder(std::atan2(d.y, d.x), 0.5 * std::numbers::pi);
        if (!piece.isArc && std::fabs(off) <= angleRad)
            d = std::fabs(d.x) > std::fabs(d.y) ? Point(d.x < 0.0 ? -1.0 : 1.0, 0.0)
                                                : Point(0.0, d.y < 0.0 ? -1.0 : 1.0);
    }
}

void TurnCorners(double angleRad, std::vector<Point>& corners) {
    Point centre;
    for (const Point& p : corners)
        centre += p / static_cast<double>(corners.size());
    const double c = std::cos(angleRad);
    const double s = std::sin(angleRad);
    for (Point& p : corners) {
        const Point d = p - centre;
        p = centre + Point(c * d.x - s * d.y, s * d.x + c * d.y);
    }
}

// Sides that lie along an axis get equal coordinates to the last digit.
void LevelSides(std::vector<Point>& corners) {
    constexpr double kLevel = 1e-9;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        Point& a = corners[i];
        Point& b = corners[(i + 1) % corners.size()];
        if (std::fabs(a.x - b.x) < kLevel)
            b.x = a.x;
        if (std::fabs(a.y - b.y) < kLevel)
            b.y = a.y;
    }
    for (std::size_t i = 0; i < corners.size(); ++i) { // the last side closes onto the first corner
        Point& a = corners[i];
        const Point& b = corners[(i + 1) % corners.size()];
        if (std::fabs(a.x - b.x) < kLevel)
            a.x = b.x;
        if (std::fabs(a.y - b.y) < kLevel)
            a.y = b.y;
    }
}

// A regular polygon replaces the corners of the chain; it is turned onto the axes as a whole.
InkShape Regularise(const SketchRecognizerPreferences& preferences, ExactChain& chain) {
    std::vector<Point> corners;
    for (const ExactPiece& piece : chain.pieces)
        corners.push_back(piece.from);
    const InkShape shape = MakeRegular(corners);
    if (shape == InkShape::Triangle || shape == InkShape::Quadrilateral || shape == InkShape::Polygon)
        return shape;
    const double turn = TurnToAxes(shape, corners);
    if (preferences.AskSnapping() && std::fabs(turn) <= preferences.AskSnapAngleCreate() * kDegree) {
        TurnCorners(turn, corners);
        LevelSides(corners);
    }
    for (std::size_t i = 0; i < corners.size(); ++i) {
        chain.pieces[i].from = corners[i];
        chain.pieces[i].to = corners[(i + 1) % corners.size()];
    }
    return shape;
}

InkShape ShapeOf(const ExactChain& chain) {
    const std::size_t count = chain.pieces.size();
    if (count == 1)
        return chain.pieces[0].kind == PieceKind::Line  ? InkShape::Line
               : chain.pieces[0].kind == PieceKind::Arc ? InkShape::Arc
                                                        : InkShape::Spline;
    if (chain.IsPolygon())
        return count == 3 ? InkShape::Triangle : count == 4 ? InkShape::Quadrilateral : InkShape::Polygon;
    const bool lines = std::none_of(chain.pieces.begin(), chain.pieces.end(),
                                    [](const ExactPiece& p) { return p.kind != PieceKind::Line; });
    return lines ? InkShape::Polyline : InkShape::Chain;
}

// Connections were made of the pen's first and last ends; they speak of the curves' own.
void NameEnds(InkReading& reading) {
    for (InkConnection& connection : reading.connections) {
        const InterpretedCurve& made = reading.curves[static_cast<std::size_t>(connection.curve)];
        connection.end = connection.end == CurveEnd::Start ? made.First() : made.Last();
    }
}

bool ReadThinWall(const PricedPath& ink, const SketchRecognizerPreferences& preferences, const Chain& chain,
                  InkReading& reading) {
    const bool asSides = preferences.GetThinWallRecognition();
    const std::vector<ExactPiece> sides = FindThinWall(ink, chain, asSides);
    for (const ExactPiece& side : sides)
        AppendChain(ink.path, {{side}, false}, reading);
    if (!sides.empty())
        reading.shape = asSides ? InkShape::ThinWall : InkShape::Line;
    return !sides.empty();
}

void ReadChain(const PricedPath& ink, const SketchRecognizerPreferences& preferences,
               std::span<Curve* const> earlier, Chain chain, InkReading& reading) {
    if (preferences.GetCurveTidy() && ReadThinWall(ink, preferences, chain, reading))
        return;
    ExactChain exact = MakeExact(ink, chain);
    reading.shape = ShapeOf(exact);
    if (preferences.GetRegularPolygonRecognition() && exact.IsPolygon())
        reading.shape = Regularise(preferences, exact);
    const bool isRegular = reading.shape >= InkShape::Square && reading.shape <= InkShape::RegularPolygon &&
                           reading.shape != InkShape::Quadrilateral;
    if (preferences.AskSnapping() && !isRegular) {
        SnapLines(preferences.AskSnapAngleCreate() * kDegree, chain);
        exact = MakeExact(ink, chain);
    }
    reading.isClosed = exact.isClosed;
    reading.connections = ConnectEnds(ink.path, earlier, preferences, exact);
    AppendChain(ink.path, exact, reading);
    NameEnds(reading);
}

bool IsScribble(const InkStroke& ink, const SketchRecognizerPreferences& preferences, InkReading& reading) {
    if (!preferences.GetDoScribble())
        return false;
    std::vector<Point> points;
    points.reserve(ink.samples.size());
    for (const InkSample& s : ink.samples)
        points.emplace_back(s.x, s.y);
    int cusps = 0;
    if (!IsScribbleInk(points, preferences, &cusps))
        return false;
    reading.shape = InkShape::Scribble;
    reading.cusps = cusps;
    return true;
}

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

void ReadEllipticArc(const PricedPath& ink, const SketchRecognizerPreferences& preferences,
                     std::span<Curve* const> earlier, const EllipticArc& arc, InkReading& reading) {
    ExactChain chord = ChordOf(ink, PieceKind::Line);
    reading.shape = InkShape::EllipticArc;
    reading.connections = ConnectEnds(ink.path, earlier, preferences, chord);
    AppendEllipticArc(ink.path, arc, chord.pieces[0].from, chord.pieces[0].to, reading);
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

// The hypotheses: a chain, a round, an elliptic arc, a free form.
void ReadHypotheses(const InkStroke& ink, PricedPath& priced, const SketchRecognizerPreferences& preferences,
                    std::span<Curve* const> earlier, InkReading& reading) {
    Chain chain = SearchForHand(priced);
    if (preferences.GetCurveTidy())
        chain = StraightenRectangle(priced, CloseChain(priced, chain));
    BendPieces(priced, chain);
    BowLoneLine(priced, chain);
    const std::optional<EllipseEvidence> ellipse = FindEllipse(priced.path);
    std::optional<RoundShape> round;
    if (ellipse && preferences.GetChangeCurveType())
        round = FindRoundShape(priced, *ellipse, static_cast<int>(ink.samples.size()));
    if (round && !IsRoundCheaper(priced, *round, chain))
        round.reset();
    Description best = round ? Describe(*round) : Describe(priced, chain);
    std::optional<EllipticArc> arc;
    if (ellipse && !round && !chain.isClosed)
        arc = FindEllipticArc(priced, *ellipse, best);
    if (arc)
        best = arc->description;
    std::optional<FreeShape> free;
    if (round || arc || chain.isClosed || !ShowsCorner(priced, chain))
        free = FindFreeShape(priced, best, preferences.GetCurveTidy());
    if (free)
        ReadFreeShape(priced, preferences, earlier, *free, reading);
    else if (round)
        ReadRound(priced.path, *round, reading);
    else if (arc)
        ReadEllipticArc(priced, preferences, earlier, *arc, reading);
    else
        ReadChain(priced, preferences, earlier, chain, reading);
}

} // namespace

InkReading InterpretInk(const InkStroke& ink, const SketchRecognizerPreferences& preferences,
                        std::span<Curve* const> earlier) {
    for (const InkSample& s : ink.samples)
        if (!std::isfinite(s.x) || !std::isfinite(s.y) || !std::isfinite(s.t))
            Core::ThrowMessage("InterpretInk - a sample is not finite");
    InkReading reading;
    const InkPath path = MakeInkPath(ink.samples);
    if (path.pts.empty())
        return reading;
    if (IsScribble(ink, preferences, reading))
        return reading;
    if (ReadRetrace(path, preferences, earlier, reading)) {
        MeasureDeviations(ink.samples, reading);
        return reading;
    }
    if (!preferences.GetReduceInkCurveDeviation()) {
        ReadByRules(ink, preferences, reading);
        return reading;
    }
    PricedPath priced(path);
    priced.closing = path.length * ClosingShare(ink, path.scale * path.length, preferences);
    ReadHypotheses(ink, priced, preferences, earlier, reading);
    MeasureDeviations(ink.samples, reading);
    return reading;
}

} // namespace Tessera::Geometry
