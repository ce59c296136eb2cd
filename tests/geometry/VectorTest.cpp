#include "tessera/geometry/Vector.h"

#include "tessera/geometry/Point.h"
#include "tessera/kernel/EQ.h"
#include "tests/support/Test.h"

namespace Tessera::Geometry {
namespace {

constexpr double kPi = std::numbers::pi;

TEST(Vector, AngleBetweenIsSignedInHalfOpenInterval) {
    const struct {
        Vector from, to;
        double angle;
    } rows[] = {
        {{1, 0}, {0, 1}, kPi / 2}, {{0, 1}, {1, 0}, -kPi / 2},
        {{1, 0}, {0, 0}, 0.0},     {{0, 0}, {1, 0}, 0.0},
        {{1, 0}, {-1, 0}, kPi},    {{-1, 0}, {1, 0}, kPi}, // cross is -0
        {{2e-9, 0}, {0, 1}, 0.0},  {{1, 0}, {-1, -1e-3}, -kPi + std::atan(1e-3)},
        {{3, 3}, {1e6, 1e6}, 0.0},
    };
    for (const auto& row : rows)
        EXPECT_NEAR(row.from.AngleBetween(row.to), row.angle, 1e-15) << row.from.x << " " << row.from.y;
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> angle(-kPi, kPi), coordinate(-9, 9);
    for (int trial = 0; trial < 300; ++trial) {
        const Vector v(coordinate(rng), coordinate(rng));
        const double a = angle(rng);
        Vector w = v;
        w.Rotate(a);
        EXPECT_NEAR(v.AngleBetween(w), a, 1e-13);
        EXPECT_NEAR(w.Length(), v.Length(), 1e-13);
    }
}

TEST(Vector, NormalizeRefusesALengthEqualToTheTolerance) {
    const double tol = EQ_ask_length_tolerance();
    Vector exact(tol, 0), longer(std::nextafter(tol, 1.0), 0);
    EXPECT_TRUE(exact.IsZero() && !exact.Normalize() && exact.x == tol);
    EXPECT_TRUE(!longer.IsZero() && longer.Normalize() && longer.x == 1.0);
}

TEST(Vector, Arithmetic) {
    const double xy[2] = {3, 4};
    Vector v(xy);
    const Vector w(Point(1, 1), Point(0, 3)); // (-1, 2)
    EXPECT_TRUE(v.Coordinate(0) == 3 && v.Coordinate(9) == 4);
    EXPECT_TRUE(v.Cross(w) == 10 && v.Dot(w) == 5 && v.XSq(w) == 16 && v.YSq(w) == 4);
    EXPECT_TRUE(v.Distance(w) == std::sqrt(20.0) && v.Length() == 5);
    EXPECT_TRUE(v.IsParallel(-2.0 * v, 0.0) && !v.IsParallel(w, 0.8) && v.IsParallel(w, 0.9));
    EXPECT_TRUE(v.IsPerpendicular(w, 0.5) && !v.IsPerpendicular(w, 0.4));
    EXPECT_EQ(v.GetPerpendicular(), Vector(-0.8, 0.6)) << "that of the kernel, of unit length";
    EXPECT_TRUE(Vector(2e-10, 0).GetPerpendicular() == Vector(0, -1)) << "below the length tolerance too";
    ((v += w) -= Vector(1, 0)) /= 2.0;
    EXPECT_EQ(v, Vector(0.5, 3));
    EXPECT_TRUE(Vector(0, 1e-9) == Vector() && Vector(0, 3e-9) != Vector());
}

} // namespace
} // namespace Tessera::Geometry
