#include <numeric>

#include "tessera/kernel/LSFIT.h"
#include "tessera/kernel/SM.h"
#include "tessera/kernel/internal/EllipseFoot.h"
#include "tessera/kernel/internal/SmFault.h"
#include "tests/support/FitSamples.h"

using Vex::Math::Point2;

namespace {

constexpr double kTau = 2.0 * std::numbers::pi;

struct EllipseFit {
    Point2 centre;
    double a, b, angle;
    int status;
    double err[3];
};
EllipseFit FitEllipse(Points2 pts) {
    EllipseFit fit;
    LSFIT_ellipse_to_points_2d(pts.data(), static_cast<int>(pts.size()), &fit.centre, &fit.a, &fit.b,
                               &fit.angle, &fit.status, fit.err);
    return fit;
}

std::vector<double> Distances(const Points2& pts, const EllipseFit& e) {
    std::vector<double> distances;
    const double c = std::cos(e.angle), s = std::sin(e.angle);
    for (const Point2& p : pts) {
        const double dx = p.x - e.centre.x, dy = p.y - e.centre.y, u = c * dx + s * dy, v = c * dy - s * dx;
        const EllipseFoot foot = FindEllipseFoot(e.a, e.b, u, v);
        distances.push_back(std::hypot(u - e.a * foot.cosT, v - e.b * foot.sinT));
    }
    return distances;
}

double SumOfSquares(const Points2& pts, const EllipseFit& e) {
    double sum = 0.0;
    for (double d : Distances(pts, e))
        sum += d * d;
    return sum;
}

TEST(EllipseFit, ExactEllipses) {
    const struct {
        const char* name;
        Point2 centre;
        double a, b, angle, sweep;
        int n;
        double tol; // of a
    } rows[] = {
        {"full", {3, 4}, 5, 2, 0.5, kTau, 60, 1e-13},
        {"five points", {3, 4}, 5, 2, 2.9, 0.8 * kTau, 5, 1e-11},
        {"steep", {3, 4}, 5, 2, std::numbers::pi / 2, kTau, 60, 1e-13},
        {"half", {0, 0}, 5, 2, 1.0, std::numbers::pi, 60, 1e-11},
        {"slender", {0, 0}, 5, 0.05, 0.3, kTau, 200, 1e-12},
        {"small", {2e-3, 1e-3}, 5e-3, 2e-3, 0.5, kTau, 60, 1e-13},
        {"large", {3e6, 1e6}, 5e6, 2e6, 0.5, kTau, 60, 1e-13},
        {"far away", {1e6, 1e6}, 5, 2, 0.5, kTau, 60, 1e-9},
        {"more points than samples", {3, 4}, 5, 2, 0.5, kTau, 5000, 1e-13},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const EllipseFit fit =
            FitEllipse(EllipsePoints(row.centre, row.a, row.b, row.angle, 0.4, row.sweep, row.n));
        ASSERT_EQ(fit.status, 0);
        const double offset = std::hypot(fit.centre.x - row.centre.x, fit.centre.y - row.centre.y);
        EXPECT_LE(offset, row.tol * row.a);
        EXPECT_NEAR(fit.a, row.a, row.tol * row.a);
        EXPECT_NEAR(fit.b, row.b, row.tol * row.a);
        EXPECT_NEAR(fit.angle, row.angle, 10 * row.tol);
        EXPECT_LE(fit.err[0], 2 * row.tol * row.a);
    }
    const EllipseFit circle = FitEllipse(EllipsePoints({1, 2}, 3, 3, 0, 0, kTau, 40)); // of any angle
    EXPECT_EQ(circle.status, 0);
    EXPECT_NEAR(std::hypot(circle.a - 3, circle.b - 3), 0, 1e-12);
}

// Fits of slightly shifted points lie along the valley of the sum, however flat it is.
TEST(EllipseFit, NoPerturbationLowersTheSumOfSquares) {
    const struct {
        const char* name;
        double b, sweep, noise;
        int n;
    } rows[] = {{"ellipse", 0.5, kTau, 0.01, 90},          {"few points", 0.4, kTau, 0.02, 12},
                {"coarse and fine", 0.5, kTau, 0.01, 400}, {"three quarters", 0.3, 4.7, 0.01, 90},
                {"circle", 1.0, kTau, 0.01, 90},           {"nearly a circle", 1.0 - 1e-5, kTau, 1e-6, 90},
                {"half a circle", 1.0, 3.0, 0.005, 60},    {"short arc", 0.6, 1.2, 1e-4, 60},
                {"very short arc", 0.9, 0.6, 1e-6, 60},    {"rough arc", 0.7, 2.0, 0.01, 60},
                {"slender", 0.01, kTau, 1e-3, 200},        {"far off", 0.5, 5.0, 0.1, 70}};
    std::mt19937 rng(21);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    for (const auto& row : rows)
        for (int trial = 0; trial < 10; ++trial) {
            SCOPED_TRACE(testing::Message() << row.name << " " << trial);
            Points2 pts = EllipsePoints({2, 1}, 1.0, row.b, unit(rng), unit(rng), row.sweep, row.n);
            AddNoise(rng, row.noise, &pts);
            const EllipseFit fit = FitEllipse(pts);
            if (fit.status != 0)
                continue; // a parabola fits better
            const double best = SumOfSquares(pts, fit);
            for (int k = 0; k < 60; ++k) {
                const double size = std::pow(10.0, -1.0 - 0.1 * k);
                EllipseFit other = fit;
                other.centre = {fit.centre.x + size * unit(rng), fit.centre.y + size * unit(rng)};
                other.a += size * unit(rng);
                other.b += size * unit(rng);
                other.angle += size * unit(rng);
                if (k % 2 == 0) {
                    Points2 shifted = pts;
                    AddNoise(rng, row.noise * std::pow(10.0, -0.1 * k), &shifted);
                    other = FitEllipse(shifted);
                }
                if (other.status == 0 && other.a > 0.0 && other.b > 0.0) {
                    EXPECT_LE(best, SumOfSquares(pts, other) * (1 + 1e-9));
                }
            }
        }
}

TEST(EllipseFit, DeviationsAreThoseOfAllPoints) {
    std::mt19937 rng(22);
    for (double b : {0.9, 0.4, 0.1})
        for (int n : {40, 3000}) {
            SCOPED_TRACE(testing::Message() << b << " " << n);
            Points2 pts = EllipsePoints({0, 0}, 1, b, 0.8, 0.0, 5.5, n);
            AddNoise(rng, 0.002, &pts);
            pts[n / 3 + 1] = {pts[n / 3 + 1].x + 0.05, pts[n / 3 + 1].y - 0.04}; // one outlier
            const EllipseFit fit = FitEllipse(pts);
            ASSERT_EQ(fit.status, 0);
            const std::vector<double> distances = Distances(pts, fit);
            const double mean = std::accumulate(distances.begin(), distances.end(), 0.0) / n;
            EXPECT_NEAR(fit.err[0], *std::max_element(distances.begin(), distances.end()), 2e-15);
            EXPECT_NEAR(fit.err[1] / std::sqrt(SumOfSquares(pts, fit) / n), 1.0, 0.05);
            EXPECT_NEAR(fit.err[2] / mean, 1.0, 0.05);
            EXPECT_TRUE(fit.err[2] <= fit.err[1] && fit.err[1] <= fit.err[0]);
        }
}

TEST(EllipseFit, RefusesWhatIsNoEllipse) {
    std::mt19937 rng(24);
    Points2 line, hyperbola, branches, parabola, corner,
        flat = EllipsePoints({0, 0}, 1, 5e-5, 0, 0, kTau, 400);
    for (int i = -30; i <= 30; ++i) {
        const double t = i / 15.0;
        line.push_back({0.1 * i, 0.3 * i});
        hyperbola.push_back({std::cosh(t), std::sinh(t)});
        branches.push_back({(i % 2 == 0 ? 1 : -1) * std::cosh(t), std::sinh(t)});
        parabola.push_back({t, t * t});
        corner.push_back(i < 0 ? Point2{t, 0} : Point2{0.33 * t, 0.84 * t}); // its ellipses run off
    }
    AddNoise(rng, 0.01, &corner);
    Points2 noisyHyperbola = hyperbola, badPoint = EllipsePoints({0, 0}, 2, 1, 0, 0, kTau, 700);
    AddNoise(rng, 1e-3, &noisyHyperbola);
    badPoint[1].y = NAN; // not among the samples of the iteration
    Points2 infinite = badPoint;
    infinite[1].y = HUGE_VAL;
    const struct {
        const char* name;
        Points2 pts;
    } rows[] = {{"none", {}},
                {"four points", EllipsePoints({0, 0}, 2, 1, 0, 0, 5, 4)},
                {"coincident", Points2(9, Point2{1, 1})},
                {"line", line},
                {"hyperbola", hyperbola},
                {"noisy hyperbola", noisyHyperbola},
                {"two branches", branches},
                {"parabola", parabola},
                {"corner", corner},
                {"too flat", flat},
                {"NaN", badPoint},
                {"infinity", infinite}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const EllipseFit fit = FitEllipse(row.pts);
        EXPECT_TRUE(fit.status == 1 && fit.a == 1e19 && fit.err[0] >= 1e18);
    }
    EXPECT_EQ(FitEllipse(EllipsePoints({0, 0}, 1, 2e-4, 0, 0, kTau, 400)).status, 0); // just inside the ratio
}

// Any noise must give a bounded ellipse or a failure, and points on a hand-drawn arc an ellipse.
TEST(EllipseFit, NeverRunsAway) {
    std::mt19937 rng(25);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    int fitted = 0;
    for (int trial = 0; trial < 300; ++trial) {
        SCOPED_TRACE(trial);
        Points2 pts = EllipsePoints({0, 0}, 1, 0.2 + 0.8 * unit(rng), 3 * unit(rng), 6 * unit(rng),
                                    0.3 + 5 * unit(rng), 5 + trial % 40);
        AddNoise(rng, 0.05 * unit(rng), &pts);
        const EllipseFit fit = FitEllipse(pts);
        if (fit.status != 0)
            continue;
        ++fitted;
        EXPECT_TRUE(fit.a <= 2000.0 * 2.2 && fit.b >= 1e-4 * fit.a);
        EXPECT_TRUE(std::isfinite(fit.err[0] + fit.err[1] + fit.err[2]));
    }
    EXPECT_GE(fitted, 200);
}

TEST(Fits, TakeNoHeap) {
    Points2 pts = EllipsePoints({0, 0}, 2, 1, 0.3, 0, 5, 1000);
    Point2 centre;
    double a = 0, b = 0, angle = 0, err[3];
    int status = 1;
    SM_fail_nth(0);
    LSFIT_ellipse_to_points_2d(pts.data(), 1000, &centre, &a, &b, &angle, &status, err);
    EXPECT_EQ(status, 0);
    LSFIT_circle_to_points_2d(pts.data(), 1000, &centre, &a, &status, err);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(SM_ask_allocation_count(), 0);
}

// Rosenbrock's valley: residuals 10 (y - x^2) and 1 - x, to be left on the side of positive x.
int EvaluateValley(void*, const double* p, double* jtj, double* jtr, double* sumSq) {
    if (p[0] < 0.0)
        return 0;
    const double r[2] = {10.0 * (p[1] - p[0] * p[0]), 1.0 - p[0]},
                 g[2][2] = {{-20.0 * p[0], 10.0}, {-1.0, 0.0}};
    for (int j = 0; j < 2; ++j) {
        jtr[j] = g[0][j] * r[0] + g[1][j] * r[1];
        for (int i = 0; i < 2; ++i)
            jtj[2 * j + i] = g[0][j] * g[0][i] + g[1][j] * g[1][i];
    }
    *sumSq = r[0] * r[0] + r[1] * r[1];
    return 1;
}

TEST(NonlinearFit, FollowsAValleyAndReportsItsLimits) {
    const struct {
        int n;
        double start[2];
        int limit, status;
    } rows[] = {
        {2, {0.1, 2.0}, 100, 0}, {2, {0.1, 2.0}, 1, 1}, {2, {-1.0, 2.0}, 100, 1}, {9, {0.1, 2.0}, 100, 1}};
    for (const auto& row : rows) {
        double p[2] = {row.start[0], row.start[1]}, sumSq = 0.0;
        int status = -1;
        LSFIT_nonlinear_function(row.n, p, EvaluateValley, nullptr, row.limit, 1e-12, 1e-30, &sumSq, &status);
        EXPECT_EQ(status, row.status);
        EXPECT_TRUE(status != 0 || std::hypot(p[0] - 1.0, p[1] - 1.0) < 1e-12);
        EXPECT_TRUE(row.start[0] > 0.0 || p[0] == -1.0) << "an inadmissible start stays";
    }
}

} // namespace
