#include "apps/cli/convert/ConvertDrawing.h"

#include "apps/cli/convert/ConvertedWriter.h"
#include "apps/cli/convert/ElementShape.h"
#include "apps/cli/recognize/CurveShapes.h"
#include "tessera/host/HostDocument.h"
#include "tests/support/ToolInk.h"

namespace Tessera::Tool {
namespace {

using ::testing::HasSubstr;

const InkStroke kRectangle = Drawn({{0, 0}, {200, 2}, {198, 120}, {1, 118}, {1, 1}});
const InkStroke kLate{{{0, 0, 5}, {9, 9, 3}, {20, 9, 9}}, true, ""};

InkStroke Circle(double x, double y, double r) {
    std::vector<Position> points;
    for (int i = 0; i <= 60; ++i)
        points.push_back({x + r * std::cos(kTurn * i / 60), y + r * std::sin(kTurn * i / 60)});
    return StrokeThrough(points);
}

/// A constraint by the places of its elements in the list of all.
using Told = std::pair<int, std::vector<std::pair<std::size_t, int>>>;

/// The same steps by the library's C++ interface; a scribble erases everything from `firstErased` on.
struct Library {
    std::vector<std::unique_ptr<Geometry::Curve>> curves;
    std::vector<Told> constraints;

    void Draw(const InkStroke& ink, const WorkingFrame& page, std::size_t firstErased) {
        std::vector<Geometry::Curve*> earlier;
        for (const auto& curve : curves)
            earlier.push_back(curve.get());
        Geometry::InkStroke stroke;
        for (const Sample& s : ink.samples) {
            const Position p = page.ToWorking({s.x, s.y});
            stroke.samples.push_back({p.x, p.y, 0.0});
        }
        Geometry::InkReading reading = Geometry::InterpretInk(stroke, {}, earlier);
        if (reading.shape == Geometry::InkShape::Scribble) {
            curves.resize(firstErased);
            return;
        }
        const auto drawn = Geometry::CurvesAsDrawn(stroke, reading);
        std::vector<const Geometry::Curve*> all(earlier.begin(), earlier.end()), asDrawn(earlier.size());
        for (std::size_t i = 0; i < reading.curves.size(); ++i) {
            all.push_back(reading.curves[i].curve.get());
            asDrawn.push_back(drawn[i].get());
        }
        Geometry::ConstraintOptions options;
        options.toleranceZone = 10.0;
        options.fixedCount = static_cast<int>(earlier.size());
        options.drawn = asDrawn;
        Geometry::InferredConstraints inferred = Geometry::InferConstraints(all, options);
        for (std::size_t i = earlier.size(); i < all.size(); ++i)
            curves.push_back(std::move(inferred.adjusted[i]));
        for (const Geometry::InferredConstraint& c : inferred.constraints) {
            Told& told = constraints.emplace_back(c.kind, Told::second_type());
            for (int i = 0; i < c.elementCount; ++i)
                told.second.emplace_back(c.elements[i].curve, c.elements[i].point);
        }
    }
};

void ExpectSame(const CurveShape& actual, const CurveShape& expected, double tol) {
    ASSERT_EQ(actual.index(), expected.index());
    if (const auto* line = std::get_if<LineShape>(&actual)) {
        ExpectNear(line->start, std::get<LineShape>(expected).start, tol);
        ExpectNear(line->end, std::get<LineShape>(expected).end, tol);
    } else {
        const auto& circle = std::get<CircleShape>(actual);
        ExpectNear(circle.center, std::get<CircleShape>(expected).center, tol);
        EXPECT_NEAR(circle.radius, std::get<CircleShape>(expected).radius, tol);
    }
}

// A rectangle, joined lines from its corner, a line beside it, a circle scratched out again.
TEST(ConvertDrawing, DocumentsHoldWhatTheLibraryReads) {
    const Drawing ink =
        DrawingOf({kRectangle, Drawn({{199, 1}, {290, 60}, {203, 119}}), Drawn({{0, 150}, {200, 152}}),
                   Circle(100, 60, 30), Scratch(60, 140, 60, 45)});
    for (const double size : {1e-6, 1.0, 1e6}) {
        SCOPED_TRACE(size);
        const Drawing drawing = Scaled(ink, size);
        const ConvertedDrawing told = ConvertDrawing(drawing, {});
        Library library;
        for (const InkStroke& stroke : drawing.strokes)
            library.Draw(stroke, PageFrame(drawing), 7);

        ASSERT_EQ(told.elements.size(), 7U);
        ASSERT_EQ(library.curves.size(), 7U);
        for (std::size_t i = 0; i < 7; ++i)
            ExpectSame(told.elements[i].shape, ShapeOf(*library.curves[i], PageFrame(drawing)), 1e-7 * size);
        std::vector<Told> constraints;
        for (const HostConstraint2d& c : told.constraints) {
            Told& named = constraints.emplace_back(c.kind, Told::second_type());
            for (int i = 0; i < c.memberCount; ++i) {
                const auto at = std::find_if(told.elements.begin(), told.elements.end(),
                                             [&](const auto& e) { return e.id == c.members[i].element; });
                named.second.emplace_back(at - told.elements.begin(), c.members[i].point);
            }
        }
        EXPECT_EQ(constraints, library.constraints);
        EXPECT_GE(constraints.size(), 12U);

        const std::int32_t outcomes[] = {kHostInkRectangle, kHostInkCurves, kHostInkCurves, kHostInkCurves,
                                         kHostInkScribble};
        for (std::size_t i = 0; i < 5; ++i)
            EXPECT_TRUE(told.strokes[i].code == 0 && told.strokes[i].outcome == outcomes[i]) << i;
        EXPECT_EQ(told.strokes[4].erased, told.strokes[3].elements);
    }
}

TEST(ConvertDrawing, OptionsReachTheEntry) {
    // A rectangle that does not quite close, a line from near its corner, and one that is scratched out.
    const Drawing drawing = DrawingOf({kRectangle, Drawn({{202, 2}, {290, 60}}),
                                       Drawn({{300, 100}, {400, 100}}), Scratch(305, 395, 100, 30)});
    struct Row {
        const char* name;
        std::size_t elements, coincident;
        bool hasOthers;
        std::function<void(ConvertOptions&)> set;
    };
    const auto loosen = [](ConvertOptions& o) {
        o.preferences.SetSnapping(false);
        o.preferences.SetCurveTidy(false);
    };
    const Row rows[] = {
        {"defaults", 5, 5, true, [](ConvertOptions&) {}},
        {"no scribbles", 14, 12, true, [](auto& o) { o.preferences.SetDoScribble(false); }},
        {"no constraints", 5, 0, false, [](auto& o) { o.constraintKinds = 0; }},
        {"one kind", 5, 5, false, [](auto& o) { o.constraintKinds = 1; }},
        {"without that kind", 5, 0, true, [](auto& o) { o.constraintKinds = ~1u; }},
        {"no snapping", 5, 5, true, [&](auto& o) { loosen(o); }},
        {"no snapping, fine zone", 5, 1, true,
         [&](auto& o) {
             loosen(o);
             o.toleranceZone = 1.0;
         }},
        {"no snapping, small ink", 5, 5, true,
         [&](auto& o) {
             loosen(o);
             o.inkScale = 0.1;
             o.toleranceZone = 1.0;
         }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ConvertOptions options;
        row.set(options);
        const ConvertedDrawing told = ConvertDrawing(drawing, options);
        EXPECT_EQ(told.elements.size(), row.elements);
        std::size_t coincident = 0;
        for (const HostConstraint2d& c : told.constraints)
            coincident += c.kind == kHostConstraintCoincident ? 1 : 0;
        EXPECT_EQ(coincident, row.coincident);
        EXPECT_EQ(told.constraints.size() > coincident, row.hasOthers);
    }
}

TEST(ConvertDrawing, RefusedStrokesHaveWhatTheLibraryReports) {
    InkStroke dot = StrokeThrough({{5, 5}});
    dot.problem = "fewer than two points";
    Drawing drawing = DrawingOf({kRectangle, kLate, dot, Circle(300, 60, 30)});
    const ConvertedDrawing told = ConvertDrawing(drawing, {});
    EXPECT_THAT(told.strokes[1].problem,
                HasSubstr("FFMGEOM::InkToModel failed with 0x80070057 (FFMGEOM.cpp:"));
    EXPECT_EQ(static_cast<std::uint32_t>(told.strokes[1].code.value()), 0x80070057u);
    EXPECT_EQ(told.strokes[2].problem, dot.problem);
    EXPECT_FALSE(told.strokes[2].code.has_value());
    EXPECT_EQ(told.elements.size(), 5U);

    ConvertOptions flat;
    flat.preferences.SetZoomFactor(0.0);
    EXPECT_THAT(ConvertDrawing(drawing, flat).strokes[0].problem, HasSubstr("TesseraHost_SetView failed"));
    drawing.strokes[0].samples[0] = {-1.7e308, 1e300, 0.0};
    drawing.strokes[0].samples[1] = {1.7e308, -1e300, 0.0};
    EXPECT_EQ(ConvertDrawing(drawing, {}).strokes[0].problem, kFrameProblem);
}

/// Where the shape says that it is at a part of its way.
Position On(const CurveShape& shape, double t) {
    if (const auto* arc = std::get_if<ArcShape>(&shape))
        return OnEllipse({arc->center, {arc->radius, arc->radius}, 0.0},
                         arc->startAngle + t * (arc->endAngle - arc->startAngle));
    const auto& [ellipse, from, to, start, end] = std::get<EllipticArcShape>(shape);
    return OnEllipse(ellipse, from + t * (to - from));
}

// The document's own evaluation says where an element runs.
TEST(ElementShape, ArcsRunAsInTheDocument) {
    const double r = std::sqrt(0.5);
    const struct {
        std::int32_t kind;
        std::vector<tagGPosition2d> points;
    } rows[] = {
        {kHostElementArc, {{1, 0}, {0, 1}, {r, r}}},
        {kHostElementArc, {{0, 1}, {1, 0}, {r, r}}},
        {kHostElementArc, {{1, 0}, {0, 1}, {-r, -r}}},
        {kHostElementArc, {{0, 1}, {1, 0}, {-r, -r}}},
        {kHostElementEllipticArc, {{0, 0}, {4, 3}, {-1.5, 2}, {4, 3}, {-4, -3}}},
        {kHostElementEllipticArc, {{0, 0}, {4, 3}, {1.5, -2}, {4, 3}, {-1.5, 2}}},
        {kHostElementEllipticArc, {{0, 0}, {-4, 3}, {1.5, 2}, {-1.5, -2}, {1.5, 2}}},
    };
    const std::unique_ptr<HostDocument, void (*)(HostDocument*)> document(TesseraHost_CreateDocument(),
                                                                          TesseraHost_DeleteDocument);
    const WorkingFrame frame{{5.0, -3.0}, 2.0, 0.0};
    for (const auto& row : rows) {
        HostElement2d element{};
        element.kind = row.kind;
        std::copy(row.points.begin(), row.points.end(), element.points);
        HostElementId id = 0;
        ASSERT_EQ(TesseraHost_CreateElement(document.get(), &element, &id), 0);
        SCOPED_TRACE(id);
        for (int i = 0; i <= 4; ++i) {
            tagGPosition2d p{};
            ASSERT_EQ(TesseraHost_EvaluateElement(document.get(), id, 0.25 * i, &p), 0);
            ExpectNear(On(ShapeOf(element, frame), 0.25 * i), frame.ToInk({p.x, p.y}), 1e-12);
        }
    }
}

TEST(ConvertedJsonWriter, KeysAndTheirOrder) {
    ConvertedDrawing drawing;
    drawing.id = 7;
    drawing.strokes.resize(2);
    drawing.strokes[0] = {0, 9, 0, kHostInkScribble, Geometry::InkShape::Scribble, {5}, {}, {1}, {2}, ""};
    drawing.strokes[1].code = static_cast<std::int32_t>(0x80004005);
    drawing.strokes[1].problem = "refused";
    drawing.elements = {{2, CircleShape{{1, 2}, 3}}};
    drawing.constraints = {{6, kHostConstraintTangent, 2, {{2, 0, 0}, {5, kHostPointEnd, 0}}, -1, 0, 0.5}};
    std::ostringstream out;
    MakeConvertedJsonWriter(out)->Add(drawing);
    EXPECT_EQ(out.str(),
              R"({"id":7,"strokes":[{"index":0,"points":9,"code":"0x00000000","outcome":"scribble",)"
              R"("shape":"scribble","elements":[5],"constraints":[],"erased":[1],"trimmed":[2]},)"
              R"({"index":0,"points":0,"code":"0x80004005","error":"refused"}],)"
              R"("elements":[{"id":2,"kind":"circle","center":[1.0,2.0],"radius":3.0}],)"
              R"("constraints":[{"id":6,"kind":"tangent","elements":[[2],[5,"end"]],"side":-1,)"
              R"("confidence":0.5}]})"
              "\n");
}

} // namespace
} // namespace Tessera::Tool
