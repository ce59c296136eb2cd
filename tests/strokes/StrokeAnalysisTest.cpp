#include "tessera/strokes/Stroke.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <random>

#include <gtest/gtest.h>

#include "tessera/kernel/SM.h"
#include "tests/support/ChangeLog.h"
#include "tests/support/DrawnStrokes.h"
#include "tests/support/SegmentDistance.h"

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

TEST(StrokeLengths, OnlySegmentsAboveTheThresholdCount) {
    const Stroke stroke = StrokeThrough({{0, 0}, {3, 0}, {3, 4}, {3, 4}, {3, 14}});
    struct Row {
        double threshold, longLength;
    };
    // A segment as long as the threshold still counts: it exceeds it less the length tolerance.
    for (const Row& row :
         {Row{0, 17}, Row{3, 17}, Row{3.1, 14}, Row{4 + 1e-9, 14}, Row{4.1, 10}, Row{11, 0}}) {
        SCOPED_TRACE(row.threshold);
        double total = -1;
        EXPECT_DOUBLE_EQ(stroke.GetSegLengthOverThreshold(row.threshold, &total), row.longLength);
        EXPECT_DOUBLE_EQ(total, 17);
    }
    double total = -1;
    EXPECT_EQ(StrokeThrough({{1, 1}}).GetSegLengthOverThreshold(0, &total), 0);
    EXPECT_EQ(total, 0);
}

TEST(UpSampling, KeepsTheSamplesAndDividesTheSegmentsEvenly) {
    Stroke stroke = StrokeThrough({{0, 0}, {10, 5}, {10, 10}});
    stroke.AssignPoint(StrokePoint(10, 5, 6), 1);
    const std::unique_ptr<Stroke> dense(stroke.UpSampleStroke(4));
    ASSERT_EQ(dense->AskNumberOfPoints(), 11);
    for (int i = 0; i < 11; ++i) {
        const int from = std::min(i / 5, 1);
        const double s = (i - 5 * from) / 5.0;
        const StrokePoint& p = stroke.GetPoints()[from];
        const StrokePoint& q = stroke.GetPoints()[from + 1];
        EXPECT_NEAR(dense->GetPoints()[i].x, p.x + s * (q.x - p.x), 1e-12);
        EXPECT_NEAR(dense->GetPoints()[i].GetSpeed(), p.GetSpeed() + s * (q.GetSpeed() - p.GetSpeed()), 1e-6);
    }
    EXPECT_TRUE(dense->AskBBoxOutdated());
    ChangeLog log;
    EXPECT_EQ(std::unique_ptr<Stroke>(stroke.UpSampleStroke(0))->AskNumberOfPoints(), 3);
    EXPECT_TRUE(log.entries.empty()) << "a stroke under construction is no change of the model";
    EXPECT_EQ(std::unique_ptr<Stroke>(Stroke().UpSampleStroke(4))->AskNumberOfPoints(), 0);
}

TEST(CumulativeAngle, SumsSignedTurns) {
    struct Row {
        const char* name;
        std::vector<Point> points;
        double degrees;
    };
    const Row rows[] = {
        {"two points", {{0, 0}, {5, 0}}, 0},
        {"left turn", {{0, 0}, {5, 0}, {5, 5}}, 90},
        {"right turn", {{0, 0}, {5, 0}, {5, -5}}, -90},
        {"left and right cancel", {{0, 0}, {5, 0}, {5, 5}, {10, 5}}, 0},
        {"a reversal has no sense", {{0, 0}, {5, 0}, {1, 0}}, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_NEAR(StrokeThrough(row.points).ComputeCummulativeAngle(), row.degrees, 1e-9);
    }
    Stroke fine;
    for (int i = 0; i <= 1000000; ++i) {
        const double angle = 4 * 3.141592653589793 * i / 1e6;
        fine.AddPoint(StrokePoint(50 * std::cos(angle), 50 * std::sin(angle), 1));
    }
    EXPECT_NEAR(fine.ComputeCummulativeAngle(), 720, 0.1) << "steps of 0.0007 degrees add up all the same";
}

TEST(Speeds, AreDistancesOverTheNeighbouringDurations) {
    double x[] = {0, 10, 21, 33, 44, 54};
    double y[] = {0, 0, 0, 0, 0, 0};
    double t[] = {1, 1, 1.1, 1, 0.9};
    double speed[6];
    Stroke::ComputeSpeed(6, x, y, t, 10.0, speed);
    const double expected[] = {100, 105, 230 / 2.1, 230 / 2.1, 210 / 1.9, 100 / 0.9};
    for (int i = 0; i < 6; ++i) {
        EXPECT_NEAR(speed[i], expected[i], 1e-12) << i;
    }
}

TEST(Speeds, ASingleSpikeGoesAndARunStays) {
    const auto speedsOf = [](const std::vector<double>& steps) {
        std::vector<double> x{0}, y(steps.size() + 1, 0.0), t(steps.size(), 1.0), speed(steps.size() + 1);
        for (const double step : steps) {
            x.push_back(x.back() + step);
        }
        Stroke::ComputeSpeed(static_cast<int>(x.size()), x.data(), y.data(), t.data(), 1.0, speed.data());
        return speed;
    };
    // Steps 1 1 1 1 a a 1 1 1 1 raise the speed of the middle sample and, half as much, of its neighbours.
    const std::vector<double> smooth = speedsOf({1, 1, 1, 1, 1.3, 1.3, 1, 1, 1, 1});
    EXPECT_NEAR(smooth[5], 1.15, 1e-12) << "alone above 1.2 times the mean around it: mean of its neighbours";
    const std::vector<double> run = speedsOf({1, 1, 1, 1, 3, 3, 3, 1, 1, 1, 1});
    EXPECT_NEAR(run[5], 3, 1e-12) << "its neighbours stand out too";
}

TEST(Speeds, EndCases) {
    double x[] = {5, 5, 9};
    double y[] = {5, 5, 5};
    double none[] = {0, 0};
    double speed[] = {-1, -1, -1};
    Stroke::ComputeSpeed(1, x, y, nullptr, 2.0, speed);
    EXPECT_EQ(speed[0], 0);
    Stroke::ComputeSpeed(3, x, y, none, 2.0, speed);
    for (const double s : speed) {
        EXPECT_EQ(s, 0) << "no time passed anywhere: at rest, never infinite";
    }
    double half[] = {0, 2};
    Stroke::ComputeSpeed(3, x, y, half, 1.0, speed);
    EXPECT_EQ(speed[0], 2) << "like its neighbour";
    Stroke::ComputeSpeed(0, x, y, none, 1.0, nullptr);
    double unknown[] = {5, kNan, 9};
    double shortest[] = {5e-324, 5e-324};
    Stroke::ComputeSpeed(3, unknown, y, half, 1.0, speed);
    EXPECT_EQ(speed[2], 0) << "no sample has a known speed";
    Stroke::ComputeSpeed(3, x, y, shortest, 1.0, speed);
    EXPECT_TRUE(std::isfinite(speed[0] + speed[1] + speed[2]));
}

// --- Hull

struct Hull {
    explicit Hull(const std::vector<Point>& points) { StrokeThrough(points).ComputeConvexHull(&n, &x, &y); }
    ~Hull() {
        SM_free(x);
        SM_free(y);
    }
    Point operator[](int i) const { return {x[i % n], y[i % n]}; }
    int n = -1;
    double *x = nullptr, *y = nullptr;
};

TEST(StrokeHull, ContainsEveryPointAndIsStrictlyConvex) {
    std::mt19937 rng(20240613);
    for (int trial = 0; trial < 60; ++trial) {
        SCOPED_TRACE(trial);
        std::vector<Point> points = RandomWalk(rng, 3 + trial, 10.0);
        if (trial % 3 == 0) { // a grid gives collinear and repeated points
            for (Point& p : points) {
                p = Point(std::round(p.x / 8), std::round(p.y / 8));
            }
        }
        const Hull hull(points);
        for (int i = 0; i < hull.n && hull.n > 2; ++i) {
            const Point side = hull[i + 1] - hull[i];
            EXPECT_GT(side.Cross(hull[i + 2] - hull[i + 1]), 0);
            for (const Point& p : points) {
                EXPECT_GE(side.Cross(p - hull[i]), -1e-9);
            }
        }
    }
}

TEST(StrokeHull, DegenerateStrokes) {
    struct Row {
        std::vector<Point> points;
        int corners;
    };
    const Row rows[] = {{{}, 0},
                        {{{kNan, 0}, {1, 2}, {HUGE_VAL, 3}, {1, kNan}}, 1},
                        {{{1, 2}}, 1},
                        {{{1, 2}, {1, 2}, {1, 2}}, 1},
                        {{{0, 0}, {2, 2}, {1, 1}, {0, 0}}, 2}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.points.size());
        const Hull hull(row.points);
        EXPECT_EQ(hull.n, row.corners);
        EXPECT_EQ(hull.x == nullptr, row.corners == 0);
    }
}

// --- Simplify

// The rule itself, by recursion over plain scans.
void MarkByRule(const std::vector<Point>& p, int from, int to, double tol, std::vector<bool>& kept) {
    if (to - from < 2) {
        return;
    }
    int beside = -1, beyond = -1;
    double besideDistance = tol, beyondDistance = tol;
    for (int i = from + 1; i < to; ++i) {
        const double along =
            (p[i].x - p[from].x) * (p[to].x - p[from].x) + (p[i].y - p[from].y) * (p[to].y - p[from].y);
        const bool isBeside = along >= 0 && along <= p[from].Distance2(p[to]) && p[from].Distance2(p[to]) > 0;
        const double d = SegmentDistance(p[i], p[from], p[to]);
        if (d > (isBeside ? besideDistance : beyondDistance)) {
            (isBeside ? beside : beyond) = i;
            (isBeside ? besideDistance : beyondDistance) = d;
        }
    }
    int previous = from;
    for (const int split : {std::min(beside, beyond), std::max(beside, beyond), to}) {
        if (split >= 0 && split > previous && (split != to || previous != from)) {
            kept[split] = true;
            MarkByRule(p, previous, split, tol, kept);
            previous = split;
        }
    }
}

TEST(Simplify, KeepsWhatTheRuleKeeps) {
    std::mt19937 rng(20240614);
    for (int trial = 0; trial < 80; ++trial) {
        SCOPED_TRACE(trial);
        std::vector<Point> points = RandomWalk(rng, 3 + 5 * trial, 10.0);
        if (trial % 4 == 0) { // no chord between the ends
            points.back() = points.front();
        }
        const double tol = 0.5 + trial % 7 * 4;
        std::vector<bool> kept(points.size(), false);
        kept.front() = kept.back() = true;
        MarkByRule(points, 0, static_cast<int>(points.size()) - 1, tol, kept);
        Stroke stroke = StrokeThrough(points);
        ASSERT_TRUE(stroke.Simplify(tol));
        std::vector<Point> expected;
        for (std::size_t i = 0; i < points.size(); ++i) {
            if (kept[i]) {
                expected.push_back(points[i]);
            }
        }
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), stroke.GetPoints().begin(),
                               stroke.GetPoints().end()));
        EXPECT_FALSE(stroke.AskBBoxOutdated());
    }
}

TEST(Simplify, EndCases) {
    EXPECT_FALSE(StrokeThrough({{0, 0}, {1, 0}}).Simplify(1));
    Stroke exact = StrokeThrough({{0, 0}, {5, 2}, {10, 0}});
    EXPECT_TRUE(exact.Simplify(2.0)) << "a distance equal to the tolerance is dropped";
    EXPECT_EQ(exact.AskNumberOfPoints(), 2);
    Stroke both = StrokeThrough({{0, 0}, {5, 3}, {14, 0}, {10, 0}});
    both.Simplify(2.0);
    EXPECT_EQ(both.AskNumberOfPoints(), 4) << "one beside the chord and one beyond it are kept at once";
}

// --- Cusps

std::vector<Point> Zigzag(int legs, int samplesPerLeg) {
    std::vector<Point> points{Point(0, 0)};
    for (int leg = 0; leg < legs; ++leg) {
        for (int i = 1; i <= samplesPerLeg; ++i) {
            const double t = static_cast<double>(i) / samplesPerLeg;
            points.emplace_back(10 * (leg + t), leg % 2 == 0 ? 100 * t : 100 * (1 - t));
        }
    }
    return points;
}

TEST(Cusps, AreTheInnerCornersOfAZigzag) {
    const Stroke stroke = StrokeThrough(Zigzag(5, 30));
    std::vector<int> cusps{99};
    stroke.GetCuspIds(110, 8, cusps);
    ASSERT_EQ(cusps.size(), 4u);
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(cusps[i], 30 * (i + 1), 1);
    }
    stroke.GetCuspIds(175, 8, cusps);
    EXPECT_TRUE(cusps.empty()) << "no turn is that sharp";
    StrokeThrough({{0, 0}}).GetCuspIds(110, 8, cusps);
    EXPECT_TRUE(cusps.empty());
}

TEST(Cusps, TraverseTimesFallBackFromTheEndSpeedsToTheMeanToTheDistance) {
    struct Row {
        const char* name;
        double atEnds, between, time;
    };
    // Five samples one unit apart: distance 4 over the window.
    const Row rows[] = {
        {"mean of the end speeds", 2, 9, 2.0},
        {"stroke's mean speed", 0, 10, 4.0 / 6},
        {"at rest", 0, 0, 4.0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Stroke stroke = StrokeThrough({{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}}, row.between);
        stroke.AssignPoint(StrokePoint(0, 0, 1.5 * row.atEnds), 0);
        stroke.AssignPoint(StrokePoint(4, 0, 0.5 * row.atEnds), 4);
        std::vector<double> times;
        stroke.GetCuspTraverseTime({2}, 2, times);
        ASSERT_EQ(times.size(), 1u);
        EXPECT_NEAR(times[0], row.time, 1e-6);
    }
}

TEST(Cusps, AFlickIsDroppedAndForTheLastCuspTheOneBefore) {
    // One of four cusps is passed very fast: its time falls below 0.15 of the mean.
    for (const int flick : {1, 3}) {
        SCOPED_TRACE(flick);
        const std::vector<Point> points = Zigzag(5, 30);
        Stroke stroke = StrokeThrough(points);
        for (int i = 30 * (flick + 1) - 4; i <= 30 * (flick + 1) + 4; ++i) {
            stroke.AssignPoint(StrokePoint(points[i].x, points[i].y, 100), i);
        }
        std::vector<int> cusps;
        stroke.GetCuspIds(110, 8, cusps);
        ASSERT_EQ(cusps.size(), 3u);
        const int dropped = flick == 3 ? 2 : flick;
        for (const int cusp : cusps) {
            EXPECT_GT(std::abs(cusp - 30 * (dropped + 1)), 2);
        }
    }
}

} // namespace
