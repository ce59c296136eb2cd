#include <map>

#include "apps/cli/recognize/DimensionBoard.h"
#include "apps/cli/recognize/Dimensions.h"
#include "apps/cli/write/DrawingWriter.h"
#include "tests/support/Test.h"

namespace Tessera::Tool {
namespace {

using ::testing::HasSubstr;

RecognizedDrawing DrawingOf(const std::vector<CurveShape>& shapes) {
    RecognizedDrawing drawing;
    drawing.ink.strokes.emplace_back().samples.resize(1);
    RecognizedStroke& stroke = drawing.strokes.emplace_back();
    for (const CurveShape& shape : shapes)
        stroke.curves.emplace_back().shape = shape;
    return drawing;
}

/// A rectangle of 120 by 80, turned about its corner.
RecognizedDrawing TurnedRectangle(double angle, bool isReversed) {
    const auto at = [&](double x, double y) {
        return Position{x * std::cos(angle) - y * std::sin(angle), x * std::sin(angle) + y * std::cos(angle)};
    };
    std::vector<Position> corners = {at(0, 0), at(120, 0), at(120, 80), at(0, 80)};
    if (isReversed)
        std::reverse(corners.begin(), corners.end());
    std::vector<CurveShape> sides;
    for (std::size_t i = 0; i < 4; ++i)
        sides.emplace_back(LineShape{corners[i], corners[(i + 1) % 4]});
    return DrawingOf(sides);
}

/// Distance from the line through the curve's ends.
double FromLine(const LineShape& line, Position p) {
    const double dx = line.end.x - line.start.x, dy = line.end.y - line.start.y;
    return std::fabs(dx * (p.y - line.start.y) - dy * (p.x - line.start.x)) / std::hypot(dx, dy);
}

TEST(Dimensions, RectangleAtEveryAngleHasUprightTextClearOfItsSides) {
    for (int eighth = 0; eighth < 16; ++eighth) {
        const double angle = eighth * std::numbers::pi / 8.0;
        for (const bool isReversed : {false, true}) {
            RecognizedDrawing drawing = TurnedRectangle(angle, isReversed);
            AddDimensions(drawing, ParseDimensionKinds("length,angular"));
            ASSERT_EQ(drawing.dimensions->size(), 8U) << eighth;
            for (const DrawnDimension& dimension : *drawing.dimensions) {
                const double dx = std::cos(dimension.textAngle);
                EXPECT_TRUE(dx > -1e-9) << eighth << ' ' << dimension.text << ' ' << dimension.textAngle;
                const bool isLength = dimension.kind == "length";
                const auto& line =
                    std::get<LineShape>(drawing.strokes[0].curves[dimension.curves[0][1]].shape);
                if (isLength) {
                    EXPECT_EQ(dimension.text,
                              std::hypot(line.end.x - line.start.x, line.end.y - line.start.y) > 100.0
                                  ? "120"
                                  : "80");
                    EXPECT_GT(FromLine(line, dimension.position), 0.9 * dimension.fontHeight);
                } else {
                    EXPECT_EQ(dimension.text, "90\xC2\xB0");
                    EXPECT_NEAR(dimension.value, 90.0, 1e-9);
                }
                // Text of a length stands outside of the rectangle, that of an angle inside.
                const double u =
                    dimension.position.x * std::cos(angle) + dimension.position.y * std::sin(angle);
                const double v =
                    dimension.position.y * std::cos(angle) - dimension.position.x * std::sin(angle);
                EXPECT_EQ(u > 0.0 && u < 120.0 && v > 0.0 && v < 80.0, !isLength) << eighth;
                for (const auto& [tip, left, right] : dimension.arrowheads) {
                    EXPECT_NEAR(std::hypot(left.x - right.x, left.y - right.y), 0.375 * dimension.fontHeight,
                                0.01 * dimension.fontHeight);
                }
            }
        }
    }
}

TEST(Dimensions, KindsMeasureWhatTheyName) {
    RecognizedDrawing drawing = DrawingOf({LineShape{{0, 0}, {60, 25}}, LineShape{{60, 25}, {60, 80}},
                                           LineShape{{0, 0}, {0, 60}}, CircleShape{{30, 150}, 20.0},
                                           ArcShape{{30, 150}, 45.0, 0.0, 1.0, {75, 150}, {54.3, 187.9}}});
    AddDimensions(drawing, ParseDimensionKinds("horizontal,vertical,linear,radial"));
    std::map<std::string, int> texts;
    for (const DrawnDimension& dimension : *drawing.dimensions)
        ++texts[dimension.kind + " " + dimension.text];
    // The upright lines have no horizontal extent.
    EXPECT_EQ(texts, (std::map<std::string, int>{{"horizontal 60", 1},
                                                 {"vertical 25", 1},
                                                 {"vertical 55", 1},
                                                 {"vertical 60", 1},
                                                 {"linear 60", 1},
                                                 {"radial \xC3\x98"
                                                  "40",
                                                  1},
                                                 {"radial R45", 1}}));
    EXPECT_THROW(ParseDimensionKinds("length,width"), std::invalid_argument);
}

TEST(Dimensions, DistancesThatALengthTellsAreLeftOut) {
    const LineShape level{{0, 0}, {100, 0}};
    const LineShape parallel{{0, 50}, {100, 50}};
    const struct {
        const char* name;
        LineShape side; // drawn after the two
        const char* kinds;
        std::size_t distances;
    } rows[] = {{"square from one to the other", {{100, 0.2}, {100, 50}}, "length,linear", 0},
                {"drawn the other way", {{30, 50}, {30, 0}}, "all", 0},
                {"lengths not drawn", {{100, 0}, {100, 50}}, "linear,angular", 1},
                {"sloping", {{100, 0}, {80, 50}}, "length,linear", 1},
                {"short of the other", {{100, 0}, {100, 49}}, "length,linear", 1},
                {"on the other side of it", {{100, 0}, {100, -50}}, "length,linear", 1},
                {"as long, between neither", {{100, 20}, {100, 70}}, "length,linear", 1}};
    for (const auto& row : rows) {
        RecognizedDrawing drawing = DrawingOf({level, parallel, row.side});
        AddDimensions(drawing, ParseDimensionKinds(row.kinds));
        std::size_t distances = 0;
        for (const DrawnDimension& dimension : *drawing.dimensions)
            distances += dimension.kind == "linear" ? 1 : 0;
        EXPECT_EQ(distances, row.distances) << row.name;
    }
}

TEST(Dimensions, NearlyUprightTextReadsUpwards) {
    for (const double lean : {-9.0, -3.0, 0.0, 3.0, 9.0}) {
        RecognizedDrawing drawing = DrawingOf({LineShape{{0, 0}, {lean, 60}}});
        AddDimensions(drawing, ParseDimensionKinds("length"));
        EXPECT_LT(std::sin(drawing.dimensions->at(0).textAngle), -0.9) << lean;
    }
}

TEST(Dimensions, ExtentsOfASlopingLineStandBesideIt) {
    for (const double fall : {-50.0, 50.0}) {
        // What stands above and to the left drives them to the other sides.
        RecognizedDrawing drawing = DrawingOf(
            {LineShape{{0, 0}, {90, fall}}, LineShape{{-1, -60}, {-1, 60}}, LineShape{{0, -65}, {90, -65}}});
        AddDimensions(drawing, ParseDimensionKinds("horizontal,vertical"));
        for (const DrawnDimension& dimension : *drawing.dimensions) {
            const Position at = dimension.position;
            const bool isBeside =
                at.x < 0.0 || at.x > 90.0 || at.y < std::min(0.0, fall) || at.y > std::max(0.0, fall);
            EXPECT_TRUE(isBeside) << dimension.kind << ' ' << fall;
        }
    }
}

// All items in one cell: every one is looked at.
TEST(DimensionBoard, CellsDoNotChangeTheCost) {
    std::mt19937 rng(2718);
    std::uniform_real_distribution<double> at(0.0, 40.0);
    const auto layout = [&] {
        DimensionLayout made;
        const Geometry::Point p(at(rng), at(rng));
        made.text = {p, at(rng), 2.0, 0.5};
        made.segments = {{{p.x - 8.0, p.y}, {p.x - 3.0, at(rng)}},
                         {{p.x + 3.0, p.y}, {p.x + 3.0, p.y + 5.0}}};
        return made;
    };
    DimensionBoard boards[] = {DimensionBoard(2.0), DimensionBoard(7.3), DimensionBoard(1e6)};
    for (int i = 0; i < 30; ++i) {
        const Segment line = {{at(rng), at(rng)}, {at(rng), at(rng)}};
        const DimensionLayout placed = layout();
        for (DimensionBoard& board : boards) {
            board.AddGeometry(line);
            board.Add(placed);
        }
        const DimensionLayout asked = layout();
        const double cost = boards[2].Cost(asked, 1e9);
        EXPECT_EQ(boards[0].Cost(asked, 1e9), cost);
        EXPECT_EQ(boards[1].Cost(asked, 1e9), cost);
        EXPECT_GE(boards[0].Cost(asked, 0.5 * cost), 0.5 * cost) << "told when it is enough";
    }
}

TEST(Dimensions, EmptyDrawingsAndWriters) {
    RecognizedDrawing drawing;
    AddDimensions(drawing, ParseDimensionKinds("all"));
    EXPECT_TRUE(drawing.dimensions->empty());
    std::ostringstream json;
    MakeWriter(OutputFormat::Json, json)->Add(drawing);
    EXPECT_THAT(json.str(), HasSubstr(R"("dimensions":[])"));
    drawing = TurnedRectangle(0.0, false);
    AddDimensions(drawing, ParseDimensionKinds("length"));
    std::ostringstream svg;
    const auto writer = MakeWriter(OutputFormat::Svg, svg);
    writer->Add(drawing);
    writer->Finish();
    EXPECT_THAT(svg.str(), HasSubstr(">120</text>"));
}

} // namespace
} // namespace Tessera::Tool
