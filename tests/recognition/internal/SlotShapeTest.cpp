#include "tessera/recognition/internal/SlotShape.h"

#include "tessera/geometry/Line.h"
#include "tests/support/RoundedPath.h"
#include "tests/support/SyntheticInk.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

bool IsSlot(const InkReading& reading) {
    return IsRounded(reading, 4);
}

TEST(SlotShape, OnlyWhereOneWasDrawn) {
    const RoundedPath slot{90.0};
    const RoundedPath stub{6.0};
    const RoundedPath lath{200.0};
    const auto oval = [](double b) {
        return PointsOf(Round({}, 100.0, b, 1.0, 1.0 + kTurn, 0.4), 0.0, 1.0, 200);
    };
    std::vector<Point> spiral;
    for (int i = 0; i < 240; ++i)
        spiral.push_back(
            Bulging([&](double u) { return slot.At(0.1 + u); }, 0.0, 1.0, 0.05 * (120 - i), 0.0)(i / 239.0));
    const struct {
        const char* name;
        std::vector<Point> pts;
        bool isSlot;
    } rows[] = {{"slot", slot.Draw(0.1, 1.0), true},
                {"slot that drifts outwards", spiral, true},
                {"slot without lines", stub.Draw(0.1, 1.0), false},
                {"slot without an end", lath.Draw(0.5, lath.EndOf(2)), false},
                {"box with half circles", RoundedBox(60.0, 0.4), true},
                {"box nearly without straight ends", RoundedBox(54.0, 0.4), true},
                {"rounded box", RoundedBox(30.0, 0.4), false},
                {"box", RoundedBox(0.0, 0.4), false},
                {"circle", oval(100.0), false},
                {"oval", oval(75.0), false},
                {"slim oval", oval(40.0), false}};
    for (const auto& row : rows)
        for (unsigned seed = 1; seed <= 5; ++seed)
            EXPECT_EQ(IsSlot(InterpretInk(Trembling(row.pts, 0.3 * seed, seed), {})), row.isSlot)
                << row.name << seed;
    RandomPlans plans(3);
    int found = 0;
    for (int i = 0; i < 100; ++i) {
        const InkPlan plan = plans.SlotOf(plans.Uniform(1.2, 6.0));
        found += IsSlot(InterpretInk(plan.Draw(plans.Rng(), plans.AnyHand()).ink, {})) ? 1 : 0;
    }
    EXPECT_GE(found, 94);
}

// Along an axis within the snap angle; a matter of tidying, not of polygons.
TEST(SlotShape, FollowsThePreferences) {
    const auto read = [](double degrees, void (*set)(SketchRecognizerPreferences&)) {
        SketchRecognizerPreferences preferences;
        set(preferences);
        return InterpretInk(InkOf(RoundedPath{60.0, 0.0, 30.0, degrees * kTurn / 360.0}.Draw(0.1, 1.0)),
                            preferences);
    };
    const auto isAlongAxis = [](const InkReading& reading) {
        const Vector d = static_cast<const Line&>(*reading.curves[0].curve).GetDirection();
        return d.x == 0.0 || d.y == 0.0;
    };
    EXPECT_TRUE(isAlongAxis(read(4.5, [](auto&) {})));
    EXPECT_TRUE(isAlongAxis(read(85.5, [](auto&) {})));
    EXPECT_FALSE(isAlongAxis(read(5.5, [](auto&) {})));
    EXPECT_FALSE(isAlongAxis(read(4.5, [](auto& p) { p.SetSnapping(false); })));
    EXPECT_TRUE(IsSlot(read(30.0, [](auto& p) { p.SetRegularPolygonRecognition(false); })));
    EXPECT_FALSE(IsSlot(read(30.0, [](auto& p) { p.SetCurveTidy(false); })));
    EXPECT_TRUE(read(30.0, [](auto& p) { p.SetChangeCurveType(false); }).isClosed);
}

} // namespace
} // namespace Tessera::Geometry
