#include "tessera/geometry/Ellipse.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>

#include "tessera/kernel/EQ.h"
#include "tests/support/ChangeLog.h"
#include "tests/support/SampleCurves.h"

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

namespace {

constexpr double kPi = std::numbers::pi;

struct Data {
    double centre[2], radii[2], rotation, start, end;
    bool closed;
};

Data DataOf(const Ellipse& ellipse) {
    Data d{};
    d.closed = ellipse.AskEllipseData(d.centre, d.radii, &d.rotation, &d.start, &d.end);
    return d;
}

Ellipse Make(double r1, double r2, double rotation, double start, double end) {
    double centre[2] = {1, -2};
    double radii[2] = {r1, r2};
    return Ellipse(centre, radii, rotation, start, end);
}

} // namespace

TEST(Ellipse, RotationIsReadBackToTheLastDigits) {
    struct Row {
        double given, expected;
    };
    const Row rows[] = {
        {0, 0},          {1e-9, 1e-9},           {kPi / 2, kPi / 2},      {kPi - 1e-9, kPi - 1e-9},
        {kPi, kPi},      {1.5 * kPi, 1.5 * kPi}, {-0.25, 2 * kPi - 0.25}, {-1e-17, 0},
        {7, 7 - 2 * kPi}};
    for (const Row& row : rows) {
        for (const double r1 : {2.0, -2.0}) {
            const Data d = DataOf(Make(r1, 1, row.given, 0.5, 2));
            EXPECT_NEAR(d.rotation, row.expected, 2e-15) << row.given;
            EXPECT_GE(d.rotation, 0.0);
            EXPECT_LT(d.rotation, 2 * kPi);
            EXPECT_DOUBLE_EQ(d.radii[0], r1);
            EXPECT_FALSE(d.closed);
        }
    }
}

TEST(Ellipse, Accessors) {
    const Ellipse ellipse = Make(4, 2, 0.6, 0.2, 3.0);
    EXPECT_NEAR(ellipse.AskCenter().Distance(Point(1, -2)), 0.0, 0.0);
    EXPECT_NEAR(ellipse.AskDirection().x, std::cos(0.6), 1e-15);
    EXPECT_NEAR(ellipse.AskDirection().y, std::sin(0.6), 1e-15);
    const Vector none = Make(1e-10, 2, 0.6, 0, 1).AskDirection();
    EXPECT_EQ(std::hypot(none.x, none.y), 0.0);
    double r1 = 0, r2 = 0;
    ellipse.AskRadii(r1, r2);
    EXPECT_DOUBLE_EQ(r1, 4);
    EXPECT_DOUBLE_EQ(r2, 2);
    const Point major = ellipse.GetPointAtParameter(0.0, true);
    EXPECT_NEAR(ellipse.GetMajorRadiusPoint(1.0).Distance(major), 0.0, 1e-15);
    EXPECT_NEAR(ellipse.GetRotateHandleLocation().Distance(major), 0.0, 1e-15);
    EXPECT_NEAR(ellipse.GetMinorRadiusPoint(1.0).Distance(ellipse.GetPointAtParameter(kPi / 2, true)), 0.0,
                1e-15);
    EXPECT_TRUE(ellipse.WithinBounds(Point(1e9, 1e9)));
    EXPECT_EQ(ellipse.GetType(), 6);
}

TEST(Ellipse, RelativeParameterDoesNotWrap) {
    const Ellipse ellipse = Make(2, 1, 0.3, 1, 3);
    struct Row {
        double theta, relative;
    };
    const Row rows[] = {{1, 0}, {3, 1}, {1.5, 0.25}, {0.5, 0}, {5, 1}, {1.5 + 2 * kPi, 1}, {-3, 0}};
    for (const Row& row : rows)
        EXPECT_NEAR(ellipse.GetRelativeParam(row.theta), row.relative, 1e-15) << row.theta;
}

TEST(Ellipse, ZeroLengthAtItsTolerances) {
    const double t = EQ_ask_length_tolerance();
    EXPECT_TRUE(Make(0.9 * t, 0.9 * t, 0, 0, 1).IsZeroLength());
    EXPECT_FALSE(Make(0.9 * t, 1.1 * t, 0, 0, 1).IsZeroLength());
    EXPECT_TRUE(Make(2, 1, 0, 1, 1 + 0.9 * t).IsZeroLength());
    EXPECT_FALSE(Make(2, 1, 0, 1, 1 + 1.1 * t).IsZeroLength());
}

TEST(Ellipse, SetLimitsKeepsAnglesIncreasing) {
    struct Row {
        const char* name;
        double oldStart, oldEnd, a, b, start, end;
    };
    const Row rows[] = {
        {"forwards", 0, 2 * kPi, 1, 2, 1, 2},
        {"through the zero angle", 0, 2 * kPi, 5, 1, 5, 1 + 2 * kPi},
        {"beyond the present limits", 0.1, 0.2, 3, 4, 3, 4},
        {"coincident makes a full turn", 0.5, 1, 2, 2, 2, 2 + 2 * kPi},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Ellipse ellipse = Make(3, 1, 0.7, row.oldStart, row.oldEnd);
        const Point a = ellipse.GetPointAtParameter(row.a, true);
        const Point b = ellipse.GetPointAtParameter(row.b, true);
        ChangeLog log;
        ellipse.SetLimits(a, b);
        EXPECT_EQ(log.Take(ellipse), 1);
        const Data d = DataOf(ellipse);
        EXPECT_NEAR(d.start, row.start, 1e-9);
        EXPECT_NEAR(d.end, row.end, 1e-9);
        EXPECT_EQ(ellipse.IsClosed(), d.end - d.start > 2 * kPi - 1e-10);
    }
}

TEST(Ellipse, ExtensionContinuesBackToTheStart) {
    EXPECT_EQ(Make(2, 1, 0, 0, 2 * kPi).CreateExtensionCurve(), nullptr);
    for (const double end : {1.2, 3.0, 6.0, 7.5}) {
        const Ellipse ellipse = Make(3, 1, 2.0, 1.0, end);
        const std::unique_ptr<Ellipse> rest(ellipse.CreateExtensionCurve());
        ASSERT_NE(rest, nullptr);
        EXPECT_NEAR(rest->GetStart().Distance(ellipse.GetEnd()), 0.0, 1e-8);
        EXPECT_NEAR(rest->GetEnd().Distance(ellipse.GetStart()), 0.0, 1e-8);
        const Ellipse whole = Make(3, 1, 2.0, 0, 2 * kPi);
        if (end - 1.0 < 2 * kPi) {
            EXPECT_NEAR(rest->Length() + ellipse.Length(), whole.Length(), 1e-7) << end;
        }
    }
}

TEST(Ellipse, RadiiAndClosing) {
    Ellipse ellipse = Make(3, 1, 2.0, 0.5, 2);
    ellipse.SetRadii(5, 0.25);
    const Ellipse fresh = Make(5, 0.25, 2.0, 0.5, 2);
    EXPECT_TRUE(ellipse.IsSameCurve(&fresh));
    ellipse.SetRadii(0, 0.5); // the direction survives a vanished axis
    ellipse.SetRadii(2, 0.5);
    EXPECT_NEAR(DataOf(ellipse).rotation, 2.0, 1e-14);
    ellipse.SetClosed();
    EXPECT_TRUE(ellipse.IsClosed());
    EXPECT_EQ(DataOf(ellipse).end - DataOf(ellipse).start, 2 * kPi);
}

TEST(Ellipse, SampledPointsKeepTheTolerance) {
    for (const double tol : {0.3, 0.01, 1e-4}) {
        const Ellipse ellipse = Make(9, 2, 0.4, 0.3, 5.0);
        std::vector<Point> points;
        ellipse.CreatePolylinePoints(ellipse.AskNumberOfSampledPoints(tol), points);
        for (const Point& p : DensePoints(ellipse, 500))
            EXPECT_LE(PolylineDistance(points, p), tol * (1 + 1e-9));
    }
    EXPECT_EQ(Make(9, 2, 0.4, 0, 2 * kPi).AskNumberOfSampledPoints(5), 5);
    EXPECT_EQ(Make(9, 2, 0.4, 0, 1).AskNumberOfSampledPoints(5), 4);
}

TEST(Ellipse, SameCurveWithinItsTolerances) {
    const Ellipse ellipse = Make(3, 1, 0.5, 0.2, 2);
    EXPECT_TRUE(ellipse.IsSameCurve(&ellipse));
    struct Row {
        double r1, rotation, start, end;
        bool same;
    };
    const Row rows[] = {
        {3 + 2e-9, 0.5, 0.2, 2, true},
        {3 + 3e-9, 0.5, 0.2, 2, false},
        {3, 0.5 + 0.9e-10, 0.2, 2, true},
        {3, 0.5 + 1.2e-10, 0.2, 2, false},
        {3, 0.5, 0.2 + 0.9e-10, 2, true},
        {3, 0.5, 0.2, 2 + 1.2e-10, false},
        {3, 0.5, 0.2 + 2 * kPi, 2 + 2 * kPi, false},
    };
    for (const Row& row : rows) {
        const Ellipse other = Make(row.r1, 1, row.rotation, row.start, row.end);
        EXPECT_EQ(ellipse.IsSameCurve(&other), row.same) << row.r1 << " " << row.rotation << " " << row.start;
    }
}
