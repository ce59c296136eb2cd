#include "tessera/recognition/SketchRecognizerPreferences.h"

#include <gtest/gtest.h>

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

TEST(SketchRecognizerPreferences, Defaults) {
    const Prefs p;
    EXPECT_TRUE(p.GetZoomFactor() == 1 && p.AskSpeedFactor() == 1 && p.AskContextScale() == 1);
    EXPECT_TRUE(!p.AskUseSpeedFactor() && p.AskStandardSpeed() == 1.25 && p.AskLinearFactorOfSpeedTol() == 1);
    EXPECT_EQ(p.AskSegmentationScheme(), Prefs::SegmentationScheme_Speed2);
    EXPECT_EQ(p.AskSpeed1Ratio(), 0.06666666666666667);
    EXPECT_TRUE(p.AskSpeed2Ratio() == 0.3 && p.AskTangentAngleThreshold() == 50);
    EXPECT_TRUE(p.AskTangentPointInterval() == 8 && p.AskPeriodicAngleThreshold() == 20);
    EXPECT_EQ(p.AskToleranceScheme(), Prefs::ToleranceScheme_Mixed);
    EXPECT_EQ(AbsoluteOf(p), (Four{20, 40, 40, 5}));
    EXPECT_EQ(RelativeOf(p), (Four{0.05, 0.04, 0.05, 0.025}));
    double a = 0, b = 0;
    p.AskCloseStrokeTolerances(&a, &b);
    EXPECT_TRUE(a == 20 && b == 0.125 && p.AskMinimumRecognitionTolerance() == 2.5);
    EXPECT_TRUE(p.AskSnapping() && p.AskSnapAngleCreate() == 5 && p.AskSnapDistanceCreate() == 10);
    EXPECT_TRUE(p.AskSnapAngleEdit() == 3 && p.AskSnapDistanceEdit() == 6.25);
    EXPECT_EQ(p.AskSnapCandidateCount(), 5);
    EXPECT_TRUE(p.GetCurveTidy() && p.GetReduceInkCurveDeviation() && p.GetChangeCurveType());
    EXPECT_TRUE(p.AskDragScaleThreshold() == 40 && p.AskDragSnapMaxSpeed() == 8);
    EXPECT_TRUE(p.AskDragShakeMinSpeed() == 3.2 && p.AskDragShakeTime() == 0.5);
    p.AskOverSketchTolerances(&a, &b);
    EXPECT_TRUE(p.AskOversketch() && a == 10 && b == 80);
    EXPECT_TRUE(!p.GetThinWallRecognition() && p.GetRegularPolygonRecognition() && p.GetDoScribble());
    EXPECT_TRUE(p.GetMinNumCusps() == 3 && p.GetReflectionAngle() == 70);
    EXPECT_TRUE(p.GetScribbleTrimTolerance() == 40 && p.GetScribbleOverCurve());
    EXPECT_TRUE(p.GetScribbleMinRotationAngle() == 720 && p.GetCurrentDisplayFontHeight() == 4);
}

// Each checked scalar setter, the values just inside its bounds and those just outside.
TEST(SketchRecognizerPreferences, CheckedScalars) {
    struct Row {
        const char* message;
        void (Prefs::*set)(double);
        double (Prefs::*get)() const;
        std::vector<double> good, bad;
    };
    const double tol = EQ_ask_length_tolerance();
    const double tiny = std::numeric_limits<double>::denorm_min();
    const double huge = 1e300;
    const double below45 = std::nextafter(45.0, 0.0);
    const double above180 = std::nextafter(180.0, 200.0);
    const Row rows[] = {
        {"Invalid speed 1 ratio specified",
         &Prefs::SetSpeed1Ratio,
         &Prefs::AskSpeed1Ratio,
         {tiny, 0.5, 1.0},
         {0.0, -1.0, std::nextafter(1.0, 2.0), kNaN}},
        {"Invalid speed 2 ratio specified",
         &Prefs::SetSpeed2Ratio,
         &Prefs::AskSpeed2Ratio,
         {tiny, 5.0, huge},
         {0.0, -1.0, kNaN}},
        {"Invalid tangent angle threshold specified",
         &Prefs::SetTangentAngleThreshold,
         &Prefs::AskTangentAngleThreshold,
         {tiny, 180.0},
         {0.0, -5.0, above180, kNaN}},
        {"Invalid tangent angle threshold specified",
         &Prefs::SetPeriodicAngleThreshold,
         &Prefs::AskPeriodicAngleThreshold,
         {tiny, 180.0},
         {0.0, -5.0, above180, kNaN}},
        {"Invalid snap angle threshold specified",
         &Prefs::SetSnapAngleCreate,
         &Prefs::AskSnapAngleCreate,
         {tiny, below45},
         {0.0, 45.0, -1.0, kNaN}},
        {"Invalid snap angle threshold specified",
         &Prefs::SetSnapAngleEdit,
         &Prefs::AskSnapAngleEdit,
         {tiny, below45},
         {0.0, 45.0, -1.0, kNaN}},
        {"Invalid snap distance threshold specified",
         &Prefs::SetSnapDistanceCreate,
         &Prefs::AskSnapDistanceCreate,
         {0.0, huge},
         {-tiny, kNaN}},
        {"Invalid snap distance threshold specified",
         &Prefs::SetSnapDistanceEdit,
         &Prefs::AskSnapDistanceEdit,
         {0.0, huge},
         {-tiny, kNaN}},
        {"Invalid minimum tolerance specified",
         &Prefs::SetMinimumRecognitionTolerance,
         &Prefs::AskMinimumRecognitionTolerance,
         {0.0, 5.0, -tol, 5.0 + tol / 2},
         {-1.1 * tol, kNaN}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.message);
        Prefs prefs;
        for (const double value : row.good) {
            (prefs.*row.set)(value);
            EXPECT_EQ((prefs.*row.get)(), value);
        }
        for (const double value : row.bad) {
            const double before = (prefs.*row.get)();
            EXPECT_EQ(ThrownMessage([&] { (prefs.*row.set)(value); }), row.message) << value;
            EXPECT_EQ((prefs.*row.get)(), before);
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
    double a = 0, b = 0;
    prefs.AskCloseStrokeTolerances(&a, &b);
    EXPECT_TRUE(a == 7.0 && b == 0.5);
    prefs.AskOverSketchTolerances(&a, &b);
    EXPECT_TRUE(a == 1.0 && b == 2.0);
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
    EXPECT_EQ(AbsoluteOf(prefs), (Four{40, 80, 80, 10}));
    EXPECT_EQ(RelativeOf(prefs), RelativeOf(Prefs()));
    EXPECT_EQ(prefs.AskMinimumRecognitionTolerance(), 5.0);
    double a = 0, b = 0;
    prefs.AskCloseStrokeTolerances(&a, &b);
    EXPECT_TRUE(a == 40 && b == 0.125);
    EXPECT_TRUE(prefs.AskSnapDistanceCreate() == 20 && prefs.AskSnapDistanceEdit() == 12.5);
    prefs.AskOverSketchTolerances(&a, &b);
    EXPECT_TRUE(a == 20 && b == 160 && prefs.GetScribbleTrimTolerance() == 80);
    EXPECT_TRUE(prefs.AskDragScaleThreshold() == 40 && prefs.GetCurrentDisplayFontHeight() == 4);
    EXPECT_EQ(prefs.AskContextScale(), 100.0);
}

// Every unchecked setter stores into its own field: set all to distinct values, then read all back.
TEST(SketchRecognizerPreferences, UncheckedSettersStoreAndCopy) {
    struct Number {
        void (Prefs::*set)(double);
        double (Prefs::*get)() const;
    };
    struct Switch {
        void (Prefs::*set)(bool);
        bool (Prefs::*get)() const;
    };
    const Number numbers[] = {
        {&Prefs::SetZoomFactor, &Prefs::GetZoomFactor},
        {&Prefs::SetSpeedFactor, &Prefs::AskSpeedFactor},
        {&Prefs::SetStandardSpeed, &Prefs::AskStandardSpeed},
        {&Prefs::SetLinearFactorOfSpeedTol, &Prefs::AskLinearFactorOfSpeedTol},
        {&Prefs::SetDragScaleThreshold, &Prefs::AskDragScaleThreshold},
        {&Prefs::SetDragSnapMaxSpeed, &Prefs::AskDragSnapMaxSpeed},
        {&Prefs::SetDragShakeMinSpeed, &Prefs::AskDragShakeMinSpeed},
        {&Prefs::SetDragShakeTime, &Prefs::AskDragShakeTime},
        {&Prefs::SetReflectionAngle, &Prefs::GetReflectionAngle},
        {&Prefs::SetScribbleTrimTolerance, &Prefs::GetScribbleTrimTolerance},
        {&Prefs::SetScribbleMinRotationAngle, &Prefs::GetScribbleMinRotationAngle},
        {&Prefs::SetCurrentDisplayFontHeight, &Prefs::GetCurrentDisplayFontHeight},
    };
    const Switch switches[] = {
        {&Prefs::SetUseSpeedFactor, &Prefs::AskUseSpeedFactor},
        {&Prefs::SetSnapping, &Prefs::AskSnapping},
        {&Prefs::SetCurveTidy, &Prefs::GetCurveTidy},
        {&Prefs::SetReduceInkCurveDeviation, &Prefs::GetReduceInkCurveDeviation},
        {&Prefs::SetChangeCurveType, &Prefs::GetChangeCurveType},
        {&Prefs::SetOversketch, &Prefs::AskOversketch},
        {&Prefs::SetThinWallRecognition, &Prefs::GetThinWallRecognition},
        {&Prefs::SetRegularPolygonRecognition, &Prefs::GetRegularPolygonRecognition},
        {&Prefs::SetDoScribble, &Prefs::GetDoScribble},
        {&Prefs::SetScribbleOverCurve, &Prefs::GetScribbleOverCurve},
    };
    Prefs prefs;
    double value = -1000.5; // negative: nothing is checked
    for (const Number& number : numbers) {
        (prefs.*number.set)(value++);
    }
    prefs.SetSnapCandidateCount(-3);
    prefs.SetMinNumCusps(-4);
    const Prefs copy = prefs;
    value = -1000.5;
    for (const Number& number : numbers) {
        EXPECT_EQ((copy.*number.get)(), value++);
    }
    EXPECT_TRUE(copy.AskSnapCandidateCount() == -3 && copy.GetMinNumCusps() == -4);
    for (const Switch& flipped : switches) { // flipping one leaves the others alone
        Prefs changed;
        (changed.*flipped.set)(!(changed.*flipped.get)());
        for (const Switch& other : switches) {
            const bool isSame = (changed.*other.get)() == (Prefs().*other.get)();
            EXPECT_EQ(isSame, &other != &flipped);
        }
    }
}

} // namespace
} // namespace Tessera::Geometry
