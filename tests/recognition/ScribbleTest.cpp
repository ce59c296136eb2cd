#include "tessera/recognition/Scribble.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>

#include <gtest/gtest.h>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tessera/kernel/SM.h"
#include "tessera/kernel/internal/SmFault.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tessera/recognition/internal/ScribbleRecord.h"
#include "tessera/strokes/Stroke.h"

namespace {

using namespace Tessera::Geometry;

constexpr double kPi = 3.141592653589793;

/// Samples along a poly-line, `perLeg` on each side, at even speed.
Stroke Along(const std::vector<Point>& corners, int perLeg) {
    Stroke stroke;
    stroke.AddPoint(StrokePoint(corners[0].x, corners[0].y, 1));
    for (std::size_t c = 1; c < corners.size(); ++c) {
        for (int i = 1; i <= perLeg; ++i) {
            const double t = static_cast<double>(i) / perLeg;
            stroke.AddPoint(StrokePoint(corners[c - 1].x + t * (corners[c].x - corners[c - 1].x),
                                        corners[c - 1].y + t * (corners[c].y - corners[c - 1].y), 1));
        }
    }
    return stroke;
}

/// Back and forth between y = 0 and y = height, `pitch` forward with each leg.
Stroke Zigzag(int legs, double height, double pitch, int perLeg) {
    std::vector<Point> corners;
    for (int i = 0; i <= legs; ++i) {
        corners.emplace_back(pitch * i, i % 2 == 0 ? 0.0 : height);
    }
    return Along(corners, perLeg);
}

Stroke Turns(double turns, int samples, double growth = 2.0) {
    Stroke stroke;
    for (int i = 0; i <= samples; ++i) {
        const double angle = 2 * kPi * turns * i / samples;
        const double r = 40 + growth * angle;
        stroke.AddPoint(StrokePoint(r * std::cos(angle), r * std::sin(angle), 1));
    }
    return stroke;
}

TEST(ScribbleShape, TellsScribblesFromDrawings) {
    struct Row {
        const char* name;
        Stroke stroke;
        bool isScribble;
        int cusps;
    };
    const std::vector<Point> staircase{{0, 0}, {40, 0}, {40, 40}, {80, 40}, {80, 80}, {120, 80}, {120, 120}};
    const Row rows[] = {
        {"five legs, dense", Zigzag(5, 100, 9, 40), true, 4},
        {"five legs of four samples: up-sampled", Zigzag(5, 100, 9, 4), true, 4},
        {"four legs: three reversals", Zigzag(4, 100, 9, 40), true, 3},
        {"three legs are too few", Zigzag(3, 100, 9, 40), false, 2},
        {"a staircase turns by 90 degrees only", Along(staircase, 30), false, 0},
        {"three turns of a spiral", Turns(3, 300), true, 0},
        {"one and a half turns", Turns(1.5, 200), false, 0},
        {"a straight line", Along({{0, 0}, {200, 30}}, 60), false, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        SketchRecognizerPreferences preferences;
        Stroke stroke = row.stroke;
        int cusps = -1;
        EXPECT_EQ(StrokeIsScribbleShape(&stroke, &preferences, &cusps), row.isScribble);
        EXPECT_EQ(cusps, row.cusps);
    }
}

TEST(ScribbleShape, CuspsOfAnUpSampledStrokeAreItsOwnSamples) {
    const Stroke stroke = Zigzag(6, 100, 9, 4);
    ScribbleRecord record{SketchRecognizerPreferences()};
    ASSERT_TRUE(record.Test(stroke));
    ASSERT_EQ(record.cusps.size(), 5u);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(record.cusps[i], 4 * (i + 1));
    }
}

TEST(ScribbleShape, ReversalsMustFollowEachOther) {
    const ScribbleRecord record{SketchRecognizerPreferences()};
    const auto isZigzag = [&](const std::vector<Point>& corners) {
        std::vector<int> all(corners.size());
        for (std::size_t i = 0; i < all.size(); ++i) {
            all[i] = static_cast<int>(i);
        }
        return IsZigzag(Along(corners, 1), all, record);
    };
    EXPECT_TRUE(isZigzag({{0, 0}, {0, 9}, {1, 0}, {2, 9}, {3, 0}}));
    EXPECT_FALSE(isZigzag({{0, 0}, {0, 9}, {1, 0}, {2, 9}}));
    // Two reversals, a leg straight on, two more.
    EXPECT_FALSE(isZigzag({{0, 0}, {0, 9}, {1, 0}, {2, 9}, {2, 18}, {3, 9}, {4, 18}}));
    EXPECT_FALSE(isZigzag({{0, 0}, {0, 9}}));
    ScribbleRecord any{SketchRecognizerPreferences()};
    any.minNumCusps = -1;
    EXPECT_TRUE(IsZigzag(Along({{0, 0}, {9, 0}, {9, 9}}, 1), {0, 1, 2}, any)) << "reached without a reversal";
}

TEST(ScribbleShape, NullArguments) {
    SketchRecognizerPreferences preferences;
    Stroke stroke = Zigzag(5, 100, 9, 40);
    int cusps = -1;
    EXPECT_FALSE(StrokeIsScribbleShape(nullptr, &preferences, &cusps));
    EXPECT_EQ(cusps, 0);
    EXPECT_FALSE(StrokeIsScribbleShape(&stroke, nullptr, &cusps));
    EXPECT_TRUE(StrokeIsScribbleShape(&stroke, &preferences, nullptr));
    Stroke empty;
    EXPECT_FALSE(StrokeIsScribbleShape(&empty, &preferences, &cusps));
    EXPECT_EQ(cusps, 0);
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

TEST(ScribbleErase, EachCurveByThePartThatLiesUnderTheScribble) {
    const Stroke scribble = Zigzag(12, 60, 10, 30); // x 0..120, y 0..60
    Line under(Point(10, 30), Point(110, 30));      // wholly
    Line mostly(Point(30, 20), Point(130, 20));     // 0.89 or so
    Line half(Point(60, 40), Point(180, 40));       // about a half
    Line little(Point(100, 10), Point(300, 10));    // about 0.1
    Line beside(Point(0, 70), Point(120, 70));
    Arc around(Point(60, 30), 500.0);
    Arc circle(Point(60, 30), 20.0);
    SketchRecognizerPreferences preferences;
    preferences.SetScribbleTrimTolerance(10); // no crossing is that near
    const Erased e =
        Scratch(scribble, {&under, &mostly, nullptr, &half, &little, &beside, &around, &circle}, preferences);
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
    const Stroke scribble = Zigzag(12, 60, 10, 30);
    Line line(Point(60, 40), Point(180, 40));
    Line crossing(Point(130, 0), Point(130, 300));
    const Erased pulled = Scratch(scribble, {&line, &crossing});
    ASSERT_EQ(pulled.trimmed, std::vector<int>{line.GetId()});
    EXPECT_NEAR(pulled.ranges[1], 70.0 / 120, 1e-9);
    SketchRecognizerPreferences preferences;
    preferences.SetScribbleTrimTolerance(10);
    EXPECT_LT(Scratch(scribble, {&line, &crossing}, preferences).ranges[1], 0.5);
    preferences.SetScribbleOverCurve(false);
    const Erased off = Scratch(scribble, {&line, &crossing}, preferences);
    EXPECT_TRUE(off.trimmed.empty());
    EXPECT_EQ(off.hit, std::vector<int>{line.GetId()});
}

TEST(ScribbleErase, ARangeMayLieAcrossTheSeamOfACircle) {
    const Stroke scribble = Zigzag(12, 60, 10, 30);
    Arc circle(Point(75, 30), 35.0); // its seam at (110, 30) lies under the scribble
    const Erased e = Scratch(scribble, {&circle});
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
bool IsInside(const Point& p, const std::vector<Point>& polygon) {
    bool inside = false;
    for (std::size_t i = 0, j = polygon.size() - 1; i < polygon.size(); j = i++) {
        const Point& a = polygon[i];
        const Point& b = polygon[j];
        if ((a.y > p.y) != (b.y > p.y) && a.x + (b.x - a.x) * (p.y - a.y) / (b.y - a.y) > p.x) {
            inside = !inside;
        }
    }
    return inside;
}

TEST(ScribbleErase, CoveredLengthAgreesWithDenseSampling) {
    std::mt19937 rng(20240619);
    std::uniform_real_distribution<double> at(-60, 180);
    int trimmed = 0;
    for (int trial = 0; trial < 40; ++trial) {
        SCOPED_TRACE(trial);
        const Stroke scribble = trial % 2 == 0 ? Zigzag(9, 90, 12, 25) : Turns(3.2, 260, 3.0);
        Line line(Point(at(rng), at(rng)), Point(at(rng), at(rng)));
        ScribbleRecord record{SketchRecognizerPreferences()};
        ASSERT_TRUE(record.Test(scribble));
        const auto region = ScribbleRegion(scribble, record);
        int inside = 0;
        constexpr int kSamples = 4000;
        for (int i = 0; i < kSamples; ++i) {
            const Point p = line.GetPointAtParameter((i + 0.5) / kSamples, true);
            inside += std::any_of(region.begin(), region.end(),
                                  [&](const std::vector<Point>& polygon) { return IsInside(p, polygon); });
        }
        const double part = static_cast<double>(inside) / kSamples;
        SketchRecognizerPreferences preferences;
        preferences.SetScribbleTrimTolerance(0.0);
        const Erased e = Scratch(scribble, {&line}, preferences);
        EXPECT_EQ(!e.hit.empty(), part > 0);
        if (std::fabs(part - 0.75) > 2e-3) {
            EXPECT_EQ(!e.erased.empty(), part > 0.75);
        }
        if (!e.trimmed.empty()) {
            ++trimmed;
            double covered = 0;
            for (std::size_t i = 0; i < e.ranges.size(); i += 2) {
                covered += e.ranges[i + 1] - e.ranges[i];
            }
            EXPECT_NEAR(covered, part, 2e-3);
        }
    }
    EXPECT_GT(trimmed, 5);
}

TEST(ScribbleErase, NoScribbleReportsNothing) {
    Line line(Point(10, 30), Point(110, 30));
    const Erased plain = Scratch(Along({{0, 0}, {100, 60}}, 50), {&line});
    EXPECT_EQ(plain.result, 0);
    EXPECT_EQ(plain.status, 0);
    EXPECT_TRUE(plain.hit.empty());
    SketchRecognizerPreferences preferences;
    preferences.SetDoScribble(false);
    EXPECT_EQ(Scratch(Zigzag(12, 60, 10, 30), {&line}, preferences).result, 0);
}

TEST(ScribbleErase, AMissingOutputEmptiesTheOthers) {
    SketchRecognizerPreferences preferences;
    Stroke stroke = Zigzag(12, 60, 10, 30);
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
    const Stroke scribble = Zigzag(12, 60, 10, 30);
    SM_fail_nth(0);
    Scratch(scribble, {&line, &under});
    const long count = SM_ask_allocation_count();
    for (long n = count - 4; n <= count; ++n) { // the arrays that are handed out come last
        SM_fail_nth(n);
        const Erased e = Scratch(scribble, {&line, &under});
        SM_fail_nth(0);
        EXPECT_EQ(e.status, 1) << n;
        EXPECT_TRUE(e.hit.empty() && e.erased.empty() && e.trimmed.empty() && e.cusps.empty());
    }
}

} // namespace
