// The ellipse of least distances is fitted first; its residuals are then explained by harmonics up to the
// second (a shift, a resize, another oblongness) and a drift that grows evenly along the stroke. The first
// take back what the drift did to the fit; what no term explains is priced.
#include "tessera/recognition/internal/RoundShape.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include "tessera/kernel/LSFIT.h"

namespace Tessera::Geometry {

namespace {

constexpr double kTurn = 2.0 * std::numbers::pi;
constexpr double kLeastWinding = 290.0 / 360.0; // turns about the centre: a round may stay open by a fifth
constexpr double kMostWinding = 2.2;
constexpr int kParameters = 5;
// Nothing guides the pen on its way round: it strays farther than along a side.
constexpr double kSpreadShare = 0.4;
constexpr double kHookShare = 0.12; // of the path at either end, where corners tell nothing
constexpr double kTail = 0.15;      // sizes from which a distance costs no more
constexpr double kDriftPrice = 0.5; // keeps the drift of a short overlap bounded
// Difference of the radii, of the larger one, up to which a round is a circle, and its growth with the length
// (in sizes) that the pen covers per sample. Measured on drawn circles and ovals.
constexpr double kOblong = 0.27;
constexpr double kOblongPerPace = 1.75;
constexpr double kUsualPace = 0.07;
constexpr double kOblongMost = 0.42;
constexpr double kOblongLeast = 0.22;

constexpr std::size_t kTerms = 6;
using Terms = std::array<double, kTerms>;

struct Fitted {
    Point centre;
    double a = 0.0, b = 0.0, angle = 0.0;
};

bool FitEllipse(const InkPath& path, Fitted& fit) {
    std::vector<Vex::Math::Point2> pts;
    pts.reserve(path.pts.size());
    // Every other point: the path is smooth at this spacing.
    for (std::size_t i = 0; i < path.pts.size(); i += 2)
        pts.push_back({path.pts[i].x, path.pts[i].y});
    Vex::Math::Point2 centre{};
    int status = 1;
    double err[3];
    LSFIT_ellipse_to_points_2d(pts.data(), static_cast<int>(pts.size()), &centre, &fit.a, &fit.b, &fit.angle,
                               &status, err);
    fit.centre = {centre.x, centre.y};
    return status == 0;
}

// Each point's signed distance from the ellipse (to first order) and what might explain it.
struct Residuals {
    std::vector<double> distance;
    std::vector<Terms> terms;
    double winding = 0.0; // turns about the centre, signed
};

Residuals MeasureResiduals(const InkPath& path, const Fitted& fit) {
    Residuals all;
    all.distance.reserve(path.pts.size());
    all.terms.reserve(path.pts.size());
    const double c = std::cos(fit.angle);
    const double s = std::sin(fit.angle);
    double cBefore = 0.0;
    double sBefore = 0.0;
    double run = 0.0;
    for (const Point& p : path.pts) {
        const Point d = p - fit.centre;
        const double u = (c * d.x + s * d.y) / fit.a;
        const double v = (c * d.y - s * d.x) / fit.b;
        const double rho = std::max(1e-6, std::sqrt(u * u + v * v));
        const double ct = u / rho;
        const double st = v / rho;
        if (!all.terms.empty())
            run += std::atan2(cBefore * st - sBefore * ct, cBefore * ct + sBefore * st);
        cBefore = ct;
        sBefore = st;
        const double slope = 2.0 * std::sqrt(u * u / (fit.a * fit.a) + v * v / (fit.b * fit.b));
        all.distance.push_back((rho * rho - 1.0) / std::max(slope, 1e-9));
        all.terms.push_back({1.0, ct, st, ct * ct - st * st, 2.0 * ct * st, run / kTurn});
    }
    all.winding = run / kTurn;
    for (Terms& t : all.terms)
        t[5] -= 0.5 * all.winding; // centred, or the drift would shift the whole
    return all;
}

// Least squares over the terms; a small ridge keeps the drift in bounds.
Terms Explain(const Residuals& all) {
    double m[kTerms][kTerms + 1] = {};
    for (std::size_t i = 0; i < all.distance.size(); ++i)
        for (std::size_t r = 0; r < kTerms; ++r) {
            for (std::size_t k = 0; k <= r; ++k)
                m[r][k] += all.terms[i][r] * all.terms[i][k];
            m[r][kTerms] += all.terms[i][r] * all.distance[i];
        }
    for (std::size_t r = 0; r < kTerms; ++r)
        for (std::size_t k = r + 1; k < kTerms; ++k)
            m[r][k] = m[k][r];
    for (std::size_t r = 0; r < kTerms; ++r)
        m[r][r] += 1e-6;
    m[5][5] += kDriftPrice;
    for (std::size_t r = 0; r < kTerms; ++r) // symmetric and positive: no pivots needed
        for (std::size_t q = r + 1; q < kTerms; ++q) {
            const double f = m[q][r] / m[r][r];
            for (std::size_t k = r; k <= kTerms; ++k)
                m[q][k] -= f * m[r][k];
        }
    Terms x{};
    for (std::size_t r = kTerms; r-- > 0;) {
        double sum = m[r][kTerms];
        for (std::size_t k = r + 1; k < kTerms; ++k)
            sum -= m[r][k] * x[k];
        x[r] = sum / m[r][r];
    }
    return x;
}

double UnexplainedSumSq(const Residuals& all, const Terms& x) {
    double sumSq = 0.0;
    for (std::size_t i = 0; i < all.distance.size(); ++i) {
        double e = all.distance[i];
        for (std::size_t k = 0; k < kTerms; ++k)
            e -= x[k] * all.terms[i][k];
        sumSq += std::min(e * e, kTail * kTail); // a tail at either end is no part of the shape
    }
    return sumSq;
}

// Corners of the ink where the ellipse bends evenly.
double PriceOfCorners(const PricedPath& ink, const Fitted& fit, const Residuals& all) {
    double price = 0.0;
    const int hook = static_cast<int>(kHookShare * ink.path.Size());
    for (const TurningPeak& peak : ink.peaks) {
        if (peak.at < hook || peak.at >= ink.path.Size() - hook)
            continue; // the pen touching down or leaving
        const Terms& t = all.terms[static_cast<std::size_t>(peak.at)];
        const double x = fit.a * t[2];
        const double y = fit.b * t[1];
        const double speed = std::sqrt(x * x + y * y);
        const double curvature = std::copysign(fit.a * fit.b / (speed * speed * speed), all.winding);
        price += PriceOfHiddenCorner(ink, peak, curvature);
    }
    return price;
}

// The ellipse with the explained shift, size and oblongness added, exact for small ones.
RoundShape Corrected(const Fitted& fit, const Terms& x) {
    RoundShape shape;
    const double c = std::cos(fit.angle);
    const double s = std::sin(fit.angle);
    shape.centre = fit.centre + Point(c * x[1] - s * x[2], s * x[1] + c * x[2]);
    const double mean = 0.5 * (fit.a + fit.b) + x[0];
    const double along = 0.5 * (fit.a - fit.b) + x[3];
    const double half = std::sqrt(along * along + x[4] * x[4]);
    shape.radii[0] = mean + half;
    shape.radii[1] = mean - half;
    shape.rotation = fit.angle + 0.5 * std::atan2(x[4], along);
    return shape;
}

} // namespace

std::optional<RoundShape> FindRoundShape(const PricedPath& ink, int samples) {
    Fitted fit;
    if (!FitEllipse(ink.path, fit))
        return std::nullopt;
    const Residuals all = MeasureResiduals(ink.path, fit);
    const double winding = std::fabs(all.winding);
    if (!(winding >= kLeastWinding && winding <= kMostWinding))
        return std::nullopt;
    const Terms x = Explain(all);
    RoundShape shape = Corrected(fit, x);
    if (!(shape.radii[1] > 0.0))
        return std::nullopt;
    const double pace = ink.path.length / samples;
    const double oblong =
        std::clamp(kOblong + kOblongPerPace * (pace - kUsualPace), kOblongLeast, kOblongMost);
    shape.isCircle = shape.radii[0] - shape.radii[1] < oblong * shape.radii[0];
    const double corners = PriceOfCorners(ink, fit, all);
    shape.deviationCost = kSpreadShare * ink.prices.squared * UnexplainedSumSq(all, x);
    shape.cost = shape.deviationCost + corners + kParameters * ink.prices.parameter;
    return shape;
}

} // namespace Tessera::Geometry
