#include "tessera/geometry/Spline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <numeric>

#include "tessera/kernel/EQ.h"
#include "tests/support/ChangeLog.h"
#include "tests/support/SampleCurves.h"
#include "tests/support/ThrownMessage.h"

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

namespace {

using SplinePtr = std::unique_ptr<Spline>;

SplinePtr Make(int order, const std::vector<Point>& poles, const std::vector<double>& weights = {}) {
    return SplinePtr(static_cast<Spline*>(MakeSpline(order, poles, weights).release()));
}

/// Poles as the caller of SetPoles owns them.
struct PoleList {
    ~PoleList() { Point::DeletePoints(list); }
    std::vector<Point*> list;
};

SplinePtr Seven() {
    return Make(4, {{0, 0}, {1, 2}, {2, -1}, {3, 3}, {4, 0}, {5, 1}, {6, 0}});
}

} // namespace

TEST(Spline, CountsOfACubicWithSevenPoles) {
    const SplinePtr spline = Seven();
    EXPECT_EQ(spline->GetDegree(), 3);
    EXPECT_EQ(spline->GetNumPoles(), 7);
    EXPECT_EQ(spline->GetNumKnots(), 11);
    EXPECT_EQ(spline->GetNumSegments(), 4);
    EXPECT_EQ(spline->AskNumberOfSampledPoints(20), 32);
    EXPECT_EQ(spline->AskNumberOfSampledPoints(33), 33);
    EXPECT_EQ(spline->AskNumberOfSampledPoints(1e-9), 32);
    EXPECT_TRUE(spline->WithinBounds(Point(1e9, 0)));
    EXPECT_EQ(Make(2, {{0, 0}, {1, 0}, {2, 3}, {4, 4}, {5, 4}})->AskNumberOfSampledPoints(20), 5);
    spline->SetCurveData(nullptr);
    EXPECT_EQ(spline->AskNumberOfSampledPoints(20), 0);
    std::vector<double> params;
    spline->AskSampledParameters(5, params);
    EXPECT_TRUE(params.empty());
}

TEST(Spline, BrokenDefinitionsAreRefused) {
    double poles[][4] = {{0, 0, 0, 1}, {1, 1, 0, 1}, {2, 0, 0, 1}};
    double good[] = {0, 0, 0, 1, 1, 1};
    double falling[] = {0, 0, 0, 1, 0.5, 1};
    double flat[] = {1, 1, 1, 1, 1, 1};
    const char* text = "Spline::Spline - poles, order and knots do not define a B-curve";
    EXPECT_EQ(ThrownMessage([&] { Spline s(3, 4, 0, good, poles); }), text);
    EXPECT_EQ(ThrownMessage([&] { Spline s(3, 1, 0, good, poles); }), text);
    EXPECT_EQ(ThrownMessage([&] { Spline s(3, 3, 0, falling, poles); }), text);
    EXPECT_EQ(ThrownMessage([&] { Spline s(3, 3, 0, flat, poles); }), text);
    EXPECT_EQ(ThrownMessage([&] { Spline s(3, 3, 0, nullptr, poles); }), text);
}

TEST(Spline, SetPolesMovesOnlyWhatMoved) {
    const SplinePtr spline = Seven();
    PoleList poles;
    std::vector<double> knots = {-1};
    int n = 0, order = 0, periodic = 7;
    spline->AskSplineData(n, order, periodic, knots, poles.list);
    EXPECT_TRUE(n == 7 && order == 4 && periodic == 0);
    EXPECT_EQ(knots, (std::vector<double>{-1, 0, 0, 0, 0, 0.25, 0.5, 0.75, 1, 1, 1, 1})) << "appended";
    ASSERT_EQ(poles.list.size(), 7U);
    const Point before = spline->GetPointAtParameter(0.4, false);
    poles.list[3]->y += 1.0;
    poles.list[0]->x += 1e-9; // within the tolerance
    spline->SetPoles(poles.list);
    EXPECT_EQ(spline->GetStart().x, 0.0);
    EXPECT_GT(spline->GetPointAtParameter(0.4, false).y, before.y + 0.1);
    const SplinePtr fresh = Make(4, {{0, 0}, {1, 2}, {2, -1}, {3, 4}, {4, 0}, {5, 1}, {6, 0}});
    EXPECT_TRUE(spline->IsSameCurve(fresh.get()));
    std::vector<Point*> fewer(poles.list.begin(), poles.list.end() - 1);
    ChangeLog log;
    EXPECT_EQ(ThrownMessage([&] { spline->SetPoles(fewer); }),
              "Spline::SetPoles - cannot change the number of poles");
    EXPECT_EQ(log.Take(*spline), 1) << "reported before the checks";
}

TEST(Spline, ClosedAndSmoothAcrossTheSeam) {
    struct Row {
        const char* name;
        int order;
        std::vector<Point> poles;
        bool closed, smooth;
    };
    const double t = EQ_ask_length_tolerance();
    const Row rows[] = {
        {"open", 3, {{0, 0}, {1, 1}, {2, 0}}, false, false},
        {"kink", 3, {{0, 0}, {1, 1}, {-1, 1}, {0, 0}}, true, false},
        {"just closed", 3, {{0, 0}, {1, 1}, {-1, 1}, {0, 0.9 * t}}, true, false},
        {"just open", 3, {{0, 0}, {1, 1}, {-1, 1}, {0, 1.1 * t}}, false, false},
        {"smooth, legs of other lengths", 3, {{0, 0}, {1, 0}, {1, 2}, {-3, 2}, {-3, 0}, {0, 0}}, true, true},
        {"cusp returning", 3, {{0, 0}, {1, 0}, {3, 2}, {2, 0}, {0, 0}}, true, false},
        {"vanishing end derivative", 4, {{0, 0}, {0, 0}, {2, 0}, {1, 2}, {-1, 0}, {0, 0}}, true, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const SplinePtr spline = Make(row.order, row.poles);
        EXPECT_EQ(spline->IsClosed(), row.closed);
        EXPECT_EQ(spline->IsG1Closed(), row.smooth);
    }
    const SplinePtr converted(Arc(Point(3, 4), 2.0).ConvertToSpline());
    EXPECT_TRUE(converted->IsClosed() && converted->IsG1Closed());
}

TEST(Spline, PeriodicSplinesCloseByTheirKnots) {
    // Uniform cubic over a hexagon, its first three poles repeated at the end.
    std::vector<double> poles;
    for (int i = 0; i < 9; ++i)
        poles.insert(poles.end(),
                     {std::cos(i * std::numbers::pi / 3), std::sin(i * std::numbers::pi / 3), 0, 1});
    double knots[13];
    std::iota(knots, knots + 13, -3.0);
    const Spline spline(9, 4, 1, knots, reinterpret_cast<double(*)[4]>(poles.data()));
    EXPECT_TRUE(spline.IsPeriodic() && spline.IsClosed() && spline.IsG1Closed());
    EXPECT_NEAR(spline.GetPointAtParameter(1.25, false).Distance(spline.GetPointAtParameter(0.25, false)),
                0.0, 1e-14);
}

TEST(Spline, PolylineOfDegreeOneHitsTheVertices) {
    const std::vector<Point> vertices = {{0, 0}, {1, 5}, {1.5, 5}, {9, 9}, {3, 3}};
    std::vector<Point> points;
    Make(2, vertices)->CreatePolylinePoints(5, points);
    EXPECT_EQ(points, vertices);
    const SplinePtr seven = Seven();
    std::vector<double> params = {5.0};
    seven->AskSampledParameters(32, params);
    ASSERT_EQ(params.size(), 33U);
    EXPECT_EQ(params[1], 0.0);
    EXPECT_EQ(params[32], 1.0);
    for (std::size_t i = 2; i < params.size(); ++i)
        EXPECT_LT(params[i - 1], params[i]);
}

TEST(Spline, LimitsCannotBeSet) {
    const SplinePtr spline = Seven();
    ChangeLog log;
    spline->SetLimits(Point(1, 1), Point(2, 2));
    EXPECT_EQ(log.Take(*spline), 0);
    EXPECT_TRUE(spline->IsSameCurve(Seven().get()));
}

TEST(Spline, SameCurveComparesTheDefinition) {
    const std::vector<Point> poles = {{0, 0}, {1, 2}, {2, -1}, {3, 3}};
    const SplinePtr spline = Make(3, poles);
    EXPECT_TRUE(spline->IsSameCurve(spline.get()));
    EXPECT_TRUE(spline->IsSameCurve(Make(3, {{0, 0}, {1, 2 + 2e-9}, {2, -1}, {3, 3}}).get()));
    EXPECT_FALSE(spline->IsSameCurve(Make(3, {{0, 0}, {1, 2 + 3e-9}, {2, -1}, {3, 3}}).get()));
    EXPECT_FALSE(spline->IsSameCurve(Make(4, poles).get()));
    EXPECT_FALSE(spline->IsSameCurve(Make(3, poles, {1, 1, 1.001, 1}).get()));
    const Line line(Point(0, 0), Point(1, 1));
    EXPECT_FALSE(spline->IsSameCurve(&line));
}
