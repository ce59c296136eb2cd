#include "tessera/geometry/Curve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <numbers>
#include <random>

#include "tessera/kernel/internal/SmFault.h"
#include "tests/support/ChangeLog.h"
#include "tests/support/SampleCurves.h"
#include "tests/support/ThrownMessage.h"

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

namespace {

constexpr double kPi = std::numbers::pi;

/// Where two poly-lines cross, by brute force.
std::vector<Point> Crossings(const std::vector<Point>& a, const std::vector<Point>& b) {
    std::vector<Point> found;
    for (std::size_t i = 1; i < a.size(); ++i) {
        for (std::size_t j = 1; j < b.size(); ++j) {
            const Point d = a[i] - a[i - 1];
            const Point e = b[j] - b[j - 1];
            const double det = d.Cross(e);
            if (det == 0.0)
                continue;
            const double s = (b[j - 1] - a[i - 1]).Cross(e) / det;
            const double t = (b[j - 1] - a[i - 1]).Cross(d) / det;
            if (s >= 0.0 && s < 1.0 && t >= 0.0 && t < 1.0)
                found.push_back(a[i - 1] + s * d);
        }
    }
    return found;
}

double NearestOf(const std::vector<Point>& points, const Point& p) {
    double best = 1e300;
    for (const Point& q : points)
        best = std::min(best, p.Distance(q));
    return best;
}

} // namespace

TEST(Curve, ParameterRange) {
    const Line line(Point(0, 0), Point(2, 0));
    const char* text = "Curve::GetPointAtParameter - given parameter is out of range";
    EXPECT_NEAR(line.GetPointAtParameter(1 + 5e-11, false).x, 2.0, 1e-9);
    EXPECT_EQ(ThrownMessage([&] { line.GetPointAtParameter(1 + 2e-10, false); }), text);
    EXPECT_EQ(ThrownMessage([&] { line.GetPointAtParameter(-2e-10, false); }), text);
    EXPECT_EQ(ThrownMessage([&] { line.GetPointAtParameter(std::nan(""), false); }), text);
    EXPECT_NEAR(line.GetPointAtParameter(5, true).x, 10.0, 1e-12);

    Point point(9, 9);
    Vector slope(9, 9);
    EXPECT_TRUE(line.EvaluateAtParameter(1 + 5e-11, point, slope));
    EXPECT_NEAR(slope.x, 2.0, 1e-12);
    EXPECT_FALSE(line.EvaluateAtParameter(1 + 2e-10, point, slope));
    EXPECT_EQ(point.x, 0.0);
    EXPECT_EQ(slope.x, 0.0);

    const Arc circle(Point(0, 0), 1.0);
    EXPECT_NEAR(circle.GetPointAtParameter(100.0, false).x, std::cos(100.0), 1e-12);
    EXPECT_TRUE(circle.EvaluateAtParameter(-7.0, point, slope));
    EXPECT_NEAR(slope.y, std::cos(-7.0), 1e-12);
}

TEST(Curve, SlopeIsTheFirstDerivative) {
    for (const Sample& sample : SampleCurves()) {
        SCOPED_TRACE(sample.name);
        double limits[2];
        sample.curve->AskRange(limits);
        const double h = 1e-6 * (limits[1] - limits[0]);
        for (const double u : {0.13, 0.45, 0.77}) {
            const double t = limits[0] + u * (limits[1] - limits[0]);
            Point point;
            Vector slope;
            ASSERT_TRUE(sample.curve->EvaluateAtParameter(t, point, slope));
            const Point ahead = sample.curve->GetPointAtParameter(t + h, true);
            const Point behind = sample.curve->GetPointAtParameter(t - h, true);
            EXPECT_NEAR(slope.x, (ahead.x - behind.x) / (2 * h), 1e-4);
            EXPECT_NEAR(slope.y, (ahead.y - behind.y) / (2 * h), 1e-4);
        }
    }
}

TEST(Curve, InversionFindsTheParameterBack) {
    for (const Sample& sample : SampleCurves()) {
        SCOPED_TRACE(sample.name);
        double limits[2];
        sample.curve->AskRange(limits);
        const int closed = sample.curve->AskCurveData()->closed;
        for (const double u : {0.1, 0.5, 0.9}) {
            const double given = limits[0] + u * (limits[1] - limits[0]);
            const Point p = sample.curve->GetPointAtParameter(given, false);
            double t = -99;
            Point foot;
            Vector tangent;
            ASSERT_TRUE(sample.curve->GetParametersAtPoint(p, 0, t, foot, tangent));
            EXPECT_NEAR(t, given, 1e-7);
            EXPECT_NEAR(foot.Distance(p), 0.0, 1e-9);
            EXPECT_GT(tangent.Length(), 0.0);
        }
        EXPECT_EQ(sample.curve->AskCurveData()->closed, closed);
    }
}

TEST(Curve, BoxesAreTightAndFollowTheRange) {
    for (const Sample& sample : SampleCurves()) {
        SCOPED_TRACE(sample.name);
        XYBox sampled(DensePoints(*sample.curve, 6000));
        XYBox box;
        ASSERT_TRUE(sample.curve->AskXYBox(box));
        EXPECT_NEAR(box.min.Distance(sampled.min), 0.0, 1e-5);
        EXPECT_NEAR(box.max.Distance(sampled.max), 0.0, 1e-5);
        double range[2];
        sample.curve->AskRange(range);
        range[1] = range[0] + 0.4 * (range[1] - range[0]);
        const BoundingBox part = sample.curve->AskBoundingBoxOfRange(range);
        for (int i = 0; i <= 20; ++i) {
            const Point p =
                sample.curve->GetPointAtParameter(range[0] + (range[1] - range[0]) * i / 20, false);
            const double position[3] = {p.x, p.y, 0};
            EXPECT_TRUE(part.IsPointInBBox(position, 1e-9));
        }
    }
}

TEST(Curve, ExtractAndTrimGiveTheSamePiece) {
    for (const Sample& sample : SampleCurves()) {
        SCOPED_TRACE(sample.name);
        Curve& curve = *sample.curve;
        curve.SetWidth(7.5);
        double limits[2];
        curve.AskRange(limits);
        double range[2] = {limits[0] + 0.3 * (limits[1] - limits[0]),
                           limits[0] + 0.8 * (limits[1] - limits[0])};
        const Point start = curve.GetPointAtParameter(range[0], false);
        const Point end = curve.GetPointAtParameter(range[1], false);
        const CurvePtr piece(curve.Extract(range));
        EXPECT_EQ(piece->GetType(), curve.GetType());
        EXPECT_NE(piece->GetId(), curve.GetId());
        EXPECT_EQ(piece->AskWidth(), 7.5);
        EXPECT_NEAR(piece->GetStart().Distance(start), 0.0, 1e-12);
        EXPECT_NEAR(piece->GetEnd().Distance(end), 0.0, 1e-12);
        EXPECT_NEAR(piece->Length(), curve.CurveLength(range), 1e-9);
        for (const Point& p : DensePoints(*piece, 30))
            EXPECT_NEAR(curve.DistanceBounded(p), 0.0, 1e-9);
        const int id = curve.GetId();
        ChangeLog log;
        EXPECT_TRUE(curve.Trim(range));
        EXPECT_EQ(log.Take(curve), 1);
        EXPECT_EQ(curve.GetId(), id);
        EXPECT_TRUE(curve.IsSameCurve(piece.get()));
    }
}

TEST(Curve, EmptyRangesAreRefused) {
    const char* text = "Curve::Extract - input range is invalid";
    Line line(Point(0, 0), Point(1, 0));
    double empty[2] = {0.5, 0.5};
    double reversed[2] = {0.6, 0.5};
    double tiny[2] = {0.2, 0.2 + 0.9e-7};
    double small[2] = {0.2, 0.2 + 2e-7};
    double unknown[2] = {std::nan(""), 1};
    for (double* range : {empty, reversed, tiny, unknown}) {
        EXPECT_EQ(ThrownMessage([&] { line.Extract(range); }), text);
        EXPECT_EQ(ThrownMessage([&] { line.AskBoundingBoxOfRange(range); }), text);
        EXPECT_FALSE(line.Trim(range));
    }
    const CurvePtr piece(line.Extract(small));
    EXPECT_NEAR(piece->Length(), 2e-7, 1e-12);
    Arc circle(Point(0, 0), 1);
    double acrossSeam[2] = {5, 7};
    const CurvePtr arc(circle.Extract(acrossSeam));
    EXPECT_NEAR(arc->Length(), 2.0, 1e-12);
    EXPECT_NEAR(arc->GetMidPoint().Distance(Point(std::cos(6.0), std::sin(6.0))), 0.0, 1e-12);
}

TEST(Curve, ConversionToASplineKeepsThePoints) {
    for (const Sample& sample : SampleCurves()) {
        SCOPED_TRACE(sample.name);
        const std::unique_ptr<Spline> spline(sample.curve->ConvertToSpline());
        ASSERT_NE(spline, nullptr);
        EXPECT_NEAR(spline->GetStart().Distance(sample.curve->GetStart()), 0.0, 1e-12);
        EXPECT_NEAR(spline->GetEnd().Distance(sample.curve->GetEnd()), 0.0, 1e-12);
        EXPECT_NEAR(spline->Length(), sample.curve->Length(), 1e-8);
        for (const Point& p : DensePoints(*spline, 50))
            EXPECT_NEAR(sample.curve->DistanceBounded(p), 0.0, 1e-9);
    }
}

TEST(Curve, CopiesAreIndependent) {
    for (const Sample& sample : SampleCurves()) {
        SCOPED_TRACE(sample.name);
        sample.curve->SetWidth(4.0);
        const CurvePtr copy(sample.curve->Copy());
        EXPECT_EQ(copy->GetType(), sample.curve->GetType());
        EXPECT_NE(copy->GetId(), sample.curve->GetId());
        EXPECT_EQ(copy->AskWidth(), 4.0);
        EXPECT_EQ(copy->AskGroup(), nullptr);
        EXPECT_NE(copy->AskCurveData(), sample.curve->AskCurveData());
        EXPECT_TRUE(copy->IsSameCurve(sample.curve.get()));
        double m[3][3] = {{1, 0, 3}, {0, 1, 0}, {0, 0, 1}};
        copy->Transform(m);
        EXPECT_FALSE(copy->IsSameCurve(sample.curve.get()));
        std::set<int> ids;
        std::map<int, Tessera::Core::TaggedObject*> copies;
        const CurvePtr deep(sample.curve->DeepCopy(ids, copies));
        EXPECT_EQ(deep->GetId(), sample.curve->GetId());
        EXPECT_EQ(sample.curve->DeepCopy(ids, copies), deep.get());
    }
}

TEST(Curve, ReplaceTakesOnlyItsOwnKind) {
    Line line(Point(0, 0), Point(1, 0));
    Line other(Point(5, 5), Point(6, 8));
    other.SetWidth(9);
    other.SetIsReflectCenterLine(true);
    Arc arc(Point(0, 0), 1);
    const int id = line.GetId();
    ChangeLog log;
    EXPECT_FALSE(line.Replace(nullptr));
    EXPECT_FALSE(line.Replace(&arc));
    EXPECT_EQ(log.Take(line), 0);
    EXPECT_EQ(line.GetEnd().x, 1.0);
    EXPECT_TRUE(line.Replace(&other));
    EXPECT_EQ(log.Take(line), 1);
    EXPECT_TRUE(line.IsSameCurve(&other));
    EXPECT_NE(line.AskCurveData(), other.AskCurveData());
    EXPECT_EQ(line.GetId(), id);
    EXPECT_EQ(line.AskWidth(), 9);
    EXPECT_TRUE(line.IsReflectCenterLine());
    EXPECT_EQ(line.GetCachedBasePoint().x, 5.5);
    EXPECT_TRUE(line.Replace(&line));
    EXPECT_TRUE(line.IsSameCurve(&other));
    EXPECT_FALSE(arc.CopyCurveData(&line));
}

TEST(Curve, EveryChangeIsReportedWhileTheOldStateStands) {
    Line line(Point(0, 0), Point(4, 0));
    Line longer(Point(1, 0), Point(9, 0));
    Arc arc(Point(1, 0), Point(0, 1), Point(0, 0));
    double at[2] = {0, 0};
    double radii[2] = {3, 1};
    Ellipse ellipse(at, radii, 0.2, 0.3, 2);
    const CurvePtr cubic = MakeSpline(4, {{0, 0}, {1, 2}, {2, -1}, {3, 3}});
    Point p0(5, 5), p1(6, 9), p2(7, 7), p3(9, 9);
    double half[2] = {0.5, 0.75};
    struct Row {
        const char* name;
        Curve& curve;
        std::function<void()> change;
        int reports;
    };
    const Row rows[] = {
        {"SetLimits of a line", line,
         [&] {
             line.SetLimits({1, 1}, {2, 2});
         },
         1},
        {"Merge of lines", line, [&] { line.Merge({&longer}); }, 2},
        {"Trim", line, [&] { line.Trim(half); }, 1},
        {"CopyCurveData", line, [&] { line.CopyCurveData(&longer); }, 1},
        {"SetCenter", arc,
         [&] {
             arc.SetCenter({3, 3});
         },
         1},
        {"SetRadius", arc, [&] { arc.SetRadius(2); }, 1},
        {"SetLimits of an arc", arc,
         [&] {
             arc.SetLimits({3, 9}, {-9, 3});
         },
         1},
        {"SetClosed", arc, [&] { arc.SetClosed(); }, 1},
        {"SetRadii", ellipse, [&] { ellipse.SetRadii(5, 2); }, 1},
        {"SetLimits of an ellipse", ellipse,
         [&] {
             ellipse.SetLimits({-3, 0}, {0, -1});
         },
         1},
        {"SetClosed of an ellipse", ellipse, [&] { ellipse.SetClosed(); }, 1},
        {"SetPoles", *cubic,
         [&] {
             static_cast<Spline&>(*cubic).SetPoles({&p0, &p1, &p2, &p3});
         },
         1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Point start = row.curve.GetStart();
        const Point middle = row.curve.GetMidPoint();
        std::vector<double> moved;
        ChangeLog log;
        log.onChange = [&] { moved.push_back(row.curve.GetMidPoint().Distance(middle)); };
        row.change();
        log.onChange = nullptr;
        EXPECT_EQ(log.Take(row.curve), row.reports);
        for (const double distance : moved)
            EXPECT_EQ(distance, 0.0);
        EXPECT_GT(row.curve.GetMidPoint().Distance(middle) + row.curve.GetStart().Distance(start), 0.1);
        // The stale box is refreshed before it is used.
        EXPECT_TRUE(row.curve.IsPointOnObject(row.curve.GetMidPoint(), 1e-6));
    }
}

TEST(Curve, PointOnObjectUsesTheBoundedCurve) {
    const Arc arc(Point(2, 0), Point(0, 2), Point(0, 0));
    EXPECT_TRUE(arc.IsPointOnObject(Point(2.05, 0), 0.1));
    EXPECT_FALSE(arc.IsPointOnObject(Point(2, -0.2), 0.1));
    EXPECT_FALSE(arc.IsPointOnObject(Point(1, 1), 0.1));
    EXPECT_FALSE(arc.IsPointOnObject(Point(2, 0), 0.0)) << "the third axis of the box is tested strictly";
}

TEST(Curve, ConnectedByEquallyPlacedEnds) {
    Line line(Point(0, 0), Point(1, 0));
    Arc arc(Point(1, 1e-9), Point(0, 1), Point(0, 0));
    Line apart(Point(1, 1e-8), Point(2, 0));
    Arc circle(Point(0, 0), 1);
    Arc touching(Point(2, 0), 1);
    EXPECT_TRUE(line.IsConnected(&arc));
    EXPECT_TRUE(arc.IsConnected(&line));
    EXPECT_FALSE(line.IsConnected(&apart));
    EXPECT_FALSE(circle.IsConnected(&touching));
    EXPECT_FALSE(circle.IsConnected(&line));
    EXPECT_FALSE(line.IsConnected(nullptr));
}

TEST(Curve, Curvature) {
    double k = -1;
    EXPECT_TRUE(Line(Point(0, 0), Point(3, 1)).ComputeCurvature(0.5, &k));
    EXPECT_EQ(k, 0.0);
    EXPECT_TRUE(Arc(Point(1, 1), 4).ComputeCurvature(1, &k));
    EXPECT_NEAR(k, 0.25, 1e-14);
    EXPECT_FALSE(Line(Point(1, 1), Point(1, 1)).ComputeCurvature(0.5, &k) && k != 0.0);
}

TEST(Curve, IntersectBoundedAgainstBruteForce) {
    std::mt19937 rng(77);
    for (int trial = 0; trial < 160; ++trial) {
        SCOPED_TRACE(trial);
        const CurvePtr a = RandomCurve(rng, trial % 4);
        const CurvePtr b = RandomCurve(rng, trial / 4 % 4);
        std::vector<Point> hits;
        std::vector<Point> swapped;
        a->IntersectBounded(*b, hits);
        b->IntersectBounded(*a, swapped);
        EXPECT_EQ(hits.size(), swapped.size());
        const std::vector<Point> expected = Crossings(DensePoints(*a, 400), DensePoints(*b, 400));
        for (const Point& p : expected)
            EXPECT_LT(NearestOf(hits, p), 0.02) << "missed " << p.x << ", " << p.y;
        for (const Point& p : hits) {
            EXPECT_LT(a->DistanceBounded(p), 1.1e-7);
            EXPECT_LT(b->DistanceBounded(p), 1.1e-7);
            EXPECT_LT(NearestOf(swapped, p), 1e-6);
        }
        int n = -1;
        std::vector<double> t1 = {5};
        std::vector<double> t2;
        std::vector<Point> points;
        ASSERT_TRUE(a->IntersectCurve(*b, &n, t1, t2, points, 1e-9));
        EXPECT_EQ(n, static_cast<int>(hits.size()));
        ASSERT_EQ(t1.size(), points.size());
        ASSERT_EQ(t2.size(), points.size());
        for (std::size_t i = 0; i < points.size(); ++i) {
            EXPECT_LT(a->GetPointAtParameter(t1[i], true).Distance(points[i]), 1e-7);
            EXPECT_LT(b->GetPointAtParameter(t2[i], true).Distance(points[i]), 1e-7);
        }
    }
}

TEST(Curve, IntersectBoundedKeepsTheEnds) {
    struct Row {
        const char* name;
        CurvePtr a, b;
        std::size_t count;
    };
    Row rows[5];
    rows[0] = {"shared end", std::make_unique<Line>(Point(0, 0), Point(1, 1)),
               std::make_unique<Line>(Point(1, 1), Point(2, 0)), 1};
    rows[1] = {"just short", std::make_unique<Line>(Point(0, 0), Point(1, 1)),
               std::make_unique<Line>(Point(1.001, 1), Point(2, 0)), 0};
    rows[2] = {"fillet", std::make_unique<Line>(Point(-5, 1), Point(0, 1)),
               std::make_unique<Arc>(Point(1, 0), Point(0, 1), Point(0, 0)), 1};
    rows[3] = {"arc that starts at half a turn", std::make_unique<Line>(Point(-1, -1), Point(-1, 1)),
               std::make_unique<Arc>(Point(-1, 0), Point(0, -1), Point(0, 0)), 1};
    rows[4] = {"outside the limits of both", std::make_unique<Line>(Point(3, -1), Point(3, 1)),
               MakeEllipse({0, 0}, 5, 1, 0, 2, 4), 0};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<Point> out;
        row.a->IntersectBounded(*row.b, out);
        EXPECT_EQ(out.size(), row.count);
    }
}

TEST(Curve, OverlapGivesTheCommonPart) {
    const Line line(Point(0, 0), Point(4, 0));
    Line part(Point(3, 0), Point(9, 0));
    Line above(Point(0, 1), Point(4, 1));
    CRV_TOPOL_state_t state = CRV_TOPOL_IDENTICAL;
    double range[2] = {};
    Curve* common = nullptr;
    EXPECT_TRUE(line.IsOverlapping(&part, 1e-6, 1e-6, 1e-6, &state, range, &common));
    const CurvePtr owner(common);
    EXPECT_EQ(state, CRV_TOPOL_PARTIAL);
    EXPECT_NEAR(range[0], 0.75, 1e-9);
    EXPECT_NEAR(range[1], 1.0, 1e-9);
    ASSERT_NE(common, nullptr);
    EXPECT_NEAR(common->Length(), 1.0, 1e-9);
    EXPECT_FALSE(line.IsOverlapping(&above, 1e-6, 1e-6, 1e-6, &state, range, &common));
    EXPECT_EQ(state, CRV_TOPOL_SEPARATE);
    EXPECT_EQ(common, nullptr);
}

TEST(Curve, MessagesWithoutARecord) {
    Line line(Point(0, 0), Point(1, 1));
    line.SetCurveData(nullptr);
    Point p;
    Vector v;
    double t = 0;
    struct Row {
        std::function<void()> call;
        const char* text;
    };
    const Row rows[] = {
        {[&] { line.GetStart(); }, "Curve::GetStart - CURVE cannot be NULL"},
        {[&] { line.GetEnd(); }, "Curve::GetEnd - CURVE cannot be NULL"},
        {[&] { line.GetMidPoint(); }, "Curve::GetMidPoint - CURVE cannot be NULL"},
        {[&] { line.GetPointAtParameter(0, true); }, "Curve::GetPointAtParameter - CURVE cannot be NULL"},
        {[&] { line.EvaluateAtParameter(0, p, v); }, "Curve::GetSlopeAtParameter - CURVE cannot be NULL"},
        {[&] { line.GetParametersAtPoint(p, 0, t, p, v); },
         "Curve::GetParameterAtPoint - CURVE cannot be NULL"},
        {[&] { line.IsPeriodic(); }, "Curve::IsPeriodic - CURVE cannot be NULL"},
        {[&] { line.GetMajorRadiusPoint(1); },
         "Curve::GetMajorRadiusPoint - cannot find major radius point for curve other than arc or ellipse"},
        {[&] { line.GetMinorRadiusPoint(1); },
         "Curve::GetMinorRadiusPoint - cannot find minor radius point for curve other than arc or ellipse"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ThrownMessage(row.call), row.text);
    EXPECT_EQ(line.ConvertToSpline(), nullptr);
    EXPECT_EQ(line.CreateExtensionCurve(), nullptr);
    std::vector<Point> points;
    line.CreatePolylinePoints(5, points);
    EXPECT_TRUE(points.empty());
    XYBox box;
    EXPECT_FALSE(line.AskXYBox(box));
}

TEST(Curve, PolylinePointsAreEvenInTheParameter) {
    const Arc arc(Point(1, 0), Point(-1, 0), Point(0, 0));
    std::vector<Point> points = {Point(7, 7)};
    arc.CreatePolylinePoints(5, points);
    ASSERT_EQ(points.size(), 6U);
    for (int i = 0; i < 5; ++i)
        EXPECT_NEAR(points[i + 1].Distance(Point(std::cos(i * kPi / 4), std::sin(i * kPi / 4))), 0.0, 1e-15);
    arc.CreatePolylinePoints(0, points);
    EXPECT_EQ(points.size(), 6U);
    arc.CreatePolylinePoints(1, points);
    EXPECT_NEAR(points.back().Distance(arc.GetStart()), 0.0, 0.0);
}

TEST(Curve, RunningOutOfMemoryChangesNothing) {
    double m[3][3] = {{0, -1, 2}, {1, 0, 3}, {0, 0, 1}};
    struct Row {
        const char* name;
        std::function<bool(Curve&, double*)> call; // false for a failure without a message
    };
    const Row rows[] = {
        {"Copy", [](Curve& c, double*) { return CurvePtr(c.Copy()) != nullptr; }},
        {"Extract", [](Curve& c, double* range) { return CurvePtr(c.Extract(range)) != nullptr; }},
        {"ConvertToSpline", [](Curve& c, double*) { return CurvePtr(c.ConvertToSpline()) != nullptr; }},
        {"Trim", [](Curve& c, double* range) { return c.Trim(range); }},
        {"Transform", [&](Curve& c, double*) { return c.Transform(m), true; }},
    };
    for (const Row& row : rows) {
        for (const Sample& sample : SampleCurves()) {
            SCOPED_TRACE(std::string(row.name) + ", " + sample.name);
            const CurvePtr twin(sample.curve->CopyCurveOnly());
            double range[2];
            sample.curve->AskRange(range);
            range[0] = 0.7 * range[0] + 0.3 * range[1];
            int failures = 0;
            for (bool done = false; !done; ++failures) {
                ASSERT_LT(failures, 200);
                SM_fail_nth(failures + 1);
                const std::string text = ThrownMessage([&] { done = row.call(*sample.curve, range); });
                SM_fail_nth(0);
                if (!done) {
                    EXPECT_TRUE(sample.curve->IsSameCurve(twin.get())) << text;
                }
            }
            EXPECT_GT(failures, 1);
        }
    }
}

TEST(Curve, LinesAndArcsMeasureWithoutAllocating) {
    const Line line(Point(-5, 1), Point(5, 2));
    const Arc arc(Point(3, 0), Point(0, 3), Point(0, 0));
    std::vector<Point> out;
    out.reserve(16);
    SM_fail_nth(0);
    for (const Curve* curve : {static_cast<const Curve*>(&line), static_cast<const Curve*>(&arc)}) {
        const Point p(2, 5);
        EXPECT_GE(curve->DistanceBounded(p), curve->Distance(p));
        EXPECT_NEAR(curve->GetClosestPoint(p).Distance(p), curve->DistanceBounded(p), 1e-9);
        EXPECT_NEAR(curve->Project(p).Distance(p), curve->Distance(p), 1e-12);
        curve->IntersectBounded(line, out);
        curve->IntersectBounded(arc, out);
    }
    EXPECT_EQ(out.size(), 2U);
    EXPECT_EQ(SM_ask_allocation_count(), 0);
}
