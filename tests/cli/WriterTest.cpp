#include "apps/cli/ink/InkReader.h"
#include "apps/cli/write/CurveText.h"
#include "apps/cli/write/DrawingWriter.h"
#include "apps/cli/write/GlyphLayout.h"
#include "apps/cli/write/SvgCurve.h"
#include "tessera/geometry/Spline.h"
#include "tests/support/ToolInk.h"

namespace Tessera::Tool {
namespace {

using ::testing::HasSubstr;

/// The element drawn by the reader of SVG paths, which knows nothing of the writer.
std::vector<Sample> DrawnBy(const CurveShape& shape) {
    return ReadSvg("<svg>" + SvgElement(shape) + "/></svg>", "a").strokes.at(0).samples;
}

TEST(SvgCurve, EllipticArcsOfEverySweepAndTurn) {
    for (const double start : {0.0, 1.0, 2.5, 4.0, 6.0})
        for (const double sweep : {0.1, 1.5, 3.1, 3.2, 5.0, 6.2})
            for (const double rotation : {0.0, 0.7, 3.0}) {
                SCOPED_TRACE(testing::Message() << start << ' ' << sweep << ' ' << rotation);
                const EllipseShape ellipse{{3.0, -2.0}, {5.0, 2.0}, rotation};
                const EllipticArcShape arc{ellipse, start, start + sweep, OnEllipse(ellipse, start),
                                           OnEllipse(ellipse, start + sweep)};
                const std::vector<Sample> drawn = DrawnBy(arc);
                const int n = static_cast<int>(drawn.size());
                for (int i = 0; i < n; ++i)
                    ExpectNear(drawn[i], OnEllipse(ellipse, start + sweep * i / (n - 1)), 1e-6);
            }
}

TEST(SvgCurve, ArcsRunCounterClockwiseFromStartToEnd) {
    for (const double sweep : {0.5, 3.0, 3.3, 6.0}) {
        const auto at = [](double t) { return Position{1.0 + 2.0 * std::cos(t), 1.0 + 2.0 * std::sin(t)}; };
        const ArcShape arc{{1.0, 1.0}, 2.0, 1.0, 1.0 + sweep, at(1.0), at(1.0 + sweep)};
        const std::vector<Sample> drawn = DrawnBy(arc);
        const std::size_t middle = drawn.size() / 2;
        const double f = static_cast<double>(middle) / static_cast<double>(drawn.size() - 1);
        ExpectNear(drawn[middle], at(1.0 + f * sweep), 1e-6);
    }
}

Position OnSpline(SplineShape spline, double t) {
    std::vector<std::array<double, 4>> poles;
    for (const Position& p : spline.poles)
        poles.push_back({p.x, p.y, 0.0, 1.0});
    const Geometry::Spline curve(static_cast<int>(poles.size()), spline.degree + 1, 0, spline.knots.data(),
                                 reinterpret_cast<double(*)[4]>(poles.data()));
    const Geometry::Point p = curve.GetPointAtParameter(t, false);
    return {p.x, p.y};
}

TEST(SvgCurve, BezierSegmentsAreTheSpline) {
    const SplineShape splines[] = {
        {1, false, {0, 0, 0.3, 1, 1}, {{0, 0}, {2, 5}, {7, 1}}, {}},
        {2, false, {0, 0, 0, 0.2, 0.5, 1, 1, 1}, {{0, 0}, {1, 4}, {3, -2}, {6, 5}, {8, 0}}, {}},
        {2, false, {0, 0, 0, 0.5, 0.5, 1, 1, 1}, {{0, 0}, {1, 4}, {3, 2}, {6, 5}, {8, 0}}, {}},
        {3,
         true,
         {0, 0, 0, 0, 0.1, 0.6, 0.6, 1, 1, 1, 1},
         {{0, 0}, {1, 4}, {3, -2}, {6, 5}, {8, 0}, {3, -6}, {0, 0}},
         {}}};
    for (const SplineShape& spline : splines) {
        std::vector<double> breaks = spline.knots;
        breaks.erase(std::unique(breaks.begin(), breaks.end()), breaks.end());
        const std::vector<Position> poles = BezierPoles(spline);
        ASSERT_EQ(poles.size(), static_cast<std::size_t>(spline.degree) * (breaks.size() - 1) + 1);
        for (std::size_t segment = 0; segment + 1 < breaks.size(); ++segment)
            for (const double u : {0.0, 0.25, 0.5, 0.9}) {
                const auto first = poles.begin() + static_cast<std::ptrdiff_t>(segment) * spline.degree;
                std::vector<Position> row(first, first + spline.degree + 1);
                for (; row.size() > 1; row.pop_back())
                    for (std::size_t k = 0; k + 1 < row.size(); ++k)
                        row[k] = {row[k].x + u * (row[k + 1].x - row[k].x),
                                  row[k].y + u * (row[k + 1].y - row[k].y)};
                const Position p =
                    OnSpline(spline, breaks[segment] + u * (breaks[segment + 1] - breaks[segment]));
                ExpectNear(row[0], p, 1e-12);
            }
    }
    EXPECT_THAT(SvgElement(splines[1]), HasSubstr("\"M0 0 Q1 4 "));
}

RecognizedDrawing OneOfEach() {
    RecognizedDrawing drawing;
    drawing.ink.id = "a<b>&\"c\"";
    drawing.ink.strokes.push_back({{{0, 0, 0}, {1, 1, 0}, {2, 0, 0}}, false, ""});
    drawing.ink.strokes.push_back({{{5, 5, 0}}, false, "fewer than two points"});
    const EllipseShape ellipse{{1, 2}, {4, 3}, 0.5};
    RecognizedStroke stroke;
    stroke.points = 3;
    stroke.curves = {{LineShape{{0, 0}, {1, 1}}, 0, 1, 0.25},
                     {ArcShape{{0, 0}, 1, 0, 2, {1, 0}, {0, 1}}, 1, 2, 0.5},
                     {CircleShape{{1, 2}, 3}, 0, 2, 0},
                     {ellipse, 0, 2, 0},
                     {EllipticArcShape{ellipse, 1, 2, {1, 0}, {0, 1}}, 0, 2, 0},
                     {SplineShape{1, false, {0, 0, 1, 1}, {{0, 0}, {1, 1}}, {}}, 0, 2, 0}};
    RecognizedStroke unusable;
    unusable.index = 1;
    unusable.points = 1;
    unusable.problem = "fewer than two points";
    drawing.strokes = {stroke, unusable};
    return drawing;
}

std::string Written(OutputFormat format, int copies = 1) {
    std::ostringstream out;
    const std::unique_ptr<DrawingWriter> writer = MakeWriter(format, out);
    for (int i = 0; i < copies; ++i)
        writer->Add(OneOfEach());
    writer->Finish();
    return out.str();
}

TEST(JsonWriter, KeysAndTheirOrder) {
    EXPECT_EQ(
        Written(OutputFormat::Json),
        R"({"id":"a<b>&\"c\"","strokes":[{"index":0,"points":3,"curves":[)"
        R"({"kind":"line","from":0,"to":1,"deviation":0.25,"start":[0.0,0.0],"end":[1.0,1.0]},)"
        R"({"kind":"arc","from":1,"to":2,"deviation":0.5,"center":[0.0,0.0],"radius":1.0,)"
        R"("start_angle":0.0,"end_angle":2.0,"start":[1.0,0.0],"end":[0.0,1.0]},)"
        R"({"kind":"circle","from":0,"to":2,"deviation":0.0,"center":[1.0,2.0],"radius":3.0},)"
        R"({"kind":"ellipse","from":0,"to":2,"deviation":0.0,"center":[1.0,2.0],"radii":[4.0,3.0],"rotation":0.5},)"
        R"({"kind":"elliptic_arc","from":0,"to":2,"deviation":0.0,"center":[1.0,2.0],"radii":[4.0,3.0],)"
        R"("rotation":0.5,"start_angle":1.0,"end_angle":2.0,"start":[1.0,0.0],"end":[0.0,1.0]},)"
        R"({"kind":"spline","from":0,"to":2,"deviation":0.0,"degree":1,"closed":false,"knots":[0.0,0.0,1.0,1.0],)"
        R"("poles":[[0.0,0.0],[1.0,1.0]]}]},)"
        R"({"index":1,"points":1,"curves":[],"error":"fewer than two points"}]})"
        "\n");
}

TEST(JsonWriter, ReadingsAndConstraints) {
    RecognizedDrawing drawing;
    drawing.ink.id = 1;
    drawing.strokes.resize(2);
    drawing.strokes[0].shape = Geometry::InkShape::ThinWall;
    drawing.strokes[0].curves = {{LineShape{{0, 0}, {1, 1}}, 0, 1, 0.25, 1}};
    drawing.strokes[0].joints = {{0, 2, true, false, true, {3, 4}, 0.5}};
    drawing.strokes[0].connections = {{0, true, {{5, 6}, Geometry::SnapPointType_Mid}, {7, 8}}};
    drawing.strokes[1].shape = Geometry::InkShape::Retrace;
    drawing.strokes[1].retraces = CurvePlace{0, 0};
    drawing.constraints = {
        {Geometry::ConstraintKind_Tangent, {{{0, 0}}, {{2, 1}}}, -1, 0.5},
        {Geometry::ConstraintKind_Symmetric,
         {{{0, 0}, Geometry::SnapPointType_Start}, {{0, 0}, Geometry::SnapPointType_Center}, {{1, 0}}},
         0,
         1.0}};
    std::ostringstream out;
    MakeJsonWriter(out)->Add(drawing);
    EXPECT_EQ(
        out.str(),
        R"({"id":1,"strokes":[{"index":0,"points":0,"curves":[{"kind":"line","from":0,"to":1,)"
        R"("deviation":0.25,"start":[0.0,0.0],"end":[1.0,1.0],"retraced_by":1}],"shape":"thin_wall",)"
        R"("joints":[{"before":0,"after":2,"ends":["end","start"],"kind":"tangent","position":[3.0,4.0],)"
        R"("turn":0.5}],"connections":[{"curve":0,"end":"end","onto":[5,6,"mid"],"position":[7.0,8.0]}]},)"
        R"({"index":0,"points":0,"curves":[],"shape":"retrace","joints":[],"connections":[],)"
        R"("retraces":[0,0]}],"constraints":[)"
        R"({"kind":"tangent","curves":[[0,0],[2,1]],"side":-1,"confidence":0.5},)"
        R"({"kind":"symmetric","curves":[[0,0,"start"],[0,0,"center"],[1,0]],"confidence":1.0}]})"
        "\n");
}

// A comb of lines and circles with every kind of constraint on each pair: glyphs near what they speak of,
// none over another or over a text.
TEST(GlyphLayout, GlyphsStandClear) {
    for (const double size : {1e-3, 1.0, 1e6}) {
        SCOPED_TRACE(size);
        RecognizedDrawing drawing;
        std::vector<RecognizedConstraint> constraints;
        std::vector<DrawnDimension> dimensions;
        RecognizedStroke& stroke = drawing.strokes.emplace_back();
        for (int i = 0; i < 6; ++i) {
            const double x = 10.0 * i * size;
            stroke.curves.push_back({LineShape{{x, 0.0}, {x + 2.0 * size, 40.0 * size}}, 0, 1, 0.0, -1});
            stroke.curves.push_back({CircleShape{{x, 60.0 * size}, 5.0 * size}, 0, 1, 0.0, -1});
            for (int kind = 0; kind < Geometry::kConstraintKindCount; ++kind) {
                const DrawingElement line{{0, 2 * i}};
                constraints.push_back(
                    {static_cast<Geometry::ConstraintKind_e>(kind), {line, {{0, 2 * i + 1}}}, 0, 1.0});
            }
            DrawnDimension& dimension = dimensions.emplace_back();
            dimension.text = "40";
            dimension.fontHeight = 2.0 * size;
            dimension.position = {x - 1.0 * size, 20.0 * size};
        }
        drawing.constraints = constraints;
        drawing.dimensions = dimensions;
        const std::vector<PlacedGlyph> glyphs = PlaceGlyphs(drawing, size);
        EXPECT_GE(glyphs.size(), 6U * Geometry::kConstraintKindCount);
        const auto gap = [&](const Position& p, const Position& q) {
            return std::max(std::fabs(p.x - q.x), std::fabs(p.y - q.y)) / size;
        };
        for (std::size_t i = 0; i < glyphs.size(); ++i) {
            if (glyphs[i].kind == Geometry::ConstraintKind_Coincident)
                continue;
            double nearest = INFINITY; // of the middles of all curves
            for (int k = 0; k < 6; ++k) {
                nearest = std::min({nearest, gap(glyphs[i].center, {(10.0 * k + 1.0) * size, 20.0 * size}),
                                    gap(glyphs[i].center, {10.0 * k * size, 60.0 * size})});
                EXPECT_GE(gap(glyphs[i].center, dimensions[k].position), 0.9);
            }
            EXPECT_LE(nearest, 12.0);
            for (std::size_t j = 0; j < i; ++j) {
                const bool isDot = glyphs[j].kind == Geometry::ConstraintKind_Coincident;
                EXPECT_GE(gap(glyphs[i].center, glyphs[j].center), isDot ? 0.5 : 0.9);
            }
        }
    }
}

TEST(SvgWriter, DocumentsAreWellFormedAndHoldEveryKind) {
    for (const int copies : {0, 1, 5}) {
        const std::string svg = Written(OutputFormat::Svg, copies);
        SCOPED_TRACE(copies);
        const Drawing read = ReadSvg(svg, "a"); // parses, and sees lines and paths
        for (const char* element : {"<line ", "<circle ", "<ellipse ", "<path "})
            EXPECT_EQ(svg.find(element) != std::string::npos, copies > 0 || element == std::string("<line "));
        EXPECT_EQ(svg.find("a<b>"), std::string::npos);
        EXPECT_EQ(read.problem, "");
    }
}

TEST(SummaryWriter, CountsAndTotals) {
    EXPECT_THAT(Written(OutputFormat::Summary),
                HasSubstr("2 strokes, 1 line, 1 arc, 1 circle, 1 ellipse, 1 elliptic arc, 1 spline\n"));
    EXPECT_THAT(Written(OutputFormat::Summary), HasSubstr("stroke 1 (1 point): fewer than two points\n"));
    EXPECT_THAT(Written(OutputFormat::Summary, 2),
                HasSubstr("all together: 2 drawings, 4 strokes, 2 lines, "));
    EXPECT_EQ(DescribeCounts({}), "nothing");
}

} // namespace
} // namespace Tessera::Tool
