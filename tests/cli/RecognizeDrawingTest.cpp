#include "apps/cli/recognize/RecognizeDrawing.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

namespace Tessera::Tool {
namespace {

/// A curve p(u), u in [0, 1], as the only stroke of a drawing, sampled evenly in 2 s.
template <class Curve>
Drawing DrawingOf(Curve curve, int n = 240) {
    Drawing drawing;
    InkStroke& stroke = drawing.strokes.emplace_back();
    stroke.isTimed = true;
    for (int i = 0; i < n; ++i) {
        const double u = static_cast<double>(i) / (n - 1);
        const Position p = curve(u);
        stroke.samples.push_back({p.x, p.y, 2000.0 * u});
    }
    return drawing;
}

constexpr double kTurn = 2.0 * std::numbers::pi;

TEST(RecognizeDrawing, ShapesComeBackInInkUnitsWhateverTheUnitAndPlace) {
    for (const double size : {1e-6, 1.0, 300.0, 1e6}) {
        for (const double place : {0.0, 40.0}) {
            SCOPED_TRACE(testing::Message() << size << " at " << place);
            const double o = place * size;
            const RecognizedDrawing circle = RecognizeDrawing(
                DrawingOf([&](double u) {
                    return Position{o + size * std::cos(kTurn * u), o + size * std::sin(kTurn * u)};
                }),
                {});
            ASSERT_EQ(circle.strokes.at(0).curves.size(), 1U);
            const auto* found = std::get_if<CircleShape>(&circle.strokes[0].curves[0].shape);
            ASSERT_NE(found, nullptr);
            EXPECT_NEAR(found->radius, size, 2e-3 * size);
            EXPECT_NEAR(found->center.x, o, 2e-3 * size);
            EXPECT_EQ(circle.strokes[0].curves[0].from, 0);
            EXPECT_EQ(circle.strokes[0].curves[0].to, 239);
            EXPECT_LT(circle.strokes[0].curves[0].deviation, 2e-3 * size);
        }
    }
}

TEST(RecognizeDrawing, CornersOfAPolyLineAreFoundAtTheirSamples) {
    Drawing drawing;
    drawing.strokes.push_back({{{0, 0, 0}, {100, 0, 0}, {100, 80, 0}, {0, 80, 0}, {0, 0, 0}}, false, ""});
    const std::vector<RecognizedCurve> curves = RecognizeDrawing(drawing, {}).strokes.at(0).curves;
    ASSERT_EQ(curves.size(), 4U);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(curves[i].from, i);
        EXPECT_EQ(curves[i].to, i + 1);
        const auto* line = std::get_if<LineShape>(&curves[i].shape);
        ASSERT_NE(line, nullptr);
        EXPECT_NEAR(line->start.x, drawing.strokes[0].samples[i].x, 0.5);
        EXPECT_NEAR(line->start.y, drawing.strokes[0].samples[i].y, 0.5);
    }
}

TEST(RecognizeDrawing, FreeFormFollowsTheInkAndTellsItsDeviation) {
    const Drawing drawing = DrawingOf([](double u) {
        return Position{200.0 * u, 30.0 * std::sin(kTurn * u)};
    });
    const RecognizedDrawing fine = RecognizeDrawing(drawing, {});
    ASSERT_EQ(fine.strokes.at(0).curves.size(), 1U);
    const RecognizedCurve& curve = fine.strokes[0].curves[0];
    ASSERT_TRUE(std::holds_alternative<SplineShape>(curve.shape));
    EXPECT_LE(curve.deviation, 2.0 + 1e-9); // a hundredth of the longer side
}

TEST(RecognizeDrawing, PreferencesReachTheRecogniser) {
    const Drawing bend = DrawingOf([](double u) {
        return u < 0.5 ? Position{200.0 * u, 0.0} : Position{100.0 + 140.0 * (u - 0.5), 140.0 * (u - 0.5)};
    });
    RecognizeOptions options;
    EXPECT_NE(RecognizeDrawing(bend, options).strokes.at(0).curves.size(), 2U); // 45 degrees: no corner at 50
    options.preferences.SetTangentAngleThreshold(40.0);
    EXPECT_EQ(RecognizeDrawing(bend, options).strokes.at(0).curves.size(), 2U);
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
