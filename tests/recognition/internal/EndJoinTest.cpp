#include "tessera/recognition/internal/EndJoin.h"

#include "tests/support/PenPaths.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

InkPath PathAlong(const std::vector<Point>& pts) {
    return MakeInkPath(InkOf(pts).samples);
}

// Most of a round and more: the rest is filled in, what was drawn twice is cut off, and the path is begun
// elsewhere.
TEST(EndJoin, RoundsComeBackToTheirStart) {
    for (const double degrees : {325.0, 345.0, 358.0, 375.0, 390.0}) {
        SCOPED_TRACE(degrees);
        const InkPath path = PathAlong(PointsOf(Round({}, 50, 50, 0.3, 0.3 + degrees * kTurn / 360.0)));
        const double radius = 50.0 / path.scale;
        const std::optional<EndJoin> join = JoinEnds(path, 0.125 * path.length);
        ASSERT_TRUE(join);
        const double slack = 2.6 * path.step;
        EXPECT_NEAR(path.step * join->cut, std::max(0.0, degrees / 360.0 - 1.0) * kTurn * radius, slack);
        const InkPath begun = BegunAt(path, *join, 20);
        EXPECT_EQ(BegunAt(path.source, *join, 20, path.source.back()), begun.source);
        EXPECT_EQ(begun.pts.front(), path.pts[20]);
        EXPECT_EQ(begun.pts.back(), path.pts[20]);
        EXPECT_NEAR(begun.length, kTurn * radius, slack);
        const Point centre = path.FromModel({0, 0});
        for (std::size_t i = 1; i < begun.pts.size(); ++i) {
            EXPECT_NEAR(begun.pts[i].Distance(centre), radius, 0.02);
            EXPECT_LE(begun.pts[i].Distance(begun.pts[i - 1]), slack);
        }
    }
}

TEST(EndJoin, CornersStayAsTheyAre) {
    const auto joins = [](std::initializer_list<Path> sides) {
        const InkPath path = PathAlong(Joined(sides));
        return JoinEnds(path, 0.125 * path.length).has_value();
    };
    const Path right = Straight({100, 0}, {100, 100});
    const Path top = Straight({100, 100}, {0, 100});
    const Path bottom = Straight({0, 0}, {100, 0});
    EXPECT_FALSE(joins({bottom, right, top, Straight({0, 100}, {0, 30})})) << "gap";
    EXPECT_FALSE(joins({bottom, right, top, Straight({0, 100}, {0, -30})})) << "crossing";
    const Path left = Straight({0, 100}, {0, 0});
    EXPECT_TRUE(joins({Straight({60, 0}, {100, 0}), right, top, left, Straight({0, 0}, {40, 0})}));
    EXPECT_FALSE(joins({Straight({90, 0}, {100, 0}), right, top, left, Straight({0, 0}, {10, 0})})) << "far";
}

} // namespace
} // namespace Tessera::Geometry
