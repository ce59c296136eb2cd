#include "tessera/kernel/CRV_TOPOL.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/kernel/internal/ConicFrame.h"
#include "tessera/kernel/internal/CurveHits.h"
#include "tessera/kernel/internal/ImplicitCurve.h"

// Lines and conics among themselves. Whether two of them touch is decided on true distances: the support of
// the conic along the line's normal, the gap between two circles. Two conics of which one is no circle: the
// first as four rational quadratic pieces in the implicit form of the second.

namespace {

bool IsCircle(const TopolCurve& c) {
    return c.record->form == kFormArc;
}

// The quarter turn about psi = (quarter + 1/2) pi / 2 as a rational quadratic; s is the fraction of tan(half
// angle).
PlanarBezier MakeQuarter(const ConicFrame& f, int quarter) {
    constexpr double r = std::numbers::sqrt2 - 1.0; // tan(pi / 8)
    const double middle = (quarter + 0.5) * std::numbers::pi / 2, c = std::cos(middle), s = std::sin(middle);
    const double lo = 1.0 - r * r, hi = 1.0 + r * r;
    const double even[3] = {lo, hi, lo}, odd[3] = {-2.0 * r, 0.0, 2.0 * r}, weight[3] = {hi, lo, hi};
    PlanarBezier piece;
    piece.degree = 2;
    for (int i = 0; i < 3; ++i) {
        const double u = f.a * (c * even[i] - s * odd[i]), v = f.b * (s * even[i] + c * odd[i]);
        piece.x[i] = f.centre[0] * weight[i] + u * f.ex[0] + v * f.ey[0];
        piece.y[i] = f.centre[1] * weight[i] + u * f.ex[1] + v * f.ey[1];
        piece.w[i] = weight[i];
    }
    return piece;
}

double QuarterAngle(int quarter, double s) {
    return (quarter + 0.5) * std::numbers::pi / 2 +
           2.0 * std::atan((2.0 * s - 1.0) * (std::numbers::sqrt2 - 1.0));
}

void IntersectCircles(CurveHits& hits) {
    const ConicFrame f = MakeConicFrame(hits.A().record), g = MakeConicFrame(hits.B().record);
    const ImplicitCurve first(hits.A()), second(hits.B());
    const double dx = g.centre[0] - f.centre[0], dy = g.centre[1] - f.centre[1], d = std::hypot(dx, dy);
    if (d <= hits.Tol()) // concentric: apart or coincident
        return;
    const double outer = d - (f.a + g.a), inner = std::fabs(f.a - g.a) - d;
    if (outer > hits.Tol() || inner > hits.Tol())
        return;
    const auto offer = [&](double angle, HitKind kind) {
        const double x = f.centre[0] + f.a * std::cos(angle), y = f.centre[1] + f.a * std::sin(angle);
        hits.Offer(first.Parameter(x, y), second.Parameter(x, y), kind);
    };
    const double towards = std::atan2(dy, dx);
    if (std::fabs(outer) <= hits.Tol() || std::fabs(inner) <= hits.Tol()) {
        const bool opposite = std::fabs(outer) > hits.Tol() && f.a < g.a;
        offer(opposite ? towards + std::numbers::pi : towards, HitKind::Touch);
        return;
    }
    // Half angle at the first centre from the triangle's area, which keeps its digits near a touch.
    const double area = std::sqrt(-outer * (f.a + g.a + d) * -inner * (d + std::fabs(f.a - g.a)));
    const double half = std::atan2(area, d * d + (f.a - g.a) * (f.a + g.a));
    offer(towards - half, HitKind::Crossing);
    offer(towards + half, HitKind::Crossing);
}

} // namespace

void IntersectLines(CurveHits& hits) {
    constexpr double kParallelSine = 1e-12; // lines nearer to parallel have no crossing worth its digits
    const auto* a = static_cast<const EVC_line_s*>(hits.A().record->data);
    const auto* b = static_cast<const EVC_line_s*>(hits.B().record->data);
    const double dx = b->base[0] - a->base[0], dy = b->base[1] - a->base[1];
    const double cross = a->direction[0] * b->direction[1] - a->direction[1] * b->direction[0];
    if (!(std::fabs(cross) > kParallelSine * hits.A().size * hits.B().size))
        return;
    hits.Offer((dx * b->direction[1] - dy * b->direction[0]) / cross,
               (dx * a->direction[1] - dy * a->direction[0]) / cross, HitKind::Crossing);
}

void IntersectLineConic(CurveHits& hits) {
    const auto* line = static_cast<const EVC_line_s*>(hits.A().record->data);
    const ConicFrame f = MakeConicFrame(hits.B().record);
    const double nx = -line->direction[1] / hits.A().size, ny = line->direction[0] / hits.A().size;
    // n . P(psi) = offset is u cos psi + v sin psi = k; hypot(u, v) is the conic's half width along n.
    const double u = f.a * (nx * f.ex[0] + ny * f.ex[1]), v = f.b * (nx * f.ey[0] + ny * f.ey[1]);
    const double k = nx * (line->base[0] - f.centre[0]) + ny * (line->base[1] - f.centre[1]);
    const double halfWidth = std::hypot(u, v), gap = std::fabs(k) - halfWidth;
    if (!(gap <= hits.Tol()) || halfWidth == 0.0)
        return;
    const ImplicitCurve carrier(hits.A());
    const auto offer = [&](double psi, HitKind kind) {
        double p[3];
        ConicPoint(f, psi, p);
        hits.Offer(carrier.Parameter(p[0], p[1]), psi + f.phase, kind);
    };
    const double towards = std::atan2(v, u);
    if (gap >= -hits.Tol()) {
        offer(k < 0.0 ? towards + std::numbers::pi : towards, HitKind::Touch);
        return;
    }
    const double half = std::atan2(std::sqrt((halfWidth - k) * (halfWidth + k)), k);
    offer(towards - half, HitKind::Crossing);
    offer(towards + half, HitKind::Crossing);
}

void IntersectConics(CurveHits& hits) {
    if (IsCircle(hits.A()) && IsCircle(hits.B())) {
        IntersectCircles(hits);
        return;
    }
    // The first is the circle if there is one, and the better implicit form; the second is walked along.
    const ImplicitCurve carrier(hits.A());
    const ConicFrame f = MakeConicFrame(hits.B().record);
    for (int quarter = 0; quarter < 4; ++quarter) {
        const PlanarBezier piece = MakeQuarter(f, quarter);
        ImplicitCurve::Zero zero[2 * Bernstein::kMaxCoefficients];
        const int n = carrier.FindZeros(piece, hits.Tol(), zero);
        for (int i = 0; i < n; ++i) {
            const double psi = QuarterAngle(quarter, zero[i].s);
            double p[3];
            ConicPoint(f, psi, p);
            hits.Offer(carrier.Parameter(p[0], p[1]), psi + f.phase, zero[i].kind);
        }
    }
}
