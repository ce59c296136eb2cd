#include "tessera/strokes/internal/SegmentTree.h"

#include "tessera/kernel/VexMath.h"
#include "tests/support/DrawnStrokes.h"
#include "tests/support/SegmentDistance.h"

namespace Tessera::Geometry {
namespace {

using Vex::Math::Point2;
using Points = std::span<const Point2>;

std::vector<Point2> Walk(std::mt19937& rng, int n) {
    std::vector<Point2> points;
    for (const Point& p : Testing::RandomWalk(rng, n))
        points.push_back(points.size() % 7 == 4 ? points.back() : Point2{p.x, p.y}); // now and then repeated
    return points;
}

TEST(SegmentTree, DistanceAndProximityAgreeWithAScan) {
    std::mt19937 rng(21);
    std::uniform_real_distribution<double> coordinate(-8, 8), tolerance(0.0, 4.0);
    for (int n = 2; n < 60; n += n < 20 ? 1 : 7) { // leaves of every fill, odd and even trees
        const std::vector<Point2> points = Walk(rng, n);
        const SegmentTree tree{Points(points)};
        const double tol = tolerance(rng);
        SegmentProximity<Point2> proximity(points, tol);
        for (int probe = 0; probe < 20; ++probe) {
            const double x = coordinate(rng), y = coordinate(rng);
            const double distance = Testing::PolylineDistance(points, Point2{x, y});
            EXPECT_NEAR(std::sqrt(tree.DistanceSq(Points(points), x, y)), distance, 1e-9) << n;
            const int found = tree.FindWithin(Points(points), x, y, tol);
            EXPECT_EQ(found >= 0, distance <= tol) << n;
            EXPECT_EQ(proximity.IsWithin(x, y), distance <= tol) << n;
            if (found >= 0) {
                EXPECT_LE(SegmentDistanceSq(points[found], points[found + 1], x, y), tol * tol);
                const int hit = proximity.LastHit();
                EXPECT_LE(SegmentDistanceSq(points[hit], points[hit + 1], x, y), tol * tol);
            }
        }
    }
}

TEST(SegmentTree, ProximityFindsWhatLiesFarFromTheHint) {
    std::vector<Point2> points;
    for (int i = 0; i < 5000; ++i)
        points.push_back({i * 1.0, 0.0});
    SegmentProximity<Point2> proximity(points, 0.5);
    EXPECT_TRUE(proximity.IsWithin(4000.25, 0.5)) << "the tolerance is included";
    EXPECT_EQ(proximity.LastHit(), 4000);
    EXPECT_FALSE(proximity.IsWithin(4000.25, 0.500001));
    EXPECT_EQ(proximity.LastHit(), 4000) << "a miss keeps the place";
    EXPECT_TRUE(proximity.IsWithin(10.0, 0.0, 4998));
    EXPECT_TRUE(proximity.IsWithin(4999.5, 0.0, 1 << 30));
    EXPECT_FALSE(proximity.IsWithin(4999.51, 0.0));
}

TEST(SegmentTree, NothingIsNearWhatIsNotThere) {
    const std::vector<Point2> none, one = {{1, 1}};
    std::vector<Point2> holed(40, {NAN, NAN});
    holed[20] = {3, 4};
    holed[21] = {3, 5};
    for (const auto& points : {none, one}) {
        EXPECT_EQ(SegmentTree(Points(points)).DistanceSq(Points(points), 1, 1), INFINITY);
        EXPECT_FALSE(SegmentProximity<Point2>(points, 1e9).IsWithin(1, 1));
    }
    EXPECT_EQ(SegmentTree(Points(holed)).DistanceSq(Points(holed), 0, 4), 9.0);
    EXPECT_EQ(SegmentTree(Points(holed)).FindWithin(Points(holed), 0, 4, 3.0), 20);
}

} // namespace
} // namespace Tessera::Geometry
