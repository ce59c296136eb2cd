#include "tessera/geometry/BoundingBox.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tessera/geometry/Point.h"
#include "tessera/kernel/internal/RecordPtr.h"
#include "tests/support/ThrownMessage.h"

namespace Tessera::Geometry {
namespace {

using Testing::ThrownMessage;

struct Corners {
    explicit Corners(const BoundingBox& box) { box.AskCorners(&count, at); }
    Point operator[](int i) const { return Point(at[i]); }
    int count = 0;
    double at[8][3] = {};
};

BoundingBox SegmentBox(const Point& a, const Point& b) {
    const Point half = (b - a) / 2.0;
    const double centre[3] = {(a.x + b.x) / 2, (a.y + b.y) / 2, 0};
    const double halfSizes[3][3] = {{half.x, half.y, 0}};
    return {1, centre, halfSizes};
}

BoundingBox Rectangle(const Point& c, double angle, double w, double h) {
    const double centre[3] = {c.x, c.y, 0};
    const double halfSizes[3][3] = {{w * std::cos(angle), w * std::sin(angle), 0},
                                    {-h * std::sin(angle), h * std::cos(angle), 0}};
    return {2, centre, halfSizes};
}

BoundingBox Solid() {
    const double centre[3] = {10, 20, 30};
    const double halfSizes[3][3] = {{1, 0, 0}, {0, 2, 0}, {0, 0, 3}};
    return {3, centre, halfSizes};
}

bool Contains(const BoundingBox& box, const Point& p, double tol) {
    const double xyz[3] = {p.x, p.y, 0};
    return box.IsPointInBBox(xyz, tol);
}

TEST(BoundingBox, CornersByDimension) {
    EXPECT_EQ(Corners(BoundingBox()).count, 1);
    const Corners segment(SegmentBox(Point(1, 2), Point(5, 4)));
    EXPECT_EQ(segment.count, 2);
    EXPECT_TRUE(segment[0] == Point(1, 2) && segment[1] == Point(5, 4));
    const BoundingBox rectangle(3, 4, 10, 2);
    EXPECT_EQ(rectangle.AskDimension(), 2);
    const Corners four(rectangle);
    EXPECT_EQ(four.count, 4);
    EXPECT_TRUE(four[0] == Point(-2, 3) && four[1] == Point(8, 3) && four[2] == Point(8, 5) &&
                four[3] == Point(-2, 5));
    EXPECT_EQ(Corners(Solid()).count, 6) << "a solid reports six of its eight corners";
}

TEST(BoundingBox, ContainmentIsStrictOnEveryAxis) {
    const BoundingBox box = Rectangle(Point(2, 1), 0.0, 3, 1);
    EXPECT_FALSE(Contains(box, Point(2, 1), 0.0)) << "no thickness, strict comparison";
    EXPECT_TRUE(Contains(box, Point(2, 1), 1e-9));
    EXPECT_TRUE(Contains(box, Point(5.49, 1), 0.5));
    EXPECT_FALSE(Contains(box, Point(5.5, 1), 0.5));
    EXPECT_FALSE(Contains(box, Point(2, -0.5), 0.5));
    const double above[3] = {2, 1, 0.5};
    EXPECT_FALSE(box.IsPointInBBox(above, 0.5));
    EXPECT_TRUE(box.IsPointInBBox(above, 0.51));
    const double p0[3] = {1, 1, 0}, p1[3] = {3, 1.5, 0};
    EXPECT_TRUE(box.IsLineThruBBox(p0, p1, 0.0)) << "segments need no room";
}

// Oracle: the points of the segment, sampled densely, against the point test with a little more or less room.
TEST(BoundingBox, SegmentsThroughTurnedBoxes) {
    std::mt19937 rng(8);
    std::uniform_real_distribution<double> coordinate(-10, 10), size(0.5, 5), angle(-4, 4);
    int hits = 0;
    for (int trial = 0; trial < 400; ++trial) {
        const BoundingBox box =
            Rectangle(Point(coordinate(rng), coordinate(rng)), angle(rng), size(rng), size(rng));
        const Point a(coordinate(rng), coordinate(rng));
        const Point b = trial % 10 == 0 ? a + Point(1e-12, 0) : Point(coordinate(rng), coordinate(rng));
        const double step = a.Distance(b) / 500;
        bool isInside = false, isNear = false;
        for (int i = 0; i <= 500; ++i) {
            const Point p = a + (b - a) * (i / 500.0);
            isInside = isInside || Contains(box, p, 0.1);
            isNear = isNear || Contains(box, p, 0.1 + step);
        }
        const double p0[3] = {a.x, a.y, 0}, p1[3] = {b.x, b.y, 0};
        const bool isThrough = box.IsLineThruBBox(p0, p1, 0.1);
        EXPECT_TRUE(isThrough || !isInside) << trial;
        EXPECT_TRUE(!isThrough || isNear) << trial;
        hits += isThrough ? 1 : 0;
    }
    EXPECT_TRUE(hits > 50 && hits < 350);
}

// Oracle: two rectangles are apart when a side of one of them separates their corners.
bool Separated(const Corners& a, const Corners& b) {
    for (int i = 0; i < 4; ++i) {
        const Point side = a[(i + 1) % 4] - a[i];
        bool allBeyond = true;
        for (int j = 0; j < 4; ++j) {
            allBeyond = allBeyond && side.Cross(b[j] - a[i]) < 0;
        }
        if (allBeyond) {
            return true;
        }
    }
    return false;
}

TEST(BoundingBox, RectanglesIntersectUnlessASideSeparatesThem) {
    std::mt19937 rng(9);
    std::uniform_real_distribution<double> coordinate(-6, 6), size(0.2, 5), angle(-4, 4);
    const auto randomBox = [&] {
        return Rectangle(Point(coordinate(rng), coordinate(rng)), angle(rng), size(rng), size(rng));
    };
    for (int trial = 0; trial < 1000; ++trial) {
        const BoundingBox a = randomBox(), b = randomBox();
        const Corners ca(a), cb(b);
        const bool isMeeting = !Separated(ca, cb) && !Separated(cb, ca);
        EXPECT_EQ(a.IsIntersecting(&b, 1e-9), isMeeting) << trial;
        EXPECT_EQ(b.IsIntersecting(&a, 1e-9), isMeeting) << trial;
    }
}

TEST(BoundingBox, IntersectionOfLowDimensions) {
    const double none[3][3] = {}, half[3] = {0.5, 0, 0};
    const BoundingBox origin, near(0, half, none);
    EXPECT_FALSE(origin.IsIntersecting(&near, 0.4));
    EXPECT_TRUE(origin.IsIntersecting(&near, 0.6));
    const BoundingBox box(5, 0, 8, 2); // from x = 1
    EXPECT_TRUE(origin.IsIntersecting(&box, 1.1) && box.IsIntersecting(&origin, 1.1));
    EXPECT_FALSE(origin.IsIntersecting(&box, 0.9) || box.IsIntersecting(&origin, 0.9));
    const BoundingBox inside = SegmentBox(Point(4, 0), Point(5, 0.5));
    const BoundingBox across = SegmentBox(Point(0, -2), Point(9, 2));
    const BoundingBox apart = SegmentBox(Point(0, 2), Point(9, 2));
    EXPECT_TRUE(box.IsIntersecting(&inside, 1e-9) && inside.IsIntersecting(&box, 1e-9));
    EXPECT_TRUE(across.IsIntersecting(&inside, 1.0));
    EXPECT_FALSE(box.IsIntersecting(&apart, 0.9) || apart.IsIntersecting(&box, 0.9));
    const BoundingBox solid = Solid();
    for (const BoundingBox& other : {origin, inside, box}) {
        const char* text = "BoundingBox::IsIntersecting: 3 dimension bbox intersection is not supported yet";
        EXPECT_EQ(ThrownMessage([&] { (void)other.IsIntersecting(&solid, 1.0); }), text);
        EXPECT_EQ(ThrownMessage([&] { (void)solid.IsIntersecting(&other, 1.0); }), text);
    }
}

TEST(BoundingBox, AlignmentLooksAtTheCrossAxesOnly) {
    const BoundingBox box(0, 0, 4, 2);
    const BoundingBox farButLevel(100, 0.5, 4, 1), higher(0, 0.6, 4, 1);
    EXPECT_TRUE(box.IsAlignedInX(&farButLevel, 1e-9));
    EXPECT_FALSE(box.IsAlignedInX(&higher, 1e-9));
    EXPECT_TRUE(box.IsAlignedInX(&higher, 0.2));
}

TEST(BoundingBox, TransformMovesCornersByTheAffineRule) {
    std::mt19937 rng(10);
    std::uniform_real_distribution<double> number(-3, 3);
    for (int trial = 0; trial < 100; ++trial) {
        const double a = number(rng);
        // rotation, translation, scale in the last element, junk in the ignored ones
        double m[3][3] = {{std::cos(a), -std::sin(a), number(rng)},
                          {std::sin(a), std::cos(a), number(rng)},
                          {7, 8, 0.5 + trial % 3}};
        BoundingBox box = Rectangle(Point(number(rng), number(rng)), number(rng), 2, 1);
        const Corners before(box);
        box.Transform(m);
        const Corners after(box);
        Point centre;
        for (int i = 0; i < 4; ++i) {
            Point expected = before[i];
            expected.Transform(m);
            EXPECT_NEAR(after[i].Distance(expected), 0.0, 1e-12);
            centre += expected / 4.0;
        }
        EXPECT_TRUE(Contains(box, centre, 1e-9));
    }
}

TEST(BoundingBox, TransformRebuildsFromSixCornersOfASolidAndLosesFlatSides) {
    double identity[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    BoundingBox solid = Solid();
    solid.Transform(identity);
    EXPECT_NEAR(Corners(solid).at[0][0], 10 - 1, 1e-12);
    EXPECT_NEAR(Corners(solid).at[0][1], 20 - 2.0 / 3 - 2, 1e-12);
    EXPECT_NEAR(Corners(solid).at[0][2], 30 - 1 - 3, 1e-12);
    double flatten[3][3] = {{1, 0, 0}, {0, 0, 0}, {0, 0, 1}};
    BoundingBox box(0, 0, 4, 2);
    box.Transform(flatten);
    EXPECT_TRUE(Contains(box, Point(0, 1000), 1e-9)) << "without an axis there is nothing to be outside of";
    EXPECT_FALSE(Contains(box, Point(3, 0), 1e-9));
}

TEST(BoundingBox, OfRecords) {
    EXPECT_EQ(ThrownMessage([] { BoundingBox box(nullptr); }),
              "BoundingBox::GetBBoxFromCurve - CURVE cannot be NULL");
    const double start[3] = {1, 1, 0}, end[3] = {4, 5, 0};
    const RecordPtr line(ev03p0(start, end));
    const RecordPtr dot(ev05p0(start, 2.0, 0.5, 0.5 + 1e-11)); // a range of no length
    const Corners ends(BoundingBox(line.get())), only(BoundingBox(dot.get()));
    EXPECT_TRUE(ends.count == 2 && only.count == 1);
    EXPECT_TRUE(only[0] == Point(1 + 2 * std::cos(0.5), 1 + 2 * std::sin(0.5)));
}

} // namespace
} // namespace Tessera::Geometry
