#include "tessera/recognition/internal/CornerEvidence.h"

#include <algorithm>
#include <cmath>

namespace Tessera::Geometry {

namespace {

constexpr int kReach = 3;       // points to either side: what a hand rounds off
constexpr int kShift = 2;       // points by which the corner may lie beside the joint
constexpr double kFree = 0.2;   // radians of turning that need not be seen
constexpr double kSpread = 0.2; // one sigma of the turning that a hand rounds off, radians

Point Chord(const InkPath& path, int from, int to) {
    const int last = path.Size() - 1;
    return path.pts[static_cast<std::size_t>(std::clamp(to, 0, last))] -
           path.pts[static_cast<std::size_t>(std::clamp(from, 0, last))];
}

double Turn(const Point& before, const Point& after) {
    return std::atan2(before.Cross(after), before.Dot(after));
}

double TurnWithin(const InkPath& path, int at, int before, int after) {
    double sharpest = 0.0;
    for (int i = at - kShift; i <= at + kShift; ++i) {
        const double turn = Turn(Chord(path, i - before, i), Chord(path, i, i + after));
        if (std::fabs(turn) > std::fabs(sharpest))
            sharpest = turn;
    }
    return sharpest;
}

} // namespace

Point DirectionAt(const PricedPath& ink, const ChainPiece& piece, bool atLast) {
    const InkPath& path = ink.path;
    const int at = atLast ? piece.last : piece.first;
    Point direction = piece.line.direction;
    Point chord;
    if (piece.isArc) {
        const Point radius = path.pts[static_cast<std::size_t>(at)] - piece.circle.centre;
        direction = Point(-radius.y, radius.x) / std::max(radius.Length(), 1e-12);
        chord = atLast ? Chord(path, at - kReach, at) : Chord(path, at, at + kReach);
    } else {
        // The end of a piece that crosses the start of the path is taken from its longer side.
        const int whole = path.Size() - 1;
        chord = piece.first < piece.last           ? Chord(path, piece.first, piece.last)
                : whole - piece.first > piece.last ? Chord(path, piece.first, whole)
                                                   : Chord(path, 0, piece.last);
    }
    return direction.Dot(chord) < 0.0 ? -1.0 * direction : direction;
}

double SharpestTurn(const InkPath& path, int at) {
    return std::fabs(SignedTurn(path, at));
}

double SignedTurn(const InkPath& path, int at) {
    return TurnWithin(path, at, kReach, kReach);
}

double PriceOfSoftCorners(const PricedPath& ink, const Chain& chain) {
    double price = 0.0;
    const std::size_t count = chain.pieces.size();
    for (std::size_t i = 0; i + (chain.isClosed ? 0 : 1) < count; ++i) {
        const ChainPiece& a = chain.pieces[i];
        const ChainPiece& b = chain.pieces[(i + 1) % count];
        if (a.last != b.first)
            continue; // a seam: the ink has a gap there
        const double turn = std::fabs(Turn(DirectionAt(ink, a, true), DirectionAt(ink, b, false)));
        const auto reach = [&](const ChainPiece& piece) {
            const int points = piece.last > piece.first ? piece.last - piece.first : kReach;
            return std::min(kReach, points);
        };
        const double unseen =
            (turn - std::fabs(TurnWithin(ink.path, a.last, reach(a), reach(b))) - kFree) / kSpread;
        if (unseen > 0.0)
            price += 0.5 * unseen * unseen;
    }
    return price;
}

} // namespace Tessera::Geometry
