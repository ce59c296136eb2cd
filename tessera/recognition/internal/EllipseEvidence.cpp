#include "tessera/recognition/internal/EllipseEvidence.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "tessera/kernel/internal/EllipseFit.h"

namespace Tessera::Geometry {

namespace {

constexpr double kTurn = 2.0 * std::numbers::pi;

bool FitEllipse(const InkPath& path, EllipseEvidence& fit) {
    std::vector<Vex::Math::Point2> pts;
    pts.reserve(path.pts.size());
    // Every other point: the path is smooth at this spacing.
    for (std::size_t i = 0; i < path.pts.size(); i += 2)
        pts.push_back({path.pts[i].x, path.pts[i].y});
    EllipseFitter fitter(pts.data(), static_cast<int>(pts.size()));
    EllipseShape shape;
    constexpr double kNoLimit = std::numeric_limits<double>::infinity();
    if (!fitter.FindStart(&shape) || !fitter.Refine(kNoLimit, &shape))
        return false;
    fit.centre = {shape.centre.x, shape.centre.y};
    fit.a = shape.a;
    fit.b = shape.b;
    fit.angle = shape.angle;
    return true;
}

void MeasureResiduals(const InkPath& path, EllipseEvidence& fit) {
    fit.distance.reserve(path.pts.size());
    fit.terms.reserve(path.pts.size());
    const double c = std::cos(fit.angle);
    const double s = std::sin(fit.angle);
    double cBefore = 0.0;
    double sBefore = 0.0;
    double run = 0.0;
    double wayRound = 0.0;
    for (const Point& p : path.pts) {
        const Point d = p - fit.centre;
        const double u = (c * d.x + s * d.y) / fit.a;
        const double v = (c * d.y - s * d.x) / fit.b;
        const double rho = std::max(1e-6, std::sqrt(u * u + v * v));
        const double ct = u / rho;
        const double st = v / rho;
        if (!fit.terms.empty()) {
            const double step = std::atan2(cBefore * st - sBefore * ct, cBefore * ct + sBefore * st);
            run += step;
            wayRound += std::fabs(step);
        }
        cBefore = ct;
        sBefore = st;
        const double slope = 2.0 * std::sqrt(u * u / (fit.a * fit.a) + v * v / (fit.b * fit.b));
        fit.distance.push_back((rho * rho - 1.0) / std::max(slope, 1e-9));
        fit.terms.push_back({1.0, ct, st, ct * ct - st * st, 2.0 * ct * st, run / kTurn,
                             ct * (4.0 * ct * ct - 3.0), st * (3.0 - 4.0 * st * st)});
    }
    fit.winding = run / kTurn;
    fit.back = 0.5 * (wayRound - std::fabs(run)) / kTurn;
    for (EllipseTerms& t : fit.terms)
        t[kDriftTerm] -= 0.5 * fit.winding; // centred, or the drift would shift the whole
}

} // namespace

std::optional<EllipseEvidence> FindEllipse(const InkPath& path) {
    EllipseEvidence found;
    if (!FitEllipse(path, found))
        return std::nullopt;
    MeasureResiduals(path, found);
    return found;
}

EllipseEvidence EvidenceBeside(const InkPath& path, const Point& centre, double a, double b, double angle) {
    EllipseEvidence given;
    given.centre = centre;
    given.a = a;
    given.b = b;
    given.angle = angle;
    MeasureResiduals(path, given);
    return given;
}

double PriceOfCorners(const PricedPath& ink, const EllipseEvidence& ellipse) {
    return PriceOfHiddenCorners(ink, [&](const TurningPeak& peak) {
        const EllipseTerms& t = ellipse.terms[static_cast<std::size_t>(peak.at)];
        const double x = ellipse.a * t[kSinTerm];
        const double y = ellipse.b * t[kCosTerm];
        const double speed = std::sqrt(x * x + y * y);
        return std::copysign(ellipse.a * ellipse.b / (speed * speed * speed), ellipse.winding);
    });
}

} // namespace Tessera::Geometry
