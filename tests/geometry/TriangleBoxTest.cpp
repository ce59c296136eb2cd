#include "tessera/geometry/TriangleBox.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace Tessera::Geometry {
namespace {

bool IsIn(const TriangleBox& box, double x, double y, double z = 0.0) {
    return box.IsPointInTriangleBox({x, y, z}, 1e6); // the tolerance is not used
}

TEST(TriangleBox, CornersAndEdgesBelong) {
    const TriangleBox box(Point(0, 0), Point(4, 0), Point(0, 3));
    EXPECT_TRUE(IsIn(box, 0, 0) && IsIn(box, 4, 0) && IsIn(box, 0, 3));
    EXPECT_TRUE(IsIn(box, 2, 0) && IsIn(box, 2, 1.5) && IsIn(box, 0, 1));
    EXPECT_FALSE(IsIn(box, 5, 0) || IsIn(box, -1, 0) || IsIn(box, 2.1, 1.5));
    EXPECT_TRUE(IsIn(box, 2, 0, 50.0)) << "edges are judged in the plane, whatever the height";
}

// Oracle: the signs of the three areas.
TEST(TriangleBox, InteriorBySigns) {
    std::mt19937 rng(6);
    std::uniform_real_distribution<double> coordinate(-5, 5);
    for (int trial = 0; trial < 60; ++trial) {
        Point v[3];
        for (Point& vertex : v) {
            vertex = Point(coordinate(rng), coordinate(rng));
        }
        const TriangleBox box(v[0], v[1], v[2]);
        for (int probe = 0; probe < 50; ++probe) {
            const Point p(coordinate(rng), coordinate(rng));
            double sides[3];
            for (int i = 0; i < 3; ++i) {
                sides[i] = (v[(i + 1) % 3] - v[i]).Cross(p - v[i]);
            }
            const bool isInside = (sides[0] > 0) == (sides[1] > 0) && (sides[1] > 0) == (sides[2] > 0);
            EXPECT_EQ(IsIn(box, p.x, p.y), isInside) << p.x << " " << p.y;
        }
    }
}

TEST(TriangleBox, HeightAndSizeShowTheCrossProductTest) {
    const TriangleBox right(Point(0, 0), Point(4, 0), Point(0, 3));
    EXPECT_TRUE(IsIn(right, 1, 1));
    EXPECT_TRUE(IsIn(right, 1, 1, 0.1));
    EXPECT_FALSE(IsIn(right, 1, 1, 100.0)) << "far above, the faces of a right angle turn differently";
    const TriangleBox equal(Point(-1, 0), Point(1, 0), Point(0, std::sqrt(3.0)));
    EXPECT_TRUE(IsIn(equal, 0, 0.5, 100.0)) << "all turn the other way";
    const TriangleBox tiny(Point(0, 0), Point(1e-3, 0), Point(0, 1e-3));
    EXPECT_FALSE(IsIn(tiny, 3e-4, 3e-4)) << "the fixed limit makes tiny triangles hollow";
    EXPECT_TRUE(IsIn(tiny, 5e-4, 5e-4)) << "but keeps their edges";
}

} // namespace
} // namespace Tessera::Geometry
