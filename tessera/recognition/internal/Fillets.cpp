#include "tessera/recognition/internal/Fillets.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "tessera/recognition/internal/PiecePrices.h"

namespace Tessera::Geometry {

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();
// Of the hands that drew the shapes this is measured on, few keep to their sides so closely, and those turn
// sharply. All in sizes.
constexpr double kCarefulSpread = 0.006; // root mean square distance from the middles of the sides
constexpr double kMostOff = 0.0065;      // the same from a fillet and what it leaves of its sides
constexpr double kLeastCut = 0.06;       // distance of the ink from a corner that was drawn round
constexpr double kSideShare = 0.95;      // of a side: as far as a fillet may reach
constexpr double kLeastRadius = 0.15;    // sizes: any hand rounds its corners by less
constexpr double kMostRadius = 2.0;
// Among many corners one or two are rounded by chance as much as no single one, and who rounds one of several
// means it to be seen: what was meant is larger.
constexpr std::size_t kManyCorners = 8;
constexpr std::size_t kSeveral = 4;
constexpr double kOfMany = 1.35;
// Price of a corner by its pace where the pen stops: in a fillet it hardly does, and only in one that cannot
// be mistaken for a rounding.
constexpr double kStops = -1.0;
constexpr double kLeastWithStop = 1.3;
constexpr int kRadii = 24;    // tried, each a fixed share above the last
constexpr int kSections = 12; // of the interval between the neighbours of the best
constexpr double kGolden = 0.6180339887498949;

double Square(double v) {
    return v * v;
}

Point Left(const Point& d) {
    return {-d.y, d.x};
}

// The two sides of a corner and the ink that passes it.
struct Corner {
    ChainPiece before; // with the carriers of the exact pieces
    ChainPiece after;
    const ExactPiece* in = nullptr;
    const ExactPiece* out = nullptr;
    std::vector<Point> ink; // from the middle of one side to the middle of the other
    std::vector<int> index; // of each, in the path
    double turn = 0.0;      // sense: +1 counter-clockwise
    double cut = 0.0;       // distance of the corner from the ink
};

// Direction of the pen along a side at a point of it.
Point DirectionOn(const ChainPiece& side, const ExactPiece& exact, const Point& at) {
    if (!side.isArc)
        return (exact.to - exact.from) / std::max((exact.to - exact.from).Length(), 1e-12);
    const Point radius = (at - side.circle.centre) / std::max(side.circle.radius, 1e-12);
    const bool isLeft = (exact.through - exact.from).Cross(exact.to - exact.through) > 0.0;
    return isLeft ? Left(radius) : -1.0 * Left(radius);
}

// The side's carrier moved to one side of the pen's way; false when an arc shrinks to nothing.
bool Offset(const ChainPiece& side, const ExactPiece& exact, double left, ChainPiece& moved) {
    moved = side;
    if (!side.isArc) {
        moved.line.centre += left * Left(DirectionOn(side, exact, exact.to));
        return true;
    }
    const bool isLeft = (exact.through - exact.from).Cross(exact.to - exact.through) > 0.0;
    moved.circle.radius += isLeft ? -left : left;
    return moved.circle.radius > 0.0;
}

// The piece as it was made exact: its ends may lie off the carrier that the ink gave it.
ChainPiece CarrierOf(const ChainPiece& side, const ExactPiece& exact) {
    ChainPiece carrier = side;
    if (!side.isArc) {
        carrier.line.centre = exact.from;
        carrier.line.direction = DirectionOn(side, exact, exact.from);
    } else if (FindCentre(exact, carrier.circle.centre)) {
        carrier.circle.radius = exact.from.Distance(carrier.circle.centre);
    }
    return carrier;
}

Corner LookAt(const PricedPath& ink, const ChainPiece& before, const ChainPiece& after, const ExactPiece& in,
              const ExactPiece& out) {
    Corner corner{CarrierOf(before, in), CarrierOf(after, out), &in, &out, {}, {}, 0.0, kInfinite};
    const Point a = DirectionOn(before, in, in.to);
    const Point b = DirectionOn(after, out, out.from);
    corner.turn = a.Cross(b) < 0.0 ? -1.0 : 1.0;
    const int back = PointsIn(ink, before) / 2;
    const int ahead = PointsIn(ink, after) / 2;
    for (int i = before.last - back; i <= before.last; ++i)
        corner.index.push_back(ink.path.Within(i));
    for (int i = after.first + (before.last == after.first ? 1 : 0); i <= after.first + ahead; ++i)
        corner.index.push_back(ink.path.Within(i));
    for (const int i : corner.index) {
        const Point& p = ink.path.At(i);
        corner.ink.push_back(p);
        corner.cut = std::min(corner.cut, p.Distance(in.to));
    }
    return corner;
}

struct Fillet {
    Point centre;
    double radius = 0.0;
    Point from, to, through;
    std::size_t first = 0, last = 0; // of the corner's ink
    double sumSq = kInfinite;
};

std::size_t Nearest(const Corner& corner, const Point& p) {
    std::size_t nearest = 0;
    for (std::size_t i = 1; i < corner.ink.size(); ++i)
        if (corner.ink[i].Distance2(p) < corner.ink[nearest].Distance2(p))
            nearest = i;
    return nearest;
}

// The fillet of a radius, with the squared distances of the corner's ink; no sum when it does not fit in.
Fillet MakeFillet(const Corner& corner, double radius) {
    Fillet fillet;
    fillet.radius = radius;
    ChainPiece a;
    ChainPiece b;
    if (!Offset(corner.before, *corner.in, corner.turn * radius, a) ||
        !Offset(corner.after, *corner.out, corner.turn * radius, b) ||
        !IntersectPieces(a, b, corner.in->to, fillet.centre))
        return fillet;
    fillet.from = OnPiece(corner.before, fillet.centre);
    fillet.to = OnPiece(corner.after, fillet.centre);
    const Point& tip = corner.in->to;
    if (fillet.from.Distance(tip) > kSideShare * corner.in->from.Distance(tip) ||
        fillet.to.Distance(tip) > kSideShare * corner.out->to.Distance(tip))
        return fillet;
    const Point middle = 0.5 * (fillet.from + fillet.to) - fillet.centre;
    fillet.through = fillet.centre + middle * (radius / std::max(middle.Length(), 1e-12));
    fillet.first = Nearest(corner, fillet.from);
    fillet.last = Nearest(corner, fillet.to);
    if (fillet.last < fillet.first + 2)
        return fillet;
    fillet.sumSq = 0.0;
    for (std::size_t i = 0; i < corner.ink.size(); ++i) {
        const Point& p = corner.ink[i];
        fillet.sumSq += Square(i < fillet.first  ? DistanceFrom(corner.before, p)
                               : i > fillet.last ? DistanceFrom(corner.after, p)
                                                 : std::sqrt(p.Distance2(fillet.centre)) - radius);
    }
    return fillet;
}

// The radius with the least squares, by golden section about the best of a coarse row.
Fillet FindFillet(const Corner& corner) {
    const double factor = std::pow(kMostRadius / kLeastRadius, 1.0 / (kRadii - 1));
    Fillet best;
    for (int i = 0; i < kRadii; ++i) {
        const Fillet fillet = MakeFillet(corner, kLeastRadius * std::pow(factor, i));
        if (fillet.sumSq < best.sumSq)
            best = fillet;
    }
    if (best.sumSq == kInfinite)
        return best;
    double low = best.radius / factor;
    double high = best.radius * factor;
    for (int i = 0; i < kSections; ++i) {
        const double step = kGolden * (high - low);
        const Fillet small = MakeFillet(corner, high - step);
        const Fillet large = MakeFillet(corner, low + step);
        (small.sumSq < large.sumSq ? high : low) = small.sumSq < large.sumSq ? low + step : high - step;
        for (const Fillet& fillet : {small, large})
            if (fillet.sumSq < best.sumSq)
                best = fillet;
    }
    return best;
}

// The corner before a piece.
Corner CornerBefore(const PricedPath& ink, const Chain& chain, const ExactChain& exact, std::size_t i) {
    const std::size_t before = (i + exact.pieces.size() - 1) % exact.pieces.size();
    return LookAt(ink, chain.pieces[before], chain.pieces[i], exact.pieces[before], exact.pieces[i]);
}

// How many times as large as it has to be the rounding of a corner is; 0 where none was drawn.
double RoundnessOf(const PricedPath& ink, const Corner& corner) {
    if (corner.cut < kLeastCut)
        return 0.0;
    const Fillet fillet = FindFillet(corner);
    if (fillet.sumSq > kMostOff * kMostOff * static_cast<double>(corner.ink.size()))
        return 0.0;
    const double roundness = std::min(corner.cut / kLeastCut, fillet.radius / kLeastRadius);
    const bool stops =
        corner.before.last == corner.after.first && JointSite(ink, corner.after.first).pace < kStops;
    return stops && roundness < kLeastWithStop ? 0.0 : roundness;
}

std::optional<ExactPiece> FilletAt(const Corner& corner) {
    const Fillet fillet = FindFillet(corner);
    if (fillet.sumSq == kInfinite)
        return std::nullopt;
    return ExactPiece{
        PieceKind::Arc,           fillet.from, fillet.to, fillet.through, corner.index[fillet.first],
        corner.index[fillet.last]};
}

// Root mean square distance of the ink from the middle thirds of the sides, where no corner is near.
double SpreadOf(const PricedPath& ink, const Chain& chain) {
    double sumSq = 0.0;
    int counted = 0;
    for (const ChainPiece& side : chain.pieces)
        for (int i = PointsIn(ink, side) / 3; i <= 2 * PointsIn(ink, side) / 3; ++i, ++counted)
            sumSq += Square(DistanceFrom(side, ink.path.At(side.first + i)));
    return std::sqrt(sumSq / counted);
}

} // namespace

std::vector<bool> FindRoundCorners(const PricedPath& ink, const Chain& chain, const ExactChain& exact) {
    const std::size_t count = exact.pieces.size();
    if (chain.pieces.size() != count || count < 2 || SpreadOf(ink, chain) > kCarefulSpread)
        return {};
    std::vector<double> roundness(count, 0.0);
    for (std::size_t i = exact.isClosed ? 0 : 1; i < count; ++i)
        roundness[i] = RoundnessOf(ink, CornerBefore(ink, chain, exact, i));
    const auto rounds = std::count_if(roundness.begin(), roundness.end(), [](double r) { return r > 0.0; });
    if (rounds == 0)
        return {};
    const double least = count > kManyCorners || (count >= kSeveral && rounds == 1) ? kOfMany : 1.0;
    std::vector<bool> corners(count);
    for (std::size_t i = 0; i < count; ++i)
        corners[i] = roundness[i] >= least;
    return corners;
}

void RoundCorners(const PricedPath& ink, const Chain& chain, const std::vector<bool>& corners,
                  ExactChain& exact) {
    const std::size_t count = exact.pieces.size();
    if (corners.size() != count || chain.pieces.size() != count)
        return;
    std::vector<std::optional<ExactPiece>> fillets(count); // before each piece
    for (std::size_t i = 0; i < count; ++i)
        if (corners[i])
            fillets[i] = FilletAt(CornerBefore(ink, chain, exact, i));
    ExactChain rounded;
    rounded.isClosed = exact.isClosed;
    for (std::size_t i = 0; i < count; ++i) {
        ExactPiece piece = exact.pieces[i];
        const std::optional<ExactPiece>& start = fillets[i];
        const std::optional<ExactPiece>& end = fillets[(i + 1) % count];
        if (start) {
            rounded.pieces.push_back(*start);
            piece.from = start->to;
            piece.first = start->last;
        }
        if (end) {
            piece.to = end->from;
            piece.last = end->first;
        }
        rounded.pieces.push_back(piece);
    }
    exact = rounded;
}

} // namespace Tessera::Geometry
