#include "tessera/recognition/internal/ChainReading.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "tessera/recognition/internal/AxisSnap.h"
#include "tessera/recognition/internal/ChainGeometry.h"
#include "tessera/recognition/internal/Fillets.h"
#include "tessera/recognition/internal/InkConnections.h"
#include "tessera/recognition/internal/InkCurves.h"
#include "tessera/recognition/internal/RegularShapes.h"
#include "tessera/recognition/internal/TangentRun.h"

namespace Tessera::Geometry {

namespace {

constexpr double kNearCorner = 0.07; // sizes between the corner of the ink and where its neighbours meet

bool TouchesBefore(const ChainPiece& piece) {
    return piece.joint == JointSight::Tangent;
}

// A line with an end that belongs on an earlier curve is seen from there, and turned about it if its other
// end moves by no more than the tolerance; one with two such ends lies as these do.
void SnapFrom(double angleRad, double tolerance, const std::optional<Point>& start,
              const std::optional<Point>& end, const ExactPiece& drawn, ChainPiece& line) {
    const Point along = end.value_or(drawn.to) - start.value_or(drawn.from);
    const std::optional<Point> axis = AxisNear(along, angleRad);
    if (!axis || (start && end) || std::fabs(axis->Cross(along)) > tolerance)
        return;
    line.line.centre = start ? *start : *end;
    line.line.direction = *axis;
}

// Turns a line's direction onto an axis of the plane within the angle, about the middle of its ink.
void SnapLines(const InkPath& path, double angleRad, double tolerance,
               std::span<const InkConnection> connections, const ExactChain& drawn, Chain& chain) {
    const std::size_t last = chain.pieces.size() - 1;
    for (std::size_t i = 0; i <= last; ++i) {
        ChainPiece& piece = chain.pieces[i];
        const bool runsOn = i + 1 < chain.pieces.size() && TouchesBefore(chain.pieces[i + 1]);
        if (piece.isArc || piece.kept != nullptr || TouchesBefore(piece) || runsOn)
            continue; // fitted with its neighbours, axes included
        const auto start = i == 0 ? PlaceOf(path, connections, CurveEnd::Start) : std::nullopt;
        const auto end = i == last ? PlaceOf(path, connections, CurveEnd::End) : std::nullopt;
        if (start || end)
            SnapFrom(angleRad, tolerance, start, end, i == 0 ? drawn.pieces.front() : drawn.pieces.back(),
                     piece);
        else
            piece.line.direction = AxisNear(piece.line.direction, angleRad).value_or(piece.line.direction);
    }
}

bool IsOnAxis(const ChainPiece& line) {
    return !line.isArc && (line.line.direction.x == 0.0 || line.line.direction.y == 0.0);
}

// What was fitted to bowed sides meets away from the corner that the hand drew. There the corner is the
// middle between the feet of the ink's on the two; a line along an axis, and what touches an arc at its other
// end, is not turned.
void DrawNear(const PricedPath& ink, const Chain& chain, const std::vector<bool>& round, ExactChain& exact) {
    const std::size_t count = exact.pieces.size();
    if (chain.pieces.size() != count || count < 2)
        return;
    const auto isSmooth = [&](std::size_t joint) {
        return TouchesBefore(chain.pieces[joint]) || (!round.empty() && round[joint]);
    };
    for (std::size_t i = exact.isClosed ? 0 : 1; i < count; ++i) {
        const std::size_t k = (i + count - 1) % count;
        const ChainPiece& before = chain.pieces[k];
        const ChainPiece& after = chain.pieces[i];
        const Point& end = ink.path.At(before.last);
        const Point& start = ink.path.At(after.first);
        const Point drawn = 0.5 * (end + start);
        const bool staysBefore = IsOnAxis(before) || isSmooth(k);
        const bool staysAfter = IsOnAxis(after) || isSmooth((i + 1) % count);
        if (before.kept != nullptr || after.kept != nullptr || isSmooth(i) || (staysBefore && staysAfter) ||
            exact.pieces[i].from.Distance(drawn) <= kNearCorner + end.Distance(start))
            continue;
        const Point corner = staysBefore  ? OnPiece(before, drawn)
                             : staysAfter ? OnPiece(after, drawn)
                                          : 0.5 * (OnPiece(before, drawn) + OnPiece(after, drawn));
        exact.pieces[k].to = corner;
        exact.pieces[i].from = corner;
        for (const std::size_t moved : {k, i})
            if (ExactPiece& piece = exact.pieces[moved]; piece.kind == PieceKind::Arc)
                piece.through = MiddleOfArc(ink, chain.pieces[moved], piece.from, piece.to);
    }
}

/// The ink's box grown by the tolerance, which no reading leaves.
struct Bounds {
    XYBox box;
    double tolerance = 0.0;

    bool Has(const Point& p) const {
        return p.x >= box.min.x - tolerance && p.x <= box.max.x + tolerance && p.y >= box.min.y - tolerance &&
               p.y <= box.max.y + tolerance;
    }
};

// Corners and ends that lie out of bounds become the ink's own, and with them the middles of arcs.
void DrawInCorners(const PricedPath& ink, const Bounds& bounds, ExactChain& chain) {
    const std::size_t count = chain.pieces.size();
    const auto drawIn = [&](ExactPiece& piece, Point& end, int own) {
        end = ink.path.At(own);
        const int points = piece.last - piece.first + (piece.last < piece.first ? ink.path.Size() : 0);
        if (piece.kind == PieceKind::Arc)
            piece.through = ink.path.At(piece.first + points / 2);
    };
    for (std::size_t i = chain.isClosed ? 0 : 1; i < count; ++i) {
        ExactPiece& piece = chain.pieces[i];
        if (bounds.Has(piece.from))
            continue;
        ExactPiece& before = chain.pieces[(i + count - 1) % count];
        drawIn(piece, piece.from, piece.first);
        drawIn(before, before.to, piece.first);
    }
    if (!chain.isClosed && !bounds.Has(chain.pieces.front().from))
        drawIn(chain.pieces.front(), chain.pieces.front().from, 0);
    if (!chain.isClosed && !bounds.Has(chain.pieces.back().to))
        drawIn(chain.pieces.back(), chain.pieces.back().to, ink.path.Size() - 1);
}

// A regular polygon replaces the corners of the chain; it is turned onto the axes as a whole. False for any
// other polygon, and where the regular one would be out of bounds.
bool Regularise(double snapRad, const Bounds& bounds, ExactChain& chain, InkShape& shape) {
    std::vector<Point> corners;
    for (const ExactPiece& piece : chain.pieces)
        corners.push_back(piece.from);
    const InkShape made = MakeRegular(corners);
    if (made == shape)
        return false;
    if (snapRad > 0.0)
        AlignToAxes(made, snapRad, corners);
    if (!std::all_of(corners.begin(), corners.end(), [&](const Point& p) { return bounds.Has(p); }))
        return false;
    shape = made;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        chain.pieces[i].from = corners[i];
        chain.pieces[i].to = corners[(i + 1) % corners.size()];
    }
    return true;
}

InkShape ShapeOf(const ExactPiece& only) {
    switch (only.kind) {
    case PieceKind::Line:
        return InkShape::Line;
    case PieceKind::Arc:
        return InkShape::Arc;
    case PieceKind::Kept:
        return only.kept->curve->GetType() == CurveType_Arc       ? InkShape::Arc
               : only.kept->curve->GetType() == CurveType_Ellipse ? InkShape::EllipticArc
                                                                  : InkShape::Spline;
    default:
        return InkShape::Spline;
    }
}

InkShape ShapeOf(const ExactChain& chain) {
    const std::size_t count = chain.pieces.size();
    if (count == 1)
        return ShapeOf(chain.pieces[0]);
    if (!chain.isJoined)
        return InkShape::Pieces;
    if (chain.IsPolygon())
        return count == 3 ? InkShape::Triangle : count == 4 ? InkShape::Quadrilateral : InkShape::Polygon;
    return chain.AreLines() ? InkShape::Polyline : InkShape::Chain;
}

void MakeCornersOfBends(Chain& chain) {
    for (ChainPiece& piece : chain.pieces)
        if (piece.joint == JointSight::Bend)
            piece.joint = JointSight::Corner;
}

} // namespace

void NameEnds(InkReading& reading) {
    for (InkConnection& connection : reading.connections) {
        const InterpretedCurve& made = reading.curves[static_cast<std::size_t>(connection.curve)];
        connection.end = connection.end == CurveEnd::Start ? made.First() : made.Last();
    }
}

void ReadChain(const PricedPath& ink, const SketchRecognizerPreferences& preferences,
               std::span<Curve* const> earlier, Chain chain, double tolerance, ChainPieces pieces,
               InkReading& reading) {
    if (!preferences.GetCurveTidy()) {
        ReadLoose(ink, preferences, earlier, MakeLoose(ink, chain), reading);
        return;
    }
    const double snapRad = SnapAngle(preferences);
    FitTangentRuns(ink, snapRad, chain);
    if (pieces == ChainPieces::Fixed)
        MakeCornersOfBends(chain);
    ExactChain exact = MakeExact(ink, chain);
    const std::vector<bool> round =
        pieces == ChainPieces::Fixed ? std::vector<bool>() : FindRoundCorners(ink, chain, exact);
    const Bounds bounds{XYBox(ink.path.pts), tolerance};
    const auto tidy = [&] {
        if (pieces == ChainPieces::AsFound)
            DrawNear(ink, chain, round, exact);
        RoundCorners(ink, chain, round, exact);
        DrawInCorners(ink, bounds, exact);
        reading.shape = ShapeOf(exact);
    };
    tidy();
    const bool isRegular = preferences.GetRegularPolygonRecognition() && exact.IsPolygon() &&
                           Regularise(snapRad, bounds, exact, reading.shape);
    reading.connections = FindConnections(ink.path, earlier, preferences, exact);
    if (snapRad > 0.0 && !isRegular) {
        SnapLines(ink.path, snapRad, tolerance, reading.connections, exact, chain);
        exact = MakeExact(ink, chain);
        tidy();
    }
    reading.isClosed = exact.isClosed;
    MoveEnds(ink.path, reading.connections, exact);
    AppendChain(ink.path, exact, reading);
    NameEnds(reading);
}

void ReadLoose(const PricedPath& ink, const SketchRecognizerPreferences& preferences,
               std::span<Curve* const> earlier, ExactChain loose, InkReading& reading) {
    reading.shape = ShapeOf(loose);
    reading.connections = FindConnections(ink.path, earlier, preferences, loose);
    const double snapRad = SnapAngle(preferences);
    for (std::size_t i = 0; i < loose.pieces.size() && snapRad > 0.0; ++i) {
        const auto placeOf = [&](bool isEnd, CurveEnd end) {
            return isEnd ? PlaceOf(ink.path, reading.connections, end) : std::nullopt;
        };
        if (loose.pieces[i].kind == PieceKind::Line)
            SnapToAxis(snapRad, placeOf(i == 0, CurveEnd::Start),
                       placeOf(i + 1 == loose.pieces.size(), CurveEnd::End), loose.pieces[i]);
    }
    MoveEnds(ink.path, reading.connections, loose);
    AppendChain(ink.path, loose, reading);
    NameEnds(reading);
}

} // namespace Tessera::Geometry
