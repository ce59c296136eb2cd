// SyntheticAccuracy - how often the corners and tangent joints of synthetic ink come back: planned strokes of
// a simulated hand (tests/support/SyntheticInk.h), whose joints are known.
//
//   SyntheticAccuracy [--misses] [--no-times] [--seed N] [--strokes N]
//
// --no-times  the ink without its time stamps, as a drawing read from a file
//
// One row per family of plans, hand, sampling rate and digitiser grid; each row has its own plans.
// right    strokes with every planned corner found and none extra; slots (and rounded boxes) with four (and
//          eight) curves, too, that join tangentially; regular polygons that come back as such
// missed   planned corners that were not found
// extra    corners where none was planned
// tangents planned tangent joints, of which "found"; "false": of those reported, the share where none was
//          planned
//
// A corner is found within 6 % of the drawing's size (of a long one, of what the hand draws in one go). A
// tangent joint is found within 12 %: the ink leaves a line for an arc of a third of the size by the hand's
// own stray only after a tenth of the size, and no method can place the joint closer than that.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/SyntheticInk.h"

namespace {

using namespace Tessera::Geometry;
using Tessera::Testing::Hand;
using Tessera::Testing::InkPlan;
using Tessera::Testing::Planned;
using Tessera::Testing::RandomPlans;

constexpr double kCornerReach = 0.06;
constexpr double kTangentReach = 0.12;

struct Family {
    const char* name;
    InkPlan (RandomPlans::*plan)();
    bool hasTangents; ///< a smooth stroke has joints of its own kind: curvature that changes little by little
    std::size_t curves = 0; ///< as many, and as many tangent joints, are right; 0: any number
    bool isRegular = false; ///< read with regular polygons made exact: else these move corners on purpose
};
constexpr Family kFamilies[] = {
    {"poly-line", &RandomPlans::Polyline, true},       {"polygon", &RandomPlans::Polygon, true},
    {"regular", &RandomPlans::Regular, true, 0, true}, {"mixed", &RandomPlans::Mixed, true},
    {"smooth", &RandomPlans::Smooth, false},           {"slot", &RandomPlans::Slot, true, 4},
    {"box", &RandomPlans::RoundedBox, true, 8},        {"long", &RandomPlans::LongPolyline, true},
    {"stairs", &RandomPlans::Staircase, true},         {"gear", &RandomPlans::Gear, true}};

struct HandKind {
    const char* name;
    Hand (RandomPlans::*hand)();
};
constexpr HandKind kHands[] = {{"careful", &RandomPlans::CarefulHand},
                               {"brisk", &RandomPlans::BriskHand},
                               {"quick", &RandomPlans::QuickHand}};

struct Pen {
    const char* name;
    double rateHz;
    bool isOnGrid; ///< steps of up to a hundredth of the drawing: the pixels of a small one
};
constexpr Pen kPens[] = {{"60 Hz", 60.0, false},
                         {"120 Hz", 120.0, false},
                         {"240 Hz", 240.0, false},
                         {"120 Hz, grid", 120.0, true}};

struct Options {
    unsigned seed = 7;
    int strokes = 600; ///< in a row: rates to half a percent
    bool misses = false;
    bool hasTimes = true;
};

struct Row {
    int strokes = 0, right = 0;
    int corners = 0, missed = 0, extra = 0;
    int tangents = 0, found = 0, reported = 0, falseOnes = 0;

    void operator+=(const Row& r) {
        strokes += r.strokes;
        right += r.right;
        corners += r.corners;
        missed += r.missed;
        extra += r.extra;
        tangents += r.tangents;
        found += r.found;
        reported += r.reported;
        falseOnes += r.falseOnes;
    }
};

double Percent(int part, int whole) {
    return whole > 0 ? 100.0 * part / whole : 0.0;
}

// Number of planned points that are met, each by a reported point of its own.
int CountMet(const std::vector<Point>& planned, std::vector<Point> reported, double reach) {
    int met = 0;
    for (const Point& p : planned) {
        const auto nearest =
            std::min_element(reported.begin(), reported.end(),
                             [&](const Point& a, const Point& b) { return a.Distance2(p) < b.Distance2(p); });
        if (nearest == reported.end() || nearest->Distance(p) > reach)
            continue;
        reported.erase(nearest);
        ++met;
    }
    return met;
}

Row Judge(const Family& family, const Planned& planned) {
    SketchRecognizerPreferences preferences;
    preferences.SetRegularPolygonRecognition(family.isRegular);
    std::vector<Point> corners;
    std::vector<Point> tangents;
    const InkReading reading = InterpretInk(planned.ink, preferences);
    for (const InkJoint& joint : reading.joints)
        (joint.kind == JointKind::Corner ? corners : tangents).push_back(joint.position);
    Row row;
    row.strokes = 1;
    const int met = CountMet(planned.corners, corners, kCornerReach * planned.size);
    row.corners = static_cast<int>(planned.corners.size());
    row.missed = row.corners - met;
    row.extra = static_cast<int>(corners.size()) - met;
    row.right = row.missed == 0 && row.extra == 0 ? 1 : 0;
    if (!family.hasTangents)
        return row;
    row.tangents = static_cast<int>(planned.tangents.size());
    row.reported = static_cast<int>(tangents.size());
    row.found = CountMet(planned.tangents, tangents, kTangentReach * planned.size);
    row.falseOnes = row.reported - row.found;
    if (family.isRegular && reading.shape != InkShape::RegularPolygon && reading.shape != InkShape::Square)
        row.right = 0;
    if (family.curves > 0 && (reading.curves.size() != family.curves || tangents.size() != family.curves))
        row.right = 0;
    return row;
}

void PrintRow(const char* family, const char* hand, const char* pen, const Row& row) {
    std::printf("  %-10s %-8s %-13s %7d %6.1f%% %7d %6d %6d %9d %6.1f%% %6.1f%%\n", family, hand, pen,
                row.strokes, Percent(row.right, row.strokes), row.corners, row.missed, row.extra,
                row.tangents, Percent(row.found, row.tangents), Percent(row.falseOnes, row.reported));
}

void PrintMiss(const Family& family, const HandKind& kind, const Pen& pen, int stroke, const Row& one) {
    if (one.right > 0 && one.found == one.tangents && one.falseOnes == 0)
        return;
    std::printf("  %s, %s, %s, stroke %d: corners %d, missed %d, extra %d; tangents %d, found %d, false %d\n",
                family.name, kind.name, pen.name, stroke, one.corners, one.missed, one.extra, one.tangents,
                one.found, one.falseOnes);
}

Row MeasureFamily(const Family& family, const HandKind& kind, const Options& options) {
    RandomPlans plans(options.seed);
    Row all;
    for (const Pen& pen : kPens) {
        Row row;
        for (int i = 0; i < options.strokes; ++i) {
            const InkPlan plan = (plans.*family.plan)();
            Hand hand = (plans.*kind.hand)();
            hand.rateHz = pen.rateHz;
            hand.grid = pen.isOnGrid ? plans.Uniform(0.3, 1.5) : 0.0;
            Planned planned = plan.Draw(plans.Rng(), hand);
            planned.ink.hasTimes = options.hasTimes;
            const Row one = Judge(family, planned);
            if (options.misses)
                PrintMiss(family, kind, pen, i, one);
            row += one;
        }
        PrintRow(family.name, kind.name, pen.name, row);
        all += row;
    }
    PrintRow(family.name, kind.name, "all", all);
    return all;
}

Options ReadOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--misses")
            options.misses = true;
        else if (argument == "--no-times")
            options.hasTimes = false;
        else if (argument == "--seed" && i + 1 < argc)
            options.seed = static_cast<unsigned>(std::strtoul(argv[++i], nullptr, 10));
        else if (argument == "--strokes" && i + 1 < argc)
            options.strokes = std::atoi(argv[++i]);
        else {
            std::fprintf(stderr, "usage: %s [--misses] [--no-times] [--seed N] [--strokes N]\n", argv[0]);
            std::exit(2);
        }
    }
    return options;
}

} // namespace

int main(int argc, char** argv) {
    const Options options = ReadOptions(argc, argv);
    std::printf("  %-10s %-8s %-13s %7s %7s %7s %6s %6s %9s %7s %7s\n", "family", "hand", "pen", "strokes",
                "right", "corners", "missed", "extra", "tangents", "found", "false");
    for (const HandKind& kind : kHands) {
        Row all;
        for (const Family& family : kFamilies)
            all += MeasureFamily(family, kind, options);
        PrintRow("all", kind.name, "all", all);
    }
    return 0;
}
