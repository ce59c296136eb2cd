#include "tessera/recognition/internal/WholeStroke.h"

#include "tessera/recognition/internal/SketchRecognizerAccess.h"
#include "tests/support/RecognizedResults.h"
#include "tests/support/SampleCurves.h"

namespace Tessera::Geometry {
namespace {

// Pieces as their letters tell: L line, A arc of the given degrees, E elliptic arc of the given degrees.
bool WholeWins(const std::vector<std::pair<char, double>>& pieces) {
    std::vector<Testing::CurvePtr> curves;
    std::vector<std::unique_ptr<RecognizedGeometry>> owned;
    std::vector<RecognizedGeometry*> results;
    for (const auto& [kind, degrees] : pieces) {
        const double end = 1.0 + degrees * Testing::kPi / 180.0;
        curves.push_back(kind == 'L'   ? Testing::MakeLine({0, 0}, {1, 0})
                         : kind == 'A' ? Testing::MakeArc({1, 2}, 5, 1.0, end)
                                       : Testing::MakeEllipse({1, 2}, 5, 3, 0.3, 1.0, end));
        owned.push_back(std::make_unique<RecognizedGeometry>(*curves.back(), 1, 0, 1, 0.0, nullptr));
        results.push_back(owned.back().get());
    }
    return IsWholeStrokePreferred(results);
}

TEST(WholeStroke, PreferredOverCurvesAndOverHooks) {
    EXPECT_TRUE(WholeWins({{'A', 10}}));
    EXPECT_TRUE(WholeWins({{'A', 10}, {'A', 10}, {'L', 0}}));
    EXPECT_TRUE(WholeWins({{'A', 271}, {'L', 0}}));
    EXPECT_TRUE(WholeWins({{'L', 0}, {'E', 271}}));
    EXPECT_FALSE(WholeWins({{'A', 269}, {'L', 0}}));
    EXPECT_FALSE(WholeWins({{'L', 0}, {'E', 269}}));
    EXPECT_FALSE(WholeWins({{'L', 0}, {'L', 0}, {'A', 300}}));
    EXPECT_FALSE(WholeWins({{'L', 0}, {'A', 300}, {'L', 0}, {'A', 300}}));
    EXPECT_FALSE(WholeWins({{'L', 0}}));
    EXPECT_FALSE(WholeWins({}));
}

// An arc on which the pen slows down: its two halves give way to it, unless nobody asks for the whole.
TEST(WholeStroke, CanBeSuppressed) {
    Testing::Samples arc = Testing::DrawEllipse({0, 0}, 100, 100, 0, 0, 4.0, 101);
    for (int i = 45; i <= 55; ++i)
        arc[i] = StrokePoint(arc[i].x, arc[i].y, 0.1 + 0.1 * std::abs(i - 50));
    const auto stroke = Testing::StrokeOf(arc);
    SketchRecognizer recognizer;
    recognizer.Recognize(*stroke, true, CurveType_Line);
    const Testing::Results whole(recognizer);
    EXPECT_THAT(whole.Kinds(), testing::ElementsAre(5));
    EXPECT_EQ(whole[0].GetEndIndex(), 100);
    SketchRecognizerAccess{recognizer}.SuppressWholeStroke();
    recognizer.Recognize(*stroke, true, CurveType_Line);
    const Testing::Results pieces(recognizer);
    EXPECT_THAT(pieces.Kinds(), testing::ElementsAre(5, 5));
    EXPECT_THAT(pieces.Cuts(), testing::ElementsAre(50));
}

} // namespace
} // namespace Tessera::Geometry
