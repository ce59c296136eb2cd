#include "tessera/kernel/MTX3.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "tessera/kernel/MTX4.h"

using Vex::Math::Point3;
using Vex::Math::TransformMatrix;
using Vex::Math::Vector3;

namespace {

template <int N>
void ExpectIdentity(const double (&m)[N][N], double tol) {
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j)
            EXPECT_NEAR(m[i][j], i == j ? 1.0 : 0.0, tol) << i << " " << j;
}

template <int N>
void Randomize(std::mt19937& rng, double (&m)[N][N]) {
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    for (auto& row : m)
        for (double& v : row)
            v = unit(rng);
}

TEST(MTX3, ProductAppliesTheFirstFactorFirst) {
    const double move[3][3] = {{1, 0, 5}, {0, 1, 0}, {0, 0, 1}},
                 turn[3][3] = {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}};
    double m[3][3];
    MTX3_multiply(move, turn, m);
    const Vector3 p{1, 0, 1};
    Vector3 q;
    MTX3_transform_vector(m, &p, &q); // (6, 0), then turned
    EXPECT_EQ(q.x, 0.0);
    EXPECT_EQ(q.y, 6.0);
    MTX3_transpose(m, m);
    EXPECT_EQ(m[2][1], 5.0);
    EXPECT_EQ(MTX3_determinant(turn), 1.0);
}

TEST(MTX3, InverseUndoes) {
    std::mt19937 rng(31);
    for (int trial = 0; trial < 50; ++trial) {
        double m[3][3], inverse[3][3];
        Randomize(rng, m);
        if (std::fabs(MTX3_determinant(m)) < 1e-2)
            continue;
        ASSERT_EQ(MTX3_invert(m, inverse), 1);
        EXPECT_NEAR(MTX3_determinant(m) * MTX3_determinant(inverse), 1.0, 1e-12);
        MTX3_multiply(m, inverse, m);
        ExpectIdentity(m, 1e-12);
    }
    double scaled[3][3] = {{1e-20, 0, 1e8}, {0, 1e20, 1e8}, {0, 0, 1}};
    EXPECT_EQ(MTX3_invert(scaled, scaled), 1); // scales and far translations are no singularity
    EXPECT_EQ(scaled[0][0], 1e20);
}

TEST(MTX3, SingularMatricesLeaveTheOutputAlone) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double singular[][3][3] = {{{0}},
                                     {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}},
                                     {{0.1, 0.2, 0.3}, {0.4, 0.5, 0.6}, {0.7, 0.8, 0.9}},
                                     {{1, 0, nan}, {0, 1, 0}, {0, 0, 1}}};
    for (const auto& m : singular) {
        double out[3][3] = {{42}};
        EXPECT_EQ(MTX3_invert(m, out), 0);
        EXPECT_EQ(out[0][0], 42);
    }
}

TEST(MTX4, InverseUndoes) {
    std::mt19937 rng(32);
    for (int trial = 0; trial < 100; ++trial) {
        TransformMatrix m, inverse;
        Randomize(rng, m.m);
        ASSERT_EQ(MTX4_invert(&m, &inverse), 1);
        double largest = 1.0;
        for (const auto& row : inverse.m)
            for (double v : row)
                largest = std::fmax(largest, std::fabs(v));
        MTX4_multiply(&m, &inverse, &m);
        ExpectIdentity(m.m, 1e-14 * largest * largest);
    }
    TransformMatrix far{{{1, 0, 0, 1e9}, {0, 1, 0, -1e9}, {0, 0, 1, 1e9}, {0, 0, 0, 1}}};
    EXPECT_EQ(MTX4_invert(&far, &far), 1);
    EXPECT_EQ(far.m[1][3], 1e9);
    TransformMatrix singular{
        {{0.1, 0.2, 0.3, 0.4}, {0.5, 0.6, 0.7, 0.8}, {0.9, 1, 1.1, 1.2}, {1.3, 1.4, 1.5, 1.6}}};
    EXPECT_EQ(MTX4_invert(&singular, &far), 0);
    EXPECT_EQ(far.m[1][3], 1e9);
}

TEST(MTX4, MakersMovePoints) {
    const Point3 centre{1, 2, 3};
    const Vector3 axis{0, 0, 9}, none{0, 0, 1e-11};
    TransformMatrix scale, turn, move, m;
    MTX4_make_scale(&centre, 2.0, &scale);
    ASSERT_EQ(MTX4_make_rotation(&centre, &axis, std::acos(0.0), &turn), 1);
    EXPECT_EQ(MTX4_make_rotation(&centre, &none, 1.0, &move), 0);
    MTX4_make_translation(&axis, &move);
    MTX4_multiply(&scale, &turn, &m);
    MTX4_multiply(&m, &move, &m);
    Point3 p{2, 2, 3};
    MTX4_transform_point(&m, &p, &p); // scaled to (3, 2, 3), turned to (1, 4, 3), lifted by 9
    EXPECT_NEAR(p.x, 1.0, 1e-15);
    EXPECT_NEAR(p.y, 4.0, 1e-15);
    EXPECT_NEAR(p.z, 12.0, 1e-15);
    // A turn keeps lengths and its axis, whatever the axis.
    const Vector3 slanted{1, -2, 0.5};
    MTX4_make_rotation(&centre, &slanted, 2.2, &turn);
    Point3 q{centre.x + slanted.x, centre.y + slanted.y, centre.z + slanted.z}, start{5, 6, -7};
    MTX4_transform_point(&turn, &q, &q);
    EXPECT_NEAR(q.y, centre.y + slanted.y, 1e-14);
    MTX4_transform_point(&turn, &start, &q);
    EXPECT_NEAR(std::hypot(q.x - 1, q.y - 2, q.z - 3), std::hypot(4, 4, 10), 1e-13);
    // The third root of a full turn, three times.
    MTX4_make_rotation(&centre, &slanted, 8.0 * std::atan(1.0) / 3.0, &turn);
    MTX4_multiply(&turn, &turn, &m);
    MTX4_multiply(&m, &turn, &m);
    ExpectIdentity(m.m, 1e-14);
    const TransformMatrix half{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 2}}};
    MTX4_transform_point(&half, &start, &q);
    EXPECT_EQ(q.x, 2.5);
}

} // namespace
