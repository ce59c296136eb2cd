#include "tessera/recognition/internal/WholeStroke.h"

#include <gmock/gmock.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <utility>
#include <vector>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/recognition/internal/SketchRecognizerAccess.h"
#include "tests/support/RecognizedResults.h"

namespace Tessera::Geometry {
namespace {

constexpr double kDegree = std::numbers::pi / 180.0;

// Pieces as their letters tell: L line, A arc of the given degrees, E elliptic arc of the given degrees.
bool WholeWins(const std::vector<std::pair<char, double>>& pieces) {
    std::vector<std::unique_ptr<Curve>> curves;
    std::vector<std::unique_ptr<RecognizedGeometry>> owned;
    std::vector<RecognizedGeometry*> results;
    for (const auto& [kind, degrees] : pieces) {
        double centre[3] = {1, 2, 0};
        double radii[2] = {5, 3};
        const double end = 1.0 + degrees * kDegree;
        if (kind == 'L')
            curves.push_back(std::make_unique<Line>(Point(0, 0), Point(1, 0)));
        else if (kind == 'A')
            curves.push_back(std::make_unique<Arc>(centre, 5.0, 1.0, end));
        else
            curves.push_back(std::make_unique<Ellipse>(centre, radii, 0.3, 1.0, end));
        owned.push_back(std::make_unique<RecognizedGeometry>(*curves.back(), 1, 0, 1, 0.0, nullptr));
        results.push_back(owned.back().get());
    }
    return IsWholeStrokePreferred(results);
}

TEST(WholeStroke, PreferredOverCurvesAndOverHooks) {
    struct Row {
        std::vector<std::pair<char, double>> pieces;
        bool whole;
    };
    const Row rows[] = {
        {{{'L', 0}, {'A', 300}}, true},
        {{{'L', 0}, {'A', 200}}, false},
        {{{'A', 271}, {'L', 0}}, true},
        {{{'A', 269}, {'L', 0}}, false},
        {{{'L', 0}, {'E', 271}}, true},
        {{{'L', 0}, {'E', 269}}, false},
        {{{'L', 0}, {'L', 0}, {'A', 300}}, false},
        {{{'A', 10}, {'A', 10}, {'L', 0}}, true},
        {{{'L', 0}, {'A', 300}, {'L', 0}, {'A', 300}}, false},
        {{{'L', 0}}, false},
        {{{'A', 10}}, true},
        {{}, false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(WholeWins(row.pieces), row.whole) << testing::PrintToString(row.pieces);
}

// An arc on which the pen slows down: its two halves give way to it, unless nobody asks for the whole.
TEST(WholeStroke, CanBeSuppressed) {
    Testing::Samples arc = Testing::DrawEllipse({0, 0}, 100, 100, 0, 0, 4.0, 101);
    for (int i = 45; i <= 55; ++i) {
        StrokePoint& p = arc[static_cast<std::size_t>(i)];
        p = StrokePoint(p.x, p.y, 0.1 + 0.1 * std::abs(i - 50));
    }
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
