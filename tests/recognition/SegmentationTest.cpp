#include "tessera/recognition/internal/Segmentation.h"

#include <cstdlib>

#include "tessera/kernel/EQ.h"
#include "tessera/recognition/internal/PathLengths.h"
#include "tests/support/DrawnStrokes.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;
using testing::ElementsAre;
using testing::IsEmpty;
using Breaks = std::vector<int>;

// --- Joining and merging, against the rules taken word by word

Breaks NaiveJoin(int n, const Breaks& speed, const Breaks& corners) {
    Breaks out = corners;
    for (const int s : speed)
        if (s >= 3 && s <= n - 4 &&
            std::none_of(corners.begin(), corners.end(), [s](int c) { return std::abs(s - c) < 4; }))
            out.push_back(s);
    std::sort(out.begin(), out.end());
    return out;
}

// The segment that ends at a break is not counted.
Breaks NaiveMerge(const Samples& p, Breaks breaks) {
    Breaks ends = breaks;
    ends.push_back(static_cast<int>(p.size()) - 1);
    std::vector<double> length(ends.size(), 0.0);
    for (std::size_t j = 0; j < ends.size(); ++j)
        for (int i = j > 0 ? ends[j - 1] : 0; i + 1 < ends[j]; ++i)
            length[j] += p[i].Distance(p[i + 1]);
    const double limit = *std::max_element(length.begin(), length.end()) / 20.0 + EQ_ask_length_tolerance();
    for (std::size_t j = length.size(); j-- > 0 && !breaks.empty();) {
        if (length[j] >= limit)
            continue;
        const bool isLast = j == breaks.size();
        if (j > 0 && !isLast)
            breaks[j - 1] = (breaks[j - 1] + breaks[j]) / 2;
        breaks.erase(isLast ? breaks.end() - 1 : breaks.begin() + static_cast<int>(j));
    }
    return breaks;
}

Breaks Merged(const Samples& p, Breaks breaks) {
    std::vector<double> lengthTo;
    SumPathLengths(p, lengthTo);
    MergeShortPieces(lengthTo, breaks);
    return breaks;
}

Breaks ContinuityBreaks(const Samples& p, int minGap, double angleDeg, unsigned int k) {
    Breaks breaks;
    FindContinuityBreaks(p, minGap, angleDeg, k, breaks);
    return breaks;
}

Breaks Joined(int n, const Breaks& speed, Breaks corners) {
    JoinBreaks(n, speed, corners);
    return corners;
}

// Lists far denser than strokes have them, with every mixture of short and long pieces.
TEST(Segmentation, RandomListsAreJoinedAndMergedByTheRules) {
    std::mt19937 rng(7);
    for (int trial = 0; trial < 2000; ++trial) {
        SCOPED_TRACE(trial);
        Samples p;
        Breaks corners, slow;
        double x = 0.0;
        for (int i = 0; i < 60; ++i) {
            p.emplace_back(x += rng() % 3 == 0 ? 50.0 : 1.0, 0.0, 1.0);
            if (i > 0 && i < 59 && rng() % 9 == 0)
                corners.push_back(i);
            if (rng() % 4 == 0)
                slow.push_back(i);
        }
        const Breaks joined = Joined(60, slow, corners);
        ASSERT_EQ(joined, NaiveJoin(60, slow, corners));
        ASSERT_EQ(Merged(p, joined), NaiveMerge(p, joined));
    }
}

// --- Turning

TEST(ContinuityBreaks, KnownCorners) {
    const Samples square = DrawPath({{0, 0}, {100, 0}, {100, 100}, {0, 100}, {0, 0}}, 100);
    const Samples corner = DrawPath({{0, 0}, {8, 0}, {8, 12}}, 8);
    const Samples open = DrawPath({{0, 0}, {40, 0}, {40, 40}}, 40);
    const Samples slight = DrawPath({{0, 0}, {10, 0}, {10, 10}, {18.2, 15.7}}, 10);
    const Samples near = DrawPath({{0, 0}, {3, 0}, {3, 15}}, 3);
    Samples two = DrawPath({{0, 0}, {3, 0}, {3, 9}}, 3); // corner of 90 degrees at 3
    for (int i = 1; i <= 5; ++i)                         // and one of 135 degrees at 6
        two.emplace_back(3.0 - i, 9.0 - i, 1.0);
    Samples stop = DrawPath({{0, 0}, {20, 0}}, 20);
    stop.insert(stop.begin() + 10, 3, stop[10]);
    const struct {
        const char* name;
        Samples samples;
        int minGap;
        double angleDeg;
        unsigned int k;
        Breaks expected;
    } rows[] = {
        // 1.2 x cosine exceeds 1 below 33.56 degrees: the stroke never counts as straight again.
        {"small threshold", square, 5, 33.5, 8, {}},
        {"threshold just large enough", square, 5, 33.6, 8, {100, 200, 300}},
        {"no look-ahead", corner, 5, 50.0, 0, {}},
        {"17 samples, 19 needed", corner, 5, 50.0, 9, {}},
        {"huge look-ahead", corner, 5, 50.0, 4000000000U, {}},
        {"straight again at the end", open, 5, 50.0, 8, {40}},
        {"still turning at the end", {open.begin(), open.begin() + 49}, 5, 50.0, 8, {}},
        {"far enough from the start", near, 3, 50.0, 1, {3}},
        {"too near the start", near, 4, 50.0, 1, {}},
        {"a sharper corner takes the place of one too near", two, 4, 50.0, 1, {6}},
        {"both", two, 3, 50.0, 1, {3, 6}},
        {"the fewest samples that can break", {{0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {1, 2, 1}}, 1, 50.0, 1, {1}},
        {"55 degrees after 90", slight, 5, 50.0, 1, {10, 20}},
        {"repeated samples count as a turn", stop, 5, 50.0, 1, {10}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ContinuityBreaks(row.samples, row.minGap, row.angleDeg, row.k), row.expected) << row.name;
}

// --- Speed

using Slowed = std::vector<std::pair<int, double>>; // samples and their speeds among those of speed 10

Samples Slowing(const Slowed& slow, int count) {
    Samples samples;
    for (int i = 0; i < count; ++i)
        samples.emplace_back(i, 0.0, 10.0);
    for (const auto& [at, speed] : slow)
        samples[at] = StrokePoint(at, 0.0, speed);
    return samples;
}

Breaks Slow(const Samples& samples, double ratio = 1.0 / 15.0) {
    Breaks breaks;
    FindSlowBreaks(samples, ratio, breaks);
    return breaks;
}

TEST(SpeedBreaks, SlowestSampleOfEachSlowRun) {
    const Samples samples = Slowing({{10, 0.5}, {11, 0.25}, {12, 0.25}, {30, 0.5}}, 40);
    EXPECT_THAT(Slow(samples), ElementsAre(11, 30)); // the first of equals
    EXPECT_THAT(Slow(samples, 0.03), ElementsAre(11));
    EXPECT_THAT(Slow(Samples(40, StrokePoint(0, 0, 0)), 1.0), IsEmpty());
    // The outer three samples are left out; a run at 36, the last inner one, is open when the scan ends.
    for (const int i : {2, 3, 36, 37})
        EXPECT_EQ(Slow(Slowing({{i, 0.1}}, 40)), i == 3 ? Breaks{3} : Breaks{}) << i;
}

TEST(SpeedBreaks, RunsThatVary) {
    const struct {
        const char* name;
        Slowed slow;
        Breaks expected;
    } rows[] = {
        {"a run, the first of equals", {{20, 6}, {21, 2}, {22, 2}, {23, 6}}, {21}},
        {"nearly even", {{20, 6}, {21, 4}, {22, 6}}, {}},
        {"two even ones", {{20, 6}, {21, 6}, {22, 6}, {40, 2}, {41, 2}, {42, 2}}, {}},
        {"two samples wait", {{20, 1}, {21, 9}}, {}},
        {"the third comes later, the slowest is still the first", {{20, 1}, {21, 9}, {40, 5}}, {20}},
        {"nine from the start", {{8, 6}, {9, 1}, {10, 6}}, {}},
        {"refused, but still the slowest", {{8, 6}, {9, 1}, {10, 6}, {28, 6}, {29, 2}, {30, 6}}, {}},
        {"nine apart", {{19, 6}, {20, 1}, {21, 6}, {28, 6}, {29, 1}, {30, 6}}, {20}},
        {"ten apart", {{19, 6}, {20, 1}, {21, 6}, {29, 6}, {30, 1}, {31, 6}}, {20, 30}},
        {"ends of the scan", {{0, 1}, {1, 6}, {2, 6}, {53, 6}, {54, 1}, {55, 6}, {56, 6}}, {}},
        {"zeros", {{20, 0}, {21, 0}, {22, 0}}, {}},
    };
    for (const auto& row : rows) {
        Breaks breaks;
        FindVaryingSpeedBreaks(Slowing(row.slow, 60), 0.3, breaks);
        EXPECT_EQ(breaks, row.expected) << row.name;
    }
}

TEST(MergedBreaks, ShortPiecesVanish) {
    const Samples line = DrawPath({{0, 0}, {99, 0}}, 99);
    const Samples longer = DrawPath({{0, 0}, {101, 0}}, 101);
    EXPECT_THAT(Merged(line, {}), IsEmpty());
    EXPECT_THAT(Merged(line, {3, 50, 97}), ElementsAre(50));    // the first and the last piece
    EXPECT_THAT(Merged(line, {30, 33, 36}), ElementsAre(32));   // 36 and 33 to 34, then with 30
    EXPECT_THAT(Merged(longer, {81, 86}), ElementsAre(83));     // 4 of 80: a twentieth
    EXPECT_THAT(Merged(longer, {80, 85}), ElementsAre(80, 85)); // 4 of 79
}

} // namespace
} // namespace Tessera::Geometry
