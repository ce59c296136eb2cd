#include "tessera/kernel/LSFIT.h"

#include "tessera/kernel/ARC_SPLINE.h"
#include "tests/support/FitSamples.h"

using Vex::Math::Point2;
using Vex::Math::Vector2;

namespace {

constexpr double kTau = 2.0 * std::numbers::pi;

struct LineFit {
    Point2 point;
    Vector2 normal;
    int status;
    double err[3] = {-1, -1, -1};
};
LineFit FitLine(Points2 pts) {
    LineFit fit;
    LSFIT_line_to_points_2d(pts.data(), static_cast<int>(pts.size()), &fit.point, &fit.normal, &fit.status,
                            fit.err);
    return fit;
}

struct CircleFit {
    Point2 centre;
    double radius;
    int status;
    double err[3];
};
CircleFit FitCircle(Points2 pts) {
    CircleFit fit;
    LSFIT_circle_to_points_2d(pts.data(), static_cast<int>(pts.size()), &fit.centre, &fit.radius, &fit.status,
                              fit.err);
    return fit;
}

Points2 CirclePoints(Point2 centre, double radius, double start, double sweep, int n) {
    return EllipsePoints(centre, radius, radius, 0.0, start, sweep, n);
}

long double LineRms(const Points2& pts, const Point2& point, long double nx, long double ny) {
    long double sum = 0;
    for (const Point2& p : pts) {
        const long double d = nx * (p.x - point.x) + ny * (p.y - point.y);
        sum += d * d;
    }
    return std::sqrt(sum / pts.size());
}

// Pratt's objective: mean square algebraic residual over the mean square gradient's constraint, about the
// origin of a circle (cx, cy, r).
long double PrattResidual(const Points2& pts, long double cx, long double cy, long double r) {
    long double sum = 0;
    for (const Point2& p : pts) {
        const long double f = (p.x - cx) * (p.x - cx) + (p.y - cy) * (p.y - cy) - r * r;
        sum += f * f;
    }
    return sum / (4 * r * r);
}

TEST(LineFit, KnownLines) {
    const double h = std::sqrt(0.5);
    const struct {
        const char* name;
        Points2 pts;
        int status;
        double nx, ny;
    } rows[] = {
        {"horizontal", {{0, 5}, {1, 5}, {9, 5}}, 0, 0, 1},
        {"vertical, far away", {{1e6, 0}, {1e6, 1}, {1e6, 4}}, 0, 1, 0},
        {"two points", {{1, 1}, {2, 2}}, 0, h, -h},
        {"large diagonal", {{0, 0}, {1e6, 1e6}, {3e6, 3e6}, {7e6, 7e6}}, 0, h, -h},
        {"small diagonal", {{0, 0}, {1e-3, 1e-3}, {2e-3, 2e-3}}, 0, h, -h},
        {"coincident", {{2, 2}, {2, 2}, {2, 2}}, 1, 0, 0},
        {"one point", {{2, 2}}, 1, 0, 0},
        {"just coincident", {{0, 0}, {1.99e-6, 0}}, 1, 0, 0},
        {"just apart", {{0, 0}, {2.01e-6, 0}}, 0, 1, 0}, // both eigenvalues count as 0: the first one wins
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const LineFit fit = FitLine(row.pts);
        EXPECT_EQ(fit.status, row.status);
        EXPECT_NEAR(std::fabs(fit.normal.x * row.nx + fit.normal.y * row.ny), std::hypot(row.nx, row.ny),
                    1e-12);
        EXPECT_NEAR(std::hypot(fit.normal.x, fit.normal.y), row.status == 0 ? 1.0 : 0.0, 1e-15);
        EXPECT_EQ(fit.err[0] == -1.0, row.status != 0) << "untouched on failure";
    }
    EXPECT_EQ(FitLine(rows[0].pts).err[0], 0.0);
    EXPECT_EQ(FitLine(rows[5].pts).point.x, 2.0);
    EXPECT_EQ(FitLine({}).status, 1);
    EXPECT_EQ(FitLine({{0, 0}, {NAN, 1}, {1, 1}}).status, 1);
}

TEST(LineFit, NoScannedLineIsBetter) {
    std::mt19937 rng(20240607);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int trial = 0; trial < 60; ++trial) {
        SCOPED_TRACE(trial);
        const double angle = kTau * unit(rng), offset = trial % 2 == 0 ? 0.0 : 1e6;
        Points2 pts;
        for (int i = 0; i < 31; ++i)
            pts.push_back({offset + std::cos(angle) * i, std::sin(angle) * i - offset});
        AddNoise(rng, 0.5, &pts);
        const LineFit fit = FitLine(pts);
        ASSERT_EQ(fit.status, 0);
        EXPECT_NEAR(fit.err[1], static_cast<double>(LineRms(pts, fit.point, fit.normal.x, fit.normal.y)),
                    1e-9);
        for (int k = 0; k < 2000; ++k) {
            const double t = std::numbers::pi * k / 2000;
            const Point2 other{fit.point.x + 0.1 * unit(rng) * (k % 3),
                               fit.point.y - 0.1 * unit(rng) * (k % 3)};
            ASSERT_LE(fit.err[1], static_cast<double>(LineRms(pts, other, std::cos(t), std::sin(t))) + 1e-9);
        }
        EXPECT_TRUE(fit.err[2] <= fit.err[1] && fit.err[1] <= fit.err[0]);
    }
}

TEST(CircleFit, ExactCircles) {
    const struct {
        const char* name;
        Point2 centre;
        double radius, sweep;
        int n;
        double tol; // of the radius
    } rows[] = {
        {"full", {3, 4}, 10, kTau * 11 / 12, 12, 1e-12},
        {"closed stroke", {3, 4}, 10, kTau, 33, 1e-12},
        {"small closed stroke", {3e-3, 4e-3}, 1e-3, kTau, 100, 1e-12},
        {"large closed stroke", {3e6, 4e6}, 1e6, kTau, 100, 1e-12},
        {"closed, few points", {0, 0}, 1, kTau, 4, 1e-12},
        {"three points", {1, 1}, 2, 2.0, 3, 1e-11},
        {"half", {0, 0}, 1, std::numbers::pi, 50, 1e-12},
        {"short arc", {0, 0}, 1, 0.1, 50, 1e-8},
        {"very many points", {3, 4}, 10, kTau, 300000, 1e-9},
        {"far from the origin", {1e6, -1e6}, 1, kTau, 64, 1e-8},
    };
    for (const auto& row : rows)
        for (double start : {0.0, 1.0, 4.0}) {
            SCOPED_TRACE(testing::Message() << row.name << " from " << start);
            const CircleFit fit = FitCircle(CirclePoints(row.centre, row.radius, start, row.sweep, row.n));
            ASSERT_EQ(fit.status, 0);
            const double offset = std::hypot(fit.centre.x - row.centre.x, fit.centre.y - row.centre.y);
            EXPECT_LE(offset, row.tol * row.radius);
            EXPECT_NEAR(fit.radius, row.radius, row.tol * row.radius);
            EXPECT_LE(fit.err[0], row.tol * row.radius);
        }
}

TEST(CircleFit, LinesAndPointsFail) {
    const Points2 rows[] = {
        {},
        {{1, 1}},
        {{1, 1}, {1, 1}, {1, 1}},
        {{0, 0}, {3, 1}},
        {{0, 0}, {1, 1}, {2, 2}, {5, 5}},
        {{0.1, 0.3}, {0.2, 0.6}, {0.3, 0.9}, {0.7, 2.1}},
        {{1e6 + 0.1, 0.3}, {1e6 + 0.2, 0.6}, {1e6 + 0.3, 0.9}, {1e6 + 0.7, 2.1}},
        {{0, 0}, {1, NAN}, {2, 0}},
    };
    for (const Points2& pts : rows) {
        const CircleFit fit = FitCircle(pts);
        EXPECT_TRUE(fit.status == 1 && fit.radius == 1e19 && fit.centre.x == 0.0 && fit.err[0] >= 1e18);
    }
}

TEST(CircleFit, NoPerturbationLowersPrattsResidual) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    for (int trial = 0; trial < 60; ++trial) {
        SCOPED_TRACE(trial);
        Points2 pts = CirclePoints({5, -2}, 3, unit(rng), 1.5 + trial * 0.08, 40);
        AddNoise(rng, 0.03, &pts);
        const CircleFit fit = FitCircle(pts);
        ASSERT_EQ(fit.status, 0);
        const long double best = PrattResidual(pts, fit.centre.x, fit.centre.y, fit.radius);
        EXPECT_NEAR(fit.err[1], static_cast<double>(std::sqrt(40 * best)), 1e-9); // sqrt(n / lambda)
        for (int k = 0; k < 300; ++k) {
            const double size = std::pow(10.0, -1.0 - k % 6);
            EXPECT_LE(best, PrattResidual(pts, fit.centre.x + size * unit(rng),
                                          fit.centre.y + size * unit(rng), fit.radius + size * unit(rng)) *
                                (1 + 1e-12L));
        }
        double largest = 0.0, mean = 0.0;
        for (const Point2& p : pts) {
            const double d = std::fabs(std::hypot(p.x - fit.centre.x, p.y - fit.centre.y) - fit.radius);
            largest = std::max(largest, d);
            mean += d / 40;
        }
        EXPECT_NEAR(fit.err[0], largest, 1e-14);
        EXPECT_NEAR(fit.err[2], mean, 1e-14);
    }
}

// Points so large that 1 / lambda exceeds its limit, yet not on a line: the three-point construction.
TEST(CircleFit, FallsBackToThreePoints) {
    std::mt19937 rng(9);
    Points2 pts = CirclePoints({0, 0}, 1e8, 0.0, 3.0, 21);
    AddNoise(rng, 1e6, &pts);
    const CircleFit fit = FitCircle(pts);
    ASSERT_EQ(fit.status, 0);
    Point2 centre;
    double radius = 0.0;
    ASSERT_EQ(ARC_SPLINE_cre_circle_thru_3_points_2d(&pts[0], &pts[10], &pts[20], &centre, &radius), 1);
    EXPECT_TRUE(fit.radius == radius && fit.centre.x == centre.x);
    EXPECT_TRUE(fit.err[1] == 0.0 && fit.err[0] > fit.err[2]);
}

TEST(ArcSpline, CircleThroughThreePoints) {
    std::mt19937 rng(10);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    for (double scale : {1e-3, 1.0, 1e6})
        for (int trial = 0; trial < 100; ++trial) {
            Point2 p[3], centre;
            for (Point2& q : p)
                q = {scale * unit(rng), scale * unit(rng)};
            double radius = 0.0;
            ASSERT_EQ(ARC_SPLINE_cre_circle_thru_3_points_2d(&p[0], &p[1], &p[2], &centre, &radius), 1);
            for (const Point2& q : p)
                EXPECT_NEAR(std::hypot(q.x - centre.x, q.y - centre.y) / radius, 1.0, 1e-12);
        }
    const Point2 flat[][3] = {{{0, 0}, {0.1, 0.1}, {0.3, 0.3}},
                              {{1, 2}, {1, 2}, {3, 4}},
                              {{1, 2}, {3, 4}, {3, 4}},
                              {{1e6 + 0.1, 0.3}, {1e6 + 0.2, 0.6}, {1e6 + 0.7, 2.1}}};
    for (const auto& p : flat) {
        Point2 centre{5, 6};
        double radius = 7;
        EXPECT_EQ(ARC_SPLINE_cre_circle_thru_3_points_2d(&p[0], &p[1], &p[2], &centre, &radius), 0);
        EXPECT_TRUE(radius == 7 && centre.x == 5);
    }
}

} // namespace
