#include "tessera/recognition/internal/Segmentation.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "tessera/core/NumericHelpers.h"
#include "tessera/kernel/EQ.h"
#include "tessera/recognition/internal/PathLengths.h"
#include "tests/support/DrawnStrokes.h"

namespace Tessera::Geometry {
namespace {

using Testing::DrawAtRandom;
using Testing::DrawPath;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::Samples;
using Breaks = std::vector<int>;

// --- Oracles: the rules taken word by word, without sharing work between samples

double TurnCosine(const Samples& p, std::size_t i, std::size_t k) {
    Point a = p[i] - p[i - k];
    Point b = p[i + k] - p[i];
    a.Normalize();
    b.Normalize();
    return a.Dot(b);
}

Breaks NaiveContinuityBreaks(const Samples& p, int minGap, double angleDeg, int k) {
    Breaks breaks;
    const double c = std::cos(angleDeg * 3.141592653589793 / 180.0);
    const int n = static_cast<int>(p.size());
    double best = 2.0;
    int bestIndex = -1;
    for (int i = k; k > 0 && i <= n - k - 1; ++i) {
        const double d = TurnCosine(p, static_cast<std::size_t>(i), static_cast<std::size_t>(k));
        if (d < c) {
            if (d < best) {
                best = d;
                bestIndex = i;
            }
        } else if (best < c && d > 1.2 * c && bestIndex - (breaks.empty() ? 0 : breaks.back()) >= minGap) {
            breaks.push_back(bestIndex);
            best = 2.0;
        }
    }
    return breaks;
}

Breaks NaiveSpeedBreaks(const Samples& p, double ratio) {
    std::vector<double> speeds;
    for (const StrokePoint& q : p)
        speeds.push_back(q.GetSpeed());
    double mean = 0.0;
    Core::FindMeanAndStdDev(speeds, &mean, nullptr);
    Breaks breaks;
    std::vector<double> window;
    double current = mean;
    int candidate = -1;
    for (int i = 3; i <= static_cast<int>(p.size()) - 4; ++i) {
        const double speed = speeds[static_cast<std::size_t>(i)];
        if (speed < mean) {
            window.push_back(speed);
            if (speed < current) {
                current = speed;
                candidate = i;
            }
            continue;
        }
        if (window.size() < 3)
            continue;
        double sum = 0.0;
        double squares = 0.0;
        for (const double w : window)
            sum += w;
        const double m = sum / static_cast<double>(window.size());
        for (const double w : window)
            squares += (w - m) * (w - m);
        const double sd = std::sqrt(squares / static_cast<double>(window.size()));
        if (sd / m > ratio && candidate - (breaks.empty() ? 0 : breaks.back()) >= 10) {
            breaks.push_back(candidate);
            current = mean;
        }
        window.clear();
    }
    return breaks;
}

Breaks NaiveJoin(int n, const Breaks& speed, const Breaks& continuity) {
    Breaks out = continuity;
    for (const int s : speed) {
        bool drop = s < 3 || s > n - 4;
        for (const int c : continuity) {
            if (c >= s + 4)
                break;
            drop = drop || std::abs(s - c) < 4;
        }
        if (drop)
            continue;
        auto at = out.begin();
        while (at != out.end() && *at < s)
            ++at;
        out.insert(at, s);
    }
    return out;
}

double NaiveLength(const Samples& p, int first, int last) {
    double length = 0.0;
    for (int i = first; i + 1 < last; ++i)
        length += p[static_cast<std::size_t>(i)].Distance(p[static_cast<std::size_t>(i) + 1]);
    return length;
}

Breaks NaiveMerge(const Samples& p, Breaks breaks) {
    if (breaks.empty())
        return breaks;
    const int m = static_cast<int>(breaks.size());
    std::vector<double> length;
    for (int j = 0; j <= m; ++j)
        length.push_back(
            NaiveLength(p, j > 0 ? breaks[static_cast<std::size_t>(j) - 1] : 0,
                        j < m ? breaks[static_cast<std::size_t>(j)] : static_cast<int>(p.size()) - 1));
    const double limit = *std::max_element(length.begin(), length.end()) / 20.0 + EQ_ask_length_tolerance();
    for (int j = m; j >= 0 && !breaks.empty(); --j) {
        if (length[static_cast<std::size_t>(j)] >= limit)
            continue;
        if (j == static_cast<int>(breaks.size())) {
            breaks.pop_back();
        } else if (j == 0) {
            breaks.erase(breaks.begin());
        } else {
            breaks[static_cast<std::size_t>(j) - 1] =
                (breaks[static_cast<std::size_t>(j) - 1] + breaks[static_cast<std::size_t>(j)]) / 2;
            breaks.erase(breaks.begin() + j);
        }
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

Samples WithSpeeds(const std::vector<double>& speeds) {
    Samples samples;
    for (const double speed : speeds)
        samples.emplace_back(static_cast<double>(samples.size()), 0.0, speed);
    return samples;
}

Breaks Slow(const std::vector<double>& speeds, double ratio) {
    Breaks breaks;
    FindSlowBreaks(WithSpeeds(speeds), ratio, breaks);
    return breaks;
}

Breaks Varying(const std::vector<double>& speeds, double ratio = 0.3) {
    Breaks breaks;
    FindVaryingSpeedBreaks(WithSpeeds(speeds), ratio, breaks);
    return breaks;
}

// --- Against the oracles

TEST(Segmentation, RandomStrokesFollowTheRulesWordByWord) {
    std::mt19937 rng(20240607);
    const double angles[] = {20.0, 33.0, 34.0, 50.0, 89.0, 120.0, 180.0};
    std::size_t found = 0;
    for (int trial = 0; trial < 400; ++trial) {
        SCOPED_TRACE(trial);
        const int n = 5 + static_cast<int>(rng() % 400);
        const Samples p = DrawAtRandom(rng, n);
        const double angle = angles[trial % 7];
        const int k = 1 + static_cast<int>(rng() % 12);
        const Breaks corners = ContinuityBreaks(p, 5, angle, static_cast<unsigned int>(k));
        ASSERT_EQ(corners, NaiveContinuityBreaks(p, 5, angle, k));
        Breaks slow;
        FindVaryingSpeedBreaks(p, 0.2, slow);
        ASSERT_EQ(slow, NaiveSpeedBreaks(p, 0.2));
        Breaks joined = corners;
        JoinBreaks(n, slow, joined);
        ASSERT_EQ(joined, NaiveJoin(n, slow, corners));
        ASSERT_EQ(Merged(p, joined), NaiveMerge(p, joined));
        found += corners.size() + slow.size();
    }
    EXPECT_GT(found, 1000U); // the strokes do have breaks
}

// Lists far denser than strokes have them, with every mixture of short and long pieces.
TEST(Segmentation, MergeWalkOfRandomLists) {
    std::mt19937 rng(7);
    for (int trial = 0; trial < 2000; ++trial) {
        SCOPED_TRACE(trial);
        Samples p;
        double x = 0.0;
        for (int i = 0; i < 40; ++i)
            p.emplace_back(x += rng() % 3 == 0 ? 50.0 : 1.0, 0.0, 1.0);
        Breaks breaks;
        for (int i = 1; i < 39; ++i)
            if (rng() % 3 == 0)
                breaks.push_back(i);
        ASSERT_EQ(Merged(p, breaks), NaiveMerge(p, breaks));
    }
}

TEST(Segmentation, JoinOfRandomLists) {
    std::mt19937 rng(8);
    for (int trial = 0; trial < 2000; ++trial) {
        SCOPED_TRACE(trial);
        Breaks corners;
        Breaks slow;
        for (int i = 0; i < 60; ++i) {
            if (rng() % 9 == 0)
                corners.push_back(i);
            if (rng() % 4 == 0)
                slow.push_back(i);
        }
        Breaks joined = corners;
        JoinBreaks(60, slow, joined);
        ASSERT_EQ(joined, NaiveJoin(60, slow, corners));
    }
}

// --- Turning

Samples Cut(Samples samples, std::size_t count) {
    samples.resize(count);
    return samples;
}

TEST(ContinuityBreaks, KnownCorners) {
    const Samples square = DrawPath({{0, 0}, {100, 0}, {100, 100}, {0, 100}, {0, 0}}, 100);
    const Samples corner = DrawPath({{0, 0}, {8, 0}, {8, 12}}, 8);
    const Samples open = DrawPath({{0, 0}, {40, 0}, {40, 40}}, 40);
    const Samples near = DrawPath({{0, 0}, {3, 0}, {3, 3}, {3, 6}, {3, 9}, {3, 12}, {3, 15}}, 3);
    Samples two = DrawPath({{0, 0}, {3, 0}, {3, 9}}, 3); // corner of 90 degrees at 3
    for (int i = 1; i <= 5; ++i)                         // and one of 135 degrees at 6
        two.emplace_back(3.0 - i, 9.0 - i, 1.0);
    Samples stop = DrawPath({{0, 0}, {20, 0}}, 20);
    stop.insert(stop.begin() + 10, 3, stop[10]);
    const struct {
        const char* name;
        const Samples& samples;
        int minGap;
        double angleDeg;
        unsigned int k;
        Breaks expected;
    } rows[] = {
        {"square", square, 5, 50.0, 8, {100, 200, 300}},
        // 1.2 x cosine exceeds 1 below 33.56 degrees: the stroke never counts as straight again.
        {"small threshold", square, 5, 33.5, 8, {}},
        {"threshold just large enough", square, 5, 33.6, 8, {100, 200, 300}},
        {"no look-ahead", corner, 5, 50.0, 0, {}},
        {"17 samples, 19 needed", corner, 5, 50.0, 9, {}},
        {"huge look-ahead", corner, 5, 50.0, 4000000000U, {}},
        {"enough room", corner, 5, 50.0, 4, {8}},
        {"straight again at the end", open, 5, 50.0, 8, {40}},
        {"still turning at the end", Cut(open, 49), 5, 50.0, 8, {}},
        {"far enough from the start", near, 3, 50.0, 1, {3}},
        {"too near the start", near, 4, 50.0, 1, {}},
        {"a sharper corner takes the place of one too near", two, 4, 50.0, 1, {6}},
        {"both", two, 3, 50.0, 1, {3, 6}},
        {"repeated samples count as a turn", stop, 5, 50.0, 1, {10}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ContinuityBreaks(row.samples, row.minGap, row.angleDeg, row.k), row.expected) << row.name;
}

// --- Speed

TEST(SpeedBreaks, SlowestSampleOfEachSlowRun) {
    std::vector<double> speeds(40, 10.0);
    speeds[10] = 0.5;
    speeds[11] = 0.25;
    speeds[12] = 0.25;
    speeds[30] = 0.5;
    EXPECT_THAT(Slow(speeds, 1.0 / 15.0), ElementsAre(11, 30)); // the first of equals
    EXPECT_THAT(Slow(speeds, 0.03), ElementsAre(11));
    EXPECT_THAT(Slow(std::vector<double>(40, 0.0), 1.0), IsEmpty());
}

TEST(SpeedBreaks, OuterThreeSamplesAndOpenRunsAreLeftOut) {
    for (const int i : {0, 1, 2, 3, 36, 37, 38, 39}) {
        SCOPED_TRACE(i);
        std::vector<double> speeds(40, 10.0);
        speeds[static_cast<std::size_t>(i)] = 0.1;
        // A run at the last inner sample, 36, is still open when the scan ends.
        EXPECT_EQ(Slow(speeds, 1.0 / 15.0), i == 3 ? Breaks{3} : Breaks{});
    }
}

TEST(SpeedBreaks, RunsThatVary) {
    const struct {
        const char* name;
        std::vector<std::pair<std::size_t, double>> slow; // among sixty samples of speed 10
        Breaks expected;
    } rows[] = {
        {"a run", {{20, 6}, {21, 2}, {22, 6}}, {21}},
        {"nearly even", {{20, 6}, {21, 5.5}, {22, 6}}, {}},
        {"two samples wait", {{20, 1}, {21, 9}}, {}},
        {"the third comes later, the slowest is still the first", {{20, 1}, {21, 9}, {40, 5}}, {20}},
        {"nine apart", {{19, 6}, {20, 1}, {21, 6}, {28, 6}, {29, 1}, {30, 6}}, {20}},
        {"ten apart", {{19, 6}, {20, 1}, {21, 6}, {29, 6}, {30, 1}, {31, 6}}, {20, 30}},
        {"zeros", {{20, 0}, {21, 0}, {22, 0}}, {}},
    };
    for (const auto& row : rows) {
        std::vector<double> speeds(60, 10.0);
        for (const auto& [at, speed] : row.slow)
            speeds[at] = speed;
        EXPECT_EQ(Varying(speeds), row.expected) << row.name;
    }
}

TEST(JoinedBreaks, ContinuityBreaksStandForSpeedBreaksNearby) {
    struct Row {
        Breaks speed, corners, expected;
    };
    const Row rows[] = {
        {{47}, {50}, {50}},            // 3 away
        {{46}, {50}, {46, 50}},        // 4 away
        {{53, 54}, {50}, {50, 54}},    //
        {{2, 3, 96, 97}, {}, {3, 96}}, // 100 samples: 3 to 96
        {{20, 60}, {10, 40, 80}, {10, 20, 40, 60, 80}},
    };
    for (const Row& row : rows) {
        Breaks breaks = row.corners;
        JoinBreaks(100, row.speed, breaks);
        EXPECT_EQ(breaks, row.expected);
    }
}

TEST(MergedBreaks, ShortPiecesVanish) {
    const Samples line = DrawPath({{0, 0}, {99, 0}}, 99);
    const Samples longer = DrawPath({{0, 0}, {101, 0}}, 101);
    const struct {
        const Samples& samples;
        Breaks breaks, expected;
    } rows[] = {
        {line, {}, {}},
        {line, {10, 12}, {11}},
        {line, {3, 50}, {50}},      // first piece
        {line, {50, 97}, {50}},     // last piece
        {line, {30, 33, 36}, {32}}, // 36 and 33 to 34, then with 30
        // The segment that ends at the break is not counted.
        {longer, {81, 86}, {83}},     // 4 of 80: a twentieth
        {longer, {80, 85}, {80, 85}}, // 4 of 79
    };
    for (const auto& row : rows)
        EXPECT_EQ(Merged(row.samples, row.breaks), row.expected) << testing::PrintToString(row.breaks);
}

} // namespace
} // namespace Tessera::Geometry
