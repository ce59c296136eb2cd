#include "tessera/geometry/Point.h"

#include "tessera/geometry/Vector.h"
#include "tessera/kernel/EQ.h"
#include "tests/support/Test.h"

namespace Tessera::Geometry {
namespace {

TEST(Point, EqualityAndOrderGoThroughTheLengthTolerance) {
    const struct {
        Point p, q;
        bool equal, less, greater;
    } rows[] = {
        {{0, 0}, {1e-9, 0}, true, false, false},     {{0, 0}, {3e-9, 0}, false, true, false},
        {{0, 0}, {2e-9, 2e-9}, false, false, false}, // apart, but neither coordinate decides
        {{0, 5}, {1e-9, 0}, false, false, true},     // x within tolerance: y decides
        {{1, 0}, {0, 5}, false, false, true},        {{0, 0}, {0, 3e-9}, false, true, false},
        {{NAN, 0}, {0, 0}, false, false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.p.x << "," << row.p.y << " " << row.q.x << "," << row.q.y);
        EXPECT_EQ(row.p == row.q, row.equal);
        EXPECT_EQ(row.q != row.p, !row.equal);
        EXPECT_EQ(row.p < row.q, row.less);
        EXPECT_EQ(row.q < row.p, row.greater);
    }
    const Point nowhere(NAN, NAN), p(0, 0), q(1e-9, 0);
    EXPECT_TRUE(nowhere == nowhere) << "an object equals itself";
    EQ_set_MEC(2);
    EXPECT_TRUE(p != q && p < q) << "the tolerance is read at every comparison";
    EQ_set_MEC(1);
}

TEST(Point, NormalizeTakesALengthEqualToTheTolerance) {
    const double tol = EQ_ask_length_tolerance();
    Point zero, shorter(std::nextafter(tol, 0.0), 0), exact(0, tol), p(3, -4);
    EXPECT_FALSE(zero.Normalize() || shorter.Normalize());
    EXPECT_EQ(shorter.x, std::nextafter(tol, 0.0));
    EXPECT_TRUE(exact.Normalize() && exact.y == 1.0);
    EXPECT_TRUE(p.Normalize() && p == Point(0.6, -0.8));
}

TEST(Point, Arithmetic) {
    const double xy[2] = {3, 4};
    const Point p(xy);
    Point q(1, -2);
    EXPECT_TRUE(p.Cross(q) == -10 && p.Dot(q) == -5 && p.Distance2(q) == 40);
    EXPECT_TRUE(p.Coordinate(0) == 3 && p.Coordinate(1) == 4 && p.Coordinate(-7) == 4);
    EXPECT_EQ(p.AffineCombine(0.5, p.PointVector(q)), Point(2, 1));
    ((q += p) -= Point(1, 1)) /= 3.0;
    EXPECT_EQ(q, Point(1, 1.0 / 3));
    double m[3][3] = {{2, -1, 4}, {1, 3, 6}, {100, 200, 2}}; // the bottom row's first two are ignored
    Point moved(1, 2);
    moved.Transform(m);
    EXPECT_EQ(moved, Point((2 - 2 + 4) / 2.0, (1 + 6 + 6) / 2.0));
    std::vector<Point*> points = {new Point(1, 2), nullptr, new Point(3, 4)};
    Point::DeletePoints(points);
    EXPECT_EQ(points, std::vector<Point*>(3, nullptr));
}

} // namespace
} // namespace Tessera::Geometry
