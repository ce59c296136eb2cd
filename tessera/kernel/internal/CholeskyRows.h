// Cholesky factorisation in the storage of full and of band matrices alike.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

/// Overwrites the lower triangle of a symmetric matrix with L of A = L L^T, row by row, so that the inner
/// loop runs over consecutive elements.
///
/// @param half  elements (i, j) with i - j > half are zero and not stored; n - 1 for a full matrix.
/// @param rowOf rowOf(i)[j] is element (i, j).
/// @return 1 on success, 0 when A is not positive definite to rounding or not finite.
template <class RowOf>
int CholeskyRows(int n, int half, RowOf rowOf) {
    constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
    for (int i = 0; i < n; ++i) {
        const int first = std::max(0, i - half);
        double* row = rowOf(i);
        const double diagonal = row[i];
        for (int j = first; j <= i; ++j) {
            const double* other = rowOf(j);
            double value = row[j];
            for (int k = first; k < j; ++k)
                value -= row[k] * other[k];
            if (j < i)
                row[j] = value / other[j];
            else if (value > kEpsilon * diagonal && std::isfinite(value))
                row[i] = std::sqrt(value);
            else
                return 0;
        }
    }
    return 1;
}
