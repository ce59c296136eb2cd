#include <algorithm>
#include <cmath>
#include <limits>

#include "tessera/kernel/LSFIT.h"
#include "tessera/kernel/NR.h"

// Levenberg-Marquardt: (H + mu D) step = -J^T r, with D the diagonal of H. The first steps are undamped; mu
// starts with the first step that does not lower the sum, rises tenfold with every other one and falls
// tenfold with every step that does, to end undamped again. Whether a minimum is reached is asked of the
// undamped step: where a flat valley bends, damped ones get short long before its floor. A floor under D
// keeps a parameter that has no influence (the angle of a circle) from making the matrix singular.

namespace {

constexpr int kMax = LSFIT_MAX_PARAMETERS;
constexpr double kFirstDamping = 1e-4;
constexpr double kLeastDamping = 1e-8; // less is none
constexpr double kMostDamping = 1e12;
constexpr double kDampingFactor = 10.0;
constexpr int kMostHalvings = 10;     // of a step to inadmissible parameters, before it is turned by damping
constexpr double kFastFall = 1e-2;    // of the promise, from step to step
constexpr double kSquareSlack = 10.0; // by which the square of a share may be too small a guess
constexpr double kDiagonalFloor = 1e-14; // of the largest diagonal element

constexpr int kHessian = 2; // kind of a model's matrix

struct NormalEquations {
    double jtj[kMax * kMax], jtr[kMax], sumSq;
    int kind; // what the model answered

    int Evaluate(LSFIT_model_t model, void* context, const double* params) {
        return kind = model(context, params, jtj, jtr, &sumSq);
    }
};

// The damped step and the decrease of the sum that the linear model promises for it; false without a step.
bool FindStep(int m, const NormalEquations& at, double damping, double* step, double* promise) {
    double matrix[kMax * kMax], largest = 0.0;
    for (int i = 0; i < m; ++i)
        largest = std::max(largest, at.jtj[i * m + i]);
    const double floor = kDiagonalFloor * largest;
    for (int i = 0; i < m; ++i) {
        std::copy(at.jtj + i * m, at.jtj + i * m + i + 1, matrix + i * m);
        matrix[i * m + i] += damping * std::max(at.jtj[i * m + i], floor) + floor;
        step[i] = -at.jtr[i];
    }
    if (!NR_cholesky_decomp(m, matrix))
        return false;
    NR_cholesky_solve(m, matrix, step);
    // The linear model falls by -2 g.s - s^T H s, at most -2 g.s.
    *promise = 0.0;
    for (int i = 0; i < m; ++i)
        *promise -= 2.0 * at.jtr[i] * step[i];
    return std::isfinite(*promise);
}

bool IsMinimum(int m, const NormalEquations& at, double tol) {
    double step[kMax], promise = 0.0;
    return FindStep(m, at, 0.0, step, &promise) && promise <= tol;
}

// What the next step will promise: each step of Gauss and Newton is the same share of the one before, each
// of Newton's the square of the share that the one before was. Promises are squares of steps.
double NextPromise(const NormalEquations& at, double promise, double promiseBefore) {
    const double share = promise / promiseBefore;
    return promise * share * (at.kind == kHessian ? kSquareSlack * share : 1.0);
}

double Raise(double damping) {
    return damping > 0.0 ? damping * kDampingFactor : kFirstDamping;
}

double Lower(double damping) {
    return damping > kLeastDamping ? damping / kDampingFactor : 0.0;
}

} // namespace

void LSFIT_nonlinear_function(int m, double* params, LSFIT_model_t model, void* context, int maxIterations,
                              double relativeTol, double absoluteTol, double* sumSq, int* status) {
    *status = 1;
    *sumSq = std::numeric_limits<double>::infinity();
    NormalEquations here;
    if (m < 1 || m > kMax || !here.Evaluate(model, context, params))
        return;
    *sumSq = here.sumSq;
    double damping = 0.0;
    double promiseBefore = 0.0; // of the undamped step that led here, 0 when it was damped
    for (int evaluation = 0; damping <= kMostDamping;) {
        double step[kMax], trial[kMax], promise = 0.0;
        if (!FindStep(m, here, damping, step, &promise)) {
            damping = Raise(damping);
            continue;
        }
        const double tol = relativeTol * here.sumSq + absoluteTol;
        if (promise <= tol && (damping == 0.0 || IsMinimum(m, here, tol))) {
            *status = 0;
            return;
        }
        for (int i = 0; i < m; ++i)
            trial[i] = params[i] + step[i];
        // Promises that fall so fast are kept: the next one will be below tol.
        if (damping == 0.0 && promise <= kFastFall * promiseBefore &&
            NextPromise(here, promise, promiseBefore) <= tol) {
            std::copy(trial, trial + m, params);
            *sumSq = here.sumSq - 0.5 * promise;
            *status = 0;
            return;
        }
        if (evaluation == maxIterations)
            return;
        ++evaluation;
        NormalEquations there;
        bool isAdmissible = there.Evaluate(model, context, trial) != 0;
        promiseBefore = isAdmissible && damping == 0.0 ? promise : 0.0;
        for (int halving = 0; halving < kMostHalvings && !isAdmissible; ++halving) {
            for (int i = 0; i < m; ++i)
                trial[i] = params[i] + 0.5 * (trial[i] - params[i]);
            isAdmissible = there.Evaluate(model, context, trial) != 0;
        }
        if (!isAdmissible || !(there.sumSq < here.sumSq)) {
            damping = Raise(damping);
            promiseBefore = 0.0;
            continue;
        }
        std::copy(trial, trial + m, params);
        here = there;
        *sumSq = here.sumSq;
        damping = Lower(damping);
    }
}
