#include <algorithm>
#include <cmath>
#include <string>

#include "tessera/recognition/InkInterpretation.h"
#include "tests/support/ReadingJoints.h"
#include "tests/support/SyntheticInk.h"
#include "tests/support/Test.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

constexpr double kPi = std::numbers::pi;

/// Where an outline turns or changes its curvature, and the degrees that it sweeps from there to the next
/// such point (0: a line).
struct Vertex {
    Point at;
    double sweepDeg = 0.0;
};

std::vector<Stretch> OutlineThrough(const std::vector<Vertex>& vertices) {
    std::vector<Stretch> outline;
    double heading = 0.0; // at the end of the last side
    for (std::size_t k = 0; k <= vertices.size(); ++k) {
        const Vertex& from = vertices[k % vertices.size()];
        const Point chord = vertices[(k + 1) % vertices.size()].at - from.at;
        const double sweep = from.sweepDeg * kPi / 180.0;
        const double direction = std::atan2(chord.y, chord.x);
        const double turn = std::remainder(direction - 0.5 * sweep - heading, 2.0 * kPi);
        const double curvature = 2.0 * std::sin(0.5 * sweep) / chord.Length();
        if (k == vertices.size())
            outline[0].turn = std::fabs(turn) < 1e-9 ? 0.0 : turn;
        else
            outline.push_back({std::fabs(turn) < 1e-9 ? 0.0 : turn,
                               sweep == 0.0 ? chord.Length() : sweep / curvature, curvature});
        heading = direction + 0.5 * sweep;
    }
    return outline;
}

/// Tangent arcs of the given radii and sweeps in turn, so many times.
std::vector<Stretch> Lobes(int count, double radius, double sweepDeg, double neckRadius, double neckDeg) {
    std::vector<Stretch> outline;
    for (int i = 0; i < count; ++i) {
        outline.push_back({0.0, radius * sweepDeg * kPi / 180.0, 1.0 / radius});
        outline.push_back({0.0, neckRadius * neckDeg * kPi / 180.0, -1.0 / neckRadius});
    }
    return outline;
}

/// Begun at a share of one of its stretches; the pen stops before it is back, or runs on beyond, by a share
/// of the outline.
InkPlan Begun(std::vector<Stretch> outline, std::size_t first, double share, double beyond) {
    std::rotate(outline.begin(), outline.begin() + static_cast<std::ptrdiff_t>(first), outline.end());
    double length = 0.0;
    for (const Stretch& stretch : outline)
        length += stretch.length;
    if (share > 0.0) {
        Stretch rest = outline.front();
        outline.front().turn = 0.0;
        outline.front().length *= 1.0 - share;
        rest.length *= share;
        outline.push_back(rest);
    }
    outline.back().length = std::max(0.2 * outline.back().length, outline.back().length + beyond * length);
    return InkPlan(std::move(outline), true);
}

/// L line, A arc, S anything else, each behind its joint with the curve before: | corner, ~ tangent.
std::string Describe(const InkReading& reading) {
    std::string text;
    for (std::size_t i = 0; i < reading.curves.size(); ++i) {
        char joint = '.';
        for (const InkJoint& j : reading.joints)
            if (j.after == static_cast<int>(i))
                joint = j.kind == JointKind::Corner ? '|' : '~';
        const CurveType_e type = reading.curves[i].curve->GetType();
        text += joint;
        text += type == CurveType_Line ? 'L' : type == CurveType_Arc ? 'A' : 'S';
    }
    return text;
}

bool IsSameRing(const std::string& a, const std::string& b) {
    return a.size() == b.size() && (a + a).find(b) % 2 == 0;
}

struct Family {
    const char* name;
    const char* expected;
    double fine;    ///< share that must come back right of what a draughtsman draws
    double careful; ///< and of what anyone draws who takes care
    std::vector<Stretch> outline;
};

std::vector<Family> Families() {
    const double h = std::sqrt(0.75);
    const double d = std::sqrt(0.5);
    const double lean = std::asin(0.25); // of a belt's sides against its axis
    return {
        {"lens", "|A|A", 0.97, 0.90, OutlineThrough({{{0, 0}, 80}, {{130, 0}, 80}})},
        {"leaf", "|A|A", 0.97, 0.90, OutlineThrough({{{0, 0}, 110}, {{130, 0}, 110}})},
        {"crescent", "|A|A", 0.97, 0.93, OutlineThrough({{{0, 0}, 220}, {{130, 0}, -100}})},
        {"half disc", "|L|A", 0.97, 0.95, OutlineThrough({{{0, 0}, 0}, {{130, 0}, 180}})},
        {"quarter", "|L|A|L", 0.90, 0.85, OutlineThrough({{{0, 0}, 0}, {{100, 0}, 90}, {{0, 100}, 0}})},
        {"mouth", "|L|A|L", 0.97, 0.92,
         OutlineThrough({{{0, 0}, 0}, {{60 * h, 30}, 300}, {{60 * h, -30}, 0}})},
        {"keyhole", "|L|L|L|A", 0.97, 0.93,
         OutlineThrough({{{-30, -60 * h}, 0}, {{-30, -130}, 0}, {{30, -130}, 0}, {{30, -60 * h}, 300}})},
        {"bullet", "|L|L~A~L", 0.97, 0.92,
         OutlineThrough({{{0, 0}, 0}, {{80, 0}, 0}, {{80, 90}, 180}, {{0, 90}, 0}})},
        {"barrel", "|L|A|L|A", 0.97, 0.90,
         OutlineThrough({{{0, 0}, 0}, {{100, 0}, 80}, {{100, 90}, 0}, {{0, 90}, 80}})},
        {"drop", "|L~A~L", 0.95, 0.88,
         OutlineThrough({{{0, 0}, 0}, {{50 * h, 75}, 240}, {{-50 * h, 75}, 0}})},
        {"heart", "|L~A|A~L", 0.95, 0.93,
         OutlineThrough({{{0, 0}, 0}, {{90 * d, 90 * d}, 180}, {{0, 180 * d}, 180}, {{-90 * d, 90 * d}, 0}})},
        {"cloud", "|A|A|A|A", 0.97, 0.95,
         OutlineThrough({{{70, 0}, 190}, {{0, 70}, 190}, {{-70, 0}, 190}, {{0, -70}, 190}})},
        {"belt",
         "~L~A~L~A",
         0.92,
         0.50,
         {{0, 80 * std::cos(lean), 0},
          {0, 10 * (kPi - 2 * lean), 1.0 / 10},
          {0, 80 * std::cos(lean), 0},
          {0, 30 * (kPi + 2 * lean), 1.0 / 30}}},
        {"peanut", "~A~A~A~A", 0.60, 0.00, Lobes(2, 50, 250, 60, 70)},
        {"trefoil", "~A~A~A~A~A~A", 0.93, 0.35, Lobes(3, 40, 260, 30, 140)},
        {"thin lens", "|A|A", 0.90, 0.70, OutlineThrough({{{0, 0}, 50}, {{130, 0}, 50}})},
        {"sector", "|L|A|L", 0.96, 0.88, OutlineThrough({{{0, 0}, 0}, {{120, 0}, 60}, {{60, 120 * h}, 0}})},
        {"D", "|L~A~L|L", 0.90, 0.50,
         OutlineThrough({{{0, 0}, 0}, {{30, 0}, 180}, {{30, 110}, 0}, {{0, 110}, 0}})},
        {"octagon", "|L|L|L|L|L|L|L|L", 0.96, 0.90,
         OutlineThrough({{{25, 0}, 0},
                         {{125, 0}, 0},
                         {{150, 25}, 0},
                         {{150, 75}, 0},
                         {{125, 100}, 0},
                         {{25, 100}, 0},
                         {{0, 75}, 0},
                         {{0, 25}, 0}})},
        {"arch", "|L|A|A", 0.96, 0.88, OutlineThrough({{{0, 0}, 0}, {{100, 0}, 60}, {{50, 100 * h}, 60}})},
    };
}

Hand FineHand() {
    Hand hand;
    hand.rounding = 0.008;
    hand.tremor = 0.0003;
    hand.stray = 0.001;
    return hand;
}

TEST(ClosedOutlines, ComeBackWhereverThePenStartsAndStops) {
    RandomPlans plans(7);
    for (const Family& family : Families()) {
        SCOPED_TRACE(family.name);
        int right[2] = {0, 0};
        int drawn = 0;
        for (std::size_t first = 0; first < family.outline.size(); ++first)
            for (const double share : {0.0, 0.05, 0.3, 0.5, 0.8, 0.95})
                for (const double beyond : {-0.02, 0.0, 0.02}) {
                    const InkPlan plan = Begun(family.outline, first, share, beyond);
                    ++drawn;
                    for (const bool isFine : {false, true}) {
                        const Hand hand = isFine ? FineHand() : plans.CarefulHand();
                        const InkReading reading = InterpretInk(plan.Draw(plans.Rng(), hand).ink, {});
                        ExpectJoined(reading);
                        right[isFine ? 1 : 0] +=
                            reading.isClosed && IsSameRing(Describe(reading), family.expected) ? 1 : 0;
                    }
                }
        EXPECT_GE(right[1], family.fine * drawn);
        EXPECT_GE(right[0], family.careful * drawn);
    }
}

// Strokes of a few far samples on a grid: sides that lie upon each other, closings in the corner of another.
TEST(ClosedOutlines, NoCurveIsWithoutLength) {
    std::mt19937 rng(3);
    std::uniform_int_distribution<int> count(3, 16);
    std::uniform_int_distribution<int> place(0, 5);
    for (int i = 0; i < 4000; ++i) {
        SCOPED_TRACE(i);
        InkStroke ink;
        for (int n = count(rng); n > 0; --n)
            ink.samples.push_back({20.0 * place(rng), 20.0 * place(rng), 0.0});
        ExpectJoined(InterpretInk(ink, {}));
    }
}

} // namespace
} // namespace Tessera::Geometry
