#include "tessera/kernel/internal/EllipseFoot.h"

#include "tests/support/Test.h"

namespace {

double DistanceToFoot(double a, double b, double x, double y) {
    const EllipseFoot foot = FindEllipseFoot(a, b, x, y);
    EXPECT_NEAR(foot.cosT * foot.cosT + foot.sinT * foot.sinT, 1.0, 1e-15);
    return std::hypot(a * foot.cosT - x, b * foot.sinT - y);
}

TEST(EllipseFoot, SpecialPositions) {
    const struct {
        const char* name;
        double a, b, x, y, distance;
    } rows[] = {
        {"centre", 5, 2, 0, 0, 2},
        {"centre, tall", 2, 5, 0, 0, 2},
        {"centre of a circle", 3, 3, 0, 0, 3},
        {"beyond the major vertex", 5, 2, 7, 0, 2},
        {"beyond the minor vertex", 5, 2, 0, -6, 4},
        {"on the ellipse", 5, 2, 3, 1.6, 0},
        {"negative side", 5, 2, -3, -1.6, 0},
        {"at the evolute's cusp", 5, 2, 4.2, 0, 0.8},
        {"on the major axis inside the evolute", 5, 2, 2.1, 0, std::hypot(2.5 - 2.1, 2.0 * std::sqrt(0.75))},
        {"on the minor axis inside", 5, 2, 0, 1, 1},
        {"segment, beside", 5, 0, 3, 4, 4},
        {"segment, beyond", 5, 0, 8, 4, 5},
        {"point", 0, 0, 3, 4, 5},
        {"far away", 5, 2, -3e12, 0, 3e12 - 5},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_NEAR(DistanceToFoot(row.a, row.b, row.x, row.y), row.distance,
                    2e-15 * std::max(1.0, row.distance));
    }
}

// A foot's normal must carry every point it was moved out to, up to the near branch of the evolute.
TEST(EllipseFoot, RecoversTheFootAtEveryAspectRatio) {
    std::mt19937 rng(12);
    std::uniform_real_distribution<double> angle(1e-3, std::numbers::pi / 2 - 1e-3), out(-0.9, 3.0);
    for (double b : {1.0, 0.3, 1e-2, 1e-4, 1e-6})
        for (int trial = 0; trial < 200; ++trial) {
            SCOPED_TRACE(testing::Message() << "b " << b << " trial " << trial);
            const double t = angle(rng), c = std::cos(t), s = std::sin(t), length = std::hypot(b * c, s);
            double d = out(rng);
            if (d < 0.0) // inside: not beyond the major axis, which every foot's shortest segment stops at
                d *= b * length;
            const double x = c + d * b * c / length, y = b * s + d * s / length;
            for (const double sx : {-1.0, 1.0})
                for (const double sy : {-1.0, 1.0}) {
                    EXPECT_NEAR(DistanceToFoot(1.0, b, sx * x, sy * y), std::fabs(d), 1e-13);
                    EXPECT_NEAR(DistanceToFoot(b, 1.0, sy * y, sx * x), std::fabs(d), 1e-13);
                }
        }
}

TEST(EllipseFoot, HugsTheMajorAxis) {
    // As y goes to 0 the answer must go to that of y = 0, however small y is.
    for (double x : {0.0, 0.5, 0.75, 0.7500001, 0.9}) {
        const double limit = DistanceToFoot(1.0, 0.5, x, 0.0);
        for (double y : {1e-9, 1e-20, 1e-100, 1e-300, 5e-324})
            EXPECT_NEAR(DistanceToFoot(1.0, 0.5, x, y), limit, 2e-9) << x << " " << y;
    }
}

} // namespace
