#include "tessera/geometry/XYBox.h"

#include "tessera/kernel/EQ.h"
#include "tessera/strokes/StrokePoint.h"
#include "tests/support/Test.h"

namespace Tessera::Geometry {
namespace {

void ExpectBox(const XYBox& box, const Point& min, const Point& max) {
    EXPECT_TRUE(box.GetMinPoint() == min && box.GetMaxPoint() == max)
        << box.min.x << " " << box.min.y << " " << box.max.x << " " << box.max.y;
}

TEST(XYBox, HoldsItsPoints) {
    const std::vector<Point> points = {{3, 1}, {-2, 1}, {0, 9}, {7, -4}, {7, 0}};
    std::vector<StrokePoint> samples;
    for (const Point& p : points)
        samples.emplace_back(p.x, p.y, 1.0);
    ExpectBox(XYBox(points), {-2, -4}, {7, 9});
    ExpectBox(XYBox(samples), {-2, -4}, {7, 9});
    ExpectBox(XYBox(std::vector<Point>()), {0, 0}, {0, 0});
    ExpectBox(XYBox(std::vector<StrokePoint>()), {0, 0}, {0, 0});
    XYBox box(Point(0, 0), Point(1, 1));
    box.Merge(XYBox(Point(-2, 0.5), Point(0.5, 3)));
    ExpectBox(box, {-2, 0}, {1, 3});
    // One side per axis: what lies below an inverted min does not move max as well.
    for (const auto& [p, min, max] : {std::array{Point(0, 9), Point(0, 0), Point(1, 9)},
                                      std::array{Point(3, 2), Point(3, 0), Point(1, 4)}}) {
        XYBox inverted(Point(5, 0), Point(1, 4));
        inverted.Merge(p);
        ExpectBox(inverted, min, max);
    }
}

TEST(XYBox, ContainmentIsStrictAboutTheGrownSides) {
    const double tol = EQ_ask_length_tolerance();
    const XYBox box(Point(0, 0), Point(4, 2));
    for (const Point& inside : {Point(4, 2), Point(-0.99 * tol, 1)})
        EXPECT_TRUE(box.ContainPoint(inside));
    for (const Point& outside : {Point(-tol, 1), Point(4 + 1e-8, 1), Point(1, -1e-8), Point(1, 2 + 1e-8)})
        EXPECT_FALSE(box.ContainPoint(outside)) << outside.x << " " << outside.y;
}

// Oracle: intervals overlap on both axes. Random corners on a coarse grid: touching and plus signs abound.
TEST(XYBox, IntersectionIsOverlapOnBothAxes) {
    std::mt19937 rng(4);
    std::uniform_int_distribution<int> grid(0, 6);
    const auto randomBox = [&] {
        return XYBox(std::vector<Point>{Point(grid(rng), grid(rng)), Point(grid(rng), grid(rng))});
    };
    for (int trial = 0; trial < 3000; ++trial) {
        const XYBox a = randomBox(), b = randomBox();
        const bool overlap =
            a.min.x <= b.max.x && b.min.x <= a.max.x && a.min.y <= b.max.y && b.min.y <= a.max.y;
        EXPECT_EQ(a.HasIntersect(b), overlap) << trial;
    }
}

} // namespace
} // namespace Tessera::Geometry
