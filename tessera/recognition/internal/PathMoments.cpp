#include "tessera/recognition/internal/PathMoments.h"

#include <algorithm>
#include <cmath>

namespace Tessera::Geometry {

namespace {

// Smallest determinant of a circle's equations relative to the spread of the points: below it they lie on a
// line as far as the sums can tell.
constexpr double kFlat = 1e-9;
constexpr int kNewtonSteps = 12;
constexpr double kNewtonTolerance = 1e-10;

// Smallest positive root of Taubin's characteristic polynomial, by Newton steps from 0.
double TaubinRoot(double a0, double a1, double a2, double a3) {
    double x = 0.0;
    double y = a0;
    for (int i = 0; i < kNewtonSteps; ++i) {
        const double slope = a1 + x * (2.0 * a2 + 3.0 * a3 * x);
        const double next = x - y / slope;
        if (std::fabs(next - x) <= kNewtonTolerance * std::fabs(next))
            break;
        const double value = a0 + next * (a1 + next * (a2 + next * a3));
        if (!(std::fabs(value) < std::fabs(y))) // nor after a division by zero
            break;
        x = next;
        y = value;
    }
    return x;
}

} // namespace

Moments& Moments::operator+=(const Moments& m) {
    n += m.n;
    x += m.x;
    y += m.y;
    xx += m.xx;
    xy += m.xy;
    yy += m.yy;
    xz += m.xz;
    yz += m.yz;
    zz += m.zz;
    return *this;
}

Moments& Moments::operator-=(const Moments& m) {
    n -= m.n;
    x -= m.x;
    y -= m.y;
    xx -= m.xx;
    xy -= m.xy;
    yy -= m.yy;
    xz -= m.xz;
    yz -= m.yz;
    zz -= m.zz;
    return *this;
}

void Moments::Add(const Point& p) {
    const double z = p.x * p.x + p.y * p.y;
    n += 1.0;
    x += p.x;
    y += p.y;
    xx += p.x * p.x;
    xy += p.x * p.y;
    yy += p.y * p.y;
    xz += p.x * z;
    yz += p.y * z;
    zz += z * z;
}

LineFit FitLine(const Moments& m) {
    LineFit fit;
    if (m.n < 1.0)
        return fit;
    fit.centre = {m.x / m.n, m.y / m.n};
    const double sxx = m.xx - m.x * fit.centre.x;
    const double sxy = m.xy - m.x * fit.centre.y;
    const double syy = m.yy - m.y * fit.centre.y;
    const double half = 0.5 * (sxx - syy);
    const double root = std::sqrt(half * half + sxy * sxy);
    fit.sumSq = std::max(0.0, 0.5 * (sxx + syy) - root);
    // Of the two expressions for the direction the one without cancellation.
    double dx = half + root;
    double dy = sxy;
    if (half < 0.0) {
        dx = sxy;
        dy = root - half;
    }
    const double length = std::sqrt(dx * dx + dy * dy);
    fit.direction = length > 0.0 ? Point(dx / length, dy / length) : Point(1.0, 0.0);
    return fit;
}

CircleFit FitCircle(const Moments& m) {
    CircleFit fit;
    if (m.n < 3.0)
        return fit;
    const double cx = m.x / m.n;
    const double cy = m.y / m.n;
    const double cz = cx * cx + cy * cy;
    // Central moments: with u = x - cx, v = y - cy and w = u u + v v.
    const double uu = m.xx / m.n - cx * cx;
    const double vv = m.yy / m.n - cy * cy;
    const double uv = m.xy / m.n - cx * cy;
    const double zMean = uu + vv + cz;
    const double xz = m.xz / m.n;
    const double yz = m.yz / m.n;
    const double uz = xz - cx * zMean; // mean of u z
    const double vz = yz - cy * zMean;
    const double uw = uz - 2.0 * (cx * uu + cy * uv);
    const double vw = vz - 2.0 * (cx * uv + cy * vv);
    const double w = uu + vv;
    // w = z - 2 c p + |c|^2, hence the mean of w w from the means of z z, z p and p p.
    const double zz = m.zz / m.n;
    const double pp = cx * cx * (uu + cx * cx) + 2.0 * cx * cy * (uv + cx * cy) + cy * cy * (vv + cy * cy);
    const double ww = zz + 4.0 * pp + cz * cz - 4.0 * (cx * xz + cy * yz) + 2.0 * cz * zMean - 4.0 * cz * cz;

    const double det2 = uu * vv - uv * uv;
    const double variance = ww - w * w;
    const double a3 = 4.0 * w;
    const double a2 = -3.0 * w * w - ww;
    const double a1 = variance * w + 4.0 * det2 * w - uw * uw - vw * vw;
    const double a0 = uw * (uw * vv - vw * uv) + vw * (vw * uu - uw * uv) - variance * det2;
    const double root = TaubinRoot(a0, a1, a2, a3);
    const double det = root * root - root * w + det2;
    if (!(std::fabs(det) > kFlat * w * w))
        return fit;
    const double a = (uw * (vv - root) - vw * uv) / det / 2.0;
    const double b = (vw * (uu - root) - uw * uv) / det / 2.0;
    fit.radius = std::sqrt(a * a + b * b + w);
    fit.centre = {cx + a, cy + b};
    // F = w - 2 a u - 2 b v - w0 over 2 R is the distance to first order.
    const double meanSqF =
        ww + 4.0 * (a * a * uu + 2.0 * a * b * uv + b * b * vv) - 4.0 * (a * uw + b * vw) - w * w;
    fit.sumSq = std::max(0.0, m.n * meanSqF / (4.0 * fit.radius * fit.radius));
    return fit;
}

PathMoments::PathMoments(std::span<const Point> pts) {
    upTo_.reserve(pts.size() + 1);
    Moments sum;
    upTo_.push_back(sum);
    for (const Point& p : pts) {
        sum.Add(p);
        upTo_.push_back(sum);
    }
}

} // namespace Tessera::Geometry
