#include <algorithm>
#include <cmath>
#include <cstddef>

#include "tessera/kernel/NR.h"
#include "tessera/kernel/internal/CholeskyRows.h"

// Band solvers. bandec shifts every row so that its first kept element stands in column 0; after step k row k
// holds U(k, k) first. Exchanges may fill up to lower more diagonals on the right, hence the width of U.

namespace {

// Rows near the top start left of the matrix: shift them so that column 0 of row i is A(i, max(0, i -
// lower)), and zero every place that lies outside the matrix.
void AlignRows(int n, int lower, int upper, double* a) {
    const int width = lower + upper + 1;
    for (int i = 0; i < n; ++i) {
        double* row = a + static_cast<std::ptrdiff_t>(i) * width;
        const int shift = std::max(0, lower - i);
        const int end = std::min(width, n - i + lower);
        std::copy(row + std::min(shift, end), row + end, row);
        std::fill(row + std::max(0, end - shift), row + width, 0.0);
    }
}

} // namespace

int bandec(int n, int lower, int upper, double* a, double* l, int* perm, double* sign) {
    const int width = lower + upper + 1;
    const auto row = [a, width](int i) { return a + static_cast<std::ptrdiff_t>(i) * width; };
    AlignRows(n, lower, upper, a);
    *sign = 1.0;
    for (int k = 0; k < n; ++k) {
        const int last = std::min(n - 1, k + lower);
        int best = k;
        for (int i = k + 1; i <= last; ++i)
            if (std::fabs(row(i)[0]) > std::fabs(row(best)[0]))
                best = i;
        const double pivot = row(best)[0];
        if (!(std::fabs(pivot) > 0.0) || !std::isfinite(pivot))
            return 0;
        perm[k] = best;
        if (best != k) {
            *sign = -*sign;
            std::swap_ranges(row(k), row(k) + width, row(best));
        }
        for (int i = k + 1; i <= last; ++i) {
            double* target = row(i);
            const double factor = target[0] / pivot;
            l[static_cast<std::ptrdiff_t>(k) * lower + (i - k - 1)] = factor;
            for (int j = 1; j < width; ++j)
                target[j - 1] = target[j] - factor * row(k)[j];
            target[width - 1] = 0.0;
        }
    }
    return 1;
}

void banbks(int n, int lower, int upper, const double* a, const double* l, const int* perm, double* b) {
    const int width = lower + upper + 1;
    for (int k = 0; k < n; ++k) {
        std::swap(b[k], b[perm[k]]);
        const int last = std::min(n - 1, k + lower);
        for (int i = k + 1; i <= last; ++i)
            b[i] -= l[static_cast<std::ptrdiff_t>(k) * lower + (i - k - 1)] * b[k];
    }
    for (int i = n - 1; i >= 0; --i) {
        const double* row = a + static_cast<std::ptrdiff_t>(i) * width;
        const int count = std::min(width, n - i);
        for (int j = 1; j < count; ++j)
            b[i] -= row[j] * b[i + j];
        b[i] /= row[0];
    }
}

int NR_band_cholesky_decomp(int n, int half, double* a) {
    const std::ptrdiff_t width = static_cast<std::ptrdiff_t>(half) + 1;
    return CholeskyRows(n, half, [=](int i) { return a + i * width + (half - i); });
}

void NR_band_cholesky_solve(int n, int half, const double* l, int columns, double* b) {
    const std::ptrdiff_t width = static_cast<std::ptrdiff_t>(half) + 1;
    const auto element = [&](int i, int j) { return l[i * width + (half - i + j)]; };
    const auto row = [b, columns](int i) { return b + static_cast<std::ptrdiff_t>(i) * columns; };
    const auto subtract = [columns](double* from, const double* other, double factor) {
        for (int c = 0; c < columns; ++c)
            from[c] -= factor * other[c];
    };
    const auto divide = [columns](double* values, double by) {
        const double inverse = 1.0 / by;
        for (int c = 0; c < columns; ++c)
            values[c] *= inverse;
    };
    for (int i = 0; i < n; ++i) {
        for (int k = std::max(0, i - half); k < i; ++k)
            subtract(row(i), row(k), element(i, k));
        divide(row(i), element(i, i));
    }
    for (int i = n - 1; i >= 0; --i) {
        divide(row(i), element(i, i));
        for (int k = std::max(0, i - half); k < i; ++k)
            subtract(row(k), row(i), element(i, k));
    }
}
