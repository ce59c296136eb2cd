#include "tessera/recognition/internal/SingleShapes.h"

#include "tessera/kernel/LSFIT.h"
#include "tessera/recognition/internal/AngularCover.h"
#include "tests/support/FitSamples.h"
#include "tests/support/SampleCurves.h"

namespace Tessera::Geometry {
namespace {

using Vex::Math::Point2;

constexpr double kPi = std::numbers::pi;
constexpr double kTurn = 2.0 * std::numbers::pi;
constexpr double kNoLimit = 1e300;
constexpr double kDegree = kPi / 180.0;

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
        const double start = kTurn * unit(rng), sweep = kTurn * unit(rng);
        AngularCover cover;
        std::vector<double> angles;
        for (auto n = 1 + rng() % 200; n > 0; --n) {
            const double angle = start + sweep * unit(rng);
            const double radius = std::exp(4.0 * unit(rng) - 2.0);
            const double x = radius * std::cos(angle), y = radius * std::sin(angle);
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
    const struct {
        std::vector<Point2> directions;
        double start, end;
    } rows[] = {
        {{}, 0.0, kTurn},
        {{{1, 0}}, 0.0, 0.0},
        {{{1, -0.0}, {0, 1}}, 0.0, 0.5 * kPi},                  // negative zero is angle 0
        {{{1, -1e-18}, {0, 1}}, 0.0, 0.5 * kPi},                // just below the axis is a turn less nothing
        {{{0, -1}, {-1, 0}, {0, 1}, {1, 0}}, 0.5 * kPi, kTurn}, // the first of equal gaps
    };
    for (const auto& row : rows) {
        AngularCover cover;
        for (const Point2& d : row.directions)
            cover.Add(d.x, d.y);
        EXPECT_NEAR(cover.Covered().start, row.start, 1e-15) << &row - rows;
        EXPECT_NEAR(cover.Covered().end, row.end, 1e-15) << &row - rows;
    }
}

// --- Line

TEST(SingleLine, RunsFromOutermostToOutermostProjectionAsThePenDid) {
    std::vector<Point2> pts = {{1, 1}, {0, 0}, {3, 3}, {5, 5}, {4, 4}}; // overshoots at both ends
    double dev = -1.0;
    for (const bool backwards : {false, true}) {
        const auto line = RecognizeLine(pts, kNoLimit, &dev);
        ASSERT_TRUE(line);
        EXPECT_NEAR(dev, 0.0, 1e-12);
        EXPECT_NEAR(line->GetStart().Distance(backwards ? Point(5, 5) : Point(0, 0)), 0.0, 1e-12);
        EXPECT_NEAR(line->GetEnd().Distance(backwards ? Point(0, 0) : Point(5, 5)), 0.0, 1e-12);
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

// --- Arc and ellipse

// Counter-clockwise over the points, whichever way the pen ran.
TEST(SingleShapes, EndWhereThePointsEnd) {
    for (const double sweep : {20.0, 150.0, 270.0, 341.0})
        for (int start = 3; start < 360; start += 17)
            for (const bool backwards : {false, true}) {
                SCOPED_TRACE(testing::Message() << sweep << " from " << start << " back " << backwards);
                auto pts = EllipsePoints({0.3, -0.2}, 0.8, 0.8, 0, start * kDegree, sweep * kDegree, 101);
                auto oval = EllipsePoints({0.5, 0.4}, 0.5, 0.2, 0.7, start * kDegree, sweep * kDegree, 121);
                const Point first(oval[0].x, oval[0].y), last(oval[120].x, oval[120].y);
                const Point middle(oval[60].x, oval[60].y);
                if (backwards) {
                    std::reverse(pts.begin(), pts.end());
                    std::reverse(oval.begin(), oval.end());
                }
                double dev = -1.0;
                const auto arc = RecognizeArc(pts, false, 0.01, kNoLimit, &dev);
                ASSERT_TRUE(arc);
                EXPECT_LT(dev, 1e-9);
                EXPECT_NEAR(arc->GetCenter().Distance(Point(0.3, -0.2)), 0.0, 1e-9);
                EXPECT_NEAR(arc->GetRadius(), 0.8, 1e-9);
                EXPECT_NEAR(arc->GetStartAngle(), start * kDegree, 1e-9);
                EXPECT_NEAR(arc->GetEndAngle(), (start + sweep) * kDegree, 1e-9);
                if (sweep < 150.0)
                    continue; // too little of an ellipse to know it well
                const auto ellipse = RecognizeEllipse(oval, false, kNoLimit, &dev);
                ASSERT_TRUE(ellipse);
                EXPECT_LT(dev, 1e-6);
                EXPECT_LT(ellipse->GetStart().Distance(first), 1e-5);
                EXPECT_LT(ellipse->GetEnd().Distance(last), 1e-5);
                EXPECT_LT(ellipse->DistanceBounded(middle), 1e-5);
            }
}

TEST(SingleShapes, MoreThan95PercentOnlyWhenFull) {
    double dev = 0.0;
    const auto arc = [&](double share, bool full) {
        auto pts = EllipsePoints({0, 0}, 1, 1, 0, 1.0, share * kTurn, 400);
        return RecognizeArc(pts, full, 0.0, kNoLimit, &dev);
    };
    EXPECT_TRUE(arc(0.9499, false));
    EXPECT_FALSE(arc(0.9501, false));
    EXPECT_TRUE(arc(0.9501, true)->IsClosed());
    EXPECT_EQ(arc(0.9501, true)->GetStartAngle(), 0.0);
    const auto ellipse = [&](double share, bool full) {
        auto pts = EllipsePoints({0, 0}, 1, 0.5, 0.2, 1.0, share * kTurn, 400);
        return RecognizeEllipse(pts, full, kNoLimit, &dev);
    };
    EXPECT_TRUE(ellipse(0.9495, false));
    EXPECT_FALSE(ellipse(0.9505, false));
    EXPECT_TRUE(ellipse(0.9505, true)->IsClosed());
}

// A round of corners and bumps that stays open by some share: the answer falls before the fit is finished
// only where the finished fit says the same.
TEST(SingleEllipse, IsNullJustWhereTheFinishedFitCoversTheTurn) {
    std::mt19937 rng(20250311);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    int open = 0;
    for (int trial = 0; trial < 2000; ++trial) {
        SCOPED_TRACE(trial);
        const double bump = 0.5 * unit(rng), squeeze = 0.3 + 0.7 * unit(rng), noise = 0.04 * unit(rng);
        const double sweep = kTurn * (0.9 + 0.12 * unit(rng)), bumps = static_cast<double>(2 + rng() % 5);
        std::vector<Point2> pts(30 + rng() % 120);
        for (std::size_t i = 0; i < pts.size(); ++i) {
            const double t = sweep * static_cast<double>(i) / static_cast<double>(pts.size() - 1);
            const double r = 1.0 + 0.5 * bump * std::cos(bumps * t) + noise * unit(rng);
            pts[i] = {r * std::cos(t), squeeze * r * std::sin(t)};
        }
        Point2 centre{};
        double a = 0.0, b = 0.0, angle = 0.0, err[3], dev = 0.0;
        int status = 1;
        LSFIT_ellipse_to_points_2d(pts.data(), static_cast<int>(pts.size()), &centre, &a, &b, &angle, &status,
                                   err);
        ASSERT_EQ(status, 0);
        std::vector<double> angles;
        for (const Point2& p : pts) {
            const double x = p.x - centre.x, y = p.y - centre.y, c = std::cos(angle), s = std::sin(angle);
            const double polar = std::atan2((c * y - s * x) * a, (c * x + s * y) * b);
            angles.push_back(polar < 0.0 ? polar + kTurn : polar);
        }
        const AngularRange range = SortedCover(angles);
        const bool isOpen = range.end - range.start <= 0.95 * kTurn;
        EXPECT_EQ(RecognizeEllipse(pts, false, kNoLimit, &dev) != nullptr, isOpen);
        open += isOpen ? 1 : 0;
    }
    EXPECT_GT(open, 300);
    EXPECT_LT(open, 1700);
}

TEST(SingleArc, EndsThatNearlyMeetAreNoArc) {
    auto pts = EllipsePoints({0, 0}, 2, 2, 0, 0.5, 0.75 * kTurn, 200);
    const double open = 0.5 * kTurn; // length of the part not drawn
    double dev = 0.0;
    EXPECT_TRUE(RecognizeArc(pts, false, open * (1 - 1e-6), kNoLimit, &dev));
    EXPECT_FALSE(RecognizeArc(pts, false, open * (1 + 1e-6), kNoLimit, &dev));
}

TEST(SingleArc, LimitAndStraightPoints) {
    auto pts = EllipsePoints({0, 0}, 1, 1, 0, 0.0, 2.0, 50);
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

// --- Ellipse check

TEST(EllipseCheck, AgreesWithTheDistanceToEverySegment) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    int passed = 0;
    for (int trial = 0; trial < 300; ++trial) {
        SCOPED_TRACE(trial);
        const Testing::CurvePtr curve = Testing::RandomCurve(rng, 2);
        const auto& ellipse = static_cast<const Ellipse&>(*curve);
        std::vector<Point2> pts;
        for (const Point& p : Testing::DensePoints(ellipse, 1 + static_cast<int>(rng() % 60)))
            pts.push_back({p.x + 0.02 * unit(rng), p.y + 0.02 * unit(rng)});
        if (trial % 3 == 0) // samples out of the ellipse's order
            std::rotate(pts.begin(), pts.begin() + static_cast<std::ptrdiff_t>(pts.size() / 2), pts.end());
        if (trial % 2 == 0)
            std::reverse(pts.begin(), pts.end());
        const double tol = 0.2 * unit(rng) + 1e-4;
        std::vector<Point> samples;
        ellipse.CreatePolylinePoints(ellipse.AskNumberOfSampledPoints(tol), samples);
        double farthest = 0.0;
        for (const Point& p : samples)
            farthest = std::max(farthest, Testing::PolylineDistance(pts, Point2{p.x, p.y}));
        ASSERT_EQ(CheckEllipse(pts, tol, ellipse), farthest <= tol) << farthest - tol;
        passed += farthest <= tol ? 1 : 0;
    }
    EXPECT_GT(passed, 50);
    EXPECT_LT(passed, 250);
    double radii[2] = {1, 1};
    EXPECT_FALSE(CheckEllipse(std::vector<Point2>{{1, 0}}, 10.0, Ellipse(radii, radii, 0.0, 0.0, 1.0)));
}

} // namespace
} // namespace Tessera::Geometry
