#include "tessera/recognition/internal/RegularShapes.h"
#include "tests/support/PenPaths.h"

namespace Tessera::Geometry {
namespace {

constexpr double kDegree = std::numbers::pi / 180.0;
using Corners = std::vector<Point>;

Corners Polygon(int n) {
    Corners c = Testing::PointsOf(Testing::Round({3, -2}, 5, 5, 0.3, 0.3 + Testing::kTurn), 0.0, 1.0, n + 1);
    c.pop_back();
    return c;
}

/// Parallelogram with sides a and b that enclose the angle.
Corners Slanted(double a, double b, double angleDeg) {
    const Point side(b * std::cos(angleDeg * kDegree), b * std::sin(angleDeg * kDegree));
    return {{0.0, 0.0}, {a, 0.0}, Point(a, 0.0) + side, side};
}

Corners Turned(Corners c, double angle) {
    for (Point& p : c)
        p = {std::cos(angle) * p.x - std::sin(angle) * p.y, std::sin(angle) * p.x + std::cos(angle) * p.y};
    return c;
}

double AngleAt(const Corners& c, std::size_t i) {
    const Point a = c[(i + c.size() - 1) % c.size()] - c[i];
    const Point b = c[(i + 1) % c.size()] - c[i];
    return std::acos(a.Dot(b) / a.Length() / b.Length()) / kDegree;
}

TEST(RegularShapes, NamesOfNearlyExactShapes) {
    const struct {
        const char* name;
        Corners corners;
        InkShape shape;
    } rows[] = {
        {"square", Slanted(10.0, 10.0, 90.0), InkShape::Square},
        {"sides 8 % apart", Slanted(10.4, 9.6, 90.0), InkShape::Square},
        {"rectangle", Slanted(14.0, 10.0, 90.0), InkShape::Rectangle},
        {"corners of 76 and 104 degrees", Slanted(20.0, 10.0, 76.0), InkShape::Rectangle},
        {"corners of 74 and 106 degrees", Slanted(20.0, 10.0, 74.0), InkShape::Parallelogram},
        {"corners of 66 to 114 degrees", {{0, 0}, {20, 0}, {17, 10}, {4.5, 10}}, InkShape::Rectangle},
        {"rhombus", Slanted(10.0, 10.0, 55.0), InkShape::Rhombus},
        {"no shape", {{0, 0}, {10, 0}, {7, 5}, {0, 12}}, InkShape::Quadrilateral},
        {"triangle", {{0, 0}, {10, 0}, {2, 4}}, InkShape::Triangle},
        {"equilateral", Polygon(3), InkShape::RegularPolygon},
        {"hexagon", Polygon(6), InkShape::RegularPolygon},
        {"twelve sides", Polygon(12), InkShape::RegularPolygon},
        {"thirteen sides", Polygon(13), InkShape::Polygon},
    };
    for (const auto& row : rows)
        for (const bool backwards : {false, true})
            for (const double turn : {0.0, 0.7, 2.0}) {
                SCOPED_TRACE(row.name);
                Corners c = Turned(row.corners, turn);
                if (backwards)
                    std::reverse(c.begin(), c.end());
                EXPECT_EQ(MakeRegular(c), row.shape);
            }
}

TEST(RegularShapes, AreExact) {
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> off(-0.25, 0.25);
    const std::pair<Corners, InkShape> drawings[] = {{Slanted(10.0, 10.0, 90.0), InkShape::Square},
                                                     {Slanted(17.0, 10.0, 90.0), InkShape::Rectangle},
                                                     {Slanted(10.0, 10.0, 50.0), InkShape::Rhombus}};
    for (int trial = 0; trial < 200; ++trial) {
        SCOPED_TRACE(trial);
        const auto& [exact, expected] = drawings[trial % 3];
        Corners c = Turned(exact, 0.1 * trial);
        for (Point& p : c)
            p += Point(off(rng), off(rng));
        const Corners drawn = c;
        const InkShape shape = MakeRegular(c);
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_LT(c[i].Distance(drawn[i]), 0.6);
            if (shape != InkShape::Rhombus) {
                EXPECT_NEAR(AngleAt(c, i), 90.0, 1e-5);
            }
            if (shape != InkShape::Rectangle) {
                EXPECT_NEAR(c[i].Distance(c[(i + 1) % 4]), c[0].Distance(c[1]), 1e-9);
            }
        }
        EXPECT_EQ(shape, expected);
    }
}

TEST(RegularShapes, AlignToAxes) {
    const struct {
        InkShape shape;
        double drawn, within, aligned; // degrees
    } rows[] = {{InkShape::Rectangle, 4.0, 5.0, 0.0},
                {InkShape::Rectangle, 4.0, 3.0, 4.0},
                {InkShape::Rectangle, 42.0, 5.0, 42.0},
                {InkShape::Square, 42.0, 5.0, 45.0},
                {InkShape::Square, -87.0, 5.0, -90.0}};
    for (const auto& row : rows) {
        const Corners upright = Slanted(10.0, 10.0, 90.0);
        Corners c = Turned(upright, row.drawn * kDegree);
        AlignToAxes(row.shape, row.within * kDegree, c);
        const Corners expected = Turned(upright, row.aligned * kDegree);
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_NEAR((c[(i + 1) % 4] - c[i]).Distance(expected[(i + 1) % 4] - expected[i]), 0.0, 1e-9)
                << row.drawn << " within " << row.within;
    }
}

} // namespace
} // namespace Tessera::Geometry
