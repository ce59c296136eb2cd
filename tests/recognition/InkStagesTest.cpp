// Each stage of the interpretation by itself: which preferences it needs, and that it needs no others.
#include <complex>

#include "tessera/geometry/Line.h"
#include "tessera/recognition/InkInterpretation.h"
#include "tests/support/PenPaths.h"
#include "tests/support/RecognizedResults.h"
#include "tests/support/SyntheticInk.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

enum Switch : unsigned {
    kScribble = 1,
    kOversketch = 2,
    kWall = 4,
    kTidy = 8,
    kReduce = 16,
    kChange = 32,
    kSnap = 64,
    kRegular = 128,
    kAll = 255
};

SketchRecognizerPreferences With(unsigned on) {
    SketchRecognizerPreferences preferences;
    preferences.SetDoScribble((on & kScribble) != 0);
    preferences.SetOversketch((on & kOversketch) != 0);
    preferences.SetThinWallRecognition((on & kWall) != 0);
    preferences.SetCurveTidy((on & kTidy) != 0);
    preferences.SetReduceInkCurveDeviation((on & kReduce) != 0);
    preferences.SetChangeCurveType((on & kChange) != 0);
    preferences.SetSnapping((on & kSnap) != 0);
    preferences.SetRegularPolygonRecognition((on & kRegular) != 0);
    return preferences;
}

InkStroke Through(const std::vector<Point>& corners) {
    std::vector<Point> pts;
    for (std::size_t i = 1; i < corners.size(); ++i) {
        const std::vector<Point> side = PointsOf(Straight(corners[i - 1], corners[i]), 0.0, 1.0, 50);
        pts.insert(pts.end(), side.begin(), side.end());
    }
    return InkOf(pts);
}

InkStroke Zigzag() {
    std::vector<Point> corners;
    for (int i = 0; i < 9; ++i)
        corners.emplace_back(12.0 * i, i % 2 == 0 ? 0.0 : 90.0);
    return Through(corners);
}

// The pen nearly stops so many times.
InkStroke Hesitating(const Path& path, int stops) {
    InkStroke ink = InkOf(
        PointsOf([&](double u) { return path(u + 0.97 / (stops * kTurn) * std::sin(stops * kTurn * u)); }));
    ink.hasTimes = true;
    for (std::size_t i = 0; i < ink.samples.size(); ++i)
        ink.samples[i].t = 8.0 * static_cast<double>(i);
    return ink;
}

bool IsAlongAxis(const InterpretedCurve& made) {
    const Point along = made.curve->GetEnd() - made.curve->GetStart();
    return made.curve->GetType() == CurveType_Line && (along.x == 0.0 || along.y == 0.0);
}

std::size_t Tangents(const InkReading& reading) {
    return static_cast<std::size_t>(
        std::count_if(reading.joints.begin(), reading.joints.end(),
                      [](const InkJoint& j) { return j.kind == JointKind::Tangent; }));
}

bool IsOnto(const InkReading& reading, SnapPointType_e keyPoint) {
    return reading.connections.size() == 1 && reading.connections[0].keyPoint == keyPoint;
}

/// What a stage does to a stroke, and the preferences without which it does not.
struct Stage {
    const char* name;
    InkStroke ink;
    unsigned needs;
    std::function<bool(const InkReading&)> isDone;
    unsigned offAlways = 0; ///< preferences
};

Path ThreeLobes() {
    return [](double u) { return (90 + 40 * std::cos(3 * kTurn * u)) * Round({}, 1, 1, 0, kTurn)(u); };
}

/// A closed outline of a rectangle with a bowed side, so many times as long.
std::vector<Point> BowedBox(double times, double bow) {
    const Point along(-30.0 * times, 150.0 * times);
    const Point a(0, 300);
    const Point b(150, 330);
    return Joined(
        {Straight(a, b), Straight(b, b + along), Bowed(b + along, a + along, bow), Straight(a + along, a)},
        0.0, 1.0, 50);
}

std::vector<Point> HookedCorner() {
    std::vector<Point> pts = PointsOf(Round({0, 3.5}, 3.5, 3.5, 0.25 * kTurn, 0.75 * kTurn), 0.0, 1.0, 10);
    const std::vector<Point> sides =
        Joined({Straight({2, 0}, {170, 20}), Straight({170, 22}, {190, 110})}, 0.0, 1.0, 60);
    pts.insert(pts.end(), sides.begin(), sides.end());
    return pts;
}

constexpr unsigned kPieces = kReduce | kChange; // where the rules see other pieces

// The earlier curve is a line from (0, -500) to (1000, -500).
std::vector<Stage> Stages() {
    const std::vector<Point> slot =
        Joined({Straight({-60, -30}, {60, -30}), Round({60, 0}, 30, 30, -0.25 * kTurn, 0.25 * kTurn),
                Straight({60, 30}, {-60, 30}), Round({-60, 0}, 30, 30, 0.25 * kTurn, 0.75 * kTurn)});
    const InkStroke wall = Through({{0, 300}, {200, 340}, {1, 305}});
    return {
        {"scribble", Zigzag(), kScribble, [](auto& r) { return r.shape == InkShape::Scribble; }},
        {"drawn over", Through({{20, -498}, {150, -497}}), kOversketch,
         [](auto& r) { return r.retraced == 0; }},
        {"drawn over with a bulge", InkOf(PointsOf(Bowed({700, -500}, {300, -500}, 0.07))),
         kOversketch | kChange, [](auto& r) { return r.retraced == 0; }},
        {"wall", wall, kWall, [](auto& r) { return r.shape == InkShape::ThinWall; }},
        {"forth and back", wall, kTidy, [](auto& r) { return r.shape == InkShape::Line; }, kWall},
        {"circle", InkOf(PointsOf(Round({300, 300}, 50, 50, 0.3, 6.4))), kTidy,
         [](auto& r) { return r.shape == InkShape::Circle; }},
        {"ellipse", InkOf(PointsOf(Round({300, 300}, 80, 45, 0.3, 6.7))), kTidy,
         [](auto& r) { return r.shape == InkShape::Ellipse; }},
        {"smooth seam", InkOf(PointsOf(ThreeLobes(), 0.0, 0.985, 500)), kTidy,
         [](auto& r) { return r.shape == InkShape::Spline && r.isClosed && Tangents(r) == 1; }},
        {"first side is last",
         Through({{260, 210}, {300, 220}, {330, 330}, {180, 320}, {200, 195}, {250, 207}}), kTidy,
         [](auto& r) { return r.isClosed && r.curves.size() == 4 && r.joints.size() == 4; }},
        {"crumb", InkOf(HookedCorner()), kTidy, [](auto& r) { return r.curves.size() == 2; }, kReduce},
        {"merged", Hesitating(Straight({0, 0}, {200, 110}), 2), kTidy,
         [](auto& r) { return r.curves.size() == 1; }, kReduce},
        {"merged elliptic arc", Hesitating(Round({300, 300}, 100, 50, 1.6, 1.6 + 0.8 * kTurn, 0.3), 1),
         kTidy | kChange, [](auto& r) { return r.shape == InkShape::EllipticArc; }, kReduce},
        {"merged full ellipse", Hesitating(Round({300, 300}, 100, 50, 0.8, 0.8 + 0.95 * kTurn, 0.3), 1),
         kTidy, [](auto& r) { return r.shape == InkShape::Ellipse; }, kReduce},
        {"corner", Through({{0, 300}, {200, 340}, {260, 160}}), kTidy,
         [](auto& r) {
             return r.joints.size() == 1 && r.joints[0].position.Distance({200, 340}) < 1.0;
         }},
        {"tangent joints", InkOf(slot), kPieces | kTidy, [](auto& r) { return Tangents(r) == 4; }},
        {"free end", Through({{1014, -493}, {1100, -300}}), kTidy,
         [](auto& r) { return IsOnto(r, SnapPointType_End); }},
        {"key point", Through({{503, -495}, {560, -300}}), kSnap,
         [](auto& r) { return IsOnto(r, SnapPointType_Mid); }},
        {"axis", Through({{0, 300}, {200, 307}, {260, 460}}), kSnap,
         [](auto& r) { return r.curves.size() == 2 && IsAlongAxis(r.curves[0]); }},
        {"rectangle", Through({{300, 300}, {450, 360}, {412, 472}, {258, 409}, {300, 300}}), kRegular | kTidy,
         [](auto& r) { return r.shape == InkShape::Rectangle; }},
        {"pentagon", Through({{0, 300}, {95, 331}, {95, 431}, {0, 462}, {-57, 384}, {0, 300}}),
         kRegular | kTidy, [](auto& r) { return r.shape == InkShape::RegularPolygon; }},
        {"bowed side an arc", InkOf(BowedBox(1.5, 0.15)), kPieces,
         [](auto& r) { return r.curves.size() == 4 && r.curves[2].curve->GetType() == CurveType_Arc; }},
        {"bowed side a line", Trembling(BowedBox(1.0, 0.13), 1.2, 4), kChange,
         [](auto& r) { return r.curves.size() == 4 && r.curves[2].curve->GetType() == CurveType_Line; },
         kReduce},
    };
}

TEST(InkStages, EachNeedsItsPreferencesAndNoOthers) {
    Line earlier({0, -500}, {1000, -500});
    Curve* const curves[] = {&earlier};
    for (const Stage& stage : Stages())
        for (unsigned off = 0; off <= kRegular; off = off > 0 ? 2 * off : 1) {
            if ((off & stage.offAlways) != 0)
                continue;
            const InkReading reading = InterpretInk(stage.ink, With(kAll & ~off & ~stage.offAlways), curves);
            EXPECT_EQ(stage.isDone(reading), (stage.needs & off) == 0)
                << stage.name << " without " << off << " shape " << (int)reading.shape << " curves "
                << reading.curves.size() << " joints " << reading.joints.size() << " conn "
                << reading.connections.size();
        }
}

// Diagonal of the box whose sides lie along the ink: the steps' directions, four times as far round, agree.
double DiagonalAlong(std::vector<Point> pts) {
    std::complex<double> sum;
    for (std::size_t i = 1; i < pts.size(); ++i) {
        const std::complex<double> step(pts[i].x - pts[i - 1].x, pts[i].y - pts[i - 1].y);
        sum += step == 0.0 ? step : std::polar(std::abs(step), 4.0 * std::arg(step));
    }
    for (Point& p : pts) {
        const std::complex<double> turned =
            std::complex<double>(p.x, p.y) * std::polar(1.0, -0.25 * std::arg(sum));
        p = {turned.real(), turned.imag()};
    }
    const XYBox box(pts);
    return box.min.Distance(box.max);
}

// With all of them off the reading is what the recogniser makes of the ink at the size of its tolerances.
TEST(InkStages, WithoutAnyTheRecogniserAnswers) {
    std::vector<InkStroke> strokes;
    for (Stage& stage : Stages())
        strokes.push_back(std::move(stage.ink));
    RandomPlans plans(17);
    for (int i = 0; i < 60; ++i)
        strokes.push_back((i % 2 == 0 ? plans.Mixed() : plans.Polygon()).Draw(plans.Rng(), Hand()).ink);
    SketchRecognizerPreferences off = With(0);
    off.SetSegmentationScheme(SketchRecognizerPreferences::SegmentationScheme_NoSpeed);
    Line earlier({0, -500}, {1000, -500});
    Curve* const curves[] = {&earlier};
    for (const InkStroke& ink : strokes) {
        SCOPED_TRACE(&ink - strokes.data());
        std::vector<Point> pts;
        for (const InkSample& s : ink.samples)
            pts.emplace_back(s.x, s.y);
        const XYBox box(pts);
        const double scale = 45.0 / DiagonalAlong(pts);
        Stroke stroke;
        for (const Point& p : pts)
            stroke.AddPoint({scale * (p.x - box.min.x), scale * (p.y - box.min.y), 0.0});
        SketchRecognizer recognizer;
        recognizer.SetPreferences(off);
        recognizer.Recognize(stroke, true, CurveType_Line);
        const Results expected(recognizer);
        const InkReading reading = InterpretInk(ink, off, curves);
        EXPECT_TRUE(reading.joints.empty() && reading.connections.empty());
        ASSERT_EQ(reading.curves.size(), expected.Count());
        for (std::size_t i = 0; i < expected.Count(); ++i) {
            const InterpretedCurve& made = reading.curves[i];
            ASSERT_EQ(made.curve->GetType(), expected.CurveOf(i).GetType());
            EXPECT_EQ(made.firstSample, expected[i].GetStartIndex());
            EXPECT_EQ(made.lastSample, expected[i].GetEndIndex());
            std::vector<Point> found, wanted;
            made.curve->CreatePolylinePoints(9, found);
            expected.CurveOf(i).CreatePolylinePoints(9, wanted);
            for (std::size_t k = 0; k < found.size(); ++k)
                EXPECT_LT((scale * (found[k] - box.min)).Distance(wanted[k]), 1e-9);
        }
    }
}

} // namespace
} // namespace Tessera::Geometry
