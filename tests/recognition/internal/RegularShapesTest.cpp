#include "tessera/recognition/internal/RegularShapes.h"
#include "tests/support/Test.h"

namespace Tessera::Geometry {
namespace {

constexpr double kDegree = std::numbers::pi / 180.0;
using Corners = std::vector<Point>;

Corners Polygon(int n, double radius, double phase) {
    Corners c;
    for (int i = 0; i < n; ++i) {
        const double a = phase + 2.0 * std::numbers::pi * i / n;
        c.emplace_back(3.0 + radius * std::cos(a), radius * std::sin(a) - 2.0);
    }
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
    struct Row {
        const char* name;
        Corners corners;
        InkShape shape;
    };
    const Row rows[] = {
        {"square", Slanted(10.0, 10.0, 90.0), InkShape::Square},
        {"sides 8 % apart", Slanted(10.4, 9.6, 90.0), InkShape::Square},
        {"rectangle", Slanted(14.0, 10.0, 90.0), InkShape::Rectangle},
        {"corners of 61 and 119 degrees", Slanted(20.0, 10.0, 61.0), InkShape::Rectangle},
        {"corners of 59 and 121 degrees", Slanted(20.0, 10.0, 59.0), InkShape::Parallelogram},
        {"rhombus", Slanted(10.0, 10.0, 55.0), InkShape::Rhombus},
        {"no shape", {{0, 0}, {10, 0}, {7, 5}, {0, 12}}, InkShape::Quadrilateral},
        {"triangle", {{0, 0}, {10, 0}, {2, 4}}, InkShape::Triangle},
        {"equilateral", Polygon(3, 5.0, 0.3), InkShape::RegularPolygon},
        {"hexagon", Polygon(6, 5.0, 0.3), InkShape::RegularPolygon},
        {"twelve sides", Polygon(12, 5.0, 0.3), InkShape::RegularPolygon},
        {"thirteen sides", Polygon(13, 5.0, 0.3), InkShape::Polygon},
    };
    for (const Row& row : rows)
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
    for (int trial = 0; trial < 200; ++trial) {
        SCOPED_TRACE(trial);
        Corners c = Turned(trial % 3 == 0   ? Slanted(10.0, 10.0, 90.0)
                           : trial % 3 == 1 ? Slanted(17.0, 10.0, 90.0)
                                            : Slanted(10.0, 10.0, 50.0),
                           0.1 * trial);
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
        EXPECT_EQ(shape, trial % 3 == 0   ? InkShape::Square
                         : trial % 3 == 1 ? InkShape::Rectangle
                                          : InkShape::Rhombus);
    }
}

TEST(RegularShapes, TurnToAxes) {
    const Corners square = Turned(Slanted(10.0, 10.0, 90.0), 4.0 * kDegree);
    EXPECT_NEAR(TurnToAxes(InkShape::Rectangle, square), -4.0 * kDegree, 1e-12);
    const Corners onCorner = Turned(Slanted(10.0, 10.0, 90.0), 42.0 * kDegree);
    EXPECT_NEAR(TurnToAxes(InkShape::Square, onCorner), 3.0 * kDegree, 1e-12);
}

} // namespace
} // namespace Tessera::Geometry
