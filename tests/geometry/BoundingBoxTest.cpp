#include "tessera/geometry/BoundingBox.h"

#include "tessera/geometry/Point.h"
#include "tests/support/Records.h"
#include "tests/support/ThrownMessage.h"

namespace Tessera::Geometry {
namespace {

using Testing::ThrownMessage;

struct Corners {
    explicit Corners(const BoundingBox& box) { box.AskCorners(&count, at); }
    Point operator[](int i) const { return Point(at[i % count]); }
    int count = 0;
    double at[8][3] = {};
};

/// Rectangle about a segment, or the segment itself when the half height is 0.
BoundingBox BoxAlong(const Point& a, const Point& b, double halfHeight = 0.0) {
    const Point half = (b - a) / 2.0, up = halfHeight / half.Length() * Point(-half.y, half.x);
    const double centre[3] = {(a.x + b.x) / 2, (a.y + b.y) / 2, 0};
    const double halfSizes[3][3] = {{half.x, half.y, 0}, {up.x, up.y, 0}};
    return {halfHeight > 0.0 ? 2 : 1, centre, halfSizes};
}

BoundingBox Solid() {
    const double centre[3] = {10, 20, 30}, halfSizes[3][3] = {{1, 0, 0}, {0, 2, 0}, {0, 0, 3}};
    return {3, centre, halfSizes};
}

bool Contains(const BoundingBox& box, const Point& p, double tol, double z = 0.0) {
    const double xyz[3] = {p.x, p.y, z};
    return box.IsPointInBBox(xyz, tol);
}

TEST(BoundingBox, CornersByDimension) {
    EXPECT_EQ(Corners(BoundingBox()).count, 1);
    const Corners segment(BoxAlong({1, 2}, {5, 4})), four(BoundingBox(3, 4, 10, 2));
    EXPECT_EQ(segment.count, 2);
    EXPECT_TRUE(segment[0] == Point(1, 2) && segment[1] == Point(5, 4));
    EXPECT_EQ(four.count, 4);
    EXPECT_TRUE(four[0] == Point(-2, 3) && four[1] == Point(8, 3));
    EXPECT_TRUE(four[2] == Point(8, 5) && four[3] == Point(-2, 5));
    EXPECT_EQ(Corners(Solid()).count, 6) << "a solid reports six of its eight corners";
}

TEST(BoundingBox, ContainmentIsStrictOnEveryAxis) {
    const BoundingBox box = BoxAlong({-1, 1}, {5, 1}, 1);
    EXPECT_FALSE(Contains(box, {2, 1}, 0.0)) << "no thickness, strict comparison";
    EXPECT_TRUE(Contains(box, {2, 1}, 1e-9) && Contains(box, {5.49, 1}, 0.5));
    EXPECT_FALSE(Contains(box, {5.5, 1}, 0.5) || Contains(box, {2, -0.5}, 0.5));
    EXPECT_TRUE(Contains(box, {2, 1}, 0.51, 0.5) && !Contains(box, {2, 1}, 0.5, 0.5));
    const double p0[3] = {1, 1, 0}, p1[3] = {3, 1.5, 0}, q0[3] = {2, 2.6, 0}, q1[3] = {2, 2.6 + 1e-12, 0};
    EXPECT_TRUE(box.IsLineThruBBox(p0, p1, 0.0)) << "segments need no room";
    EXPECT_TRUE(box.IsLineThruBBox(q0, q1, 0.7) && !box.IsLineThruBBox(q0, q1, 0.5)) << "nor a length";
}

// All corners of one lie on the outer side of an edge of the other.
bool Separates(const Corners& a, const Corners& b) {
    for (int i = 0; i < a.count; ++i) {
        int beyond = 0;
        for (int j = 0; j < b.count; ++j)
            beyond += (a[i + 1] - a[i]).Cross(b[j] - a[i]) < 0 ? 1 : 0;
        if (beyond == b.count)
            return true;
    }
    return false;
}

TEST(BoundingBox, BoxesIntersectUnlessASideSeparatesThem) {
    std::mt19937 rng(9);
    std::uniform_real_distribution<double> at(-6, 6), height(-1, 3); // now and then a segment
    const auto randomBox = [&] {
        const Point a(at(rng), at(rng)), b(at(rng), at(rng));
        return BoxAlong(a, b, std::max(height(rng), 0.0));
    };
    int meeting = 0;
    for (int trial = 0; trial < 1000; ++trial) {
        const BoundingBox a = randomBox(), b = randomBox();
        const bool isMeeting = !Separates(Corners(a), Corners(b)) && !Separates(Corners(b), Corners(a));
        EXPECT_EQ(a.IsIntersecting(&b, 1e-9), isMeeting) << trial;
        EXPECT_EQ(b.IsIntersecting(&a, 1e-9), isMeeting) << trial;
        meeting += isMeeting ? 1 : 0;
    }
    EXPECT_TRUE(meeting > 200 && meeting < 800);
}

TEST(BoundingBox, IntersectionAtItsTolerance) {
    const double none[3][3] = {}, half[3] = {0.5, 0, 0};
    const BoundingBox origin, near(0, half, none), box(5, 0, 8, 2); // from x = 1, up to y = 1
    const BoundingBox above = BoxAlong({0, 2}, {9, 2});
    struct Row {
        const BoundingBox &a, &b;
        double gap;
    };
    for (const Row& row : {Row{origin, near, 0.5}, {origin, box, 1.0}, {box, above, 1.0}})
        for (const double tol : {row.gap - 0.1, row.gap + 0.1}) {
            EXPECT_EQ(row.a.IsIntersecting(&row.b, tol), tol > row.gap);
            EXPECT_EQ(row.b.IsIntersecting(&row.a, tol), tol > row.gap);
        }
    const BoundingBox solid = Solid();
    for (const BoundingBox& other : {origin, above, box}) {
        const char* text = "BoundingBox::IsIntersecting: 3 dimension bbox intersection is not supported yet";
        EXPECT_EQ(ThrownMessage([&] { (void)other.IsIntersecting(&solid, 1.0); }), text);
        EXPECT_EQ(ThrownMessage([&] { (void)solid.IsIntersecting(&other, 1.0); }), text);
    }
}

TEST(BoundingBox, AlignmentLooksAtTheCrossAxesOnly) {
    const BoundingBox box(0, 0, 4, 2), farButLevel(100, 0.5, 4, 1), higher(0, 0.6, 4, 1);
    EXPECT_TRUE(box.IsAlignedInX(&farButLevel, 1e-9));
    EXPECT_TRUE(!box.IsAlignedInX(&higher, 1e-9) && box.IsAlignedInX(&higher, 0.2));
}

TEST(BoundingBox, TransformRebuildsFromSixCornersOfASolidAndLosesFlatSides) {
    double identity[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
           flatten[3][3] = {{1, 0, 0}, {0, 0, 0}, {0, 0, 1}};
    BoundingBox solid = Solid(), box(0, 0, 4, 2);
    solid.Transform(identity);
    const double expected[3] = {10 - 1, 20 - 2.0 / 3 - 2, 30 - 1 - 3};
    for (int k = 0; k < 3; ++k)
        EXPECT_NEAR(Corners(solid).at[0][k], expected[k], 1e-12);
    box.Transform(flatten);
    EXPECT_TRUE(Contains(box, {0, 1000}, 1e-9)) << "without an axis there is nothing to be outside of";
    EXPECT_FALSE(Contains(box, {3, 0}, 1e-9));
}

TEST(BoundingBox, OfRecords) {
    EXPECT_EQ(ThrownMessage([] { BoundingBox box(nullptr); }),
              "BoundingBox::GetBBoxFromCurve - CURVE cannot be NULL");
    const RecordPtr line = records::Line(1, 1, 4, 5), dot = records::Arc(1, 1, 2, 0.5, 0.5 + 1e-11);
    const Corners ends(BoundingBox(line.get())), only(BoundingBox(dot.get())); // a range of no length
    EXPECT_TRUE(ends.count == 2 && only.count == 1);
    EXPECT_EQ(only[0], Point(1 + 2 * std::cos(0.5), 1 + 2 * std::sin(0.5)));
}

} // namespace
} // namespace Tessera::Geometry
