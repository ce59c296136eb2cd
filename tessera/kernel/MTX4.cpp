#include "tessera/kernel/MTX4.h"

#include <cmath>
#include <limits>

#include "tessera/kernel/VEC3.h"

// The inverse is the adjugate over the determinant, both from the 2 x 2 minors of the upper and the lower two
// rows (Laplace expansion): no pivoting, and the products that make the determinant bound its rounding.

using Vex::Math::Point3;
using Vex::Math::TransformMatrix;
using Vex::Math::Vector3;

namespace {

constexpr double kDeterminantRounding = 8.0 * std::numeric_limits<double>::epsilon();
constexpr double kShortestAxis = 1e-10; // model units, fixed
constexpr int kPairs[6][2] = {{0, 1}, {0, 2}, {0, 3}, {1, 2}, {1, 3}, {2, 3}};
constexpr double kPairSign[6] = {1, -1, 1, 1, -1, 1}; // pair k goes with pair 5 - k

// Minor k of rows r and r + 1, and the sum of its products' magnitudes.
struct Minors {
    double value[6], bound[6];
    Minors(const TransformMatrix& m, int r) {
        for (int k = 0; k < 6; ++k) {
            const int i = kPairs[k][0], j = kPairs[k][1];
            const double p = m.m[r][i] * m.m[r + 1][j], q = m.m[r][j] * m.m[r + 1][i];
            value[k] = p - q;
            bound[k] = std::fabs(p) + std::fabs(q);
        }
    }
    double At(int i, int j) const {
        for (int k = 0; k < 6; ++k)
            if (kPairs[k][0] == i && kPairs[k][1] == j)
                return value[k];
        return 0.0;
    }
};

// Cofactor of element (row, col): expansion of its 3 x 3 minor along the row that shares its half.
double Cofactor(const TransformMatrix& m, const Minors& otherHalf, int row, int col) {
    const int partner = row ^ 1;
    int c[3], count = 0;
    for (int j = 0; j < 4; ++j)
        if (j != col)
            c[count++] = j;
    const double* r = m.m[partner];
    const double minor = r[c[0]] * otherHalf.At(c[1], c[2]) - r[c[1]] * otherHalf.At(c[0], c[2]) +
                         r[c[2]] * otherHalf.At(c[0], c[1]);
    return (row + col) % 2 == 0 ? minor : -minor;
}

} // namespace

void MTX4_identity(TransformMatrix* out) {
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            out->m[i][j] = i == j ? 1.0 : 0.0;
}

void MTX4_multiply(const TransformMatrix* a, const TransformMatrix* b, TransformMatrix* out) {
    TransformMatrix product;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            product.m[i][j] = b->m[i][0] * a->m[0][j] + b->m[i][1] * a->m[1][j] + b->m[i][2] * a->m[2][j] +
                              b->m[i][3] * a->m[3][j];
    *out = product;
}

int MTX4_invert(const TransformMatrix* m, TransformMatrix* out) {
    const Minors upper(*m, 0), lower(*m, 2);
    double determinant = 0.0, bound = 0.0;
    for (int k = 0; k < 6; ++k) {
        determinant += kPairSign[k] * upper.value[k] * lower.value[5 - k];
        bound += upper.bound[k] * lower.bound[5 - k];
    }
    if (!(std::fabs(determinant) > kDeterminantRounding * bound))
        return 0;
    TransformMatrix inverse;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            inverse.m[i][j] = Cofactor(*m, j < 2 ? lower : upper, j, i) / determinant;
    *out = inverse;
    return 1;
}

void MTX4_transform_point(const TransformMatrix* m, const Point3* p, Point3* out) {
    const Point3 in = *p;
    const auto row = [&](int i) {
        return m->m[i][0] * in.x + m->m[i][1] * in.y + m->m[i][2] * in.z + m->m[i][3];
    };
    const double w = row(3);
    *out = {row(0) / w, row(1) / w, row(2) / w};
}

void MTX4_make_translation(const Vector3* v, TransformMatrix* out) {
    MTX4_identity(out);
    out->m[0][3] = v->x;
    out->m[1][3] = v->y;
    out->m[2][3] = v->z;
}

void MTX4_make_scale(const Point3* centre, double factor, TransformMatrix* out) {
    const Vector3 shift{(1.0 - factor) * centre->x, (1.0 - factor) * centre->y, (1.0 - factor) * centre->z};
    MTX4_make_translation(&shift, out);
    for (int i = 0; i < 3; ++i)
        out->m[i][i] = factor;
}

int MTX4_make_rotation(const Point3* centre, const Vector3* axis, double angle, TransformMatrix* out) {
    Vector3 unit;
    double length = 0.0;
    if (!VEC3_unitize(axis, kShortestAxis, &length, &unit))
        return 0;
    // Rodrigues: c I + s [u]x + (1 - c) u u^T, then the centre put back.
    const double u[3] = {unit.x, unit.y, unit.z}, at[3] = {centre->x, centre->y, centre->z};
    const double c = std::cos(angle), s = std::sin(angle);
    const double cross[3][3] = {{0.0, -u[2], u[1]}, {u[2], 0.0, -u[0]}, {-u[1], u[0], 0.0}};
    MTX4_identity(out);
    for (int i = 0; i < 3; ++i) {
        double moved = 0.0;
        for (int j = 0; j < 3; ++j) {
            out->m[i][j] = (i == j ? c : 0.0) + s * cross[i][j] + (1.0 - c) * u[i] * u[j];
            moved += out->m[i][j] * at[j];
        }
        out->m[i][3] = at[i] - moved;
    }
    return 1;
}
