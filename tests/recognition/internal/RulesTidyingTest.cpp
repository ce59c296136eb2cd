#include "tessera/recognition/internal/RulesTidying.h"

#include "tessera/geometry/Line.h"
#include "tests/support/ReadingJoints.h"
#include "tests/support/SyntheticInk.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

/// The rules' pieces, tidied or not; nothing else.
InkReading Read(const InkStroke& ink, bool isTidy) {
    SketchRecognizerPreferences preferences;
    preferences.SetDoScribble(false);
    preferences.SetReduceInkCurveDeviation(false);
    preferences.SetChangeCurveType(false);
    preferences.SetSnapping(false);
    preferences.SetRegularPolygonRecognition(false);
    preferences.SetCurveTidy(isTidy);
    return InterpretInk(ink, preferences);
}

std::string KindsOf(const InkReading& reading) {
    std::string kinds;
    for (const InterpretedCurve& made : reading.curves)
        kinds += made.curve->GetType() == CurveType_Line      ? 'L'
                 : made.curve->GetType() == CurveType_Arc     ? 'A'
                 : made.curve->GetType() == CurveType_Ellipse ? 'E'
                                                              : 'S';
    return kinds;
}

// Sides are cut or drawn out to their corners along the carriers that the rules gave them, but where these
// meet too far from the ink's own corner.
TEST(RulesTidying, LinesMeetWhereTheRulesLaidThem) {
    RandomPlans plans(23);
    int ends = 0;
    int onCarrier = 0;
    for (int i = 0; i < 60; ++i) {
        const InkStroke ink = plans.Polyline().Draw(plans.Rng(), Hand()).ink;
        const InkReading drawn = Read(ink, false);
        const InkReading tidy = Read(ink, true);
        ExpectJoined(tidy);
        EXPECT_EQ(tidy.joints.size() + 1, tidy.curves.size());
        if (KindsOf(drawn) != KindsOf(tidy) || KindsOf(drawn).find_first_not_of('L') != std::string::npos)
            continue;
        for (std::size_t k = 0; k < tidy.curves.size(); ++k)
            for (const Point& end : {tidy.curves[k].curve->GetStart(), tidy.curves[k].curve->GetEnd()}) {
                ++ends;
                onCarrier += drawn.curves[k].curve->Distance(end) < 1e-8 ? 1 : 0;
            }
    }
    EXPECT_GT(ends, 250);
    EXPECT_GT(onCarrier, 0.98 * ends);
}

// What is neither line nor arc stays as the rules have it, moved as a whole by what its neighbours ask.
TEST(RulesTidying, FreeFormsMeetTheirNeighbours) {
    const Path wave = [](double u) { return Point(200.0 * u, 40.0 * std::sin(kTurn * u)); };
    const struct {
        std::vector<Point> pts;
        const char* kinds;
        bool isClosed;
    } rows[] = {
        {Joined({Straight({-40, 150}, {0, 0}), wave}, 0.0, 1.0, 80), "LS", false},
        {Joined({Straight({100, 150}, {0, 0}), wave, Straight({200, 0}, {105, 155})}, 0.0, 1.0, 80), "LSL",
         true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.kinds);
        const InkReading drawn = Read(InkOf(row.pts), false);
        const InkReading tidy = Read(InkOf(row.pts), true);
        ASSERT_EQ(KindsOf(drawn), row.kinds);
        ASSERT_EQ(KindsOf(tidy), row.kinds);
        EXPECT_EQ(tidy.isClosed, row.isClosed);
        EXPECT_EQ(tidy.joints.size(), tidy.curves.size() - (row.isClosed ? 0U : 1U));
        ExpectJoined(tidy);
        for (std::size_t k = 0; k < 2; ++k) {
            EXPECT_LT(tidy.curves[k].maxDeviation, drawn.curves[k].maxDeviation + 3.0);
            EXPECT_LT(tidy.curves[k].curve->GetMidPoint().Distance(drawn.curves[k].curve->GetMidPoint()),
                      5.0);
        }
    }
}

// One curve has nothing to be joined to: it keeps its ends, where the pen turned and not where it left.
TEST(RulesTidying, ALoneCurveStays) {
    std::vector<Point> hooked = PointsOf(Straight({8, 0}, {0, 1}), 0.0, 1.0, 6);
    const std::vector<Point> run = PointsOf(Straight({0, 1}, {200, 3}));
    hooked.insert(hooked.end(), run.begin(), run.end());
    const InkReading drawn = Read(InkOf(hooked), false);
    const InkReading tidy = Read(InkOf(hooked), true);
    ASSERT_EQ(KindsOf(drawn), "L");
    ASSERT_EQ(KindsOf(tidy), "L");
    EXPECT_NEAR(tidy.curves[0].curve->Length(), drawn.curves[0].curve->Length(), 1e-6);
    EXPECT_NEAR(tidy.curves[0].maxDeviation, drawn.curves[0].maxDeviation, 1e-6);
}

// Two arcs of an S, between which the pen nearly stops.
TEST(RulesTidying, ArcsThatRunOnTouch) {
    InkStroke ink = InkOf(PointsOf(
        [](double u) {
            const double turn = (2.0 * (u - 0.5) + 1.94 / kTurn * std::sin(kTurn * u)) * 0.35 * kTurn;
            const double sense = turn < 0.0 ? -1.0 : 1.0;
            return sense * Point(60.0 * std::sin(std::fabs(turn)), 60.0 * (std::cos(turn) - 1.0));
        },
        0.0, 1.0, 160));
    ink.hasTimes = true;
    for (std::size_t i = 0; i < ink.samples.size(); ++i)
        ink.samples[i].t = 8.0 * static_cast<double>(i);
    EXPECT_EQ(KindsOf(Read(ink, false)), "AA");
    const InkReading tidy = Read(ink, true);
    EXPECT_EQ(KindsOf(tidy), "AA");
    ExpectJoined(tidy);
    ASSERT_EQ(tidy.joints.size(), 1U);
    EXPECT_EQ(tidy.joints[0].kind, JointKind::Tangent);
    EXPECT_LT(tidy.joints[0].position.Distance({0, 0}), 1.0);
}

// Closed or merged or swept: no ink comes to a curve of another kind than the rules gave it, but for rounds
// that are closed.
TEST(RulesTidying, NoCurveChangesItsKind) {
    RandomPlans plans(29);
    for (int i = 0; i < 120; ++i) {
        SCOPED_TRACE(i);
        const InkPlan plan = i % 3 == 0 ? plans.Mixed() : i % 3 == 1 ? plans.Slot() : plans.Smooth();
        const InkStroke ink = plan.Draw(plans.Rng(), plans.AnyHand()).ink;
        const InkReading drawn = Read(ink, false);
        const InkReading tidy = Read(ink, true);
        ExpectJoined(tidy);
        const int n = static_cast<int>(ink.samples.size());
        for (const InterpretedCurve& made : tidy.curves) {
            const int count = (made.lastSample - made.firstSample + n) % n;
            const int middle = (made.firstSample + count / 2) % n;
            EXPECT_TRUE(made.curve->IsClosed() ||
                        std::any_of(drawn.curves.begin(), drawn.curves.end(), [&](const auto& piece) {
                            return piece.firstSample <= middle && middle <= piece.lastSample &&
                                   piece.curve->GetType() == made.curve->GetType();
                        }));
        }
    }
}

} // namespace
} // namespace Tessera::Geometry
