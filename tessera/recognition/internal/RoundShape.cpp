// The ellipse of least distances is fitted first; its residuals are then explained by harmonics up to the
// second (a shift, a resize, another oblongness) and a drift that grows evenly along the stroke. The first
// take back what the drift did to the fit; a little of the third harmonic is a hand's own, at a price; what
// no term explains is left.
#include "tessera/recognition/internal/RoundShape.h"

#include <algorithm>
#include <cmath>

#include "tessera/kernel/NR.h"

namespace Tessera::Geometry {

namespace {

// A round may stay open by so much of a turn per closing tolerance's share of the length: a fifth, usually.
constexpr double kOpenTurn = 70.0 / 360.0 / 0.125;
constexpr double kMostWinding = 2.2;
constexpr double kMostGap = 0.4; // of the length: farther apart are the ends of a wave along a flat ellipse
constexpr int kNumbers = 5;
// Nothing guides the pen on its way round: it strays farther than along a side.
constexpr double kSpreadShare = 0.25;
// One sigma of the third harmonic of a drawn round, of its mean radius.
constexpr double kThirdHarmonic = 0.04;
constexpr double kMostThird = 2.5;  // sigmas
constexpr double kRidge = 1e-6;     // of the normal equations: terms that the path does not show vanish
constexpr double kDriftPrice = 0.5; // keeps the drift of a short overlap bounded
// Growth from the start to the end of the stroke, of the mean radius, beyond which it is a spiral.
constexpr double kMostDrift = 0.45;
// Difference of the radii, of the larger one, up to which a round is a circle, and its growth with the length
// (in sizes) that the pen covers per sample. Measured on drawn circles and ovals.
constexpr double kUsualOblong = 0.27;
constexpr double kOblongPerPace = 1.75;
constexpr double kUsualPace = 0.07;
constexpr double kOblongMost = 0.42;
constexpr double kOblongLeast = 0.22;

// Least squares over the first terms.
EllipseTerms Explain(const EllipseEvidence& all, std::size_t count) {
    double normal[kEllipseTerms * kEllipseTerms] = {}; // count x count, lower triangle
    EllipseTerms x{};
    for (std::size_t i = 0; i < all.distance.size(); ++i)
        for (std::size_t r = 0; r < count; ++r) {
            for (std::size_t k = 0; k <= r; ++k)
                normal[r * count + k] += all.terms[i][r] * all.terms[i][k];
            x[r] += all.terms[i][r] * all.distance[i];
        }
    for (std::size_t r = 0; r < count; ++r)
        normal[r * count + r] += kRidge + (r == kDriftTerm ? kDriftPrice : 0.0);
    const int n = static_cast<int>(count);
    if (NR_cholesky_decomp(n, normal) == 0)
        return {};
    NR_cholesky_solve(n, normal, x.data());
    return x;
}

double UnexplainedSumSq(const EllipseEvidence& all, const EllipseTerms& x) {
    double sumSq = 0.0;
    for (std::size_t i = 0; i < all.distance.size(); ++i) {
        double e = all.distance[i];
        for (std::size_t k = 0; k < kEllipseTerms; ++k)
            e -= x[k] * all.terms[i][k];
        sumSq += SquareWithoutTail(e);
    }
    return sumSq;
}

// The ellipse with the explained shift, size and oblongness added, exact for small ones.
RoundShape Corrected(const EllipseEvidence& fit, const EllipseTerms& x) {
    RoundShape shape;
    const double c = std::cos(fit.angle);
    const double s = std::sin(fit.angle);
    shape.centre = fit.centre + Point(c * x[kCosTerm] - s * x[kSinTerm], s * x[kCosTerm] + c * x[kSinTerm]);
    const double mean = 0.5 * (fit.a + fit.b) + x[kSizeTerm];
    const double along = 0.5 * (fit.a - fit.b) + x[kCos2Term];
    const double half = std::sqrt(along * along + x[kSin2Term] * x[kSin2Term]);
    shape.radii[0] = mean + half;
    shape.radii[1] = mean - half;
    shape.rotation = fit.angle + 0.5 * std::atan2(x[kSin2Term], along);
    return shape;
}

} // namespace

std::optional<RoundShape> FindRoundShape(const PricedPath& ink, const EllipseEvidence& ellipse, int samples) {
    const double winding = std::fabs(ellipse.winding);
    if (!(winding >= 1.0 - kOpenTurn * ink.closing / ink.path.length && winding <= kMostWinding &&
          ink.path.Gap() <= kMostGap * ink.path.length))
        return std::nullopt;
    const EllipseTerms x = Explain(ellipse, kCos3Term);
    RoundShape shape = Corrected(ellipse, x);
    const double drift = std::fabs(x[kDriftTerm] * ellipse.winding);
    if (!(shape.radii[1] > 0.0) || drift > kMostDrift * 0.5 * (shape.radii[0] + shape.radii[1]))
        return std::nullopt;
    const double pace = ink.path.length / samples;
    const double oblong =
        std::clamp(kUsualOblong + kOblongPerPace * (pace - kUsualPace), kOblongLeast, kOblongMost);
    shape.isCircle = shape.radii[0] - shape.radii[1] < oblong * shape.radii[0];
    const double sumSq = UnexplainedSumSq(ellipse, x);
    shape.meanSq = sumSq / ink.path.Size();
    const double price = PriceOfCorners(ink, ellipse) + kNumbers * kNumberPrice;
    shape.description = {price, kSpreadShare * sumSq};
    const EllipseTerms y = Explain(ellipse, kEllipseTerms);
    const double third =
        std::hypot(y[kCos3Term], y[kSin3Term]) / (kThirdHarmonic * 0.5 * (shape.radii[0] + shape.radii[1]));
    const Description tripod{price + 0.5 * third * third, kSpreadShare * UnexplainedSumSq(ellipse, y)};
    if (third < kMostThird && LengthOf(ink.path, tripod) < LengthOf(ink.path, shape.description))
        shape.description = tripod;
    return shape;
}

void PriceRound(const PricedPath& ink, RoundShape& shape) {
    const EllipseEvidence beside =
        EvidenceBeside(ink.path, shape.centre, shape.radii[0], shape.radii[1], shape.rotation);
    const double sumSq = UnexplainedSumSq(beside, {});
    shape.meanSq = sumSq / ink.path.Size();
    shape.description = {PriceOfCorners(ink, beside) + kNumbers * kNumberPrice, kSpreadShare * sumSq};
}

} // namespace Tessera::Geometry
