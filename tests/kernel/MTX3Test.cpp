#include "tessera/kernel/MTX3.h"

#include "tessera/kernel/MTX4.h"
#include "tests/support/Test.h"

using Vex::Math::Point3;
using Vex::Math::TransformMatrix;
using Vex::Math::Vector3;

namespace {

template <int N>
double LargestDeviationFromIdentity(const double (&m)[N][N]) {
    double largest = 0.0;
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j)
            largest = std::fmax(largest, std::fabs(m[i][j] - (i == j ? 1.0 : 0.0)));
    return largest;
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
    const Vector3 p{1, 0, 1};
    double m[3][3];
    Vector3 q;
    MTX3_multiply(move, turn, m);
    MTX3_transform_vector(m, &p, &q); // (6, 0), then turned
    EXPECT_TRUE(q.x == 0.0 && q.y == 6.0);
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
        EXPECT_LT(LargestDeviationFromIdentity(m), 1e-12);
    }
    double scaled[3][3] = {{1e-20, 0, 1e8}, {0, 1e20, 1e8}, {0, 0, 1}};
    EXPECT_EQ(MTX3_invert(scaled, scaled), 1); // scales and far translations are no singularity
    EXPECT_EQ(scaled[0][0], 1e20);
    const double singular[][3][3] = {{{0}},
                                     {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}},
                                     {{0.1, 0.2, 0.3}, {0.4, 0.5, 0.6}, {0.7, 0.8, 0.9}},
                                     {{1, 0, NAN}, {0, 1, 0}, {0, 0, 1}}};
    for (const auto& m : singular) {
        double out[3][3] = {{42}};
        EXPECT_TRUE(MTX3_invert(m, out) == 0 && out[0][0] == 42) << "the output is left alone";
    }
}

TEST(MTX4, InverseUndoes) {
    std::mt19937 rng(32);
    for (int trial = 0; trial < 100; ++trial) {
        TransformMatrix m, inverse;
        Randomize(rng, m.m);
        ASSERT_EQ(MTX4_invert(&m, &inverse), 1);
        const double size = 1.0 + LargestDeviationFromIdentity(inverse.m);
        MTX4_multiply(&m, &inverse, &m);
        EXPECT_LT(LargestDeviationFromIdentity(m.m), 1e-14 * size * size);
    }
    TransformMatrix far{{{1, 0, 0, 1e9}, {0, 1, 0, -1e9}, {0, 0, 1, 1e9}, {0, 0, 0, 1}}};
    EXPECT_TRUE(MTX4_invert(&far, &far) == 1 && far.m[1][3] == 1e9);
    const TransformMatrix singular{
        {{0.1, 0.2, 0.3, 0.4}, {0.5, 0.6, 0.7, 0.8}, {0.9, 1, 1.1, 1.2}, {1.3, 1.4, 1.5, 1.6}}};
    EXPECT_TRUE(MTX4_invert(&singular, &far) == 0 && far.m[1][3] == 1e9);
}

TEST(MTX4, MakersMovePoints) {
    const Point3 centre{1, 2, 3}, start{5, 6, -7};
    const Vector3 axis{0, 0, 9}, none{0, 0, 1e-11}, slanted{1, -2, 0.5};
    TransformMatrix scale, turn, move, m;
    MTX4_make_scale(&centre, 2.0, &scale);
    ASSERT_EQ(MTX4_make_rotation(&centre, &axis, std::numbers::pi / 2, &turn), 1);
    EXPECT_EQ(MTX4_make_rotation(&centre, &none, 1.0, &move), 0);
    MTX4_make_translation(&axis, &move);
    MTX4_multiply(&scale, &turn, &m);
    MTX4_multiply(&m, &move, &m);
    Point3 p{2, 2, 3}, q;
    MTX4_transform_point(&m, &p, &p); // scaled to (3, 2, 3), turned to (1, 4, 3), lifted by 9
    EXPECT_NEAR(std::hypot(p.x - 1, p.y - 4, p.z - 12), 0.0, 1e-15);
    // A turn keeps lengths and its axis; the third root of a full turn, three times, is none.
    MTX4_make_rotation(&centre, &slanted, 2.0 * std::numbers::pi / 3.0, &turn);
    Point3 onAxis{centre.x + slanted.x, centre.y + slanted.y, centre.z + slanted.z};
    MTX4_transform_point(&turn, &onAxis, &onAxis);
    EXPECT_NEAR(onAxis.y, centre.y + slanted.y, 1e-14);
    MTX4_transform_point(&turn, &start, &q);
    EXPECT_NEAR(std::hypot(q.x - 1, q.y - 2, q.z - 3), std::hypot(4, 4, 10), 1e-13);
    MTX4_multiply(&turn, &turn, &m);
    MTX4_multiply(&m, &turn, &m);
    EXPECT_LT(LargestDeviationFromIdentity(m.m), 1e-14);
    const TransformMatrix half{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 2}}};
    MTX4_transform_point(&half, &start, &q);
    EXPECT_EQ(q.x, 2.5);
}

} // namespace
