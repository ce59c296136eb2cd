#include "tessera/recognition/SketchRecognizerPreferences.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "tessera/kernel/EQ.h"
#include "tests/support/ThrownMessage.h"

namespace Tessera::Geometry {
namespace {

using Prefs = SketchRecognizerPreferences;
using Four = std::array<double, 4>;
using ::testing::ElementsAre;
using Testing::ThrownMessage;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

Four AbsoluteOf(const Prefs& prefs) {
    Four values{};
    prefs.AskAbsoluteRecognitionTolerances(values.data());
    return values;
}

Four RelativeOf(const Prefs& prefs) {
    Four values{};
    prefs.AskRelativeRecognitionTolerances(values.data());
    return values;
}

std::array<double, 2> CloseStrokeOf(const Prefs& prefs) {
    std::array<double, 2> values{};
    prefs.AskCloseStrokeTolerances(&values[0], &values[1]);
    return values;
}

std::array<double, 2> OverSketchOf(const Prefs& prefs) {
    std::array<double, 2> values{};
    prefs.AskOverSketchTolerances(&values[0], &values[1]);
    return values;
}

TEST(SketchRecognizerPreferences, Defaults) {
    const Prefs p;
    EXPECT_THAT((std::vector{p.GetZoomFactor(), p.AskContextScale(), p.AskSpeedFactor(), p.AskStandardSpeed(),
                             p.AskLinearFactorOfSpeedTol(), p.AskSpeed1Ratio(), p.AskSpeed2Ratio(),
                             p.AskTangentAngleThreshold(), p.AskPeriodicAngleThreshold(),
                             p.AskMinimumRecognitionTolerance()}),
                ElementsAre(1, 1, 1, 1.25, 1, 0.06666666666666667, 0.3, 50, 20, 2.5));
    EXPECT_THAT((std::vector{p.AskSnapAngleCreate(), p.AskSnapDistanceCreate(), p.AskSnapAngleEdit(),
                             p.AskSnapDistanceEdit(), p.AskDragScaleThreshold(), p.AskDragSnapMaxSpeed(),
                             p.AskDragShakeMinSpeed(), p.AskDragShakeTime(), p.GetReflectionAngle(),
                             p.GetScribbleTrimTolerance(), p.GetScribbleMinRotationAngle(),
                             p.GetCurrentDisplayFontHeight()}),
                ElementsAre(5, 10, 3, 6.25, 40, 8, 3.2, 0.5, 70, 40, 720, 4));
    EXPECT_THAT((std::vector{p.AskSegmentationScheme(), p.AskTangentPointInterval(), p.AskToleranceScheme(),
                             p.AskSnapCandidateCount(), p.GetMinNumCusps()}),
                ElementsAre(2, 8, 2, 5, 3));
    EXPECT_TRUE(p.AskSnapping() && p.GetCurveTidy() && p.GetReduceInkCurveDeviation());
    EXPECT_TRUE(p.GetChangeCurveType() && p.AskOversketch() && p.GetRegularPolygonRecognition());
    EXPECT_TRUE(p.GetDoScribble() && p.GetScribbleOverCurve());
    EXPECT_FALSE(p.AskUseSpeedFactor() || p.GetThinWallRecognition());
    EXPECT_THAT(AbsoluteOf(p), ElementsAre(20, 40, 40, 5));
    EXPECT_THAT(RelativeOf(p), ElementsAre(0.05, 0.04, 0.05, 0.025));
    EXPECT_THAT(CloseStrokeOf(p), ElementsAre(20, 0.125));
    EXPECT_THAT(OverSketchOf(p), ElementsAre(10, 80));
}

// Each checked scalar setter, at the ends of its range and just outside them.
TEST(SketchRecognizerPreferences, CheckedScalars) {
    using P = Prefs;
    struct Row {
        const char* message;
        void (P::*set)(double);
        double (P::*get)() const;
        double lowest, highest, below, above;
    };
    const double tol = EQ_ask_length_tolerance(), tiny = std::numeric_limits<double>::denorm_min();
    const double below45 = std::nextafter(45.0, 0.0), above180 = std::nextafter(180.0, 200.0);
    const double above1 = std::nextafter(1.0, 2.0), huge = 1e300;
    const char *turn = "Invalid tangent angle threshold specified",
               *angle = "Invalid snap angle threshold specified",
               *gap = "Invalid snap distance threshold specified",
               *least = "Invalid minimum tolerance specified";
    const Row rows[] = {
        {"Invalid speed 1 ratio specified", &P::SetSpeed1Ratio, &P::AskSpeed1Ratio, tiny, 1, 0, above1},
        {"Invalid speed 2 ratio specified", &P::SetSpeed2Ratio, &P::AskSpeed2Ratio, tiny, huge, 0, kNaN},
        {turn, &P::SetTangentAngleThreshold, &P::AskTangentAngleThreshold, tiny, 180, 0, above180},
        {turn, &P::SetPeriodicAngleThreshold, &P::AskPeriodicAngleThreshold, tiny, 180, 0, above180},
        {angle, &P::SetSnapAngleCreate, &P::AskSnapAngleCreate, tiny, below45, 0, 45},
        {angle, &P::SetSnapAngleEdit, &P::AskSnapAngleEdit, tiny, below45, 0, 45},
        {gap, &P::SetSnapDistanceCreate, &P::AskSnapDistanceCreate, 0, huge, -tiny, kNaN},
        {gap, &P::SetSnapDistanceEdit, &P::AskSnapDistanceEdit, 0, huge, -tiny, kNaN},
        {least, &P::SetMinimumRecognitionTolerance, &P::AskMinimumRecognitionTolerance, -tol, 5 + tol / 2,
         -1.1 * tol, kNaN},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.message);
        Prefs prefs;
        for (const double good : {row.lowest, row.highest}) {
            (prefs.*row.set)(good);
            EXPECT_EQ((prefs.*row.get)(), good);
        }
        for (const double bad : {row.below, row.above, -1.0, kNaN}) {
            EXPECT_EQ(ThrownMessage([&] { (prefs.*row.set)(bad); }), row.message) << bad;
            EXPECT_EQ((prefs.*row.get)(), row.highest);
        }
    }
}

TEST(SketchRecognizerPreferences, SchemesAndInterval) {
    Prefs prefs;
    for (const int scheme : {0, 1, 2}) {
        prefs.SetSegmentationScheme(scheme);
        prefs.SetToleranceScheme(scheme);
        EXPECT_TRUE(prefs.AskSegmentationScheme() == scheme && prefs.AskToleranceScheme() == scheme);
    }
    for (const int scheme : {-1, 3, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(ThrownMessage([&] { prefs.SetSegmentationScheme(scheme); }),
                  "Invalid segmentation scheme specified");
        EXPECT_EQ(ThrownMessage([&] { prefs.SetToleranceScheme(scheme); }),
                  "Invalid tolerance scheme specified");
    }
    EXPECT_TRUE(prefs.AskSegmentationScheme() == 2 && prefs.AskToleranceScheme() == 2);
    prefs.SetTangentPointInterval(1);
    EXPECT_EQ(ThrownMessage([&] { prefs.SetTangentPointInterval(0); }),
              "Invalid tangent point interval specified");
    EXPECT_EQ(prefs.AskTangentPointInterval(), 1);
}

TEST(SketchRecognizerPreferences, ArraysAreCheckedWholeBeforeAnyIsStored) {
    const double tol = EQ_ask_length_tolerance();
    Prefs prefs;
    const Four smallest = {tol, tol, tol, tol};
    prefs.SetAbsoluteRecognitionTolerances(smallest.data());
    EXPECT_EQ(AbsoluteOf(prefs), smallest);
    const Four bounds = {1e-10, 0.9999999999, 0.5, 0.25};
    prefs.SetRelativeRecognitionTolerances(bounds.data());
    EXPECT_EQ(RelativeOf(prefs), bounds);
    for (const double bad : {0.99 * tol, -1.0, kNaN}) {
        const Four values = {1, 2, 3, bad};
        EXPECT_EQ(ThrownMessage([&] { prefs.SetAbsoluteRecognitionTolerances(values.data()); }),
                  "Invalid absolute tolerance specified");
    }
    for (const double bad : {1.0, 0.99e-10, kNaN}) {
        const Four values = {0.1, 0.1, bad, 0.1};
        EXPECT_EQ(ThrownMessage([&] { prefs.SetRelativeRecognitionTolerances(values.data()); }),
                  "Invalid relative tolerance specified");
    }
    EXPECT_EQ(AbsoluteOf(prefs), smallest);
    EXPECT_EQ(RelativeOf(prefs), bounds);
}

TEST(SketchRecognizerPreferences, PairsOfTolerances) {
    Prefs prefs;
    prefs.SetCloseStrokeTolerances(7.0, 0.5);
    EXPECT_EQ(ThrownMessage([&] { prefs.SetCloseStrokeTolerances(0.0, 2.0); }),
              "Invalid absolute close stroke tolerance specified");
    EXPECT_EQ(ThrownMessage([&] { prefs.SetCloseStrokeTolerances(1.0, 1.0); }),
              "Invalid relative close stroke tolerance specified");
    prefs.SetOverSketchTolerances(1.0, 2.0);
    for (const auto& [first, second] : {std::pair{0.0, 5.0}, {5.0, 0.0}, {5.0, kNaN}}) {
        EXPECT_EQ(ThrownMessage([&, f = first, s = second] { prefs.SetOverSketchTolerances(f, s); }),
                  "Invalid oversketch tolerances specified");
    }
    EXPECT_THAT(CloseStrokeOf(prefs), ElementsAre(7, 0.5));
    EXPECT_THAT(OverSketchOf(prefs), ElementsAre(1, 2));
}

TEST(SketchRecognizerPreferences, TheMinimumNeverExceedsAnAbsoluteTolerance) {
    Prefs prefs;
    prefs.SetMinimumRecognitionTolerance(30.0);
    EXPECT_EQ(prefs.AskMinimumRecognitionTolerance(), 5.0);
    prefs.SetCloseStrokeTolerances(3.0, 0.1);
    prefs.SetMinimumRecognitionTolerance(4.0);
    EXPECT_EQ(prefs.AskMinimumRecognitionTolerance(), 3.0) << "the close-stroke tolerance counts";
    EQ_set_MEC(2); // the margin follows the length scale
    prefs.SetMinimumRecognitionTolerance(3.0 + 2e-10);
    EXPECT_EQ(prefs.AskMinimumRecognitionTolerance(), 3.0);
    EQ_set_MEC(1);
}

TEST(SketchRecognizerPreferences, ContextAndScaling) {
    Prefs prefs;
    prefs.SetZoomFactor(2.0);
    prefs.SetPageScale(5.0);
    prefs.SetSpeedFactor(10.0);
    double tol = 600.0;
    prefs.ContextAdjustTolerance(&tol);
    EXPECT_EQ(tol, 6.0);
    prefs.AdjustToleranceByZoomFactor(&tol);
    EXPECT_EQ(tol, 3.0);

    prefs.ScaleLengthTolerances(2.0);
    EXPECT_THAT(AbsoluteOf(prefs), ElementsAre(40, 80, 80, 10));
    EXPECT_EQ(RelativeOf(prefs), RelativeOf(Prefs()));
    EXPECT_THAT(CloseStrokeOf(prefs), ElementsAre(40, 0.125));
    EXPECT_THAT(OverSketchOf(prefs), ElementsAre(20, 160));
    EXPECT_EQ(prefs.AskMinimumRecognitionTolerance(), 5.0);
    EXPECT_TRUE(prefs.AskSnapDistanceCreate() == 20 && prefs.AskSnapDistanceEdit() == 12.5);
    EXPECT_TRUE(prefs.GetScribbleTrimTolerance() == 80 && prefs.AskDragScaleThreshold() == 40);
    EXPECT_TRUE(prefs.GetCurrentDisplayFontHeight() == 4 && prefs.AskContextScale() == 100.0);
}

} // namespace
} // namespace Tessera::Geometry
