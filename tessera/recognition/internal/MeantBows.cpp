#include "tessera/recognition/internal/MeantBows.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "tessera/recognition/internal/ChainSearch.h"
#include "tessera/recognition/internal/PiecePrices.h"

namespace Tessera::Geometry {

namespace {

// Sagitta over length, and over the mean of the pieces' root mean square distances (bows taken out) over
// their mean length, for a calm and a hasty hand. Of 361 drawn triangles none has a side bowed so far, of
// simulated careful hands' arcs of 60 degrees 19 in 20 are.
constexpr double kLeastBow = 0.08;
constexpr double kLeastStrays = 30.0;
constexpr double kLeastStraysInHaste = 60.0;
// The same of two sides, which enclose nothing unless they are bowed.
constexpr double kLeastBowOfTwo = 0.06;
constexpr double kLeastStraysOfTwo = 12.0;
constexpr std::size_t kMostSides = 3;
// Of a side's length: a careful hand's root mean square distance from its sides, bows taken out, and the
// sagitta that such a hand means. Of 985 drawn triangles and quadrilaterals none has both.
constexpr double kCarefulStray = 0.004;
constexpr double kLeastCarefulBow = 0.1;
// Root mean square of a bow's distances over its sagitta, at least: usually it is 0.3.
constexpr double kStrayOfBow = 0.2;

// Whether the ink of a line strays from it as far as that of a bow.
bool MayBow(const PricedPath& ink, const ChainPiece& piece, double bow) {
    const int points = PointsIn(ink, piece);
    const double least = kStrayOfBow * bow * ink.path.step * points;
    return !piece.isArc && piece.kept == nullptr && piece.line.sumSq > least * least * points;
}

// Root mean square distance, a bow taken out.
double StrayOf(const PricedPath& ink, const ChainPiece& piece, const RunFits& fits) {
    const double left = fits.hasArc ? std::min(fits.line.sumSq, fits.circle.sumSq) : fits.line.sumSq;
    return std::sqrt(left / PointsIn(ink, piece));
}

// Sagitta over length, of lines that may have been meant as arcs; 0 of all other pieces.
std::vector<double> BowsOf(const PricedPath& ink, const Chain& chain) {
    std::vector<double> bows(chain.pieces.size(), 0.0);
    double stray = 0.0;
    double length = 0.0;
    for (std::size_t i = 0; i < chain.pieces.size(); ++i) {
        const ChainPiece& piece = chain.pieces[i];
        const RunFits fits = FitRun(ink, piece.first, piece.last, 0.0);
        stray += StrayOf(ink, piece, fits);
        length += fits.length;
        if (fits.hasArc && MayBow(ink, piece, kLeastBowOfTwo))
            bows[i] = fits.BowOfLine();
    }
    const bool areTwo = bows.size() == 2;
    const double strays =
        areTwo ? kLeastStraysOfTwo : kLeastStrays + ink.haste * (kLeastStraysInHaste - kLeastStrays);
    const double least = std::max(areTwo ? kLeastBowOfTwo : kLeastBow, strays * stray / length);
    for (double& bow : bows)
        bow = bow < least ? 0.0 : bow;
    return bows;
}

// Polygons of more sides than three are drawn far more often than outlines like them with an arc.
bool MayBow(const PricedPath& ink, const Chain& chain) {
    return (chain.pieces.size() <= kMostSides || !AreLines(chain)) &&
           std::any_of(chain.pieces.begin(), chain.pieces.end(),
                       [&](const ChainPiece& piece) { return MayBow(ink, piece, kLeastBowOfTwo); });
}

} // namespace

int CountMeantBows(const PricedPath& ink, const Chain& chain) {
    if (!MayBow(ink, chain))
        return 0;
    const std::vector<double> bows = BowsOf(ink, chain);
    return static_cast<int>(std::count_if(bows.begin(), bows.end(), [](double bow) { return bow > 0.0; }));
}

bool HasMeantBow(const PricedPath& ink, const Chain& lines) {
    const auto mayBow = [&](const ChainPiece& side) { return MayBow(ink, side, kLeastCarefulBow); };
    if (std::none_of(lines.pieces.begin(), lines.pieces.end(), mayBow))
        return false;
    double bow = 0.0;
    for (const ChainPiece& side : lines.pieces) {
        const RunFits fits = FitRun(ink, side.first, side.last, 0.0);
        if (StrayOf(ink, side, fits) > kCarefulStray * fits.length)
            return false;
        if (fits.hasArc)
            bow = std::max(bow, fits.BowOfLine());
    }
    return bow > kLeastCarefulBow;
}

std::optional<Chain> WithMeantArcs(const PricedPath& ink, const Chain& chain) {
    if ((chain.isClosed && !IsRing(chain)) || !MayBow(ink, chain))
        return std::nullopt;
    const std::vector<double> bows = BowsOf(ink, chain);
    Chain bent = chain;
    bool isBent = false;
    for (std::size_t i = 0; i < bows.size(); ++i) {
        if (!(bows[i] > 0.0))
            continue;
        ChainPiece& piece = bent.pieces[i];
        const RunPrices both = PriceRun(ink, piece.first, piece.last);
        if (!both.hasArc)
            continue;
        ChainPiece arc = both.arc.piece;
        arc.price = both.arc.accounts[0].price;
        arc.sumSq = both.arc.accounts[0].sumSq;
        arc.joint = piece.joint;
        arc.jointPrice = piece.jointPrice;
        bent.price += arc.price - piece.price;
        bent.sumSq += arc.sumSq - piece.sumSq;
        piece = arc;
        isBent = true;
    }
    if (!isBent)
        return std::nullopt;
    PriceJoints(ink, bent);
    return bent;
}

} // namespace Tessera::Geometry
