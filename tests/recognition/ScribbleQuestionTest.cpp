#include "tessera/recognition/ScribbleQuestion.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "tessera/recognition/Scribble.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tessera/strokes/Stroke.h"
#include "tests/support/DrawnStrokes.h"

namespace {

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

constexpr double kPi = 3.141592653589793;

std::vector<Point> Positions(const Samples& samples) {
    std::vector<Point> points;
    for (const StrokePoint& sample : samples) {
        points.emplace_back(sample.x, sample.y);
    }
    return points;
}

std::vector<Point> Round(double turns, double growth) {
    std::vector<Point> points;
    for (int i = 0; i <= 400; ++i) {
        const double angle = 2.0 * kPi * turns * i / 400.0;
        const double r = 50.0 + growth * angle;
        points.emplace_back(r * std::cos(angle), r * std::sin(angle));
    }
    return points;
}

/// A five-pointed star in one stroke: every corner reverses by 144 degrees.
std::vector<Point> Star() {
    const auto tip = [](int i) {
        return Point(60.0 * std::sin(0.8 * kPi * i), 60.0 * std::cos(0.8 * kPi * i));
    };
    return Positions(DrawPath({tip(0), tip(1), tip(2), tip(3), tip(4), tip(5)}, 25));
}

std::vector<Point> Scratch() {
    return Positions(DrawPath({{0, 0}, {60, 8}, {4, 14}, {62, 20}, {6, 28}, {60, 34}}, 25));
}

struct Row {
    const char* name;
    std::vector<Point> ink;
    bool isScribble;
    int cusps;
};

std::vector<Row> Rows() {
    return {
        {"scratch", Scratch(), true, 4},
        {"star", Star(), false, 4},
        {"arrow in one go", Positions(DrawPath({{0, 100}, {75, 20}, {40, 28}, {73, 18}, {62, 58}}, 25)),
         false, 3},
        {"circle twice over", Round(2.2, 0.0), false, 0},
        {"circle over and over", Round(4.0, 0.0), true, 0},
        {"spiral of three turns", Round(3.0, 1.5), true, 0},
        {"corner", Positions(DrawPath({{0, 0}, {50, 80}, {100, 0}}, 40)), false, 1},
        {"dot", std::vector<Point>(5, Point(3, 3)), false, 0},
        {"no ink", {}, false, 0},
    };
}

TEST(ScribbleQuestion, TellsScribblesFromDrawingsThatReverse) {
    const SketchRecognizerPreferences preferences;
    for (const Row& row : Rows()) {
        SCOPED_TRACE(row.name);
        int cusps = -1;
        EXPECT_EQ(IsScribbleInk(row.ink, preferences, &cusps), row.isScribble);
        EXPECT_EQ(cusps, row.cusps);
    }
}

TEST(ScribbleQuestion, TheAnswerDoesNotDependOnPlaceSizeTurnOrSense) {
    const SketchRecognizerPreferences preferences;
    for (const Row& row : Rows()) {
        for (const double size : {1e-6, 1.0, 1e6}) {
            for (const double turn : {0.3, 2.0}) {
                std::vector<Point> ink;
                for (const Point& p : row.ink) {
                    ink.emplace_back(size * (1e3 + p.x * std::cos(turn) - p.y * std::sin(turn)),
                                     size * (2e3 + p.x * std::sin(turn) + p.y * std::cos(turn)));
                }
                EXPECT_EQ(IsScribbleInk(ink, preferences), row.isScribble) << row.name << ' ' << size;
                const std::vector<Point> reversed(ink.rbegin(), ink.rend());
                EXPECT_EQ(IsScribbleInk(reversed, preferences), row.isScribble) << row.name << " reversed";
            }
        }
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
        std::vector<Point> ink;
        Stroke stroke;
        for (const StrokePoint& p : DrawPath({{0, 80}, {80, 0}, {0, -80}, {-80, 0}, {0, 80}}, 160)) {
            ink.emplace_back(std::round(p.x) + noise(rng), std::round(p.y) + noise(rng));
            stroke.AddPoint({ink.back().x, ink.back().y, 0.0});
        }
        bareAlarms += StrokeIsScribbleShape(&stroke, &preferences, nullptr) ? 1 : 0;
        EXPECT_FALSE(IsScribbleInk(ink, preferences)) << trial;
    }
    EXPECT_GT(bareAlarms, 20); // else this ink would prove nothing
}

TEST(ScribbleQuestion, PreferencesDecide) {
    SketchRecognizerPreferences preferences;
    preferences.SetMinNumCusps(5);
    EXPECT_FALSE(IsScribbleInk(Scratch(), preferences));
    preferences.SetScribbleMinRotationAngle(1200.0);
    EXPECT_FALSE(IsScribbleInk(Round(3.0, 1.5), preferences));
    EXPECT_TRUE(IsScribbleInk(Round(4.0, 0.0), preferences));
    preferences.SetDoScribble(false);
    int cusps = 0;
    EXPECT_FALSE(IsScribbleInk(Scratch(), preferences, &cusps));
    EXPECT_EQ(cusps, 4);
}

TEST(ScribbleQuestion, WithoutTremorKeepsTheEndsAndEvenSteps) {
    const std::vector<Point> ink = Scratch();
    const double step = std::hypot(62.0, 34.0) / 100.0;
    for (const double far : {0.0, 1e9}) {
        std::vector<Point> moved;
        for (const Point& p : ink) {
            moved.emplace_back(p.x + far, p.y - far);
        }
        const std::unique_ptr<Stroke> walk = WithoutTremor(moved);
        const std::vector<StrokePoint>& points = walk->GetPoints();
        EXPECT_EQ(points.front().x, moved.front().x);
        EXPECT_NEAR(points.back().y, moved.back().y, 1e-6);
        for (std::size_t i = 1; i + 1 < points.size(); ++i) {
            ASSERT_NEAR(points[i].Distance(points[i - 1]), step, 1e-6);
        }
        EXPECT_LE(points.back().Distance(points[points.size() - 2]), step + 1e-6);
    }
    EXPECT_EQ(WithoutTremor(std::vector<Point>(5, Point(3, 3)))->AskNumberOfPoints(), 5);
}

// Ink that fills its box a thousand times over, and coordinates at the ends of the number range.
TEST(ScribbleQuestion, ExtremeInkStaysBounded) {
    std::vector<Point> wild;
    for (int i = 0; i < 200000; ++i) {
        wild.emplace_back(i % 2 == 0 ? 0.0 : 100.0, 1e-4 * i);
    }
    EXPECT_LE(WithoutTremor(wild)->AskNumberOfPoints(), 20001);
    EXPECT_TRUE(IsScribbleInk(wild, SketchRecognizerPreferences()));
    for (const double size : {1e-320, 1e-200, 1e154, 1e308}) {
        const std::vector<Point> ink = {{-size, 0}, {size, 0.5 * size}, {-size, size}};
        EXPECT_FALSE(IsScribbleInk(ink, SketchRecognizerPreferences()));
        EXPECT_GE(WithoutTremor(ink)->AskNumberOfPoints(), 1);
    }
}

} // namespace
