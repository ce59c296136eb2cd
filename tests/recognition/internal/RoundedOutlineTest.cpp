#include "tessera/recognition/internal/RoundedOutline.h"

#include "tessera/geometry/Arc.h"
#include "tessera/recognition/internal/RoundedBox.h"
#include "tessera/recognition/internal/SlotShape.h"
#include "tests/support/RoundedPath.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

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
    const auto end = [&](int curve, CurveEnd at) {
        return EndOf(*reading.curves[static_cast<std::size_t>(curve)].curve, at);
    };
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
    EXPECT_TRUE(isNear(made.firstSample, end(joint.before, made.First())));
    EXPECT_TRUE(isNear(made.lastSample, joint.position));
    EXPECT_EQ(joint.isClosing, i + 1 == reading.curves.size());
    EXPECT_EQ(joint.after, (joint.before + 1) % count);
    EXPECT_NEAR(joint.turnDeg, 0.0, 1e-9);
    EXPECT_LT(joint.position.Distance(end(joint.before, joint.beforeEnd)), 1e-9);
    EXPECT_LT(joint.position.Distance(end(joint.after, joint.afterEnd)), 1e-9);
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
                const double slack = 8.0 + std::max(0.0, 1.0 - turns) * drawn.Outline();
                for (int i = 0; i < count; ++i)
                    ExpectPiece(ink, reading, static_cast<std::size_t>(i), drawn, (piece + i) % count, slack);
            }
}

} // namespace
} // namespace Tessera::Geometry
