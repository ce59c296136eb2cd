#include "tessera/recognition/internal/LinkedRun.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

namespace Tessera::Geometry {
namespace {

/// Lines between arcs of either sense, all of one length, in steps of 0.04, with ink that strays a little.
struct Drawn {
    explicit Drawn(int links) {
        constexpr int kSteps = 20;
        for (int k = 0; k < links; ++k) {
            Link link;
            link.isArc = k % 2 == 1;
            link.length = 0.04 * kSteps;
            link.curvature = !link.isArc ? 0.0 : k % 4 == 1 ? 1.6 : -1.1;
            link.last = kSteps * (k + 1);
            run.links.push_back(link);
        }
        run.normal = {0.0, 1.0};
        Lay(run);
        std::mt19937 rng(7);
        std::normal_distribution<double> stray(0.0, 0.004);
        for (const Link& link : run.links)
            for (int i = 0; i < kSteps; ++i) {
                LinkedRun part;
                part.links = {link, Link()};
                part.origin = link.start;
                part.heading = link.heading;
                part.links[0].length = 0.04 * i;
                Lay(part);
                path.pts.push_back(part.links[1].start + Point(stray(rng), stray(rng)));
            }
        path.pts.push_back(path.pts.back());
        path.source = {0.0};
        path.length = 1.0;
        for (double* value : FreeValues())
            *value += value == &run.heading ? 0.01 : stray(rng);
    }

    std::vector<double*> FreeValues() {
        std::vector<double*> values{&run.offset, &run.heading};
        for (Link& link : run.links) {
            if (link.isArc)
                values.push_back(&link.curvature);
            if (&link != &run.links.back())
                values.push_back(&link.length);
        }
        return values;
    }

    InkPath path;
    LinkedRun run;
};

TEST(LinkedRun, NoFreeValueImprovesTheFit) {
    for (const int links : {1, 2, 3, 8, 80}) {
        SCOPED_TRACE(links);
        Drawn drawn(links);
        const PricedPath ink(drawn.path);
        double damping = kFirstDamping;
        for (int step = 0; step < 30 && Improve(ink, false, damping, drawn.run); ++step) {
        }
        const Misfit least = MisfitOf(ink, drawn.run);
        EXPECT_EQ(least.count, drawn.path.Size());
        EXPECT_LE(least.sumSq, 2.0 * 0.004 * 0.004 * least.count);
        for (double* value : drawn.FreeValues())
            for (const double change : {-1e-3, 1e-3}) {
                const double old = *value;
                *value += change;
                Lay(drawn.run);
                EXPECT_GE(MisfitOf(ink, drawn.run).sumSq, least.sumSq * (1.0 - 1e-3));
                *value = old;
            }
    }
}

} // namespace
} // namespace Tessera::Geometry
