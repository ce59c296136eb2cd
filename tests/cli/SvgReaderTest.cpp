#include "apps/cli/ink/InkReader.h"
#include "apps/cli/ink/SvgPath.h"
#include "apps/cli/ink/SvgTransform.h"
#include "tests/support/ToolInk.h"

namespace Tessera::Tool {
namespace {

using Lines = std::vector<std::vector<Position>>;

Lines Flatten(const char* data) {
    std::string problem;
    Lines lines = FlattenSvgPath(data, problem);
    EXPECT_EQ(problem, "") << data;
    return lines;
}

std::vector<Position> FirstLine(const char* data) {
    return Flatten(data).at(0);
}

std::string Problem(const char* data) {
    std::string problem;
    FlattenSvgPath(data, problem);
    return problem;
}

void ExpectSame(const Lines& a, const Lines& b) {
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        ASSERT_EQ(a[i].size(), b[i].size());
        for (std::size_t k = 0; k < a[i].size(); ++k) {
            ExpectNear(a[i][k], b[i][k]);
        }
    }
}

TEST(SvgPath, SpellingsOfTheSameLines) {
    const Lines square = {{{1, 2}, {4, 2}, {4, 5}, {1, 5}, {1, 2}}};
    for (const char* data : {"M1 2 L4 2 L4 5 L1 5 Z", "m1,2 3,0 0,3 -3,0z", "M1 2H4V5H1z", "M1 2h3v3h-3v-3",
                             "M1 2 4 2 4 5 1 5 1 2Z", "M1,2l3,0l0,3L1,5l0,-3", "M1 2l3-0 .0 3-3-0z"}) {
        SCOPED_TRACE(data);
        ExpectSame(Flatten(data), square);
    }
    ExpectSame(Flatten("M0 0h1z l2 2"), {{{0, 0}, {1, 0}, {0, 0}}, {{0, 0}, {2, 2}}});
    ExpectSame(Flatten("M.5.5 1.5.5M9 9M0 0 1e1-1E-1"), {{{0.5, 0.5}, {1.5, 0.5}}, {{0, 0}, {10, -0.1}}});
}

TEST(SvgPath, ShorthandCurvesAreTheFullOnes) {
    ExpectSame(Flatten("M0 0C0 1 1 2 2 2S4 3 4 4"), Flatten("M0 0C0 1 1 2 2 2C3 2 4 3 4 4"));
    ExpectSame(Flatten("M0 0s1 2 2 2"), Flatten("M0 0C0 0 1 2 2 2"));
    ExpectSame(Flatten("M0 0Q1 2 2 0T4 0 6 0"), Flatten("M0 0q1 2 2 0q1-2 2 0q1 2 2 0"));
    // A parabola: every flattened point of Q satisfies its equation.
    for (const Position& p : FirstLine("M0 0Q1 2 2 0"))
        EXPECT_NEAR(p.y, p.x * (2.0 - p.x), 1e-12);
}

TEST(SvgPath, ArcsTakeTheSideAndTheSizeOfTheirFlags) {
    for (const bool isLarge : {false, true})
        for (const bool isPositive : {false, true}) {
            const std::string data =
                std::string("M10 0A10 10 0 ") + (isLarge ? "1" : "0") + (isPositive ? "1" : "0") + "0 10";
            SCOPED_TRACE(data);
            const Lines lines = Flatten(data.c_str());
            // The two circles of radius 10 through (10, 0) and (0, 10) are about the origin and (10, 10).
            const double c = isLarge == isPositive ? 10.0 : 0.0;
            double swept = 0.0;
            for (std::size_t i = 0; i < lines[0].size(); ++i) {
                const Position p = lines[0][i];
                EXPECT_NEAR(std::hypot(p.x - c, p.y - c), 10.0, 1e-9);
                if (i > 0) {
                    const Position q = lines[0][i - 1];
                    swept += std::asin(((q.x - c) * (p.y - c) - (q.y - c) * (p.x - c)) / 100.0);
                }
            }
            EXPECT_NEAR(swept, (isLarge ? 1.5 : 0.5) * (isPositive ? 1.0 : -1.0) * std::numbers::pi, 1e-9);
        }
}

TEST(SvgPath, ArcsOutOfRange) {
    for (const Position& p : FirstLine("M0 0A1 1 0 0 1 10 0")) // grown to the half circle over the chord
        EXPECT_NEAR(std::hypot(p.x - 5.0, p.y), 5.0, 1e-9);
    ExpectSame(Flatten("M0 0A0 5 0 0 1 10 0"), {{{0, 0}, {10, 0}}});
    // A turned ellipse: all points satisfy its equation about the middle of its long axis.
    for (const Position& p : FirstLine("M0 0a10 5 90 0 1 0 20"))
        EXPECT_NEAR(std::hypot(p.x / 5.0, (p.y - 10.0) / 10.0), 1.0, 1e-9);
}

TEST(SvgPath, BrokenData) {
    EXPECT_EQ(Problem("L1 1"), "path data does not begin with M");
    EXPECT_EQ(Problem("M0 0 L1"), "path data: number expected at the end");
    EXPECT_EQ(Problem("M0 0 Lx 1"), "path data: number expected before \"x 1\"");
    EXPECT_EQ(Problem("M0 0A1 1 0 2 1 5 5"), "path data: arc flag expected");
    EXPECT_EQ(Problem("M0 0 1 1z 5 5"), "path data: \"5 5\" is not a command");
    EXPECT_EQ(Problem("M0 0 L nan 1"), "\"nan\" is not a finite number");
}

TEST(SvgTransform, ListsWorkFromTheInside) {
    const auto apply = [](const char* text) { return ParseSvgTransform(text).Apply({1.0, 2.0}); };
    const struct {
        const char* text;
        Position expected;
    } rows[] = {
        {"", {1, 2}},
        {"translate(10)", {11, 2}},
        {"translate(10,20) scale(2)", {12, 24}},
        {"scale(2 3), translate( 1 , 1 )", {4, 9}},
        {"rotate(90)", {-2, 1}},
        {"rotate(90 1 1)", {0, 1}},
        {"matrix(1 2 3 4 5 6)", {12, 16}},
        {"skewX(45)", {3, 2}},
        {"skewY(45)", {1, 3}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        ExpectNear(apply(row.text), row.expected, 1e-12);
    }
    for (const char* text : {"spin(1)", "rotate(1 2)", "matrix(1)", "scale", "scale(a)", ")scale("})
        EXPECT_THROW(ParseSvgTransform(text), InkError) << text;
}

TEST(SvgReader, ShapesTransformsAndWhatIsNotDrawn) {
    const Drawing drawing =
        ReadSvg("<svg xmlns='http://www.w3.org/2000/svg'><defs><path d='M0 0 9 9'/></defs>"
                "<g transform='translate(10 0)'><polyline points='0,0 1,0 1,1'/>"
                "<g transform='scale(2)'><polygon points='0 0 1 0 1 1'/></g></g>"
                "<line x2='3' y2='4'/><path d='M0 0 1 1M2 2 3 3'/></svg>",
                "a");
    EXPECT_EQ(TextOf(drawing), "10,0 11,0 11,1 | 10,0 12,0 12,2 10,0 | 0,0 3,4 | 0,0 1,1 | 2,2 3,3");
}

TEST(SvgReader, RefusalsNameTheLine) {
    EXPECT_THROW(ReadSvg("<svg><path", "a"), InkError);
    const char* tooLarge = "<svg>\n<g transform='scale(1e200)'>\n<g transform='scale(1e200)'>"
                           "<polyline points='1,1 2,2'/></g></g></svg>";
    EXPECT_EQ(RefusalOf<InkError>([&] { ReadSvg(tooLarge, "a"); }),
              "line 3: polyline, a coordinate is not a finite number");
}

} // namespace
} // namespace Tessera::Tool
