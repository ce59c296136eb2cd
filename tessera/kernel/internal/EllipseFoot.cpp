#include "tessera/kernel/internal/EllipseFoot.h"

#include <algorithm>
#include <cmath>
#include <utility>

// In the first quadrant with a >= b the foot is (a C, b S) with C = n / (u + k), S = z / u, where u > 0
// solves f(u) = C^2 + S^2 - 1 = 0, z = y / b, n = a x / b^2 and k = (a^2 - b^2) / b^2. Eberly's variable is u
// - 1; with u itself nothing cancels for points close to the major axis. f falls and is convex, and u lies
// between max(z, n - k) and n + z; points on the ellipse have u = 1.

namespace {

constexpr int kNewtonSteps =
    32; // enough unless the point is all but on the major axis near the evolute's cusp
constexpr int kBisections =
    80; // geometric: 10 bring any two doubles within a factor of 2, 53 more to the last bit
constexpr double kStepTol = 1e-9; // relative: the error left is its square
// A block multiplies u and u + k out: its steps take one division, and end where the square is rounding.
constexpr int kBlockSteps = 6; // whoever needs more is solved alone
constexpr double kBlockStepTol = 1e-8;
constexpr double kBlockLeast = 1e-60; // y / b; the fifth power of less is no normal number
constexpr double kOnMajorAxis =
    1e-290; // y / b; below it u would near the denormal numbers and lose its digits

struct FootEquation {
    double n, z, k;
    double Cos(double u) const { return n / (u + k); }
    double Sin(double u) const { return z / u; }
    double Value(double u) const { return Cos(u) * Cos(u) + Sin(u) * Sin(u) - 1.0; }
};

double BisectFoot(const FootEquation& eq, double lo, double hi) {
    for (int i = 0; i < kBisections; ++i) {
        const double mid = std::sqrt(lo) * std::sqrt(hi);
        if (!(mid > lo && mid < hi))
            break;
        (eq.Value(mid) >= 0.0 ? lo : hi) = mid;
    }
    return lo;
}

double SolveFoot(const FootEquation& eq) {
    const double lo = std::max(eq.z, eq.n - eq.k);
    const double hi = std::max(lo, eq.n + eq.z);
    double u = std::clamp(1.0, lo, hi);
    for (int i = 0; i < kNewtonSteps; ++i) {
        const double p = 1.0 / (u + eq.k), q = 1.0 / u, c = eq.n * p, s = eq.z * q;
        const double lengthSq = c * c + s * s;
        const double step = lengthSq * (std::sqrt(lengthSq) - 1.0) / (c * c * p + s * s * q);
        const double next = std::max(lo, u + step);
        if (std::fabs(next - u) <= kStepTol * u)
            return next;
        // From the left of the root every step goes right; once it no longer does, rounding decides.
        if (i > 0 && next < u)
            return u;
        u = next;
    }
    return BisectFoot(eq, u, hi);
}

// First quadrant, a >= b >= 0.
EllipseFoot FindFirstQuadrantFoot(double a, double b, double x, double y) {
    if (!(b > 0.0)) {
        const double c = a > 0.0 ? std::min(1.0, x / a) : 1.0;
        return {c, std::sqrt((1.0 - c) * (1.0 + c))};
    }
    const double ratio = a / b;
    const FootEquation eq{ratio * (x / b), y / b, (ratio - 1.0) * (ratio + 1.0)};
    if (!(eq.z > kOnMajorAxis)) {
        // On the major axis: beyond the evolute's cusp the vertex, before it the symmetric pair of feet.
        const double c = eq.n < eq.k ? eq.n / eq.k : 1.0;
        return {c, std::sqrt((1.0 - c) * (1.0 + c))};
    }
    const double u = SolveFoot(eq);
    const double c = eq.Cos(u), s = eq.Sin(u), length = std::sqrt(c * c + s * s);
    return {c / length, s / length};
}

} // namespace

EllipseFoot FindEllipseFoot(double a, double b, double px, double py) {
    const bool isTall = b > a;
    double x = std::fabs(px), y = std::fabs(py);
    if (isTall) {
        std::swap(a, b);
        std::swap(x, y);
    }
    EllipseFoot foot = FindFirstQuadrantFoot(a, b, x, y);
    if (isTall)
        std::swap(foot.cosT, foot.sinT);
    // Zero counts as positive, negative zero too.
    return {px < 0.0 ? -foot.cosT : foot.cosT, py < 0.0 ? -foot.sinT : foot.sinT};
}

void FindEllipseFeet(double a, double b, int count, const double* px, const double* py, double* roots,
                     double* cosT, double* sinT) {
    const double ratio = a / b, k = (ratio - 1.0) * (ratio + 1.0), scale = ratio / b, inverseB = 1.0 / b;
    double n[kEllipseFootBlock], z[kEllipseFootBlock], lo[kEllipseFootBlock], step[kEllipseFootBlock];
    for (int i = 0; i < count; ++i) {
        n[i] = std::fabs(px[i]) * scale;
        z[i] = std::fabs(py[i]) * inverseB;
        lo[i] = z[i] > n[i] - k ? z[i] : n[i] - k;
        roots[i] = roots[i] > lo[i] ? roots[i] : lo[i];
    }
    bool isSettled = false;
    for (int round = 0; round < kBlockSteps && !isSettled; ++round) {
        for (int i = 0; i < count; ++i) {
            const double u = roots[i], shifted = u + k, c = n[i] * u, s = z[i] * shifted;
            const double cc = c * c, ss = s * s, lengthSq = cc + ss; // C and S times u (u + k)
            const double wanted =
                u + lengthSq * (std::sqrt(lengthSq) - u * shifted) / (cc * u + ss * shifted);
            const double next = wanted > lo[i] ? wanted : lo[i];
            step[i] = std::fabs(next - u) - kBlockStepTol * u;
            roots[i] = next;
        }
        isSettled = true;
        for (int i = 0; i < count; ++i)
            isSettled &= step[i] <= 0.0;
    }
    for (int i = 0; i < count; ++i) {
        const double c = n[i] * roots[i], s = z[i] * (roots[i] + k);
        const double inverse = 1.0 / std::sqrt(c * c + s * s);
        cosT[i] = std::copysign(c * inverse, px[i]);
        sinT[i] = std::copysign(s * inverse, py[i]);
    }
    for (int i = 0; i < count; ++i)
        if (!(step[i] <= 0.0 && z[i] > kBlockLeast)) {
            const EllipseFoot foot = FindEllipseFoot(a, b, px[i], py[i]);
            cosT[i] = foot.cosT;
            sinT[i] = foot.sinT;
            roots[i] = 1.0;
        }
}
