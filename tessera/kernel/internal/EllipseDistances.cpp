#include "tessera/kernel/internal/EllipseDistances.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "tessera/kernel/NR.h"
#include "tessera/kernel/internal/EllipseFoot.h"

// The distance d of a point from the conic F = sum p_i phi_i has, with n, t and G the unit normal, the unit
// tangent and |grad F| at the foot, k the curvature there and H the second derivatives of F,
//
//   dd/dp_i = g_i = phi_i / G,
//   d2d/dp_i dp_j = (n H n / G) g_i g_j - N_i g_j - g_i N_j - d / (1 + d k) E_i E_j,
//   N_i = n . grad phi_i / G,   E_i = t . grad phi_i / G - (t H n / G) g_i.
//
// Half the Hessian of the sum of d^2 is thus a sum of g Q^T + Q g^T + w E E^T over the points. The points are
// taken in blocks, one array a quantity, which compilers turn into vector instructions. Coefficients of the
// conic lead through parabolas, where axes would run to infinity along a bent valley.

namespace {

constexpr int kBlock = kEllipseFootBlock;
constexpr int kM = kEllipseParameters;
// The iteration may pass through worse ellipses than the answer may be. Of the points' spread.
constexpr double kLargestTrialAxis = 1e5;
constexpr double kSmallestTrialAxis = 1e-9;
// Least 1 + d k: at the centre of curvature the second derivative has a pole.
constexpr double kLeastDenominator = 0.1;

// Direction of the axis a as well, and the level of the conic, F = level (u^2 / a^2 + v^2 / b^2 - 1).
struct Ellipse {
    double x, y, a, b, cos, sin, level;
};

bool FindEllipse(const EllipseSamples& samples, const double* p, Ellipse* e) {
    const double d = 1.0 - p[0] * p[0] - p[1] * p[1], s0 = samples.spread[0], s1 = samples.spread[1];
    if (!(d > 0.0))
        return false;
    const double xi = (p[1] * p[3] - (1.0 - p[0]) * p[2]) / d, eta = (p[1] * p[2] - (1.0 + p[0]) * p[3]) / d;
    e->level = -(p[4] + 0.5 * (p[2] * xi + p[3] * eta));
    if (!(e->level > 0.0))
        return false;
    const double scale = 0.5 / e->level;
    const double q0 = scale * (1.0 + p[0]) / (s0 * s0), q1 = scale * p[1] / (s0 * s1),
                 q2 = scale * (1.0 - p[0]) / (s1 * s1);
    const double half = 0.5 * (q0 - q2), r = std::sqrt(half * half + q1 * q1), large = 0.5 * (q0 + q2) + r;
    e->x = s0 * xi;
    e->y = s1 * eta;
    e->b = 1.0 / std::sqrt(large);
    e->a = s0 * s1 / (scale * std::sqrt(d) * e->b);
    // The axis b points along the eigenvector of the larger eigenvalue.
    const double cos2 = r > 0.0 ? -half / r : 1.0, sin2 = r > 0.0 ? -q1 / r : 0.0;
    const double c = std::sqrt(0.5 * (1.0 + std::fabs(cos2))), s = 0.5 * sin2 / c;
    e->cos = cos2 >= 0.0 ? c : std::fabs(s);
    e->sin = cos2 >= 0.0 ? s : std::copysign(c, sin2);
    return std::isfinite(e->a) && e->a >= e->b;
}

// By point: the distance, g, Q, E and w E of the paragraph above.
struct Block {
    double distance[kBlock], g[kM][kBlock], q[kM][kBlock], e[kM][kBlock], weighted[kM][kBlock];
};

void FillBlock(const Ellipse& shape, const double spread[2], int n, const double* x, const double* y,
               double* roots, Block* block) {
    const double a = shape.a, b = shape.b, c = shape.cos, s = shape.sin, ab = a * b;
    const double inverse0 = 1.0 / spread[0], inverse1 = 1.0 / spread[1], perLevel = 0.5 * ab / shape.level;
    const double excess = (a - b) * (a + b), bbOverA = b * b * b / a, aaOverB = a * a * a / b;
    double u[kBlock], v[kBlock], cosT[kBlock], sinT[kBlock];
    for (int i = 0; i < n; ++i) {
        const double dx = x[i] - shape.x, dy = y[i] - shape.y;
        u[i] = c * dx + s * dy;
        v[i] = c * dy - s * dx;
    }
    FindEllipseFeet(a, b, n, u, v, roots, cosT, sinT);
    for (int i = 0; i < n; ++i) {
        const double fu = a * cosT[i], fv = b * sinT[i], mu = b * cosT[i], mv = a * sinT[i];
        const double inverse = 1.0 / std::sqrt(mu * mu + mv * mv), cube = inverse * inverse * inverse;
        const double nu = mu * inverse, nv = mv * inverse, d = nu * (u[i] - fu) + nv * (v[i] - fv);
        const double perG = perLevel * inverse, nx = c * nu - s * nv, ny = s * nu + c * nv;
        const double xi = (shape.x + c * fu - s * fv) * inverse0,
                     eta = (shape.y + s * fu + c * fv) * inverse1;
        const double n0 = nx * inverse0 * perG, n1 = ny * inverse1 * perG;
        const double t0 = -ny * inverse0 * perG, t1 = nx * inverse1 * perG;
        const double g0 = 0.5 * (xi * xi - eta * eta) * perG, g1 = xi * eta * perG, g2 = xi * perG,
                     g3 = eta * perG;
        const double normalBend = (bbOverA * cosT[i] * cosT[i] + aaOverB * sinT[i] * sinT[i]) * cube;
        const double twist = cosT[i] * sinT[i] * excess * cube, half = 0.5 * (1.0 + d * normalBend);
        const double whole = 1.0 + d * ab * cube;
        const double weight = -d * d / (whole > kLeastDenominator ? whole : kLeastDenominator);
        block->distance[i] = d;
        block->g[0][i] = g0;
        block->g[1][i] = g1;
        block->g[2][i] = g2;
        block->g[3][i] = g3;
        block->g[4][i] = perG;
        block->q[0][i] = half * g0 - d * (n0 * xi - n1 * eta);
        block->q[1][i] = half * g1 - d * (n0 * eta + n1 * xi);
        block->q[2][i] = half * g2 - d * n0;
        block->q[3][i] = half * g3 - d * n1;
        block->q[4][i] = half * perG;
        const double e0 = t0 * xi - t1 * eta - twist * g0, e1 = t0 * eta + t1 * xi - twist * g1,
                     e2 = t0 - twist * g2, e3 = t1 - twist * g3, e4 = -twist * perG;
        block->e[0][i] = e0;
        block->e[1][i] = e1;
        block->e[2][i] = e2;
        block->e[3][i] = e3;
        block->e[4][i] = e4;
        block->weighted[0][i] = weight * e0;
        block->weighted[1][i] = weight * e1;
        block->weighted[2][i] = weight * e2;
        block->weighted[3][i] = weight * e3;
        block->weighted[4][i] = weight * e4;
    }
}

// Adds row kRow of the lower triangle: two sums an element, or each would wait for its own additions.
template <int kRow>
void AddRow(const Block& block, int n, double* jtj) {
    double sums[kRow + 1][2] = {};
    for (int i = 0; i < n; i += 2)
        for (int j = 0; j <= kRow; ++j)
            for (int lane = 0; lane < 2; ++lane) {
                const int k = i + lane;
                sums[j][lane] += (block.g[kRow][k] * block.q[j][k] + block.q[kRow][k] * block.g[j][k]) +
                                 block.e[kRow][k] * block.weighted[j][k];
            }
    for (int j = 0; j <= kRow; ++j)
        jtj[kRow * kM + j] += sums[j][0] + sums[j][1];
}
template <int kRow>
void AddFirstOrderRow(const Block& block, int n, double* jtj) {
    for (int j = 0; j <= kRow; ++j)
        for (int i = 0; i < n; ++i)
            jtj[kRow * kM + j] += block.g[kRow][i] * block.g[j][i];
}

// J^T r and the sum of squares.
void AddGradient(const Block& block, int n, double* jtr, double* sumSq) {
    double sums[kM + 1][2] = {};
    for (int i = 0; i < n; i += 2)
        for (int lane = 0; lane < 2; ++lane) {
            const double d = block.distance[i + lane];
            for (int j = 0; j < kM; ++j)
                sums[j][lane] += block.g[j][i + lane] * d;
            sums[kM][lane] += d * d;
        }
    for (int j = 0; j < kM; ++j)
        jtr[j] += sums[j][0] + sums[j][1];
    *sumSq += sums[kM][0] + sums[kM][1];
}

// Makes the number of points even.
int PadBlock(int n, Block* block) {
    if (n % 2 == 0)
        return n;
    block->distance[n] = 0.0;
    for (int j = 0; j < kM; ++j)
        block->g[j][n] = block->q[j][n] = block->e[j][n] = block->weighted[j][n] = 0.0;
    return n + 1;
}

template <int... kRows>
void AddBlock(const Block& block, int n, bool isNewton, double* jtj, std::integer_sequence<int, kRows...>) {
    if (isNewton)
        (AddRow<kRows>(block, n, jtj), ...);
    else
        (AddFirstOrderRow<kRows>(block, n, jtj), ...);
}

void SumBlocks(const Ellipse& shape, bool isNewton, EllipseSamples* samples, double* jtj, double* jtr,
               double* sumSq) {
    std::fill(jtj, jtj + kM * kM, 0.0);
    std::fill(jtr, jtr + kM, 0.0);
    *sumSq = 0.0;
    Block block;
    for (int from = 0; from < samples->count; from += kBlock) {
        const int n = std::min(kBlock, samples->count - from);
        FillBlock(shape, samples->spread, n, samples->x + from, samples->y + from, samples->roots + from,
                  &block);
        const int even = PadBlock(n, &block);
        AddGradient(block, even, jtr, sumSq);
        AddBlock(block, even, isNewton, jtj, std::make_integer_sequence<int, kM>());
    }
}

} // namespace

bool FindEllipseOfConic(const EllipseSamples& samples, const double* params, EllipseShape* ellipse) {
    Ellipse e;
    if (!FindEllipse(samples, params, &e))
        return false;
    *ellipse = {{e.x, e.y}, e.a, e.b, std::atan2(e.sin, e.cos)};
    return true;
}

int EvaluateEllipseDistances(void* context, const double* params, double* jtj, double* jtr, double* sumSq) {
    EllipseSamples& samples = *static_cast<EllipseSamples*>(context);
    Ellipse shape;
    if (!FindEllipse(samples, params, &shape) || !(shape.b >= kSmallestTrialAxis * samples.spread[0]) ||
        !(shape.a <= kLargestTrialAxis * samples.spread[0]))
        return 0;
    SumBlocks(shape, true, &samples, jtj, jtr, sumSq);
    double factor[kM * kM];
    std::copy(jtj, jtj + kM * kM, factor);
    const bool isNewton = NR_cholesky_decomp(kM, factor) != 0;
    if (!isNewton)
        SumBlocks(shape, false, &samples, jtj, jtr, sumSq);
    return std::isfinite(*sumSq) ? (isNewton ? 2 : 1) : 0;
}
