#include <cmath>

#include "tessera/kernel/NR.h"
#include "tessera/kernel/internal/EllipseDistances.h"

// Halir and Flusser's direct fit: minimise the squares of A x^2 + B x y + C y^2 + D x + E y + F under
// 4 A C - B^2 = 1. The linear coefficients are eliminated first, which leaves a 3 x 3 problem. The constraint
// is invariant under affine maps, so the points are first whitened (centred, turned to their principal axes,
// each axis brought to unit variance): the normal matrix of D, E, F is then n times the identity and thin
// arcs keep their digits. Instead of the paper's unsymmetric eigenproblem the equivalent symmetric-definite
// one is solved.

using Vex::Math::Point2;

namespace {

constexpr int kJacobiSweeps = 60;
constexpr double kLineRatio = 1e-12;        // of the variances: points within 1e-6 of their length of a line
constexpr double kShift = 1e-15;            // of the trace: keeps the factor of points exactly on a conic
constexpr double kHyperbolaAdvantage = 1e2; // a hyperbola with a tenth of the ellipse's rms residual wins

// Turns the points to their principal axes. False when they coincide or lie on a line.
bool TurnToPrincipalAxes(EllipseSamples* samples) {
    const int m = samples->count;
    double sumX = 0.0, sumY = 0.0, scatter[4] = {}, values[2], vectors[4];
    for (int i = 0; i < m; ++i) {
        sumX += samples->x[i];
        sumY += samples->y[i];
    }
    samples->mean = {sumX / m, sumY / m};
    for (int i = 0; i < m; ++i) {
        const double dx = samples->x[i] -= samples->mean.x, dy = samples->y[i] -= samples->mean.y;
        scatter[0] += dx * dx;
        scatter[1] += dx * dy;
        scatter[3] += dy * dy;
    }
    if (!NR_jacobi_eigen(2, scatter, kJacobiSweeps, values, vectors))
        return false;
    for (int j = 0; j < 2; ++j) {
        if (!(values[j] > kLineRatio * (values[0] + values[1])))
            return false;
        samples->spread[j] = std::sqrt(values[j] / m);
    }
    // The eigenvectors make a rotation, so that angles keep their sense.
    const double c = vectors[0], s = vectors[2];
    samples->axis[0][0] = samples->axis[1][1] = c;
    samples->axis[0][1] = s;
    samples->axis[1][0] = -s;
    for (int i = 0; i < m; ++i) {
        const double dx = samples->x[i], dy = samples->y[i];
        samples->x[i] = c * dx + s * dy;
        samples->y[i] = c * dy - s * dx;
    }
    return true;
}

// Moments of whitened points: quartic[k] = sum u^(4-k) v^k, and so on. Whitening leaves rounding in the
// squares, which the fourth powers of a slender shape would show.
struct Moments {
    double quartic[5] = {}, cubic[4] = {}, square[3] = {};
    explicit Moments(const EllipseSamples& samples) {
        const double inverse0 = 1.0 / samples.spread[0], inverse1 = 1.0 / samples.spread[1];
        for (int i = 0; i < samples.count; ++i) {
            const Point2 p{samples.x[i] * inverse0, samples.y[i] * inverse1};
            const double uu = p.x * p.x, uv = p.x * p.y, vv = p.y * p.y;
            quartic[0] += uu * uu;
            quartic[1] += uu * uv;
            quartic[2] += uu * vv;
            quartic[3] += uv * vv;
            quartic[4] += vv * vv;
            square[0] += uu;
            square[1] += uv;
            square[2] += vv;
            cubic[0] += uu * p.x;
            cubic[1] += uu * p.y;
            cubic[2] += vv * p.x;
            cubic[3] += vv * p.y;
        }
    }
};

struct Conic {
    double quadratic[3], linear[2], constant; // A, B, C; D, E; F
};

// Coefficients (D, E) that belong to unit A, B or C: the rows of the eliminated equations.
void FillElimination(const Moments& s, double elimination[3][2]) {
    const double uu = s.square[0], uv = s.square[1], vv = s.square[2], determinant = uu * vv - uv * uv;
    for (int i = 0; i < 3; ++i) {
        elimination[i][0] = -(vv * s.cubic[i] - uv * s.cubic[i + 1]) / determinant;
        elimination[i][1] = -(uu * s.cubic[i + 1] - uv * s.cubic[i]) / determinant;
    }
}

// Normal matrix of (A, B, C) after elimination of (D, E, F).
void FillReducedMatrix(const Moments& s, int m, const double elimination[3][2], double matrix[9]) {
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            matrix[3 * i + j] = s.quartic[i + j] + s.cubic[i] * elimination[j][0] +
                                s.cubic[i + 1] * elimination[j][1] - s.square[i] * s.square[j] / m;
}

// Residual of quadratic coefficients, per unit of their length.
double Residual(const double matrix[9], const double q[3]) {
    double sum = 0.0;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            sum += q[i] * matrix[3 * i + j] * q[j];
    return sum / (q[0] * q[0] + q[1] * q[1] + q[2] * q[2]);
}

bool IsHyperbolic(const double reduced[9], const double ellipse[3]) {
    double matrix[9], values[3], vectors[9];
    for (int i = 0; i < 9; ++i)
        matrix[i] = reduced[i];
    if (!NR_jacobi_eigen(3, matrix, kJacobiSweeps, values, vectors))
        return true;
    int best = 0;
    for (int j = 1; j < 3; ++j)
        if (values[j] < values[best])
            best = j;
    const double a = vectors[best], b = vectors[3 + best], c = vectors[6 + best];
    return b * b > 4.0 * a * c && Residual(reduced, ellipse) > kHyperbolaAdvantage * std::fabs(values[best]);
}

bool FindConic(const Moments& s, int m, Conic* conic) {
    double reduced[9], shifted[9], elimination[3][2];
    FillElimination(s, elimination);
    FillReducedMatrix(s, m, elimination, reduced);
    const double shift = kShift * (s.quartic[0] + s.quartic[2] + s.quartic[4]);
    for (int i = 0; i < 9; ++i)
        shifted[i] = reduced[i] + (i % 4 == 0 ? shift : 0.0);
    constexpr double kConstraint[9] = {0, 0, 2, 0, -1, 0, 2, 0, 0};
    double values[3], vectors[9], work[18];
    if (!NR_generalized_eigen(3, kConstraint, shifted, kJacobiSweeps, values, vectors, work))
        return false;
    int best = 0;
    for (int j = 1; j < 3; ++j)
        if (values[j] > values[best])
            best = j;
    for (int i = 0; i < 3; ++i)
        conic->quadratic[i] = vectors[3 * i + best];
    const double* q = conic->quadratic;
    if (!(values[best] > 0.0) || IsHyperbolic(reduced, q))
        return false;
    for (int j = 0; j < 2; ++j)
        conic->linear[j] = q[0] * elimination[0][j] + q[1] * elimination[1][j] + q[2] * elimination[2][j];
    conic->constant = -(q[0] * s.square[0] + q[1] * s.square[1] + q[2] * s.square[2]) / m;
    return true;
}

} // namespace

bool FindStartConic(EllipseSamples* samples, double params[kEllipseParameters]) {
    Conic conic;
    if (!TurnToPrincipalAxes(samples) || !FindConic(Moments(*samples), samples->count, &conic))
        return false;
    const double* q = conic.quadratic;
    const double inverse = 1.0 / (q[0] + q[2]); // not 0: 4 A C exceeds B^2
    params[0] = (q[0] - q[2]) * inverse;
    params[1] = q[1] * inverse;
    params[2] = conic.linear[0] * inverse;
    params[3] = conic.linear[1] * inverse;
    params[4] = conic.constant * inverse;
    return true;
}
