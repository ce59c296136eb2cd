#include "tessera/recognition/internal/InkPath.h"

#include <cmath>
#include <gtest/gtest.h>

#include "tests/support/SyntheticInk.h"

namespace Tessera::Geometry {
namespace {

std::vector<InkSample> SomeInk() {
    Testing::RandomPlans plans(3);
    const Testing::InkPlan plan = plans.Mixed();
    return plan.Draw(plans.Rng(), {}).ink.samples;
}

TEST(InkPath, PointsAreEvenlySpacedAndOfUnitSize) {
    const InkPath path = MakeInkPath(SomeInk());
    ASSERT_GE(path.Size(), 48);
    double secondMoment = 0.0;
    for (const Point& p : path.pts)
        secondMoment += p.Dot(p) / path.Size();
    EXPECT_NEAR(secondMoment, 1.0, 0.05);
    for (int i = 1; i < path.Size(); ++i) {
        const double chord =
            path.pts[static_cast<std::size_t>(i)].Distance(path.pts[static_cast<std::size_t>(i - 1)]);
        EXPECT_LE(chord, path.step * (1.0 + 1e-9));
        EXPECT_GE(chord, 0.6 * path.step); // only a corner between two points shortens the chord
    }
}

TEST(InkPath, SourceLeadsBackToTheInk) {
    const std::vector<InkSample> ink = SomeInk();
    const InkPath path = MakeInkPath(ink);
    EXPECT_EQ(path.source.front(), 0.0);
    EXPECT_EQ(path.source.back(), static_cast<double>(ink.size() - 1));
    for (std::size_t i = 0; i < path.pts.size(); ++i) {
        const auto k = static_cast<std::size_t>(path.source[i]);
        const double f = path.source[i] - static_cast<double>(k);
        const InkSample& a = ink[k];
        const InkSample& b = ink[std::min(k + 1, ink.size() - 1)];
        const Point p = path.ToModel(path.pts[i]);
        EXPECT_NEAR(p.x, a.x + f * (b.x - a.x), 1e-9);
        EXPECT_NEAR(p.y, a.y + f * (b.y - a.y), 1e-9);
    }
}

TEST(InkPath, SizePlaceAndSamplingDoNotMatter) {
    const std::vector<InkSample> ink = SomeInk();
    const InkPath path = MakeInkPath(ink);
    std::vector<InkSample> moved;
    for (std::size_t i = 0; i < ink.size(); ++i) {
        moved.push_back({1e6 + 250.0 * ink[i].x, 250.0 * ink[i].y - 1e6, 0.0});
        if (i % 3 == 0)
            moved.push_back(moved.back());    // the pen rests
        if (i % 5 == 0 && i + 1 < ink.size()) // a sample more on the same segment
            moved.push_back(
                {1e6 + 125.0 * (ink[i].x + ink[i + 1].x), 125.0 * (ink[i].y + ink[i + 1].y) - 1e6, 0.0});
    }
    const InkPath other = MakeInkPath(moved);
    ASSERT_EQ(other.Size(), path.Size());
    for (int i = 0; i < path.Size(); ++i)
        EXPECT_LT(path.pts[static_cast<std::size_t>(i)].Distance(other.pts[static_cast<std::size_t>(i)]),
                  1e-7);
}

TEST(InkPath, PaceIsTheSpeedAgainstTheUsualOne) {
    std::vector<InkSample> ink; // along a line; the middle third takes four times as long
    double t = 0.0;
    for (int i = 0; i <= 90; ++i) {
        ink.push_back({2.0 * i, 1.0 * i, t});
        t += i >= 30 && i < 60 ? 4.0 : 1.0;
    }
    const InkPath path = MakeInkPath(ink);
    const std::vector<double> pace = PaceAlong(path, ink);
    ASSERT_EQ(pace.size(), path.pts.size());
    EXPECT_NEAR(pace.front(), 1.0, 1e-9);
    EXPECT_NEAR(pace[pace.size() / 2], 0.25, 1e-9);
    EXPECT_NEAR(pace.back(), 1.0, 1e-9);
    for (InkSample& s : ink)
        s.t = 5.0;
    EXPECT_TRUE(PaceAlong(path, ink).empty());
}

TEST(InkPath, NothingToReadGivesNoPoints) {
    EXPECT_TRUE(MakeInkPath({}).pts.empty());
    const std::vector<InkSample> dot(7, InkSample{3.0, 4.0, 0.0});
    EXPECT_TRUE(MakeInkPath(dot).pts.empty());
}

} // namespace
} // namespace Tessera::Geometry
