#include "tessera/core/NumericHelpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include "tessera/geometry/Point.h"

namespace Tessera::Core {
namespace {

using Geometry::Point;

Point Moved(double m[3][3], double x, double y) {
    Point p(x, y);
    p.Transform(m);
    return p;
}

TEST(FindMeanAndStdDev, KnownLists) {
    struct Row {
        std::vector<double> values;
        double mean, stdDev, meanKept, stdDevKept;
    };
    Row rows[] = {
        {{2, 4, 4, 4, 5, 5, 7, 9}, 5, 2, 5, 2}, // 9 lies exactly on the bound and is kept
        {{1, 1, 1, 1, 1, 1, 1, 1, 1, 100}, 10.9, 29.7, 1, 0},
        {{7}, 7, 0, 7, 0},
        {{3, -3}, 0, 3, 0, 3},
        // One pass only: 30 would fall in a second one.
        {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 30, 200},
         230.0 / 14,
         std::sqrt(40900.0 / 14 - 52900.0 / 196),
         30.0 / 13,
         std::sqrt(900.0 / 13 - 900.0 / 169)},
    };
    for (Row& row : rows) {
        double mean = -1, stdDev = -1;
        ASSERT_TRUE(FindMeanAndStdDev(row.values, &mean, &stdDev));
        EXPECT_NEAR(mean, row.mean, 1e-12);
        EXPECT_NEAR(stdDev, row.stdDev, 1e-12);
        ASSERT_TRUE(FindMeanAndStdDevWithOutlierRejection(row.values, &mean, &stdDev));
        EXPECT_NEAR(mean, row.meanKept, 1e-12);
        EXPECT_NEAR(stdDev, row.stdDevKept, 1e-12);
        EXPECT_TRUE(FindMeanAndStdDev(row.values, nullptr, nullptr));
        EXPECT_TRUE(FindMeanAndStdDevWithOutlierRejection(row.values, nullptr, nullptr));
    }
}

TEST(FindMeanAndStdDev, NothingToSayLeavesTheAnswersAlone) {
    std::vector<double> empty;
    std::vector<double> notNumbers = {1.0, std::numeric_limits<double>::quiet_NaN()};
    double answers[2] = {-1, -2};
    EXPECT_FALSE(FindMeanAndStdDev(empty, &answers[0], &answers[1]));
    EXPECT_FALSE(FindMeanAndStdDevWithOutlierRejection(empty, &answers[0], &answers[1]));
    EXPECT_FALSE(FindMeanAndStdDevWithOutlierRejection(notNumbers, &answers[0], &answers[1]));
    EXPECT_FALSE(FindRange(empty, answers));
    EXPECT_TRUE(answers[0] == -1 && answers[1] == -2);
    std::vector<double> values = {2, -7, 3, 11, -1};
    EXPECT_TRUE(FindRange(values, nullptr));
    EXPECT_TRUE(FindRange(values, answers) && answers[0] == -7 && answers[1] == 11);
}

TEST(ComposeScaleTransform, CarriesTheScaleInTheLastElement) {
    double centre[2] = {1, 1};
    double m[3][3];
    ComposeScaleTransform(centre, 2.0, m);
    EXPECT_TRUE(m[0][0] == 1.0 && m[2][2] == 0.5);
    EXPECT_EQ(Moved(m, 2, 1), Point(3, 1));
    ComposeScaleTransform(centre, 0.0, m); // not guarded
    EXPECT_TRUE(std::isinf(m[2][2]));
    centre[0] = -250.0;
    ComposeScaleTransform(centre, 0.125, m);
    EXPECT_EQ(Moved(m, -170, 9), Point(-240, 2));
}

TEST(ComposeMirrorTransform, ReflectsAcrossTheLine) {
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> coordinate(-50, 50);
    for (int trial = 0; trial < 200; ++trial) {
        const Point a(coordinate(rng), coordinate(rng)), b(coordinate(rng), coordinate(rng));
        const Point p(coordinate(rng), coordinate(rng));
        double m[3][3];
        ComposeMirrorTransform(a, b, m);
        const Point image = Moved(m, p.x, p.y);
        EXPECT_NEAR(Moved(m, image.x, image.y).Distance(p), 0.0, 1e-12);
        EXPECT_NEAR((image - p).Dot(b - a), 0.0, 1e-10) << "moved straight across";
        EXPECT_NEAR(((p + image) / 2.0 - a).Cross(b - a), 0.0, 1e-10) << "halfway on the line";
        EXPECT_TRUE(m[2][0] == 0 && m[2][1] == 0 && m[2][2] == 1);
    }
    double m[3][3];
    ComposeMirrorTransform(Point(3, 3), Point(3, 3), m);
    EXPECT_EQ(Moved(m, 8, -2), Point(8, -2)) << "no line, no reflection";
}

// Oracle: the angles under which the edges are seen add up to a full turn inside and to none outside.
bool IsEnclosed(double x, double y, const std::vector<double>& xs, const std::vector<double>& ys) {
    double turn = 0.0;
    for (std::size_t i = 0, j = xs.size() - 1; i < xs.size(); j = i++) {
        const double ux = xs[j] - x, uy = ys[j] - y, vx = xs[i] - x, vy = ys[i] - y;
        turn += std::atan2(ux * vy - uy * vx, ux * vx + uy * vy);
    }
    return std::fabs(turn) > std::numbers::pi;
}

TEST(PointInPolygon, AgreesWithTheWindingOfStars) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int trial = 0; trial < 50; ++trial) {
        const int n = 3 + trial % 9;
        std::vector<double> xs, ys;
        for (int i = 0; i < n; ++i) { // star-shaped about the origin, with notches
            const double angle = 2 * std::numbers::pi * (i + 0.9 * unit(rng)) / n;
            const double radius = 0.2 + unit(rng);
            xs.push_back(radius * std::cos(angle));
            ys.push_back(radius * std::sin(angle));
        }
        for (int probe = 0; probe < 100; ++probe) {
            const double x = 3 * unit(rng) - 1.5, y = 3 * unit(rng) - 1.5;
            EXPECT_EQ(PointInPolygon(x, y, n, xs.data(), ys.data()), IsEnclosed(x, y, xs, ys));
        }
    }
}

TEST(PointInPolygon, EdgesFallByTheRule) {
    double xs[] = {0, 1, 1, 0};
    double ys[] = {0, 0, 1, 1};
    EXPECT_TRUE(PointInPolygon(0.5, 0.5, 4, xs, ys));
    EXPECT_FALSE(PointInPolygon(2.0, 0.5, 4, xs, ys));
    EXPECT_FALSE(PointInPolygon(0.5, 0.5, 2, xs, ys));
    EXPECT_TRUE(PointInPolygon(0.0, 0.5, 4, xs, ys));  // left edge
    EXPECT_FALSE(PointInPolygon(1.0, 0.5, 4, xs, ys)); // right edge
    EXPECT_TRUE(PointInPolygon(0.5, 0.0, 4, xs, ys));  // lower edge
    EXPECT_FALSE(PointInPolygon(0.5, 1.0, 4, xs, ys)); // upper edge
}

} // namespace
} // namespace Tessera::Core
