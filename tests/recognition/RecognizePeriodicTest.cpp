#include <gmock/gmock.h>

#include <numbers>

#include "tessera/recognition/SketchRecognizer.h"
#include "tests/support/RecognizedResults.h"

namespace Tessera::Geometry {
namespace {

using Testing::DrawEllipse;
using Testing::DrawPath;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::Results;
using Testing::Samples;
using Testing::StrokeOf;

constexpr double kTurn = 2.0 * std::numbers::pi;
constexpr double kDegree = kTurn / 360.0;

std::vector<int> PeriodicKinds(const Samples& samples) {
    SketchRecognizer recognizer;
    recognizer.RecognizePeriodic(*StrokeOf(samples));
    return Results(recognizer).Kinds();
}

TEST(RecognizePeriodic, AnyNumberOfRoundsInEitherSense) {
    for (const double rounds : {1.0, 0.97, 2.0, 2.4, 3.0, 7.0})
        for (const double sense : {1.0, -1.0}) {
            SCOPED_TRACE(testing::Message() << rounds << " rounds, sense " << sense);
            const double end = 0.7 + sense * rounds * kTurn;
            const int n = static_cast<int>(90 * rounds);
            SketchRecognizer recognizer;
            recognizer.RecognizePeriodic(*StrokeOf(DrawEllipse({40, -20}, 30, 30, 0, 0.7, end, n)));
            const Results circle(recognizer);
            ASSERT_THAT(circle.Kinds(), ElementsAre(5));
            EXPECT_TRUE(circle.CurveOf(0).IsClosed());
            EXPECT_NEAR(circle.CurveOf(0).Length(), 30.0 * kTurn, 1e-5);
            EXPECT_EQ(circle[0].GetEndIndex(), n - 1);
            recognizer.RecognizePeriodic(*StrokeOf(DrawEllipse({40, -20}, 60, 30, 0.5, 0.7, end, n)));
            const Results ellipse(recognizer);
            ASSERT_THAT(ellipse.Kinds(), ElementsAre(6));
            EXPECT_TRUE(ellipse.CurveOf(0).IsClosed());
        }
}

TEST(RecognizePeriodic, OpenOrAngularInkHasNoResult) {
    EXPECT_THAT(PeriodicKinds({}), IsEmpty());
    EXPECT_THAT(PeriodicKinds(DrawPath({{0, 0}, {100, 0}}, 50)), IsEmpty());
    EXPECT_THAT(PeriodicKinds(DrawEllipse({0, 0}, 90, 90, 0, 0, 335 * kDegree, 90)), IsEmpty());
    // 345 degrees, but the ends are 39 units apart.
    EXPECT_THAT(PeriodicKinds(DrawEllipse({0, 0}, 150, 150, 0, 0, 345 * kDegree, 90)), IsEmpty());
    EXPECT_THAT(PeriodicKinds(DrawPath({{0, 0}, {900, 0}, {900, 500}, {0, 500}, {0, 0}}, 60)), IsEmpty());
    // There and back again along half a circle: no turning in total.
    Samples back = DrawEllipse({0, 0}, 90, 90, 0, 0, 3.0, 90);
    const Samples there = back;
    back.insert(back.end(), there.rbegin(), there.rend());
    EXPECT_THAT(PeriodicKinds(back), IsEmpty());
}

TEST(RecognizePeriodic, ThresholdWidensWhatCountsAsARound) {
    const Samples ink = DrawEllipse({0, 0}, 20, 20, 0, 0, 330 * kDegree, 90); // ends 10 units apart
    EXPECT_THAT(PeriodicKinds(ink), IsEmpty());
    SketchRecognizer recognizer;
    recognizer.AskPreferences()->SetPeriodicAngleThreshold(31.0);
    recognizer.RecognizePeriodic(*StrokeOf(ink));
    EXPECT_THAT(Results(recognizer).Kinds(), ElementsAre(5));
}

} // namespace
} // namespace Tessera::Geometry
