#include "tessera/recognition/internal/CornerEvidence.h"

#include <algorithm>
#include <cmath>

namespace Tessera::Geometry {

namespace {

constexpr int kReach = 3; // points to either side: what a hand rounds off
constexpr int kShift = 2; // points by which the corner may lie beside the joint

Point Chord(const InkPath& path, int from, int to) {
    const int last = path.Size() - 1;
    return path.pts[static_cast<std::size_t>(std::clamp(to, 0, last))] -
           path.pts[static_cast<std::size_t>(std::clamp(from, 0, last))];
}

double Turn(const Point& before, const Point& after) {
    return std::atan2(before.Cross(after), before.Dot(after));
}

} // namespace

Point DirectionAt(const PricedPath& ink, const ChainPiece& piece, bool atLast) {
    const InkPath& path = ink.path;
    const int at = atLast ? piece.last : piece.first;
    const int whole = path.Size() - 1;
    Point direction = piece.line.direction;
    Point chord;
    if (piece.isArc) {
        const Point radius = path.pts[static_cast<std::size_t>(at)] - piece.circle.centre;
        direction = Point(-radius.y, radius.x) / std::max(radius.Length(), 1e-12);
        // A piece that ends in the first point of the path came from its last ones, and the other way round.
        const int from = !atLast && at == whole ? 0 : at;
        const int to = atLast && at == 0 ? whole : at;
        chord = atLast ? Chord(path, to - kReach, to) : Chord(path, from, from + kReach);
    } else {
        // The end of a piece that crosses the start of the path is taken from its longer side.
        chord = piece.first < piece.last           ? Chord(path, piece.first, piece.last)
                : whole - piece.first > piece.last ? Chord(path, piece.first, whole)
                                                   : Chord(path, 0, piece.last);
    }
    return direction.Dot(chord) < 0.0 ? -1.0 * direction : direction;
}

double SignedTurn(const InkPath& path, int at) {
    double sharpest = 0.0;
    for (int i = at - kShift; i <= at + kShift; ++i) {
        const double turn = Turn(Chord(path, i - kReach, i), Chord(path, i, i + kReach));
        if (std::fabs(turn) > std::fabs(sharpest))
            sharpest = turn;
    }
    return sharpest;
}

} // namespace Tessera::Geometry
