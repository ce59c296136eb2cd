#include "tessera/recognition/internal/RoundedBox.h"

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tests/support/RoundedPath.h"
#include "tests/support/SyntheticInk.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

bool IsBox(const InkReading& reading) {
    return IsRounded(reading, 8);
}

// A rectangle of 200 x 120 whose corners are cut off straight.
std::vector<Point> Chamfered(double leg) {
    const double x = 100.0, y = 60.0;
    return Joined({Straight({0, -y}, {x - leg, -y}), Straight({x - leg, -y}, {x, leg - y}),
                   Straight({x, leg - y}, {x, y - leg}), Straight({x, y - leg}, {x - leg, y}),
                   Straight({x - leg, y}, {leg - x, y}), Straight({leg - x, y}, {-x, y - leg}),
                   Straight({-x, y - leg}, {-x, leg - y}), Straight({-x, leg - y}, {leg - x, -y}),
                   Straight({leg - x, -y}, {0, -y})},
                  0.0, 1.0, 30);
}

TEST(RoundedBox, OnlyWhereOneWasDrawn) {
    const auto oval = [](double b) {
        return PointsOf(Round({}, 100.0, b, 1.0, 1.0 + kTurn, 0.4), 0.0, 1.0, 200);
    };
    const struct {
        const char* name;
        std::vector<Point> pts;
        bool isBox;
    } rows[] = {{"hardly rounded", RoundedBox(18.0, 0.4), true},
                {"rounded", RoundedBox(30.0, 0.4), true},
                {"much rounded", RoundedBox(45.0, 0.1), true},
                {"nearly a slot", RoundedBox(54.0, 0.4), false},
                {"sharp", RoundedBox(0.0, 0.4), false},
                {"sharp, by a hand", RoundedBox(6.0, 0.4), false},
                {"rounded square", RoundedPath{30.0, 30.0}.Draw(0.3, 1.0), true},
                {"nearly a circle", RoundedPath{3.0, 3.0}.Draw(0.3, 1.0), false},
                {"a sharp corner", RoundedBox(25.0, 0.0, 3), false},
                {"chamfered", Chamfered(30.0), false},
                {"circle", oval(100.0), false},
                {"oval", oval(75.0), false},
                {"slim oval", oval(40.0), false}};
    for (const auto& row : rows)
        for (unsigned seed = 1; seed <= 5; ++seed)
            EXPECT_EQ(IsBox(InterpretInk(Trembling(row.pts, 0.2 * seed, seed), {})), row.isBox)
                << row.name << seed;
}

// Drawn by hands that stray, bow their sides and round sharp corners, too.
TEST(RoundedBox, OfSimulatedHands) {
    RandomPlans plans(3);
    int found = 0;
    int mistaken = 0;
    for (int i = 0; i < 150; ++i) {
        const InkPlan box = plans.RoundedBox();
        found += IsBox(InterpretInk(box.Draw(plans.Rng(), plans.CarefulHand()).ink, {})) ? 1 : 0;
        const double w = plans.Uniform(30.0, 90.0);
        const InkPlan sharp = InkPlan::Through({{-w, -30}, {w, -30}, {w, 30}, {-w, 30}}, true);
        mistaken += IsBox(InterpretInk(sharp.Draw(plans.Rng(), plans.AnyHand()).ink, {})) ? 1 : 0;
    }
    EXPECT_GE(found, 128);
    EXPECT_LE(mistaken, 1);
}

// Sides that differ by less than those of squares may are equal; sides, and diagonals of squares, lie along
// an axis within the snap angle; all of it a matter of tidying, and equal sides one of polygons, too.
TEST(RoundedBox, FollowsThePreferences) {
    const auto read = [](double across, double degrees, void (*set)(SketchRecognizerPreferences&)) {
        SketchRecognizerPreferences preferences;
        set(preferences);
        const RoundedPath box{60.0, across, 25.0, degrees * kTurn / 360.0};
        return InterpretInk(InkOf(box.Draw(0.01, 1.0)), preferences);
    };
    const auto length = [](const InkReading& reading, std::size_t i) {
        return static_cast<const Line&>(*reading.curves[i].curve).Length();
    };
    const auto along = [](const InkReading& reading) {
        const Vector d = static_cast<const Line&>(*reading.curves[0].curve).GetDirection();
        return std::remainder(std::atan2(d.y, d.x) * 360.0 / kTurn, 90.0);
    };
    const auto asIs = [](SketchRecognizerPreferences&) {};
    const InkReading square = read(54.0, 20.0, asIs); // 170 by 158
    ASSERT_TRUE(IsBox(square));
    for (std::size_t i = 0; i < 8; i += 2)
        EXPECT_NEAR(length(square, i), 114.0, 0.5);
    EXPECT_NEAR(length(read(40.0, 20.0, asIs), 2), 80.0, 0.5);
    EXPECT_NEAR(length(read(54.0, 20.0, [](auto& p) { p.SetRegularPolygonRecognition(false); }), 2), 108.0,
                0.5);
    EXPECT_EQ(along(read(40.0, 4.5, asIs)), 0.0);
    EXPECT_EQ(along(read(40.0, 94.0, asIs)), 0.0);
    EXPECT_NEAR(along(read(40.0, 5.5, asIs)), 5.5, 0.05);
    EXPECT_NEAR(along(read(40.0, 41.0, asIs)), 41.0, 0.05);
    EXPECT_NEAR(std::fabs(along(read(60.0, 41.0, asIs))), 45.0, 1e-9);
    EXPECT_NEAR(along(read(40.0, 4.5, [](auto& p) { p.SetSnapping(false); })), 4.5, 0.05);
    // Without this shape, corner by corner: eight curves as well, but not of one radius to the last digits.
    const auto radii = [&](void (*set)(SketchRecognizerPreferences&)) {
        std::vector<double> found;
        for (const InterpretedCurve& made : read(40.0, 20.0, set).curves)
            if (made.curve->GetType() == CurveType_Arc)
                found.push_back(static_cast<const Arc&>(*made.curve).GetRadius());
        const auto [least, most] = std::minmax_element(found.begin(), found.end());
        return found.size() == 4 && *most - *least < 1e-9;
    };
    EXPECT_TRUE(radii(asIs));
    EXPECT_FALSE(radii([](auto& p) { p.SetCurveTidy(false); }));
    EXPECT_FALSE(radii([](auto& p) { p.SetChangeCurveType(false); }));
}

} // namespace
} // namespace Tessera::Geometry
