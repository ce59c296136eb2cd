#include "tessera/kernel/MTX3.h"

#include <cmath>
#include <cstring>
#include <limits>

using Vex::Math::Vector3;

namespace {

// Cyclic successors: with them every cofactor comes out with its sign.
constexpr int kNext[3] = {1, 2, 0};
constexpr int kAfterNext[3] = {2, 0, 1};

// Five roundings on the way to the determinant.
constexpr double kDeterminantRounding = 5.0 * std::numeric_limits<double>::epsilon();

double Cofactor(const double m[3][3], int row, int col) {
    const int r1 = kNext[row], r2 = kAfterNext[row], c1 = kNext[col], c2 = kAfterNext[col];
    return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
}

// The sum of the magnitudes of the six products of the determinant.
double ProductSum(const double m[3][3]) {
    double sum = 0.0;
    for (int j = 0; j < 3; ++j) {
        const int c1 = kNext[j], c2 = kAfterNext[j];
        sum += std::fabs(m[0][j]) * (std::fabs(m[1][c1] * m[2][c2]) + std::fabs(m[1][c2] * m[2][c1]));
    }
    return sum;
}

} // namespace

void MTX3_identity(double m[3][3]) {
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            m[i][j] = i == j ? 1.0 : 0.0;
}

void MTX3_multiply(const double a[3][3], const double b[3][3], double out[3][3]) {
    double product[3][3];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            product[i][j] = b[i][0] * a[0][j] + b[i][1] * a[1][j] + b[i][2] * a[2][j];
    std::memcpy(out, product, sizeof product);
}

void MTX3_transpose(const double m[3][3], double out[3][3]) {
    double turned[3][3];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            turned[i][j] = m[j][i];
    std::memcpy(out, turned, sizeof turned);
}

double MTX3_determinant(const double m[3][3]) {
    return m[0][0] * Cofactor(m, 0, 0) + m[0][1] * Cofactor(m, 0, 1) + m[0][2] * Cofactor(m, 0, 2);
}

int MTX3_invert(const double m[3][3], double out[3][3]) {
    const double det = MTX3_determinant(m);
    if (!(std::fabs(det) > kDeterminantRounding * ProductSum(m)))
        return 0;
    double inverse[3][3];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            inverse[i][j] = Cofactor(m, j, i) / det;
    std::memcpy(out, inverse, sizeof inverse);
    return 1;
}

void MTX3_transform_vector(const double m[3][3], const Vector3* v, Vector3* out) {
    const Vector3 in = *v;
    out->x = m[0][0] * in.x + m[0][1] * in.y + m[0][2] * in.z;
    out->y = m[1][0] * in.x + m[1][1] * in.y + m[1][2] * in.z;
    out->z = m[2][0] * in.x + m[2][1] * in.y + m[2][2] * in.z;
}
