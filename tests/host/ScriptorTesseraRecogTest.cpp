#include "tessera/host/internal/ScriptorTesseraRecog.h"

#include "tests/support/Test.h"

namespace {

using namespace Tessera::Host;

/// A four-sided shape from its corners; side i runs from corner i to corner i + 1.
struct FourSides {
    SideSegment sides[4];
    explicit FourSides(const tagGPosition2d (&corners)[4]) {
        for (int i = 0; i < 4; ++i)
            sides[i] = {corners[i], corners[(i + 1) % 4]};
    }
};

TEST(RectangleGate, TellsNearRectanglesFromOtherShapes) {
    const struct {
        const char* name;
        tagGPosition2d corners[4];
        bool isCandidate;
    } rows[] = {
        {"hand-drawn rectangle", {{0, 0}, {200, 8}, {190, 110}, {-6, 100}}, true},
        {"the other way round", {{-6, 100}, {190, 110}, {200, 8}, {0, 0}}, true},
        {"exactly parallel sides are not taken", {{0, 0}, {200, 0}, {200, 100}, {0, 100}}, false},
        {"a corner of 50 degrees", {{0, 0}, {200, 8}, {330, 110}, {130, 100}}, false},
        {"bow tie", {{0, 0}, {200, 100}, {200, 0}, {0, 103}}, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(IsRectangleCandidate(FourSides(row.corners).sides), row.isCandidate);
    }
}

TEST(RectangleGate, CornersAreJudgedStrictlyBetween60And120Degrees) {
    // A parallelogram, one corner moved a little so that no sides are exactly parallel.
    for (const double angleDeg : {57.0, 63.0, 117.0, 123.0}) {
        SCOPED_TRACE(angleDeg);
        const double a = angleDeg * 3.141592653589793 / 180, dx = 150 * std::cos(a);
        const double dy = 150 * std::sin(a);
        const FourSides shape({{0, 0}, {200, 0}, {200 + dx, dy}, {dx + 1.5, dy + 1.5}});
        EXPECT_EQ(IsRectangleCandidate(shape.sides), angleDeg > 60 && angleDeg < 120);
    }
}

TEST(RectangleConstruction, RebuildsATurnedRectangleFromNoisySides) {
    std::mt19937 rng(20240611);
    std::uniform_real_distribution<double> noise(-1.5, 1.5), turn(0, 6.28);
    for (int trial = 0; trial < 50; ++trial) {
        SCOPED_TRACE(trial);
        const double angle = turn(rng);
        const bool clockwise = trial % 2 == 1;
        tagGPosition2d exact[4];
        const tagGPosition2d local[4] = {{0, 0}, {200, 0}, {200, 90}, {0, 90}};
        for (int i = 0; i < 4; ++i) {
            const tagGPosition2d& p = local[clockwise ? 3 - i : i];
            exact[i] = {50 + p.x * std::cos(angle) - p.y * std::sin(angle),
                        70 + p.x * std::sin(angle) + p.y * std::cos(angle)};
        }
        FourSides shape(exact);
        for (SideSegment& side : shape.sides) {
            side.start.x += noise(rng);
            side.end.y += noise(rng);
        }
        ConstructList list;
        RectangleSink sink;
        ASSERT_GE(AddTesseraRectangleToConstructList(shape.sides, list, sink), 0);
        ASSERT_EQ(list.size(), 4u);
        ASSERT_EQ(sink.rectangles.size(), 1u);
        for (int i = 0; i < 4; ++i) {
            const tagGPosition2d& corner = sink.rectangles[0].corners[i];
            EXPECT_NEAR(std::hypot(corner.x - exact[(i + 1) % 4].x, corner.y - exact[(i + 1) % 4].y), 0, 4.0);
            // Exactly square, and closed.
            const ConstructEntry& side = list[i];
            const ConstructEntry& next = list[(i + 1) % 4];
            EXPECT_EQ(side.kind, ConstructKind_Line);
            EXPECT_EQ(side.p1.x, next.p0.x);
            EXPECT_NEAR((side.p1.x - side.p0.x) * (next.p1.x - next.p0.x) +
                            (side.p1.y - side.p0.y) * (next.p1.y - next.p0.y),
                        0, 1e-8);
        }
    }
}

TEST(RectangleConstruction, RefusesSidesThatTurnBothWays) {
    const FourSides zigzag({{0, 0}, {100, 0}, {100, 100}, {200, 100}});
    ConstructList list;
    RectangleSink sink;
    EXPECT_LT(AddTesseraRectangleToConstructList(zigzag.sides, list, sink), 0);
    EXPECT_TRUE(list.empty());
    EXPECT_TRUE(sink.rectangles.empty());
}

TEST(ConstructListBuilding, EntriesFollowTheDrawing) {
    // A quarter arc first, then a line: the arc's end nearer to the origin comes first, whichever way it
    // runs.
    ConstructList list;
    for (const double s : {1.0, -1.0}) {
        std::vector<InputPoint> points;
        for (int i = 0; i <= 60; ++i) {
            const double angle = 1.5707963267948966 * i / 60;
            points.push_back({100 + 100 * std::sin(angle), s * (100 - 100 * std::cos(angle))});
        }
        for (int i = 1; i <= 60; ++i)
            points.push_back({200 - 3.0 * i, s * 100});
        BuildConstructList(points, list, nullptr);
        ASSERT_EQ(list.size(), 2u);
        EXPECT_EQ(list[0].kind, ConstructKind_OpenArc);
        EXPECT_NEAR(list[0].p0.x, 100, 3);
        EXPECT_NEAR(list[0].p2.y, s * 100, 4);
        EXPECT_EQ(list[1].kind, ConstructKind_Line);
        EXPECT_NEAR(list[1].p1.x, 20, 3);
    }

    BuildConstructList({{1, 1}}, list, nullptr);
    EXPECT_TRUE(list.empty());
}

} // namespace
