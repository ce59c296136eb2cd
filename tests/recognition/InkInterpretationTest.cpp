#include "tessera/recognition/InkInterpretation.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tests/support/SyntheticInk.h"
#include "tests/support/ThrownMessage.h"

namespace Tessera::Geometry {
namespace {

using Testing::Hand;
using Testing::InkPlan;
using Testing::RandomPlans;

InkReading Read(const InkStroke& ink) {
    return InterpretInk(ink, SketchRecognizerPreferences());
}

InkStroke DrawThrough(const std::vector<Point>& corners, bool isClosed, unsigned seed = 1) {
    std::mt19937 rng(seed);
    return InkPlan::Through(corners, isClosed).Draw(rng, Hand()).ink;
}

/// A careful round of so many degrees that drifts outwards by a share of the radius.
InkStroke DrawRound(double a, double b, double degrees, double drift) {
    InkStroke ink;
    constexpr int kSamples = 150;
    for (int i = 0; i < kSamples; ++i) {
        const double share = static_cast<double>(i) / (kSamples - 1);
        const double t = 0.4 + share * degrees * std::numbers::pi / 180.0;
        const double grown = 1.0 + drift * (share - 0.5);
        ink.samples.push_back({100.0 + a * grown * std::cos(t), 50.0 + b * grown * std::sin(t), 0.0});
    }
    return ink;
}

void ExpectJoined(const InkReading& reading) {
    for (const InkJoint& joint : reading.joints) {
        const Curve& before = *reading.curves[static_cast<std::size_t>(joint.before)].curve;
        const Curve& after = *reading.curves[static_cast<std::size_t>(joint.after)].curve;
        const Point end = joint.beforeEnd == CurveEnd::End ? before.GetEnd() : before.GetStart();
        const Point start = joint.afterEnd == CurveEnd::Start ? after.GetStart() : after.GetEnd();
        EXPECT_LT(end.Distance(start), 1e-9);
        EXPECT_LT(end.Distance(joint.position), 1e-9);
    }
}

TEST(InkInterpretation, NothingWithoutTwoPositions) {
    EXPECT_EQ(Read({}).shape, InkShape::Nothing);
    InkStroke dot;
    dot.samples.assign(5, {2.0, 3.0, 0.0});
    EXPECT_TRUE(Read(dot).curves.empty());
    EXPECT_EQ(Read(dot).shape, InkShape::Nothing);
}

TEST(InkInterpretation, RefusesSamplesThatAreNotFinite) {
    for (const double bad :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        InkStroke ink = DrawThrough({{0, 0}, {10, 0}}, false);
        ink.samples[3].y = bad;
        EXPECT_EQ(Testing::ThrownMessage([&] { Read(ink); }), "InterpretInk - a sample is not finite");
    }
}

TEST(InkInterpretation, TellsPlainShapes) {
    struct Row {
        const char* name;
        InkStroke ink;
        InkShape shape;
        std::size_t curves;
        std::size_t joints;
    };
    const Row rows[] = {
        {"line", DrawThrough({{0, 0}, {80, 33}}, false), InkShape::Line, 1, 0},
        {"corner", DrawThrough({{0, 0}, {80, 33}, {90, -50}}, false), InkShape::Polyline, 2, 1},
        {"bracket", DrawThrough({{50, 0}, {0, 3}, {2, 90}, {52, 88}}, false), InkShape::Polyline, 3, 2},
        {"triangle", DrawThrough({{0, 0}, {80, 3}, {30, 90}}, true), InkShape::Triangle, 3, 3},
        {"square", DrawThrough({{0, 0}, {80, 3}, {79, 82}, {-1, 78}}, true), InkShape::Square, 4, 4},
        {"rectangle", DrawThrough({{0, 0}, {140, 3}, {139, 82}, {-1, 78}}, true), InkShape::Rectangle, 4, 4},
        {"diamond", DrawThrough({{0, 0}, {40, 90}, {0, 180}, {-40, 90}}, true), InkShape::Rhombus, 4, 4},
        {"circle", DrawRound(50, 50, 365, 0.0), InkShape::Circle, 1, 0},
        {"circle that drifts", DrawRound(50, 50, 350, 0.15), InkShape::Circle, 1, 0},
        {"circle that runs on", DrawRound(50, 48, 440, 0.1), InkShape::Circle, 1, 0},
        {"ellipse", DrawRound(80, 40, 370, 0.05), InkShape::Ellipse, 1, 0},
        {"arc", DrawRound(50, 50, 150, 0.0), InkShape::Arc, 1, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const InkReading reading = Read(row.ink);
        EXPECT_EQ(reading.shape, row.shape);
        EXPECT_EQ(reading.curves.size(), row.curves);
        EXPECT_EQ(reading.joints.size(), row.joints);
        ExpectJoined(reading);
    }
}

TEST(InkInterpretation, SidesWithinTheSnapAngleLieAlongTheAxes) {
    const InkStroke ink = DrawThrough({{0, 0}, {140, 6}, {138, 82}, {-1, 78}}, true);
    const auto along = [](const InkReading& reading) {
        int count = 0;
        for (const InterpretedCurve& made : reading.curves) {
            const Vector d = static_cast<const Line&>(*made.curve).GetDirection();
            count += d.x == 0.0 || d.y == 0.0 ? 1 : 0;
        }
        return count;
    };
    SketchRecognizerPreferences preferences;
    EXPECT_EQ(along(InterpretInk(ink, preferences)), 4);
    preferences.SetSnapping(false);
    EXPECT_EQ(along(InterpretInk(ink, preferences)), 0);
}

TEST(InkInterpretation, ArcsOfEitherSenseKeepTheirEnds) {
    InkStroke ink = DrawRound(50, 50, 150, 0.0);
    for (const bool backwards : {false, true}) {
        if (backwards)
            std::reverse(ink.samples.begin(), ink.samples.end());
        const InkReading reading = Read(ink);
        ASSERT_EQ(reading.shape, InkShape::Arc);
        const InterpretedCurve& made = reading.curves[0];
        EXPECT_EQ(made.isReversed, backwards);
        const Point first = made.First() == CurveEnd::Start ? made.curve->GetStart() : made.curve->GetEnd();
        EXPECT_LT(first.Distance({ink.samples[0].x, ink.samples[0].y}), 0.5);
        EXPECT_NEAR(static_cast<const Arc&>(*made.curve).GetRadius(), 50.0, 0.1);
        EXPECT_LT(made.maxDeviation, 0.1);
    }
}

} // namespace
} // namespace Tessera::Geometry
