#include "tessera/core/NumericHelpers.h"

#include "tessera/geometry/Point.h"
#include "tests/support/Test.h"

namespace Tessera::Core {
namespace {

using Geometry::Point;

Point Moved(double m[3][3], Point p) {
    p.Transform(m);
    return p;
}

TEST(FindMeanAndStdDev, KnownLists) {
    struct {
        std::vector<double> values;
        double mean, stdDev, meanKept, stdDevKept;
    } rows[] = {
        {{2, 4, 4, 4, 5, 5, 7, 9}, 5, 2, 5, 2}, // 9 lies exactly on the bound and is kept
        {{1, 1, 1, 1, 1, 1, 1, 1, 1, 100}, 10.9, 29.7, 1, 0},
        {{7}, 7, 0, 7, 0},
        {{3, -3}, 0, 3, 0, 3},
        // One pass only: 30 would fall in a second one.
        {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 30, 200},
         230.0 / 14,
         std::sqrt(40900.0 / 14 - 52900.0 / 196),
         30.0 / 13,
         std::sqrt(900.0 / 13 - 900.0 / 169)},
    };
    for (auto& row : rows) {
        double all[2] = {-1, -1}, kept[2] = {-1, -1};
        EXPECT_TRUE(FindMeanAndStdDev(row.values, &all[0], &all[1]));
        EXPECT_TRUE(FindMeanAndStdDevWithOutlierRejection(row.values, &kept[0], &kept[1]));
        EXPECT_NEAR(all[0], row.mean, 1e-12);
        EXPECT_NEAR(all[1], row.stdDev, 1e-12);
        EXPECT_NEAR(kept[0], row.meanKept, 1e-12);
        EXPECT_NEAR(kept[1], row.stdDevKept, 1e-12);
        EXPECT_TRUE(FindMeanAndStdDev(row.values, nullptr, nullptr));
    }
}

TEST(FindMeanAndStdDev, NothingToSayLeavesTheAnswersAlone) {
    std::vector<double> empty, notNumbers = {1.0, NAN}, values = {2, -7, 3, 11, -1};
    double answers[2] = {-1, -2};
    EXPECT_FALSE(FindMeanAndStdDev(empty, &answers[0], &answers[1]));
    for (std::vector<double>* list : {&empty, &notNumbers})
        EXPECT_FALSE(FindMeanAndStdDevWithOutlierRejection(*list, &answers[0], &answers[1]));
    EXPECT_FALSE(FindRange(empty, answers));
    EXPECT_TRUE(answers[0] == -1 && answers[1] == -2);
    EXPECT_TRUE(FindRange(values, nullptr));
    EXPECT_TRUE(FindRange(values, answers) && answers[0] == -7 && answers[1] == 11);
}

TEST(ComposeScaleTransform, CarriesTheScaleInTheLastElement) {
    double centre[2] = {1, 1}, other[2] = {-250, 1}, m[3][3];
    ComposeScaleTransform(centre, 2.0, m);
    EXPECT_TRUE(m[0][0] == 1.0 && m[2][2] == 0.5);
    EXPECT_EQ(Moved(m, {2, 1}), Point(3, 1));
    ComposeScaleTransform(centre, 0.0, m); // not guarded
    EXPECT_TRUE(std::isinf(m[2][2]));
    ComposeScaleTransform(other, 0.125, m);
    EXPECT_EQ(Moved(m, {-170, 9}), Point(-240, 2));
}

TEST(ComposeMirrorTransform, ReflectsAcrossTheLine) {
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> at(-50, 50);
    double m[3][3];
    for (int trial = 0; trial < 200; ++trial) {
        const Point a(at(rng), at(rng)), b(at(rng), at(rng)), p(at(rng), at(rng));
        ComposeMirrorTransform(a, b, m);
        const Point image = Moved(m, p);
        EXPECT_NEAR(Moved(m, image).Distance(p), 0.0, 1e-12);
        EXPECT_NEAR((image - p).Dot(b - a), 0.0, 1e-10) << "moved straight across";
        EXPECT_NEAR(((p + image) / 2.0 - a).Cross(b - a), 0.0, 1e-10) << "halfway on the line";
        EXPECT_TRUE(m[2][0] == 0 && m[2][1] == 0 && m[2][2] == 1);
    }
    ComposeMirrorTransform(Point(3, 3), Point(3, 3), m);
    EXPECT_EQ(Moved(m, {8, -2}), Point(8, -2)) << "no line, no reflection";
}

TEST(PointInPolygon, SlopesNotchesAndEdgesByTheRule) {
    double xs[] = {0, 4, 4, 2, 0}, ys[] = {0, 0, 4, 2, 4}; // a square with a notch from above
    const struct {
        const char* name;
        Point p;
        bool inside;
    } rows[] = {
        {"below the notch", {2, 1}, true},
        {"in the notch", {2, 3}, false},
        {"left of its slope", {0.9, 3}, true},
        {"right of it", {1.1, 3}, false},
        {"right horn", {3.1, 3}, true},
        {"beside it", {2.9, 3}, false},
        {"left edge", {0, 1}, true},
        {"right edge", {4, 1}, false},
        {"lower edge", {2, 0}, true},
        {"level with the horns", {1, 4}, false},
        {"level with the notch", {1, 2}, true},
        {"outside, level with it", {-1, 2}, false},
        {"on the left slope", {1, 3}, false},
        {"on the right slope", {3, 3}, true},
        {"level with the base", {-1, 0}, false},
        {"far to the right", {9, 1}, false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(PointInPolygon(row.p.x, row.p.y, 5, xs, ys), row.inside) << row.name;
    EXPECT_FALSE(PointInPolygon(1, 0.5, 2, xs, ys)) << "two vertices enclose nothing";
}

} // namespace
} // namespace Tessera::Core
