// What the ink shows before anything is read into it: its ellipse, its turns, its sharp corners.
#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "tessera/recognition/internal/CornerEvidence.h"
#include "tessera/recognition/internal/EllipseEvidence.h"
#include "tessera/recognition/internal/SharpPolygon.h"
#include "tests/support/SyntheticInk.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

constexpr double kTurn = 2.0 * std::numbers::pi;

TEST(EllipseEvidence, KnowsTheEllipseThatWasDrawn) {
    const struct {
        double a, b, angle, sweep;
    } rows[] = {{60, 40, 0.3, kTurn}, {60, 20, 1.4, -kTurn}, {90, 50, -0.7, 0.7 * kTurn}, {50, 50, 0, kTurn}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.a << " x " << row.b << ", " << row.sweep);
        std::vector<InkSample> ink;
        for (int i = 0; i <= 200; ++i) {
            const double t = row.sweep * i / 200.0;
            const Point p(row.a * std::cos(t), row.b * std::sin(t));
            const double c = std::cos(row.angle);
            const double s = std::sin(row.angle);
            ink.push_back({300.0 + c * p.x - s * p.y, s * p.x + c * p.y, 0.0});
        }
        const InkPath path = MakeInkPath(ink);
        const std::optional<EllipseEvidence> found = FindEllipse(path);
        ASSERT_TRUE(found);
        EXPECT_LT(path.ToModel(found->centre).Distance({300.0, 0.0}), 0.5);
        EXPECT_NEAR(found->a * path.scale, row.a, 0.5);
        EXPECT_NEAR(found->b * path.scale, row.b, 0.5);
        const bool isRound = row.a == row.b;
        EXPECT_TRUE(isRound || std::fabs(std::remainder(found->angle - row.angle, 0.5 * kTurn)) < 0.02);
        EXPECT_NEAR(found->winding, row.sweep / kTurn, 0.01);
        EXPECT_NEAR(found->back, 0.0, 1e-9);
        for (const double distance : found->distance)
            EXPECT_LT(std::fabs(distance), 0.01);
    }
}

// A turn is seen with its sense within two points of the corner, whatever is rounded off beside it.
TEST(CornerEvidence, SeesHowFarTheInkTurns) {
    for (const double degrees : {-120.0, -60.0, 40.0, 90.0, 150.0}) {
        SCOPED_TRACE(degrees);
        std::mt19937 rng(2);
        Hand still;
        still.tremor = still.stray = 0.0;
        still.rounding = 0.006;
        const double turn = degrees * kTurn / 360.0;
        const InkPath path =
            MakeInkPath(InkPlan({{0.4, 100.0, 0.0}, {turn, 100.0, 0.0}}).Draw(rng, still).ink.samples);
        const int corner = path.Size() / 2;
        for (const int beside : {-2, 0, 2}) { // a corner between two points is cut
            EXPECT_GE(SignedTurn(path, corner + beside) / turn, 0.8);
            EXPECT_LE(SignedTurn(path, corner + beside) / turn, 1.01);
        }
        EXPECT_NEAR(SignedTurn(path, corner / 2), 0.0, 0.02);
    }
}

// Polygons of five sides and more whose corners are sharp; not their rounds, nor what has fewer sides.
TEST(SharpPolygon, TellsPolygonsFromRounds) {
    const auto sidesOf = [](int corners, double rounding) {
        std::vector<Point> at;
        for (int i = 0; i < corners; ++i)
            at.push_back(100.0 * Point(std::cos(kTurn * i / corners), std::sin(kTurn * i / corners)));
        std::mt19937 rng(4);
        Hand hand;
        hand.stray = 0.001;
        hand.tremor = 0.0005;
        hand.rounding = rounding;
        const InkPath path = MakeInkPath(InkPlan::Through(at, true).Draw(rng, hand).ink.samples);
        const std::optional<Chain> found = FindSharpPolygon(PricedPath(path));
        return found && found->isClosed && AreLines(*found) ? static_cast<int>(found->pieces.size()) : 0;
    };
    for (const int corners : {5, 6, 7, 8})
        EXPECT_EQ(sidesOf(corners, 0.006), corners);
    EXPECT_EQ(sidesOf(4, 0.006), 0);
    EXPECT_EQ(sidesOf(60, 0.006), 0) << "a round";
    EXPECT_EQ(sidesOf(7, 0.2), 0) << "its corners rounded off";
}

} // namespace
} // namespace Tessera::Geometry
