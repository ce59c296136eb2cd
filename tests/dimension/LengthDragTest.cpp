// Dragging the text of length-like dimensions, and the driver of drags.
#include "tests/support/DimensionProbes.h"

using namespace Tessera::Testing;
using DimensionPtr = std::unique_ptr<LengthDimension>;

namespace {

struct Scene {
    std::unique_ptr<Line> line, partner;
    DimensionPtr dim;
    Vector d, n; // of the dimension
};

/// A dimension of each kind whose measured line is 60 long, in a direction of the line.
Scene MakeScene(DimensionType_e type, double angleDeg, double heightOffset) {
    Scene s;
    const Point start(-4, 9);
    const Vector along(Point(), Polar(1.0, angleDeg));
    s.line = std::make_unique<Line>(start, start.AffineCombine(60.0, along));
    switch (type) {
    case Horizontal:
        s.dim = std::make_unique<HorizontalDimension>(s.line.get(), heightOffset, 4.0);
        break;
    case Vertical:
        s.dim = std::make_unique<VerticalDimension>(s.line.get(), heightOffset, 4.0);
        break;
    case Linear: {
        const Vector across(-60.0 * along.y, 60.0 * along.x);
        const Point other = start.AffineCombine(1.0, across);
        s.partner = std::make_unique<Line>(other, other.AffineCombine(60.0, along));
        s.dim = std::make_unique<LinearDimension>(s.line.get(), s.partner.get(), &start, heightOffset, 4.0);
        break;
    }
    default:
        s.dim = std::make_unique<LengthDimension>(s.line.get(), heightOffset, 4.0);
    }
    s.d = s.dim->GetOrientation();
    s.n = s.dim->ComputeOffsetVector(s.d);
    return s;
}

/// Drawing and stored offset are those that a rebuild gives.
void ExpectRebuildAgrees(const LengthDimension& dim) {
    const DimensionPtr rebuilt(dim.Copy());
    rebuilt->UpdateDimension();
    ExpectSamePlacement(dim, *rebuilt, 1e-9);
}

/// Reaches (along d, along n) from the pointer position.
Point Step(const Scene& s, const Point& from, double along, double across) {
    return from.AffineCombine(along, s.d).AffineCombine(across, s.n);
}

} // namespace

TEST(LengthDrag, DrawingAndRebuildAgreeOnBothSides) {
    for (const DimensionType_e type : {Length, Horizontal, Vertical, Linear})
        for (int k = 0; k < 8; ++k)
            for (const double offset : {11.0, -11.0}) {
                SCOPED_TRACE(std::to_string(type) + " at " + std::to_string(45 * k) + " offset " +
                             std::to_string(offset));
                Scene s = MakeScene(type, 45.0 * k, offset);
                if (s.dim->GetAnnotation() < 1.0)
                    continue; // square to the measuring axis
                const Point p(0, 0), text = TextMiddle(*s.dim);
                Drag(*s.dim, {p, Step(s, p, 3, offset / 3)});
                ExpectRebuildAgrees(*s.dim);
                ExpectNear(TextMiddle(*s.dim), Step(s, text, 3, offset / 3), 1e-9, "under the pointer");
                Drag(*s.dim, {p, Step(s, p, -5, -3.0 * offset), Step(s, p, -4, -4.0 * offset)});
                ExpectRebuildAgrees(*s.dim);
                EXPECT_LT(s.dim->GetTextHeightOffset() * offset, 0.0) << "on the other side";
            }
}

TEST(LengthDrag, OffsetsAroundTheCrossing) {
    // Level text, 4 high, on a line at height 0: its lower edge stands at 10.
    const struct {
        double drag, offset, origin;
    } rows[] = {{-9, 1, 1}, {5, 15, 15}, {-11, 3, -1}, {-14, 0, -4}, {-30, -16, -20}, {-10, 0, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.drag);
        auto [line, dim] = Level();
        Drag(dim, {{0, 0}, {0, row.drag}});
        EXPECT_DOUBLE_EQ(dim.GetTextHeightOffset(), row.offset);
        EXPECT_DOUBLE_EQ(dim.GetOrigin().y, row.origin);
    }
    auto [line, below] = Level(-10.0); // lower edge at -14
    Drag(below, {{0, 0}, {0, 14}});
    EXPECT_DOUBLE_EQ(below.GetTextHeightOffset(), 4.0) << "on the line is no crossing";
    Drag(below, {{0, 0}, {0, -14}, {0, 20}});
    EXPECT_DOUBLE_EQ(below.GetTextHeightOffset(), 20.0);
    EXPECT_DOUBLE_EQ(below.GetOrigin().y, 20.0);
}

TEST(LengthDrag, SnapsOnApproachOnly) {
    // Text from 47 to 53 over a line from 0 to 100; aligned at anchors 97, 3, 50, 103, -3.
    const struct {
        const char* name;
        std::vector<double> path;
        double snapDistance, anchor;
    } rows[] = {
        {"right end, short of it", {0, 46.3}, 1.0, 97.0},
        {"right end, past it", {0, 47.6}, 1.0, 97.0},
        {"just within", {0, 46.0001}, 1.0, 97.0},
        {"just outside", {0, 45.9999}, 1.0, 95.9999},
        {"left end", {0, -46.5}, 1.0, 3.0},
        {"text beyond the right end", {0, 52.8}, 1.0, 103.0},
        {"middle", {0, 10, 0.8}, 1.0, 50.0},
        {"switched off", {0, 46.3}, 0.0, 96.3},
        {"wider", {0, 44.0}, 5.0, 97.0},
        {"leaves slowly", {0, 46.3, 46.6, 46.9}, 1.0, 97.6},
        {"never attracted by where it stands", {0, 0.3, 0.6}, 1.0, 50.6},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        auto [line, dim] = Level();
        Points path;
        for (const double x : row.path)
            path.emplace_back(x, 0.25 * x);
        Drag(dim, path, row.snapDistance);
        EXPECT_NEAR(dim.GetOrigin().x, row.anchor, 1e-9);
        EXPECT_NEAR(dim.GetRelativeParam(), row.anchor / 100.0, 1e-9);
        EXPECT_NEAR(dim.GetOrigin().y, 10.0 + 0.25 * row.path.back(), 1e-9);
    }
    for (const double alignedWithin : {1e-5, 3.0}) {
        auto [line, dim] = Level();
        Drag(dim, {{0, 0}, {44.5, 0}});
        Drag(dim, {{0, 0}, {2, 0}}, 1.0, alignedWithin);
        EXPECT_NEAR(dim.GetOrigin().x, alignedWithin < 2.5 ? 97.0 : 96.5, 1e-9);
    }
    const auto [line, dim] = Level();
    const DragData drag;
    for (const double along : {10.0, 46.3}) {
        Point origin(50, 10);
        Vector step(along, 1.0);
        EXPECT_EQ(dim.SnapAnnotationOrigin(&drag, origin, step), along > 46.0);
        ExpectNear(origin, Point(along > 46.0 ? 97 : 60, 11), 1e-9);
        EXPECT_NEAR(step.x, origin.x - 50.0, 1e-9);
        EXPECT_FALSE(dim.SnapAnnotationOrigin(nullptr, origin, step)) << "only moved";
    }
}

TEST(LengthDrag, ReportsOnceFinalized) {
    auto [line, dim] = Level();
    ChangeLog log;
    Drag(dim, {{0, 0}, {1, 1}});
    EXPECT_TRUE(log.entries.empty()) << "a preview is nobody's business";
    dim.SetIsFinalized(true);
    log.Take(dim);
    Drag(dim, {{0, 0}, {1, 1}});
    EXPECT_EQ(log.Take(dim), 5) << "origin, two decorations, offset, end distance";
}

TEST(MoveDimDeco, DriverWithoutDimensionOrData) {
    MoveDimDeco driver;
    EXPECT_FALSE(driver.BeginMove(Point(1, 1)));
    EXPECT_FALSE(driver.Move(Point(1, 1), 0, 0, true));
    EXPECT_TRUE(driver.EndMove());
    LengthDimension bare;
    EXPECT_FALSE(bare.MoveDimDeco(nullptr));
    EXPECT_FALSE(bare.MoveDimDeco(driver.GetDragData()));
    driver.SetDimension(&bare);
    EXPECT_TRUE(driver.BeginMove(Point(1, 1)));
    EXPECT_TRUE(driver.Move(Point(2, 1), 0, 0, true)) << "whatever the dimension answers";
    driver.SetDragData(nullptr);
    driver.SetParameters(1, 2);
    EXPECT_FALSE(driver.BeginMove(Point(1, 1)));
    EXPECT_FALSE(driver.Move(Point(1, 1), 0, 0, false));
}

TEST(MoveDimDeco, RecordsThePointerAndCopiesItsData) {
    auto [line, dim] = Level();
    MoveDimDeco driver;
    EXPECT_EQ(driver.GetDragData()->GetFirstParameter(), 1e-5);
    EXPECT_EQ(driver.GetDragData()->GetSecondParameter(), 1.0);
    driver.SetDimension(&dim);
    driver.BeginMove(Point(1, 2));
    driver.Move(Point(3, 4), 0, 0, false);
    const DragData* data = driver.GetDragData();
    driver.SetDragData(driver.GetDragData()); // its own record
    ASSERT_EQ(driver.GetDragData(), data);
    MoveDimDeco copy(driver);
    copy = *&copy;
    driver.Move(Point(5, 6), 0, 0, false);
    ExpectNear(data->GetBeginPoint(), {1, 2});
    ExpectNear(data->GetPreviousPoint(), {3, 4});
    ExpectNear(data->GetCurrentPoint(), {5, 6});
    ExpectNear(data->GetBeginReferencePoint(), {50, 12});
    ExpectNear(data->GetBeginDecorationPoint(), {0, 0});
    EXPECT_EQ(copy.GetDimension(), &dim);
    ExpectNear(copy.GetDragData()->GetCurrentPoint(), {3, 4});
    copy = driver;
    ExpectNear(copy.GetDragData()->GetCurrentPoint(), {5, 6});
    EXPECT_NE(copy.GetDragData(), driver.GetDragData());
}
