#include "tessera/recognition/internal/PathMoments.h"

#include "tessera/kernel/LSFIT.h"
#include "tests/support/PenPaths.h"

namespace Tessera::Geometry {
namespace {

std::vector<Point> NoisyArc(std::mt19937& rng, int n, double radius, double sweep, double noise) {
    std::normal_distribution<double> off(0.0, noise);
    std::uniform_real_distribution<double> any(-0.5, 0.5);
    const Point centre(any(rng), any(rng));
    const double start = 6.0 * any(rng);
    std::vector<Point> pts;
    for (int i = 0; i < n; ++i) {
        const double a = start + sweep * i / (n - 1);
        pts.push_back(centre + (radius + off(rng)) * Point(std::cos(a), std::sin(a)));
    }
    return pts;
}

// Runs round the seam too: two that are added.
TEST(PathMoments, LinesAgreeWithTheFitOverTheSamePoints) {
    std::mt19937 rng(11);
    for (int trial = 0; trial < 200; ++trial) {
        const std::vector<Point> pts = NoisyArc(rng, 40, 3.0, 0.3, 0.05);
        const PathMoments moments(pts);
        const int first = trial % 40, count = 10 + trial % 23;
        Moments run = moments.Of(first, std::min(first + count - 1, 39));
        run += moments.Of(0, first + count - 41);
        std::vector<Vex::Math::Point2> part;
        for (int i = first; i < first + count; ++i)
            part.push_back({pts[i % 40].x, pts[i % 40].y});
        const LineFit fit = FitLine(run);
        Vex::Math::Point2 on{};
        Vex::Math::Vector2 normal{};
        int status = 0;
        double err[3];
        LSFIT_line_to_points_2d(part.data(), count, &on, &normal, &status, err);
        ASSERT_EQ(status, 0);
        EXPECT_NEAR(fit.direction.x * normal.x + fit.direction.y * normal.y, 0.0, 1e-9);
        EXPECT_NEAR(std::sqrt(fit.sumSq / count), err[1], 1e-9);
        EXPECT_NEAR(fit.centre.x, on.x, 1e-12);
    }
}

TEST(PathMoments, CirclesAgreeWithDistancesOfThePoints) {
    std::mt19937 rng(12);
    for (int trial = 0; trial < 200; ++trial) {
        const double radius = 0.3 + 0.01 * trial;
        const std::vector<Point> pts = NoisyArc(rng, 60, radius, 1.0 + 0.02 * trial, 0.002 * radius);
        const CircleFit fit = FitCircle(PathMoments(pts).Of(0, 59));
        ASSERT_GT(fit.radius, 0.0);
        EXPECT_NEAR(fit.radius, radius, 0.02 * radius);
        double sumSq = 0.0;
        for (const Point& p : pts)
            sumSq += std::pow(p.Distance(fit.centre) - fit.radius, 2);
        EXPECT_NEAR(fit.sumSq, sumSq, 0.02 * sumSq);
    }
}

TEST(PathMoments, PointsOnALineHaveNoCircle) {
    const std::vector<Point> pts =
        Testing::PointsOf(Testing::Straight({-1, -0.3}, {0.9, 0.27}), 0.0, 1.0, 20);
    EXPECT_EQ(FitCircle(PathMoments(pts).Of(0, 19)).radius, 0.0);
    EXPECT_NEAR(FitLine(PathMoments(pts).Of(0, 19)).sumSq, 0.0, 1e-12);
}

} // namespace
} // namespace Tessera::Geometry
