#include "tessera/kernel/VEC2.h"

#include "tessera/kernel/PNT3.h"
#include "tessera/kernel/VEC3.h"
#include "tests/support/Test.h"

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
        EXPECT_TRUE(out.x == row.out.x && out.y == row.out.y) << row.v.x << " " << row.v.y;
    }
}

TEST(VEC2, UnitizeIncludesItsTolerance) {
    double length = -1.0;
    Vector2 v{3, 4}, w = v;
    EXPECT_TRUE(VEC2_unitize(&v, 5.0, &length, &v) == 0 && length == 0.0 && v.x == 0.0);
    EXPECT_TRUE(VEC2_unitize(&w, 4.999, &length, &w) == 1 && length == 5.0 && w.y == 0.8);
}

TEST(VEC2, ParallelAndPerpendicularMeasureTheAngle) {
    const Vector2 zero{0, 0}, x{5, 0};
    for (const double turn : {0.01, 0.5, 1.2}) {
        const double sine = std::sin(turn), above = sine * 1.000001, below = sine * 0.999999;
        const Vector2 near{std::cos(turn), sine}, across{-sine, std::cos(turn)};
        EXPECT_TRUE(VEC2_is_parallel(&x, &near, above) && !VEC2_is_parallel(&x, &near, below));
        EXPECT_TRUE(VEC2_is_perpendicular(&x, &across, above) && !VEC2_is_perpendicular(&x, &across, below));
    }
    EXPECT_TRUE(VEC2_is_parallel(&x, &zero, 0.0) && VEC2_is_perpendicular(&zero, &x, 0.0));
}

TEST(VEC3, CrossAndUnitize) {
    Vector3 a{1, 2, 3}, v{2, -3, 6}, cross;
    const Vector3 b{-2, 0.5, 4};
    VEC3_cross(&a, &b, &cross);
    EXPECT_TRUE(VEC3_dot(&cross, &a) == 0.0 && VEC3_dot(&cross, &b) == 0.0 && cross.z == 4.5);
    VEC3_cross(&a, &b, &a); // in place
    EXPECT_TRUE(a.x == cross.x && a.y == cross.y && a.z == cross.z);
    double length = 0.0;
    EXPECT_EQ(VEC3_unitize(&v, 7.0, &length, &cross), 0);
    EXPECT_TRUE(VEC3_unitize(&v, 6.9, &length, &v) == 1 && length == 7.0);
    EXPECT_NEAR(VEC3_length(&v), 1.0, 1e-15);
}

TEST(PNT3, DistancesAndInterpolation) {
    const Point3 a{1, 2, 3}, b{3, -1, 9};
    Point3 p, q;
    EXPECT_EQ(PNT3_distance(&a, &b), 7.0);
    EXPECT_TRUE(PNT3_is_equal(&a, &b, 7.0) && !PNT3_is_equal(&a, &b, 6.999999));
    PNT3_interpolate(&a, &b, 1.0, &p);
    PNT3_interpolate(&a, &b, 0.25, &q);
    EXPECT_EQ(PNT3_distance_squared(&p, &b), 0.0);
    EXPECT_NEAR(PNT3_distance(&a, &q), 1.75, 1e-15);
}

} // namespace
