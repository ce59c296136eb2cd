#include "tessera/geometry/XYBox.h"

#include <gtest/gtest.h>

#include <algorithm>
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
    std::mt19937 rng(2);
    std::uniform_real_distribution<double> coordinate(-9, 9);
    std::vector<Point> points;
    std::vector<StrokePoint> samples;
    std::vector<double> xs, ys;
    for (int i = 0; i < 40; ++i) {
        xs.push_back(coordinate(rng));
        ys.push_back(coordinate(rng));
        points.emplace_back(xs.back(), ys.back());
        samples.emplace_back(xs.back(), ys.back(), 1.0);
        const XYBox box(points), boxOfSamples(samples);
        EXPECT_EQ(box.min.x, *std::min_element(xs.begin(), xs.end()));
        EXPECT_EQ(box.max.y, *std::max_element(ys.begin(), ys.end()));
        EXPECT_TRUE(box.GetMinPoint() == boxOfSamples.min && box.GetMaxPoint() == boxOfSamples.max);
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

// Oracle: intervals overlap on both axes. Random corners on a coarse grid, so that touching happens often.
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
        EXPECT_EQ(a.HasIntersect(b), overlap)
            << a.min.x << " " << a.min.y << " " << a.max.x << " " << a.max.y << " / " << b.min.x << " "
            << b.min.y << " " << b.max.x << " " << b.max.y;
    }
    const XYBox flat(Point(-5, -1), Point(5, 1)), tall(Point(-1, -5), Point(1, 5));
    EXPECT_TRUE(flat.HasIntersect(tall) && tall.HasIntersect(flat)) << "a plus sign";
}

} // namespace
} // namespace Tessera::Geometry
