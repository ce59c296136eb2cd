#include "apps/cli/prepare/InkPreparation.h"

#include "tests/support/ToolInk.h"

namespace Tessera::Tool {
namespace {

/// Samples of a circle about the origin, evenly in time at the given rate, with jitter.
InkStroke Circle(double radius, int n, double jitter) {
    std::mt19937 rng(20240611);
    std::normal_distribution<double> noise(0.0, 1.0);
    InkStroke stroke;
    stroke.isTimed = true;
    for (int i = 0; i < n; ++i) {
        const double angle = kTurn * i / (n - 1);
        stroke.samples.push_back({radius * std::cos(angle) + jitter * noise(rng),
                                  radius * std::sin(angle) + jitter * noise(rng), 1000.0 * i / (n - 1)});
    }
    return stroke;
}

double Gap(const PreparedSample& a, const PreparedSample& b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}

TEST(InkPreparation, SamplesLieEvenlyAtA120thOfTheBox) {
    for (const int n : {100, 400, 5000}) {
        SCOPED_TRACE(n);
        const std::vector<PreparedSample> samples = PrepareStroke(Circle(100.0, n, 0.0), FixedFrame(0.25));
        const double step = 50.0 * std::numbers::sqrt2 / 120.0;
        EXPECT_NEAR(static_cast<double>(samples.size()), 50.0 * std::numbers::pi / step, 4.0);
        for (std::size_t i = 1; i < samples.size(); ++i) {
            EXPECT_NEAR(Gap(samples[i - 1], samples[i]), step, 0.03 * step);
            EXPECT_NEAR(std::hypot(samples[i].x, samples[i].y), 25.0, 0.02);
        }
    }
}

TEST(InkPreparation, VerticesOfSparsePolyLinesStay) {
    const std::vector<Position> corners = {{0, 0}, {100, 0}, {100, 4}, {0, 4}, {0, 0}};
    const std::vector<PreparedSample> samples = PrepareStroke(StrokeThrough(corners), FixedFrame(3.0));
    std::size_t found = 0, onShortSide = 0;
    for (const PreparedSample& sample : samples) {
        onShortSide += sample.source > 1.0 && sample.source <= 2.0 ? 1 : 0;
        if (sample.source != std::floor(sample.source))
            continue;
        const Position& corner = corners.at(found);
        EXPECT_EQ(sample.source, static_cast<double>(found++)) << "once";
        ExpectNear(sample, {3.0 * corner.x, 3.0 * corner.y}, 1e-12);
    }
    EXPECT_EQ(found, corners.size());
    EXPECT_GE(onShortSide, 8U);
}

TEST(InkPreparation, RepeatedPointsAndTimesGo) {
    InkStroke stroke = StrokeThrough({{0, 0}, {0, 0}, {1, 0}, {1, 0}, {2, 0}, {2, 0}});
    std::vector<PreparedSample> samples = PrepareStroke(stroke, FixedFrame(1.0));
    for (std::size_t i = 1; i < samples.size(); ++i)
        EXPECT_GT(Gap(samples[i - 1], samples[i]), 0.0);
    EXPECT_GE(samples.size(), 8U);
    // A clock of 10 ms under samples every 2 ms: no speed may be infinite, the last place is kept.
    InkStroke dense = Circle(100.0, 501, 0.0);
    for (Sample& sample : dense.samples)
        sample.timeMs = 10.0 * std::floor(sample.timeMs / 10.0);
    samples = PrepareStroke(dense, FixedFrame(1.0));
    for (const PreparedSample& sample : samples)
        EXPECT_NEAR(sample.speed, 200.0 * std::numbers::pi, 0.1 * 200.0 * std::numbers::pi);
    ExpectNear(samples.back(), {100.0, 0.0});
    // A clock that stands still tells nothing.
    for (Sample& sample : dense.samples)
        sample.timeMs = 5.0;
    samples = PrepareStroke(dense, FixedFrame(1.0));
    EXPECT_GT(samples.size(), 100U);
    EXPECT_EQ(samples[50].speed, 0.0);
}

TEST(InkPreparation, JitterOfDenseInkIsSmoothedAway) {
    // Jitter of a third of the sampling distance times ten: the raw poly-line is several times too long.
    const std::vector<PreparedSample> samples = PrepareStroke(Circle(100.0, 20001, 0.3), FixedFrame(1.0));
    double length = 0.0;
    for (std::size_t i = 1; i < samples.size(); ++i)
        length += Gap(samples[i - 1], samples[i]);
    EXPECT_NEAR(length, 100.0 * kTurn, 2.0 * kTurn);
    EXPECT_LT(samples.size(), 600U);
}

TEST(InkPreparation, RulesOnlyTakesEverySampleAsItIs) {
    InkStroke stroke = StrokeThrough({{0, 0}, {0, 0}, {3, 4}, {3, 4}});
    stroke.isTimed = true;
    stroke.samples[2].timeMs = stroke.samples[3].timeMs = 500.0;
    const std::vector<PreparedSample> samples = TakeSamples(stroke, FixedFrame(2.0));
    ASSERT_EQ(samples.size(), 4U);
    EXPECT_TRUE(samples[2].x == 6.0 && samples[1].speed == 20.0);
    EXPECT_TRUE(samples[3].speed == 0.0 && samples[3].source == 3.0);
}

TEST(InkPreparation, OneFrameForAllStrokes) {
    const Drawing drawing =
        DrawingOf({StrokeThrough({{1000, 1000}, {1400, 1300}}), StrokeThrough({{1100, 1000}, {1130, 1040}}),
                   StrokeThrough({{1000, 1000}, {1001, 1000}})});
    const WorkingFrame frame = AutomaticFrame(drawing);
    // The stroke of 50 units counts, the dot of 1 unit does not.
    EXPECT_NEAR(frame.scale, AutomaticFrame(DrawingOf({drawing.strokes[1]})).scale, 1e-12);
    ExpectNear(frame.ToInk(frame.ToWorking({1234.5, 999.0})), {1234.5, 999.0});
    EXPECT_NEAR(AutomaticFrame(Scaled(drawing, 1e-3)).scale, 1e3 * frame.scale, 1e-6) << "other units";
}

} // namespace
} // namespace Tessera::Tool
