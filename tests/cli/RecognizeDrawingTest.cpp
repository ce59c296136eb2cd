#include "apps/cli/recognize/RecognizeDrawing.h"

#include "apps/cli/recognize/Constraints.h"
#include "tests/support/ToolInk.h"

namespace Tessera::Tool {
namespace {

/// A curve p(u), u in [0, 1], as the only stroke of a drawing, sampled evenly in 2 s.
template <class Curve>
Drawing Along(Curve curve) {
    InkStroke stroke;
    stroke.isTimed = true;
    for (int i = 0; i < 240; ++i) {
        const double u = i / 239.0;
        const Position p = curve(u);
        stroke.samples.push_back({p.x, p.y, 2000.0 * u});
    }
    return DrawingOf({stroke});
}

/// Counter-clockwise, from and to in radians.
Drawing RoundOf(Position centre, double a, double b, double from = 0.0, double to = kTurn) {
    return Along([=](double u) {
        const double t = from + u * (to - from);
        return Position{centre.x + a * std::cos(t), centre.y + b * std::sin(t)};
    });
}

InkStroke Moved(InkStroke stroke, double turn, Position by) {
    for (Sample& sample : stroke.samples) {
        const Position p{sample.x, sample.y};
        sample.x = by.x + p.x * std::cos(turn) - p.y * std::sin(turn);
        sample.y = by.y + p.x * std::sin(turn) + p.y * std::cos(turn);
    }
    return stroke;
}

const InkStroke kSquare = Drawn({{0, 0}, {100, 0}, {100, 100}, {0, 100}, {0, 0}});

TEST(RecognizeDrawing, PreferencesReachRulesAndInterpretation) {
    const Drawing bend = Along([](double u) {
        return u < 0.5 ? Position{200.0 * u, 0.0} : Position{100.0 + 140.0 * (u - 0.5), 140.0 * (u - 0.5)};
    });
    RecognizeOptions options;
    options.useRulesOnly = true;
    EXPECT_NE(RecognizeDrawing(bend, options).strokes.at(0).curves.size(), 2U); // 45 degrees: no corner at 50
    options.preferences.SetTangentAngleThreshold(40.0);
    EXPECT_EQ(RecognizeDrawing(bend, options).strokes.at(0).curves.size(), 2U);
    for (const bool isTidy : {true, false}) { // closing is a matter of tidying for the rules alone, too
        options.preferences.SetCurveTidy(isTidy);
        const RecognizedStroke round = RecognizeDrawing(RoundOf({}, 50, 50), options).strokes.at(0);
        EXPECT_STREQ(round.curves.at(0).KindName(), isTidy ? "circle" : "spline");
    }
    options = {};
    options.constraintKinds = 0;
    const Drawing tilted = DrawingOf({Moved(Drawn({{0, 0}, {100, 0}}), 0.05, {})});
    const auto slope = [&] {
        const CurveShape shape = RecognizeDrawing(tilted, options).strokes.at(0).curves.at(0).shape;
        const auto& line = std::get<LineShape>(shape);
        return (line.end.y - line.start.y) / (line.end.x - line.start.x);
    };
    EXPECT_EQ(slope(), 0.0); // less than three degrees off
    options.preferences.SetSnapAngleCreate(1.0);
    EXPECT_NEAR(slope(), std::tan(0.05), 1e-6);
}

// A square, a line from its corner, a circle about the line's end: everything that is known of them is told.
TEST(RecognizeDrawing, StrokesOfADrawingSeeEachOther) {
    for (const double size : {1e-6, 1.0, 1e6}) {
        SCOPED_TRACE(size);
        const Drawing drawing =
            DrawingOf({kSquare, Drawn({{101.5, 99}, {161, 189}}), RoundOf({160, 190}, 30, 30).strokes[0]});
        const RecognizedDrawing told = RecognizeDrawing(Scaled(drawing, size), {});
        const RecognizedStroke& square = told.strokes[0];
        EXPECT_EQ(square.shape, Geometry::InkShape::Square);
        ASSERT_EQ(square.joints.size(), 4U);
        for (int i = 0; i < 4; ++i) {
            EXPECT_TRUE(square.joints[i].before == i && square.joints[i].after == (i + 1) % 4);
            EXPECT_NEAR(square.joints[i].turn, 0.25 * kTurn, 1e-9);
            const auto& side = std::get<LineShape>(square.curves[i].shape);
            EXPECT_EQ(square.joints[i].position.x, side.end.x);
            EXPECT_EQ(std::get<LineShape>(square.curves[(i + 1) % 4].shape).start.y, side.end.y);
            EXPECT_LT(square.curves[i].deviation, 1.0 * size);
        }
        EXPECT_EQ(told.strokes[1].shape, Geometry::InkShape::Line);
        ASSERT_EQ(told.strokes[1].connections.size(), 1U);
        const RecognizedConnection& onto = told.strokes[1].connections[0];
        EXPECT_FALSE(onto.isEnd);
        ExpectNear(onto.position, {100.0 * size, 100.0 * size}, 0.5 * size);
        EXPECT_EQ(told.strokes[2].shape, Geometry::InkShape::Circle);
        // The line's end is put onto the centre: the adjusted geometry is what is told.
        const auto& line = std::get<LineShape>(told.strokes[1].curves[0].shape);
        const auto& round = std::get<CircleShape>(told.strokes[2].curves[0].shape);
        ExpectNear(line.end, round.center, 1e-9 * size);
        EXPECT_GT(told.strokes[1].curves[0].deviation, 0.1 * size);
        for (const RecognizedConstraint& constraint : *told.constraints)
            EXPECT_GT(constraint.confidence, 0.011);
    }
}

// Drawn over: a bulge in a line makes a curve of another kind, a straight stretch leaves a line.
TEST(RecognizeDrawing, StrokesAlongEarlierCurvesGiveThemANewForm) {
    for (const bool isBulge : {true, false}) {
        SCOPED_TRACE(isBulge);
        InkStroke over;
        for (int i = 0; i <= 40; ++i) {
            const double lift = isBulge ? 6.0 * std::sin(0.5 * kTurn * i / 40.0) : 0.2;
            over.samples.push_back({60.0 + 2.0 * i, 100.0 + lift, 0.0});
        }
        const Drawing drawing = DrawingOf({Drawn({{0, 100}, {200, 100}}), Drawn({{0, 100}, {0, 0}}), over});
        RecognizeOptions options;
        const std::vector<RecognizedStroke> strokes = RecognizeDrawing(drawing, options).strokes;
        EXPECT_EQ(strokes[2].shape, Geometry::InkShape::Retrace);
        EXPECT_TRUE(strokes[2].curves.empty());
        ASSERT_TRUE(strokes[2].retraces);
        EXPECT_EQ(strokes[2].retraces->stroke, 0);
        ASSERT_EQ(strokes[0].curves.size(), 1U);
        EXPECT_EQ(strokes[0].curves[0].retracedBy, 2);
        EXPECT_EQ(std::holds_alternative<LineShape>(strokes[0].curves[0].shape), !isBulge);
        EXPECT_LT(strokes[0].curves[0].deviation, 2.0);
        ASSERT_EQ(strokes[1].connections.size(), 1U); // still tells what its end was put onto
        EXPECT_EQ(strokes[1].connections[0].onto.place.stroke, 0);
        options.preferences.SetOversketch(false);
        EXPECT_EQ(RecognizeDrawing(drawing, options).strokes[2].curves.size(), 1U);
    }
}

TEST(RecognizeDrawing, OnlyKindsAskedForAreInferred) {
    const Drawing square = DrawingOf({Moved(kSquare, 0.3, {}), Moved(kSquare, 0.31, {300, 50})});
    const auto count = [&](std::uint32_t kinds) {
        RecognizeOptions options;
        options.constraintKinds = kinds;
        const RecognizedDrawing told = RecognizeDrawing(square, options);
        EXPECT_EQ(told.strokes[0].joints.size(), 4U); // joints hold in any case
        return told.constraints ? static_cast<int>(told.constraints->size()) : -1;
    };
    EXPECT_EQ(count(0), -1);
    EXPECT_EQ(count(ParseConstraintKinds("horizontal,concentric")), 0);
    EXPECT_EQ(count(ParseConstraintKinds("coincident")), 8);
    EXPECT_GE(count(ParseConstraintKinds("all")), 14);
}

TEST(RecognizeDrawing, ScribblesEraseWhatTheyCoverOfEarlierStrokes) {
    for (const double size : {1e-6, 1.0, 1e6}) {
        SCOPED_TRACE(size);
        const Drawing drawing = Scaled(DrawingOf({Drawn({{0, 0}, {200, 0}}), Drawn({{100, -260}, {100, 140}}),
                                                  Drawn({{0, 100}, {200, 100}}), Scratch(10, 190, 100, 30),
                                                  Scratch(105, 200, 0, 12), Drawn({{0, 105}, {200, 105}})}),
                                       size);
        const std::vector<RecognizedStroke> strokes = RecognizeDrawing(drawing, {}).strokes;
        // The third line lies under the first scribble, which also crosses the second one: that stays.
        EXPECT_TRUE(strokes[2].curves.empty());
        ASSERT_EQ(strokes[2].erased.size(), 1U);
        EXPECT_EQ(strokes[2].erased[0].by, 3);
        EXPECT_EQ(strokes[3].erases, std::vector<int>{2});
        EXPECT_EQ(strokes[1].curves.size(), 1U);
        // The first line loses the part behind its crossing with the second.
        ASSERT_EQ(strokes[0].curves.size(), 1U);
        const auto& rest = std::get<LineShape>(strokes[0].curves[0].shape);
        EXPECT_NEAR(rest.start.x, 0.0, 0.5 * size);
        EXPECT_NEAR(rest.end.x, 100.0 * size, 1e-6 * size);
        EXPECT_EQ(strokes[0].curves[0].to, 15);
        ASSERT_EQ(strokes[0].erased.size(), 1U);
        EXPECT_EQ(strokes[4].erases, std::vector<int>{0});
        // A later stroke is safe.
        EXPECT_EQ(strokes[5].curves.size(), 1U);
        RecognizeOptions all;
        all.useScribbles = false;
        EXPECT_FALSE(RecognizeDrawing(drawing, all).strokes[3].curves.empty());
    }
}

TEST(RecognizeDrawing, TrimmingLeavesPiecesOfEveryKind) {
    const struct {
        const char* name;
        Drawing drawing;
        std::size_t left;
        const char* kind;
    } rows[] = {
        {"circle", RoundOf({}, 100, 100), 1, "arc"},
        {"ellipse", RoundOf({}, 100, 60), 1, "elliptic_arc"},
        {"arc", RoundOf({}, 100, 100, -1.5, 1.5), 2, "arc"},
        {"spline", Along([](double u) {
             return Position{300.0 * u - 150.0, 30.0 * std::sin(kTurn * u)};
         }),
         2, "spline"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Drawing drawing = row.drawing;
        const bool isSpline = row.kind == std::string("spline");
        RecognizeOptions options;
        options.useRulesOnly = isSpline;
        // Over the right side, across the seam of full turns; over the middle of the free form.
        drawing.strokes.push_back(isSpline ? Scratch(-60, 60, 0, 40) : [] {
            InkStroke scratch = Scratch(-85, 85, 70, 70);
            for (Sample& s : scratch.samples)
                std::swap(s.x, s.y);
            return scratch;
        }());
        const std::vector<RecognizedStroke> strokes = RecognizeDrawing(drawing, options).strokes;
        ASSERT_TRUE(strokes[1].isScribble);
        ASSERT_EQ(strokes[0].curves.size(), row.left);
        ASSERT_EQ(strokes[0].erased.size(), 1U);
        for (const RecognizedCurve& curve : strokes[0].curves)
            EXPECT_STREQ(curve.KindName(), row.kind);
    }
}

TEST(RecognizeDrawing, StrokesWithProblemsPassThrough) {
    Drawing drawing;
    drawing.strokes.push_back({{{5, 5, 0}}, false, "fewer than two points"});
    drawing.strokes.push_back({{{0, 0, 0}, {10, 0, 0}}, false, ""});
    const RecognizedDrawing result = RecognizeDrawing(drawing, {});
    ASSERT_EQ(result.strokes.size(), 2U);
    EXPECT_TRUE(result.strokes[0].curves.empty());
    EXPECT_EQ(result.strokes[0].problem, "fewer than two points");
    EXPECT_EQ(result.strokes[1].curves.size(), 1U);
    drawing.strokes[1].samples[1].x = 1e300;
    drawing.strokes[1].samples[1].y = -1e300;
    drawing.strokes[1].samples[0].x = -1.7e308;
    EXPECT_NO_THROW(RecognizeDrawing(drawing, {}));
}

} // namespace
} // namespace Tessera::Tool
