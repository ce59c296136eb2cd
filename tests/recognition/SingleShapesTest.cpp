#include "tessera/recognition/internal/SingleShapes.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "tessera/recognition/internal/AngularCover.h"
#include "tests/support/FitSamples.h"

namespace Tessera::Geometry {
namespace {

using Vex::Math::Point2;

constexpr double kPi = std::numbers::pi;
constexpr double kTurn = 2.0 * kPi;
constexpr double kNoLimit = 1e300;
constexpr double kDegree = kPi / 180.0;

std::vector<Point2> OnEllipse(double cx, double cy, double a, double b, double rotation, double start,
                              double end, int n) {
    return EllipsePoints({cx, cy}, a, b, rotation, start, end - start, n);
}

std::vector<Point2> OnCircle(double cx, double cy, double r, double start, double end, int n) {
    return OnEllipse(cx, cy, r, r, 0.0, start, end, n);
}

// a - b reduced to [-pi, pi].
double AngleDifference(double a, double b) {
    return std::remainder(a - b, kTurn);
}

// --- Covered angles

// The rule as it is told: sort the angles, append the first one turn later, take the first widest gap.
AngularRange SortedCover(std::vector<double> angles) {
    std::sort(angles.begin(), angles.end());
    angles.push_back(angles.front() + kTurn);
    std::size_t widest = 0;
    for (std::size_t i = 0; i + 1 < angles.size(); ++i)
        if (angles[i + 1] - angles[i] > angles[widest + 1] - angles[widest])
            widest = i;
    AngularRange range{angles[widest + 1], angles[widest] + kTurn};
    if (range.start > 6.283185307079586)
        range = {range.start - kTurn, range.end - kTurn};
    return range;
}

TEST(AngularCover, AgreesWithSortingTheAngles) {
    std::mt19937 rng(20240607);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    int judged = 0;
    for (int trial = 0; trial < 3000; ++trial) {
        SCOPED_TRACE(trial);
        const double start = kTurn * unit(rng);
        const double sweep = kTurn * unit(rng);
        const int n = 1 + static_cast<int>(rng() % 200);
        AngularCover cover;
        std::vector<double> angles;
        for (int i = 0; i < n; ++i) {
            const double angle = start + sweep * unit(rng);
            const double radius = std::exp(4.0 * unit(rng) - 2.0);
            const double x = radius * std::cos(angle);
            const double y = radius * std::sin(angle);
            cover.Add(x, y);
            const double polar = std::atan2(y, x);
            angles.push_back(polar < 0.0 ? polar + kTurn : polar);
        }
        const AngularRange expected = SortedCover(angles);
        const AngularRange actual = cover.Covered();
        if (kTurn - (expected.end - expected.start) < 0.126) {
            EXPECT_GT(actual.end - actual.start, kTurn - 0.126);
            continue;
        }
        ++judged;
        EXPECT_NEAR(actual.start, expected.start, 1e-14);
        EXPECT_NEAR(actual.end, expected.end, 1e-14);
    }
    EXPECT_GT(judged, 1500);
}

TEST(AngularCover, KnownDirections) {
    struct Row {
        const char* name;
        std::vector<Point2> directions;
        double start, end;
    };
    const Row rows[] = {
        {"one direction", {{1, 0}}, 0.0, 0.0},
        {"negative zero is angle 0", {{1, -0.0}, {0, 1}}, 0.0, 0.5 * kPi},
        {"just below the axis is a turn less nothing", {{1, -1e-18}, {0, 1}}, 0.0, 0.5 * kPi},
        {"across the axis", {{1, -1}, {1, 1}}, 1.75 * kPi, 2.25 * kPi},
        {"nothing", {}, 0.0, kTurn},
        {"first of equal gaps", {{0, -1}, {-1, 0}, {0, 1}, {1, 0}}, 0.5 * kPi, kTurn},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        AngularCover cover;
        for (const Point2& d : row.directions)
            cover.Add(d.x, d.y);
        EXPECT_NEAR(cover.Covered().start, row.start, 1e-15);
        EXPECT_NEAR(cover.Covered().end, row.end, 1e-15);
    }
}

// --- Line

TEST(SingleLine, RunsFromOutermostToOutermostProjectionAsThePenDid) {
    std::vector<Point2> pts = {{1, 1}, {0, 0}, {3, 3}, {5, 5}, {4, 4}}; // overshoots at both ends
    double dev = -1.0;
    for (const bool backwards : {false, true}) {
        SCOPED_TRACE(backwards);
        const auto line = RecognizeLine(pts, kNoLimit, &dev);
        ASSERT_TRUE(line);
        EXPECT_NEAR(dev, 0.0, 1e-12);
        const Point low = backwards ? line->GetEnd() : line->GetStart();
        const Point high = backwards ? line->GetStart() : line->GetEnd();
        EXPECT_NEAR(low.Distance(Point(0, 0)), 0.0, 1e-12);
        EXPECT_NEAR(high.Distance(Point(5, 5)), 0.0, 1e-12);
        std::reverse(pts.begin(), pts.end());
    }
}

TEST(SingleLine, LimitIncludesItselfAndTwoPlacesAreNeeded) {
    std::vector<Point2> pts = {{0, 0.25}, {1, -0.25}, {2, -0.25}, {3, 0.25}};
    double dev = 0.0;
    EXPECT_TRUE(RecognizeLine(pts, 0.25, &dev));
    EXPECT_EQ(dev, 0.25);
    EXPECT_FALSE(RecognizeLine(pts, std::nextafter(0.25, 0.0), &dev));
    dev = -1.0;
    for (const std::size_t count : {0U, 1U, 3U}) {
        std::vector<Point2> same(count, Point2{1, 2});
        EXPECT_FALSE(RecognizeLine(same, kNoLimit, &dev));
    }
    EXPECT_EQ(dev, -1.0);
}

// --- Arc

TEST(SingleArc, CounterClockwiseOverThePointsWhicheverWayThePenRan) {
    for (const double sweep : {20.0, 90.0, 180.0, 270.0, 330.0, 341.0})
        for (int start = 3; start < 360; start += 17)
            for (const bool backwards : {false, true}) {
                SCOPED_TRACE(testing::Message() << sweep << " from " << start << " back " << backwards);
                auto pts = OnCircle(0.3, -0.2, 0.8, start * kDegree, (start + sweep) * kDegree, 101);
                if (backwards)
                    std::reverse(pts.begin(), pts.end());
                double dev = -1.0;
                const auto arc = RecognizeArc(pts, false, 0.01, kNoLimit, &dev);
                ASSERT_TRUE(arc);
                EXPECT_LT(dev, 1e-9);
                EXPECT_NEAR(arc->GetCenter().Distance(Point(0.3, -0.2)), 0.0, 1e-9);
                EXPECT_NEAR(arc->GetRadius(), 0.8, 1e-9);
                EXPECT_NEAR(AngleDifference(arc->GetStartAngle(), start * kDegree), 0.0, 1e-9);
                EXPECT_NEAR(arc->GetEndAngle() - arc->GetStartAngle(), sweep * kDegree, 1e-9);
                EXPECT_GE(arc->GetStartAngle(), 0.0);
                EXPECT_LT(arc->GetStartAngle(), kTurn);
            }
}

TEST(SingleArc, MoreThan95PercentIsNoArc) {
    double dev = 0.0;
    auto arc = OnCircle(0, 0, 1, 1.0, 1.0 + 0.9499 * kTurn, 400);
    EXPECT_TRUE(RecognizeArc(arc, false, 0.0, kNoLimit, &dev));
    auto nearlyRound = OnCircle(0, 0, 1, 1.0, 1.0 + 0.9501 * kTurn, 400);
    EXPECT_FALSE(RecognizeArc(nearlyRound, false, 0.0, kNoLimit, &dev));
    const auto circle = RecognizeArc(nearlyRound, true, 0.0, kNoLimit, &dev);
    ASSERT_TRUE(circle);
    EXPECT_TRUE(circle->IsClosed());
    EXPECT_EQ(circle->GetStartAngle(), 0.0);
}

TEST(SingleArc, EndsThatNearlyMeetAreNoArc) {
    auto pts = OnCircle(0, 0, 2, 0.5, 0.5 + 0.75 * kTurn, 200);
    const double open = 0.25 * kTurn * 2.0; // length of the part not drawn
    double dev = 0.0;
    EXPECT_TRUE(RecognizeArc(pts, false, open * (1 - 1e-6), kNoLimit, &dev));
    EXPECT_FALSE(RecognizeArc(pts, false, open * (1 + 1e-6), kNoLimit, &dev));
}

TEST(SingleArc, LimitAndStraightPoints) {
    auto pts = OnCircle(0, 0, 1, 0.0, 2.0, 50);
    pts[25] = {1.1 * pts[25].x, 1.1 * pts[25].y};
    double dev = 0.0;
    ASSERT_TRUE(RecognizeArc(pts, false, 0.0, kNoLimit, &dev));
    const double largest = dev;
    EXPECT_GT(largest, 0.05);
    EXPECT_TRUE(RecognizeArc(pts, false, 0.0, largest, &dev));
    EXPECT_FALSE(RecognizeArc(pts, false, 0.0, std::nextafter(largest, 0.0), &dev));
    std::vector<Point2> straight = {{0, 0}, {1, 1}, {2, 2}, {3, 3}};
    EXPECT_FALSE(RecognizeArc(straight, false, 0.0, kNoLimit, &dev));
}

// --- Ellipse

TEST(SingleEllipse, ArcEndsWhereThePointsEnd) {
    for (const double sweep : {150.0, 270.0, 341.0})
        for (int start = 5; start < 360; start += 29) {
            SCOPED_TRACE(testing::Message() << sweep << " from " << start);
            auto pts = OnEllipse(0.5, 0.4, 0.5, 0.2, 0.7, start * kDegree, (start + sweep) * kDegree, 120);
            double dev = -1.0;
            const auto ellipse = RecognizeEllipse(pts, false, kNoLimit, &dev);
            ASSERT_TRUE(ellipse);
            EXPECT_LT(dev, 1e-6);
            const Point first(pts.front().x, pts.front().y);
            const Point last(pts.back().x, pts.back().y);
            EXPECT_LT(ellipse->GetStart().Distance(first), 1e-5);
            EXPECT_LT(ellipse->GetEnd().Distance(last), 1e-5);
            const Point middle(pts[60].x, pts[60].y);
            EXPECT_LT(ellipse->DistanceBounded(middle), 1e-5);
        }
}

TEST(SingleEllipse, MoreThan95PercentOnlyWhenFull) {
    double dev = 0.0;
    auto arc = OnEllipse(0, 0, 1, 0.5, 0.2, 1.0, 1.0 + 0.9495 * kTurn, 400);
    EXPECT_TRUE(RecognizeEllipse(arc, false, kNoLimit, &dev));
    auto nearlyRound = OnEllipse(0, 0, 1, 0.5, 0.2, 1.0, 1.0 + 0.9505 * kTurn, 400);
    EXPECT_FALSE(RecognizeEllipse(nearlyRound, false, kNoLimit, &dev));
    const auto full = RecognizeEllipse(nearlyRound, true, kNoLimit, &dev);
    ASSERT_TRUE(full);
    EXPECT_TRUE(full->IsClosed());
}

// --- Ellipse check

double DistanceToPath(const Point& p, const std::vector<Point2>& pts) {
    double nearest = 1e300;
    for (std::size_t i = 0; i + 1 < pts.size(); ++i)
        nearest = std::min(
            nearest, Line(Point(pts[i].x, pts[i].y), Point(pts[i + 1].x, pts[i + 1].y)).DistanceBounded(p));
    return nearest;
}

TEST(EllipseCheck, AgreesWithTheDistanceToEverySegment) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    int passed = 0;
    for (int trial = 0; trial < 300; ++trial) {
        SCOPED_TRACE(trial);
        double centre[2] = {unit(rng), unit(rng)};
        double radii[2] = {0.3 + 0.7 * unit(rng), 0.3};
        const double start = kTurn * unit(rng);
        const Ellipse ellipse(centre, radii, unit(rng), start, start + 1.0 + 4.0 * unit(rng));
        std::vector<Point> along;
        ellipse.CreatePolylinePoints(2 + static_cast<int>(rng() % 60), along);
        std::vector<Point2> pts;
        pts.reserve(along.size());
        for (const Point& p : along)
            pts.push_back({p.x + 0.02 * unit(rng), p.y + 0.02 * unit(rng)});
        if (trial % 3 == 0) // samples out of the ellipse's order
            std::rotate(pts.begin(), pts.begin() + static_cast<std::ptrdiff_t>(pts.size() / 2), pts.end());
        if (trial % 2 == 0)
            std::reverse(pts.begin(), pts.end());
        const double tol = 0.1 * unit(rng) + 1e-4;
        std::vector<Point> samples;
        ellipse.CreatePolylinePoints(ellipse.AskNumberOfSampledPoints(tol), samples);
        double farthest = 0.0;
        for (const Point& p : samples)
            farthest = std::max(farthest, DistanceToPath(p, pts));
        ASSERT_EQ(CheckEllipse(pts, tol, ellipse), farthest <= tol) << farthest - tol;
        passed += farthest <= tol ? 1 : 0;
    }
    EXPECT_GT(passed, 50);
    EXPECT_LT(passed, 250);
}

TEST(EllipseCheck, BulgeBetweenThePoints) {
    double centre[2] = {0, 0};
    double radii[2] = {1, 0.5};
    const Ellipse half(centre, radii, 0.0, 0.0, kPi);
    const std::vector<Point2> ends = {{1, 0}, {-1, 0}}; // on the ellipse, 0.5 below its top
    EXPECT_FALSE(CheckEllipse(ends, 0.1, half));
    EXPECT_TRUE(CheckEllipse(ends, 0.5 + 1e-9, half));
    EXPECT_FALSE(CheckEllipse(std::vector<Point2>{{1, 0}}, 10.0, half));
}

} // namespace
} // namespace Tessera::Geometry
