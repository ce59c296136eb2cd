#include "tessera/recognition/InkInterpretation.h"

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tessera/recognition/ConstraintInference.h"
#include "tests/support/ReadingJoints.h"
#include "tests/support/SegmentDistance.h"
#include "tests/support/SyntheticInk.h"
#include "tests/support/ThrownMessage.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

InkReading Read(const InkStroke& ink) {
    return InterpretInk(ink, SketchRecognizerPreferences());
}

InkStroke DrawThrough(const std::vector<Point>& corners, bool isClosed, unsigned seed = 1) {
    std::mt19937 rng(seed);
    return InkPlan::Through(corners, isClosed).Draw(rng, Hand()).ink;
}

InkStroke DrawRound(double a, double b, double degrees, double drift = 0.0) {
    return InkOf(PointsOf(DriftingRound({100, 50}, a, b, degrees, drift)));
}

TEST(InkInterpretation, NothingWithoutTwoPositions) {
    EXPECT_EQ(Read({}).shape, InkShape::Nothing);
    InkStroke dot;
    dot.samples.assign(5, {2.0, 3.0, 0.0});
    EXPECT_TRUE(Read(dot).curves.empty());
    EXPECT_EQ(Read(dot).shape, InkShape::Nothing);
    InkStroke vast;
    vast.samples = {{0.0, 0.0, 0.0}, {1e120, 0.0, 0.0}, {1e120, 1e120, 0.0}};
    EXPECT_EQ(Read(vast).shape, InkShape::Nothing);
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
    const struct {
        const char* name;
        InkStroke ink;
        InkShape shape;
        std::size_t curves, joints;
    } rows[] = {
        {"line", DrawThrough({{0, 0}, {80, 33}}, false), InkShape::Line, 1, 0},
        {"corner", DrawThrough({{0, 0}, {80, 33}, {90, -50}}, false), InkShape::Polyline, 2, 1},
        {"bracket", DrawThrough({{50, 0}, {0, 3}, {2, 90}, {52, 88}}, false), InkShape::Polyline, 3, 2},
        {"triangle", DrawThrough({{0, 0}, {80, 3}, {30, 90}}, true), InkShape::Triangle, 3, 3},
        {"square", DrawThrough({{0, 0}, {80, 3}, {79, 82}, {-1, 78}}, true), InkShape::Square, 4, 4},
        {"rectangle", DrawThrough({{0, 0}, {140, 3}, {139, 82}, {-1, 78}}, true), InkShape::Rectangle, 4, 4},
        {"diamond", DrawThrough({{0, 0}, {40, 90}, {0, 180}, {-40, 90}}, true), InkShape::Rhombus, 4, 4},
        {"beam", DrawThrough({{0, 0}, {180, 90}, {173, 104}, {-7, 14}}, true), InkShape::Rectangle, 4, 4},
        {"narrow bracket", DrawThrough({{0, 0}, {200, 0}, {200, 14}, {0, 14}}, false), InkShape::Polyline, 3,
         2},
        {"jog", DrawThrough({{0, 0}, {200, 0}, {200, 30}, {400, 30}}, false), InkShape::Polyline, 3, 2},
        {"forth and back", DrawThrough({{0, 0}, {200, 0}, {200, 8}, {0, 8}}, false), InkShape::Line, 1, 0},
        {"circle", DrawRound(50, 50, 365), InkShape::Circle, 1, 0},
        {"circle that drifts", DrawRound(50, 50, 350, 0.15), InkShape::Circle, 1, 0},
        {"circle that runs on", DrawRound(50, 48, 440, 0.1), InkShape::Circle, 1, 0},
        {"ellipse", DrawRound(80, 40, 370, 0.05), InkShape::Ellipse, 1, 0},
        {"arc", DrawRound(50, 50, 150), InkShape::Arc, 1, 0},
    };
    for (const auto& row : rows) {
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

// A rectangle drawn two degrees off the axes lies along them; how sure that is only the ink can tell: two
// spreads of a hand. What the pen did not leave open stays certain.
TEST(CurvesAsDrawn, TellHowFarTheInkWasFromTheReading) {
    std::vector<Point> pts;
    const double c = std::cos(kTurn / 180.0);
    const double s = std::sin(kTurn / 180.0);
    const Point corners[] = {
        {0, 0}, {200 * c, 200 * s}, {200 * c - 120 * s, 200 * s + 120 * c}, {-120 * s, 120 * c}};
    for (std::size_t i = 0; i < 4; ++i) {
        const std::vector<Point> side = PointsOf(Straight(corners[i], corners[(i + 1) % 4]));
        pts.insert(pts.end(), side.begin(), side.end());
    }
    const InkStroke ink = InkOf(pts);
    const InkReading reading = Read(ink);
    ASSERT_EQ(reading.shape, InkShape::Rectangle);
    const std::vector<std::unique_ptr<Curve>> drawn = CurvesAsDrawn(ink, reading);
    std::vector<const Curve*> tidy;
    std::vector<const Curve*> hand;
    for (std::size_t i = 0; i < 4; ++i) {
        tidy.push_back(reading.curves[i].curve.get());
        hand.push_back(drawn[i].get());
        EXPECT_LT(drawn[i]->GetStart().Distance(corners[i]), 0.5);
        EXPECT_LT(drawn[i]->GetEnd().Distance(corners[(i + 1) % 4]), 0.5);
    }
    ConstraintOptions options;
    options.toleranceZone = 10.0;
    options.drawn = hand;
    const std::vector<InferredConstraint> found = InferConstraints(tidy, options).constraints;
    ASSERT_EQ(found.size(), 8U);
    for (const InferredConstraint& constraint : found)
        EXPECT_NEAR(constraint.confidence,
                    constraint.kind == ConstraintKind_Coincident ? 1.0 : std::exp(-2.0), 0.03);
}

TEST(InkInterpretation, ScribblesAreNoDrawing) {
    std::vector<Point> zigzag;
    for (int i = 0; i < 9; ++i)
        zigzag.emplace_back(12.0 * i, i % 2 == 0 ? 0.0 : 90.0);
    SketchRecognizerPreferences preferences;
    const InkReading scribble = InterpretInk(DrawThrough(zigzag, false), preferences);
    EXPECT_EQ(scribble.shape, InkShape::Scribble);
    EXPECT_TRUE(scribble.curves.empty());
    EXPECT_GE(scribble.cusps, 3);
    preferences.SetDoScribble(false);
    EXPECT_EQ(InterpretInk(DrawThrough(zigzag, false), preferences).shape, InkShape::Polyline);
}

struct CornerRates {
    int strokes = 0;
    int right = 0; ///< every corner found, none extra
};

CornerRates RateCorners(InkPlan (RandomPlans::*plan)(), unsigned seed, int strokes = 200,
                        bool hasTimes = true) {
    RandomPlans plans(seed);
    SketchRecognizerPreferences preferences;
    preferences.SetRegularPolygonRecognition(false); // it moves corners on purpose
    CornerRates rates;
    for (; rates.strokes < strokes; ++rates.strokes) {
        const InkPlan drawing = (plans.*plan)();
        const Hand hand = plans.AnyHand();
        Testing::Planned planned = drawing.Draw(plans.Rng(), hand);
        planned.ink.hasTimes = hasTimes;
        std::vector<Point> found;
        for (const InkJoint& joint : InterpretInk(planned.ink, preferences).joints)
            if (joint.kind == JointKind::Corner)
                found.push_back(joint.position);
        bool all = found.size() == planned.corners.size();
        for (const Point& corner : planned.corners)
            all = all && std::any_of(found.begin(), found.end(), [&](const Point& p) {
                      return p.Distance(corner) < 0.06 * planned.size;
                  });
        rates.right += all ? 1 : 0;
    }
    return rates;
}

// Floors a little below the measured rates: a change that loses corners shows.
TEST(InkInterpretation, FindsTheCornersOfSyntheticInk) {
    EXPECT_GE(RateCorners(&RandomPlans::Polyline, 7).right, 196);
    EXPECT_GE(RateCorners(&RandomPlans::Polygon, 7).right, 195);
    EXPECT_GE(RateCorners(&RandomPlans::Mixed, 7).right, 194);
    EXPECT_GE(RateCorners(&RandomPlans::Smooth, 7).right, 198);
    EXPECT_GE(RateCorners(&RandomPlans::Smooth, 7, 1000, false).right, 962); // a shallow wave is no two lines
    EXPECT_GE(RateCorners(&RandomPlans::LongPolyline, 7, 60).right, 55);
    EXPECT_GE(RateCorners(&RandomPlans::Staircase, 7, 60).right, 57);
    EXPECT_GE(RateCorners(&RandomPlans::Gear, 7, 60).right, 54);
}

// Distances to these do without the curve's own projections.
std::vector<Point> FinePoints(const Curve& curve) {
    std::vector<Point> points;
    curve.CreatePolylinePoints(2000, points);
    return points;
}

// However large the view shows the model: the reading is the ink's.
TEST(InkInterpretation, TheViewsZoomChangesNothing) {
    RandomPlans plans(31);
    for (int i = 0; i < 40; ++i) {
        const InkStroke ink = (i % 2 == 0 ? plans.Polygon() : plans.Slot()).Draw(plans.Rng(), Hand()).ink;
        for (const double zoom : {0.05, 8.0}) {
            SketchRecognizerPreferences zoomed;
            zoomed.SetZoomFactor(zoom);
            const InkReading a = Read(ink);
            const InkReading b = InterpretInk(ink, zoomed);
            EXPECT_EQ(a.shape, b.shape) << i;
            ASSERT_EQ(a.curves.size(), b.curves.size()) << i;
            EXPECT_EQ(a.curves[0].maxDeviation, b.curves[0].maxDeviation) << i;
        }
    }
}

// Whatever was drawn: no curve leaves the ink's box grown by the tolerance of a line (a corner's tip may lie
// so far beyond its rounding) or lies by more than that farther from the ink than the rules' own curves, each
// tells its deviation truly, and joints join.
TEST(InkInterpretation, ReadingsStayInTheInksBoxAndTellTheirDeviation) {
    InkPlan (RandomPlans::*const kinds[])() = {&RandomPlans::Polyline, &RandomPlans::Polygon,
                                               &RandomPlans::Mixed, &RandomPlans::Smooth};
    SketchRecognizerPreferences rulesOnly;
    rulesOnly.SetReduceInkCurveDeviation(false);
    rulesOnly.SetCurveTidy(false);
    rulesOnly.SetChangeCurveType(false);
    rulesOnly.SetSnapping(false);
    RandomPlans plans(22);
    int splines = 0;
    for (int trial = 0; trial < 240; ++trial) {
        SCOPED_TRACE(trial);
        const InkPlan plan = (plans.*kinds[trial % 4])();
        const Hand hand = plans.AnyHand();
        const InkStroke ink = plan.Draw(plans.Rng(), hand).ink;
        XYBox box({1e300, 1e300}, {-1e300, -1e300});
        for (const InkSample& s : ink.samples) {
            box.min = {std::min(box.min.x, s.x), std::min(box.min.y, s.y)};
            box.max = {std::max(box.max.x, s.x), std::max(box.max.y, s.y)};
        }
        // A twentieth of the length, at the size at which the rules work at least 2.5 of 45.
        const double tolerance = std::max(0.05 * plan.Length(), 2.5 / 45.0 * box.min.Distance(box.max));
        const InkReading reading = Read(ink);
        double byRules = 0.0;
        for (const InterpretedCurve& made : InterpretInk(ink, rulesOnly).curves)
            byRules = std::max(byRules, made.maxDeviation);
        ExpectJoined(reading);
        for (const InterpretedCurve& made : reading.curves) {
            XYBox reach;
            ASSERT_TRUE(made.curve->AskXYBox(reach));
            EXPECT_GT(reach.min.x, box.min.x - tolerance);
            EXPECT_GT(reach.min.y, box.min.y - tolerance);
            EXPECT_LT(reach.max.x, box.max.x + tolerance);
            EXPECT_LT(reach.max.y, box.max.y + tolerance);
            const std::vector<Point> fine = FinePoints(*made.curve);
            double farthest = 0.0;
            const int n = static_cast<int>(ink.samples.size());
            const int count = (made.lastSample - made.firstSample + n) % n;
            for (int k = 0; k <= count; ++k) {
                const int i = (made.firstSample + k) % n;
                const InkSample& s = ink.samples[static_cast<std::size_t>(i)];
                const double distance = PolylineDistance(fine, {s.x, s.y});
                farthest = std::max(farthest, distance);
                const bool isInner = std::min(i, n - i) > n / 8; // a shape that closes cuts off the ends
                EXPECT_LT(isInner ? distance : 0.0, byRules + tolerance);
            }
            EXPECT_NEAR(made.maxDeviation, farthest, 1e-3 * tolerance);
            splines += made.curve->GetType() == CurveType_Spline ? 1 : 0;
        }
    }
    EXPECT_GT(splines, 10);
}

// A diamond with cut corners, drawn by a person: the square that its sides and angles would pass for stands
// out of the ink on every side.
TEST(InkInterpretation, RegularShapesStayInTheInksBoxToo) {
    const std::vector<Point> drawn{{194, 117}, {188, 98},  {160, 59},  {141, 22},  {140, 27}, {124, 44},
                                   {66, 96},   {44, 113},  {43, 119},  {71, 158},  {79, 163}, {108, 195},
                                   {122, 205}, {135, 221}, {139, 221}, {148, 203}, {172, 172}};
    std::vector<Point> pts;
    double length = 0.0;
    for (std::size_t i = 1; i < drawn.size(); ++i) {
        const std::vector<Point> side = PointsOf(Straight(drawn[i - 1], drawn[i]), 0.0, 1.0, 12);
        pts.insert(pts.end(), side.begin(), side.end());
        length += drawn[i].Distance(drawn[i - 1]);
    }
    const InkReading reading = Read(InkOf(pts));
    ASSERT_EQ(reading.curves.size(), 4U);
    EXPECT_TRUE(reading.isClosed);
    const XYBox box(drawn);
    for (const InterpretedCurve& made : reading.curves)
        EXPECT_LT(std::max(std::fabs(made.curve->GetStart().x - 0.5 * (box.min.x + box.max.x)) -
                               0.5 * (box.max.x - box.min.x),
                           std::fabs(made.curve->GetStart().y - 0.5 * (box.min.y + box.max.y)) -
                               0.5 * (box.max.y - box.min.y)),
                  0.05 * length);
}

// Ink to and fro between two places; forth and back short of the start, which closing would make one place;
// a ring of bends alone.
TEST(InkInterpretation, OddStrokesHaveCurvesOfSomeLengthToo) {
    std::vector<Point> fro;
    for (unsigned i = 0, state = 1; i < 60; ++i, state = state * 1103515245U + 12345U)
        fro.emplace_back(((state >> 16U) & 1U) != 0 ? 100.0 : 0.0, 0.0);
    const std::vector<Point> shut{{79, 27}, {15, 6}, {66, 22}, {54, 23}};
    const std::vector<Point> ring{{22.5, -22.5},  {22.5, 56.3},   {16.9, 56.3},   {16.9, 61.9},
                                  {11.3, 67.5},   {-16.9, 61.9},  {-16.9, 56.3},  {-22.5, 56.3},
                                  {-22.5, -56.3}, {-16.9, -56.3}, {-11.3, -61.9}, {-11.3, -67.5},
                                  {11.3, -67.5},  {22.5, -56.3},  {22.5, 39.4}};
    for (const std::vector<Point>& pts : {fro, shut, ring})
        for (const bool mayReduce : {true, false}) {
            SCOPED_TRACE(testing::Message() << pts.size() << " samples, " << mayReduce);
            SketchRecognizerPreferences preferences;
            preferences.SetReduceInkCurveDeviation(mayReduce);
            const InkReading reading = InterpretInk(InkOf(pts), preferences);
            EXPECT_FALSE(reading.curves.empty());
            for (const InterpretedCurve& made : reading.curves)
                EXPECT_GT(made.curve->Length(), made.maxDeviation);
            ExpectJoined(reading);
        }
}

// A drawing has the deviations of its enlargement.
TEST(InkInterpretation, DeviationsFollowTheSize) {
    RandomPlans plans(23);
    for (int trial = 0; trial < 20; ++trial) {
        const InkStroke ink = plans.Polyline().Draw(plans.Rng(), plans.AnyHand()).ink;
        InkStroke tiny = ink;
        for (InkSample& s : tiny.samples)
            s = {1e-6 * s.x, 1e-6 * s.y, s.t};
        const InkReading a = Read(ink);
        const InkReading b = Read(tiny);
        ASSERT_EQ(a.curves.size(), b.curves.size());
        for (std::size_t i = 0; i < a.curves.size(); ++i)
            EXPECT_NEAR(1e-6 * a.curves[i].maxDeviation, b.curves[i].maxDeviation, 1e-13);
    }
}

TEST(InkInterpretation, WavesAreFollowedNotStraightened) {
    for (const double height : {8.0, 18.0, 25.0})
        for (const double waves : {1.0, 1.5, 2.0, 3.0}) {
            SCOPED_TRACE(testing::Message() << height << ", " << waves);
            const Path wave = [=](double u) {
                return Point(155.0 * u, height * std::sin(kTurn * waves * u));
            };
            for (const InterpretedCurve& made : Read(InkOf(PointsOf(wave))).curves)
                EXPECT_LT(made.maxDeviation, 0.04 * 155.0);
        }
}

TEST(InkInterpretation, ArcsOfEitherSenseKeepTheirEnds) {
    for (const double degrees : {150.0, -150.0}) {
        const InkStroke ink = DrawRound(50, 50, degrees);
        const InkReading reading = Read(ink);
        ASSERT_EQ(reading.shape, InkShape::Arc);
        const InterpretedCurve& made = reading.curves[0];
        EXPECT_EQ(made.isReversed, degrees < 0.0);
        EXPECT_LT(EndOf(*made.curve, made.First()).Distance({ink.samples[0].x, ink.samples[0].y}), 0.5);
        EXPECT_NEAR(static_cast<const Arc&>(*made.curve).GetRadius(), 50.0, 0.1);
        EXPECT_LT(made.maxDeviation, 0.1);
    }
}

} // namespace
} // namespace Tessera::Geometry
