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
        if (piece.isArc || TouchesBefore(piece) || runsOn)
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

/// The ink's box grown by the tolerance, which no reading leaves.
struct Bounds {
    XYBox box;
    double tolerance = 0.0;

    bool Has(const Point& p) const {
        return p.x >= box.min.x - tolerance && p.x <= box.max.x + tolerance && p.y >= box.min.y - tolerance &&
               p.y <= box.max.y + tolerance;
    }
};

// Corners and ends that lie out of bounds become the ink's own.
void DrawInCorners(const PricedPath& ink, const Bounds& bounds, ExactChain& chain) {
    const auto isOutside = [&](const Point& p) { return !bounds.Has(p); };
    const std::size_t count = chain.pieces.size();
    for (std::size_t i = chain.isClosed ? 0 : 1; i < count; ++i) {
        ExactPiece& piece = chain.pieces[i];
        if (!isOutside(piece.from))
            continue;
        piece.from = ink.path.At(piece.first);
        chain.pieces[(i + count - 1) % count].to = piece.from;
    }
    if (!chain.isClosed && isOutside(chain.pieces.front().from))
        chain.pieces.front().from = ink.path.pts.front();
    if (!chain.isClosed && isOutside(chain.pieces.back().to))
        chain.pieces.back().to = ink.path.pts.back();
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

InkShape ShapeOf(const ExactChain& chain) {
    const std::size_t count = chain.pieces.size();
    if (count == 1)
        return chain.pieces[0].kind == PieceKind::Line  ? InkShape::Line
               : chain.pieces[0].kind == PieceKind::Arc ? InkShape::Arc
                                                        : InkShape::Spline;
    if (chain.IsPolygon())
        return count == 3 ? InkShape::Triangle : count == 4 ? InkShape::Quadrilateral : InkShape::Polygon;
    return chain.AreLines() ? InkShape::Polyline : InkShape::Chain;
}

} // namespace

void NameEnds(InkReading& reading) {
    for (InkConnection& connection : reading.connections) {
        const InterpretedCurve& made = reading.curves[static_cast<std::size_t>(connection.curve)];
        connection.end = connection.end == CurveEnd::Start ? made.First() : made.Last();
    }
}

void ReadChain(const PricedPath& ink, const SketchRecognizerPreferences& preferences,
               std::span<Curve* const> earlier, Chain chain, double tolerance, InkReading& reading) {
    const double snapRad = SnapAngle(preferences);
    FitTangentRuns(ink, snapRad, chain);
    ExactChain exact = MakeExact(ink, chain);
    const std::vector<bool> round = FindRoundCorners(ink, chain, exact);
    const Bounds bounds{XYBox(ink.path.pts), tolerance};
    const auto tidy = [&] {
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

} // namespace Tessera::Geometry
