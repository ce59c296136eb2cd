#include "tessera/kernel/NR.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "tessera/kernel/internal/CholeskyRows.h"

// Factorisations and triangular solves of full matrices. Row-oriented throughout, so that the inner loops run
// over consecutive elements.

namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

double* Row(double* a, int n, int i) {
    return a + static_cast<std::ptrdiff_t>(i) * n;
}
const double* Row(const double* a, int n, int i) {
    return a + static_cast<std::ptrdiff_t>(i) * n;
}

// b := L^-1 b.
void SolveLower(int n, const double* l, double* b) {
    for (int i = 0; i < n; ++i) {
        const double* row = Row(l, n, i);
        for (int k = 0; k < i; ++k)
            b[i] -= row[k] * b[k];
        b[i] /= row[i];
    }
}

// b := L^-T b, column by column of L^T, which are rows of L.
void SolveLowerTransposed(int n, const double* l, double* b) {
    for (int i = n - 1; i >= 0; --i) {
        const double* row = Row(l, n, i);
        b[i] /= row[i];
        for (int k = 0; k < i; ++k)
            b[k] -= row[k] * b[i];
    }
}

void Transpose(int n, double* a) {
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < i; ++j)
            std::swap(Row(a, n, i)[j], Row(a, n, j)[i]);
}

// Largest magnitude of each row, inverted; 0 for a row of zeros or with a NaN: no pivot can come from it.
double InverseScale(int n, const double* row) {
    double largest = 0.0;
    for (int j = 0; j < n; ++j) {
        if (std::isnan(row[j]))
            return 0.0;
        largest = std::fmax(largest, std::fabs(row[j]));
    }
    return largest > 0.0 ? 1.0 / largest : 0.0;
}

// Element (i, j) less the products of the factors found so far. bound gets the sum of all magnitudes.
double Reduced(int n, const double* a, int i, int j, int count, double* bound) {
    double value = Row(a, n, i)[j], sum = std::fabs(value);
    for (int k = 0; k < count; ++k) {
        const double product = Row(a, n, i)[k] * Row(a, n, k)[j];
        value -= product;
        sum += std::fabs(product);
    }
    *bound = sum;
    return value;
}

} // namespace

int NR_generalized_eigen(int n, const double* c, const double* m, int maxSweeps, double* values,
                         double* vectors, double* work) {
    const std::ptrdiff_t size = static_cast<std::ptrdiff_t>(n) * n;
    double *l = work, *reduced = work + size;
    for (std::ptrdiff_t i = 0; i < size; ++i) {
        l[i] = m[i];
        reduced[i] = c[i];
    }
    if (!NR_cholesky_decomp(n, l))
        return 0;
    // L^-1 C is formed on the rows of C^T = C; transposed and solved again it is L^-1 C L^-T.
    for (int pass = 0; pass < 2; ++pass) {
        for (int i = 0; i < n; ++i)
            SolveLower(n, l, Row(reduced, n, i));
        Transpose(n, reduced);
    }
    if (!NR_jacobi_eigen(n, reduced, maxSweeps, values, vectors))
        return 0;
    Transpose(n, vectors);
    for (int i = 0; i < n; ++i)
        SolveLowerTransposed(n, l, Row(vectors, n, i));
    Transpose(n, vectors);
    return 1;
}

int NR_cholesky_decomp(int n, double* a) {
    return CholeskyRows(n, n - 1, [=](int i) { return Row(a, n, i); });
}

void NR_cholesky_solve(int n, const double* l, double* b) {
    SolveLower(n, l, b);
    SolveLowerTransposed(n, l, b);
}

int ludcmp_a(int n, double* a, int* perm, double* sign) {
    *sign = 1.0;
    for (int j = 0; j < n; ++j) {
        double bound = 0.0;
        for (int i = 1; i < j; ++i)
            Row(a, n, i)[j] = Reduced(n, a, i, j, i, &bound);
        int best = -1;
        double bestScaled = 0.0, bestBound = 0.0;
        for (int i = j; i < n; ++i) {
            // The scale is that of the row's part still to be eliminated; a row exchange needs no
            // bookkeeping.
            const double scale = InverseScale(n - j, Row(a, n, i) + j);
            double& element = Row(a, n, i)[j];
            element = Reduced(n, a, i, j, j, &bound);
            const double scaled = std::fabs(element) * scale;
            if (scaled > bestScaled) {
                bestScaled = scaled;
                bestBound = bound;
                best = i;
            }
        }
        if (best < 0 || !(std::fabs(Row(a, n, best)[j]) > n * kEpsilon * bestBound))
            return 0;
        perm[j] = best;
        if (best != j) {
            *sign = -*sign;
            for (int k = 0; k < n; ++k)
                std::swap(Row(a, n, best)[k], Row(a, n, j)[k]);
        }
        for (int i = j + 1; i < n; ++i)
            Row(a, n, i)[j] /= Row(a, n, j)[j];
    }
    return 1;
}

void lubksb_a(int n, const double* lu, const int* perm, double* b) {
    for (int i = 0; i < n; ++i)
        std::swap(b[i], b[perm[i]]);
    for (int i = 0; i < n; ++i)
        for (int k = 0; k < i; ++k)
            b[i] -= Row(lu, n, i)[k] * b[k];
    for (int i = n - 1; i >= 0; --i) {
        for (int k = i + 1; k < n; ++k)
            b[i] -= Row(lu, n, i)[k] * b[k];
        b[i] /= Row(lu, n, i)[i];
    }
}
