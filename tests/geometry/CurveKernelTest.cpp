// What curves answer through the kernel: pieces, measures, and how they lie to each other.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <random>

#include "tests/support/ChangeLog.h"
#include "tests/support/SampleCurves.h"
#include "tests/support/ThrownMessage.h"

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

namespace {

constexpr double kPi = std::numbers::pi;

double NearestOf(const std::vector<Point>& points, const Point& p) {
    double best = 1e300;
    for (const Point& q : points)
        best = std::min(best, p.Distance(q));
    return best;
}

} // namespace

TEST(CurveKernel, MeasuresAgreeWithSamples) {
    std::mt19937 rng(21);
    std::uniform_real_distribution<double> at(-6.0, 6.0);
    for (int trial = 0; trial < 160; ++trial) {
        SCOPED_TRACE(trial);
        const CurvePtr curve = RandomCurve(rng, trial);
        const std::vector<Point> dense = DensePoints(*curve, 4000);
        double length = 0.0;
        for (std::size_t i = 1; i < dense.size(); ++i)
            length += dense[i].Distance(dense[i - 1]);
        EXPECT_NEAR(curve->Length(), length, 1e-4);
        const Point p(at(rng), at(rng));
        const double bounded = curve->DistanceBounded(p);
        EXPECT_NEAR(bounded, PolylineDistance(dense, p), 1e-4);
        EXPECT_NEAR(curve->GetClosestPoint(p).Distance(p), bounded, 1e-9);
        // The foot on the carrier is at least as near.
        EXPECT_LE(curve->Distance(p), bounded + 1e-12);
        EXPECT_NEAR(curve->Project(p).Distance(p), curve->Distance(p), 1e-12);
        EXPECT_NEAR(curve->Distance(curve->Project(p)), 0.0, 1e-9);
    }
}

TEST(CurveKernel, ExtractAndTrimGiveTheSamePiece) {
    for (const Sample& sample : SampleCurves()) {
        SCOPED_TRACE(sample.name);
        Curve& curve = *sample.curve;
        curve.SetWidth(7.5);
        double limits[2];
        curve.AskRange(limits);
        double range[2] = {limits[0] + 0.3 * (limits[1] - limits[0]),
                           limits[0] + 0.8 * (limits[1] - limits[0])};
        const CurvePtr piece(curve.Extract(range));
        EXPECT_EQ(piece->GetType(), curve.GetType());
        EXPECT_NE(piece->GetId(), curve.GetId());
        EXPECT_EQ(piece->AskWidth(), 7.5);
        EXPECT_NEAR(piece->GetStart().Distance(curve.GetPointAtParameter(range[0], false)), 0.0, 1e-12);
        EXPECT_NEAR(piece->Length(), curve.CurveLength(range), 1e-9);
        const BoundingBox box = curve.AskBoundingBoxOfRange(range);
        for (const Point& p : DensePoints(*piece, 30)) {
            const double position[3] = {p.x, p.y, 0};
            EXPECT_NEAR(curve.DistanceBounded(p), 0.0, 1e-9);
            EXPECT_TRUE(box.IsPointInBBox(position, 1e-9));
        }
        const int id = curve.GetId();
        ChangeLog log;
        EXPECT_TRUE(curve.Trim(range));
        EXPECT_EQ(log.Take(curve), 1);
        EXPECT_EQ(curve.GetId(), id);
        EXPECT_TRUE(curve.IsSameCurve(piece.get()));
    }
}

TEST(CurveKernel, EmptyRangesAreRefused) {
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

TEST(CurveKernel, PointOnObjectUsesTheBoundedCurve) {
    const Arc arc(Point(2, 0), Point(0, 2), Point(0, 0));
    EXPECT_TRUE(arc.IsPointOnObject(Point(2.05, 0), 0.1));
    EXPECT_FALSE(arc.IsPointOnObject(Point(2, -0.2), 0.1));
    EXPECT_FALSE(arc.IsPointOnObject(Point(1, 1), 0.1));
    EXPECT_FALSE(arc.IsPointOnObject(Point(2, 0), 0.0)) << "the third axis of the box is tested strictly";
}

TEST(CurveKernel, ConnectedByEquallyPlacedEnds) {
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

// The kernel's own search, tested against brute force, finds the same for every pair of kinds.
TEST(CurveKernel, IntersectBoundedAgreesWithTheKernel) {
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

// Exact touches and shared ends become two near points or none by the rounding of a turn.
TEST(CurveKernel, TouchesAreFoundOnceInEveryDirection) {
    struct Row {
        const char* name;
        CurvePtr a, b;
        Point touch;
        std::size_t count = 1;
    };
    std::vector<Row> rows;
    const auto add = [&](const char* name, CurvePtr a, CurvePtr b, const Point& touch,
                         std::size_t count = 1) {
        rows.push_back({name, std::move(a), std::move(b), touch, count});
    };
    add("fillet", std::make_unique<Line>(Point(-5, 1), Point(0, 1)), MakeArc({0, 0}, 1, 0, kPi / 2), {0, 1});
    add("line along a circle", std::make_unique<Line>(Point(-5, 3), Point(7, 3)),
        std::make_unique<Arc>(Point(1, 1), 2.0), {1, 3});
    add("two arcs in an S", MakeArc({0, 0}, 1, 0, kPi), MakeArc({3, 0}, 2, kPi, 2 * kPi), {1, 0});
    add("circle inside", MakeArc({0, 0}, 3, -1, 1), std::make_unique<Arc>(Point(2, 0), 1.0), {3, 0});
    add("shared end", std::make_unique<Line>(Point(0, 0), Point(1, 1)),
        std::make_unique<Line>(Point(1, 1), Point(2, 0)), {1, 1});
    add("just short of it", std::make_unique<Line>(Point(0, 0), Point(1, 1)),
        std::make_unique<Line>(Point(1.001, 1), Point(2, 0)), {}, 0);
    add("arc that starts at half a turn", std::make_unique<Line>(Point(-1, -1), Point(-1, 1)),
        std::make_unique<Arc>(Point(-1, 0), Point(0, -1), Point(0, 0)), {-1, 0});
    add("outside the limits of both", std::make_unique<Line>(Point(3, -1), Point(3, 1)),
        MakeEllipse({0, 0}, 5, 1, 0, 2, 4), {}, 0);
    for (Row& row : rows) {
        double m[3][3] = {
            {std::cos(0.37), -std::sin(0.37), 0.3}, {std::sin(0.37), std::cos(0.37), -0.7}, {0, 0, 1}};
        for (int turn = 0; turn < 40; ++turn) {
            SCOPED_TRACE(testing::Message() << row.name << ", turn " << turn);
            for (const bool swapped : {false, true}) {
                std::vector<Point> out;
                swapped ? row.b->IntersectBounded(*row.a, out) : row.a->IntersectBounded(*row.b, out);
                ASSERT_EQ(out.size(), row.count);
                EXPECT_TRUE(out.empty() || out[0].Distance(row.touch) < 1e-6);
            }
            row.a->Transform(m);
            row.b->Transform(m);
            row.touch.Transform(m);
        }
    }
}

TEST(CurveKernel, OverlapGivesTheCommonPart) {
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
