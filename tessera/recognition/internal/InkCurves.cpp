#include "tessera/recognition/internal/InkCurves.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/recognition/internal/FreeForm.h"

namespace Tessera::Geometry {

namespace {

constexpr double kSplineShare = 0.03; // of the size: tolerance of free-form pieces
constexpr double kTangentDeg = 1e-5;  // an exact joint turns by rounding alone

struct Ends {
    Point first; // directions of the pen
    Point last;
};

Point Unit(const Point& v) {
    return v / std::max(v.Length(), 1e-300);
}

// Of the curve itself, the way that the pen went.
Ends DirectionsOf(const Curve& curve, bool isReversed) {
    double range[2];
    curve.AskRange(range);
    Point at;
    Vector start;
    Vector end;
    curve.EvaluateAtParameter(range[0], at, start);
    curve.EvaluateAtParameter(range[1], at, end);
    if (isReversed)
        return {{-end.x, -end.y}, {-start.x, -start.y}};
    return {{start.x, start.y}, {end.x, end.y}};
}

Ends DirectionsOf(const ExactPiece& piece, const InterpretedCurve& made) {
    if (piece.kind == PieceKind::Line)
        return {piece.to - piece.from, piece.to - piece.from};
    if (piece.kind == PieceKind::Spline || piece.kind == PieceKind::Kept)
        return DirectionsOf(*made.curve, made.isReversed);
    // The tangent at an end makes with the chord the angle that the other two sides enclose at `through`.
    const Point chord = Unit(piece.to - piece.from);
    const Point a = piece.through - piece.from;
    const Point b = piece.to - piece.through;
    const double half = SignedAngle(a, b);
    const double c = std::cos(half);
    const double s = std::sin(half);
    return {{c * chord.x + s * chord.y, c * chord.y - s * chord.x},
            {c * chord.x - s * chord.y, c * chord.y + s * chord.x}};
}

// Null for fewer than four points and when memory runs out, which the interpretation reports.
std::unique_ptr<Curve> MakeSpline(const InkPath& path, const ExactPiece& piece, bool isClosed) {
    const int end = piece.first < piece.last ? piece.last : piece.last + path.Size();
    std::vector<Point> pts;
    for (int i = piece.first; i <= end; ++i)
        pts.push_back(path.ToModel(i == piece.first ? piece.from : i == end ? piece.to : path.At(i)));
    return FitFreeForm(pts, isClosed, kSplineShare * path.scale);
}

// The curve moved as a whole onto its ends; null where that would throw it far off.
std::unique_ptr<Curve> MakeKept(const InterpretedCurve& kept, const Point& from, const Point& to) {
    const Point& start = kept.isReversed ? to : from;
    const Point& end = kept.isReversed ? from : to;
    const Point old = kept.curve->GetStart();
    const std::optional<Point> factor = SimilarityBetween(kept.curve->GetEnd() - old, end - start);
    if (!factor)
        return nullptr;
    std::unique_ptr<Curve> moved(kept.curve->CopyCurveOnly());
    // A transform divides by its last element: the scale.
    const double scale = factor->Length();
    const Point turn = *factor / scale;
    const Point shift =
        start / scale - Point(turn.x * old.x - turn.y * old.y, turn.x * old.y + turn.y * old.x);
    double move[3][3] = {{turn.x, -turn.y, shift.x}, {turn.y, turn.x, shift.y}, {0.0, 0.0, 1.0 / scale}};
    moved->Transform(move);
    return moved;
}

std::unique_ptr<Curve> MakeCurve(const InkPath& path, const ExactPiece& piece, bool isClosed,
                                 bool& isReversed) {
    const Point from = path.ToModel(piece.from);
    const Point to = path.ToModel(piece.to);
    isReversed = false;
    if (piece.kind == PieceKind::Kept)
        if (std::unique_ptr<Curve> kept = MakeKept(*piece.kept, from, to)) {
            isReversed = piece.kept->isReversed;
            return kept;
        }
    if (piece.kind == PieceKind::Spline || piece.kind == PieceKind::Kept)
        if (std::unique_ptr<Curve> spline = MakeSpline(path, piece, isClosed))
            return spline;
    if (piece.kind != PieceKind::Arc)
        return std::make_unique<Line>(from, to);
    Point centre;
    if (!FindCentre(piece, centre))
        return std::make_unique<Line>(from, to);
    centre = path.ToModel(centre);
    isReversed = (piece.through - piece.from).Cross(piece.to - piece.from) < 0.0;
    return isReversed ? std::make_unique<Arc>(to, from, centre) : std::make_unique<Arc>(from, to, centre);
}

int SampleAt(const InkPath& path, int point) {
    return static_cast<int>(std::lround(path.source[static_cast<std::size_t>(point)]));
}

// Of the stroke, wherever the path begins.
int LastSample(const InkPath& path) {
    return static_cast<int>(std::lround(*std::max_element(path.source.begin(), path.source.end())));
}

void SetTurn(const Point& in, const Point& out, InkJoint& joint) {
    joint.turnDeg = SignedAngle(in, out) * 180.0 / std::numbers::pi;
    joint.kind = std::fabs(joint.turnDeg) <= kTangentDeg ? JointKind::Tangent : JointKind::Corner;
}

InkJoint MakeJoint(const InkPath& path, const ExactChain& chain, std::size_t before, std::size_t after,
                   const InkReading& reading, std::size_t base) {
    InkJoint joint;
    joint.before = static_cast<int>(base + before);
    joint.after = static_cast<int>(base + after);
    joint.beforeEnd = reading.curves[base + before].Last();
    joint.afterEnd = reading.curves[base + after].First();
    joint.isClosing = after <= before;
    joint.position = path.ToModel(chain.pieces[after].from);
    SetTurn(DirectionsOf(chain.pieces[before], reading.curves[base + before]).last,
            DirectionsOf(chain.pieces[after], reading.curves[base + after]).first, joint);
    return joint;
}

} // namespace

void AppendChain(const InkPath& path, const ExactChain& chain, InkReading& reading) {
    const std::size_t base = reading.curves.size();
    const std::size_t count = chain.pieces.size();
    for (const ExactPiece& piece : chain.pieces) {
        InterpretedCurve made;
        made.curve = MakeCurve(path, piece, chain.isClosed && count == 1, made.isReversed);
        made.firstSample = SampleAt(path, piece.first);
        made.lastSample = SampleAt(path, piece.last);
        if (chain.isClosed && count == 1 && made.lastSample == made.firstSample) // once round
            made.lastSample = made.firstSample > 0 ? made.firstSample - 1 : LastSample(path);
        reading.curves.push_back(std::move(made));
    }
    for (std::size_t i = 1; i < count && chain.isJoined; ++i)
        reading.joints.push_back(MakeJoint(path, chain, i - 1, i, reading, base));
    if (chain.isClosed)
        reading.joints.push_back(MakeJoint(path, chain, count - 1, 0, reading, base));
}

void AppendRound(const InkPath& path, const RoundShape& shape, InkReading& reading) {
    reading.shape = shape.isCircle ? InkShape::Circle : InkShape::Ellipse;
    reading.isClosed = true;
    InterpretedCurve made;
    const Point centre = path.ToModel(shape.centre);
    if (shape.isCircle) {
        made.curve = std::make_unique<Arc>(centre, 0.5 * path.scale * (shape.radii[0] + shape.radii[1]));
    } else {
        double middle[2] = {centre.x, centre.y};
        double radii[2] = {path.scale * shape.radii[0], path.scale * shape.radii[1]};
        made.curve = std::make_unique<Ellipse>(middle, radii, shape.rotation, 0.0, 2.0 * std::numbers::pi);
    }
    made.firstSample = SampleAt(path, 0);
    made.lastSample = SampleAt(path, path.Size() - 1);
    reading.curves.push_back(std::move(made));
}

InterpretedCurve MakeEllipticArc(const InkPath& path, const EllipticArc& arc, int first, int last) {
    const Point middle = path.ToModel(arc.centre);
    double centre[2] = {middle.x, middle.y};
    double radii[2] = {path.scale * arc.radii[0], path.scale * arc.radii[1]};
    InterpretedCurve made;
    made.curve = std::make_unique<Ellipse>(centre, radii, arc.rotation, arc.from, arc.to);
    made.firstSample = SampleAt(path, first);
    made.lastSample = SampleAt(path, last);
    made.isReversed = arc.isReversed;
    return made;
}

bool AppendEllipticArc(const InkPath& path, const EllipticArc& arc, const Point& from, const Point& to,
                       InkReading& reading) {
    InterpretedCurve made = MakeEllipticArc(path, arc, 0, path.Size() - 1);
    std::unique_ptr<Curve> moved = MakeKept(made, path.ToModel(from), path.ToModel(to));
    const bool isKept = moved != nullptr;
    if (isKept)
        made.curve = std::move(moved);
    reading.curves.push_back(std::move(made));
    return isKept;
}

void AppendSeam(const Curve& closed, InkReading& reading) {
    InkJoint seam;
    seam.isClosing = true;
    seam.position = closed.GetStart();
    const Ends ends = DirectionsOf(closed, false);
    SetTurn(ends.last, ends.first, seam);
    reading.joints.push_back(seam);
}

void AppendFreeShape(const InkPath& path, FreeShape& shape, InkReading& reading) {
    // A transform divides by its last element, so the translation is given in units of the scale.
    double toModel[3][3] = {{1.0, 0.0, path.origin.x / path.scale},
                            {0.0, 1.0, path.origin.y / path.scale},
                            {0.0, 0.0, 1.0 / path.scale}};
    shape.curve->Transform(toModel);
    InterpretedCurve made;
    made.curve = std::move(shape.curve);
    made.lastSample = SampleAt(path, path.Size() - 1);
    if (shape.isClosed)
        AppendSeam(*made.curve, reading);
    reading.curves.push_back(std::move(made));
}

} // namespace Tessera::Geometry
