#include "tessera/geometry/Curve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <numbers>

#include "tessera/kernel/internal/SmFault.h"
#include "tests/support/AllocationFaults.h"
#include "tests/support/ChangeLog.h"
#include "tests/support/SampleCurves.h"
#include "tests/support/SlotOf.h"
#include "tests/support/ThrownMessage.h"

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

namespace {

constexpr double kPi = std::numbers::pi;

} // namespace

TEST(Curve, VirtualOperationsKeepTheirSlots) {
    using C = Curve;
    const std::ptrdiff_t slots[] = {SlotOf(&C::Intersect),
                                    SlotOf(&C::Length),
                                    SlotOf(&C::Distance),
                                    SlotOf(&C::DistanceBounded),
                                    SlotOf(&C::Project),
                                    SlotOf(&C::WithinBounds),
                                    SlotOf(&C::GetClosestPoint),
                                    SlotOf(&C::AskNumberOfSampledPoints),
                                    SlotOf(&C::IsZeroLength),
                                    SlotOf(&C::CreatePolylinePoints),
                                    SlotOf(&C::IntersectBounded),
                                    SlotOf(&C::SetLimits),
                                    SlotOf(&C::GetStart),
                                    SlotOf(&C::GetEnd),
                                    SlotOf(&C::GetMidPoint),
                                    SlotOf(&C::GetMajorRadiusPoint),
                                    SlotOf(&C::GetMinorRadiusPoint),
                                    SlotOf(&C::GetPointAtParameter),
                                    SlotOf(&C::EvaluateAtParameter),
                                    SlotOf(&C::GetParametersAtPoint),
                                    SlotOf(&C::IsPeriodic),
                                    SlotOf(&C::IsClosed),
                                    SlotOf(&C::GetType),
                                    SlotOf(&C::Merge),
                                    SlotOf(&C::GetInvalidDimensions),
                                    SlotOf(&C::CreateExtensionCurve),
                                    SlotOf(&C::IsSameCurve)};
    std::ptrdiff_t expected = 12; // after those of DisplayableObject
    for (const std::ptrdiff_t slot : slots)
        EXPECT_EQ(slot, expected++);
    EXPECT_EQ(SlotOf(&Line::AngleBetween), expected);
    EXPECT_EQ(SlotOf(&Arc::SetCenter), expected);
    EXPECT_EQ(SlotOf(&Spline::AskSampledParameters), expected);
}

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
    double t = -99;
    EXPECT_TRUE(circle.GetParametersAtPoint(Point(0, 3), 0, t, point, slope));
    EXPECT_NEAR(t, kPi / 2, 1e-12);
    EXPECT_NEAR(point.Distance(Point(0, 1)) + slope.Distance(Vector(-1, 0)), 0.0, 1e-12);
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
    log.Take(line);
    line.SetIsReflectCenterLine(false);
    EXPECT_EQ(log.Take(line), 1);
    EXPECT_FALSE(line.IsReflectCenterLine());
}

TEST(Curve, EveryChangeIsReportedWhileTheOldStateStands) {
    Line line(Point(0, 0), Point(4, 0)), longer(Point(1, 0), Point(9, 0));
    Arc arc(Point(1, 0), Point(0, 1), Point(0, 0));
    const CurvePtr oval = MakeEllipse({0, 0}, 3, 1, 0.2, 0.3, 2);
    auto* ellipse = static_cast<Ellipse*>(oval.get());
    const CurvePtr cubic = MakeSpline(4, {{0, 0}, {1, 2}, {2, -1}, {3, 3}});
    Point near(1, 3), far(-5, -2), p2(7, 7), p3(9, 9);
    const std::vector<Point*> poles = {&near, &far, &p2, &p3};
    double half[2] = {0.5, 0.75};
    double move[3][3] = {{1, 0, 5}, {0, 1, 5}, {0, 0, 1}};
    struct Row {
        const char* name;
        Curve& curve;
        std::function<void()> change;
        int reports;
    };
    const Row rows[] = {
        {"SetLimits of a line", line, [&] { line.SetLimits(near, far); }, 1},
        {"Merge of lines", line, [&] { line.Merge({&longer}); }, 2},
        {"Trim", line, [&] { line.Trim(half); }, 1},
        {"Transform", line, [&] { line.Transform(move); }, 1},
        {"CopyCurveData", line, [&] { line.CopyCurveData(&longer); }, 1},
        {"SetCenter", arc, [&] { arc.SetCenter(near); }, 1},
        {"SetRadius", arc, [&] { arc.SetRadius(2); }, 1},
        {"SetLimits of an arc", arc, [&] { arc.SetLimits(far, near); }, 1},
        {"SetClosed", arc, [&] { arc.SetClosed(); }, 1},
        {"SetRadii", *ellipse, [&] { ellipse->SetRadii(5, 2); }, 1},
        {"SetLimits of an ellipse", *ellipse, [&] { ellipse->SetLimits(far, near); }, 1},
        {"SetClosed of an ellipse", *ellipse, [&] { ellipse->SetClosed(); }, 1},
        {"SetPoles", *cubic, [&] { static_cast<Spline&>(*cubic).SetPoles(poles); }, 1},
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

TEST(Curve, MessagesWithoutARecord) {
    Line line(Point(0, 0), Point(1, 1));
    Arc arc(Point(0, 0), 1.0);
    const CurvePtr ellipsePtr = MakeEllipse({0, 0}, 2, 1, 0, 0, 1);
    const CurvePtr splinePtr = MakeSpline(2, {{0, 0}, {1, 1}});
    auto& ellipse = static_cast<Ellipse&>(*ellipsePtr);
    auto& spline = static_cast<Spline&>(*splinePtr);
    for (Curve* curve :
         {static_cast<Curve*>(&line), static_cast<Curve*>(&arc), ellipsePtr.get(), splinePtr.get()})
        curve->SetCurveData(nullptr);
    Point p;
    Vector v;
    double t = 0;
    double pair[2];
    int i = 0;
    std::vector<double> knots;
    std::vector<Point*> poles;
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
        {[&] { spline.GetMinorRadiusPoint(1); },
         "Curve::GetMinorRadiusPoint - cannot find minor radius point for curve other than arc or ellipse"},
        {[&] { line.GetDirection(); }, "Line::GetDirection - CURVE is NULL"},
        {[&] { line.IsZeroLength(); }, "Line::IsZeroLength - CURVE is NULL"},
        {[&] { line.SetLimits(p, p); }, "Line::SetLimits - CURVE data cannot be NULL"},
        {[&] { arc.GetCenter(); }, "Arc::GetCenter - CURVE cannot be NULL"},
        {[&] { arc.GetRadius(); }, "Arc::GetRadius - CURVE cannot be NULL"},
        {[&] { arc.GetStartAngle(); }, "getAngle in Arc - CURVE cannot be NULL"},
        {[&] { arc.GetEndAngle(); }, "getAngle in Arc - CURVE cannot be NULL"},
        {[&] { arc.GetPointFromAngle(1); }, "Arc::GetRadius - CURVE cannot be NULL"},
        {[&] { arc.IsZeroLength(); }, "Arc::IsZeroLength - CURVE cannot be NULL"},
        {[&] { arc.SetCenter(p); }, "Arc::SetCenter - Curve data cannot be NULL"},
        {[&] { arc.SetClosed(); }, "Arc::SetClosed - CURVE cannot be NULL"},
        {[&] { arc.SetRadius(1); }, "Arc::SetRadius - CURVE data does not exist"},
        {[&] { arc.SetLimits(p, p); }, "Arc::SetLimits - Curve data cannot be NULL"},
        {[&] { ellipse.AskCenter(); }, "Ellipse::AskCenter: Invalid Ellipse object"},
        {[&] { ellipse.AskDirection(); }, "Ellipse::AskDirection: Invalid Ellipse object"},
        {[&] { ellipse.AskRadii(t, t); }, "Ellipse::AskRadii: Invalid Ellipse object"},
        {[&] { ellipse.AskEllipseData(pair, pair, &t, &t, &t); },
         "Ellipse::AskEllipseData: Invalid Ellipse object"},
        {[&] { ellipse.SetClosed(); }, "Ellipse::SetClosed - CURVE cannot be NULL"},
        {[&] { ellipse.SetLimits(p, p); }, "Ellipse::SetLimits - Curve data cannot be NULL"},
        {[&] { spline.GetDegree(); }, "Spline::GetDegree - CURVE cannot be NULL"},
        {[&] { spline.GetNumPoles(); }, "Spline::GetNumPoles - CURVE cannot be NULL"},
        {[&] { spline.GetNumKnots(); }, "Spline::GetNumPoles - CURVE cannot be NULL"},
        {[&] { spline.GetNumSegments(); }, "Spline::GetNumSegments - CURVE cannot be NULL"},
        {[&] { spline.AskSplineData(i, i, i, knots, poles); },
         "Spline::AskSplineData - CURVE cannot be NULL"},
        {[&] { spline.IsClosed(); }, "Spline::IsClosed - CURVE cannot be NULL"},
        {[&] { spline.IsG1Closed(); }, "Spline::IsG1Closed - CURVE cannot be NULL"},
        {[&] { spline.SetPoles(poles); }, "Spline::SetPoles - CURVE data cannot be NULL"},
        {[] { Line none(static_cast<KC_CURVE_struct_s*>(nullptr)); },
         "Input CURVE data structure is not of Line type"},
        {[] { Arc none(static_cast<KC_CURVE_struct_s*>(nullptr)); },
         "Input CURVE data structure is not of Arc type"},
        {[] { Spline none(static_cast<KC_CURVE_struct_s*>(nullptr)); },
         "Input CURVE data structure is not of B-curve type"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ThrownMessage(row.call), row.text);
    EXPECT_EQ(line.ConvertToSpline(), nullptr);
    std::vector<Point> points;
    line.CreatePolylinePoints(5, points);
    EXPECT_TRUE(points.empty());
    XYBox box;
    EXPECT_FALSE(line.AskXYBox(box));
}

TEST(Curve, PolylinePointsAreEvenInTheParameter) {
    const CurvePtr arc = MakeArc({0, 0}, 1, 0, kPi);
    std::vector<Point> points = {Point(7, 7)};
    arc->CreatePolylinePoints(5, points);
    ASSERT_EQ(points.size(), 6U) << "appended";
    for (int i = 0; i < 5; ++i)
        EXPECT_NEAR(points[i + 1].Distance(Point(std::cos(i * kPi / 4), std::sin(i * kPi / 4))), 0.0, 1e-15);
    arc->CreatePolylinePoints(0, points);
    EXPECT_EQ(points.size(), 6U);
    arc->CreatePolylinePoints(1, points);
    EXPECT_NEAR(points.back().Distance(arc->GetStart()), 0.0, 0.0);
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
            const long allocations = FailEachAllocation([&] {
                bool done = false;
                const std::string text = ThrownMessage([&] { done = row.call(*sample.curve, range); });
                EXPECT_TRUE(done || sample.curve->IsSameCurve(twin.get())) << text;
                return done;
            });
            EXPECT_GT(allocations, 0);
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
