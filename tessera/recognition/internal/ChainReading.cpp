#include "tessera/recognition/internal/ChainReading.h"

#include <algorithm>
#include <cmath>
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

// Turns a line's direction onto an axis of the plane within the angle, about the middle of its ink.
void SnapLines(double angleRad, Chain& chain) {
    for (std::size_t i = 0; i < chain.pieces.size(); ++i) {
        ChainPiece& piece = chain.pieces[i];
        const bool runsOn = i + 1 < chain.pieces.size() && TouchesBefore(chain.pieces[i + 1]);
        if (TouchesBefore(piece) || runsOn)
            continue; // fitted with its neighbours, axes included
        if (!piece.isArc)
            piece.line.direction = AxisNear(piece.line.direction, angleRad).value_or(piece.line.direction);
    }
}

// Corners and ends that lie beyond the tolerance outside the ink's box become the ink's own.
void DrawInCorners(const PricedPath& ink, double tolerance, ExactChain& chain) {
    const XYBox box(ink.path.pts);
    const auto isOutside = [&](const Point& p) {
        return p.x < box.min.x - tolerance || p.x > box.max.x + tolerance || p.y < box.min.y - tolerance ||
               p.y > box.max.y + tolerance;
    };
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

ExactChain MakeTidy(const PricedPath& ink, const Chain& chain, double tolerance) {
    ExactChain exact = MakeExact(ink, chain);
    RoundCorners(ink, chain, exact);
    DrawInCorners(ink, tolerance, exact);
    return exact;
}

// A regular polygon replaces the corners of the chain; it is turned onto the axes as a whole. False for any
// other polygon.
bool Regularise(double snapRad, ExactChain& chain, InkShape& shape) {
    std::vector<Point> corners;
    for (const ExactPiece& piece : chain.pieces)
        corners.push_back(piece.from);
    shape = MakeRegular(corners);
    if (shape == InkShape::Triangle || shape == InkShape::Quadrilateral || shape == InkShape::Polygon)
        return false;
    if (snapRad > 0.0)
        AlignToAxes(shape, snapRad, corners);
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
    ExactChain exact = MakeTidy(ink, chain, tolerance);
    reading.shape = ShapeOf(exact);
    const bool isRegular = preferences.GetRegularPolygonRecognition() && exact.IsPolygon() &&
                           Regularise(snapRad, exact, reading.shape);
    if (snapRad > 0.0 && !isRegular) {
        SnapLines(snapRad, chain);
        exact = MakeTidy(ink, chain, tolerance);
    }
    reading.isClosed = exact.isClosed;
    reading.connections = ConnectEnds(ink.path, earlier, preferences, exact);
    AppendChain(ink.path, exact, reading);
    NameEnds(reading);
}

} // namespace Tessera::Geometry
