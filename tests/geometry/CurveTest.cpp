#include "tessera/geometry/Curve.h"

#include "tessera/kernel/EQ.h"
#include "tessera/kernel/internal/SmFault.h"
#include "tests/support/AllocationFaults.h"
#include "tests/support/ChangeLog.h"
#include "tests/support/Records.h"
#include "tests/support/SampleCurves.h"
#include "tests/support/SlotOf.h"
#include "tests/support/ThrownMessage.h"

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

TEST(Curve, VirtualOperationsKeepTheirSlots) {
    using C = Curve;
    const std::vector<std::ptrdiff_t> slots =
        SlotsOf(&C::Intersect, &C::Length, &C::Distance, &C::DistanceBounded, &C::Project, &C::WithinBounds,
                &C::GetClosestPoint, &C::AskNumberOfSampledPoints, &C::IsZeroLength, &C::CreatePolylinePoints,
                &C::IntersectBounded, &C::SetLimits, &C::GetStart, &C::GetEnd, &C::GetMidPoint,
                &C::GetMajorRadiusPoint, &C::GetMinorRadiusPoint, &C::GetPointAtParameter,
                &C::EvaluateAtParameter, &C::GetParametersAtPoint, &C::IsPeriodic, &C::IsClosed, &C::GetType,
                &C::Merge, &C::GetInvalidDimensions, &C::CreateExtensionCurve, &C::IsSameCurve);
    std::ptrdiff_t expected = 12; // after those of DisplayableObject
    for (const std::ptrdiff_t slot : slots)
        EXPECT_EQ(slot, expected++);
    for (const std::ptrdiff_t slot :
         SlotsOf(&Line::AngleBetween, &Arc::SetCenter, &Spline::AskSampledParameters))
        EXPECT_EQ(slot, expected);
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

// Ends, radii and angles, each just inside and just outside.
TEST(Curve, SameWithinItsTolerances) {
    const CurvePtr line = MakeLine({0, 0}, {1, 2}), arc = MakeArc({0, 0}, 1, 1, 2);
    const CurvePtr oval = MakeEllipse({1, -2}, 3, 1, 0.5, 0.2, 2),
                   spline = MakeSpline(3, {{0, 0}, {1, 2}, {2, -1}, {3, 3}});
    const struct {
        const CurvePtr& curve;
        CurvePtr other;
        bool same;
    } rows[] = {
        {line, MakeLine({1e-9, 0}, {1, 2}), true},
        {line, MakeLine({1, 2}, {0, 0}), false}, // direction matters
        {line, MakeLine({0, 0}, {2, 4}), false},
        {line, MakeLine({0.5, 1}, {1, 2}), false},
        {line, nullptr, false},
        {arc, MakeArc({0, 0}, 1, 1 + 2 * kPi, 2 + 2 * kPi), true}, // modulo full turns
        {arc, MakeArc({0, 0}, 1, 1 - 4 * kPi, 2 - 4 * kPi), true},
        {arc, MakeArc({0, 0}, 1, 1 - 0.9e-10, 2), true},
        {arc, MakeArc({0, 0}, 1, 1 + 0.9e-10, 2), true},
        {arc, MakeArc({0, 0}, 1, 1 + 1.1e-10, 2), false},
        {arc, MakeArc({0, 0}, 1, 1, 2.1), false},
        {arc, MakeArc({0, 0}, 1 + 2e-9, 1, 2), true},
        {arc, MakeArc({0, 0}, 1 + 3e-9, 1, 2), false},
        {oval, MakeEllipse({1, -2}, 3 + 2e-9, 1, 0.5, 0.2, 2), true},
        {oval, MakeEllipse({1, -2}, 3 + 3e-9, 1, 0.5, 0.2, 2), false},
        {oval, MakeEllipse({1, -2}, 3, 1, 0.5 + 0.9e-10, 0.2, 2), true},
        {oval, MakeEllipse({1, -2}, 3, 1, 0.5 + 1.2e-10, 0.2, 2), false},
        {oval, MakeEllipse({1, -2}, 3, 1, 0.5, 0.2 + 0.9e-10, 2), true},
        {oval, MakeEllipse({1, -2}, 3, 1, 0.5, 0.2, 2 + 1.2e-10), false},
        {oval, MakeEllipse({1, -2}, 3, 1, 0.5, 0.2 + 2 * kPi, 2 + 2 * kPi), false},
        {spline, MakeSpline(3, {{0, 0}, {1, 2 + 2e-9}, {2, -1}, {3, 3}}), true},
        {spline, MakeSpline(3, {{0, 0}, {1, 2 + 3e-9}, {2, -1}, {3, 3}}), false},
        {spline, MakeSpline(4, {{0, 0}, {1, 2}, {2, -1}, {3, 3}}), false},
        {spline, MakeSpline(3, {{0, 0}, {1, 2}, {2, -1}, {3, 3}}, {1, 1, 1.001, 1}), false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        EXPECT_EQ(row.curve->IsSameCurve(row.other.get()), row.same);
        EXPECT_TRUE(row.curve->IsSameCurve(row.curve.get()));
        EXPECT_FALSE(row.curve->IsSameCurve(row.curve == line ? arc.get() : line.get()));
    }
}

TEST(Curve, ZeroLengthAtItsTolerances) {
    const double t = EQ_ask_length_tolerance();
    const std::pair<CurvePtr, bool> rows[] = {
        {MakeArc({0, 0}, 0.99 * t, 0, 1), true},
        {MakeArc({0, 0}, 1.01 * t, 0, 1), false},
        {MakeArc({0, 0}, 1, 1, 1 + 0.99 * t), true},
        {MakeArc({0, 0}, 1, 1, 1 + 1.01 * t), false},
        {MakeEllipse({0, 0}, 0.9 * t, 0.9 * t, 0, 0, 1), true},
        {MakeEllipse({0, 0}, 0.9 * t, 1.1 * t, 0, 0, 1), false},
        {MakeEllipse({0, 0}, 2, 1, 0, 1, 1 + 0.9 * t), true},
        {MakeEllipse({0, 0}, 2, 1, 0, 1, 1 + 1.1 * t), false},
        {MakeSpline(2, {{1, 1}, {1, 1 + 0.9 * t}}), true},
        {MakeSpline(2, {{1, 1}, {1, 1 + 1.1 * t}}), false},
    };
    for (const auto& [curve, zero] : rows)
        EXPECT_EQ(curve->IsZeroLength(), zero) << &curve - &rows[0].first;
}

TEST(Curve, SetLimitsOfArcsAndEllipses) {
    const Point centre(3, -1);
    const struct {
        const char* name;
        CurvePtr curve;
        double a, b, start, end;
    } rows[] = {
        {"arc", MakeArc(centre, 2, 0, 3), 1, 2, 1, 2},
        {"arc reversed", MakeArc(centre, 2, 0, 3), 2, 1, 2, 1 + 2 * kPi},
        {"one lift only", MakeArc(centre, 2, 0, 3), -1, -2, -1, 2 * kPi - 2},
        {"both negative", MakeArc(centre, 2, 0, 3), -2, -1, 2 * kPi - 2, 2 * kPi - 1},
        {"coincident on a large arc closes", MakeArc(centre, 2, 0, kPi), 1, 1, 0, 2 * kPi},
        {"coincident on a small arc", MakeArc(centre, 2, 0, 3), 1, 1, 1, 1},
        {"coincident, rounded apart", MakeArc(centre, 2, 0, 3), 2, 2, 2, 2},
        {"coincident across the seam closes", MakeArc(centre, 2, 0, 4), kPi, -kPi, 0, 2 * kPi},
        {"ellipse", MakeEllipse(centre, 3, 1, 0.7, 0, 2 * kPi), 1, 2, 1, 2},
        {"through the zero angle", MakeEllipse(centre, 3, 1, 0.7, 0, 2 * kPi), 5, 1, 5, 1 + 2 * kPi},
        {"beyond the present limits", MakeEllipse(centre, 3, 1, 0.7, 0.1, 0.2), 3, 4, 3, 4},
        {"coincident makes a full turn", MakeEllipse(centre, 3, 1, 0.7, 0.5, 1), 2, 2, 2, 2 + 2 * kPi},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Curve& curve = *row.curve;
        const Point a = curve.GetPointAtParameter(row.a, true), b = curve.GetPointAtParameter(row.b, true);
        const bool isArc = curve.GetType() == CurveType_Arc; // for which only directions count
        ChangeLog log;
        curve.SetLimits(centre + (isArc ? 2.5 : 1.0) * (a - centre),
                        centre + (isArc ? 0.3 : 1.0) * (b - centre));
        double limits[2];
        curve.AskRange(limits);
        EXPECT_NEAR(limits[0], std::min(row.start, row.end), 1e-9);
        EXPECT_NEAR(limits[1], std::max(row.start, row.end), 1e-9);
        EXPECT_EQ(curve.IsClosed(), row.end - row.start > 2 * kPi - 1e-10);
        EXPECT_EQ(log.Take(curve), curve.IsClosed() && isArc ? 2 : 1)
            << "closing an arc is a change of its own";
    }
}

TEST(Curve, ReplaceTakesOnlyItsOwnKind) {
    Line line(Point(0, 0), Point(1, 0)), other(Point(5, 5), Point(6, 8));
    Arc arc(Point(0, 0), 1);
    other.SetWidth(9);
    other.SetIsReflectCenterLine(true);
    const int id = line.GetId();
    ChangeLog log;
    EXPECT_FALSE(line.Replace(nullptr) || line.Replace(&arc) || arc.CopyCurveData(&line));
    EXPECT_EQ(log.Take(line), 0);
    EXPECT_EQ(line.GetEnd().x, 1.0);
    EXPECT_TRUE(line.Replace(&other));
    EXPECT_EQ(log.Take(line), 1);
    EXPECT_TRUE(line.IsSameCurve(&other) && line.AskCurveData() != other.AskCurveData());
    EXPECT_TRUE(line.GetId() == id && line.AskWidth() == 9 && line.IsReflectCenterLine());
    EXPECT_EQ(line.GetCachedBasePoint().x, 5.5);
    EXPECT_TRUE(line.Replace(&line) && line.IsSameCurve(&other));
    log.Take(line);
    line.SetIsReflectCenterLine(false);
    EXPECT_TRUE(log.Take(line) == 1 && !line.IsReflectCenterLine());
    line.SetCurveData(records::Line(90, 0, 91, 0).release());
    EXPECT_TRUE(line.IsPointOnObject(Point(90.5, 0), 1e-6)) << "the box is that of the new record";
}

TEST(Curve, EveryChangeIsReportedWhileTheOldStateStands) {
    Line line(Point(0, 0), Point(4, 0)), longer(Point(1, 0), Point(9, 0));
    Arc arc(Point(1, 0), Point(0, 1), Point(0, 0));
    const CurvePtr oval = MakeEllipse({0, 0}, 3, 1, 0.2, 0.3, 2);
    auto* ellipse = static_cast<Ellipse*>(oval.get());
    const CurvePtr cubic = MakeSpline(4, {{0, 0}, {1, 2}, {2, -1}, {3, 3}});
    Point near(1, 3), far(-5, -2), p2(7, 7), p3(9, 9);
    const std::vector<Point*> poles = {&near, &far, &p2, &p3};
    double half[2] = {0.5, 0.75}, move[3][3] = {{1, 0, 5}, {0, 1, 5}, {0, 0, 1}};
    const struct {
        const char* name;
        Curve& curve;
        std::function<void()> change;
        int reports;
    } rows[] = {
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
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Point start = row.curve.GetStart(), middle = row.curve.GetMidPoint();
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
    for (Curve* curve : std::initializer_list<Curve*>{&line, &arc, &ellipse, &spline})
        curve->SetCurveData(nullptr);
    Point p;
    Vector v;
    double t = 0, pair[2];
    int i = 0;
    std::vector<double> knots;
    std::vector<Point*> poles;
    const struct {
        std::function<void()> call;
        const char* text;
    } rows[] = {
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
    for (const auto& row : rows)
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
    const struct {
        const char* name;
        std::function<bool(Curve&, double*)> call; // false for a failure without a message
    } rows[] = {
        {"Copy", [](Curve& c, double*) { return CurvePtr(c.Copy()) != nullptr; }},
        {"Extract", [](Curve& c, double* range) { return CurvePtr(c.Extract(range)) != nullptr; }},
        {"ConvertToSpline", [](Curve& c, double*) { return CurvePtr(c.ConvertToSpline()) != nullptr; }},
        {"Trim", [](Curve& c, double* range) { return c.Trim(range); }},
        {"Transform", [&](Curve& c, double*) { return c.Transform(m), true; }},
    };
    for (const auto& row : rows)
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

TEST(Curve, LinesAndArcsMeasureWithoutAllocating) {
    const Line line(Point(-5, 1), Point(5, 2));
    const Arc arc(Point(3, 0), Point(0, 3), Point(0, 0));
    const Point p(2, 5);
    std::vector<Point> out;
    out.reserve(16);
    SM_fail_nth(0);
    for (const Curve* curve : std::initializer_list<const Curve*>{&line, &arc}) {
        EXPECT_GE(curve->DistanceBounded(p), curve->Distance(p));
        EXPECT_GE(curve->GetClosestPoint(p).Distance(p), curve->Project(p).Distance(p) - 1e-12);
        curve->IntersectBounded(line, out);
        curve->IntersectBounded(arc, out);
    }
    EXPECT_EQ(out.size(), 2U);
    EXPECT_EQ(SM_ask_allocation_count(), 0);
}
