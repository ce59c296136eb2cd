#include "tessera/geometry/XYBox.h"

#include <gtest/gtest.h>

#include <random>

#include "tessera/kernel/EQ.h"
#include "tessera/strokes/StrokePoint.h"

namespace Tessera::Geometry {
namespace {

TEST(XYBox, OfNothingIsTheOrigin) {
    const XYBox box{std::vector<Point>()};
    EXPECT_TRUE(box.ContainPoint(Point(0, 0)));
    EXPECT_FALSE(box.ContainPoint(Point(1e-8, 0)));
    EXPECT_EQ(XYBox(std::vector<StrokePoint>()).max, Point(0, 0));
}

TEST(XYBox, OfPointsIsTheirExtent) {
    const double xs[] = {3, -2, 0, 7, 7}, ys[] = {1, 1, 9, -4, 0};
    std::vector<Point> points;
    std::vector<StrokePoint> samples;
    for (int i = 0; i < 5; ++i) {
        points.emplace_back(xs[i], ys[i]);
        samples.emplace_back(xs[i], ys[i], 1.0);
    }
    for (const XYBox& box : {XYBox(points), XYBox(samples)}) {
        EXPECT_TRUE(box.GetMinPoint() == Point(-2, -4) && box.GetMaxPoint() == Point(7, 9));
    }
}

TEST(XYBox, MergeExtendsOneSidePerAxis) {
    XYBox inverted(Point(5, 0), Point(1, 4)); // min.x above max.x, as given
    inverted.Merge(Point(0, 9));
    EXPECT_EQ(inverted.min, Point(0, 0));
    EXPECT_EQ(inverted.max, Point(1, 9));
    inverted = XYBox(Point(5, 0), Point(1, 4));
    inverted.Merge(Point(3, 2)); // below min and above max: only min moves
    EXPECT_EQ(inverted.min, Point(3, 0));
    EXPECT_EQ(inverted.max, Point(1, 4));
    XYBox box(Point(0, 0), Point(1, 1));
    box.Merge(XYBox(Point(-2, 0.5), Point(0.5, 3)));
    EXPECT_EQ(box.min, Point(-2, 0));
    EXPECT_EQ(box.max, Point(1, 3));
}

TEST(XYBox, ContainmentIsStrictAboutTheGrownSides) {
    const double tol = EQ_ask_length_tolerance();
    const XYBox box(Point(0, 0), Point(4, 2));
    EXPECT_TRUE(box.ContainPoint(Point(4, 2)));
    EXPECT_TRUE(box.ContainPoint(Point(-0.99 * tol, 1)));
    EXPECT_FALSE(box.ContainPoint(Point(-tol, 1)));
    EXPECT_FALSE(box.ContainPoint(Point(4 + 1e-8, 1)));
    EXPECT_FALSE(box.ContainPoint(Point(1, -1e-8)));
    EXPECT_FALSE(box.ContainPoint(Point(1, 2 + 1e-8)));
}

// Oracle: intervals overlap on both axes. Random corners on a coarse grid: touching and plus signs abound.
TEST(XYBox, IntersectionIsOverlapOnBothAxes) {
    std::mt19937 rng(4);
    std::uniform_int_distribution<int> grid(0, 6);
    const auto randomBox = [&] {
        const Point a(grid(rng), grid(rng));
        XYBox box(a, a);
        box.Merge(Point(grid(rng), grid(rng)));
        return box;
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
