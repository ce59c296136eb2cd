#include "tessera/recognition/internal/ChainGeometry.h"

#include <algorithm>
#include <cmath>

#include "tessera/recognition/internal/AxisSnap.h"

namespace Tessera::Geometry {

namespace {

// Of the shorter neighbour: how far an intersection may lie from the ink.
constexpr double kCornerShare = 0.35;
constexpr double kSeamShare = 0.25;  // of the path's length: the same where the stroke closes
constexpr double kLeastLeft = 0.1;   // of a line's length: what a corner does not cut off
constexpr double kFlat = 1e-12;      // twice its height over its chord: an arc that is a line
constexpr double kMostStretch = 0.2; // by which a curve is turned and scaled onto its ends
constexpr double kParallel = 0.17;   // sine of the angle below which lines do not make a corner

bool LineMeetsLine(const LineFit& a, const LineFit& b, Point& meet) {
    const double sine = a.direction.Cross(b.direction);
    if (std::fabs(sine) < kParallel)
        return false;
    const double t = (b.centre - a.centre).Cross(b.direction) / sine;
    meet = a.centre + t * a.direction;
    return true;
}

bool LineMeetsCircle(const LineFit& line, const CircleFit& circle, const Point& near, Point& meet) {
    const Point to = circle.centre - line.centre;
    const Point foot = line.centre + to.Dot(line.direction) * line.direction;
    const double halfSq = circle.radius * circle.radius - foot.Distance2(circle.centre);
    if (halfSq < 0.0)
        return false;
    const Point half = std::sqrt(halfSq) * line.direction;
    meet = near.Distance2(foot + half) < near.Distance2(foot - half) ? foot + half : foot - half;
    return true;
}

bool CircleMeetsCircle(const CircleFit& a, const CircleFit& b, const Point& near, Point& meet) {
    const Point to = b.centre - a.centre;
    const double dSq = to.Dot(to);
    if (!(dSq > 0.0))
        return false;
    const double along = 0.5 * (dSq + a.radius * a.radius - b.radius * b.radius) / dSq;
    const double halfSq = a.radius * a.radius / dSq - along * along;
    if (halfSq < 0.0)
        return false;
    const Point foot = a.centre + along * to;
    const Point half = std::sqrt(halfSq) * Point(-to.y, to.x);
    meet = near.Distance2(foot + half) < near.Distance2(foot - half) ? foot + half : foot - half;
    return true;
}

Point JointOf(const PricedPath& ink, const ChainPiece& before, const ChainPiece& after) {
    if (before.last == after.first && after.joint == JointSight::Tangent && after.isTouching)
        return after.meet;
    const bool isSeam = before.last != after.first;
    const Point corner = 0.5 * (ink.path.At(before.last) + ink.path.At(after.first));
    const double reach =
        isSeam ? kSeamShare * ink.path.length
               : kCornerShare * ink.path.step * std::min(PointsIn(ink, before), PointsIn(ink, after));
    Point meet;
    if (IntersectPieces(before, after, corner, meet) && meet.Distance(corner) <= reach)
        return meet;
    return 0.5 * (OnPiece(before, corner) + OnPiece(after, corner));
}

double LeastOf(const PricedPath& ink, const ChainPiece& line) {
    return kLeastLeft * ink.path.step * PointsIn(ink, line);
}

// A side on which the pen came back, over its start or far from it: no free form follows the ink across that.
bool IsClosingSide(const PricedPath& ink, const ChainPiece& piece) {
    return piece.last < piece.first && ink.path.Gap() > ink.closing;
}

// Runs of pieces between which the ink only bends, as one piece each.
std::vector<ChainPiece> JoinBends(const PricedPath& ink, const Chain& chain, std::vector<bool>& isFree) {
    const std::vector<ChainPiece>& pieces = chain.pieces;
    std::vector<ChainPiece> joined;
    isFree.clear();
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (i > 0 && pieces[i].joint == JointSight::Bend && !IsClosingSide(ink, pieces[i - 1]) &&
            !IsClosingSide(ink, pieces[i])) {
            joined.back().last = pieces[i].last;
            isFree.back() = true;
        } else {
            joined.push_back(pieces[i]);
            isFree.push_back(pieces[i].kept != nullptr);
        }
    }
    if (IsRing(chain) && pieces.front().joint == JointSight::Bend && joined.size() > 1 &&
        !IsClosingSide(ink, pieces.front()) && !IsClosingSide(ink, pieces.back())) {
        joined.back().last = joined.front().last;
        joined.front() = joined.back();
        joined.pop_back();
        isFree.front() = true;
        isFree.pop_back();
    }
    if (joined.size() == 1 && isFree.front() && pieces.front().joint == JointSight::Bend &&
        joined.front().last <= joined.front().first) {
        joined.front().first = 0; // it begins anywhere
        joined.front().last = ink.path.Size() - 1;
    }
    return joined;
}

// Where a free-form piece meets a neighbour: on the neighbour, nearest to the ink or to where a kept curve
// was made to meet it.
Point FreeJoint(const PricedPath& ink, const std::vector<ChainPiece>& pieces, const std::vector<bool>& isFree,
                std::size_t i) {
    const ChainPiece& before = pieces[i - 1];
    const ChainPiece& after = pieces[i];
    const bool isMet = after.isTouching && (before.kept != nullptr || after.kept != nullptr);
    const Point& corner = isMet ? after.meet : ink.path.At(after.first);
    if (!isFree[i - 1])
        return OnPiece(before, corner);
    return isFree[i] ? corner : OnPiece(after, corner);
}

// The end of an open chain.
Point EndOn(const PricedPath& ink, const ChainPiece& piece, bool isFree, bool isLast) {
    if (piece.kept != nullptr) {
        const Curve& curve = *piece.kept->curve;
        return ink.path.FromModel(piece.kept->isReversed == isLast ? curve.GetStart() : curve.GetEnd());
    }
    const Point& end = ink.path.At(isLast ? piece.last : piece.first);
    return isFree ? end : OnPiece(piece, end);
}

// Joints that a kept curve cannot be moved onto come to its ends.
void KeepInPlace(const PricedPath& ink, const std::vector<ChainPiece>& pieces, bool isClosed,
                 std::vector<Point>& joints) {
    const std::size_t count = pieces.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (pieces[i].kept == nullptr)
            continue;
        const Point start = EndOn(ink, pieces[i], true, false);
        const Point end = EndOn(ink, pieces[i], true, true);
        if (SimilarityBetween(end - start, joints[i + 1] - joints[i]))
            continue;
        joints[i] = start;
        joints[i + 1] = end;
        if (isClosed && i == 0)
            joints[count] = start;
        if (isClosed && i + 1 == count)
            joints[0] = end;
    }
}

ExactPiece Between(const PricedPath& ink, const ChainPiece& piece, bool isFree, const Point& from,
                   const Point& to) {
    const PieceKind kind = piece.kept != nullptr ? PieceKind::Kept
                           : isFree              ? PieceKind::Spline
                           : piece.isArc         ? PieceKind::Arc
                                                 : PieceKind::Line;
    ExactPiece made{kind, from, to, {}, piece.first, piece.last, piece.kept};
    if (kind == PieceKind::Arc)
        made.through = MiddleOfArc(ink, piece, from, to);
    return made;
}

} // namespace

Point OnPiece(const ChainPiece& piece, const Point& p) {
    if (!piece.isArc)
        return piece.line.centre + (p - piece.line.centre).Dot(piece.line.direction) * piece.line.direction;
    const Point radius = p - piece.circle.centre;
    return piece.circle.centre + radius * (piece.circle.radius / std::max(radius.Length(), 1e-12));
}

double DistanceFrom(const ChainPiece& piece, const Point& p) {
    return piece.isArc ? std::sqrt(p.Distance2(piece.circle.centre)) - piece.circle.radius
                       : (p - piece.line.centre).Cross(piece.line.direction);
}

double MeanSqFrom(const PricedPath& ink, const Chain& chain) {
    int points = 0;
    double sumSq = 0.0;
    for (const ChainPiece& piece : chain.pieces) {
        const int count = PointsIn(ink, piece);
        for (int i = 0; i <= count; ++i) {
            const double off = DistanceFrom(piece, ink.path.At(piece.first + i));
            sumSq += off * off;
        }
        points += count + 1;
    }
    return sumSq / points;
}

bool IsLoneCurve(const PricedPath& ink, const Chain& chain, double tolerance) {
    if (chain.pieces.size() != 1 || chain.isClosed)
        return false;
    return std::all_of(ink.path.pts.begin(), ink.path.pts.end(), [&](const Point& p) {
        return std::fabs(DistanceFrom(chain.pieces[0], p)) <= tolerance;
    });
}

Point MiddleOfArc(const PricedPath& ink, const ChainPiece& piece, const Point& from, const Point& to) {
    const Point& inkMiddle = ink.path.At(piece.first + PointsIn(ink, piece) / 2);
    const Point chord = to - from;
    const double length = std::max(chord.Length(), 1e-12);
    const Point normal(-chord.y / length, chord.x / length);
    // Where the bisector of the new chord meets the circle, on the ink's side.
    const Point base = 0.5 * (from + to);
    const Point out = base - piece.circle.centre;
    const double b = out.Dot(normal);
    const double disc = b * b - out.Dot(out) + piece.circle.radius * piece.circle.radius;
    const double root = std::sqrt(std::max(0.0, disc));
    const Point one = base + (root - b) * normal;
    const Point other = base + (-root - b) * normal;
    return one.Distance2(inkMiddle) < other.Distance2(inkMiddle) ? one : other;
}

bool IntersectPieces(const ChainPiece& a, const ChainPiece& b, const Point& near, Point& meet) {
    if (a.isArc && b.isArc)
        return CircleMeetsCircle(a.circle, b.circle, near, meet);
    if (a.isArc)
        return LineMeetsCircle(b.line, a.circle, near, meet);
    if (b.isArc)
        return LineMeetsCircle(a.line, b.circle, near, meet);
    return LineMeetsLine(a.line, b.line, meet);
}

bool LeavesBoth(const PricedPath& ink, const ChainPiece& before, const ChainPiece& after,
                const Point& corner) {
    const auto leaves = [&](const ChainPiece& piece, int far) {
        return piece.isArc || corner.Distance(ink.path.At(far)) >= LeastOf(ink, piece);
    };
    return leaves(before, before.first) && leaves(after, after.last);
}

bool EndsApart(const PricedPath& ink, const ChainPiece& line) {
    return ink.path.At(line.first).Distance(ink.path.At(line.last)) >= LeastOf(ink, line);
}

bool FindCentre(const ExactPiece& arc, Point& centre) {
    const Point a = arc.through - arc.from;
    const Point b = arc.to - arc.from;
    const double cross = 2.0 * a.Cross(b);
    if (std::fabs(cross) <= kFlat * b.Dot(b))
        return false;
    const double aa = a.Dot(a);
    const double bb = b.Dot(b);
    centre = arc.from + Point(b.y * aa - a.y * bb, a.x * bb - b.x * aa) / cross;
    return true;
}

bool ExactChain::AreLines() const {
    return std::all_of(pieces.begin(), pieces.end(),
                       [](const ExactPiece& p) { return p.kind == PieceKind::Line; });
}

ExactChain MakeExact(const PricedPath& ink, const Chain& chain) {
    std::vector<bool> isFree;
    const std::vector<ChainPiece> pieces = JoinBends(ink, chain, isFree);
    ExactChain exact;
    exact.isClosed = chain.isClosed;
    const std::size_t count = pieces.size();
    std::vector<Point> joints(count + 1); // before each piece, and after the last
    for (std::size_t i = 1; i < count; ++i)
        joints[i] = isFree[i - 1] || isFree[i] ? FreeJoint(ink, pieces, isFree, i)
                                               : JointOf(ink, pieces[i - 1], pieces[i]);
    if (chain.isClosed) {
        joints[0] = isFree.front() || isFree.back()
                        ? 0.5 * (ink.path.At(pieces.back().last) + ink.path.At(pieces.front().first))
                        : JointOf(ink, pieces.back(), pieces.front());
        // Both joints of two pieces may lie nearest to one of their two intersections: the other is the
        // ink's.
        if (count == 2 && !(joints[0].Distance2(joints[1]) > 0.0))
            joints[1] = ink.path.At(pieces[1].first);
        joints[count] = joints[0];
    } else {
        joints[0] = EndOn(ink, pieces.front(), isFree.front(), false);
        joints[count] = EndOn(ink, pieces.back(), isFree[count - 1], true);
    }
    KeepInPlace(ink, pieces, chain.isClosed, joints);
    for (std::size_t i = 0; i < count; ++i)
        exact.pieces.push_back(Between(ink, pieces[i], isFree[i], joints[i], joints[i + 1]));
    return exact;
}

ExactChain MakeLoose(const PricedPath& ink, const Chain& chain) {
    std::vector<bool> isFree;
    std::vector<ChainPiece> pieces = JoinBends(ink, chain, isFree);
    ExactChain loose;
    loose.isJoined = false;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (const RunFits fits = FitRun(ink, pieces[i].first, pieces[i].last, 0.0); !isFree[i]) {
            pieces[i].line = fits.line; // it may have been fitted so that it touches others
            pieces[i].circle = fits.hasArc ? fits.circle : pieces[i].circle;
        }
        loose.pieces.push_back(Between(ink, pieces[i], isFree[i], EndOn(ink, pieces[i], isFree[i], false),
                                       EndOn(ink, pieces[i], isFree[i], true)));
    }
    return loose;
}

std::optional<Point> SimilarityBetween(const Point& chord, const Point& wanted) {
    const Point factor = Point(chord.Dot(wanted), chord.Cross(wanted)) / std::max(chord.Dot(chord), 1e-300);
    return factor.Distance({1.0, 0.0}) <= kMostStretch ? std::optional<Point>(factor) : std::nullopt;
}

void SnapToAxis(double angleRad, const std::optional<Point>& start, const std::optional<Point>& end,
                ExactPiece& line) {
    const Point along = end.value_or(line.to) - start.value_or(line.from);
    const std::optional<Point> axis = AxisNear(along, angleRad);
    if (!axis || (start && end))
        return;
    const Point run = along.Length() * *axis;
    const Point middle = 0.5 * (line.from + line.to);
    line.from = start ? *start : end ? *end - run : middle - 0.5 * run;
    line.to = line.from + run;
}

} // namespace Tessera::Geometry
