#include "tessera/recognition/SketchRecognizer.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <memory>
#include <numbers>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/Spline.h"
#include "tessera/kernel/internal/SmFault.h"
#include "tessera/recognition/internal/SketchRecognizerAccess.h"
#include "tessera/strokes/Stroke.h"
#include "tests/support/DrawnStrokes.h"
#include "tests/support/RecognizedResults.h"

namespace Tessera::Geometry {
namespace {

using Testing::DrawEllipse;
using Testing::DrawPath;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::Results;
using Testing::Samples;
using testing::StrEq;
using Testing::StrokeOf;

constexpr double kPi = std::numbers::pi;
constexpr auto kAnyKind = CurveType_Line;

Results Recognized(const Samples& samples, bool segment = true, CurveType_e type = kAnyKind) {
    SketchRecognizer recognizer;
    recognizer.Recognize(*StrokeOf(samples), segment, type);
    return Results(recognizer);
}

// A recogniser whose stroke is straight and has the given length and an unsegmented reading.
SketchRecognizerAccess Straight(SketchRecognizer& recognizer, double length) {
    recognizer.Recognize(*StrokeOf(DrawPath({{0, 0}, {length, 0}}, 100)), false, kAnyKind);
    const Results taken(recognizer);
    return {recognizer};
}

std::vector<double> Tolerances(const SketchRecognizerAccess& access) {
    std::vector<double> tol(4);
    access.AskRecognitionTolerances(0, 101, tol.data()); // 101: all hundred segments count
    return tol;
}

// --- Measures

// Of its hundred segments the last does not count for closing.
TEST(RecognizerMeasures, TolerancesFollowTheScheme) {
    using Prefs = SketchRecognizerPreferences;
    struct Row {
        int scheme;
        double length;
        std::vector<double> expected;
        double closing;
    };
    const Row rows[] = {
        {Prefs::ToleranceScheme_Mixed, 100.0, {5, 4, 5, 2.5}, 12.375},
        {Prefs::ToleranceScheme_Mixed, 1000.0, {20, 40, 40, 5}, 20.0},
        {Prefs::ToleranceScheme_Mixed, 10.0, {2.5, 2.5, 2.5, 2.5}, 2.5},
        {Prefs::ToleranceScheme_Absolute, 10.0, {20, 40, 40, 5}, 20.0},
        {Prefs::ToleranceScheme_Relative, 1000.0, {50, 40, 50, 25}, 123.75},
    };
    for (const Row& row : rows) {
        SketchRecognizer recognizer;
        const SketchRecognizerAccess access = Straight(recognizer, row.length);
        recognizer.AskPreferences()->SetToleranceScheme(row.scheme);
        EXPECT_THAT(Tolerances(access), testing::Pointwise(testing::DoubleEq(), row.expected)) << row.length;
        EXPECT_DOUBLE_EQ(recognizer.AskClosedStrokeTolerance(), row.closing) << row.length;
    }
}

// Zoom and page shrink every absolute tolerance; the spline's and the minimum do not follow the speed factor.
TEST(RecognizerMeasures, TolerancesFollowTheDrawingContext) {
    SketchRecognizer recognizer;
    const SketchRecognizerAccess access = Straight(recognizer, 10000.0);
    recognizer.AskPreferences()->SetZoomFactor(2.0);
    recognizer.AskPreferences()->SetPageScale(5.0);
    recognizer.AskPreferences()->SetSpeedFactor(4.0);
    EXPECT_THAT(Tolerances(access), ElementsAre(0.5, 1.0, 1.0, 0.5));
    recognizer.AskPreferences()->SetToleranceScheme(SketchRecognizerPreferences::ToleranceScheme_Relative);
    EXPECT_THAT(Tolerances(access), ElementsAre(500.0, 400.0, 500.0, 250.0));
    SketchRecognizer small;
    const SketchRecognizerAccess tiny = Straight(small, 1.0);
    *small.AskPreferences() = *recognizer.AskPreferences();
    small.AskPreferences()->SetToleranceScheme(SketchRecognizerPreferences::ToleranceScheme_Mixed);
    EXPECT_THAT(Tolerances(tiny), ElementsAre(0.25, 0.25, 0.25, 0.25));
}

TEST(RecognizerMeasures, LengthLeavesOutTheSegmentThatEndsAtLast) {
    SketchRecognizer recognizer;
    EXPECT_EQ(recognizer.GetStrokeLength(), 0.0);
    const SketchRecognizerAccess access = Straight(recognizer, 100.0);
    EXPECT_DOUBLE_EQ(recognizer.GetStrokeLength(), 100.0);
    EXPECT_DOUBLE_EQ(access.GetStrokeLength(0, 100), 99.0);
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
        {"triangle", DrawPath({{0, 0}, {150, 10}, {60, 120}, {0, 0}}, 60), {3, 3, 3}},
        {"rectangle", DrawPath({{0, 0}, {160, 0}, {160, 90}, {0, 90}, {0, 0}}, 60), {3, 3, 3, 3}},
    };
}

Samples Moved(Samples samples, double angle, bool mirror, double dx, double dy) {
    for (StrokePoint& p : samples) {
        const double x = p.x;
        const double y = mirror ? -p.y : p.y;
        p.x = std::cos(angle) * x - std::sin(angle) * y + dx;
        p.y = std::sin(angle) * x + std::cos(angle) * y + dy;
    }
    return samples;
}

// Every sample of each piece lies on its curve, wherever and however the shape was drawn.
TEST(Recognize, CleanShapesAnywhere) {
    for (const Shape& shape : CleanShapes())
        for (int turn = 0; turn < 36; ++turn)
            for (const bool mirror : {false, true}) {
                SCOPED_TRACE(testing::Message()
                             << shape.name << " turned " << turn << " mirrored " << mirror);
                const Samples drawn =
                    Moved(shape.samples, 0.1 + turn * kPi / 18, mirror, 300.0 * turn, -77.0);
                const Results results = Recognized(drawn);
                ASSERT_EQ(results.Kinds(), shape.kinds);
                EXPECT_EQ(results.Cuts(), Recognized(shape.samples).Cuts());
                for (std::size_t i = 0; i < results.Count(); ++i) {
                    EXPECT_LT(results[i].GetMaxDeviation(), 1e-6);
                    for (int j = results[i].GetStartIndex(); j <= results[i].GetEndIndex(); ++j)
                        ASSERT_LT(results.CurveOf(i).DistanceBounded(drawn[static_cast<std::size_t>(j)]),
                                  1e-3);
                }
            }
}

const std::vector<int> kAnyCuts = {-1};

struct Reading {
    const char* name;
    Samples samples;
    std::vector<int> kinds;
    std::vector<int> cuts;
    bool segment = true;
    int type = kAnyKind;
};

TEST(Recognize, KindsAndCuts) {
    const Samples straight = DrawPath({{0, 0}, {100, 50}}, 60);
    const Samples arc = DrawEllipse({0, 0}, 90, 90, 0, 0.3, 3.4, 150);
    const Samples corner = DrawPath({{0, 0}, {100, 0}, {100, 80}}, 60);
    Samples slowed = DrawPath({{0, 0}, {300, 0}}, 100);
    for (int i = 45; i <= 55; ++i)
        slowed[static_cast<std::size_t>(i)] = StrokePoint(3.0 * i, 0.0, 0.1 + 0.1 * std::abs(i - 50));
    std::vector<Reading> rows = {
        {"pieces share their breaks",
         DrawPath({{0, 0}, {160, 0}, {160, 90}, {0, 90}, {0, 0}}, 60),
         {3, 3, 3, 3},
         {60, 120, 180}},
        {"the type is a lower bound: none", straight, {3}, {}, true, 0},
        {"spline at least", straight, {9}, {}, true, CurveType_Spline},
        {"arc at least", arc, {5}, {}, true, CurveType_Arc},
        {"ellipse at least", arc, {6}, {}, true, CurveType_Ellipse},
        {"spline at least, arc", arc, {9}, {}, true, CurveType_Spline},
        {"unsegmented", corner, {9}, {}, false},
        // Round strokes of more than 95 % are no arcs; without the closing step they stay splines.
        {"nearly closed circle", DrawEllipse({0, 0}, 80, 80, 0, 0, 350 * kPi / 180, 200), {9}, {}},
        // Two lines are not outvoted: a line that the pen slows on keeps its break.
        {"line with a pause", slowed, {3, 3}, {50}},
    };
    for (const Shape& shape : CleanShapes()) // backwards
        rows.push_back({shape.name,
                        {shape.samples.rbegin(), shape.samples.rend()},
                        {shape.kinds.rbegin(), shape.kinds.rend()},
                        kAnyCuts});
    for (const Reading& row : rows) {
        SCOPED_TRACE(row.name);
        const Results results = Recognized(row.samples, row.segment, static_cast<CurveType_e>(row.type));
        ASSERT_EQ(results.Kinds(), row.kinds);
        if (row.cuts != kAnyCuts) {
            EXPECT_EQ(results.Cuts(), row.cuts);
        }
        for (std::size_t i = 0; i + 1 < results.Count(); ++i)
            EXPECT_EQ(results[i].GetEndIndex(), results[i + 1].GetStartIndex());
        EXPECT_EQ(results[0].GetStartIndex(), 0);
        EXPECT_EQ(results[results.Count() - 1].GetEndIndex(), static_cast<int>(row.samples.size()) - 1);
    }
}

TEST(Recognize, NothingToRecognise) {
    EXPECT_THAT(Recognized({}).Kinds(), IsEmpty());
    EXPECT_THAT(Recognized({{1, 1, 1}}).Kinds(), IsEmpty());
    EXPECT_THAT(Recognized(Samples(50, StrokePoint(3, 4, 1))).Kinds(), IsEmpty());
    EXPECT_THAT(Recognized({{0, 0, 1}, {1e-10, 0, 1}, {0, 1e-10, 1}}).Kinds(), IsEmpty());
    EXPECT_THAT(Recognized({{0, 0, 1}, {5, 1, 1}}).Kinds(), ElementsAre(3));
}

// Four samples in a zigzag wider than every tolerance: three form no spline, four do.
TEST(Recognize, SplinesNeedFourSamples) {
    SketchRecognizer recognizer;
    recognizer.AskPreferences()->SetToleranceScheme(SketchRecognizerPreferences::ToleranceScheme_Absolute);
    double tight[4] = {1e-6, 1e-6, 1e-6, 0.1};
    recognizer.AskPreferences()->SetAbsoluteRecognitionTolerances(tight);
    recognizer.AskPreferences()->SetCloseStrokeTolerances(1000.0, 0.5); // no circle stays open
    recognizer.Recognize(*StrokeOf({{0, 0, 1}, {10, 0, 1}, {0, 1, 1}}), true, kAnyKind);
    EXPECT_THAT(Results(recognizer).Kinds(), IsEmpty());
    recognizer.Recognize(*StrokeOf({{0, 0, 1}, {10, 0, 1}, {0, 3, 1}, {10, 9, 1}}), true, kAnyKind);
    EXPECT_THAT(Results(recognizer).Kinds(), ElementsAre(9));
}

TEST(Recognize, BadSamplesAreReportedNotThrown) {
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
    ASSERT_EQ(first.Count(), 1U);
    EXPECT_EQ(first[0].GetStrokeId(), line->GetId());
    EXPECT_NEAR(first.CurveOf(0).Length(), 100.0, 1e-9);
    ASSERT_EQ(second.Count(), 2U);
    EXPECT_EQ(second[1].GetStrokeId(), corner->GetId());
}

// However the memory runs out, recognition returns, what it found is whole, and (under the leak sanitizer)
// nothing is lost: not the whole-stroke candidate either when a later piece fails.
TEST(Recognize, OutOfMemoryAnywhere) {
    for (const Shape& shape : CleanShapes()) {
        SCOPED_TRACE(shape.name);
        const auto stroke = StrokeOf(shape.samples);
        SM_fail_nth(1L << 30);
        Recognized(shape.samples);
        const long allocations = SM_ask_allocation_count();
        ASSERT_GT(allocations, 3);
        for (long nth = 1; nth <= allocations; ++nth) {
            SketchRecognizer recognizer;
            testing::internal::CaptureStderr();
            SM_fail_nth(nth);
            recognizer.Recognize(*stroke, true, kAnyKind);
            SM_fail_nth(0);
            testing::internal::GetCapturedStderr();
            const Results results(recognizer);
            for (std::size_t i = 0; i < results.Count(); ++i)
                EXPECT_TRUE(std::isfinite(results.CurveOf(i).Length()));
        }
    }
}

// --- Results

TEST(RecognizedGeometry, KeyIndicesAreTheFarthestSamples) {
    const Samples samples = DrawPath({{0, 0}, {10, 0}, {3, 0}}, 10);
    Line line(Point(0, 0), Point(10, 0));
    const RecognizedGeometry result(line, 5, 0, 20, 0.1, &samples);
    EXPECT_EQ(result.GetStartKeyIndex(), 10); // farthest from (0, 0)
    EXPECT_EQ(result.GetEndKeyIndex(), 0);    // farthest from (10, 0)
    const RecognizedGeometry part(line, 5, 12, 18, 0.1, &samples);
    EXPECT_EQ(part.GetStartKeyIndex(), 12);
    EXPECT_EQ(part.GetEndKeyIndex(), 18);
    const RecognizedGeometry unsearched(line, 5, 12, 18, 0.1, nullptr);
    EXPECT_EQ(unsearched.GetStartKeyIndex(), 12);
    EXPECT_EQ(unsearched.GetEndKeyIndex(), 18);
    Arc circle(Point(0, 0), 10.0); // closed: starts and ends at (10, 0)
    const RecognizedGeometry closed(circle, 5, 0, 20, 0.1, &samples);
    EXPECT_EQ(closed.GetStartKeyIndex(), 0);
    EXPECT_EQ(closed.GetEndKeyIndex(), 0);
}

TEST(RecognizedGeometry, Equality) {
    Line line(Point(0, 0), Point(10, 0));
    Line other(Point(0, 0), Point(10, 0));
    const RecognizedGeometry base(line, 5, 1, 9, 0.1, nullptr);
    EXPECT_TRUE(base == RecognizedGeometry(line, 5, 1, 9, 0.1 + 5e-9, nullptr));
    for (const RecognizedGeometry& different :
         {RecognizedGeometry(line, 5, 1, 9, 0.1 + 2e-8, nullptr),
          RecognizedGeometry(other, 5, 1, 9, 0.1, nullptr), RecognizedGeometry(line, 6, 1, 9, 0.1, nullptr),
          RecognizedGeometry(line, 5, 2, 9, 0.1, nullptr), RecognizedGeometry(line, 5, 1, 8, 0.1, nullptr)})
        EXPECT_FALSE(base == different);
}

TEST(RemoveSmallCurves, ShorterThanATwentiethOfTheLongestPiece) {
    const Samples samples = DrawPath({{0, 0}, {200, 0}}, 200);
    SketchRecognizer recognizer(1, samples);
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
    add(101, 105, 3.0);
    add(105, 186, 80.0);
    access.RemoveSmallCurves();
    const Results left(recognizer);
    ASSERT_EQ(left.Count(), 2U);
    EXPECT_EQ(left[0].GetStartIndex(), 0);
    EXPECT_EQ(left[1].GetStartIndex(), 105);
}

TEST(DeleteResult, IgnoresBadIndices) {
    SketchRecognizer recognizer;
    recognizer.Recognize(*StrokeOf(DrawPath({{0, 0}, {9, 0}}, 9)), true, kAnyKind);
    const SketchRecognizerAccess access{recognizer};
    access.DeleteResult(-1);
    access.DeleteResult(1);
    ASSERT_EQ(recognizer.GetResults().size(), 1U);
    access.DeleteResult(0);
    EXPECT_THAT(recognizer.GetResults(), IsEmpty());
}

} // namespace
} // namespace Tessera::Geometry
