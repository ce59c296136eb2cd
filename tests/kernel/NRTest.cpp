#include "tessera/kernel/NR.h"

#include "tests/support/Test.h"

namespace {

struct Matrix {
    Matrix(int rowCount, int columnCount, std::vector<double> elements = {})
        : rows(rowCount), columns(columnCount), v(std::move(elements)) {
        v.resize(static_cast<std::size_t>(rows * columns));
    }
    double& operator()(int i, int j) { return v[i * columns + j]; }
    double operator()(int i, int j) const { return v[i * columns + j]; }
    double* Data() { return v.data(); }

    int rows, columns;
    std::vector<double> v;
};

Matrix operator*(const Matrix& a, const Matrix& b) {
    Matrix m(a.rows, b.columns);
    for (int i = 0; i < m.rows; ++i)
        for (int j = 0; j < m.columns; ++j) {
            long double sum = 0.0L;
            for (int k = 0; k < a.columns; ++k)
                sum += static_cast<long double>(a(i, k)) * b(k, j);
            m(i, j) = static_cast<double>(sum);
        }
    return m;
}

Matrix Transposed(const Matrix& a) {
    Matrix m(a.columns, a.rows);
    for (int i = 0; i < m.rows; ++i)
        for (int j = 0; j < m.columns; ++j)
            m(i, j) = a(j, i);
    return m;
}

Matrix Diagonal(const std::vector<double>& values) {
    const int n = static_cast<int>(values.size());
    Matrix m(n, n);
    for (int i = 0; i < n; ++i)
        m(i, i) = values[i];
    return m;
}

Matrix Identity(int n) {
    return Diagonal(std::vector<double>(n, 1.0));
}

Matrix Random(std::mt19937& rng, int rows, int columns) {
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    Matrix m(rows, columns);
    for (double& v : m.v)
        v = unit(rng);
    return m;
}

Matrix RandomSymmetric(std::mt19937& rng, int n) {
    const Matrix a = Random(rng, n, n);
    Matrix m = Transposed(a);
    for (std::size_t i = 0; i < m.v.size(); ++i)
        m.v[i] += a.v[i];
    return m;
}

Matrix RandomDefinite(std::mt19937& rng, int n, double shift) {
    const Matrix a = Random(rng, n, n);
    Matrix m = Transposed(a) * a;
    for (int i = 0; i < n; ++i)
        m(i, i) += shift;
    return m;
}

double Gap(const Matrix& a, const Matrix& b) {
    double largest = 0.0;
    for (std::size_t i = 0; i < a.v.size(); ++i)
        largest = std::max(largest, std::fabs(a.v[i] - b.v[i]));
    return largest;
}

// 1 for small matrices.
double SizeOf(const Matrix& m) {
    return std::max(1.0, Gap(m, Matrix(m.rows, m.columns)));
}

// Full matrix of a band in storage rows A(i, i - lower) ... A(i, i + upper); places outside hold junk.
Matrix Unpack(const Matrix& band, int lower) {
    Matrix m(band.rows, band.rows);
    for (int i = 0; i < m.rows; ++i)
        for (int k = 0; k < band.columns; ++k)
            if (i + k >= lower && i + k - lower < m.rows)
                m(i, i + k - lower) = band(i, k);
    return m;
}

TEST(NR, JacobiFindsOrthonormalEigenvectors) {
    std::mt19937 rng(1);
    for (int n = 1; n <= 9; ++n) {
        SCOPED_TRACE(n);
        const Matrix original = RandomSymmetric(rng, n);
        Matrix a = original, vectors(n, n);
        std::vector<double> values(n);
        ASSERT_EQ(NR_jacobi_eigen(n, a.Data(), 60, values.data(), vectors.Data()), 1);
        EXPECT_LT(Gap(original * vectors, vectors * Diagonal(values)), 2e-14 * n);
        EXPECT_LT(Gap(Transposed(vectors) * vectors, Identity(n)), 1e-14 * n);
    }
    // The small eigenvalue is 1e-20 to 20 digits.
    double graded[4] = {1.0, 1e-10, 1e-10, 2e-20}, values[6], vectors[36];
    ASSERT_EQ(NR_jacobi_eigen(2, graded, 60, values, vectors), 1);
    EXPECT_NEAR(std::min(values[0], values[1]) / 1e-20, 1.0, 1e-12);
    double zero[4] = {}, bad[4] = {1.0, NAN, 0.0, 1.0};
    EXPECT_TRUE(NR_jacobi_eigen(2, zero, 60, values, vectors) == 1 && values[0] == 0.0);
    EXPECT_EQ(NR_jacobi_eigen(2, bad, 60, values, vectors), 0);
    EXPECT_EQ(NR_jacobi_eigen(6, RandomSymmetric(rng, 6).Data(), 1, values, vectors), 0)
        << "one sweep is too few";
}

TEST(NR, GeneralizedEigenpairsSatisfyTheEquation) {
    std::mt19937 rng(3);
    for (int n = 1; n <= 7; ++n) {
        SCOPED_TRACE(n);
        const Matrix c = RandomSymmetric(rng, n), m = RandomDefinite(rng, n, 0.5);
        Matrix x(n, n), work(2 * n, n);
        std::vector<double> values(n);
        ASSERT_EQ(NR_generalized_eigen(n, c.v.data(), m.v.data(), 60, values.data(), x.Data(), work.Data()),
                  1);
        EXPECT_LT(Gap(c * x, m * x * Diagonal(values)), 2e-12);
        EXPECT_LT(Gap(Transposed(x) * m * x, Identity(n)), 1e-12);
    }
    const double c[4] = {1, 0, 0, 1}, singular[4] = {1, 1, 1, 1};
    double values[2], vectors[4], work[8];
    EXPECT_EQ(NR_generalized_eigen(2, c, singular, 60, values, vectors, work), 0);
}

TEST(NR, CholeskyAndLuSolve) {
    std::mt19937 rng(4);
    for (int n = 1; n <= 12; ++n) {
        SCOPED_TRACE(n);
        const Matrix definite = RandomDefinite(rng, n, 0.1), general = Random(rng, n, n),
                     b = Random(rng, n, 1);
        Matrix factor = definite, x = b;
        ASSERT_EQ(NR_cholesky_decomp(n, factor.Data()), 1);
        NR_cholesky_solve(n, factor.Data(), x.Data());
        EXPECT_LT(Gap(definite * x, b), 1e-12);

        factor = general;
        x = b;
        std::vector<int> perm(n);
        double sign = 0.0;
        ASSERT_EQ(ludcmp_a(n, factor.Data(), perm.data(), &sign), 1);
        lubksb_a(n, factor.Data(), perm.data(), x.Data());
        EXPECT_LT(Gap(general * x, b), 1e-13 * SizeOf(x));
    }
}

TEST(NR, LuPivotsAndKnowsTheDeterminant) {
    double a[9] = {0, 2, 1, 1, 1, 1, 2, 0, 3}; // needs an exchange at once; determinant -4
    double scaled[4] = {1, 1e20, 0, 1};        // badly scaled rows and columns are no singularity
    double det = 0.0, sign = 0.0;
    int perm[3];
    ASSERT_EQ(ludcmp_a(3, a, perm, &det), 1);
    EXPECT_NEAR(det * a[0] * a[4] * a[8], -4.0, 1e-14);
    EXPECT_EQ(ludcmp_a(2, scaled, perm, &sign), 1);
    double skewed[4] = {1, 1e20, 1, 1}, x[2] = {1e20, 2}; // the second row is the better pivot for its size
    EXPECT_EQ(ludcmp_a(2, skewed, perm, &sign), 1);
    lubksb_a(2, skewed, perm, x);
    EXPECT_TRUE(x[0] == 1.0 && x[1] == 1.0) << x[0];
}

TEST(NR, SingularMatricesAreRefused) {
    using Elements = std::vector<double>;
    double sign = 0.0;
    int perm[2];
    for (Elements m :
         {Elements{0, 0, 0, 0}, {1, 2, 2, 4}, {0.1, 1.0 / 3, 0.3, 3 * (1.0 / 3)}, {1, NAN, NAN, 1}})
        EXPECT_EQ(ludcmp_a(2, m.data(), perm, &sign), 0);
    for (Elements m : {Elements{1, 2, 2, 4},
                       {-1, 0, 0, 1},
                       {1, 2, 2, 1},
                       {1, 0, NAN, 1},
                       {0.1, 0.1 * 0.7, 0.1 * 0.7, 0.1 * 0.7 * 0.7}})
        EXPECT_EQ(NR_cholesky_decomp(2, m.data()), 0);
    double zeroColumn[4] = {9, 0, 0, 1}, indefinite[4] = {0, 1, 2, 1},
           l[2]; // columns (0, 0), [[1, 2], [2, 1]]
    EXPECT_EQ(bandec(2, 1, 0, zeroColumn, l, perm, &sign), 0);
    EXPECT_EQ(NR_band_cholesky_decomp(2, 1, indefinite), 0);
}

TEST(NR, BandLuMatchesTheFullMatrix) {
    std::mt19937 rng(5);
    for (const int n : {1, 2, 3, 7, 20})
        for (int trial = 0; trial < 16; ++trial) {
            const int lower = trial / 4, upper = trial % 4;
            SCOPED_TRACE(testing::Message() << n << " rows, " << lower << " + " << upper);
            Matrix band = Random(rng, n, lower + upper + 1), x = Random(rng, n, 1), l(n, lower + 1);
            const Matrix full = Unpack(band, lower), b = x;
            std::vector<int> perm(n);
            double sign = 0.0;
            ASSERT_EQ(bandec(n, lower, upper, band.Data(), l.Data(), perm.data(), &sign), 1);
            banbks(n, lower, upper, band.Data(), l.Data(), perm.data(), x.Data());
            EXPECT_LT(Gap(full * x, b), 1e-13 * SizeOf(x));
        }
}

TEST(NR, BandCholeskySolvesSeveralRightSides) {
    std::mt19937 rng(6);
    for (const int n : {1, 2, 5, 40})
        for (int half = 0; half <= 4; ++half) {
            SCOPED_TRACE(testing::Message() << n << " rows, half " << half);
            Matrix band = Random(rng, n, half + 1), x = Random(rng, n, 3);
            for (int i = 0; i < n; ++i)
                band(i, half) = 2.0 * half + 1.0;
            Matrix full = Unpack(band, half);
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < i; ++j)
                    full(j, i) = full(i, j);
            const Matrix b = x;
            ASSERT_EQ(NR_band_cholesky_decomp(n, half, band.Data()), 1);
            NR_band_cholesky_solve(n, half, band.Data(), 3, x.Data());
            EXPECT_LT(Gap(full * x, b), 1e-13);
        }
}

} // namespace
