#include "tessera/strokes/Stroke.h"

#include <stdexcept>

#include "tessera/core/Group.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/Spline.h"
#include "tessera/geometry/internal/RecordData.h"
#include "tests/support/ChangeLog.h"
#include "tests/support/DrawnStrokes.h"
#include "tests/support/ThrownMessage.h"

namespace Tessera::Geometry {
namespace {

using Core::Group;
using Core::TaggedObject;
using namespace Testing;
using ::testing::ElementsAre;
using StrokePtr = std::unique_ptr<Stroke>;

const char* const kNoPolyline = "Stroke::CreateSpline:  Incorrect point index";
const char* const kNoSubStroke = "Stroke::SubStroke:  Incorrect point index";

// n samples along x, bent upwards, with speed 10 i.
Stroke Ramp(int n) {
    std::vector<double> x, y, speed;
    for (int i = 0; i < n; ++i) {
        x.push_back(i);
        y.push_back(0.1 * i * i);
        speed.push_back(10.0 * i);
    }
    return {n, x.data(), y.data(), speed.data()};
}

std::vector<double> XsOf(const Stroke& stroke) {
    std::vector<double> xs;
    for (const StrokePoint& point : stroke.GetPoints())
        xs.push_back(point.x);
    return xs;
}

void ExpectSameBox(const BoundingBox& a, const BoundingBox& b) {
    int countA = 0, countB = 0;
    double cornersA[8][3], cornersB[8][3];
    a.AskCorners(&countA, cornersA);
    b.AskCorners(&countB, cornersB);
    ASSERT_EQ(countA, countB);
    for (int i = 0; i < countA; ++i)
        EXPECT_NEAR(Point(cornersA[i]).Distance(Point(cornersB[i])), 0.0, 1e-12);
}

TEST(Stroke, ConstructionFromArrays) {
    EXPECT_EQ(StrokePoint(1, 2, 0.1).GetSpeed(), 0.10000000149011612) << "held in single precision";
    double x[] = {1, 2, 3}, y[] = {4, 5, 7};
    const Stroke stroke(3, x, y, nullptr);
    EXPECT_TRUE(stroke.AskClass() == 1 && stroke.AskNumberOfPoints() == 3 && !stroke.AskBBoxOutdated());
    EXPECT_TRUE(stroke.AskAverageSpeed() == 0.0 && Stroke().AskAverageSpeed() == 0.0);
    EXPECT_EQ(Ramp(5).AskAverageSpeed(), 20.0);
    for (const int n : {1, 0, -3})
        EXPECT_EQ(ThrownMessage([&] { Stroke bad(n, x, y, nullptr); }), kNoPolyline) << n;
}

TEST(Stroke, PointsByIndex) {
    Stroke stroke = Ramp(4);
    EXPECT_EQ(stroke.GetPoint(3), Point(3, 0.9));
    for (const int index : {-1, 4}) {
        EXPECT_EQ(ThrownMessage([&] { (void)stroke.GetPoint(index); }),
                  "Stroke::GetPoint - input index is out of bounds");
        EXPECT_THROW(stroke.AssignPoint(StrokePoint(), index), std::out_of_range);
    }
    EXPECT_FALSE(stroke.AskBBoxOutdated()) << "a failed call changes nothing";
    stroke.AssignPoint(StrokePoint(9, 9, 5), 1);
    EXPECT_TRUE(stroke.GetPoints()[1].GetSpeed() == 5.0 && stroke.AskBBoxOutdated());
}

TEST(Stroke, BoxIsThatOfItsSplineAndRefreshedOnRequestOnly) {
    std::mt19937 rng(31);
    for (const int n : {2, 3, 10, 200}) {
        Stroke stroke = StrokeThrough(RandomWalk(rng, n));
        stroke.UpdateBoundingBox();
        const std::unique_ptr<Spline> polyline(stroke.CreateSpline());
        ExpectSameBox(stroke.AskBoundingBox(), polyline->AskBoundingBox());
    }
    Stroke stroke = Ramp(2), lonely = StrokeThrough({{1, 1}});
    const BoundingBox before = stroke.AskBoundingBox();
    EXPECT_EQ(before.AskDimension(), 1);
    stroke.AddPoint(StrokePoint(50, -7, 0));
    ExpectSameBox(stroke.AskBoundingBox(), before);
    stroke.UpdateBoundingBox();
    EXPECT_TRUE(stroke.AskBoundingBox().AskDimension() == 2 && !stroke.AskBBoxOutdated());
    XYBox box;
    EXPECT_TRUE(stroke.AskXYBox(box) && box.min == Point(0, -7) && box.max == Point(50, 0.1));
    EXPECT_EQ(ThrownMessage([&] { lonely.UpdateBoundingBox(); }), kNoPolyline);
    EXPECT_EQ(ThrownMessage([&] { (void)lonely.DistanceBounded(Point()); }), kNoPolyline);
}

TEST(Stroke, ResizeReverseAppendPrepend) {
    Stroke stroke = Ramp(5);
    stroke.Resize(3); // never shorter
    stroke.Resize(6);
    stroke.Reverse();
    EXPECT_THAT(XsOf(stroke), ElementsAre(0, 4, 3, 2, 1, 0));
    Stroke doubled = Ramp(2);
    doubled.AppendPointsFromStroke(doubled);
    doubled.PrependPointsFromStroke(Ramp(3));
    EXPECT_THAT(XsOf(doubled), ElementsAre(0, 1, 2, 0, 1, 0, 1));
    Stroke self = Ramp(3);
    self.PrependPointsFromStroke(self);
    EXPECT_THAT(XsOf(self), ElementsAre(0, 1, 2, 0, 1, 2));
    EXPECT_EQ(self.GetPoints()[5].GetSpeed(), 20.0);
    Stroke().Reverse();
}

TEST(Stroke, SubStrokesAndSplinesTakeARange) {
    Stroke stroke = Ramp(10);
    stroke.SetWidth(7.0);
    const StrokePtr whole(stroke.SubStroke(-5, 1000)), part(stroke.SubStroke(3, 5));
    EXPECT_EQ(XsOf(*whole), XsOf(stroke));
    EXPECT_THAT(XsOf(*part), ElementsAre(3, 4, 5));
    EXPECT_TRUE(part->AskWidth() == 7.0 && part->GetPoints()[2].GetSpeed() == 50.0 &&
                !part->AskBBoxOutdated());
    const std::unique_ptr<Spline> spline(stroke.CreateSpline(2, 5));
    const BCURVE_DATA& d = Definition(*spline->AskCurveData());
    EXPECT_TRUE(d.numPoles == 4 && d.order == 2 && d.periodic == 0);
    EXPECT_THAT(std::vector<double>(d.knots, d.knots + 6), ElementsAre(0.0, 0.0, 1.0 / 3, 2.0 / 3, 1.0, 1.0));
    for (int i = 0; i < 4; ++i) // uniform in the index
        EXPECT_EQ(spline->GetPointAtParameter(i / 3.0, false), stroke.GetPoint(2 + i));
    for (const auto& [first, last] : {std::pair{3, 3}, {5, 2}, {9, 20}, {12, 20}, {-9, 0}}) {
        EXPECT_EQ(ThrownMessage([&, f = first, l = last] { (void)stroke.SubStroke(f, l); }), kNoSubStroke);
        EXPECT_EQ(ThrownMessage([&, f = first, l = last] { (void)stroke.CreateSpline(f, l); }), kNoPolyline);
    }
}

TEST(Stroke, ExtractCutsAtIndexParameters) {
    const Stroke stroke = Ramp(11); // sample i at parameter i / 10
    const struct {
        double t0, t1;
        std::vector<double> xs; // empty: null
    } rows[] = {
        {0.25, 0.45, {2.5, 3, 4, 4.5}},
        {0.2, 0.35, {2, 3, 3.5}},              // the sample after the cut counts
        {0.25, 0.4, {}},                       // only samples 3 and 4
        {0.25, 0.41, {2.5, 3, 4, 4.1}},        // samples 3, 4, 5
        {0.2 + 5e-11, 0.4 - 5e-11, {2, 3, 4}}, // near enough
        {-1.0, 0.2, {0, 1, 2}},
        {0.8, 1.0 + 5e-11, {8, 9, 10}},
        {0.8, 1.1, {}},
        {0.6, 0.2, {}},
        {NAN, 0.5, {}},
        {0.1, NAN, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.t0 << " to " << row.t1);
        double params[2] = {row.t0, row.t1};
        const StrokePtr part(stroke.Extract(params));
        ASSERT_EQ(part == nullptr, row.xs.empty());
        for (std::size_t i = 0; i < row.xs.size(); ++i) {
            const StrokePoint& point = part->GetPoints().at(i);
            EXPECT_NEAR(point.x, row.xs[i], 1e-9);
            EXPECT_NEAR(point.GetSpeed(), 10 * row.xs[i], 1e-5) << "speed runs with the index";
            EXPECT_NEAR(stroke.DistanceBounded(point), 0.0, 1e-9);
        }
        EXPECT_TRUE(!part || part->GetPoints().size() == row.xs.size());
    }
    double all[2] = {0, 1};
    EXPECT_EQ(Stroke().Extract(all), nullptr);
    EXPECT_EQ(Ramp(2).Extract(all), nullptr);
}

TEST(Stroke, CopiesAndReplacement) {
    Group group;
    Stroke stroke = Ramp(3), target = Ramp(2);
    stroke.SetWidth(6.0);
    stroke.SetHidden(true);
    stroke.SetGroup(&group);
    stroke.AddPoint(StrokePoint(9, 9, 9)); // the box is outdated and copied as it stands
    const StrokePtr copy(stroke.Copy());
    EXPECT_NE(copy->GetId(), stroke.GetId());
    EXPECT_TRUE(copy->AskGroup() == &group && copy->AskBBoxOutdated() && copy->IsHidden());
    EXPECT_EQ(copy->GetDisplayData(), stroke.GetDisplayData());
    ExpectSameBox(copy->AskBoundingBox(), stroke.AskBoundingBox());
    const Stroke constructed(stroke);
    EXPECT_TRUE(constructed.IsHidden() && !constructed.IsGrouped()) << "which Copy takes";

    const int id = target.GetId();
    EXPECT_FALSE(target.Replace(nullptr) || target.Replace(&group));
    EXPECT_TRUE(target.Replace(&target) && target.AskNumberOfPoints() == 2);
    EXPECT_TRUE(target.Replace(&stroke));
    EXPECT_EQ(XsOf(target), XsOf(stroke));
    EXPECT_TRUE(target.GetId() == id && target.AskGroup() == &group && target.AskBBoxOutdated());
    EXPECT_TRUE(target.IsHidden());
    const Stroke plain = Ramp(2);
    target = plain;
    EXPECT_TRUE(target.AskNumberOfPoints() == 2 && target.GetId() == plain.GetId() &&
                target.AskWidth() == 2.0);
    EXPECT_EQ(target.AskGroup(), &group) << "assignment leaves the group";
}

TEST(Stroke, DeepCopyTakesItsPlaceInTheCopiedGroup) {
    Group group;
    Stroke stroke = Ramp(3);
    group.AddObject(&stroke);
    stroke.SetGroup(&group);
    std::set<int> none;
    std::map<int, TaggedObject*> copies;
    const std::unique_ptr<Group> groupCopy(group.Copy()); // still holds the original
    copies[group.GetId()] = groupCopy.get();
    const StrokePtr copy(stroke.DeepCopy(none, copies));
    EXPECT_EQ(copy->GetId(), stroke.GetId());
    EXPECT_EQ(copy->AskGroup(), groupCopy.get());
    EXPECT_TRUE(groupCopy->FindObject(copy.get()) && !groupCopy->FindObject(&stroke));
    EXPECT_TRUE(group.FindObject(&stroke)) << "the source group is untouched";
    EXPECT_EQ(stroke.DeepCopy(none, copies), copy.get());

    std::map<int, TaggedObject*> alone;
    const StrokePtr single(stroke.DeepCopy(none, alone));
    EXPECT_EQ(single->AskGroup(), &group) << "a group that is not copied stays the copy's group";
}

TEST(Stroke, TransformMovesSamplesAndBoxAlike) {
    Stroke stroke = Ramp(30);
    double turnAndDouble[3][3] = {{0.6, -0.8, 3}, {0.8, 0.6, -2}, {0, 0, 0.5}};
    stroke.Transform(turnAndDouble);
    EXPECT_EQ(stroke.GetPoint(10), Point(6 + 2 * (6 - 8), -4 + 2 * (8 + 6)));
    EXPECT_EQ(stroke.GetPoints()[10].GetSpeed(), 100.0);
    EXPECT_FALSE(stroke.AskBBoxOutdated());
    for (const StrokePoint& point : stroke.GetPoints()) {
        const double p[3] = {point.x, point.y, 0};
        EXPECT_TRUE(stroke.AskBoundingBox().IsPointInBBox(p, 1e-8));
    }
}

// Oracle of distances: the kernel's to the spline. Asked three times, so that scan and tree both answer.
TEST(Stroke, ChangesAreReportedMarkTheBoxAndReachTheDistance) {
    std::mt19937 rng(34);
    std::uniform_real_distribution<double> coordinate(-12, 12);
    Stroke stroke = StrokeThrough(RandomWalk(rng, 60));
    const Stroke tail = StrokeThrough(RandomWalk(rng, 5));
    double turn[3][3] = {{0, -1, 2}, {1, 0, 1}, {0, 0, 1}};
    const struct {
        const char* name;
        std::function<void()> change;
        int reports;
        bool marks; // the box as outdated
    } rows[] = {
        {"nothing", [] {}, 0, false},
        {"AddPoint", [&] { stroke.AddPoint(StrokePoint(10, 10, 0)); }, 1, true},
        {"AssignPoint", [&] { stroke.AssignPoint(StrokePoint(-10, 10, 0), 3); }, 1, true},
        {"Reverse", [&] { stroke.Reverse(); }, 0, false},
        {"Resize", [&] { stroke.Resize(stroke.AskNumberOfPoints() + 1); }, 0, false},
        {"Append: one for the call, one for each point", [&] { stroke.AppendPointsFromStroke(tail); }, 6,
         true},
        {"Prepend", [&] { stroke.PrependPointsFromStroke(tail); }, 1, true},
        {"Transform", [&] { stroke.Transform(turn); }, 1, false},
        {"SubStroke", [&] { StrokePtr(stroke.SubStroke(0, 5)); }, 0, false},
        {"Replace", [&] { stroke.Replace(StrokePtr(tail.Copy()).get()); }, 1, true},
        {"assignment", [&] { stroke = Ramp(9); }, 0, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        stroke.UpdateBoundingBox();
        ChangeLog log;
        log.onChange = [&, n = stroke.AskNumberOfPoints()]() mutable {
            EXPECT_LE(stroke.AskNumberOfPoints(), n++);
        };
        row.change();
        log.onChange = nullptr;
        EXPECT_EQ(log.Take(stroke), row.reports);
        EXPECT_EQ(stroke.AskBBoxOutdated(), row.marks);
        for (int ask = 0; ask < 3; ++ask) {
            const Point p(coordinate(rng), coordinate(rng));
            const std::unique_ptr<Spline> polyline(stroke.CreateSpline());
            EXPECT_NEAR(stroke.DistanceBounded(p), polyline->DistanceBounded(p), 1e-9);
        }
    }
}

// Oracle: a segment crosses another when each separates the other's ends; random data has no touching.
TEST(Stroke, IntersectBoundedFindsCrossingsInOrder) {
    std::mt19937 rng(35);
    std::uniform_real_distribution<double> at(-6, 6);
    const auto isLeft = [](const Point& a, const Point& b, const Point& p) {
        return (b - a).Cross(p - a) > 0;
    };
    std::size_t found = 0;
    for (int trial = 0; trial < 60; ++trial) {
        Stroke stroke = StrokeThrough(RandomWalk(rng, 80));
        if (trial % 2 == 0)
            stroke.UpdateBoundingBox();
        const Point a(at(rng), at(rng)), b(at(rng), at(rng));
        std::vector<Line> crossed;
        for (int i = 0; i + 1 < 80; ++i) {
            const Point p = stroke.GetPoint(i), q = stroke.GetPoint(i + 1);
            if (isLeft(a, b, p) != isLeft(a, b, q) && isLeft(p, q, a) != isLeft(p, q, b))
                crossed.emplace_back(p, q);
        }
        for (int ask = 0; ask < 2; ++ask) { // by scan, then by tree
            std::vector<Point> points;
            stroke.IntersectBounded(Line(a, b), points);
            ASSERT_EQ(points.size(), crossed.size());
            for (std::size_t i = 0; i < points.size(); ++i)
                EXPECT_NEAR(crossed[i].DistanceBounded(points[i]), 0.0, 1e-9);
            found += points.size();
        }
    }
    EXPECT_GT(found, 100U);
}

TEST(Stroke, IntersectsCurvesAndTheirCarriers) {
    const Stroke stroke = StrokeThrough({{-5, 0}, {5, 0}, {5, 9}});
    const Line above(Point(1, 5), Point(1, 4)); // reaches the stroke as an infinite line
    std::vector<Point> points = {Point(99, 99)};
    stroke.IntersectBounded(Arc(Point(0, 0), 3.0), points);
    stroke.IntersectBounded(above, points);
    stroke.Intersect(above, points);
    EXPECT_THAT(points, ElementsAre(Point(99, 99), Point(3, 0), Point(-3, 0), Point(1, 0)));
}

TEST(Stroke, PolygonTests) {
    double xs[] = {0, 4, 4, 2, 0}, ys[] = {0, 0, 4, 1, 4}; // a notch from above
    Stroke in = StrokeThrough({{0.5, 0.5}, {2, 0.5}, {3.5, 0.5}});
    Stroke across = StrokeThrough({{0.5, 3}, {2, 3}, {3.5, 3}}); // the middle lies in the notch
    Stroke past = StrokeThrough({{-1, 0.5}, {9, 0.5}});          // crosses, but no sample inside
    EXPECT_TRUE(in.IsInPolygon(5, xs, ys) && in.IsCrossPolygon(5, xs, ys));
    EXPECT_FALSE(across.IsInPolygon(5, xs, ys));
    EXPECT_FALSE(past.IsInPolygon(5, xs, ys) || past.IsCrossPolygon(5, xs, ys));
    EXPECT_FALSE(in.IsInPolygon(2, xs, ys) || in.IsCrossPolygon(2, xs, ys));
    across.AddPoint(StrokePoint(2, 0.5, 0));
    EXPECT_TRUE(across.IsCrossPolygon(5, xs, ys) && !across.IsInPolygon(5, xs, ys));
}

} // namespace
} // namespace Tessera::Geometry
