#include "tessera/recognition/internal/Fillets.h"

#include "tessera/geometry/Arc.h"
#include "tests/support/PenPaths.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

int CountTangent(const InkReading& reading) {
    return static_cast<int>(
        std::count_if(reading.joints.begin(), reading.joints.end(),
                      [](const InkJoint& joint) { return joint.kind == JointKind::Tangent; }));
}

// A careful hand's round corners are arcs of their radius that touch both sides, also of a box that is turned
// onto the axes and is not looked at as a whole; the same box drawn with a shaky hand, or with corners that
// any hand rounds so much, is a rectangle.
TEST(Fillets, RoundCornersOfACarefulHandAreArcs) {
    const struct {
        double radius;
        double tremor;
        bool isRounded;
    } rows[] = {{30, 0.3, true}, {22, 0.3, true},  {8, 0.3, false}, {0, 0.3, false},
                {0, 0.0, false}, {22, 1.2, false}, {30, 0.0, true}};
    unsigned seed = 2;
    for (const auto& row : rows)
        for (const double turnedBy : {0.0, 0.04, 0.5, 2.0}) {
            SCOPED_TRACE(testing::Message() << row.radius << " +- " << row.tremor << ", turned " << turnedBy);
            const InkReading reading =
                InterpretInk(Trembling(RoundedBox(row.radius, turnedBy, 3), row.tremor, ++seed), {});
            if (!row.isRounded) {
                EXPECT_EQ(reading.shape, InkShape::Rectangle);
                continue;
            }
            EXPECT_EQ(reading.curves.size(), 7U);
            EXPECT_EQ(CountTangent(reading), 6);
            const double moved = turnedBy < 0.08 ? 100.0 * turnedBy : 0.0; // the ends of sides, onto the axes
            for (const InterpretedCurve& made : reading.curves) {
                EXPECT_LT(made.maxDeviation, 6.0 * row.tremor + 1.0 + moved);
                if (made.curve->GetType() == CurveType_Arc) {
                    EXPECT_NEAR(static_cast<const Arc&>(*made.curve).GetRadius(), row.radius,
                                0.08 * row.radius + 2.0 * row.tremor + moved);
                }
            }
        }
}

// A line that turns smoothly into the counter-curve of a larger arc: the corner between them, which the ink
// never reaches, is no point of the drawing.
TEST(Fillets, CornersOfLinesAndArcsToo) {
    std::vector<Point> pts =
        Joined({Straight({-160, 0}, {-20, 0}), Round({-20, 25}, 25, 25, -0.25 * kTurn, 0.0),
                Round({75, 25}, 70, 70, 0.5 * kTurn, 0.0)},
               0.02, 1.0, 70);
    for (const bool isBackwards : {false, true}) {
        const InkReading reading = InterpretInk(Trembling(pts, 0.25, 5), {});
        ASSERT_EQ(reading.curves.size(), 3U) << isBackwards;
        EXPECT_EQ(CountTangent(reading), 2);
        EXPECT_NEAR(static_cast<const Arc&>(*reading.curves[1].curve).GetRadius(), 25.0, 4.0);
        for (const InterpretedCurve& made : reading.curves)
            EXPECT_LT(made.maxDeviation, 2.5);
        std::reverse(pts.begin(), pts.end());
    }
}

} // namespace
} // namespace Tessera::Geometry
