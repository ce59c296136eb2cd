#include "tessera/geometry/Arc.h"

#include "tests/support/SampleCurves.h"
#include "tests/support/ThrownMessage.h"

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

namespace {

Arc AnglesArc(double start, double end, double radius = 1.0, const Point& centre = Point(0, 0)) {
    double at[3] = {centre.x, centre.y, 0.0};
    return Arc(at, radius, start, end);
}

Point At(double angle, double radius = 1.0) {
    return {radius * std::cos(angle), radius * std::sin(angle)};
}

void ExpectLimits(const Arc& arc, double start, double end, double tol = 1e-12) {
    EXPECT_NEAR(arc.GetStartAngle(), start, tol);
    EXPECT_NEAR(arc.GetEndAngle(), end, tol);
    double limits[2] = {};
    arc.AskRange(limits);
    EXPECT_DOUBLE_EQ(limits[0], std::min(arc.GetStartAngle(), arc.GetEndAngle()));
    EXPECT_NEAR(limits[1], std::max(arc.GetStartAngle(), arc.GetEndAngle()), 1e-15);
    EXPECT_EQ(arc.IsClosed(), std::fabs(end - start - 2 * kPi) <= 1e-10);
}

} // namespace

TEST(Arc, FromThreePointsPassesThroughAllThree) {
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> at(-10.0, 10.0);
    for (int trial = 0; trial < 300; ++trial) {
        const Point a(at(rng), at(rng)), b(at(rng), at(rng)), c(at(rng), at(rng));
        const std::unique_ptr<Arc> arc(Arc::FromThreePoints(a, b, c));
        const double tol = 1e-9 * (1.0 + arc->GetRadius());
        for (const Point& p : {a, b, c})
            EXPECT_NEAR(arc->DistanceBounded(p), 0.0, tol);
        EXPECT_LT(arc->GetStartAngle(), arc->GetEndAngle());
        const double fromA = std::min(arc->GetStart().Distance(a), arc->GetEnd().Distance(a));
        EXPECT_NEAR(fromA, 0.0, tol);
    }
    EXPECT_EQ(ThrownMessage([] { Arc::FromThreePoints(Point(0, 0), Point(1, 1), Point(5, 5)); }),
              "Cannot create an arc from colinear points");
}

TEST(Arc, NumberOfDisplaySegments) {
    const struct {
        double radius, sweep, tol;
        int expected;
    } rows[] = {
        {1, 2 * kPi, 1e-8, 0},
        {1, 2 * kPi, 1e-7, 0},
        {10, kPi, 0.1, 1 + static_cast<int>(kPi / (2 * std::acos(0.99)))},
        {1, 2 * kPi, 2.0, 2}, // arc cosine of -1
        {1, 2 * kPi, 2.1, 1}, // beyond the diameter
        {0, 1, 0.1, 1},       // no radius
        {1, 1, 0, 0},
        {1, 1, -1, 0},
        {1, 1, NAN, 0},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Arc::ComputeNumberOfDisplaySegments(row.radius, row.sweep, row.tol), row.expected)
            << row.radius << " " << row.tol;
    EXPECT_EQ(AnglesArc(0, 2 * kPi).AskNumberOfSampledPoints(1e-9), 1 + 43);
    EXPECT_EQ(AnglesArc(0, 2 * kPi).AskNumberOfSampledPoints(1.0), 5);
    EXPECT_EQ(AnglesArc(0, 1).AskNumberOfSampledPoints(1.0), 4);
}

TEST(Arc, ParametersOfPlainAndWrappedArcs) {
    const struct {
        const char* name;
        double start, end, theta, relative;
    } rows[] = {
        {"inside", 1, 3, 1.5, 0.25},
        {"before, nearer the start", 1, 3, 0.5, 0.0},
        {"after, nearer the end", 1, 3, 3.5, 1.0},
        {"at the start", 1, 3, 1, 0.0},
        {"at the end", 1, 3, 3, 1.0},
        {"wrapped", 5, 1, 0.5, (0.5 + 2 * kPi - 5) / (1 + 2 * kPi - 5)},
        {"wrapped, first stretch lifted all the same", 5, 1, 5.5, 1.0},
    };
    for (const auto& row : rows)
        EXPECT_NEAR(AnglesArc(row.start, row.end).GetRelativeParam(row.theta), row.relative, 1e-14)
            << row.name;
    const Arc plain = AnglesArc(1, 3), wrapped = AnglesArc(5, 1);
    EXPECT_NEAR(plain.GetMidParam(), 2.0, 1e-14);
    EXPECT_NEAR(wrapped.GetMidParam(), 3.0 - kPi, 1e-14);
    EXPECT_NEAR(plain.GetParamFromRelativeParam(0.25), 1.5, 1e-15);
    EXPECT_NEAR(plain.GetParamFromRelativeParam(-0.9e-10), 1.0, 1e-9);
    EXPECT_EQ(plain.GetParamFromRelativeParam(-1.1e-10), 0.0);
    EXPECT_EQ(plain.GetParamFromRelativeParam(1.0 + 1.1e-10), 0.0);
    EXPECT_NEAR(wrapped.GetParamFromRelativeParam(0.25), 5 + 0.25 * (2 * kPi - 4), 1e-14);
    EXPECT_NEAR(wrapped.GetParamFromRelativeParam(1.0), 1.0, 1e-14);
    EXPECT_TRUE(!AnglesArc(0, kPi).IsMajorArc() && AnglesArc(0, kPi + 2e-10).IsMajorArc());
}

TEST(Arc, WithinBoundsComparesAngles) {
    const Arc third(Point(-1, 0), Point(0, -1), Point(0, 0)), across = AnglesArc(-0.5, 0.5),
                                                              seam = AnglesArc(3.0, 3.5);
    const struct {
        const Arc& arc;
        Point p;
        bool within;
    } rows[] = {
        {third, {-1, 0}, true},
        {third, {-1, -1e-300}, true},
        {third, {-7, -7}, true},
        {third, {1, 1}, false},
        {across, At(0.5 + 0.9e-10), true},
        {across, At(0.5 + 1.2e-10), false},
        {seam, At(-3.0), true},
        {seam, At(3.1), true},
        {seam, At(2.9), false},
        {seam, At(-2.7), false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.arc.WithinBounds(row.p), row.within) << row.p.x << ", " << row.p.y;
}

TEST(Arc, DistanceBoundedOfNearlyStraightArcs) {
    std::mt19937 rng(17);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    for (int trial = 0; trial < 400; ++trial) {
        const double length = 42.0, radius = length * std::pow(10.0, 5.5 + 3.5 * unit(rng));
        const double turn = trial % 2 == 0 ? kPi / 2 * (trial % 4 - 1) : kPi * unit(rng);
        const Point c = At(turn, length);
        // So flat an arc is a parabola, which is exact however far away the centre.
        std::vector<Point> dense;
        for (int i = 0; i <= 400; ++i) {
            const double t = i / 400.0, bow = t * (1.0 - t) * length / (2 * radius);
            dense.emplace_back(t * c.x - bow * c.y, t * c.y + bow * c.x);
        }
        const std::unique_ptr<Arc> arc(Arc::FromThreePoints(dense.front(), dense[200], dense.back()));
        for (int k = 0; k < 10; ++k) {
            const Point p(c.x / 2 + 2 * length * unit(rng), c.y / 2 + 2 * length * unit(rng));
            EXPECT_NEAR(arc->DistanceBounded(p), PolylineDistance(dense, p), 1e-6 + 2e-15 * radius) << radius;
        }
    }
    const struct {
        const char* name;
        double start, end, radius;
        Point p; // from the point of the circle at angle 0
        double distance, tol;
    } rows[] = {
        {"beyond the end, by less than 1e-10 rad", -5.25e-11, 5.25e-11, 4e11, {32, 60}, 50.447993, 1e-3},
        {"beyond the start", -5.25e-11, 5.25e-11, 4e11, {-32, -60}, 50.447993, 1e-3},
        {"abreast", -5.25e-11, 5.25e-11, 4e11, {32, 20}, 32, 1e-3},
        {"opposite an arc of no sweep", 0, 0, 1, {-4, 0}, 4, 0},
        {"opposite the gap of all but a circle", 1e-9, 2 * kPi - 1e-9, 1, {-4, 0}, 2, 1e-15},
        {"in that gap", 1e-9, 2 * kPi - 1e-9, 1, {0, 0}, 1e-9, 1e-15},
        {"more than a turn", 0, 7, 1, {1, 0}, 1, 0},
        {"angles that fall", 1, -1, 1, {1, 0}, 1, 0},
        {"from the centre", 1, 2, 1, {-1, 0}, 1, 1e-15},
    };
    for (const auto& row : rows)
        EXPECT_NEAR(AnglesArc(row.start, row.end, row.radius, Point(-row.radius, 0)).DistanceBounded(row.p),
                    row.distance, row.tol)
            << row.name;
}

TEST(Arc, ChangesKeepTheRest) {
    Arc arc = AnglesArc(0.5, 1.5, 2.0, Point(1, 1));
    const Arc changed = AnglesArc(0.5, 1.5, 3.0, Point(-3, 4));
    arc.SetCenter(Point(-3, 4));
    arc.SetRadius(3.0);
    EXPECT_TRUE(arc.IsSameCurve(&changed));
    arc.SetClosed();
    ExpectLimits(arc, 0, 2 * kPi);
    EXPECT_DOUBLE_EQ(arc.Length(), 6 * kPi);
    EXPECT_EQ(arc.GetPointFromArcDistance(1.5 * kPi), Point(-3, 7));
    EXPECT_EQ(arc.Project(Point(-3, 4)), Point(0, 4)) << "the centre has a foot too";
}

TEST(Arc, MergeTakesTheUnion) {
    const struct {
        const char* name;
        double start, end;
        std::vector<std::pair<double, double>> others;
        double mergedStart, mergedEnd;
    } rows[] = {
        {"overlapping", 0, 1, {{0.5, 2}}, 0, 2},
        {"gap bridged the short way", 0, 1, {{1.5, 2}}, 0, 2},
        {"across the seam", 0, 1, {{6, 6.2}}, 6, 1 + 2 * kPi},
        {"negative start", -1, 1, {{0, 2}}, 2 * kPi - 1, 2 + 2 * kPi},
        {"covered circle", 1, 3, {{2, 5}, {4, 7.5}}, 0, 2 * kPi},
        {"contained", 0, 3, {{1, 2}}, 0, 3},
        {"three with the largest gap between the first two", 0, 0.5, {{3, 4}, {5, 6}}, 3, 0.5 + 2 * kPi},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Arc arc = AnglesArc(row.start, row.end);
        std::vector<CurvePtr> others;
        std::unordered_set<Curve*> set = {&arc, nullptr};
        for (const auto& [start, end] : row.others) {
            others.push_back(MakeArc({0, 0}, 1, start, end));
            set.insert(others.back().get());
        }
        EXPECT_TRUE(arc.Merge(set));
        ExpectLimits(arc, row.mergedStart, row.mergedEnd);
    }
    Arc arc = AnglesArc(0, 1), larger = AnglesArc(0, 3, 1.5), shifted = AnglesArc(0, 3, 1.0, Point(0.1, 0));
    Line line(Point(0, 0), Point(1, 0));
    EXPECT_FALSE(arc.Merge({&arc, &larger, &shifted, &line}));
    ExpectLimits(arc, 0, 1);
}

TEST(Arc, ForeignRecordsComeIntoTheUnturnedFrame) {
    const double centre[3] = {1, 2, 0};
    KC_CURVE_struct_s* record = ev05p0(centre, 2.0, 0.5, 2.0);
    auto& data = *static_cast<EVC_arc_s*>(record->data);
    data.xAxis[0] = 0.0; // turned a quarter and mirrored: the arc runs clockwise from 90 - 0.5 rad
    data.xAxis[1] = 2.0;
    data.yAxis[0] = 2.0;
    data.yAxis[1] = 0.0;
    const Arc arc(record);
    ExpectLimits(arc, kPi / 2 - 2.0, kPi / 2 - 0.5);
    EXPECT_NEAR(arc.GetStart().Distance(arc.GetPointFromAngle(arc.GetStartAngle())), 0.0, 1e-15);
    EXPECT_NEAR(arc.GetMajorRadiusPoint(2.0).Distance(Point(5, 2)), 0.0, 1e-15);
    EXPECT_NEAR(arc.GetMinorRadiusPoint(-1.0).Distance(Point(1, 0)), 0.0, 1e-15);
}
