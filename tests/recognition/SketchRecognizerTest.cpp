#include "tessera/recognition/SketchRecognizer.h"

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tessera/kernel/internal/SmFault.h"
#include "tessera/recognition/internal/SketchRecognizerAccess.h"
#include "tests/support/RecognizedResults.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;

constexpr double kTurn = 2.0 * std::numbers::pi;
constexpr double kDegree = kTurn / 360.0;
constexpr auto kAnyKind = CurveType_Line;

Results Recognized(const Samples& samples, bool segment = true, CurveType_e type = kAnyKind) {
    SketchRecognizer recognizer;
    recognizer.Recognize(*StrokeOf(samples), segment, type);
    return Results(recognizer);
}

// Makes the recogniser's stroke a straight one of the given length.
SketchRecognizerAccess Straight(SketchRecognizer& recognizer, double length) {
    recognizer.Recognize(*StrokeOf(DrawPath({{0, 0}, {length, 0}}, 100)), false, kAnyKind);
    const Results taken(recognizer);
    return {recognizer};
}

// --- Measures

// Zoom and page shrink every absolute tolerance; the spline's and the minimum do not follow the speed factor.
TEST(RecognizerMeasures, TolerancesFollowSchemeAndDrawingContext) {
    using Prefs = SketchRecognizerPreferences;
    const struct {
        int scheme;
        bool isZoomed;
        double length;
        std::vector<double> expected;
        double closing; // of the hundred segments the last does not count
    } rows[] = {
        {Prefs::ToleranceScheme_Mixed, false, 100.0, {5, 4, 5, 2.5}, 12.375},
        {Prefs::ToleranceScheme_Mixed, false, 1000.0, {20, 40, 40, 5}, 20.0},
        {Prefs::ToleranceScheme_Mixed, false, 10.0, {2.5, 2.5, 2.5, 2.5}, 2.5},
        {Prefs::ToleranceScheme_Absolute, false, 10.0, {20, 40, 40, 5}, 20.0},
        {Prefs::ToleranceScheme_Relative, false, 1000.0, {50, 40, 50, 25}, 123.75},
        {Prefs::ToleranceScheme_Mixed, true, 10000.0, {0.5, 1, 1, 0.5}, 0.5},
        {Prefs::ToleranceScheme_Mixed, true, 1.0, {0.25, 0.25, 0.25, 0.25}, 0.25},
        {Prefs::ToleranceScheme_Relative, true, 1000.0, {50, 40, 50, 25}, 123.75},
    };
    for (const auto& row : rows) {
        SketchRecognizer recognizer;
        const SketchRecognizerAccess access = Straight(recognizer, row.length);
        recognizer.AskPreferences()->SetToleranceScheme(row.scheme);
        recognizer.AskPreferences()->SetZoomFactor(row.isZoomed ? 2.0 : 1.0);
        recognizer.AskPreferences()->SetPageScale(row.isZoomed ? 5.0 : 1.0);
        recognizer.AskPreferences()->SetSpeedFactor(row.isZoomed ? 4.0 : 1.0);
        std::vector<double> tol(4);
        access.AskRecognitionTolerances(0, 101, tol.data()); // 101: all hundred segments count
        EXPECT_THAT(tol, testing::Pointwise(testing::DoubleEq(), row.expected)) << row.length;
        EXPECT_DOUBLE_EQ(recognizer.AskClosedStrokeTolerance(), row.closing) << row.length;
    }
}

TEST(RecognizerMeasures, LengthLeavesOutTheSegmentThatEndsAtLast) {
    SketchRecognizer recognizer;
    EXPECT_EQ(recognizer.GetStrokeLength(), 0.0);
    const SketchRecognizerAccess access = Straight(recognizer, 100.0);
    EXPECT_DOUBLE_EQ(recognizer.GetStrokeLength(), 100.0);
    EXPECT_DOUBLE_EQ(access.GetStrokeLength(10, 12), 1.0);
    EXPECT_EQ(access.GetStrokeLength(10, 11), 0.0);
    EXPECT_EQ(access.GetStrokeLength(10, 9), 0.0);
}

TEST(RecognizerMeasures, PointIntervalIsATruncatedTwelfth) {
    const std::pair<int, int> rows[] = {{1, 1}, {23, 1}, {25, 2}, {96, 7}, {97, 8}, {5000, 8}};
    for (const auto& [count, expected] : rows) {
        SketchRecognizer recognizer(7, Samples(static_cast<std::size_t>(count)));
        EXPECT_EQ(SketchRecognizerAccess{recognizer}.AskPointInterval(), expected) << count;
    }
}

// --- Pipeline

struct Shape {
    const char* name;
    Samples samples;
    std::vector<int> kinds;
};

std::vector<Shape> CleanShapes() {
    return {
        {"line", DrawPath({{0, 0}, {200, 30}}, 80), {3}},
        {"arc", DrawEllipse({50, 40}, 90, 90, 0, 0.3, 3.4, 150), {5}},
        {"elliptic arc", DrawEllipse({10, 20}, 120, 50, 0.4, 0.2, 4.9, 200), {6}},
        {"corner", DrawPath({{0, 0}, {100, 0}, {100, 80}}, 60), {3, 3}},
        {"rectangle", DrawPath({{0, 0}, {160, 0}, {160, 90}, {0, 90}, {0, 0}}, 60), {3, 3, 3, 3}},
    };
}

// Each piece starts where the one before it ends, and they take up all samples.
void ExpectChain(const Results& results, const Samples& samples) {
    EXPECT_EQ(results[0].GetStartIndex(), 0);
    for (std::size_t i = 0; i + 1 < results.Count(); ++i)
        EXPECT_EQ(results[i].GetEndIndex(), results[i + 1].GetStartIndex());
    EXPECT_EQ(results[results.Count() - 1].GetEndIndex(), static_cast<int>(samples.size()) - 1);
}

// Every sample of each piece lies on its curve, wherever and however the shape was drawn.
TEST(Recognize, CleanShapesAnywhere) {
    for (const Shape& shape : CleanShapes())
        for (int turn = 0; turn < 36; ++turn)
            for (const bool backwards : {false, true}) {
                SCOPED_TRACE(testing::Message() << shape.name << " turned " << turn << " back " << backwards);
                const double c = std::cos(0.1 + 10 * turn * kDegree), s = std::sin(0.1 + 10 * turn * kDegree);
                Samples drawn = shape.samples;
                for (StrokePoint& p : drawn)
                    p = StrokePoint(c * p.x - s * p.y + 300 * turn, s * p.x + c * p.y - 77, 1.0);
                if (backwards)
                    std::reverse(drawn.begin(), drawn.end());
                const Results results = Recognized(drawn);
                ASSERT_EQ(results.Kinds(), shape.kinds);
                ExpectChain(results, drawn);
                for (std::size_t i = 0; i < results.Count(); ++i) {
                    EXPECT_LT(results[i].GetMaxDeviation(), 1e-6);
                    for (int j = results[i].GetStartIndex(); j <= results[i].GetEndIndex(); ++j)
                        ASSERT_LT(results.CurveOf(i).DistanceBounded(drawn[j]), 1e-3);
                }
            }
}

TEST(Recognize, KindsAndCuts) {
    const Samples straight = DrawPath({{0, 0}, {100, 50}}, 60);
    const Samples arc = DrawEllipse({0, 0}, 90, 90, 0, 0.3, 3.4, 150);
    const Samples corner = DrawPath({{0, 0}, {100, 0}, {100, 80}}, 60);
    Samples slowed = DrawPath({{0, 0}, {300, 0}}, 100);
    for (int i = 45; i <= 55; ++i)
        slowed[i] = StrokePoint(3.0 * i, 0.0, 0.1 + 0.1 * std::abs(i - 50));
    const struct {
        const char* name;
        Samples samples;
        std::vector<int> kinds;
        std::vector<int> cuts;
        bool segment = true;
        int type = kAnyKind;
    } rows[] = {
        {"pieces share their breaks", CleanShapes()[4].samples, {3, 3, 3, 3}, {60, 120, 180}},
        {"two samples", {{0, 0, 1}, {5, 1, 1}}, {3}, {}},
        {"corner five samples in", DrawPath({{0, 0}, {100, 0}, {100, 80}}, 5), {3, 3}, {5}},
        {"corner four samples in", DrawPath({{0, 0}, {100, 0}, {100, 80}}, 4), {9}, {}},
        {"the type is a lower bound: none", straight, {3}, {}, true, 0},
        {"spline at least", straight, {9}, {}, true, CurveType_Spline},
        {"arc at least", arc, {5}, {}, true, CurveType_Arc},
        {"ellipse at least", arc, {6}, {}, true, CurveType_Ellipse},
        {"unsegmented", corner, {9}, {}, false},
        // Round strokes of more than 95 % are no arcs; without the closing step they stay splines.
        {"nearly closed circle", DrawEllipse({0, 0}, 80, 80, 0, 0, 350 * kDegree, 200), {9}, {}},
        // Two lines are not outvoted: a line that the pen slows on keeps its break.
        {"line with a pause", slowed, {3, 3}, {50}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Results results = Recognized(row.samples, row.segment, static_cast<CurveType_e>(row.type));
        ASSERT_EQ(results.Kinds(), row.kinds);
        EXPECT_EQ(results.Cuts(), row.cuts);
        ExpectChain(results, row.samples);
    }
}

TEST(Recognize, NothingToRecognise) {
    EXPECT_THAT(Recognized({}).Kinds(), IsEmpty());
    EXPECT_THAT(Recognized({{1, 1, 1}}).Kinds(), IsEmpty());
    EXPECT_THAT(Recognized({{0, 0, 1}, {1e-10, 0, 1}, {0, 1e-10, 1}}).Kinds(), IsEmpty());
    Samples samples = DrawPath({{0, 0}, {100, 0}, {100, 80}}, 60);
    for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity(), 1e308}) {
        samples[30].x = bad;
        samples[31].x = -bad;
        testing::internal::CaptureStderr();
        EXPECT_THAT(Recognized(samples).Kinds(), IsEmpty());
        EXPECT_THAT(testing::internal::GetCapturedStderr(),
                    StrEq("SketchRecognizer::RecognizeCurve - points must be finite\n"));
    }
}

TEST(Recognize, EarlierResultsSurvive) {
    SketchRecognizer recognizer;
    const auto line = StrokeOf(DrawPath({{0, 0}, {100, 0}}, 50));
    const auto corner = StrokeOf(DrawPath({{0, 0}, {100, 0}, {100, 100}}, 50));
    recognizer.Recognize(*line, true, kAnyKind);
    const Results first(recognizer);
    recognizer.Recognize(*corner, true, kAnyKind);
    const Results second(recognizer);
    EXPECT_EQ(first[0].GetStrokeId(), line->GetId());
    EXPECT_NEAR(first.CurveOf(0).Length(), 100.0, 1e-9);
    ASSERT_EQ(second.Count(), 2U);
    EXPECT_EQ(second[1].GetStrokeId(), corner->GetId());
}

// However the memory runs out, recognition returns, what it found is whole, and (under the leak sanitizer)
// nothing is lost, neither pieces nor the whole that would have taken their place.
TEST(Recognize, OutOfMemoryAnywhere) {
    testing::internal::CaptureStderr();
    for (const Shape& shape : CleanShapes()) {
        const auto stroke = StrokeOf(shape.samples);
        bool hasFailed = true;
        for (long nth = 1; hasFailed; ++nth) {
            SketchRecognizer recognizer;
            SM_fail_nth(nth);
            recognizer.Recognize(*stroke, true, kAnyKind);
            hasFailed = SM_ask_allocation_count() >= nth;
            SM_fail_nth(0);
            EXPECT_TRUE(hasFailed || nth > 3) << shape.name;
            const Results results(recognizer);
            for (std::size_t i = 0; i < results.Count(); ++i)
                EXPECT_TRUE(std::isfinite(results.CurveOf(i).Length())) << shape.name << ' ' << nth;
        }
    }
    testing::internal::GetCapturedStderr();
}

// --- Rounds

std::vector<int> PeriodicKinds(const Samples& samples, double thresholdDeg = 20.0) {
    SketchRecognizer recognizer;
    recognizer.AskPreferences()->SetPeriodicAngleThreshold(thresholdDeg);
    recognizer.RecognizePeriodic(*StrokeOf(samples));
    return Results(recognizer).Kinds();
}

TEST(RecognizePeriodic, AnyNumberOfRoundsInEitherSense) {
    for (const double rounds : {1.0, 0.97, 2.0, 2.4, 7.0})
        for (const double sense : {1.0, -1.0})
            for (const double radius : {30.0, 60.0}) {
                SCOPED_TRACE(testing::Message() << rounds << " rounds, " << sense << ", radius " << radius);
                const int n = static_cast<int>(90 * rounds);
                SketchRecognizer recognizer;
                recognizer.RecognizePeriodic(
                    *StrokeOf(DrawEllipse({40, -20}, radius, 30, 0.5, 0.7, 0.7 + sense * rounds * kTurn, n)));
                const Results round(recognizer);
                ASSERT_THAT(round.Kinds(), ElementsAre(radius == 30.0 ? 5 : 6));
                EXPECT_TRUE(round.CurveOf(0).IsClosed());
                if (radius == 30.0) {
                    EXPECT_NEAR(round.CurveOf(0).Length(), 30.0 * kTurn, 1e-5);
                }
                EXPECT_EQ(round[0].GetEndIndex(), n - 1);
            }
}

TEST(RecognizePeriodic, OpenOrAngularInkHasNoResult) {
    Samples back = DrawEllipse({0, 0}, 90, 90, 0, 0, 3.0, 90); // no turning in total
    for (int i = 89; i >= 0; --i)
        back.push_back(back[i]);
    const Samples none[] = {
        {},
        DrawPath({{0, 0}, {100, 0}}, 50),
        DrawPath({{0, 0}, {900, 0}, {900, 500}, {0, 500}, {0, 0}}, 60),
        DrawEllipse({0, 0}, 20, 20, 0, 0, 339 * kDegree, 90),   // its ends nearly meet
        DrawEllipse({0, 0}, 150, 150, 0, 0, 345 * kDegree, 90), // ends 39 units apart
        back,
    };
    for (const Samples& samples : none)
        EXPECT_THAT(PeriodicKinds(samples), IsEmpty());
    const Samples nearly = DrawEllipse({0, 0}, 20, 20, 0, 0, 330 * kDegree, 90); // ends 10 units apart
    EXPECT_THAT(PeriodicKinds(nearly, 29.0), IsEmpty());
    EXPECT_THAT(PeriodicKinds(nearly, 31.0), ElementsAre(5));
    EXPECT_THAT(PeriodicKinds(DrawEllipse({0, 0}, 20, 20, 0, 0, 341 * kDegree, 90), 1.0), ElementsAre(5));
}

// --- Results

TEST(RecognizedGeometry, KeyIndicesAreTheFarthestSamples) {
    const Samples samples = DrawPath({{0, 0}, {10, 0}, {3, 0}}, 10);
    Line line(Point(0, 0), Point(10, 0));
    Arc circle(Point(0, 0), 10.0); // closed: starts and ends at (10, 0)
    const struct {
        RecognizedGeometry result;
        int startKey, endKey;
    } rows[] = {
        {RecognizedGeometry(line, 5, 0, 20, 0.1, &samples), 10, 0}, // farthest from (0, 0) and (10, 0)
        {RecognizedGeometry(line, 5, 12, 18, 0.1, &samples), 12, 18},
        {RecognizedGeometry(line, 5, 12, 17, 0.1, nullptr), 12, 17},
        {RecognizedGeometry(circle, 5, 0, 20, 0.1, &samples), 0, 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.result.GetStartKeyIndex(), row.startKey);
        EXPECT_EQ(row.result.GetEndKeyIndex(), row.endKey);
    }
}

TEST(RecognizedGeometry, Equality) {
    Line line(Point(0, 0), Point(10, 0)), other(Point(0, 0), Point(10, 0));
    const RecognizedGeometry base(line, 5, 1, 9, 0.1, nullptr);
    EXPECT_TRUE(base == RecognizedGeometry(line, 5, 1, 9, 0.1 + 5e-9, nullptr));
    for (const RecognizedGeometry& different :
         {RecognizedGeometry(line, 5, 1, 9, 0.1 + 2e-8, nullptr),
          RecognizedGeometry(other, 5, 1, 9, 0.1, nullptr), RecognizedGeometry(line, 6, 1, 9, 0.1, nullptr),
          RecognizedGeometry(line, 5, 2, 9, 0.1, nullptr), RecognizedGeometry(line, 5, 1, 8, 0.1, nullptr)})
        EXPECT_FALSE(base == different);
}

TEST(RemoveSmallCurves, ShorterThanATwentiethOfTheLongestPiece) {
    SketchRecognizer recognizer(1, DrawPath({{0, 0}, {200, 0}}, 200));
    const SketchRecognizerAccess access{recognizer};
    access.RemoveSmallCurves(); // nothing to do
    StrokePiece piece;
    const auto add = [&](int first, int last, double length) {
        ASSERT_TRUE(access.TakePiece(first, last, piece));
        piece.origin = {0, 0};
        piece.scale = 1.0;
        access.AppendResult(std::make_unique<Line>(Point(0, 0), Point(length, 0)), piece, 0.0);
    };
    add(0, 101, 5.0 + 1e-6); // pieces of 100, 3 and 80 units: the limit is 5
    add(101, 105, 5.0 - 1e-6);
    add(105, 186, 80.0);
    for (const int noSuchIndex : {-1, 3})
        access.DeleteResult(noSuchIndex);
    access.RemoveSmallCurves();
    const Results left(recognizer);
    ASSERT_EQ(left.Count(), 2U);
    EXPECT_EQ(left[0].GetStartIndex(), 0);
    EXPECT_EQ(left[1].GetStartIndex(), 105);
}

} // namespace
} // namespace Tessera::Geometry
