#include "tessera/recognition/ClosedShape.h"

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/recognition/SketchRecognizer.h"
#include "tests/support/RecognizedResults.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

constexpr double kTurn = 2.0 * std::numbers::pi;

struct Answer {
    bool closed;
    Testing::Results results;

    /// The only result, which stands for all samples; null unless it was closed.
    const Curve* ClosedCurve(const Samples& samples) const {
        const bool isWhole = closed && results.Count() == 1 && results[0].GetStartIndex() == 0 &&
                             results[0].GetEndIndex() == static_cast<int>(samples.size()) - 1 &&
                             results.CurveOf(0).IsClosed();
        return isWhole ? &results.CurveOf(0) : nullptr;
    }
};

Answer RecognizedAndClosed(const Samples& samples, bool segment = true) {
    SketchRecognizer recognizer;
    recognizer.Recognize(*Testing::StrokeOf(samples), segment, CurveType_Line);
    const bool closed = CloseRoundStroke(recognizer);
    return {closed, Testing::Results(recognizer)};
}

// Radii that differ by less than 12 % make a circle, however well an ellipse would do. The ends of the most
// slender oval bend enough to break the stroke; the pieces give way all the same.
TEST(CloseRoundStroke, CirclesAndEllipsesFromAnyStartInEitherSense) {
    for (const double ratio : {0.3, 0.4, 0.7, 0.85, 0.89, 1.0})
        for (const double start : {0.2, 1.0, 2.8, 4.0})
            for (const double rounds :
                 {1.0, -1.0, 0.97, 1.02, -1.2, 2.0}) { // ends may lie apart past the start
                SCOPED_TRACE(testing::Message() << ratio << ", " << rounds << " from " << start);
                const Samples drawn =
                    DrawEllipse({700, -300}, 80, 80 * ratio, 0.5 * start, start, start + rounds * kTurn, 150);
                const Answer answer = RecognizedAndClosed(drawn);
                const Curve* curve = answer.ClosedCurve(drawn);
                ASSERT_NE(curve, nullptr);
                double r1 = 0.0, r2 = 0.0;
                if (ratio < 0.88) {
                    ASSERT_EQ(curve->GetType(), CurveType_Ellipse);
                    static_cast<const Ellipse&>(*curve).AskRadii(r1, r2);
                } else {
                    ASSERT_EQ(curve->GetType(), CurveType_Arc);
                    r1 = r2 = static_cast<const Arc&>(*curve).GetRadius();
                }
                if (ratio < 0.88 || ratio == 1.0) {
                    EXPECT_NEAR(r1, 80.0, 1e-4);
                    EXPECT_NEAR(r2, 80.0 * ratio, 1e-4);
                }
            }
    SketchRecognizer pieces;
    pieces.Recognize(*Testing::StrokeOf(DrawEllipse({20, 30}, 80, 32, 0.2, 1.0, 1.0 + kTurn, 100)), true,
                     CurveType_Line);
    EXPECT_GT(Testing::Results(pieces).Count(), 1U);
}

TEST(CloseRoundStroke, LeavesEverythingElseAlone) {
    Samples eight; // a closed spline that is neither circle nor ellipse
    for (int i = 0; i <= 200; ++i)
        eight.emplace_back(150 * std::sin(kTurn * i / 200), 80 * std::sin(2 * kTurn * i / 200), 1.0);
    // About 500 units long: the ends may be 20 apart.
    const auto open = [](double gap) { return DrawEllipse({0, 0}, 80, 80, 0, 0, kTurn - gap / 80, 200); };
    EXPECT_TRUE(RecognizedAndClosed(open(19.0)).closed);
    Samples back = DrawEllipse({0, 0}, 80, 80, 0, 0, 5.0, 90); // its ends meet, but it never went round
    back.insert(back.end(), back.rbegin(), back.rend());
    EXPECT_FALSE(RecognizedAndClosed(back).closed);
    const struct {
        Samples samples;
        bool segment;
        std::vector<int> kinds;
    } rows[] = {
        {open(21.5), true, {9}},
        {DrawPath({{0, 0}, {100, 0}}, 50), true, {3}},
        {DrawPath({{0, 0}, {99, 0}, {99, 99}, {0, 99}, {0, 0}}, 60), true, {3, 3, 3, 3}},
        {eight, false, {9}},
        {Samples(20, StrokePoint(1, 1, 1)), true, {}},
    };
    for (const auto& row : rows) {
        const Answer answer = RecognizedAndClosed(row.samples, row.segment);
        EXPECT_FALSE(answer.closed);
        EXPECT_EQ(answer.results.Kinds(), row.kinds);
    }
}

} // namespace
} // namespace Tessera::Geometry
