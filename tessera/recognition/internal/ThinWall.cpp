#include "tessera/recognition/internal/ThinWall.h"

#include <algorithm>
#include <cmath>

namespace Tessera::Geometry {

namespace {

constexpr double kReversal = 0.122;  // sine of 7 degrees between forth and back
constexpr double kWidthShare = 0.1;  // of the length: widest wall
constexpr double kLengthSlack = 0.2; // difference of the two lengths, of the longer one

const Point& At(const PricedPath& ink, int i) {
    return ink.path.pts[static_cast<std::size_t>(i)];
}

} // namespace

std::vector<ExactPiece> FindThinWall(const PricedPath& ink, const Chain& chain, bool asSides) {
    if (chain.pieces.size() != 2 || chain.isClosed || chain.pieces[0].isArc || chain.pieces[1].isArc)
        return {};
    const ChainPiece& forth = chain.pieces[0];
    const ChainPiece& back = chain.pieces[1];
    const Point out = At(ink, forth.last) - At(ink, forth.first);
    const Point home = At(ink, back.last) - At(ink, back.first);
    const double longer = std::max(out.Length(), home.Length());
    const double shorter = std::min(out.Length(), home.Length());
    if (out.Dot(home) >= 0.0 || std::fabs(out.Cross(home)) > kReversal * longer * shorter ||
        shorter < (1.0 - kLengthSlack) * longer)
        return {};
    const Point u = (out - home) / (out - home).Length();
    const Point normal(-u.y, u.x);
    const double width = (back.line.centre - forth.line.centre).Dot(normal);
    if (std::fabs(width) > kWidthShare * longer)
        return {};
    const Point middle = 0.5 * (forth.line.centre + back.line.centre);
    const double begin =
        0.5 * ((At(ink, forth.first) - middle).Dot(u) + (At(ink, back.last) - middle).Dot(u));
    const double end = (At(ink, forth.last) - middle).Dot(u);
    const auto side = [&](double from, double to, double off, int first, int last) {
        return ExactPiece{PieceKind::Line,
                          middle + from * u + off * normal,
                          middle + to * u + off * normal,
                          {},
                          first,
                          last};
    };
    if (!asSides)
        return {side(begin, end, 0.0, forth.first, back.last)};
    return {side(begin, end, -0.5 * width, forth.first, forth.last),
            side(end, begin, 0.5 * width, back.first, back.last)};
}

} // namespace Tessera::Geometry
