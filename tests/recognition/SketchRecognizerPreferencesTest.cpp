#include "tessera/recognition/SketchRecognizerPreferences.h"

#include "tessera/kernel/EQ.h"
#include "tests/support/Test.h"
#include "tests/support/ThrownMessage.h"

namespace Tessera::Geometry {
namespace {

using Prefs = SketchRecognizerPreferences;
using ::testing::ElementsAre;
using Testing::ThrownMessage;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Tolerances absolute, relative, of closing and of sketching over; the minimum; snapping, scribbles and
// dragging; the font's height; schemes and interval.
std::vector<double> ValuesOf(const Prefs& p) {
    std::vector<double> values(12);
    p.AskAbsoluteRecognitionTolerances(&values[0]);
    p.AskRelativeRecognitionTolerances(&values[4]);
    p.AskCloseStrokeTolerances(&values[8], &values[9]);
    p.AskOverSketchTolerances(&values[10], &values[11]);
    values.insert(values.end(),
                  {p.AskMinimumRecognitionTolerance(), p.AskSnapDistanceCreate(), p.AskSnapDistanceEdit(),
                   p.GetScribbleTrimTolerance(), p.AskDragScaleThreshold(), p.GetCurrentDisplayFontHeight()});
    for (const int choice : {p.AskSegmentationScheme(), p.AskToleranceScheme(), p.AskTangentPointInterval()})
        values.push_back(choice);
    return values;
}

// Those of lengths and schemes are in what scaling makes of them, below.
TEST(SketchRecognizerPreferences, Defaults) {
    const Prefs p;
    EXPECT_THAT((std::vector{p.AskStandardSpeed(), p.AskLinearFactorOfSpeedTol(), p.AskSpeed1Ratio(),
                             p.AskSpeed2Ratio(), p.AskTangentAngleThreshold(), p.AskPeriodicAngleThreshold(),
                             p.AskSnapAngleCreate(), p.AskSnapAngleEdit(), p.AskDragSnapMaxSpeed(),
                             p.AskDragShakeMinSpeed(), p.AskDragShakeTime(), p.GetReflectionAngle(),
                             p.GetScribbleMinRotationAngle()}),
                ElementsAre(1.25, 1, 0.06666666666666667, 0.3, 50, 20, 5, 3, 8, 3.2, 0.5, 70, 720));
    EXPECT_TRUE(p.GetCurveTidy() && p.GetReduceInkCurveDeviation() && p.GetChangeCurveType());
    EXPECT_TRUE(p.AskOversketch() && p.GetRegularPolygonRecognition());
    EXPECT_FALSE(p.AskUseSpeedFactor() || p.GetThinWallRecognition());
}

// Each checked scalar setter, at the ends of its range and just outside them; NaN is outside all.
TEST(SketchRecognizerPreferences, CheckedScalars) {
    using P = Prefs;
    const double tol = EQ_ask_length_tolerance(), tiny = std::numeric_limits<double>::denorm_min();
    const double below45 = std::nextafter(45.0, 0.0), above180 = std::nextafter(180.0, 200.0);
    const double above1 = std::nextafter(1.0, 2.0), huge = 1e300;
    const char *turn = "Invalid tangent angle threshold specified",
               *angle = "Invalid snap angle threshold specified",
               *gap = "Invalid snap distance threshold specified",
               *least = "Invalid minimum tolerance specified";
    const struct {
        const char* message;
        void (P::*set)(double);
        double (P::*get)() const;
        double lowest, highest, below, above;
    } rows[] = {
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
    for (const auto& row : rows) {
        SCOPED_TRACE(row.message);
        Prefs prefs;
        for (const double good : {row.lowest, row.highest}) {
            (prefs.*row.set)(good);
            EXPECT_EQ((prefs.*row.get)(), good);
        }
        for (const double bad : {row.below, row.above, kNaN}) {
            EXPECT_EQ(ThrownMessage([&] { (prefs.*row.set)(bad); }), row.message) << bad;
            EXPECT_EQ((prefs.*row.get)(), row.highest);
        }
    }
}

// The others likewise: what they refuse they refuse whole.
TEST(SketchRecognizerPreferences, SchemesArraysAndPairs) {
    const double tol = EQ_ask_length_tolerance();
    Prefs prefs;
    const double smallest[] = {tol, tol, tol, tol}, bounds[] = {1e-10, 0.9999999999, 0.5, 0.25};
    prefs.SetAbsoluteRecognitionTolerances(smallest);
    prefs.SetRelativeRecognitionTolerances(bounds);
    prefs.SetCloseStrokeTolerances(7.0, 0.5);
    prefs.SetOverSketchTolerances(1.0, 2.0);
    prefs.SetSegmentationScheme(0);
    prefs.SetToleranceScheme(1);
    prefs.SetTangentPointInterval(1);
    const auto expected = ElementsAre(tol, tol, tol, tol, 1e-10, 0.9999999999, 0.5, 0.25, 7, 0.5, 1, 2, 2.5,
                                      10, 6.25, 40, 40, 4, 0, 1, 1);
    EXPECT_THAT(ValuesOf(prefs), expected);
    const auto refused = [&](auto set, auto... values) {
        const std::string message = ThrownMessage([&] { (prefs.*set)(values...); });
        EXPECT_THAT(ValuesOf(prefs), expected) << message;
        return message;
    };
    for (const int scheme : {-1, 3, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(refused(&Prefs::SetSegmentationScheme, scheme), "Invalid segmentation scheme specified");
        EXPECT_EQ(refused(&Prefs::SetToleranceScheme, scheme), "Invalid tolerance scheme specified");
    }
    EXPECT_EQ(refused(&Prefs::SetTangentPointInterval, 0), "Invalid tangent point interval specified");
    for (const double bad : {0.99 * tol, kNaN}) {
        const double absolute[] = {1, 2, 3, bad};
        EXPECT_EQ(refused(&Prefs::SetAbsoluteRecognitionTolerances, absolute),
                  "Invalid absolute tolerance specified");
        EXPECT_EQ(refused(&Prefs::SetCloseStrokeTolerances, bad, 2.0),
                  "Invalid absolute close stroke tolerance specified");
        EXPECT_EQ(refused(&Prefs::SetOverSketchTolerances, bad, 5.0),
                  "Invalid oversketch tolerances specified");
        EXPECT_EQ(refused(&Prefs::SetOverSketchTolerances, 5.0, bad),
                  "Invalid oversketch tolerances specified");
    }
    for (const double bad : {1.0, 0.99e-10, kNaN}) {
        const double relative[] = {0.1, 0.1, bad, 0.1};
        EXPECT_EQ(refused(&Prefs::SetRelativeRecognitionTolerances, relative),
                  "Invalid relative tolerance specified");
        EXPECT_EQ(refused(&Prefs::SetCloseStrokeTolerances, 1.0, bad),
                  "Invalid relative close stroke tolerance specified");
    }
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
    EXPECT_THAT(ValuesOf(prefs), ElementsAre(40, 80, 80, 10, 0.05, 0.04, 0.05, 0.025, 40, 0.125, 20, 160, 5,
                                             20, 12.5, 80, 40, 4, 2, 2, 8));
    EXPECT_EQ(prefs.AskContextScale(), 100.0);
}

} // namespace
} // namespace Tessera::Geometry
