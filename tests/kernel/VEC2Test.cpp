#include "tessera/kernel/VEC2.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tessera/kernel/PNT3.h"
#include "tessera/kernel/VEC3.h"

using Vex::Math::Point3;
using Vex::Math::Vector2;
using Vex::Math::Vector3;

namespace {

TEST(VEC2, PerpendicularPutsTheLargerComponentFirst) {
    const struct {
        Vector2 v, out;
        int result;
    } rows[] = {{{3, 1}, {1, -3}, 1},
                {{1, 3}, {-3, 1}, 1},
                {{2, 2}, {2, -2}, 1},
                {{-1, -3}, {3, -1}, 1},
                {{0, 0}, {0, 0}, 0},
                {{0.99e-10, 0}, {0, 0}, 0},
                {{1.01e-10, 0}, {0, -1.01e-10}, 1}};
    for (const auto& row : rows) {
        Vector2 out = row.v; // in place
        EXPECT_EQ(VEC2_ask_perpendicular(&out, &out), row.result);
        EXPECT_EQ(out.x, row.out.x);
        EXPECT_EQ(out.y, row.out.y);
    }
}

TEST(VEC2, UnitizeIncludesItsTolerance) {
    double length = -1.0;
    Vector2 v{3, 4};
    EXPECT_EQ(VEC2_unitize(&v, 5.0, &length, &v), 0);
    EXPECT_EQ(length, 0.0);
    EXPECT_EQ(v.x, 0.0);
    v = {3, 4};
    EXPECT_EQ(VEC2_unitize(&v, 4.999, &length, &v), 1);
    EXPECT_EQ(length, 5.0);
    EXPECT_EQ(v.y, 0.8);
}

TEST(VEC2, ParallelAndPerpendicularMeasureTheAngle) {
    const Vector2 zero{0, 0}, x{5, 0};
    for (double turn : {0.01, 0.5, 1.2}) {
        const Vector2 near{std::cos(turn), std::sin(turn)}, across{-std::sin(turn), std::cos(turn)};
        EXPECT_TRUE(VEC2_is_parallel(&x, &near, std::sin(turn) * 1.000001));
        EXPECT_FALSE(VEC2_is_parallel(&x, &near, std::sin(turn) * 0.999999));
        EXPECT_TRUE(VEC2_is_perpendicular(&x, &across, std::sin(turn) * 1.000001));
        EXPECT_FALSE(VEC2_is_perpendicular(&x, &across, std::sin(turn) * 0.999999));
    }
    EXPECT_TRUE(VEC2_is_parallel(&x, &zero, 0.0));
    EXPECT_TRUE(VEC2_is_perpendicular(&zero, &x, 0.0));
}

TEST(VEC3, CrossAndUnitize) {
    Vector3 a{1, 2, 3};
    const Vector3 b{-2, 0.5, 4};
    Vector3 cross;
    VEC3_cross(&a, &b, &cross);
    EXPECT_EQ(VEC3_dot(&cross, &a), 0.0);
    EXPECT_EQ(VEC3_dot(&cross, &b), 0.0);
    EXPECT_EQ(cross.z, 4.5);
    VEC3_cross(&a, &b, &a);
    EXPECT_EQ(a.x, cross.x);
    double length = 0.0;
    Vector3 v{2, -3, 6};
    EXPECT_EQ(VEC3_unitize(&v, 7.0, &length, &cross), 0);
    EXPECT_EQ(VEC3_unitize(&v, 6.9, &length, &v), 1);
    EXPECT_EQ(length, 7.0);
    EXPECT_NEAR(VEC3_length(&v), 1.0, 1e-15);
}

TEST(PNT3, DistancesAndInterpolation) {
    const Point3 a{1, 2, 3}, b{3, -1, 9};
    EXPECT_EQ(PNT3_distance(&a, &b), 7.0);
    EXPECT_TRUE(PNT3_is_equal(&a, &b, 7.0));
    EXPECT_FALSE(PNT3_is_equal(&a, &b, 6.999999));
    Point3 p;
    PNT3_interpolate(&a, &b, 1.0, &p);
    EXPECT_EQ(PNT3_distance_squared(&p, &b), 0.0);
    PNT3_interpolate(&a, &b, 0.25, &p);
    EXPECT_NEAR(PNT3_distance(&a, &p), 1.75, 1e-15);
}

} // namespace
