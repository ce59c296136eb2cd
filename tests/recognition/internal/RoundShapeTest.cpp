#include "tessera/recognition/internal/RoundShape.h"

#include "tests/support/PenPaths.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

struct Found {
    std::optional<RoundShape> shape; // in model units
    double spread = 0.0;
};

Found Find(const InkStroke& ink, int samples) {
    const InkPath path = MakeInkPath(ink.samples);
    const PricedPath priced(path);
    const std::optional<EllipseEvidence> ellipse = FindEllipse(path);
    Found found;
    if (ellipse)
        found.shape = FindRoundShape(priced, *ellipse, samples);
    if (!found.shape)
        return found;
    found.spread = path.scale * std::sqrt(found.shape->meanSq);
    found.shape->centre = path.ToModel(found.shape->centre);
    for (double& radius : found.shape->radii)
        radius *= path.scale;
    return found;
}

constexpr double kRotation = 0.6435;

std::vector<Point> RoundInk(double a, double b, double degrees, double growth = 0.0) {
    return PointsOf(DriftingRound({70, -30}, a, b, degrees, growth, kRotation), 0.0, 1.0, 400);
}

TEST(RoundShape, FindsTheRoundBehindDriftGapAndOverlap) {
    const struct {
        const char* name;
        double a, b, degrees, growth, slack;
    } rows[] = {{"circle", 50, 50, 360, 0.0, 0.3},          {"clockwise", 50, 50, -360, 0.0, 0.3},
                {"with a gap", 50, 50, 300, 0.0, 0.3},      {"runs on", 50, 50, 430, 0.0, 0.3},
                {"twice", 50, 50, -720, 0.0, 0.3},          {"spiral", 50, 50, 400, 0.2, 2.0},
                {"ellipse", 80, 40, 365, 0.0, 0.3},         {"ellipse that drifts", 80, 40, -400, 0.15, 2.5},
                {"slim, with a gap", 80, 20, 330, 0.0, 0.3}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Found found = Find(Trembling(RoundInk(row.a, row.b, row.degrees, row.growth), 0.3, 3), 100);
        ASSERT_TRUE(found.shape);
        const RoundShape& shape = *found.shape;
        EXPECT_EQ(shape.isCircle, row.a == row.b);
        EXPECT_LT(shape.centre.Distance({70.0, -30.0}), row.slack);
        EXPECT_NEAR(shape.radii[0], row.a, row.slack);
        EXPECT_NEAR(shape.radii[1], row.b, row.slack);
        EXPECT_LT(found.spread, 0.3 + 0.3 * row.slack);
        if (!shape.isCircle) {
            EXPECT_NEAR(std::remainder(shape.rotation - kRotation, 0.5 * kTurn), 0.0, 0.03);
        }
    }
}

TEST(RoundShape, NothingForWhatStaysOpenOrWindsOn) {
    for (const double degrees : {200.0, 285.0, 810.0, -1000.0})
        EXPECT_FALSE(Find(InkOf(RoundInk(50, 50, degrees)), 100).shape) << degrees;
    EXPECT_FALSE(Find(InkOf(RoundInk(50, 50, 500.0, 0.6)), 100).shape); // a spiral that was meant
}

// Few samples for the length are a quick pen's, which takes less care that its circles are round.
TEST(RoundShape, AQuickHandMeansACircleWhereACarefulOneMeansAnEllipse) {
    const InkStroke ink = InkOf(RoundInk(50, 36, 360));
    EXPECT_FALSE(Find(ink, 120).shape->isCircle);
    EXPECT_TRUE(Find(ink, 40).shape->isCircle);
    EXPECT_TRUE(Find(InkOf(RoundInk(50, 40, 360)), 2000).shape->isCircle);
    EXPECT_FALSE(Find(InkOf(RoundInk(50, 28, 360)), 10).shape->isCircle);
}

// A round that is given costs what the ink strays from it: the best one least, and no more where it is known
// already. None has its drift explained.
TEST(RoundShape, AGivenRoundIsPricedByItsOwnDistances) {
    for (const double growth : {0.0, 0.2}) {
        const InkStroke ink = Trembling(RoundInk(80, 40, 370, growth), 0.3, 3);
        const InkPath path = MakeInkPath(ink.samples);
        const PricedPath priced(path);
        const EllipseEvidence ellipse = *FindEllipse(path);
        const double found = LengthOf(path, FindRoundShape(priced, ellipse, 100)->description);
        RoundShape given;
        given.centre = ellipse.centre;
        given.radii[0] = ellipse.a;
        given.radii[1] = ellipse.b;
        given.rotation = ellipse.angle;
        PriceRound(priced, given);
        const double best = LengthOf(path, given.description);
        if (growth > 0.0) {
            EXPECT_GT(best, found + 5.0);
        } else {
            EXPECT_NEAR(best, found, 0.5);
        }
        given.rotation += 0.2;
        PriceRound(priced, given);
        EXPECT_GT(LengthOf(path, given.description), best + 1.0);
    }
}

// Hands draw rounds with three bellies, at a price; what has five was meant to have them.
TEST(RoundShape, ThreeBelliesAreAHandsOwn) {
    const auto unexplained = [](int bellies, double size) {
        const Path wavy = [=](double t) {
            return (1.0 + size * std::cos(bellies * kTurn * t)) * Round({}, 50, 50, 0.0, kTurn)(t);
        };
        const Found found = Find(InkOf(PointsOf(wavy, 0.0, 1.0, 300)), 100);
        return found.shape ? found.shape->description : Description{1e9, 1e9};
    };
    EXPECT_LT(20.0 * unexplained(3, 0.05).sumSq, unexplained(5, 0.05).sumSq);
    EXPECT_GT(unexplained(3, 0.05).price, unexplained(5, 0.05).price);
    EXPECT_NEAR(unexplained(3, 0.0).price, unexplained(5, 0.0).price, 1e-6);
}

} // namespace
} // namespace Tessera::Geometry
