#include "tessera/kernel/internal/ImplicitCurve.h"

#include <algorithm>
#include <cmath>

#include "tessera/kernel/internal/EllipseFoot.h"

// Along a Bezier piece of degree d the implicit function is a Bernstein polynomial of degree d (line) or 2 d
// (conic, scaled to the unit circle). Its extrema are isolated first; between them it is monotone, so each
// sign change holds one root and no double root can hide. T. W. Sederberg, Computer-Aided Design 21 (1989)
// 547-555.

PlanarBezier MakePlanarBezier(const double* bezier, int degree) {
    PlanarBezier piece;
    piece.degree = degree;
    for (int i = 0; i <= degree; ++i) {
        piece.x[i] = bezier[4 * i];
        piece.y[i] = bezier[4 * i + 1];
        piece.w[i] = bezier[4 * i + 3];
    }
    return piece;
}

ImplicitCurve::ImplicitCurve(const TopolCurve& c) : isLine_(c.record->form == kFormLine) {
    if (!isLine_) {
        frame_ = MakeConicFrame(c.record);
        return;
    }
    const auto* line = static_cast<const EVC_line_s*>(c.record->data);
    std::copy(line->base, line->base + 2, base_);
    std::copy(line->direction, line->direction + 2, direction_);
    const double length = std::hypot(direction_[0], direction_[1]);
    lengthSq_ = length * length;
    normal_[0] = -direction_[1] / length;
    normal_[1] = direction_[0] / length;
}

double ImplicitCurve::Parameter(double x, double y) const {
    if (isLine_)
        return ((x - base_[0]) * direction_[0] + (y - base_[1]) * direction_[1]) / lengthSq_;
    const double p[3] = {x, y, frame_.centre[2]};
    double u = 0.0, v = 0.0;
    ConicLocal(frame_, p, &u, &v);
    const EllipseFoot foot = FindEllipseFoot(frame_.a, frame_.b, u, v);
    return std::atan2(foot.sinT, foot.cosT) + frame_.phase;
}

bool ImplicitCurve::MayMeetHull(const double* points, int n, int stride, double tol) const {
    if (isLine_) {
        double lo = 1e300, hi = -1e300;
        for (int i = 0; i < n; ++i) {
            const double* p = points + i * stride;
            const double h = normal_[0] * (p[0] - base_[0]) + normal_[1] * (p[1] - base_[1]);
            lo = std::min(lo, h);
            hi = std::max(hi, h);
        }
        return !(lo > tol || hi < -tol);
    }
    double lo[2] = {1e300, 1e300}, hi[2] = {-1e300, -1e300}, farthestSq = 0.0;
    const double least = std::min(frame_.a, frame_.b);
    for (int i = 0; i < n; ++i) {
        const double p[3] = {points[i * stride], points[i * stride + 1], frame_.centre[2]};
        double local[2];
        ConicLocal(frame_, p, &local[0], &local[1]);
        for (int k = 0; k < 2; ++k) {
            lo[k] = std::min(lo[k], local[k]);
            hi[k] = std::max(hi[k], local[k]);
        }
        const double u = local[0] / frame_.a, v = local[1] / frame_.b;
        farthestSq = std::max(farthestSq, u * u + v * v);
    }
    const bool outside = lo[0] > frame_.a + tol || hi[0] < -frame_.a - tol || lo[1] > frame_.b + tol ||
                         hi[1] < -frame_.b - tol;
    const double inner = 1.0 - tol / least;
    return !outside && !(inner > 0.0 && farthestSq < inner * inner);
}

int ImplicitCurve::MakePolynomial(const PlanarBezier& piece, double* f) const {
    const int n = piece.degree;
    if (isLine_) { // about the base point: far from the origin the offset would eat the digits
        for (int i = 0; i <= n; ++i)
            f[i] = normal_[0] * (piece.x[i] - base_[0] * piece.w[i]) +
                   normal_[1] * (piece.y[i] - base_[1] * piece.w[i]);
        return n;
    }
    double u[Bernstein::kMaxSpanDegree + 1] = {}, v[Bernstein::kMaxSpanDegree + 1] = {};
    for (int i = 0; i <= n; ++i) {
        const double x = piece.x[i] - frame_.centre[0] * piece.w[i],
                     y = piece.y[i] - frame_.centre[1] * piece.w[i];
        u[i] = (x * frame_.ex[0] + y * frame_.ex[1]) / frame_.a;
        v[i] = (x * frame_.ey[0] + y * frame_.ey[1]) / frame_.b;
    }
    double term[Bernstein::kMaxCoefficients];
    Bernstein::Product(u, n, u, n, f);
    Bernstein::Product(v, n, v, n, term);
    for (int i = 0; i <= 2 * n; ++i)
        f[i] += term[i];
    Bernstein::Product(piece.w, n, piece.w, n, term);
    for (int i = 0; i <= 2 * n; ++i)
        f[i] -= term[i];
    return 2 * n;
}

int ImplicitCurve::FindZeros(const PlanarBezier& piece, double tol, Zero* out) const {
    double f[Bernstein::kMaxCoefficients], slope[Bernstein::kMaxCoefficients],
        at[Bernstein::kMaxCoefficients + 2];
    const int degree = MakePolynomial(piece, f);
    // What |f| can be within tol of the carrier.
    double weight = 0.0, lo = 1e300, hi = -1e300;
    for (int i = 0; i <= piece.degree; ++i)
        weight = std::max(weight, std::fabs(piece.w[i]));
    for (int i = 0; i <= degree; ++i) {
        lo = std::min(lo, f[i]);
        hi = std::max(hi, f[i]);
    }
    const double ratio = isLine_ ? tol : tol / std::min(frame_.a, frame_.b);
    const double near = isLine_ ? weight * tol : weight * weight * ratio * (2.0 + ratio);
    if (lo > near || hi < -near)
        return 0;
    const double rounding = 4e-16 * std::max(hi, -lo);
    if (isLine_ && lo >= -near && hi <= near) // all of it on the line
        return 0;
    if (!isLine_ && std::max(hi, -lo) <= 0.5 * near)
        return 0;
    Bernstein::Derivative(f, degree, slope);
    at[0] = 0.0;
    const int breaks = 2 + Bernstein::SignChanges(slope, degree - 1, degree * rounding, at + 1);
    at[breaks - 1] = 1.0;
    int n = 0;
    double last = 0.0;
    for (int i = 0; i < breaks; ++i) {
        const double value = Bernstein::Value(f, degree, at[i]);
        if (i > 0 && last * value < 0.0)
            out[n++] = {Bernstein::BracketedRoot(f, degree, at[i - 1], last, at[i], value),
                        HitKind::Crossing};
        if (std::fabs(value) <= near)
            out[n++] = {at[i], i == 0 || i + 1 == breaks ? HitKind::End : HitKind::Touch};
        last = value;
    }
    return n;
}
