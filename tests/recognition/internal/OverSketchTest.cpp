#include "tessera/recognition/internal/OverSketch.h"

#include "tessera/recognition/internal/FreeForm.h"
#include "tests/support/PenPaths.h"
#include "tests/support/SampleCurves.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

Path Wave(double width, double height) {
    return [=](double u) { return Point(width * u, height * std::sin(kTurn * u)); };
}

InkReading Draw(const std::vector<Point>& ink, Curve& old,
                const SketchRecognizerPreferences& preferences = SketchRecognizerPreferences()) {
    Line other({-400.0, -400.0}, {400.0, -390.0});
    Curve* const earlier[] = {&other, nullptr, &old};
    return InterpretInk(InkOf(ink), preferences, earlier);
}

/// Mean and largest.
std::pair<double, double> DistancesOf(const std::vector<Point>& pts, const Curve& curve) {
    double sum = 0.0, largest = 0.0;
    for (const Point& p : pts) {
        sum += curve.DistanceBounded(p);
        largest = std::max(largest, curve.DistanceBounded(p));
    }
    return {sum / static_cast<double>(pts.size()), largest};
}

/// Largest turn between neighbours of three hundred chords, across the seam of a closed curve too; radians.
double SharpestTurn(const Curve& curve) {
    constexpr std::size_t kChords = 300;
    std::vector<Point> pts;
    curve.CreatePolylinePoints(kChords + 1, pts);
    double sharpest = 0.0;
    for (std::size_t i = 0; i + (curve.IsClosed() ? 0 : 1) < kChords; ++i) {
        const Point in = pts[i + 1] - pts[i];
        const Point out = pts[(i + 1) % kChords + 1] - pts[(i + 1) % kChords];
        sharpest = std::max(sharpest, std::fabs(SignedAngle(in, out)));
    }
    return sharpest;
}

// Drawn over with a bulge: the new form is nearer to the ink than the old one, keeps its kind and runs its
// way; where nothing was drawn it stays within `stays` of the old one.
TEST(OverSketch, EveryKindTakesANewForm) {
    const Path half = Round({0, 0}, 120, 120, 0.0, std::numbers::pi);
    const Path whole = Round({0, 0}, 120, 120, 0.0, kTurn);
    const Path oval = Round({40, -10}, 150, 80, 0.0, kTurn);
    const Path ovalArc = Round({40, -10}, 150, 80, 0.3, 2.8);
    const Path wave = Wave(400, 60);
    const Path blob = [](double u) {
        return (100 + 25 * std::cos(2 * kTurn * u)) * Point(std::cos(kTurn * u), std::sin(kTurn * u));
    };
    const Point a(-30, 20);
    const Point b(270, 60);
    const struct {
        const char* name;
        std::unique_ptr<Curve> old;
        Path path; // the old curve over 0 to 1
        double from, to;
        double stays;
    } rows[] = {
        {"line, whole", MakeLine(a, b), Straight(a, b), 0.01, 0.99, 0},
        {"line, its end", MakeLine(a, b), Straight(a, b), 0.4, 1.0, 8},
        {"arc", MakeArc({}, 120, 0.0, kPi), half, 0.2, 0.9, 8},
        {"circle", MakeCircle({}, 120), whole, 0.1, 0.7, 8},
        {"ellipse", MakeEllipse({40, -10}, 150, 80, 0.0, 0.0, kTurn), oval, 0.2, 0.9, 8},
        {"elliptic arc", MakeEllipse({40, -10}, 150, 80, 0.0, 0.3, 2.8), ovalArc, 0.0, 0.98, 0},
        {"spline", FitFreeForm(PointsOf(wave), false, 0.1), wave, 0.3, 0.6, 0.6},
        {"closed spline", FitFreeForm(PointsOf(blob), true, 0.1), blob, 0.6, 0.9, 0.6},
    };
    for (const auto& row : rows)
        for (const bool backwards : {false, true}) {
            SCOPED_TRACE(testing::Message() << row.name << (backwards ? ", backwards" : ""));
            std::vector<Point> ink =
                PointsOf(Bulging(row.path, row.from, row.to, 5.0, 4.0), row.from, row.to);
            if (backwards)
                std::reverse(ink.begin(), ink.end());
            const InkReading reading = Draw(ink, *row.old);
            ASSERT_EQ(reading.shape, InkShape::Retrace);
            EXPECT_EQ(reading.retraced, 2);
            ASSERT_EQ(reading.curves.size(), 1U);
            const InterpretedCurve& made = reading.curves[0];
            EXPECT_EQ(made.curve->GetType(), row.old->GetType());
            EXPECT_EQ(made.curve->IsClosed(), row.old->IsClosed());
            EXPECT_EQ(reading.isClosed, row.old->IsClosed());
            EXPECT_EQ(made.isReversed, backwards);
            const auto [mean, largest] = DistancesOf(ink, *made.curve);
            EXPECT_LT(mean, 0.7 * DistancesOf(ink, *row.old).first);
            EXPECT_NEAR(made.maxDeviation, largest, 1e-12);
            EXPECT_TRUE(row.old->IsClosed() || made.curve->GetStart().Distance(row.old->GetStart()) < 10.0);
            EXPECT_LT(SharpestTurn(*made.curve), 0.25); // the ink runs into the rest smoothly
            for (double u = 0.0; u <= 1.0; u += 0.01)
                if (u < row.from - 0.02 || u > row.to + 0.02) {
                    EXPECT_LT(made.curve->DistanceBounded(row.path(u)), row.stays);
                }
        }
}

TEST(OverSketch, AClosedSplineDrawnAllRoundKeepsASmoothSeam) {
    const auto old = FitFreeForm(PointsOf(Round({0, 0}, 120, 70, 0.0, kTurn)), true, 0.1);
    const std::vector<Point> ink = PointsOf([](double u) {
        return (1.0 + 0.05 * u) * Round({3, 2}, 120, 70, 1.0, 1.0 + 1.1 * kTurn)(u);
    });
    const InkReading reading = Draw(ink, *old);
    ASSERT_EQ(reading.shape, InkShape::Retrace);
    ASSERT_EQ(reading.curves[0].curve->GetType(), CurveType_Spline);
    EXPECT_TRUE(static_cast<const Spline&>(*reading.curves[0].curve).IsG1Closed());
    EXPECT_LT(reading.curves[0].maxDeviation, 8.0);
    EXPECT_LT(SharpestTurn(*reading.curves[0].curve), 0.2); // the drift between the ends makes no jog
}

// A bulge of which the circle can follow nothing: the rest of the old curve is kept.
TEST(OverSketch, WhatNoCircleFollowsBecomesFree) {
    Arc circle(Point(0, 0), 400.0);
    const Path path = Round({0, 0}, 400, 400, 0.0, kTurn);
    const std::vector<Point> ink = PointsOf(Bulging(path, 0.1, 0.25, 0.0, -28.0), 0.1, 0.25);
    const InkReading reading = Draw(ink, circle);
    ASSERT_EQ(reading.shape, InkShape::Retrace);
    EXPECT_EQ(reading.curves[0].curve->GetType(), CurveType_Spline);
    EXPECT_TRUE(reading.isClosed);
    EXPECT_LT(reading.curves[0].maxDeviation, 8.0);
    EXPECT_LT(reading.curves[0].curve->DistanceBounded(path(0.7)), 2.0);
}

// A few steps of the pen lead round such a curve a million times.
TEST(OverSketch, ACurveMuchSmallerThanTheInkIsFollowedToo) {
    const double radius = 1e-5;
    const Arc dot(Point(30, 1), radius);
    const CurveTrack track(dot);
    std::vector<Point> ink;
    for (int i = 0; i < 400; ++i)
        ink.emplace_back(i % 2 * 100.0, 0.01 * i);
    const std::vector<TrackFoot> feet = FollowTrack(track, ink, 100.0);
    ASSERT_EQ(feet.size(), ink.size());
    for (std::size_t i = 0; i < ink.size(); ++i) {
        EXPECT_NEAR(feet[i].distance, dot.Distance(ink[i]), 0.001 * radius);
        EXPECT_NEAR(track.At(feet[i].along).Distance(ink[i]), feet[i].distance, 0.001 * radius);
        if (i > 0) {
            EXPECT_LE(std::fabs(feet[i].along - feet[i - 1].along), track.Length());
        }
    }
}

TEST(OverSketch, WhatOnlyStandsOnACurveIsNew) {
    Line line({0, 0}, {300, 0});
    Arc circle(Point(150, 150), 120.0);
    const struct {
        const char* name;
        Curve* old;
        std::vector<Point> ink;
    } rows[] = {
        {"roof", &line, Joined({Straight({80, 2}, {140, 50}), Straight({140, 50}, {200, -2})})},
        {"half round", &line, PointsOf(Round({150, 0}, 40, 40, 0.0, std::numbers::pi))},
        {"flat arch", &line, PointsOf(Bulging(Straight({50, 0}, {250, 0}), 0.0, 1.0, 0.0, 40.0))},
        {"chord", &circle, PointsOf(Straight({66, 66}, {234, 66}))},
        {"crossing", &line, PointsOf(Straight({100, -9}, {150, 9}))},
        {"loop", &line, PointsOf(Round({150, 8}, 8, 8, 0.0, kTurn))},
        {"beyond the end", &line, PointsOf(Straight({200, 1}, {340, 2}))},
        {"joined to the end", &line, PointsOf(Straight({300, 1}, {400, 2}))},
        {"small and beside it", &line, PointsOf(Straight({100, 8}, {120, 8}))},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const InkReading reading = Draw(row.ink, *row.old);
        EXPECT_NE(reading.shape, InkShape::Retrace);
        EXPECT_EQ(reading.retraced, -1);
    }
}

TEST(OverSketch, TheTolerancesHold) {
    Line line({0, 0}, {300, 0});
    const auto wave = FitFreeForm(PointsOf(Wave(600, 30)), false, 0.1);
    SketchRecognizerPreferences usual;
    SketchRecognizerPreferences off = usual;
    off.SetOversketch(false);
    SketchRecognizerPreferences zoomed = usual;
    zoomed.SetZoomFactor(2.0);
    SketchRecognizerPreferences narrow = usual;
    narrow.SetOverSketchTolerances(10.0, 15.0);
    const struct {
        const char* name;
        Curve* old;
        double ends, bulge;
        const SketchRecognizerPreferences* preferences;
        bool retraces;
    } rows[] = {
        {"inside the first", &line, 9.9, 0.0, &usual, true},
        {"outside the first", &line, 10.1, 0.0, &usual, false},
        {"inside the first, zoomed", &line, 4.9, 0.0, &zoomed, true},
        {"outside the first, zoomed", &line, 5.1, 0.0, &zoomed, false},
        {"inside the second", wave.get(), 0.0, 14.5, &narrow, true},
        {"outside the second", wave.get(), 0.0, 15.5, &narrow, false},
        {"switched off", &line, 1.0, 0.0, &off, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Path path = row.old == &line ? Straight({0, 0}, {300, 0}) : Wave(600, 30);
        const InkReading reading = Draw(PointsOf(Bulging(path, 0.1, 0.9, row.ends, row.bulge), 0.1, 0.9),
                                        *row.old, *row.preferences);
        EXPECT_EQ(reading.shape == InkShape::Retrace, row.retraces);
    }
}

// A side of a triangle drawn again, nearly level: it becomes level where nothing holds it, and stays joined.
TEST(OverSketch, TheNewFormStaysJoined) {
    Line side({0, 0}, {300, 40});
    Line next({300, 40}, {120, 250});
    Line last({120, 250}, {0, 0});
    const std::vector<Point> ink = PointsOf(Straight({4, 5}, {293, 38}));
    for (Curve* const other : std::initializer_list<Curve*>{&next, nullptr}) {
        Curve* const earlier[] = {&last, other, &side};
        const InkReading reading = InterpretInk(InkOf(ink), {}, earlier);
        ASSERT_EQ(reading.shape, InkShape::Retrace);
        EXPECT_EQ(reading.connections.size(), other != nullptr ? 2U : 1U);
        EXPECT_LT(reading.curves[0].curve->GetStart().Distance({0, 0}), 1e-9);
        EXPECT_LT(reading.curves[0].curve->GetEnd().Distance({300, 40}), other != nullptr ? 1e-9 : 8.0);
    }
    Line tilted({0, 0}, {300, 12});
    Curve* const alone[] = {&tilted};
    const InkReading level = InterpretInk(InkOf(PointsOf(Straight({2, 3}, {296, 9}))), {}, alone);
    ASSERT_EQ(level.shape, InkShape::Retrace);
    EXPECT_EQ(level.curves[0].curve->GetStart().y, level.curves[0].curve->GetEnd().y);
}

TEST(OverSketch, TheNearestCurveTheNewestOfEquals) {
    Line a({0, 0}, {300, 0});
    Line b({0, 6}, {300, 6});
    Line c({0, 6}, {300, 6});
    Curve* const earlier[] = {&a, &b, &c};
    const auto drawnAt = [&](double y) {
        return InterpretInk(InkOf(PointsOf(Straight({10, y}, {280, y}))), {}, earlier).retraced;
    };
    EXPECT_EQ(drawnAt(2.0), 0);
    EXPECT_EQ(drawnAt(4.0), 2);
}

} // namespace
} // namespace Tessera::Geometry
