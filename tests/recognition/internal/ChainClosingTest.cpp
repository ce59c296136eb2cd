#include "tessera/recognition/internal/ChainClosing.h"

#include "tessera/recognition/internal/ChainSearch.h"
#include "tests/support/PenPaths.h"
#include "tests/support/SyntheticInk.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

InkStroke Draw(const std::vector<Point>& corners, bool isClosed) {
    std::mt19937 rng(9);
    return InkPlan::Through(corners, isClosed).Draw(rng, Hand()).ink;
}

Chain BriefestClosed(const InkPath& path) {
    const PricedPath ink(path);
    std::vector<Chain> chains = SearchChains(ink);
    for (Chain& chain : chains)
        chain = CloseChain(ink, chain);
    return *std::min_element(chains.begin(), chains.end(), [&](const Chain& a, const Chain& b) {
        return LengthOf(ink, a) < LengthOf(ink, b);
    });
}

TEST(ChainClosing, PolygonsWhereverThePenStarts) {
    for (int sides = 3; sides <= 10; ++sides)
        for (const bool fromMiddle : {false, true}) {
            SCOPED_TRACE(sides);
            std::vector<Point> corners = PointsOf(Round({}, 100, 100, 0.3, 0.3 + kTurn), 0.0, 1.0, sides + 1);
            corners.pop_back();
            if (fromMiddle) // of a side: a corner of no turn
                corners.insert(corners.begin(), 0.5 * (corners.front() + corners.back()));
            const InkReading reading = InterpretInk(Draw(corners, true), {});
            EXPECT_TRUE(reading.isClosed);
            EXPECT_EQ(static_cast<int>(reading.curves.size()), sides);
        }
}

// The ends of a square's ink: short of each other, past each other, in a corner and along a side.
TEST(ChainClosing, ClosesWhatWasMeantToClose) {
    const struct {
        const char* name;
        std::vector<Point> corners;
        bool closes;
        std::size_t pieces;
    } rows[] = {
        {"gap in a corner", {{8, 0}, {100, 0}, {100, 100}, {0, 100}, {0, 9}}, true, 4},
        {"ends cross", {{-9, 0}, {100, 0}, {100, 100}, {0, 100}, {0, -9}}, true, 4},
        {"gap in a side", {{60, 0}, {100, 0}, {100, 100}, {0, 100}, {0, 0}, {45, 0}}, true, 4},
        {"ends overlap along a side", {{30, 0}, {100, 0}, {100, 100}, {0, 100}, {0, 0}, {60, 1}}, true, 4},
        {"open bracket", {{100, 0}, {0, 0}, {0, 100}, {100, 100}}, false, 3},
        {"caret", {{0, 0}, {50, 100}, {100, 0}}, false, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Chain chain = BriefestClosed(MakeInkPath(Draw(row.corners, false).samples));
        EXPECT_EQ(chain.isClosed, row.closes);
        EXPECT_EQ(chain.pieces.size(), row.pieces);
    }
}

} // namespace
} // namespace Tessera::Geometry
