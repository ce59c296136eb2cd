#include "tessera/recognition/internal/SmoothForms.h"

#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/Spline.h"
#include "tests/support/AllocationFaults.h"
#include "tests/support/PenPaths.h"
#include "tests/support/ReadingJoints.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

Path Kidney(double from) {
    const Path round = Round({0, 0}, 100, 55, from, from + kTurn);
    return [=](double u) { return round(u) + Point(0.0, 0.006 * round(u).x * round(u).x); };
}

// Known ellipses, drawn either way with a tremor: the arc has their radii, their centre and the ink's ends.
TEST(SmoothForms, EllipticArcsAreFound) {
    std::mt19937 rng(20250611);
    std::uniform_real_distribution<double> ratio(0.35, 0.65);
    std::uniform_real_distribution<double> angle(0.0, kTurn);
    std::uniform_real_distribution<double> sweep(0.45 * kTurn, 0.75 * kTurn);
    int right = 0;
    constexpr int kTrials = 100;
    for (int trial = 0; trial < kTrials; ++trial) {
        const double b = 100.0 * ratio(rng);
        const double from = angle(rng);
        const double to = from + (trial % 2 == 0 ? 1.0 : -1.0) * sweep(rng);
        const std::vector<Point> pts = PointsOf(Round({40, -70}, 100, b, from, to, angle(rng)));
        const InkReading reading = InterpretInk(Trembling(pts, 0.4, 7U + static_cast<unsigned>(trial)), {});
        if (reading.shape != InkShape::EllipticArc)
            continue;
        const InterpretedCurve& made = reading.curves[0];
        double r1 = 0.0;
        double r2 = 0.0;
        const auto& arc = static_cast<const Ellipse&>(*made.curve);
        arc.AskRadii(r1, r2);
        const bool isRight = std::fabs(r1 - 100.0) < 5.0 && std::fabs(r2 - b) < 5.0 &&
                             arc.AskCenter().Distance({40, -70}) < 5.0 &&
                             EndOf(arc, made.First()).Distance(pts.front()) < 3.0 &&
                             EndOf(arc, made.Last()).Distance(pts.back()) < 3.0 &&
                             made.isReversed == (to < from) && made.maxDeviation < 3.0;
        right += isRight ? 1 : 0;
    }
    EXPECT_GE(right, 95);
}

// Pieces of a chain that are an elliptic arc together become one, with exact corners; what is round, and what
// a line touches, stays.
TEST(SmoothForms, EllipticArcsBetweenCorners) {
    const Path oval = Round({0, 0}, 100, 40, 0.25 * kTurn, 0.85 * kTurn);
    const Path to = Straight({40, 190}, oval(0.0));
    const Path circle = Round({0, 0}, 90, 90, 0.0, 0.5 * kTurn);
    const struct {
        std::initializer_list<Path> paths;
        const char* kinds;
    } rows[] = {
        {{to, oval}, "LE"},
        {{Straight({250, 10}, {90, 0}), circle, Straight({-90, 0}, {-250, 10})}, "LAL"},
        {{Straight({-200, -45}, {0, -45}), Round({0, 0}, 45, 45, -0.25 * kTurn, 0.25 * kTurn)}, "LA"}};
    for (const auto& row : rows)
        for (const unsigned seed : {1U, 2U, 3U}) {
            SCOPED_TRACE(testing::Message() << row.kinds << seed);
            const InkReading reading = InterpretInk(Trembling(Joined(row.paths), 0.5, seed), {});
            ExpectJoined(reading);
            std::string kinds;
            for (const InterpretedCurve& made : reading.curves) {
                const CurveType_e type = made.curve->GetType();
                kinds += type == CurveType_Line ? 'L' : type == CurveType_Arc ? 'A' : 'E';
                EXPECT_LT(made.maxDeviation, 7.0);
            }
            EXPECT_EQ(kinds, row.kinds);
        }
}

// Each description wins where it is the briefer one: five numbers must pay.
TEST(SmoothForms, KindsFollowTheInk) {
    const struct {
        const char* name;
        Path path;
        InkShape shape;
    } rows[] = {
        {"quarter of an ellipse", Round({0, 0}, 110, 50, 0.0, 0.25 * kTurn), InkShape::EllipticArc},
        {"half a circle", Round({0, 0}, 100, 100, 0.0, 0.5 * kTurn), InkShape::Arc},
        {"nearly a circle", Round({0, 0}, 105, 97, 0.0, 0.5 * kTurn), InkShape::Arc},
        {"line with a bow", Bulging(Straight({0, 0}, {200, 40}), 0.0, 1.0, 0.0, 9.0), InkShape::Line},
        {"bow", Bulging(Straight({0, 0}, {200, 40}), 0.0, 1.0, 0.0, 34.0), InkShape::Arc},
        {"parabola", [](double u) { return Point(220 * u - 110, 0.0166 * std::pow(220 * u - 110, 2)); },
         InkShape::Spline},
        {"kidney", Kidney(0.5), InkShape::Spline},
        {"three lobes",
         [](double u) {
             return (90 + 16 * std::cos(3 * kTurn * u)) * Round({0, 0}, 1, 1, 0, kTurn)(u);
         },
         InkShape::Spline},
        {"spiral", DriftingRound({0, 0}, 90, 90, 360.0, 1.1), InkShape::Spline},
        {"rounded box",
         [](double u) {
             const double t = kTurn * u;
             const auto power = [](double v) { return std::copysign(std::pow(std::fabs(v), 0.2), v); };
             return Point(100 * power(std::cos(t)), 60 * power(std::sin(t)));
         },
         InkShape::Chain}, // its corners are drawn round with care
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(InterpretInk(Trembling(PointsOf(row.path, 0.0, 1.0, 160), 0.3, 3), {}).shape, row.shape);
    }
}

TEST(SmoothForms, AClosedFreeFormHasASmoothSeamWhereverItStarts) {
    const Path kidney = Kidney(0.0);
    for (const double end : {0.98, 1.0, 1.05}) // stops short, meets, runs past its start
        for (const double start : {0.1, 0.3, 0.5}) {
            SCOPED_TRACE(testing::Message() << start << " to " << start + end);
            const InkReading reading = InterpretInk(InkOf(PointsOf(kidney, start, start + end)), {});
            ASSERT_EQ(reading.shape, InkShape::Spline);
            EXPECT_TRUE(reading.isClosed);
            EXPECT_TRUE(static_cast<const Spline&>(*reading.curves[0].curve).IsG1Closed());
            ASSERT_EQ(reading.joints.size(), 1U);
            EXPECT_EQ(reading.joints[0].kind, JointKind::Tangent);
            EXPECT_TRUE(reading.joints[0].isClosing);
            for (const Point& p : PointsOf(kidney))
                EXPECT_LT(reading.curves[0].curve->DistanceBounded(p), 4.0);
        }
}

// The closing tolerance decides whether a gap closes; half a quarter of the length is the usual one.
TEST(SmoothForms, ClosingFollowsThePreferences) {
    const std::vector<Point> open = Joined({Straight({0, 0}, {200, 0}), Straight({200, 0}, {200, 120}),
                                            Straight({200, 120}, {0, 120}), Straight({0, 120}, {0, 50})});
    SketchRecognizerPreferences preferences;
    EXPECT_TRUE(InterpretInk(InkOf(open), preferences).isClosed);
    const std::vector<Point> round = PointsOf(Round({0, 0}, 90, 90, 0.0, 0.85 * kTurn));
    EXPECT_EQ(InterpretInk(InkOf(round), preferences).shape, InkShape::Circle);
    preferences.SetCloseStrokeTolerances(20.0, 0.02);
    EXPECT_FALSE(InterpretInk(InkOf(round), preferences).isClosed);
    preferences.SetMinimumRecognitionTolerance(0.5); // the floor of the tolerance
    EXPECT_FALSE(InterpretInk(InkOf(open), preferences).isClosed);
}

// A fit without memory must not make way for another kind of curve.
TEST(SmoothForms, AReadingWithoutItsMemoryIsNone) {
    testing::internal::CaptureStderr(); // the rules report on their own
    for (const InkStroke& ink :
         {InkOf(PointsOf(Kidney(0.5))), InkOf(PointsOf(Round({0, 0}, 110, 50, 0.0, 0.9 * kTurn))),
          InkOf(Joined({Straight({0, 0}, {200, 0}), Straight({200, 0}, {200, 120})}))})
        EXPECT_GT(FailEachAllocation([&] {
                      try {
                          return !InterpretInk(ink, {}).curves.empty();
                      } catch (const char*) {
                          return false;
                      }
                  }),
                  5);
    testing::internal::GetCapturedStderr();
}

} // namespace
} // namespace Tessera::Geometry
