#include "tessera/recognition/internal/ReadingChoice.h"

#include "tests/support/PenPaths.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

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
        std::initializer_list<Path> parts;
        std::size_t curves;
    } rows[] = {
        {"straight", {upper, middle(0.0), lower}, 3},
        {"bowed outwards", {upper, middle(-18.0), lower}, 3},
        {"bowed inwards", {upper, middle(20.0), lower}, 3},
        {"kinked", {upper, Straight({0, 200}, {-16, 100}), Straight({-16, 100}, {0, 0}), lower}, 3},
        {"kinked inwards", {upper, Straight({0, 200}, {30, 140}), Straight({30, 140}, {0, 0}), lower}, 3},
        {"a step in the back", {upper, Straight({0, 200}, {60, 130}), Straight({60, 130}, {0, 0}), lower}, 4},
        {"ends run apart",
         {upper, Straight({0, 200}, {-30, 100}), Straight({-30, 100}, {0, 0}), Straight({0, 0}, {-80, -40})},
         4},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const InkReading reading = InterpretInk(Trembling(Joined(row.parts, 0.01, 0.99, 40), 0.6, 11), {});
        EXPECT_EQ(reading.shape, InkShape::Polyline);
        EXPECT_EQ(reading.curves.size(), row.curves);
    }
}

// The pen stopped short of the third corner of a narrow triangle: its ends do not stay apart.
TEST(ReadingChoice, ANarrowTriangleIsNoBracket) {
    const std::initializer_list<Path> sides = {Straight({4, 0}, {-25, 150}), Straight({-25, 150}, {25, 150}),
                                               Straight({25, 150}, {-2, 6})};
    const InkReading reading = InterpretInk(Trembling(Joined(sides, 0.0, 1.0, 40), 0.4, 3), {});
    EXPECT_TRUE(reading.isClosed);
    EXPECT_EQ(reading.curves.size(), 3U);
}

} // namespace
} // namespace Tessera::Geometry
