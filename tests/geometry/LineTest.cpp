#include "tessera/geometry/Line.h"

#include "tessera/geometry/Arc.h"
#include "tessera/kernel/EQ.h"
#include "tests/support/Records.h"
#include "tests/support/SampleCurves.h"
#include "tests/support/ThrownMessage.h"

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

namespace {

/// A kind of curve that no other kind knows.
class UnknownCurve : public Line {
public:
    UnknownCurve() : Line(Point(0, 0), Point(1, 0)) {}
    CurveType_e GetType() const override { return static_cast<CurveType_e>(4); }
};

} // namespace

TEST(Line, ThreeFourFive) {
    const Line line(Point(0, 0), Point(3, 4)), polar(Point(1, 1), 2.0, std::numbers::pi / 2);
    EXPECT_TRUE(line.Bisect() == Point(1.5, 2) && line.GetCachedBasePoint() == Point(1.5, 2));
    EXPECT_FALSE(line.IsReflectCenterLine() || line.IsClosed());
    EXPECT_EQ(line.AskNumberOfSampledPoints(1e-9), 2);
    const std::unique_ptr<Line> turned(line.Perpendicular(Point(1, 1)));
    EXPECT_TRUE(turned->GetStart() == Point(1, 1) && turned->GetEnd() == Point(-3, 4));
    EXPECT_EQ(polar.GetEnd(), Point(1, 3));
}

TEST(Line, SlackOfTheBoundsIsOfAProductAtTheStartAndOfALengthAtTheEnd) {
    const double length = 1e-3, aside = 1e-4;
    const Line line(Point(0, 0), Point(length, 0));
    const struct {
        double x;
        bool within;
    } rows[] = {{-0.9e-7, true}, {-1.1e-7, false}, {length + 0.9e-10, true}, {length + 1.1e-10, false}};
    for (const auto& row : rows) {
        const double beyond = row.within ? 0.0 : std::max(-row.x, row.x - length);
        EXPECT_EQ(line.WithinBounds(Point(row.x, 0)), row.within) << row.x;
        EXPECT_NEAR(line.DistanceBounded(Point(row.x, 0)), beyond, 1e-15) << row.x;
        EXPECT_NEAR(line.DistanceBounded(Point(row.x, aside)), std::hypot(beyond, aside), 1e-15) << row.x;
    }
}

TEST(Line, OnLineIsAngularAndLeavesOutTheStart) {
    const Line line(Point(0, 0), Point(3, 4));
    const struct {
        Point p;
        bool on, within;
    } rows[] = {
        {{6, 8}, true, false},
        {{-6, -8}, true, false},
        {{0, 0}, false, true},
        {{1, 1}, false, true},
        {{3, 4}, true, true},
        {{-1e-12, 0}, false, true},
        {{-4, 3}, false, true},
        {{3e-11, 4e-11}, false, true},
        // An angle of 1e-5 passes, one of 2e-5 does not: the cosine decides.
        {{3 - 4e-5, 4 + 3e-5}, true, false},
        {{3 - 8e-5, 4 + 6e-5}, false, false},
        {{3 + 5e-11, 4 + 6e-11}, true, true},
        {{3 + 3e-10, 4 + 4e-10}, true, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.p.x << ", " << row.p.y);
        EXPECT_EQ(line.OnLine(row.p), row.on);
        EXPECT_EQ(line.WithinBounds(row.p), row.within);
    }
}

TEST(Line, HorizontalVerticalParallelAndZeroLengthAtTheirTolerances) {
    const double t = EQ_ask_length_tolerance();
    const struct {
        const char* name;
        Point end;
        bool horizontal, vertical, zero;
    } rows[] = {
        {"horizontal, just inside", {5, 0.99 * t}, true, false, false},
        {"not horizontal, just outside", {5, 1.01 * t}, false, false, false},
        {"vertical", {-0.99 * t, 5}, false, true, false},
        {"zero by components, longer by length", {0.9 * t, 0.9 * t}, true, true, true},
        {"one component beyond", {0, 1.01 * t}, false, true, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Line line(Point(0, 0), row.end);
        EXPECT_EQ(line.IsHorizontal(), row.horizontal);
        EXPECT_EQ(line.IsVertical(), row.vertical);
        EXPECT_EQ(line.IsZeroLength(), row.zero);
    }
    const Line base(Point(1, 1), Point(3, 1)), opposite(Point(0, 0), Point(-7, 0.9e-7 * 7));
    const Line tilted(Point(0, 0), Point(1, 1.1e-7)), down(Point(0, 0), Point(0, -2));
    EXPECT_TRUE(base.IsParallel(&opposite) && !base.IsParallel(&tilted));
    EXPECT_NEAR(base.AngleBetween(down), -std::numbers::pi / 2, 1e-15);
    Line none(Point(2, 2), Point(2, 2)); // measures nothing
    EXPECT_FALSE(base.IsParallel(&none) || none.IsParallel(&base) || none.Merge({&none}));
    EXPECT_EQ(none.Distance(Point(5, 6)), 0.0);
    EXPECT_EQ(none.Project(Point(5, 6)), Point(5, 6));
    std::vector<Point> out;
    none.Intersect(Arc(Point(2, 2), 1.0), out);
    none.Intersect(Line(Point(0, 0), Point(1, 1)), out);
    EXPECT_TRUE(out.empty());
}

TEST(Line, UnknownKindsAreRefused) {
    const UnknownCurve unknown;
    const auto all = SampleCurves();
    const std::pair<int, const char*> rows[] = {{0, "Line::Intersect: Unsupported case"},
                                                {1, "Arc::Intersect: Unsupported case"},
                                                {4, "Ellipse::Intersect: Unsupported yet"},
                                                {6, "Spline::Intersect: Unsupported yet"}};
    std::vector<Point> out;
    for (const auto& [sample, text] : rows)
        EXPECT_EQ(ThrownMessage([&, i = sample] { all[i].curve->Intersect(unknown, out); }), text);
    const RecordPtr arc = records::Arc(0, 0, 2, 0, 1); // stays the caller's
    EXPECT_EQ(ThrownMessage([&] { Line line(arc.get()); }), "Input CURVE data structure is not of Line type");
}

TEST(Line, Statics) {
    EXPECT_TRUE(Line::Colinear({{0, 0}, {1, 5}}, 0.0));
    EXPECT_TRUE(Line::Colinear({{0, 0}, {1, 0.1}, {7, -0.1}, {4, 0}}, 0.1));
    EXPECT_FALSE(Line::Colinear({{0, 0}, {1, 0.100001}, {4, 0}}, 0.1));
    const struct {
        Point p, end;
        int where;
        double distanceSq;
    } rows[] = {{{-1, 3}, {2, 0}, 0, 9}, {{0, 3}, {2, 0}, 1, 9}, {{1, -2}, {2, 0}, 1, 4},
                {{2, 1}, {2, 0}, 1, 1},  {{5, 1}, {2, 0}, 2, 1}, {{3, 4}, {0, 0}, -1, 25}};
    for (const auto& row : rows) {
        int where = 99;
        EXPECT_NEAR(Line::PointToLineDistance2(row.p, Point(0, 0), row.end, &where), row.distanceSq, 1e-12);
        EXPECT_EQ(where, row.where) << row.p.x;
    }
}

TEST(Line, MergeStretchesOverAllEnds) {
    Line line(Point(0, 0), Point(1, 0)), far(Point(2, 0), Point(3, 0)),
        beside(Point(-2, 1e-10), Point(0.5, 0));
    EXPECT_TRUE(line.Merge({&far}));
    EXPECT_TRUE(line.GetStart() == Point(0, 0) && line.GetEnd() == Point(3, 0) &&
                far.GetStart() == Point(2, 0));
    EXPECT_TRUE(line.Merge({&beside, &line, nullptr}));
    EXPECT_TRUE(line.GetStart() == Point(-2, 0) && line.GetEnd() == Point(3, 0));
    Line down(Point(0, 5), Point(0, 1)), lower(Point(0, -4), Point(0, -3));
    down.Merge({&lower});
    EXPECT_TRUE(down.GetStart() == Point(0, 5) && down.GetEnd() == Point(0, -4));
}
