#include "tessera/recognition/internal/ChainGeometry.h"

#include <algorithm>
#include <cmath>

#include "tessera/recognition/internal/ChainClosing.h"

namespace Tessera::Geometry {

namespace {

constexpr double kCornerShare =
    0.35;                           // of the shorter neighbour: how far an intersection may lie from the ink
constexpr double kSeamShare = 0.25; // of the path's length: the same where the stroke closes

const Point& At(const PricedPath& ink, int i) {
    return ink.path.pts[static_cast<std::size_t>(i)];
}

int PointsOf(const PricedPath& ink, const ChainPiece& piece) {
    return piece.last > piece.first ? piece.last - piece.first : piece.last + ink.path.Size() - piece.first;
}

Point OnPiece(const ChainPiece& piece, const Point& p) {
    if (!piece.isArc)
        return piece.line.centre + (p - piece.line.centre).Dot(piece.line.direction) * piece.line.direction;
    const Point radius = p - piece.circle.centre;
    return piece.circle.centre + radius * (piece.circle.radius / std::max(radius.Length(), 1e-12));
}

Point JointOf(const PricedPath& ink, const ChainPiece& before, const ChainPiece& after) {
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

} // namespace

bool ExactChain::IsPolygon() const {
    return isClosed &&
           std::none_of(pieces.begin(), pieces.end(), [](const ExactPiece& p) { return p.isArc; });
}

ExactChain MakeExact(const PricedPath& ink, const Chain& chain) {
    ExactChain exact;
    exact.isClosed = chain.isClosed;
    const std::size_t count = chain.pieces.size();
    std::vector<Point> joints(count + 1); // before each piece, and after the last
    for (std::size_t i = 1; i < count; ++i)
        joints[i] = JointOf(ink, chain.pieces[i - 1], chain.pieces[i]);
    if (chain.isClosed) {
        joints[0] = JointOf(ink, chain.pieces.back(), chain.pieces.front());
        joints[count] = joints[0];
    } else {
        joints[0] = OnPiece(chain.pieces.front(), At(ink, chain.pieces.front().first));
        joints[count] = OnPiece(chain.pieces.back(), At(ink, chain.pieces.back().last));
    }
    for (std::size_t i = 0; i < count; ++i) {
        const ChainPiece& piece = chain.pieces[i];
        ExactPiece made{piece.isArc, joints[i], joints[i + 1], {}, piece.first, piece.last};
        if (piece.isArc)
            made.through = MiddleOf(ink, piece, made.from, made.to);
        exact.pieces.push_back(made);
    }
    return exact;
}

} // namespace Tessera::Geometry
