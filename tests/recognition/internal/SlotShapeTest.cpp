#include "tessera/recognition/internal/SlotShape.h"

#include "tessera/geometry/Line.h"
#include "tests/support/PenPaths.h"
#include "tests/support/SegmentDistance.h"
#include "tests/support/SyntheticInk.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

struct Slot {
    double half = 60.0;
    double radius = 30.0;
    double angle = 0.7;
    double sense = 1.0; // counter-clockwise positive
    Point centre;

    double Outline() const { return 4.0 * half + kTurn * radius; }
    /// Of the outline, where the pieces end: line, half circle, line, half circle.
    double EndOf(int piece) const {
        return piece < 0 ? 0.0 : 0.5 * (piece / 2) + (piece % 2 == 0 ? 2.0 * half / Outline() : 0.5);
    }
    Point At(double turns) const {
        const double at = (turns - std::floor(turns)) * Outline();
        const double side = at < 0.5 * Outline() ? 1.0 : -1.0;
        const double on = side > 0.0 ? at : at - 0.5 * Outline();
        const double t = (on - 2.0 * half) / radius;
        const Point p = side * (t < 0.0 ? Point(on - half, -radius)
                                        : Point(half + radius * std::sin(t), -radius * std::cos(t)));
        const Point along(std::cos(angle), std::sin(angle));
        return centre + p.x * along + sense * p.y * Point(-along.y, along.x);
    }
    std::vector<Point> Draw(double from, double turns, int count = 240) const {
        return PointsOf([this](double u) { return At(u); }, from, from + turns, count);
    }
    double SumSq(const InkStroke& ink) const {
        const std::vector<Point> outline = Draw(0.0, 1.0, 1500);
        double sum = 0.0;
        for (const InkSample& s : ink.samples)
            sum += std::pow(PolylineDistance(outline, {s.x, s.y}), 2);
        return sum;
    }
};

// In model units; the axis has two senses, of which the one near the angle.
Slot Fitted(const InkStroke& ink, double angle) {
    const InkPath path = MakeInkPath(ink.samples);
    const SlotShape fit = FitSlot(PricedPath(path)).value_or(SlotShape{});
    const double off = std::remainder(std::atan2(fit.axis.y, fit.axis.x) - angle, 0.5 * kTurn);
    return {path.scale * fit.half, path.scale * fit.radius, angle + off, 1.0, path.ToModel(fit.centre)};
}

bool IsSlot(const InkReading& reading) {
    return reading.shape == InkShape::Chain && reading.isClosed && reading.curves.size() == 4 &&
           std::all_of(reading.joints.begin(), reading.joints.end(),
                       [](const InkJoint& joint) { return joint.kind == JointKind::Tangent; });
}

TEST(SlotShape, TheFitIsTheNearestSlot) {
    for (const double half : {10.0, 40.0, 100.0})
        for (const double turns : {0.93, 1.0, 1.12}) {
            SCOPED_TRACE(testing::Message() << half << ", turns " << turns);
            const Slot slot{half, 30.0, 0.02 * half, turns < 1.0 ? 1.0 : -1.0, {300.0, -200.0}};
            const Slot exact = Fitted(InkOf(slot.Draw(0.3 * turns, turns, 3000)), slot.angle);
            EXPECT_NEAR(exact.half, slot.half, 1e-3);
            EXPECT_NEAR(exact.radius, slot.radius, 1e-3);
            EXPECT_NEAR(exact.angle, slot.angle, 1e-4);
            EXPECT_LT(exact.centre.Distance(slot.centre), 1e-3);
            const InkStroke ink = Trembling(slot.Draw(0.1, turns), 1.5, 5);
            const Slot fit = Fitted(ink, slot.angle);
            const double least = fit.SumSq(ink);
            for (const double by : {-0.8, 0.8})
                for (int parameter = 0; parameter < 5; ++parameter) {
                    Slot beside = fit;
                    double* const values[] = {&beside.half, &beside.radius, &beside.centre.x,
                                              &beside.centre.y, &beside.angle};
                    *values[parameter] += parameter < 4 ? by : by / 20.0;
                    EXPECT_GT(beside.SumSq(ink), least) << parameter << " by " << by;
                }
        }
}

// Curve i of the reading is a piece of the slot, and its ink ends within `slack` of its ends.
void ExpectPiece(const InkStroke& ink, const InkReading& reading, std::size_t i, const Slot& slot, int piece,
                 double slack) {
    const InterpretedCurve& made = reading.curves[i];
    const InkJoint& joint = reading.joints[i];
    const auto end = [&](int curve, CurveEnd at) {
        return EndOf(*reading.curves[static_cast<std::size_t>(curve)].curve, at);
    };
    const auto isNear = [&](int sample, const Point& p) {
        const InkSample& s = ink.samples[static_cast<std::size_t>(sample)];
        return p.Distance({s.x, s.y}) < slack;
    };
    EXPECT_EQ(made.curve->GetType(), piece % 2 == 0 ? CurveType_Line : CurveType_Arc);
    EXPECT_LT(joint.position.Distance(slot.At(slot.EndOf(piece))), 3.0);
    EXPECT_LT(made.curve->GetMidPoint().Distance(slot.At(0.5 * (slot.EndOf(piece - 1) + slot.EndOf(piece)))),
              2.0);
    EXPECT_LT(made.maxDeviation, 2.0);
    EXPECT_TRUE(isNear(made.firstSample, end(joint.before, made.First())));
    EXPECT_TRUE(isNear(made.lastSample, joint.position));
    EXPECT_EQ(joint.isClosing, i == 3);
    EXPECT_EQ(joint.after, (joint.before + 1) % 4);
    EXPECT_NEAR(joint.turnDeg, 0.0, 1e-9);
    EXPECT_LT(joint.position.Distance(end(joint.before, joint.beforeEnd)), 1e-9);
    EXPECT_LT(joint.position.Distance(end(joint.after, joint.afterEnd)), 1e-9);
}

// With a gap, closed, and past the start by little and by so much that the pen enters the next piece again.
TEST(SlotShape, FourCurvesFromThePieceInWhichThePenStarted) {
    for (const double half : {12.0, 40.0, 90.0})
        for (const int piece : {0, 1, 2, 3})
            for (const double turns : {0.95, 1.0, 1.03, 1.1}) {
                SCOPED_TRACE(testing::Message() << half << ", piece " << piece << ", turns " << turns);
                const Slot slot{half, 30.0, 0.3 + 0.01 * half, piece < 2 ? 1.0 : -1.0, {300.0, -200.0}};
                const double share = 0.2 + 0.25 * piece;
                const double from = (1.0 - share) * slot.EndOf(piece - 1) + share * slot.EndOf(piece);
                const InkStroke ink = Trembling(slot.Draw(from, turns), 0.4, 7);
                const InkReading reading = InterpretInk(ink, {});
                ASSERT_TRUE(IsSlot(reading));
                const double slack = 6.0 + std::max(0.0, 1.0 - turns) * slot.Outline();
                for (std::size_t i = 0; i < 4; ++i)
                    ExpectPiece(ink, reading, i, slot, (piece + static_cast<int>(i)) % 4, slack);
            }
}

TEST(SlotShape, OnlyWhereOneWasDrawn) {
    const Slot slot{90.0, 30.0, 0.7, 1.0, {}};
    const Slot stub{6.0, 30.0, 0.7, 1.0, {}};
    const Slot lath{200.0, 30.0, 0.7, 1.0, {}};
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
        return InterpretInk(InkOf(Slot{60.0, 30.0, degrees * kTurn / 360.0, 1.0, {}}.Draw(0.1, 1.0)),
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
