#include "tessera/kernel/internal/ConicFrame.h"

#include <cmath>
#include <numbers>

#include "tessera/kernel/internal/BernsteinRoots.h"

namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;

double Dot(const double u[3], const double v[3]) {
    return u[0] * v[0] + u[1] * v[1] + u[2] * v[2];
}

// out = v / |v| and |v|; a zero vector leaves out alone.
double Unit(const double v[3], double out[3]) {
    const double length = std::hypot(v[0], v[1], v[2]);
    if (length > 0.0)
        for (int k = 0; k < 3; ++k)
            out[k] = v[k] / length;
    return length;
}

void SetAxes(ConicFrame& f, const double u[3], const double v[3]) {
    double p[3], q[3];
    // Conjugate radii turned into principal ones (Rytz); nothing changes for perpendicular axes.
    const double uu = Dot(u, u), vv = Dot(v, v), uv = Dot(u, v);
    f.phase = std::fabs(uv) <= 1e-14 * std::sqrt(uu * vv) ? 0.0 : 0.5 * std::atan2(2.0 * uv, uu - vv);
    const double c = std::cos(f.phase), s = std::sin(f.phase);
    for (int k = 0; k < 3; ++k) {
        p[k] = c * u[k] + s * v[k];
        q[k] = c * v[k] - s * u[k];
    }
    const double x[3] = {1.0, 0.0, 0.0};
    Unit(x, f.ex);
    f.a = Unit(p, f.ex);
    const double turned[3] = {-f.ex[1], f.ex[0], 0.0};
    if (f.a == 0.0 && Unit(q, f.ey) > 0.0) { // only the second axis is left: the first stands across it
        const double across[3] = {f.ey[1], -f.ey[0], 0.0};
        Unit(across, f.ex);
    } else {
        Unit(turned, f.ey);
    }
    f.b = Unit(q, f.ey);
}

// Derivative of half the squared distance, and its own derivative.
double Slope(const ConicFrame& f, double x, double y, double psi, double* curvature) {
    const double c = std::cos(psi), s = std::sin(psi), k = (f.b - f.a) * (f.b + f.a);
    *curvature = k * (c - s) * (c + s) + f.a * x * c + f.b * y * s;
    return k * s * c + f.a * x * s - f.b * y * c;
}

} // namespace

ConicFrame MakeConicFrame(KC_CURVE_struct_s* c) {
    ConicFrame f{};
    evcrvp(c, f.limits);
    f.closed = std::fabs(std::fabs(c->span) - kTwoPi) <= 1e-10;
    const double *centre = nullptr, *u = nullptr, *v = nullptr;
    if (c->form == kFormArc) {
        const auto* arc = static_cast<const EVC_arc_s*>(c->data);
        centre = arc->centre, u = arc->xAxis, v = arc->yAxis;
    } else {
        const auto* conic = static_cast<const EVC_conic_s*>(c->data);
        centre = conic->centre, u = conic->majorAxis, v = conic->minorAxis;
    }
    for (int k = 0; k < 3; ++k)
        f.centre[k] = centre[k];
    SetAxes(f, u, v);
    return f;
}

void ConicLocal(const ConicFrame& f, const double p[3], double* x, double* y) {
    const double w[3] = {p[0] - f.centre[0], p[1] - f.centre[1], p[2] - f.centre[2]};
    *x = Dot(w, f.ex);
    *y = Dot(w, f.ey);
}

void ConicPoint(const ConicFrame& f, double psi, double out[3]) {
    const double c = f.a * std::cos(psi), s = f.b * std::sin(psi);
    for (int k = 0; k < 3; ++k)
        out[k] = f.centre[k] + c * f.ex[k] + s * f.ey[k];
}

bool LiftAngle(const double limits[2], double slack, double* t) {
    const double lifted = *t + kTwoPi * std::ceil((limits[0] - slack - *t) / kTwoPi);
    if (!(lifted <= limits[1] + slack))
        return false;
    *t = lifted < limits[0] ? limits[0] : (lifted > limits[1] ? limits[1] : lifted);
    return true;
}

int ConicFootCandidates(const ConicFrame& f, double x, double y, double psi[24]) {
    const double k = (f.b - f.a) * (f.b + f.a);
    const double noise = 1e-15 * (std::fabs(k) + f.a * std::fabs(x) + f.b * std::fabs(y));
    int n = 0;
    for (int quarter = 0; quarter < 4; ++quarter) {
        // Over the quarter: psi = middle + 2 atan(h), h = (2 s - 1) tan(pi / 8); cos = C / W, sin = S / W.
        const double middle = (quarter + 0.5) * std::numbers::pi / 2, cm = std::cos(middle),
                     sm = std::sin(middle);
        const double r = std::numbers::sqrt2 - 1.0;
        const double lo = 1.0 - r * r, hi = 1.0 + r * r, even[3] = {lo, hi, lo},
                     odd[3] = {-2 * r, 0.0, 2 * r};
        const double weight[3] = {hi, lo, hi};
        double c[3], s[3], line[3], sc[5], rest[5], slope[5], root[Bernstein::kMaxCoefficients];
        for (int i = 0; i < 3; ++i) {
            c[i] = cm * even[i] - sm * odd[i];
            s[i] = sm * even[i] + cm * odd[i];
            line[i] = f.a * x * s[i] - f.b * y * c[i];
        }
        Bernstein::Product(s, 2, c, 2, sc);
        Bernstein::Product(line, 2, weight, 2, rest);
        for (int i = 0; i < 5; ++i)
            slope[i] = k * sc[i] + rest[i];
        psi[n++] = quarter * std::numbers::pi / 2;
        const int roots = Bernstein::SignChanges(slope, 4, noise, root);
        for (int i = 0; i < roots && i < 5; ++i)
            psi[n++] = middle + 2.0 * std::atan((2.0 * root[i] - 1.0) * r);
    }
    for (int i = 0; i < n; ++i) { // two Newton steps bring back the digits that the half angle cost
        for (int step = 0; step < 2; ++step) {
            double curvature = 0.0;
            const double slope = Slope(f, x, y, psi[i], &curvature);
            if (curvature > 0.0 && std::fabs(slope) < 0.1 * curvature)
                psi[i] -= slope / curvature;
        }
    }
    return n;
}
