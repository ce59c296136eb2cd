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

// Grows with the size of the turn from 0 to 2; no number for chords without a direction.
double Sharpness(double cross, double dot) {
    const double share = std::fabs(cross) / (std::fabs(cross) + std::fabs(dot));
    return dot < 0.0 ? 2.0 - share : share;
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
    double across = 0.0;
    double along = 1.0;
    for (int i = at - kShift; i <= at + kShift; ++i) {
        const Point before = Chord(path, i - kReach, i);
        const Point after = Chord(path, i, i + kReach);
        const double cross = before.Cross(after);
        const double dot = before.Dot(after);
        const double sharpness = Sharpness(cross, dot);
        if (sharpness > sharpest) {
            sharpest = sharpness;
            across = cross;
            along = dot;
        }
    }
    return std::atan2(across, along);
}

} // namespace Tessera::Geometry
