#include "tessera/recognition/internal/RegularPolygon.h"
#include "tests/support/PenPaths.h"
#include "tests/support/SegmentDistance.h"
#include "tests/support/SyntheticInk.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

InkReading Read(const InkStroke& ink) {
    return InterpretInk(ink, SketchRecognizerPreferences());
}

// Whether the ink comes back as the polygon that was planned, exact.
bool IsRegular(const Planned& drawn, int sides) {
    const InkReading reading = Read(drawn.ink);
    if (reading.shape != (sides == 4 ? InkShape::Square : InkShape::RegularPolygon) ||
        static_cast<int>(reading.curves.size()) != sides)
        return false;
    for (const InkJoint& joint : reading.joints) {
        EXPECT_NEAR(std::fabs(joint.turnDeg), 360.0 / sides, 1e-6);
        EXPECT_TRUE(std::any_of(drawn.corners.begin(), drawn.corners.end(), [&](const Point& corner) {
            return corner.Distance(joint.position) < 0.06 * drawn.size;
        }));
    }
    return true;
}

// From a corner or a side, to its start or short of it or beyond; a careful hand may fail once in
// twenty-five.
TEST(RegularPolygon, ComesBackWhateverItsNumberOfSides) {
    constexpr int kStrokes = 25;
    for (int sides = 3; sides <= 12; ++sides)
        for (const bool hasTimes : {true, false}) {
            SCOPED_TRACE(testing::Message() << sides << " sides, times " << hasTimes);
            RandomPlans plans(static_cast<unsigned>(sides));
            int exact = 0;
            int careful = 0;
            for (int i = 0; i < kStrokes; ++i) {
                const InkPlan plan = plans.RegularOf(sides);
                Hand still = plans.CarefulHand();
                still.tremor = still.stray = still.rounding = still.grid = 0.0;
                for (const Hand& hand : {still, plans.CarefulHand()}) {
                    Planned drawn = plan.Draw(plans.Rng(), hand);
                    drawn.ink.hasTimes = hasTimes;
                    (hand.stray > 0.0 ? careful : exact) += IsRegular(drawn, sides) ? 1 : 0;
                }
            }
            EXPECT_EQ(exact, kStrokes);
            EXPECT_GE(careful, kStrokes - 1);
        }
}

double SumSqFrom(std::vector<Point> corners, const std::vector<Point>& ink) {
    corners.push_back(corners.front());
    double sumSq = 0.0;
    for (const Point& p : ink)
        sumSq += std::pow(PolylineDistance(corners, p), 2);
    return sumSq;
}

// Moved, turned or scaled a little it lies farther from its ink.
TEST(RegularPolygon, LiesNearestToItsInk) {
    RandomPlans plans(11);
    for (const int sides : {5, 8, 12}) {
        SCOPED_TRACE(sides);
        const InkStroke ink = plans.RegularOf(sides).Draw(plans.Rng(), plans.BriskHand()).ink;
        const InkPath path = MakeInkPath(ink.samples);
        const std::optional<RegularPolygon> found =
            FindRegularPolygon(PricedPath(path), *FindEllipse(path), static_cast<int>(ink.samples.size()));
        ASSERT_TRUE(found);
        const double least = SumSqFrom(found->corners, path.pts);
        Point centre;
        for (const Point& corner : found->corners)
            centre += corner / sides;
        const struct {
            Point move, factor; // a complex number
        } changes[] = {{{0.02, 0}, {1, 0}}, {{-0.02, 0}, {1, 0}}, {{0, 0.02}, {1, 0}}, {{0, -0.02}, {1, 0}},
                       {{}, {1, 0.03}},     {{}, {1, -0.03}},     {{}, {1.02, 0}},     {{}, {0.98, 0}}};
        for (const auto& change : changes) {
            std::vector<Point> other = found->corners;
            for (Point& p : other) {
                const Point d = p - centre;
                p = centre + change.move +
                    Point(d.x * change.factor.x - d.y * change.factor.y,
                          d.x * change.factor.y + d.y * change.factor.x);
            }
            EXPECT_GT(SumSqFrom(other, path.pts), least);
        }
    }
}

TEST(RegularPolygon, RoundsStayRound) {
    RandomPlans plans(3);
    const auto expectRound = [](const InkStroke& ink, const char* what, int count) {
        const InkShape shape = Read(ink).shape;
        EXPECT_TRUE(shape == InkShape::Circle || shape == InkShape::Ellipse)
            << what << " " << count << " " << static_cast<int>(shape);
    };
    for (int samples = 8; samples <= 32; ++samples)
        for (const double b : {50.0, 35.0})
            for (const double turns : {0.95, 1.0, 1.08}) {
                const double from = plans.Uniform(0.0, kTurn);
                expectRound(
                    InkOf(PointsOf(Round({}, 50.0, b, from, from + turns * kTurn), 0.0, 1.0, samples + 1)),
                    "coarse", samples);
            }
    for (int i = 0; i < 60; ++i) {
        const double radius = 100.0;
        const InkPlan plan(
            {{plans.Uniform(0.0, kTurn), radius * kTurn * plans.Uniform(0.97, 1.06), plans.Sign() / radius}});
        expectRound(plan.Draw(plans.Rng(), i % 2 == 0 ? plans.CarefulHand() : plans.BriskHand()).ink, "drawn",
                    i);
    }
}

// Without the preference the corners are those that were drawn.
TEST(RegularPolygon, IsMadeExactWhereAskedFor) {
    RandomPlans plans(5);
    const Planned drawn = plans.RegularOf(9).Draw(plans.Rng(), plans.CarefulHand());
    SketchRecognizerPreferences preferences;
    preferences.SetRegularPolygonRecognition(false);
    const InkReading reading = InterpretInk(drawn.ink, preferences);
    EXPECT_EQ(reading.shape, InkShape::Polygon);
    EXPECT_EQ(reading.curves.size(), 9u);
    EXPECT_GT(std::fabs(std::fabs(reading.joints[0].turnDeg) - 40.0), 1e-3);
}

} // namespace
} // namespace Tessera::Geometry
