#include "tessera/recognition/internal/ChainGeometry.h"

#include <algorithm>
#include <cmath>

#include "tessera/recognition/internal/ChainClosing.h"
#include "tessera/recognition/internal/SmoothJoints.h"

namespace Tessera::Geometry {

namespace {

constexpr double kCornerShare =
    0.35;                           // of the shorter neighbour: how far an intersection may lie from the ink
constexpr double kShiftShare = 0.5; // of the radius: how far tangency may move an arc
constexpr double kSeamShare = 0.25; // of the path's length: the same where the stroke closes

const Point& At(const PricedPath& ink, int i) {
    return ink.path.pts[static_cast<std::size_t>(i)];
}

int PointsOf(const PricedPath& ink, const ChainPiece& piece) {
    return piece.last > piece.first ? piece.last - piece.first : piece.last + ink.path.Size() - piece.first;
}

Point JointOf(const PricedPath& ink, const ChainPiece& before, const ChainPiece& after) {
    if (after.isJudged && after.joint == JointSight::Tangent)
        return after.meet;
    const bool isSeam = before.last != after.first;
    const Point corner = 0.5 * (At(ink, before.last) + At(ink, after.first));
    const double reach =
        isSeam ? kSeamShare * ink.path.length
               : kCornerShare * ink.path.step * std::min(PointsOf(ink, before), PointsOf(ink, after));
    Point meet;
    if (IntersectPieces(before, after, corner, meet) && meet.Distance(corner) <= reach)
        return meet;
    return 0.5 * (OnPiece(before, corner) + OnPiece(after, corner));
}

// The middle of the ink on the circle, shifted along with the ends.
Point MiddleOf(const PricedPath& ink, const ChainPiece& piece, const Point& from, const Point& to) {
    const int n = ink.path.Size();
    const Point inkMiddle = At(ink, (piece.first + PointsOf(ink, piece) / 2) % n);
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

// Runs of pieces between which the ink only bends, as one piece each.
std::vector<ChainPiece> JoinBends(const PricedPath& ink, const std::vector<ChainPiece>& pieces,
                                  std::vector<bool>& isFree) {
    std::vector<ChainPiece> joined;
    isFree.clear();
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (i > 0 && LookAtJoint(ink, pieces[i - 1], pieces[i]) == JointSight::Bend) {
            joined.back().last = pieces[i].last;
            isFree.back() = true;
        } else {
            joined.push_back(pieces[i]);
            isFree.push_back(false);
        }
    }
    return joined;
}

// Where a free-form piece meets a neighbour: on the neighbour, nearest to the ink.
Point FreeJoint(const PricedPath& ink, const std::vector<ChainPiece>& pieces, const std::vector<bool>& isFree,
                std::size_t i) {
    const Point& corner = At(ink, pieces[i].first);
    if (!isFree[i - 1])
        return OnPiece(pieces[i - 1], corner);
    return isFree[i] ? corner : OnPiece(pieces[i], corner);
}

Point Unit(const Point& v) {
    return v / std::max(v.Length(), 1e-12);
}

// The arc from a that leaves in direction d and ends at b: its middle point.
Point MiddleOfTangentArc(const Point& a, const Point& d, const Point& b) {
    const Point chord = b - a;
    const double half = std::atan2(d.Cross(chord), d.Dot(chord)); // half of the sweep
    const double sagitta = 0.5 * chord.Length() * std::tan(0.5 * half);
    const Point u = Unit(chord);
    return 0.5 * (a + b) + sagitta * Point(u.y, -u.x);
}

// Centre of the circle of the given radius that touches both lines, nearest to `near`.
bool TouchBoth(const LineFit& a, const LineFit& b, double radius, const Point& near, Point& centre) {
    const auto offset = [&](const LineFit& line) {
        const Point normal(-line.direction.y, line.direction.x);
        const double side = (near - line.centre).Dot(normal) < 0.0 ? -radius : radius;
        return line.centre + side * normal;
    };
    const double sine = a.direction.Cross(b.direction);
    if (std::fabs(sine) < 0.05)
        return false;
    const Point p = offset(a);
    centre = p + ((offset(b) - p).Cross(b.direction) / sine) * a.direction;
    return true;
}

Point FootOn(const LineFit& line, const Point& p) {
    return line.centre + (p - line.centre).Dot(line.direction) * line.direction;
}

// Moves the joint before piece i.
void MoveJoint(ExactChain& exact, std::size_t i, const Point& to) {
    exact.pieces[i - 1].to = to;
    exact.pieces[i].from = to;
}

// An arc with a line that it touches before it, after it, or on both sides.
void TouchLines(const std::vector<ChainPiece>& pieces, std::size_t i, bool before, bool after,
                ExactChain& exact) {
    const CircleFit& circle = pieces[i].circle;
    ExactPiece& arc = exact.pieces[i];
    if (before && after) {
        Point centre;
        if (TouchBoth(pieces[i - 1].line, pieces[i + 1].line, circle.radius, circle.centre, centre) &&
            centre.Distance(circle.centre) < kShiftShare * circle.radius) {
            MoveJoint(exact, i, FootOn(pieces[i - 1].line, centre));
            MoveJoint(exact, i + 1, FootOn(pieces[i + 1].line, centre));
            arc.through = centre + (arc.through - centre) * (circle.radius / arc.through.Distance(centre));
            const Point d = Unit(arc.from - exact.pieces[i - 1].from);
            arc.through = MiddleOfTangentArc(arc.from, d, arc.to);
            return;
        }
        after = false;
    }
    if (before) {
        MoveJoint(exact, i, FootOn(pieces[i - 1].line, circle.centre));
        arc.through = MiddleOfTangentArc(arc.from, Unit(arc.from - exact.pieces[i - 1].from), arc.to);
    } else if (after) {
        MoveJoint(exact, i + 1, FootOn(pieces[i + 1].line, circle.centre));
        arc.through = MiddleOfTangentArc(arc.to, Unit(arc.to - exact.pieces[i + 1].to), arc.from);
    }
}

// Two arcs that touch, neither of which touches anything else: they meet on the line of their centres.
void TouchArcs(const std::vector<ChainPiece>& pieces, std::size_t i, ExactChain& exact) {
    const CircleFit& a = pieces[i - 1].circle;
    const CircleFit& b = pieces[i].circle;
    const Point corner = exact.pieces[i].from;
    const Point axis = Unit(b.centre - a.centre);
    const auto on = [&](const CircleFit& circle) {
        const double side = (corner - circle.centre).Dot(axis) < 0.0 ? -circle.radius : circle.radius;
        return circle.centre + side * axis;
    };
    const Point meet = 0.5 * (on(a) + on(b));
    if (meet.Distance(corner) > kShiftShare * std::min(a.radius, b.radius))
        return;
    MoveJoint(exact, i, meet);
    Point d(-axis.y, axis.x);
    if (d.Dot(exact.pieces[i].through - meet) < 0.0)
        d = -1.0 * d;
    exact.pieces[i].through = MiddleOfTangentArc(meet, d, exact.pieces[i].to);
    exact.pieces[i - 1].through = MiddleOfTangentArc(meet, -1.0 * d, exact.pieces[i - 1].from);
}

void MakeTangent(const PricedPath& ink, const std::vector<ChainPiece>& pieces, ExactChain& exact) {
    const std::size_t count = pieces.size();
    const auto isArc = [&](std::size_t i) { return exact.pieces[i].kind == PieceKind::Arc; };
    const auto touches = [&](std::size_t i) { // the piece before i and piece i
        return i > 0 && i < count && LookAtJoint(ink, pieces[i - 1], pieces[i]) == JointSight::Tangent;
    };
    const auto touchesLine = [&](std::size_t joint, std::size_t other) {
        return touches(joint) && exact.pieces[other].kind == PieceKind::Line;
    };
    for (std::size_t i = 0; i < count; ++i)
        if (isArc(i))
            TouchLines(pieces, i, i > 0 && touchesLine(i, i - 1), i + 1 < count && touchesLine(i + 1, i + 1),
                       exact);
    for (std::size_t i = 1; i < count; ++i)
        if (isArc(i - 1) && isArc(i) && touches(i) && !touches(i - 1) && !touches(i + 1))
            TouchArcs(pieces, i, exact);
}

} // namespace

Point OnPiece(const ChainPiece& piece, const Point& p) {
    if (!piece.isArc)
        return piece.line.centre + (p - piece.line.centre).Dot(piece.line.direction) * piece.line.direction;
    const Point radius = p - piece.circle.centre;
    return piece.circle.centre + radius * (piece.circle.radius / std::max(radius.Length(), 1e-12));
}

bool ExactChain::IsPolygon() const {
    return isClosed && std::none_of(pieces.begin(), pieces.end(),
                                    [](const ExactPiece& p) { return p.kind != PieceKind::Line; });
}

ExactChain MakeExact(const PricedPath& ink, const Chain& chain) {
    std::vector<bool> isFree(chain.pieces.size(), false);
    const std::vector<ChainPiece> pieces =
        chain.isClosed ? chain.pieces : JoinBends(ink, chain.pieces, isFree);
    ExactChain exact;
    exact.isClosed = chain.isClosed;
    const std::size_t count = pieces.size();
    std::vector<Point> joints(count + 1); // before each piece, and after the last
    for (std::size_t i = 1; i < count; ++i)
        joints[i] = isFree[i - 1] || isFree[i] ? FreeJoint(ink, pieces, isFree, i)
                                               : JointOf(ink, pieces[i - 1], pieces[i]);
    if (chain.isClosed) {
        joints[0] = JointOf(ink, pieces.back(), pieces.front());
        joints[count] = joints[0];
    } else {
        const Point& start = At(ink, pieces.front().first);
        const Point& end = At(ink, pieces.back().last);
        joints[0] = isFree.front() ? start : OnPiece(pieces.front(), start);
        joints[count] = isFree[count - 1] ? end : OnPiece(pieces.back(), end);
    }
    for (std::size_t i = 0; i < count; ++i) {
        const ChainPiece& piece = pieces[i];
        const PieceKind kind = isFree[i] ? PieceKind::Spline : piece.isArc ? PieceKind::Arc : PieceKind::Line;
        ExactPiece made{kind, joints[i], joints[i + 1], {}, piece.first, piece.last};
        if (kind == PieceKind::Arc)
            made.through = MiddleOf(ink, piece, made.from, made.to);
        exact.pieces.push_back(made);
    }
    if (!pieces.front().isJudged)
        MakeTangent(ink, pieces, exact);
    return exact;
}

} // namespace Tessera::Geometry
