#include "tessera/recognition/ClosedShape.h"

#include <gmock/gmock.h>

#include <cmath>
#include <memory>
#include <numbers>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/recognition/SketchRecognizer.h"
#include "tessera/strokes/Stroke.h"
#include "tests/support/DrawnStrokes.h"

namespace Tessera::Geometry {
namespace {

using Testing::DrawEllipse;
using Testing::DrawPath;
using Testing::Samples;

constexpr double kTurn = 2.0 * std::numbers::pi;

struct Answer {
    bool closed = false;
    int count = 0;
    std::unique_ptr<Curve> curve; ///< the first result's
    double deviation = 0.0;
    int first = 0, last = 0;
};

Answer RecognizedAndClosed(const Samples& samples, bool segment = true) {
    Stroke stroke;
    for (const StrokePoint& p : samples)
        stroke.AddPoint(p);
    SketchRecognizer recognizer;
    recognizer.Recognize(stroke, segment, CurveType_Line);
    Answer answer;
    answer.closed = CloseRoundStroke(recognizer);
    answer.count = static_cast<int>(recognizer.GetResults().size());
    for (RecognizedGeometry* result : recognizer.GetResults()) {
        if (!answer.curve) {
            answer.curve.reset(&result->GetResult());
            answer.deviation = result->GetMaxDeviation();
            answer.first = result->GetStartIndex();
            answer.last = result->GetEndIndex();
        } else {
            delete &result->GetResult();
        }
        delete result;
    }
    return answer;
}

TEST(CloseRoundStroke, CircleFromAnyStartInEitherSense) {
    for (const double start : {0.0, 1.0, 2.5, 4.0, 6.0})
        for (const double sweep : {kTurn, -kTurn, 0.97 * kTurn, -0.97 * kTurn, 1.02 * kTurn}) {
            SCOPED_TRACE(testing::Message() << start << " over " << sweep);
            const Answer answer =
                RecognizedAndClosed(DrawEllipse({700, -300}, 60, 60, 0, start, start + sweep, 150));
            ASSERT_TRUE(answer.closed);
            ASSERT_EQ(answer.count, 1);
            ASSERT_EQ(answer.curve->GetType(), CurveType_Arc);
            const auto& circle = static_cast<const Arc&>(*answer.curve);
            EXPECT_TRUE(circle.IsClosed());
            EXPECT_LT(circle.GetCenter().Distance(Point(700, -300)), 1e-6);
            EXPECT_NEAR(circle.GetRadius(), 60.0, 1e-6);
            EXPECT_EQ(answer.first, 0);
            EXPECT_EQ(answer.last, 149);
        }
}

TEST(CloseRoundStroke, OblongStrokesBecomeEllipses) {
    for (const double ratio : {0.3, 0.5, 0.7, 0.85})
        for (const double rotation : {0.0, 0.6, 1.5, 2.8}) {
            SCOPED_TRACE(testing::Message() << ratio << " turned " << rotation);
            const Answer answer =
                RecognizedAndClosed(DrawEllipse({20, 30}, 80, 80 * ratio, rotation, 1.0, 1.0 + kTurn, 200));
            ASSERT_TRUE(answer.closed);
            ASSERT_EQ(answer.curve->GetType(), CurveType_Ellipse);
            double r1 = 0.0;
            double r2 = 0.0;
            static_cast<const Ellipse&>(*answer.curve).AskRadii(r1, r2);
            EXPECT_TRUE(answer.curve->IsClosed());
            EXPECT_NEAR(r1, 80.0, 1e-4);
            EXPECT_NEAR(r2, 80.0 * ratio, 1e-4);
        }
}

// Radii that differ by less than 12 % make a circle, however well an ellipse would do.
TEST(CloseRoundStroke, NearlyRoundStrokesBecomeCircles) {
    for (const double ratio : {0.89, 0.95, 1.0}) {
        const Answer answer = RecognizedAndClosed(DrawEllipse({0, 0}, 80, 80 * ratio, 0.3, 0.0, kTurn, 200));
        ASSERT_TRUE(answer.closed);
        EXPECT_EQ(answer.curve->GetType(), CurveType_Arc) << ratio;
    }
}

// The ends of a slender oval bend enough to break the stroke; the pieces give way all the same.
TEST(CloseRoundStroke, OvalsThatCameInPieces) {
    Stroke stroke;
    for (const StrokePoint& p : DrawEllipse({0, 0}, 100, 40, 0.2, 1.0, 1.0 + kTurn, 100))
        stroke.AddPoint(p);
    SketchRecognizer recognizer;
    recognizer.Recognize(stroke, true, CurveType_Line);
    const std::vector<RecognizedGeometry*> pieces = recognizer.GetResults();
    ASSERT_GT(pieces.size(), 1U);
    ASSERT_TRUE(CloseRoundStroke(recognizer)); // deletes the pieces
    ASSERT_EQ(recognizer.GetResults().size(), 1U);
    RecognizedGeometry* result = recognizer.GetResults().front();
    const std::unique_ptr<Curve> curve(&result->GetResult());
    EXPECT_EQ(curve->GetType(), CurveType_Ellipse);
    EXPECT_TRUE(curve->IsClosed());
    EXPECT_EQ(result->GetStartIndex(), 0);
    EXPECT_EQ(result->GetEndIndex(), 99);
    delete result;
}

TEST(CloseRoundStroke, EndsMustMeet) {
    // 500 units long: the ends may be 20 apart.
    const double radius = 80.0;
    EXPECT_TRUE(
        RecognizedAndClosed(DrawEllipse({0, 0}, radius, radius, 0, 0, kTurn - 19.0 / radius, 200)).closed);
    const Answer open =
        RecognizedAndClosed(DrawEllipse({0, 0}, radius, radius, 0, 0, kTurn - 21.5 / radius, 200));
    EXPECT_FALSE(open.closed);
    EXPECT_EQ(open.count, 1);
    EXPECT_EQ(open.curve->GetType(), CurveType_Spline);
}

TEST(CloseRoundStroke, LeavesEverythingElseAlone) {
    const Answer line = RecognizedAndClosed(DrawPath({{0, 0}, {100, 0}}, 50));
    EXPECT_FALSE(line.closed);
    EXPECT_EQ(line.curve->GetType(), CurveType_Line);
    const Answer square = RecognizedAndClosed(DrawPath({{0, 0}, {99, 0}, {99, 99}, {0, 99}, {0, 0}}, 60));
    EXPECT_FALSE(square.closed);
    EXPECT_EQ(square.count, 4);
    // A closed spline that is neither circle nor ellipse: a lying eight.
    Samples eight;
    for (int i = 0; i <= 200; ++i)
        eight.emplace_back(150 * std::sin(kTurn * i / 200), 80 * std::sin(2 * kTurn * i / 200), 1.0);
    const Answer stays = RecognizedAndClosed(eight, false);
    EXPECT_FALSE(stays.closed);
    EXPECT_EQ(stays.curve->GetType(), CurveType_Spline);
    EXPECT_FALSE(RecognizedAndClosed({}).closed);
    EXPECT_FALSE(RecognizedAndClosed(Samples(20, StrokePoint(1, 1, 1))).closed);
}

} // namespace
} // namespace Tessera::Geometry
