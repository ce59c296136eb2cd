#include "tessera/geometry/Spline.h"

#include "tessera/kernel/EQ.h"
#include "tests/support/BSplineSample.h"
#include "tests/support/ChangeLog.h"
#include "tests/support/SampleCurves.h"
#include "tests/support/ThrownMessage.h"

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

namespace {

using SplinePtr = std::unique_ptr<Spline>;

SplinePtr Make(int order, const std::vector<Point>& poles) {
    return SplinePtr(static_cast<Spline*>(MakeSpline(order, poles).release()));
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
    const SplinePtr spline = Seven(), polyline = Make(2, {{0, 0}, {1, 0}, {2, 3}, {4, 4}, {5, 4}});
    EXPECT_TRUE(spline->GetDegree() == 3 && spline->GetNumPoles() == 7);
    EXPECT_TRUE(spline->GetNumKnots() == 11 && spline->GetNumSegments() == 4);
    EXPECT_EQ(spline->AskNumberOfSampledPoints(20), 32);
    EXPECT_EQ(spline->AskNumberOfSampledPoints(33), 33);
    EXPECT_EQ(spline->AskNumberOfSampledPoints(1e-9), 32);
    EXPECT_EQ(polyline->AskNumberOfSampledPoints(20), 5);
    ChangeLog log;
    spline->SetLimits(Point(1, 1), Point(2, 2)); // cannot be set
    EXPECT_EQ(log.Take(*spline), 0);
    EXPECT_TRUE(spline->IsSameCurve(Seven().get()) && spline->WithinBounds(Point(1e9, 0)));
    spline->SetCurveData(nullptr);
    EXPECT_EQ(spline->AskNumberOfSampledPoints(20), 0);
    std::vector<double> params;
    spline->AskSampledParameters(5, params);
    EXPECT_TRUE(params.empty());
}

TEST(Spline, BrokenDefinitionsAreRefused) {
    double poles[][4] = {{0, 0, 0, 1}, {1, 1, 0, 1}, {2, 0, 0, 1}};
    double good[] = {0, 0, 0, 1, 1, 1}, falling[] = {0, 0, 0, 1, 0.5, 1}, flat[] = {1, 1, 1, 1, 1, 1};
    const std::pair<int, double*> rows[] = {{4, good}, {1, good}, {3, falling}, {3, flat}, {3, nullptr}};
    for (const auto& [order, knots] : rows)
        EXPECT_EQ(ThrownMessage([&, n = order, k = knots] { Spline s(3, n, 0, k, poles); }),
                  "Spline::Spline - poles, order and knots do not define a B-curve");
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
    const double t = EQ_ask_length_tolerance();
    const struct {
        const char* name;
        int order;
        std::vector<Point> poles;
        bool closed, smooth;
    } rows[] = {
        {"open", 3, {{0, 0}, {1, 1}, {2, 0}}, false, false},
        {"kink", 3, {{0, 0}, {1, 1}, {-1, 1}, {0, 0}}, true, false},
        {"just closed", 3, {{0, 0}, {1, 1}, {-1, 1}, {0, 0.9 * t}}, true, false},
        {"just open", 3, {{0, 0}, {1, 1}, {-1, 1}, {0, 1.1 * t}}, false, false},
        {"smooth, legs of other lengths", 3, {{0, 0}, {1, 0}, {1, 2}, {-3, 2}, {-3, 0}, {0, 0}}, true, true},
        {"cusp returning", 3, {{0, 0}, {1, 0}, {3, 2}, {2, 0}, {0, 0}}, true, false},
        {"kink just below its limit", 3, {{0, 0}, {1, 0}, {0, 2}, {-1, 0.9e-7}, {0, 0}}, true, true},
        {"kink just above it", 3, {{0, 0}, {1, 0}, {0, 2}, {-1, 1.1e-7}, {0, 0}}, true, false},
        {"vanishing end derivative", 4, {{0, 0}, {0, 0}, {2, 0}, {1, 2}, {-1, 0}, {0, 0}}, true, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const SplinePtr spline = Make(row.order, row.poles);
        EXPECT_EQ(spline->IsClosed(), row.closed);
        EXPECT_EQ(spline->IsG1Closed(), row.smooth);
    }
    const SplinePtr converted(Arc(Point(3, 4), 2.0).ConvertToSpline());
    EXPECT_TRUE(converted->IsClosed() && converted->IsG1Closed());
    std::mt19937 rng(1);
    const Spline periodic(RandomPeriodic(rng, 4, 6, false).release()); // closes by its knots
    EXPECT_TRUE(periodic.IsPeriodic() && periodic.IsClosed() && periodic.IsG1Closed());
    EXPECT_EQ(periodic.GetPointAtParameter(1.25, false), periodic.GetPointAtParameter(0.25, false));
}

TEST(Spline, PolylineOfDegreeOneHitsTheVertices) {
    const std::vector<Point> vertices = {{0, 0}, {1, 5}, {1.5, 5}, {9, 9}, {3, 3}};
    std::vector<Point> points;
    Make(2, vertices)->CreatePolylinePoints(5, points);
    EXPECT_EQ(points, vertices);
    std::vector<double> params = {5.0};
    Seven()->AskSampledParameters(32, params);
    ASSERT_EQ(params.size(), 33U);
    EXPECT_TRUE(params[1] == 0.0 && params[32] == 1.0);
    EXPECT_EQ(std::adjacent_find(params.begin() + 1, params.end(), std::greater_equal<>()), params.end());
}
