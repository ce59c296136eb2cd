#include "tessera/recognition/internal/LinkedRing.h"

#include <cmath>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

namespace Tessera::Geometry {
namespace {

constexpr double kPi = std::numbers::pi;

/// A belt about two wheels, drawn from a point of its first line: its ink strays a little.
struct Belt {
    Belt(double small, double large, double lean, unsigned seed) {
        const double distance = (large - small) / std::sin(lean);
        const double side = distance * std::cos(lean);
        const struct {
            double length, curvature;
        } links[] = {{0.6 * side, 0.0},
                     {small * (kPi - 2.0 * lean), 1.0 / small},
                     {side, 0.0},
                     {large * (kPi + 2.0 * lean), 1.0 / large},
                     {0.4 * side, 0.0}};
        std::mt19937 rng(seed);
        std::normal_distribution<double> stray(0.0, 0.004);
        LinkedRun exact;
        exact.heading = 0.03;
        for (const auto& l : links) {
            Link link;
            link.isArc = l.curvature != 0.0;
            link.length = l.length;
            link.curvature = l.curvature;
            exact.links.push_back(link);
        }
        Lay(exact);
        for (const Link& link : exact.links) {
            const int steps = static_cast<int>(link.length / 0.04);
            for (int i = 0; i < steps; ++i) {
                LinkedRun part;
                part.links = {link, Link()};
                part.origin = link.start;
                part.heading = link.heading;
                part.links[0].length = link.length * i / steps;
                Lay(part);
                path.pts.push_back(part.links[1].start + Point(stray(rng), stray(rng)));
            }
            last.push_back(path.Size());
        }
        path.source = {0.0};
        path.length = 1.0;
        // The run begins where the first line ends and goes round to it: four links.
        run.heading = exact.links[2].heading;
        run.normal = {-std::sin(run.heading), std::cos(run.heading)};
        run.origin = exact.links[2].start;
        run.first = last[1];
        for (const std::size_t k : {2U, 3U, 0U, 1U}) {
            Link link = exact.links[k];
            link.length = k == 0 ? side : link.length;
            link.last = k < 2 ? path.Size() + last[k] : last[k];
            run.links.push_back(link);
        }
        for (Link& link : run.links) { // as an open fit leaves it
            link.length *= 1.0 + 5.0 * stray(rng);
            link.curvature *= 1.0 + 5.0 * stray(rng);
        }
        Lay(run);
    }

    InkPath path;
    std::vector<int> last;
    LinkedRun run;
};

void ExpectClosed(LinkedRun run) {
    const Point start = run.links[0].start;
    run.links.push_back({});
    Lay(run);
    EXPECT_LT(run.links.back().start.Distance(start), 1e-11);
    EXPECT_NEAR(std::remainder(run.links.back().heading - run.heading, 2.0 * kPi), 0.0, 1e-11);
}

TEST(LinkedRing, ClosesWhereNoChangeImprovesTheFit) {
    std::mt19937 rng(11);
    std::normal_distribution<double> change(0.0, 3e-3);
    for (const double lean : {0.1, 0.3, 0.6})
        for (const double small : {0.15, 0.4}) {
            SCOPED_TRACE(testing::Message() << lean << ", " << small);
            Belt belt(small, 0.7, lean, 5);
            const PricedPath ink(belt.path);
            ASSERT_TRUE(FitRing(ink, belt.run));
            ExpectClosed(belt.run);
            const Misfit least = MisfitOf(ink, belt.run);
            EXPECT_LE(least.sumSq, 2.0 * 0.004 * 0.004 * least.count);
            for (int i = 0; i < 60; ++i) {
                LinkedRun other = belt.run;
                other.origin += Point(change(rng), change(rng));
                other.heading += change(rng);
                for (Link& link : other.links) {
                    link.length += change(rng);
                    link.curvature += link.isArc ? change(rng) : 0.0;
                }
                ASSERT_TRUE(CloseUp(other));
                EXPECT_GE(MisfitOf(ink, other).sumSq, least.sumSq * (1.0 - 1e-2));
            }
        }
}

TEST(LinkedRing, LinesMeetTheirTargets) {
    Belt belt(0.3, 0.7, 0.25, 9);
    const PricedPath ink(belt.path);
    Link& line = belt.run.links[2];
    line.hasTarget = true;
    line.target = 0.0; // it was drawn at 0.03
    ASSERT_TRUE(FitRing(ink, belt.run));
    ExpectClosed(belt.run);
    EXPECT_NEAR(std::remainder(belt.run.links[2].heading, 2.0 * kPi), 0.0, 1e-11);
    EXPECT_LT(std::sqrt(MisfitOf(ink, belt.run).sumSq / belt.path.Size()), 0.03);
}

// Arcs alone, bulging out and in about a circle; too many to be fitted together are closed as they are.
TEST(LinkedRing, ClosesArcsAlone) {
    std::mt19937 rng(3);
    std::normal_distribution<double> change(0.0, 0.01);
    for (const int lobes : {2, 3, 8, 30}) {
        SCOPED_TRACE(lobes);
        const Belt belt(0.3, 0.7, 0.25, 9); // for its ink, of which none is counted
        const PricedPath ink(belt.path);
        LinkedRun run;
        for (int k = 0; k < 2 * lobes; ++k) {
            const double sweep = k % 2 == 0 ? 1.0 + 2.0 * kPi / lobes : -1.0;
            Link link;
            link.isArc = true;
            link.length = std::fabs(sweep) * (1.0 + change(rng));
            link.curvature = sweep / link.length * (1.0 + change(rng) / lobes);
            run.links.push_back(link);
        }
        Lay(run);
        ASSERT_TRUE(FitRing(ink, run));
        ExpectClosed(run);
        for (const Link& link : run.links)
            EXPECT_NEAR(link.length, link.curvature > 0.0 ? 1.0 + 2.0 * kPi / lobes : 1.0, 0.3);
    }
}

} // namespace
} // namespace Tessera::Geometry
