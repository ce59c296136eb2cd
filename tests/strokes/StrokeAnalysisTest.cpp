#include "tessera/kernel/SM.h"
#include "tessera/strokes/Stroke.h"
#include "tests/support/ChangeLog.h"
#include "tests/support/DrawnStrokes.h"
#include "tests/support/SegmentDistance.h"

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

TEST(StrokeLengths, OnlySegmentsAboveTheThresholdCount) {
    const Stroke stroke = StrokeThrough({{0, 0}, {3, 0}, {3, 4}, {3, 4}, {3, 14}});
    // A segment as long as the threshold still counts: it exceeds it less the length tolerance.
    const std::pair<double, double> rows[] = {{0, 17},        {3, 17},   {3.1, 14},
                                              {4 + 1e-9, 14}, {4.1, 10}, {11, 0}};
    double total = -1;
    for (const auto& [threshold, longLength] : rows) {
        EXPECT_DOUBLE_EQ(stroke.GetSegLengthOverThreshold(threshold, &total), longLength) << threshold;
        EXPECT_DOUBLE_EQ(total, 17);
    }
    EXPECT_EQ(StrokeThrough({{1, 1}}).GetSegLengthOverThreshold(0, &total) + total, 0);
}

TEST(UpSampling, KeepsTheSamplesAndDividesTheSegmentsEvenly) {
    Stroke stroke = StrokeThrough({{0, 0}, {10, 5}, {10, 10}});
    stroke.AssignPoint(StrokePoint(10, 5, 6), 1);
    ChangeLog log;
    const std::unique_ptr<Stroke> dense(stroke.UpSampleStroke(4));
    EXPECT_TRUE(log.entries.empty()) << "a stroke under construction is no change of the model";
    EXPECT_TRUE(dense->AskNumberOfPoints() == 11 && dense->AskBBoxOutdated());
    for (int i = 0; i < 11; ++i) {
        const int from = std::min(i / 5, 1);
        const double s = (i - 5 * from) / 5.0;
        const StrokePoint &p = stroke.GetPoints()[from], &q = stroke.GetPoints()[from + 1],
                          &made = dense->GetPoints().at(i);
        EXPECT_NEAR(made.Distance(p + s * (q - p)), 0.0, 1e-12);
        EXPECT_NEAR(made.GetSpeed(), p.GetSpeed() + s * (q.GetSpeed() - p.GetSpeed()), 1e-6);
    }
    EXPECT_EQ(std::unique_ptr<Stroke>(stroke.UpSampleStroke(0))->AskNumberOfPoints(), 3);
    EXPECT_EQ(std::unique_ptr<Stroke>(Stroke().UpSampleStroke(4))->AskNumberOfPoints(), 0);
}

TEST(CumulativeAngle, SumsSignedTurns) {
    const struct {
        const char* name;
        std::vector<Point> points;
        double degrees;
    } rows[] = {
        {"two points", {{0, 0}, {5, 0}}, 0},
        {"left turn", {{0, 0}, {5, 0}, {5, 5}}, 90},
        {"right turn", {{0, 0}, {5, 0}, {5, -5}}, -90},
        {"left and right cancel", {{0, 0}, {5, 0}, {5, 5}, {10, 5}}, 0},
        {"a reversal has no sense", {{0, 0}, {5, 0}, {1, 0}}, 0},
    };
    for (const auto& row : rows)
        EXPECT_NEAR(StrokeThrough(row.points).ComputeCummulativeAngle(), row.degrees, 1e-9) << row.name;
    Stroke fine;
    for (int i = 0; i <= 1000000; ++i) {
        const double angle = 4 * 3.141592653589793 * i / 1e6;
        fine.AddPoint(StrokePoint(50 * std::cos(angle), 50 * std::sin(angle), 1));
    }
    EXPECT_NEAR(fine.ComputeCummulativeAngle(), 720, 0.1) << "steps of 0.0007 degrees add up all the same";
}

std::vector<double> SpeedsOf(std::vector<double> x, std::vector<double> durations, double scale) {
    std::vector<double> y(x.size(), 0.0), speed(x.size(), -1.0);
    Stroke::ComputeSpeed(static_cast<int>(x.size()), x.data(), y.data(), durations.data(), scale,
                         speed.data());
    return speed;
}

TEST(Speeds, AreDistancesOverTheNeighbouringDurations) {
    const struct {
        const char* name;
        std::vector<double> x, durations;
        double scale;
        std::vector<double> speeds;
    } rows[] = {
        {"plain",
         {0, 10, 21, 33, 44, 54},
         {1, 1, 1.1, 1, 0.9},
         10,
         {100, 105, 230 / 2.1, 230 / 2.1, 210 / 1.9, 100 / 0.9}},
        // Steps 1 1 1 a a 1 1 1 raise the speed of the middle sample and, half as much, of its neighbours.
        {"a spike, alone above 1.2 times the mean around it, becomes the mean of its neighbours",
         {0, 1, 2, 3, 4.3, 5.6, 6.6, 7.6, 8.6},
         {1, 1, 1, 1, 1, 1, 1, 1},
         1,
         {1, 1, 1, 1.15, 1.15, 1.15, 1, 1, 1}},
        {"a run stays: its neighbours stand out too",
         {0, 1, 2, 3, 6, 9, 12, 13, 14, 15},
         {1, 1, 1, 1, 1, 1, 1, 1, 1},
         1,
         {1, 1, 1, 2, 3, 3, 2, 1, 1, 1}},
        {"nothing", {}, {}, 1, {}},
        {"one sample", {5}, {}, 2, {0}},
        {"no time passed anywhere: at rest, never infinite", {5, 5, 9}, {0, 0}, 2, {0, 0, 0}},
        {"like its neighbour", {5, 5, 9}, {0, 2}, 1, {2, 2, 2}},
        {"between its neighbours", {0, 4, 4, 4, 6}, {1, 0, 0, 1}, 1, {4, 4, 3, 2, 2}},
        {"no sample has a known speed", {5, kNan, 9}, {0, 2}, 1, {0, 0, 0}},
        {"too short for a finite speed", {5, 5, 9}, {5e-324, 5e-324}, 1, {0, 0, 0}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::vector<double> speeds = SpeedsOf(row.x, row.durations, row.scale);
        for (std::size_t i = 0; i < row.speeds.size(); ++i)
            EXPECT_NEAR(speeds[i], row.speeds[i], 1e-12) << i;
    }
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
        for (Point& p : points)
            if (trial % 3 == 0) // a grid gives collinear and repeated points
                p = Point(std::round(p.x / 8), std::round(p.y / 8));
        const Hull hull(points);
        for (int i = 0; i < hull.n && hull.n > 2; ++i) {
            const Point side = hull[i + 1] - hull[i];
            EXPECT_GT(side.Cross(hull[i + 2] - hull[i + 1]), 0);
            for (const Point& p : points)
                EXPECT_GE(side.Cross(p - hull[i]), -1e-9);
        }
    }
    const std::pair<std::vector<Point>, int> degenerate[] = {
        {{}, 0},
        {{{kNan, 0}, {1, 2}, {HUGE_VAL, 3}, {1, kNan}}, 1},
        {{{1, 2}}, 1},
        {{{1, 2}, {1, 2}, {1, 2}}, 1},
        {{{0, 0}, {2, 2}, {1, 1}, {0, 0}}, 2}};
    for (const auto& [points, corners] : degenerate) {
        const Hull hull(points);
        EXPECT_TRUE(hull.n == corners && (hull.x == nullptr) == (corners == 0)) << points.size();
    }
}

// --- Simplify

// The rule itself, by recursion over plain scans: the farthest sample beside the chord and the farthest
// beyond its ends stay when they exceed the tolerance.
void MarkByRule(const std::vector<Point>& p, int from, int to, double tol, std::vector<bool>& kept) {
    const Point chord = p[to] - p[from];
    int farthest[2] = {-1, -1};
    double distance[2] = {tol, tol};
    for (int i = from + 1; i < to; ++i) {
        const double along = (p[i] - p[from]).Dot(chord), d = SegmentDistance(p[i], p[from], p[to]);
        const int kind = along >= 0 && along <= chord.Dot(chord) && chord.Dot(chord) > 0 ? 0 : 1;
        if (d > distance[kind]) {
            distance[kind] = d;
            farthest[kind] = i;
        }
    }
    kept[from] = kept[to] = true;
    std::sort(farthest, farthest + 2);
    for (const int split : farthest)
        if (split > 0) {
            MarkByRule(p, from, split, tol, kept);
            from = split;
        }
    if (farthest[1] > 0)
        MarkByRule(p, from, to, tol, kept);
}

TEST(Simplify, KeepsWhatTheRuleKeeps) {
    std::mt19937 rng(20240614);
    for (int trial = 0; trial < 80; ++trial) {
        SCOPED_TRACE(trial);
        std::vector<Point> points = RandomWalk(rng, 3 + 5 * trial, 10.0);
        if (trial % 4 == 0) // no chord between the ends
            points.back() = points.front();
        const double tol = 0.5 + trial % 7 * 4;
        std::vector<bool> kept(points.size(), false);
        MarkByRule(points, 0, static_cast<int>(points.size()) - 1, tol, kept);
        Stroke stroke = StrokeThrough(points);
        ASSERT_TRUE(stroke.Simplify(tol));
        std::vector<Point> expected;
        for (std::size_t i = 0; i < points.size(); ++i)
            if (kept[i])
                expected.push_back(points[i]);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), stroke.GetPoints().begin(),
                               stroke.GetPoints().end()));
        EXPECT_FALSE(stroke.AskBBoxOutdated());
    }
}

TEST(Simplify, EndCases) {
    EXPECT_FALSE(StrokeThrough({{0, 0}, {1, 0}}).Simplify(1));
    Stroke exact = StrokeThrough({{0, 0}, {5, 2}, {10, 0}}),
           both = StrokeThrough({{0, 0}, {5, 3}, {14, 0}, {10, 0}});
    EXPECT_TRUE(exact.Simplify(2.0) && both.Simplify(2.0));
    EXPECT_EQ(exact.AskNumberOfPoints(), 2) << "a distance equal to the tolerance is dropped";
    EXPECT_EQ(both.AskNumberOfPoints(), 4) << "one beside the chord and one beyond it are kept at once";
    Stroke tie = StrokeThrough({{0, 0}, {3, 2}, {6, 2}, {10, 0}});
    EXPECT_TRUE(tie.Simplify(1.0) && tie.AskNumberOfPoints() == 3);
    EXPECT_EQ(tie.GetPoint(1), Point(3, 2)) << "the first of two equally far";
}

// --- Cusps

TEST(Cusps, AreTheInnerCornersOfAZigzag) {
    const Stroke stroke = StrokeThrough(Zigzag(5, 100, 10, 30));
    std::vector<int> cusps{99};
    stroke.GetCuspIds(110, 8, cusps);
    ASSERT_EQ(cusps.size(), 4u);
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(cusps[i], 30 * (i + 1), 1);
    stroke.GetCuspIds(175, 8, cusps);
    EXPECT_TRUE(cusps.empty()) << "no turn is that sharp";
    StrokeThrough({{0, 0}}).GetCuspIds(110, 8, cusps);
    EXPECT_TRUE(cusps.empty());
}

TEST(Cusps, TraverseTimesFallBackFromTheEndSpeedsToTheMeanToTheDistance) {
    // Five samples one unit apart: distance 4 over the window.
    const struct {
        const char* name;
        double atEnds, between, time;
    } rows[] = {
        {"mean of the end speeds", 2, 9, 2.0},
        {"stroke's mean speed", 0, 10, 4.0 / 6},
        {"at rest", 0, 0, 4.0},
    };
    for (const auto& row : rows) {
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
        const std::vector<Point> points = Zigzag(5, 100, 10, 30);
        Stroke stroke = StrokeThrough(points);
        for (int i = 30 * (flick + 1) - 4; i <= 30 * (flick + 1) + 4; ++i)
            stroke.AssignPoint(StrokePoint(points[i].x, points[i].y, 100), i);
        std::vector<int> cusps;
        stroke.GetCuspIds(110, 8, cusps);
        ASSERT_EQ(cusps.size(), 3u);
        const int dropped = flick == 3 ? 2 : flick;
        for (const int cusp : cusps)
            EXPECT_GT(std::abs(cusp - 30 * (dropped + 1)), 2);
    }
}

} // namespace
