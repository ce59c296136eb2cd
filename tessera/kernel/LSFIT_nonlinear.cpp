#include <algorithm>
#include <cmath>
#include <limits>

#include "tessera/kernel/LSFIT.h"
#include "tessera/kernel/NR.h"

// Levenberg-Marquardt: (J^T J + mu D) step = -J^T r, with D the diagonal of J^T J. mu falls tenfold after a
// step that lowers the sum and rises tenfold after one that does not. A floor under D keeps a parameter that
// has no influence (the angle of a circle) from making the matrix singular.

namespace {

constexpr int kMax = LSFIT_MAX_PARAMETERS;
constexpr double kStartDamping = 1e-4;
constexpr double kLeastDamping = 1e-12;
constexpr double kMostDamping = 1e12;
constexpr double kDampingFactor = 10.0;
constexpr double kDiagonalFloor = 1e-12; // of the largest diagonal element

struct NormalEquations {
    double jtj[kMax * kMax], jtr[kMax], sumSq;
};

// The damped step and the decrease of the sum that the linear model promises for it; false without a step.
bool FindStep(int m, const NormalEquations& at, double damping, double* step, double* promise) {
    double matrix[kMax * kMax], largest = 0.0;
    for (int i = 0; i < m; ++i)
        largest = std::max(largest, at.jtj[i * m + i]);
    for (int i = 0; i < m; ++i) {
        std::copy(at.jtj + i * m, at.jtj + i * m + i + 1, matrix + i * m);
        matrix[i * m + i] += damping * at.jtj[i * m + i] + kDiagonalFloor * largest;
        step[i] = -at.jtr[i];
    }
    if (!NR_cholesky_decomp(m, matrix))
        return false;
    NR_cholesky_solve(m, matrix, step);
    // The linear model falls by -2 g.s - s^T J^T J s, at most -2 g.s.
    *promise = 0.0;
    for (int i = 0; i < m; ++i)
        *promise -= 2.0 * at.jtr[i] * step[i];
    return std::isfinite(*promise);
}

} // namespace

void LSFIT_nonlinear_function(int m, double* params, LSFIT_model_t model, void* context, int maxIterations,
                              double relativeTol, double absoluteTol, double* sumSq, int* status) {
    *status = 1;
    *sumSq = std::numeric_limits<double>::infinity();
    NormalEquations here;
    if (m < 1 || m > kMax || !model(context, params, here.jtj, here.jtr, &here.sumSq))
        return;
    *sumSq = here.sumSq;
    double damping = kStartDamping;
    for (int evaluation = 0; evaluation < maxIterations && damping <= kMostDamping;) {
        double step[kMax], trial[kMax], promise = 0.0;
        if (!FindStep(m, here, damping, step, &promise)) {
            damping *= kDampingFactor;
            continue;
        }
        if (promise <= relativeTol * here.sumSq + absoluteTol) {
            *status = 0;
            return;
        }
        for (int i = 0; i < m; ++i)
            trial[i] = params[i] + step[i];
        ++evaluation;
        NormalEquations there;
        if (!model(context, trial, there.jtj, there.jtr, &there.sumSq) || !(there.sumSq < here.sumSq)) {
            damping *= kDampingFactor;
            continue;
        }
        std::copy(trial, trial + m, params);
        here = there;
        *sumSq = here.sumSq;
        damping = std::max(kLeastDamping, damping / kDampingFactor);
    }
}
