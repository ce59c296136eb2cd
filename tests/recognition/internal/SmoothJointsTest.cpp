#include "tessera/recognition/internal/SmoothJoints.h"

#include "tests/support/PenPaths.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

/// Two pieces of the path, broken at a point of it.
struct Broken {
    Broken(const std::vector<Point>& pts, const Point& at, bool firstIsArc, bool secondIsArc)
        : path(MakeInkPath(InkOf(pts).samples)), ink(path) {
        int joint = 0;
        for (int i = 0; i < path.Size(); ++i)
            if (path.ToModel(path.pts[static_cast<std::size_t>(i)]).Distance2(at) <
                path.ToModel(path.pts[static_cast<std::size_t>(joint)]).Distance2(at))
                joint = i;
        const PiecePrices one = PriceBoth(ink, 0, joint);
        const PiecePrices other = PriceBoth(ink, joint, path.Size() - 1);
        before = firstIsArc ? one.arc : one.line;
        after = secondIsArc ? other.arc : other.line;
    }
    JointSight Look() const { return LookAtJoint(ink, before, after); }

    InkPath path;
    PricedPath ink;
    ChainPiece before;
    ChainPiece after;
};

std::vector<Point> Joined(std::vector<Point> pts, const std::vector<Point>& more) {
    pts.insert(pts.end(), more.begin() + 1, more.end());
    return pts;
}

/// A line to the origin, then an arc of radius 60 to the left whose start is turned by an angle.
std::vector<Point> LineAndArc(double turnDeg) {
    const double turn = turnDeg * kTurn / 360.0;
    const Point centre(-60.0 * std::sin(turn), 60.0 * std::cos(turn));
    return Joined(PointsOf(Straight({-100, 0}, {0, 0})),
                  PointsOf(Round(centre, 60, 60, turn - 0.25 * kTurn, turn + 0.05 * kTurn)));
}

/// Two lines that enclose a corner, rounded with a radius.
std::vector<Point> Bent(double turnDeg, double radius) {
    const double turn = turnDeg * kTurn / 360.0;
    const double cut = radius * std::tan(0.5 * turn);
    const Point ahead(std::cos(turn), std::sin(turn));
    std::vector<Point> pts = PointsOf(Straight({-100, 0}, {-cut, 0}));
    if (radius > 0.0)
        pts =
            Joined(pts, PointsOf(Round({-cut, radius}, radius, radius, -0.25 * kTurn, turn - 0.25 * kTurn)));
    return Joined(pts, PointsOf(Straight(cut * ahead, 100.0 * ahead)));
}

TEST(SmoothJoints, TellsTangentsBendsAndCorners) {
    const auto look = [](const std::vector<Point>& pts, bool isArc) {
        return Broken(pts, {0, 0}, false, isArc).Look();
    };
    EXPECT_EQ(look(LineAndArc(0.0), true), JointSight::Tangent);
    EXPECT_EQ(look(LineAndArc(15.0), true), JointSight::Tangent);
    EXPECT_EQ(look(LineAndArc(60.0), true), JointSight::Corner);
    EXPECT_EQ(look(LineAndArc(-60.0), true), JointSight::Corner);
    EXPECT_EQ(look(Bent(60.0, 0.0), false), JointSight::Corner);
    EXPECT_EQ(look(Bent(60.0, 90.0), false), JointSight::Bend);
    EXPECT_EQ(look(Bent(130.0, 40.0), false), JointSight::Corner); // however round its tip
    const std::vector<Point> notched =
        Joined(Joined(PointsOf(Straight({-100, 0}, {-8, 0})), PointsOf(Straight({-8, 0}, {0, 9}))),
               Joined(PointsOf(Straight({0, 9}, {8, 0})), PointsOf(Straight({8, 0}, {100, 0}))));
    EXPECT_EQ(Broken(notched, {0, 9}, false, false).Look(), JointSight::Corner); // though the lines go on
}

TEST(SmoothJoints, KeepsWhatWasJudgedAndLeavesSeamsToClosing) {
    Broken corner(LineAndArc(60.0), {0, 0}, false, true);
    corner.after.isJudged = true;
    corner.after.joint = JointSight::Bend;
    EXPECT_EQ(corner.Look(), JointSight::Bend);
    Broken smooth(LineAndArc(0.0), {0, 0}, false, true);
    ++smooth.after.first;
    EXPECT_EQ(smooth.Look(), JointSight::Corner);
}

} // namespace
} // namespace Tessera::Geometry
