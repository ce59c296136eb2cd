#include "tessera/recognition/Scribble.h"

#include <numeric>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tessera/kernel/SM.h"
#include "tessera/kernel/internal/SmFault.h"
#include "tessera/recognition/ScribbleQuestion.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tessera/recognition/internal/ScribbleRecord.h"
#include "tests/support/DrawnStrokes.h"

namespace {

using namespace Tessera::Geometry;
using Tessera::Testing::StrokeThrough;
using Tessera::Testing::Zigzag;
using Points = std::vector<Point>;

constexpr double kPi = std::numbers::pi;

Points Along(const Points& corners, int perLeg) {
    const Tessera::Testing::Samples samples = Tessera::Testing::DrawPath(corners, perLeg);
    return {samples.begin(), samples.end()};
}

Points Spiral(double turns, int samples, double growth) {
    Points points;
    for (int i = 0; i <= samples; ++i) {
        const double angle = 2 * kPi * turns * i / samples;
        points.push_back((40 + growth * angle) * Point(std::cos(angle), std::sin(angle)));
    }
    return points;
}

Points NarrowLoops(double turns) {
    Points points = Spiral(turns, 200, 0.0);
    for (Point& p : points)
        p.y /= 12.0;
    return points;
}

/// Every second leg goes up and then aside.
Points Flags(int count) {
    Points corners;
    for (int i = 0; i < count; ++i)
        for (const Point& p : {Point(0, 0), Point(0, 50), Point(50, 60)})
            corners.push_back(p + Point(30.0 * i, 0));
    corners.emplace_back(30.0 * count, 0);
    return Along(corners, 25);
}

Points ScratchInk() {
    return Along({{0, 0}, {60, 8}, {4, 14}, {62, 20}, {6, 28}, {60, 34}}, 25);
}

// --- Shape

struct Row {
    const char* name;
    Points ink;
    bool isShape, isScribble; // by the bare test, and of ink that may be a drawing
    int cusps;
};

std::vector<Row> Rows() {
    return {
        {"scratch", ScratchInk(), true, true, 4},
        {"26 samples are up-sampled, five to a leg", Zigzag(5, 30, 3, 5), true, true, 4},
        {"four legs: three reversals", Zigzag(4, 100, 9, 40), true, false, 3},
        {"three legs are too few", Zigzag(3, 100, 9, 40), false, false, 2},
        {"a staircase turns by 90 degrees only", Along({{0, 0}, {40, 0}, {40, 40}, {80, 40}, {80, 80}}, 30),
         false, false, 0},
        {"legs with corners in them", Flags(4), true, false, 7},
        {"narrow loops, doubling back at the end", NarrowLoops(2.6), true, true, 4},
        {"corner", Along({{0, 0}, {50, 80}, {100, 0}}, 40), false, false, 1},
        {"star: every corner reverses by 144 degrees", Along(Spiral(2, 5, 0.0), 25), true, false, 4},
        {"arrow in one go", Along({{0, 100}, {75, 20}, {40, 28}, {73, 18}, {62, 58}}, 25), true, false, 3},
        {"three turns of an open spiral", Spiral(3, 300, 2.0), true, false, 0},
        {"three turns of a close spiral", Spiral(3, 300, 0.3), true, true, 0},
        {"one and a half turns", Spiral(1.5, 200, 2.0), false, false, 0},
        {"four turns of a square spiral", Along(Spiral(4, 16, 3.0), 30), true, false, 0},
        {"circle twice over", Spiral(2.2, 400, 0.0), true, false, 0},
        {"circle over and over", Spiral(4, 400, 0.0), true, true, 0},
        {"dot", Points(5, Point(3, 3)), false, false, 0},
        {"no ink", {}, false, false, 0},
    };
}

TEST(ScribbleShape, TellsScribblesFromDrawings) {
    SketchRecognizerPreferences preferences;
    for (const Row& row : Rows()) {
        SCOPED_TRACE(row.name);
        Stroke stroke = StrokeThrough(row.ink);
        int shapeCusps = -1, inkCusps = -1;
        EXPECT_EQ(StrokeIsScribbleShape(&stroke, &preferences, &shapeCusps), row.isShape);
        EXPECT_EQ(shapeCusps, row.cusps);
        EXPECT_EQ(IsScribbleInk(row.ink, preferences, &inkCusps), row.isScribble);
        EXPECT_EQ(inkCusps, row.cusps);
    }
}

// Square waves and the like keep clear of their own ink.
TEST(ScribbleQuestion, MeandersAreDrawings) {
    for (const int legs : {6, 12, 20})
        for (const double pitch : {7.0, 12.0, 25.0}) {
            Points corners;
            for (int i = 0; i < legs; ++i)
                for (const int end : {i, i + 1})
                    corners.emplace_back(pitch * i, end % 2 == 0 ? 0.0 : 100.0);
            EXPECT_FALSE(IsScribbleInk(Along(corners, 60), SketchRecognizerPreferences()))
                << legs << " legs " << pitch << " apart";
        }
}

// A zigzag erases when its legs are many and close: at each opening so many legs are drawn yet, one more
// erases.
TEST(ScribbleShape, LettersAndResistorsOpenTheirLegs) {
    struct OpeningRow {
        double openDeg;
        int drawn, erasing; // legs
    };
    for (const OpeningRow& row : {OpeningRow{5, 4, 5}, {20, 4, 5}, {35, 5, 6}, {45, 6, 8}, {55, 7, 10}})
        for (const int legs : {row.drawn, row.erasing}) {
            SCOPED_TRACE(testing::Message() << legs << " legs open by " << row.openDeg);
            const double advance = 100.0 * std::tan(row.openDeg * kPi / 360.0);
            const Points ink = Zigzag(legs, 100, advance, 40);
            EXPECT_EQ(IsScribbleInk(ink, SketchRecognizerPreferences()), legs == row.erasing);
        }
}

TEST(ScribbleShape, CuspsOfAnUpSampledStrokeAreItsOwnSamples) {
    ScribbleRecord record{SketchRecognizerPreferences()};
    ASSERT_TRUE(record.Test(StrokeThrough(Zigzag(6, 100, 9, 4))));
    EXPECT_EQ(record.cusps, (std::vector<int>{4, 8, 12, 16, 20}));
}

TEST(ScribbleShape, ReversalsMustFollowEachOther) {
    const ScribbleRecord record{SketchRecognizerPreferences()};
    const auto isZigzag = [&](const Points& corners) {
        std::vector<int> all(corners.size());
        std::iota(all.begin(), all.end(), 0);
        return IsZigzag(StrokeThrough(corners), all, record);
    };
    EXPECT_TRUE(isZigzag({{0, 0}, {0, 9}, {1, 0}, {2, 9}, {3, 0}}));
    EXPECT_FALSE(isZigzag({{0, 0}, {0, 9}, {1, 0}, {2, 9}}));
    // Two reversals, a leg straight on, two more.
    EXPECT_FALSE(isZigzag({{0, 0}, {0, 9}, {1, 0}, {2, 9}, {2, 18}, {3, 9}, {4, 18}}));
    EXPECT_FALSE(isZigzag({{0, 0}, {0, 9}}));
    ScribbleRecord any{SketchRecognizerPreferences()};
    any.minNumCusps = -1;
    EXPECT_TRUE(IsZigzag(StrokeThrough({{0, 0}, {9, 0}, {9, 9}}), {0, 1, 2}, any))
        << "reached without a reversal";
}

TEST(ScribbleShape, NullArguments) {
    SketchRecognizerPreferences preferences;
    Stroke stroke = StrokeThrough(ScratchInk());
    int cusps = -1;
    EXPECT_FALSE(StrokeIsScribbleShape(nullptr, &preferences, &cusps));
    EXPECT_EQ(cusps, 0);
    EXPECT_FALSE(StrokeIsScribbleShape(&stroke, nullptr, &cusps));
    EXPECT_TRUE(StrokeIsScribbleShape(&stroke, &preferences, nullptr));
}

// --- Question

TEST(ScribbleQuestion, TheAnswerDoesNotDependOnPlaceSizeTurnOrSense) {
    const SketchRecognizerPreferences preferences;
    for (const Row& row : Rows())
        for (const double size : {1e-6, 1.0, 1e6})
            for (const double turn : {0.3, 2.0}) {
                Points ink;
                for (const Point& p : row.ink)
                    ink.emplace_back(size * (1e3 + p.x * std::cos(turn) - p.y * std::sin(turn)),
                                     size * (2e3 + p.x * std::sin(turn) + p.y * std::cos(turn)));
                EXPECT_EQ(IsScribbleInk(ink, preferences), row.isScribble) << row.name << ' ' << size;
                std::reverse(ink.begin(), ink.end());
                EXPECT_EQ(IsScribbleInk(ink, preferences), row.isScribble) << row.name << " reversed";
            }
}

// A diamond on a coarse grid, every sample doubled back on by the noise of the device: the bare test counts
// its turns, a person sees a diamond.
TEST(ScribbleQuestion, NoiseOfTheGridIsNoTurning) {
    SketchRecognizerPreferences preferences;
    std::mt19937 rng(42);
    std::uniform_int_distribution<int> noise(-1, 1);
    int bareAlarms = 0;
    for (int trial = 0; trial < 40; ++trial) {
        Points ink = Along({{0, 80}, {80, 0}, {0, -80}, {-80, 0}, {0, 80}}, 160);
        for (Point& p : ink)
            p = {std::round(p.x) + noise(rng), std::round(p.y) + noise(rng)};
        Stroke stroke = StrokeThrough(ink);
        bareAlarms += StrokeIsScribbleShape(&stroke, &preferences, nullptr) ? 1 : 0;
        EXPECT_FALSE(IsScribbleInk(ink, preferences)) << trial;
    }
    EXPECT_GT(bareAlarms, 20); // else this ink would prove nothing
}

TEST(ScribbleQuestion, PreferencesDecide) {
    SketchRecognizerPreferences preferences;
    preferences.SetMinNumCusps(5);
    EXPECT_FALSE(IsScribbleInk(ScratchInk(), preferences));
    preferences.SetScribbleMinRotationAngle(1200.0);
    EXPECT_FALSE(IsScribbleInk(Spiral(3, 300, 2.0), preferences));
    EXPECT_TRUE(IsScribbleInk(Spiral(4, 400, 0.0), preferences));
    preferences.SetDoScribble(false);
    int cusps = 0;
    EXPECT_FALSE(IsScribbleInk(ScratchInk(), preferences, &cusps));
    EXPECT_EQ(cusps, 4);
}

TEST(ScribbleQuestion, WithoutTremorKeepsTheEndsAndEvenSteps) {
    const double step = std::hypot(62.0, 34.0) / 100.0;
    for (const double far : {0.0, 1e9}) {
        Points moved = ScratchInk();
        for (Point& p : moved)
            p += Point(far, -far);
        const std::unique_ptr<Stroke> walk = WithoutTremor(moved);
        const std::vector<StrokePoint>& points = walk->GetPoints();
        EXPECT_EQ(points.front().x, moved.front().x);
        EXPECT_NEAR(points.back().y, moved.back().y, 1e-6);
        for (std::size_t i = 1; i + 1 < points.size(); ++i)
            ASSERT_NEAR(points[i].Distance(points[i - 1]), step, 1e-6);
        EXPECT_LE(points.back().Distance(points[points.size() - 2]), step + 1e-6);
    }
    EXPECT_EQ(WithoutTremor(Points(5, Point(3, 3)))->AskNumberOfPoints(), 5);
}

// Ink that fills its box a thousand times over, and coordinates at the ends of the number range.
TEST(ScribbleQuestion, ExtremeInkStaysBounded) {
    Points wild;
    for (int i = 0; i < 200000; ++i)
        wild.emplace_back(i % 2 == 0 ? 0.0 : 100.0, 1e-4 * i);
    EXPECT_LE(WithoutTremor(wild)->AskNumberOfPoints(), 20001);
    EXPECT_TRUE(IsScribbleInk(wild, SketchRecognizerPreferences()));
    for (const double size : {1e-320, 1e-200, 1e154, 1e308}) {
        const Points ink = {{-size, 0}, {size, 0.5 * size}, {-size, size}};
        EXPECT_FALSE(IsScribbleInk(ink, SketchRecognizerPreferences()));
        EXPECT_GE(WithoutTremor(ink)->AskNumberOfPoints(), 1);
    }
}

// --- Erasing

struct Erased {
    int result = -1, status = -1;
    std::vector<int> hit, erased, trimmed, cusps;
    std::vector<double> ranges;
};

Erased Scratch(Stroke stroke, std::vector<Curve*> curves,
               SketchRecognizerPreferences preferences = SketchRecognizerPreferences()) {
    Erased out;
    int counts[4] = {-1, -1, -1, -1};
    int* lists[4] = {};
    double* ranges = nullptr;
    out.result = StrokeRecognizeScribble(&stroke, &preferences, static_cast<int>(curves.size()),
                                         curves.data(), &counts[0], &lists[0], &counts[1], &lists[1],
                                         &counts[2], &lists[2], &ranges, &counts[3], &lists[3], &out.status);
    std::vector<int>* const vectors[] = {&out.hit, &out.erased, &out.trimmed, &out.cusps};
    for (int i = 0; i < 4; ++i) {
        EXPECT_GE(counts[i], 0);
        EXPECT_EQ(lists[i] == nullptr, counts[i] == 0);
        vectors[i]->assign(lists[i], lists[i] + std::max(counts[i], 0));
        SM_free(lists[i]);
    }
    out.ranges.assign(ranges, ranges + 2 * out.trimmed.size());
    SM_free(ranges);
    return out;
}

Stroke Scribble() {
    return StrokeThrough(Zigzag(12, 60, 10, 30)); // x 0 to 120, y 0 to 60
}

SketchRecognizerPreferences TrimTolerance(double tol) {
    SketchRecognizerPreferences preferences;
    preferences.SetScribbleTrimTolerance(tol);
    return preferences;
}

TEST(ScribbleErase, EachCurveByThePartThatLiesUnderTheScribble) {
    Line under(Point(10, 30), Point(110, 30));   // wholly
    Line mostly(Point(30, 20), Point(130, 20));  // 0.89 or so
    Line half(Point(60, 40), Point(180, 40));    // about a half
    Line little(Point(100, 10), Point(300, 10)); // about 0.1
    Line beside(Point(0, 70), Point(120, 70));
    Arc around(Point(60, 30), 500.0);
    Arc circle(Point(60, 30), 20.0);
    // No crossing is as near as 10.
    const Erased e = Scratch(
        Scribble(), {&under, &mostly, nullptr, &half, &little, &beside, &around, &circle}, TrimTolerance(10));
    EXPECT_EQ(e.result, 1);
    EXPECT_EQ(e.status, 0);
    EXPECT_EQ(e.hit, (std::vector<int>{under.GetId(), mostly.GetId(), half.GetId(), little.GetId(),
                                       circle.GetId()}));
    EXPECT_EQ(e.erased, (std::vector<int>{under.GetId(), mostly.GetId(), circle.GetId()}));
    ASSERT_EQ(e.trimmed, std::vector<int>{half.GetId()});
    EXPECT_NEAR(e.ranges[0], 0.0, 1e-12);
    // The band between the last two legs ends on the border from (110, 60) to (120, 0) at y = 40: x = 113.3.
    EXPECT_NEAR(e.ranges[1], (113.3 - 60) / 120, 0.01);
    EXPECT_EQ(e.cusps.size(), 11u);
}

TEST(ScribbleErase, TrimmedEndsMoveToNearbyIntersections) {
    Line line(Point(60, 40), Point(180, 40));
    Line crossing(Point(152, 0), Point(152, 300));
    const Erased pulled = Scratch(Scribble(), {&line, &crossing});
    ASSERT_EQ(pulled.trimmed, std::vector<int>{line.GetId()});
    EXPECT_NEAR(pulled.ranges[1], 92.0 / 120, 1e-9); // 39 beyond the edge
    EXPECT_LT(Scratch(Scribble(), {&line, &crossing}, TrimTolerance(10)).ranges[1], 0.5);
    SketchRecognizerPreferences preferences;
    preferences.SetScribbleOverCurve(false);
    const Erased off = Scratch(Scribble(), {&line, &crossing}, preferences);
    EXPECT_TRUE(off.trimmed.empty());
    EXPECT_EQ(off.hit, std::vector<int>{line.GetId()});
}

TEST(ScribbleErase, ARangeMayLieAcrossTheSeamOfACircle) {
    Arc circle(Point(75, 30), 35.0); // its seam at (110, 30) lies under the scribble
    const Erased e = Scratch(Scribble(), {&circle});
    ASSERT_EQ(e.trimmed.size(), 2u);
    EXPECT_LT(e.ranges[1], 2 * kPi);
    EXPECT_LT(e.ranges[2], 2 * kPi);
    EXPECT_GT(e.ranges[3], 2 * kPi);
    for (const double edge : e.ranges) { // all ends on the region's upper and lower border
        const double y = circle.GetPointAtParameter(edge, true).y;
        EXPECT_NEAR(std::min(std::fabs(y - 60), std::fabs(y)), 0, 0.2);
    }
}

// Even-odd rule, unlike the half planes of the code.
bool IsInside(const Point& p, const Points& polygon) {
    bool inside = false;
    for (std::size_t i = 0, j = polygon.size() - 1; i < polygon.size(); j = i++) {
        const Point& a = polygon[i];
        const Point& b = polygon[j];
        if ((a.y > p.y) != (b.y > p.y) && a.x + (b.x - a.x) * (p.y - a.y) / (b.y - a.y) > p.x)
            inside = !inside;
    }
    return inside;
}

TEST(ScribbleErase, CoveredLengthAgreesWithDenseSampling) {
    std::mt19937 rng(20240619);
    std::uniform_real_distribution<double> at(-60, 180);
    int trimmed = 0;
    for (int trial = 0; trial < 40; ++trial) {
        SCOPED_TRACE(trial);
        const Stroke scribble = StrokeThrough(trial % 2 == 0 ? Zigzag(9, 90, 12, 25) : Spiral(3.2, 260, 3.0));
        Line line(Point(at(rng), at(rng)), Point(at(rng), at(rng)));
        ScribbleRecord record{SketchRecognizerPreferences()};
        ASSERT_TRUE(record.Test(scribble));
        const auto region = ScribbleRegion(scribble, record);
        int inside = 0;
        constexpr int kSamples = 4000;
        for (int i = 0; i < kSamples; ++i) {
            const Point p = line.GetPointAtParameter((i + 0.5) / kSamples, true);
            inside += std::any_of(region.begin(), region.end(),
                                  [&](const Points& polygon) { return IsInside(p, polygon); });
        }
        const double part = static_cast<double>(inside) / kSamples;
        const Erased e = Scratch(scribble, {&line}, TrimTolerance(0.0));
        EXPECT_EQ(!e.hit.empty(), part > 0);
        if (std::fabs(part - 0.75) > 2e-3) {
            EXPECT_EQ(!e.erased.empty(), part > 0.75);
        }
        if (!e.trimmed.empty()) {
            ++trimmed;
            double covered = 0;
            for (std::size_t i = 0; i < e.ranges.size(); i += 2)
                covered += e.ranges[i + 1] - e.ranges[i];
            EXPECT_NEAR(covered, part, 2e-3);
        }
    }
    EXPECT_GT(trimmed, 5);
}

TEST(ScribbleErase, NoScribbleReportsNothing) {
    Line line(Point(10, 30), Point(110, 30));
    SketchRecognizerPreferences off;
    off.SetDoScribble(false);
    for (const Erased& none : {Scratch(StrokeThrough(Along({{0, 0}, {100, 60}}, 50)), {&line}),
                               Scratch(Scribble(), {&line}, off)}) {
        EXPECT_TRUE(none.result == 0 && none.status == 0);
        EXPECT_TRUE(none.hit.empty());
    }
}

TEST(ScribbleErase, AMissingOutputEmptiesTheOthers) {
    SketchRecognizerPreferences preferences;
    Stroke stroke = Scribble();
    for (int missing = 0; missing < 10; ++missing) {
        SCOPED_TRACE(missing);
        int counts[4] = {-1, -1, -1, -1}, status = -1, some = 0;
        int* lists[4] = {&some, &some, &some, &some};
        double range = 0, *ranges = &range;
        const auto count = [&](int i) { return missing == i ? nullptr : &counts[i]; };
        const auto list = [&](int i) { return missing == 4 + i ? nullptr : &lists[i]; };
        EXPECT_EQ(StrokeRecognizeScribble(&stroke, &preferences, 0, nullptr, count(0), list(0), count(1),
                                          list(1), count(2), list(2), missing == 8 ? nullptr : &ranges,
                                          count(3), list(3), missing == 9 ? nullptr : &status),
                  0);
        EXPECT_EQ(status, missing == 9 ? -1 : 1);
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(counts[i], missing == i ? -1 : 0);
            EXPECT_EQ(lists[i] == nullptr, missing != 4 + i);
        }
        EXPECT_EQ(ranges == nullptr, missing != 8);
    }
}

TEST(ScribbleErase, EveryFailedAllocationEmptiesTheOutputs) {
    Line line(Point(60, 40), Point(180, 40));
    Line under(Point(10, 30), Point(110, 30));
    SM_fail_nth(0);
    Scratch(Scribble(), {&line, &under});
    const long count = SM_ask_allocation_count();
    for (long n = count - 4; n <= count; ++n) { // the arrays that are handed out come last
        SM_fail_nth(n);
        const Erased e = Scratch(Scribble(), {&line, &under});
        SM_fail_nth(0);
        EXPECT_EQ(e.status, 1) << n;
        EXPECT_TRUE(e.hit.empty() && e.erased.empty() && e.trimmed.empty() && e.cusps.empty());
    }
}

} // namespace
