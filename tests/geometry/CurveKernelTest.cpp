// What curves answer through the kernel: pieces, measures, and how they lie to each other.
#include "tests/support/ChangeLog.h"
#include "tests/support/SampleCurves.h"
#include "tests/support/ThrownMessage.h"

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

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
        const double bounded = curve->DistanceBounded(p), carrier = curve->Distance(p);
        EXPECT_NEAR(bounded, PolylineDistance(dense, p), 1e-4);
        EXPECT_NEAR(curve->GetClosestPoint(p).Distance(p), bounded, 1e-9);
        EXPECT_LE(carrier, bounded + 1e-12);
        EXPECT_NEAR(curve->Project(p).Distance(p), carrier, 1e-12);
        EXPECT_NEAR(curve->Distance(curve->Project(p)), 0.0, 1e-9);
    }
}

TEST(CurveKernel, ExtractAndTrimGiveTheSamePiece) {
    for (const Sample& sample : SampleCurves()) {
        SCOPED_TRACE(sample.name);
        Curve& curve = *sample.curve;
        curve.SetWidth(7.5);
        double range[2];
        curve.AskRange(range);
        range[0] += 0.3 * (range[1] - range[0]);
        range[1] -= 0.2 * (range[1] - range[0]);
        const CurvePtr piece(curve.Extract(range));
        EXPECT_TRUE(piece->GetType() == curve.GetType() && piece->AskWidth() == 7.5);
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
        EXPECT_TRUE(curve.Trim(range) && curve.IsSameCurve(piece.get()));
        EXPECT_EQ(log.Take(curve), 1);
        EXPECT_TRUE(curve.GetId() == id && piece->GetId() != id);
    }
}

TEST(CurveKernel, EmptyRangesAreRefused) {
    const char* text = "Curve::Extract - input range is invalid";
    Line line(Point(0, 0), Point(1, 0));
    double ranges[][2] = {{0.5, 0.5}, {0.6, 0.5}, {0.2, 0.2 + 0.9e-7}, {std::nan(""), 1}};
    for (auto& range : ranges) {
        EXPECT_EQ(ThrownMessage([&] { line.Extract(range); }), text);
        EXPECT_EQ(ThrownMessage([&] { line.AskBoundingBoxOfRange(range); }), text);
        EXPECT_FALSE(line.Trim(range));
    }
    double small[2] = {0.2, 0.2 + 2e-7}, acrossSeam[2] = {5, 7}, turn[2] = {1, 1 + 2 * kPi};
    EXPECT_NEAR(CurvePtr(line.Extract(small))->Length(), 2e-7, 1e-12);
    for (const CurvePtr& round : {MakeCircle({0, 0}, 1), MakeEllipse({0, 0}, 1, 1, 0, 0, 2 * kPi)}) {
        const CurvePtr arc(round->Extract(acrossSeam)), whole(round->Extract(turn));
        EXPECT_NEAR(arc->Length(), 2.0, 1e-12);
        EXPECT_EQ(arc->GetMidPoint(), Point(std::cos(6.0), std::sin(6.0)));
        EXPECT_TRUE(whole->IsClosed() && !arc->IsClosed());
    }
}

TEST(CurveKernel, PointsOnAndEndsAtTheBoundedCurve) {
    const Arc arc(Point(2, 0), Point(0, 2), Point(0, 0));
    EXPECT_TRUE(arc.IsPointOnObject(Point(2.05, 0), 0.1));
    EXPECT_FALSE(arc.IsPointOnObject(Point(2, -0.2), 0.1) || arc.IsPointOnObject(Point(1, 1), 0.1));
    EXPECT_FALSE(arc.IsPointOnObject(Point(2, 0), 0.0)) << "the third axis of the box is tested strictly";
    const CurvePtr line = MakeLine({0, 0}, {2, 1e-9}), apart = MakeLine({2, 1e-8}, {3, 0}),
                   circle = MakeCircle({0, 0}, 2);
    EXPECT_TRUE(line->IsConnected(MakeArc({0, 0}, 2, 0, 1).get()) && arc.IsConnected(line.get()));
    EXPECT_FALSE(line->IsConnected(apart.get()) || line->IsConnected(nullptr));
    EXPECT_FALSE(line->IsConnected(circle.get()) || circle->IsConnected(line.get()))
        << "circles have no ends";
}

// In this order; the other way round the same for a line, reversed for two circles.
TEST(CurveKernel, CarriersOfLinesAndCirclesMeetInClosedForm) {
    const double h = std::sqrt(0.75);
    const struct {
        const char* name;
        CurvePtr a, b;
        std::vector<Point> expected;
    } rows[] = {
        {"line through the centre", MakeLine({1, 0}, {1, 1}), MakeCircle({1, 2}, 2), {{1, 4}, {1, 0}}},
        {"far from its own ends", MakeLine({-10, 2}, {-9, 2}), MakeCircle({1, 2}, 2), {{3, 2}, {-1, 2}}},
        {"tangent", MakeLine({3, 0}, {3, 1}), MakeCircle({1, 2}, 2), {{3, 2}}},
        {"just outside", MakeLine({3 + 1e-6, 0}, {3 + 1e-6, 1}), MakeCircle({1, 2}, 2), {}},
        {"lines", MakeLine({0, 0}, {1, 1}), MakeLine({10, 0}, {10, -1}), {{10, 10}}},
        {"parallel lines", MakeLine({0, 0}, {1, 1}), MakeLine({3, 0}, {5, 2}), {}},
        {"circles touching from outside", MakeCircle({0, 0}, 1), MakeCircle({2, 0}, 1), {{1, 0}}},
        {"crossing", MakeCircle({0, 0}, 1), MakeCircle({1, 0}, 1), {{0.5, -h}, {0.5, h}}},
        {"concentric", MakeCircle({0, 0}, 1), MakeCircle({0, 0}, 2), {}},
        {"apart", MakeCircle({0, 0}, 1), MakeCircle({3, 0}, 1), {}},
        {"inside", MakeCircle({0, 0}, 1), MakeCircle({0.2, 0}, 0.5), {}},
        {"touching from inside", MakeCircle({0, 0}, 1), MakeCircle({0.7, 0}, 0.3), {{1, 0}, {1, 0}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<Point> found, swapped;
        row.a->Intersect(*row.b, found);
        row.b->Intersect(*row.a, swapped);
        if (row.a->GetType() == CurveType_Arc)
            std::reverse(swapped.begin(), swapped.end());
        ASSERT_TRUE(found.size() == row.expected.size() && swapped.size() == row.expected.size());
        for (std::size_t i = 0; i < found.size(); ++i)
            EXPECT_NEAR(found[i].Distance(row.expected[i]) + swapped[i].Distance(row.expected[i]), 0.0, 1e-7);
    }
    std::vector<Point> out;
    for (int i = 1; i < 20; ++i) // from inside the root may be rounded below zero
        Arc(Point(0, 0), 1.0).Intersect(Arc(Point(1 - 0.05 * i, 0), 0.05 * i), out);
    EXPECT_EQ(out.size(), 38U) << "appended";
    for (const Point& p : out)
        EXPECT_NEAR(p.Distance(Point(1, 0)), 0.0, 1e-7);
}

// The kernel's own search, tested against brute force, finds the same for every pair of kinds.
TEST(CurveKernel, IntersectBoundedAgreesWithTheKernel) {
    std::mt19937 rng(77);
    for (int trial = 0; trial < 160; ++trial) {
        SCOPED_TRACE(trial);
        const CurvePtr a = RandomCurve(rng, trial % 4), b = RandomCurve(rng, trial / 4 % 4);
        std::vector<Point> hits, swapped, points;
        std::vector<double> t1 = {5}, t2;
        int n = -1;
        a->IntersectBounded(*b, hits);
        b->IntersectBounded(*a, swapped);
        ASSERT_TRUE(a->IntersectCurve(*b, &n, t1, t2, points, 1e-9));
        EXPECT_EQ(hits.size(), points.size());
        EXPECT_EQ(swapped.size(), points.size());
        ASSERT_TRUE(t1.size() == points.size() && t2.size() == points.size());
        EXPECT_EQ(n, static_cast<int>(points.size()));
        for (std::size_t i = 0; i < points.size(); ++i) {
            for (const auto* found : {&hits, &swapped})
                EXPECT_TRUE(std::any_of(found->begin(), found->end(),
                                        [&](const Point& p) { return p.Distance(points[i]) < 1e-6; }));
            EXPECT_LT(a->GetPointAtParameter(t1[i], true).Distance(points[i]), 1e-7);
            EXPECT_LT(b->GetPointAtParameter(t2[i], true).Distance(points[i]), 1e-7);
        }
    }
}

// Exact touches and shared ends become two near points or none by the rounding of a turn.
TEST(CurveKernel, TouchesAreFoundOnceInEveryDirection) {
    struct {
        const char* name;
        CurvePtr a, b;
        std::vector<Point> touch;
    } rows[] = {
        {"fillet", MakeLine({-5, 1}, {0, 1}), MakeArc({0, 0}, 1, 0, kPi / 2), {{0, 1}}},
        {"line along a circle", MakeLine({-5, 3}, {7, 3}), MakeCircle({1, 1}, 2), {{1, 3}}},
        {"two arcs in an S", MakeArc({0, 0}, 1, 0, kPi), MakeArc({3, 0}, 2, kPi, 2 * kPi), {{1, 0}}},
        {"circle inside", MakeArc({0, 0}, 3, -1, 1), MakeCircle({2, 0}, 1), {{3, 0}}},
        {"shared end", MakeLine({0, 0}, {1, 1}), MakeLine({1, 1}, {2, 0}), {{1, 1}}},
        {"just short of it", MakeLine({0, 0}, {1, 1}), MakeLine({1.001, 1}, {2, 0}), {}},
        {"arc from half a turn", MakeLine({-1, -1}, {-1, 1}), MakeArc({0, 0}, 1, -kPi, -kPi / 2), {{-1, 0}}},
        {"outside the limits of both", MakeLine({3, -1}, {3, 1}), MakeEllipse({0, 0}, 5, 1, 0, 2, 4), {}},
    };
    double m[3][3] = {
        {std::cos(0.37), -std::sin(0.37), 0.3}, {std::sin(0.37), std::cos(0.37), -0.7}, {0, 0, 1}};
    for (auto& row : rows)
        for (int turn = 0; turn < 40; ++turn) {
            SCOPED_TRACE(testing::Message() << row.name << ", turn " << turn);
            for (const bool swapped : {false, true}) {
                std::vector<Point> out;
                swapped ? row.b->IntersectBounded(*row.a, out) : row.a->IntersectBounded(*row.b, out);
                ASSERT_EQ(out.size(), row.touch.size());
                EXPECT_TRUE(out.empty() || out[0].Distance(row.touch[0]) < 1e-6);
            }
            row.a->Transform(m);
            row.b->Transform(m);
            for (Point& p : row.touch)
                p.Transform(m);
        }
}

TEST(CurveKernel, OverlapGivesTheCommonPart) {
    const CurvePtr line = MakeLine({0, 0}, {4, 0}), part = MakeLine({3, 0}, {9, 0}),
                   above = MakeLine({0, 1}, {4, 1});
    CRV_TOPOL_state_t state = CRV_TOPOL_IDENTICAL;
    double range[2] = {};
    Curve* common = nullptr;
    EXPECT_TRUE(line->IsOverlapping(part.get(), 1e-6, 1e-6, 1e-6, &state, range, &common));
    ASSERT_NE(common, nullptr);
    EXPECT_NEAR(CurvePtr(common)->Length(), 1.0, 1e-9);
    EXPECT_EQ(state, CRV_TOPOL_PARTIAL);
    EXPECT_NEAR(range[0], 0.75, 1e-9);
    EXPECT_NEAR(range[1], 1.0, 1e-9);
    EXPECT_FALSE(line->IsOverlapping(above.get(), 1e-6, 1e-6, 1e-6, &state, range, &common));
    EXPECT_TRUE(state == CRV_TOPOL_SEPARATE && common == nullptr);
}
