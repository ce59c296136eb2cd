#include "tessera/kernel/NR.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace {

using Matrix = std::vector<double>; // n x n, row by row

Matrix RandomMatrix(std::mt19937& rng, int n) {
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    Matrix m(static_cast<std::size_t>(n * n));
    for (double& v : m)
        v = unit(rng);
    return m;
}

Matrix RandomSymmetric(std::mt19937& rng, int n) {
    Matrix m = RandomMatrix(rng, n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < i; ++j)
            m[i * n + j] = m[j * n + i];
    return m;
}

// A^T A + shift I.
Matrix RandomDefinite(std::mt19937& rng, int n, double shift) {
    const Matrix a = RandomMatrix(rng, n);
    Matrix m(a.size());
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            for (int k = 0; k < n; ++k)
                m[i * n + j] += a[k * n + i] * a[k * n + j];
            m[i * n + j] += i == j ? shift : 0.0;
        }
    return m;
}

double LargestResidual(const Matrix& m, const std::vector<double>& x, const std::vector<double>& b) {
    const int n = static_cast<int>(b.size());
    double largest = 0.0;
    for (int i = 0; i < n; ++i) {
        long double sum = -static_cast<long double>(b[i]);
        for (int j = 0; j < n; ++j)
            sum += static_cast<long double>(m[i * n + j]) * x[j];
        largest = std::max(largest, std::fabs(static_cast<double>(sum)));
    }
    return largest;
}

// 1 for small vectors.
double SizeOf(const std::vector<double>& x) {
    double size = 1.0;
    for (double v : x)
        size = std::max(size, std::fabs(v));
    return size;
}

// Column j of a matrix of so many columns.
std::vector<double> Column(const Matrix& m, int columns, int j) {
    std::vector<double> column;
    for (std::size_t i = j; i < m.size(); i += columns)
        column.push_back(m[i]);
    return column;
}

// Full matrix of a band in storage rows A(i, i - lower) ... A(i, i + upper); places outside hold junk.
Matrix Unpack(const std::vector<double>& band, int n, int lower, int upper) {
    Matrix m(static_cast<std::size_t>(n * n));
    for (int i = 0; i < n; ++i)
        for (int j = std::max(0, i - lower); j <= std::min(n - 1, i + upper); ++j)
            m[i * n + j] = band[i * (lower + upper + 1) + j - i + lower];
    return m;
}

TEST(NR, JacobiFindsOrthonormalEigenvectors) {
    std::mt19937 rng(1);
    for (int n = 1; n <= 9; ++n) {
        SCOPED_TRACE(n);
        const Matrix original = RandomSymmetric(rng, n);
        Matrix a = original, vectors(a.size());
        std::vector<double> values(n);
        ASSERT_EQ(NR_jacobi_eigen(n, a.data(), 60, values.data(), vectors.data()), 1);
        for (int j = 0; j < n; ++j) {
            const std::vector<double> x = Column(vectors, n, j);
            std::vector<double> scaled = x;
            for (double& v : scaled)
                v *= values[j];
            EXPECT_LT(LargestResidual(original, x, scaled), 1e-14 * n);
            for (int k = 0; k <= j; ++k) {
                double dot = 0.0;
                for (int i = 0; i < n; ++i)
                    dot += vectors[i * n + j] * vectors[i * n + k];
                EXPECT_NEAR(dot, j == k ? 1.0 : 0.0, 1e-14 * n);
            }
        }
    }
}

TEST(NR, JacobiKeepsTinyEigenvaluesOfGradedMatrices) {
    // [[1, 1e-10], [1e-10, 2e-20]]: the small eigenvalue is 1e-20 to 20 digits.
    double a[4] = {1.0, 1e-10, 1e-10, 2e-20}, values[2], vectors[4];
    ASSERT_EQ(NR_jacobi_eigen(2, a, 60, values, vectors), 1);
    EXPECT_NEAR(std::min(values[0], values[1]) / 1e-20, 1.0, 1e-12);
}

TEST(NR, JacobiReportsItsLimitAndBadInput) {
    std::mt19937 rng(2);
    Matrix a = RandomSymmetric(rng, 6), vectors(a.size());
    std::vector<double> values(6);
    EXPECT_EQ(NR_jacobi_eigen(6, a.data(), 1, values.data(), vectors.data()), 0);
    double bad[4] = {1.0, std::numeric_limits<double>::quiet_NaN(), 0.0, 1.0};
    EXPECT_EQ(NR_jacobi_eigen(2, bad, 60, values.data(), vectors.data()), 0);
    double zero[4] = {}, zeroVectors[4];
    EXPECT_EQ(NR_jacobi_eigen(2, zero, 60, values.data(), zeroVectors), 1);
    EXPECT_EQ(values[0], 0.0);
}

TEST(NR, GeneralizedEigenpairsSatisfyTheEquation) {
    std::mt19937 rng(3);
    for (int n = 1; n <= 7; ++n) {
        SCOPED_TRACE(n);
        const Matrix c = RandomSymmetric(rng, n), m = RandomDefinite(rng, n, 0.5);
        Matrix vectors(c.size()), work(2 * c.size());
        std::vector<double> values(n);
        ASSERT_EQ(NR_generalized_eigen(n, c.data(), m.data(), 60, values.data(), vectors.data(), work.data()),
                  1);
        for (int j = 0; j < n; ++j) {
            const std::vector<double> x = Column(vectors, n, j);
            Matrix pencil = c;
            double norm = 0.0;
            for (int i = 0; i < n; ++i)
                for (int k = 0; k < n; ++k) {
                    pencil[i * n + k] -= values[j] * m[i * n + k];
                    norm += x[i] * m[i * n + k] * x[k];
                }
            EXPECT_LT(LargestResidual(pencil, x, std::vector<double>(n)), 1e-12);
            EXPECT_NEAR(norm, 1.0, 1e-12);
        }
    }
    const double c[4] = {1, 0, 0, 1}, singular[4] = {1, 1, 1, 1};
    double values[2], vectors[4], work[8];
    EXPECT_EQ(NR_generalized_eigen(2, c, singular, 60, values, vectors, work), 0);
}

TEST(NR, CholeskyAndLuSolve) {
    std::mt19937 rng(4);
    for (int n = 1; n <= 12; ++n) {
        SCOPED_TRACE(n);
        const std::vector<double> b = Column(RandomMatrix(rng, n), n, 0);
        const Matrix definite = RandomDefinite(rng, n, 0.1), general = RandomMatrix(rng, n);
        Matrix factor = definite;
        std::vector<double> x = b;
        ASSERT_EQ(NR_cholesky_decomp(n, factor.data()), 1);
        NR_cholesky_solve(n, factor.data(), x.data());
        EXPECT_LT(LargestResidual(definite, x, b), 1e-12);

        factor = general;
        x = b;
        std::vector<int> perm(n);
        double sign = 0.0;
        ASSERT_EQ(ludcmp_a(n, factor.data(), perm.data(), &sign), 1);
        lubksb_a(n, factor.data(), perm.data(), x.data());
        EXPECT_LT(LargestResidual(general, x, b), 1e-13 * SizeOf(x));
    }
}

TEST(NR, LuPivotsAndKnowsTheDeterminant) {
    double a[9] = {0, 2, 1, 1, 1, 1, 2, 0, 3}; // needs an exchange at once; determinant -4
    double det = 0.0;
    int perm[3];
    ASSERT_EQ(ludcmp_a(3, a, perm, &det), 1);
    for (int i = 0; i < 3; ++i)
        det *= a[4 * i];
    EXPECT_NEAR(det, -4.0, 1e-14);
    // Badly scaled rows and columns are no singularity.
    double scaled[4] = {1, 1e20, 0, 1};
    EXPECT_EQ(ludcmp_a(2, scaled, perm, &det), 1);
}

TEST(NR, SingularMatricesAreRefused) {
    const double third = 1.0 / 3.0, nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<Matrix> singular = {
        {0, 0, 0, 0}, {1, 2, 2, 4}, {0.1, third, 0.3, 3 * third}, {1, nan, nan, 1}};
    for (const Matrix& m : singular) {
        Matrix a = m;
        int perm[2];
        double sign = 0.0;
        EXPECT_EQ(ludcmp_a(2, a.data(), perm, &sign), 0);
    }
    for (Matrix m : {Matrix{1, 2, 2, 4}, Matrix{-1, 0, 0, 1}, Matrix{1, 2, 2, 1}, Matrix{1, 0, nan, 1}}) {
        EXPECT_EQ(NR_cholesky_decomp(2, m.data()), 0);
    }
}

TEST(NR, BandLuMatchesTheFullMatrix) {
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    for (int n : {1, 2, 3, 7, 20})
        for (int lower = 0; lower <= 3; ++lower)
            for (int upper = 0; upper <= 3; ++upper) {
                SCOPED_TRACE(testing::Message() << n << " rows, " << lower << " + " << upper);
                std::vector<double> band(static_cast<std::size_t>(n * (lower + upper + 1)));
                for (double& v : band)
                    v = unit(rng);
                const Matrix full = Unpack(band, n, lower, upper);
                std::vector<double> b(n), l(static_cast<std::size_t>(n * lower) + 1);
                for (double& v : b)
                    v = unit(rng);
                std::vector<double> x = b;
                std::vector<int> perm(n);
                double sign = 0.0;
                ASSERT_EQ(bandec(n, lower, upper, band.data(), l.data(), perm.data(), &sign), 1);
                banbks(n, lower, upper, band.data(), l.data(), perm.data(), x.data());
                EXPECT_LT(LargestResidual(full, x, b), 1e-13 * SizeOf(x));
            }
    double zeroColumn[4] = {9, 0, 0, 1}, l[2], sign = 0.0; // lower 1: column 0 is zero
    int perm[2];
    EXPECT_EQ(bandec(2, 1, 0, zeroColumn, l, perm, &sign), 0);
}

TEST(NR, BandCholeskySolvesSeveralRightSides) {
    std::mt19937 rng(6);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    for (int n : {1, 2, 5, 40})
        for (int half = 0; half <= 4; ++half) {
            SCOPED_TRACE(testing::Message() << n << " rows, half " << half);
            std::vector<double> band(static_cast<std::size_t>(n * (half + 1)));
            for (int i = 0; i < n; ++i)
                for (int j = 0; j <= half; ++j)
                    band[i * (half + 1) + j] = j == half ? 2.0 * half + 1.0 : unit(rng);
            Matrix full = Unpack(band, n, half, 0);
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < i; ++j)
                    full[j * n + i] = full[i * n + j];
            std::vector<double> b(static_cast<std::size_t>(3 * n));
            for (double& v : b)
                v = unit(rng);
            std::vector<double> x = b;
            ASSERT_EQ(NR_band_cholesky_decomp(n, half, band.data()), 1);
            NR_band_cholesky_solve(n, half, band.data(), 3, x.data());
            for (int c = 0; c < 3; ++c)
                EXPECT_LT(LargestResidual(full, Column(x, 3, c), Column(b, 3, c)), 1e-13);
        }
    double indefinite[4] = {0, 1, 2, 1}; // [[1, 2], [2, 1]]
    EXPECT_EQ(NR_band_cholesky_decomp(2, 1, indefinite), 0);
}

} // namespace
