#include "tessera/recognition/internal/ReadingChoice.h"

#include <gtest/gtest.h>

#include "tests/support/PenPaths.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

std::vector<Point> Joined(std::initializer_list<Path> parts) {
    std::vector<Point> pts;
    for (const Path& part : parts) {
        const std::vector<Point> more = PointsOf(part, 0.01, 0.99, 40);
        pts.insert(pts.end(), more.begin(), more.end());
    }
    return pts;
}

// Three sides of a box, drawn with one that bows or kinks, are a bracket; where the ends run apart, what
// was drawn stays.
TEST(ReadingChoice, BracketsHaveStraightSides) {
    const Path upper = Straight({80, 200}, {0, 200});
    const Path lower = Straight({0, 0}, {80, 0});
    const auto middle = [](double sagitta) {
        return Bulging(Straight({0, 200}, {0, 0}), 0.0, 1.0, 0.0, sagitta);
    };
    const struct {
        const char* name;
        std::vector<Point> pts;
        InkShape shape;
        std::size_t curves;
    } rows[] = {
        {"straight", Joined({upper, middle(0.0), lower}), InkShape::Polyline, 3},
        {"bowed outwards", Joined({upper, middle(-25.0), lower}), InkShape::Polyline, 3},
        {"bowed inwards", Joined({upper, middle(20.0), lower}), InkShape::Polyline, 3},
        {"kinked", Joined({upper, Straight({0, 200}, {-16, 100}), Straight({-16, 100}, {0, 0}), lower}),
         InkShape::Polyline, 3},
        {"ends run apart",
         Joined({upper, Straight({0, 200}, {-30, 100}), Straight({-30, 100}, {0, 0}),
                 Straight({0, 0}, {-80, -40})}),
         InkShape::Polyline, 4},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const InkReading reading = InterpretInk(Trembling(row.pts, 0.6, 11), {});
        EXPECT_EQ(reading.shape, row.shape);
        EXPECT_EQ(reading.curves.size(), row.curves);
    }
}

} // namespace
} // namespace Tessera::Geometry
