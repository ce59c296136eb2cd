// Slots and rounded boxes: told from other shapes, fitted, and turned into curves.
#include "tessera/recognition/internal/RoundedOutline.h"

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tessera/recognition/internal/RoundedBox.h"
#include "tessera/recognition/internal/SlotShape.h"
#include "tests/support/ReadingJoints.h"
#include "tests/support/RoundedPath.h"
#include "tests/support/SyntheticInk.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

constexpr std::size_t kNeither = 0, kSlot = 4, kBox = 8; // curves

bool IsSlot(const InkReading& reading) {
    return IsRounded(reading, kSlot);
}
bool IsBox(const InkReading& reading) {
    return IsRounded(reading, kBox);
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

TEST(RoundedOutline, OnlyWhereOneWasDrawn) {
    const RoundedPath slot{90.0}, stub{6.0}, lath{200.0};
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
        std::size_t curves;
    } rows[] = {{"slot", slot.Draw(0.1, 1.0), kSlot},
                {"slot that drifts outwards", spiral, kSlot},
                {"slot without lines", stub.Draw(0.1, 1.0), kNeither},
                {"slot without an end", lath.Draw(0.5, lath.EndOf(2)), kNeither},
                {"box with half circles", RoundedBox(60.0, 0.4), kSlot},
                {"box nearly without straight ends", RoundedBox(54.0, 0.4), kSlot},
                {"much rounded", RoundedBox(45.0, 0.1), kBox},
                {"rounded", RoundedBox(30.0, 0.4), kBox},
                {"hardly rounded", RoundedBox(18.0, 0.4), kBox},
                {"sharp, by a hand", RoundedBox(6.0, 0.4), kNeither},
                {"sharp", RoundedBox(0.0, 0.4), kNeither},
                {"a sharp corner", RoundedBox(25.0, 0.0, 3), kNeither},
                {"rounded square", RoundedPath{30.0, 30.0}.Draw(0.3, 1.0), kBox},
                {"nearly a circle", RoundedPath{3.0, 3.0}.Draw(0.3, 1.0), kNeither},
                {"circle", oval(100.0), kNeither},
                {"oval", oval(75.0), kNeither},
                {"slim oval", oval(40.0), kNeither}};
    for (const auto& row : rows)
        for (unsigned seed = 1; seed <= 5; ++seed) {
            const double tremor = row.curves == kSlot ? 0.3 : 0.2;
            const InkReading reading = InterpretInk(Trembling(row.pts, tremor * seed, seed), {});
            EXPECT_EQ(IsSlot(reading), row.curves == kSlot) << row.name << seed;
            EXPECT_EQ(IsBox(reading), row.curves == kBox) << row.name << seed;
        }
    for (unsigned seed = 1; seed <= 5; ++seed)
        EXPECT_FALSE(IsBox(InterpretInk(Trembling(Chamfered(30.0), 0.2 * seed, seed), {})));
}

// Drawn by hands that stray, bow their sides and round sharp corners, too.
TEST(RoundedOutline, OfSimulatedHands) {
    RandomPlans plans(3);
    int slots = 0, boxes = 0, mistaken = 0;
    for (int i = 0; i < 150; ++i) {
        const double w = plans.Uniform(30.0, 90.0);
        const InkPlan slot = plans.SlotOf(plans.Uniform(1.2, 6.0)), box = plans.RoundedBox(),
                      sharp = InkPlan::Through({{-w, -30}, {w, -30}, {w, 30}, {-w, 30}}, true);
        slots += IsSlot(InterpretInk(slot.Draw(plans.Rng(), plans.AnyHand()).ink, {})) ? 1 : 0;
        boxes += IsBox(InterpretInk(box.Draw(plans.Rng(), plans.CarefulHand()).ink, {})) ? 1 : 0;
        mistaken += IsBox(InterpretInk(sharp.Draw(plans.Rng(), plans.AnyHand()).ink, {})) ? 1 : 0;
    }
    EXPECT_GE(slots, 141);
    EXPECT_GE(boxes, 128);
    EXPECT_LE(mistaken, 1);
}

// Sides, and diagonals of squares, lie along an axis within the snap angle; sides that differ by less than
// those of squares may are equal; the first a matter of snapping, the second one of polygons, all of tidying.
TEST(RoundedOutline, FollowsThePreferences) {
    using Preferences = SketchRecognizerPreferences;
    const auto read = [](double across, double degrees, void (Preferences::*setter)(bool) = nullptr) {
        Preferences preferences;
        if (setter != nullptr)
            (preferences.*setter)(false);
        const RoundedPath drawn{60.0, across, 25.0, degrees * kTurn / 360.0};
        return InterpretInk(InkOf(drawn.Draw(0.01, 1.0)), preferences);
    };
    const auto lineOf = [](const InkReading& reading, std::size_t i) {
        return static_cast<const Line&>(*reading.curves[i].curve);
    };
    const struct {
        double across, degrees, snapped; ///< across 0: a slot
    } rows[] = {{0, 4.5, 0}, {0, 85.5, 0},   {0, 5.5, 5.5}, {40, 4.5, 0},
                {40, 94, 0}, {40, 5.5, 5.5}, {40, 41, 41},  {60, 41, 45}};
    for (const auto& row : rows)
        for (const bool mayChange : {true, false}) {
            const InkReading reading =
                read(row.across, row.degrees, mayChange ? nullptr : &Preferences::SetSnapping);
            const Vector d = lineOf(reading, 0).GetDirection();
            const double along = std::fabs(std::remainder(std::atan2(d.y, d.x) * 360.0 / kTurn, 90.0));
            const double drawn = std::fabs(std::remainder(row.degrees, 90.0));
            const bool isKept = !mayChange || row.snapped == row.degrees;
            EXPECT_NEAR(along, isKept ? drawn : row.snapped, isKept ? 0.05 : 1e-9) << row.degrees;
        }
    const InkReading square = read(54.0, 20.0); // 170 by 158
    ASSERT_TRUE(IsBox(square));
    for (std::size_t i = 0; i < 8; i += 2)
        EXPECT_NEAR(lineOf(square, i).Length(), 114.0, 0.5);
    EXPECT_NEAR(lineOf(read(40.0, 20.0), 2).Length(), 80.0, 0.5);
    EXPECT_NEAR(lineOf(read(54.0, 20.0, &Preferences::SetRegularPolygonRecognition), 2).Length(), 108.0, 0.5);
    EXPECT_TRUE(IsSlot(read(0.0, 30.0, &Preferences::SetRegularPolygonRecognition)));
    EXPECT_FALSE(IsSlot(read(0.0, 30.0, &Preferences::SetCurveTidy)));
    EXPECT_TRUE(read(0.0, 30.0, &Preferences::SetChangeCurveType).isClosed);
    // Without this shape, corner by corner: eight curves as well, but not of one radius to the last digits.
    const auto hasOneRadius = [&](void (Preferences::*setter)(bool)) {
        std::vector<double> found;
        for (const InterpretedCurve& made : read(40.0, 20.0, setter).curves)
            if (made.curve->GetType() == CurveType_Arc)
                found.push_back(static_cast<const Arc&>(*made.curve).GetRadius());
        const auto [least, most] = std::minmax_element(found.begin(), found.end());
        return found.size() == 4 && *most - *least < 1e-9;
    };
    EXPECT_TRUE(hasOneRadius(nullptr));
    EXPECT_FALSE(hasOneRadius(&Preferences::SetCurveTidy));
    EXPECT_FALSE(hasOneRadius(&Preferences::SetChangeCurveType));
}

constexpr double kSizes[][2] = {{10, 0}, {40, 0}, {100, 0}, {40, 40}, {30, 90}, {110, 20}}; // along, across

// In model units; the axis has two senses, and a box two axes, of which the one near the angle.
RoundedPath Fitted(const InkStroke& ink, const RoundedPath& drawn) {
    const InkPath path = MakeInkPath(ink.samples);
    const bool isSlot = drawn.across <= 0.0;
    RoundedOutline fit = (isSlot ? FitSlot(PricedPath(path)) : FitBox(path)).value_or(RoundedOutline{});
    double off = std::remainder(std::atan2(fit.axis.y, fit.axis.x) - drawn.angle, 0.5 * kTurn);
    if (!isSlot && std::fabs(off) > 0.125 * kTurn) {
        std::swap(fit.along, fit.across);
        off = std::remainder(off, 0.25 * kTurn);
    }
    return {path.scale * fit.along,  path.scale * fit.across, path.scale * fit.radius, drawn.angle + off, 1.0,
            path.ToModel(fit.centre)};
}

TEST(RoundedOutline, TheFitIsTheNearest) {
    for (const auto& [along, across] : kSizes)
        for (const double turns : {0.93, 1.0, 1.12}) {
            SCOPED_TRACE(testing::Message() << along << " x " << across << ", turns " << turns);
            const RoundedPath drawn{along, across, 30.0, 0.02 * along, turns < 1.0 ? 1.0 : -1.0, {300, -200}};
            const RoundedPath exact = Fitted(InkOf(drawn.Draw(0.3 * turns, turns, 3000)), drawn);
            EXPECT_NEAR(exact.along, drawn.along, 1e-3);
            EXPECT_NEAR(exact.across, drawn.across, 1e-3);
            EXPECT_NEAR(exact.radius, drawn.radius, 1e-3);
            EXPECT_NEAR(exact.angle, drawn.angle, 1e-4);
            EXPECT_LT(exact.centre.Distance(drawn.centre), 1e-3);
            const InkStroke ink = Trembling(drawn.Draw(0.1, turns), 1.5, 5);
            const RoundedPath fit = Fitted(ink, drawn);
            const double least = fit.SumSq(ink);
            for (const double by : {-0.8, 0.8})
                for (int parameter = across > 0.0 ? 0 : 1; parameter < 6; ++parameter) {
                    RoundedPath beside = fit;
                    double* const values[] = {&beside.across,   &beside.along,    &beside.radius,
                                              &beside.centre.x, &beside.centre.y, &beside.angle};
                    *values[parameter] += parameter < 5 ? by : by / 20.0;
                    EXPECT_GT(beside.SumSq(ink), least) << parameter << " by " << by;
                }
        }
}

// Curve i of the reading is a piece of the outline, and its ink ends within `slack` of its ends.
void ExpectPiece(const InkStroke& ink, const InkReading& reading, std::size_t i, const RoundedPath& drawn,
                 int piece, double slack) {
    const int count = static_cast<int>(reading.curves.size());
    const InterpretedCurve& made = reading.curves[i];
    const InkJoint& joint = reading.joints[i];
    const auto isNear = [&](int sample, const Point& p) {
        const InkSample& s = ink.samples[static_cast<std::size_t>(sample)];
        return p.Distance({s.x, s.y}) < slack;
    };
    const double to = drawn.EndOf(piece);
    const double from = piece > 0 ? drawn.EndOf(piece - 1) : 0.0;
    ASSERT_EQ(made.curve->GetType(), piece % 2 == 0 ? CurveType_Line : CurveType_Arc);
    EXPECT_LT(joint.position.Distance(drawn.At(to)), 3.0);
    EXPECT_LT(made.curve->GetMidPoint().Distance(drawn.At(0.5 * (from + to))), 2.0);
    if (piece % 2 == 1) {
        EXPECT_NEAR(static_cast<const Arc&>(*made.curve).GetRadius(), drawn.radius, 2.0);
    }
    EXPECT_LT(made.maxDeviation, 2.5);
    EXPECT_TRUE(isNear(made.firstSample, EndOf(*made.curve, made.First())));
    EXPECT_TRUE(isNear(made.lastSample, joint.position));
    EXPECT_EQ(joint.isClosing, i + 1 == reading.curves.size());
    EXPECT_EQ(joint.after, (joint.before + 1) % count);
}

// With a gap, closed, and past the start by little and by so much that the pen enters the next piece again;
// from within a piece, and from the joint before it.
TEST(RoundedOutline, CurvesFromThePieceInWhichThePenStarted) {
    for (const auto& [along, across] : kSizes)
        for (int piece = 0; piece < (across > 0.0 ? 8 : 4); ++piece)
            for (const double turns : {0.95, 1.0, 1.03, 1.1}) {
                SCOPED_TRACE(testing::Message()
                             << along << " x " << across << ", piece " << piece << ", turns " << turns);
                const RoundedPath drawn{
                    along, across, 30.0, 0.25 + 0.01 * along, piece % 3 == 0 ? 1.0 : -1.0, {300.0, -200.0}};
                const double before = piece > 0 ? drawn.EndOf(piece - 1) : 0.0;
                const double share = 0.2 + 0.2 * (piece % 4);
                const InkStroke ink =
                    Trembling(drawn.Draw(before + share * (drawn.EndOf(piece) - before), turns), 0.4, 7);
                const InkReading reading = InterpretInk(ink, {});
                const int count = static_cast<int>(drawn.Pieces().size());
                ASSERT_TRUE(IsRounded(reading, drawn.Pieces().size()));
                ExpectJoined(reading);
                const double slack = 8.0 + std::max(0.0, 1.0 - turns) * drawn.Outline();
                for (int i = 0; i < count; ++i)
                    ExpectPiece(ink, reading, static_cast<std::size_t>(i), drawn, (piece + i) % count, slack);
            }
}

} // namespace
} // namespace Tessera::Geometry
