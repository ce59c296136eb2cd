#include "tessera/recognition/internal/ChainSearch.h"

#include "tessera/recognition/internal/ChainClosing.h"
#include "tessera/recognition/internal/ChainGeometry.h"
#include "tessera/recognition/internal/Description.h"
#include "tessera/recognition/internal/EndJoin.h"
#include "tessera/recognition/internal/InkCurves.h"
#include "tessera/recognition/internal/InkDeviations.h"
#include "tessera/recognition/internal/TangentRun.h"
#include "tests/support/SyntheticInk.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

constexpr double kRight = 0.5 * std::numbers::pi;

/// Ink of a hand that hardly strays.
InkPath Draw(const InkPlan& plan) {
    std::mt19937 rng(5);
    Hand hand;
    hand.rounding = 0.008;
    hand.tremor = 0.0003;
    hand.stray = 0.001;
    return MakeInkPath(plan.Draw(rng, hand).ink.samples);
}

Chain Briefest(const PricedPath& ink) {
    const std::vector<Chain> chains = SearchChains(ink);
    return *std::min_element(chains.begin(), chains.end(), [&](const Chain& a, const Chain& b) {
        return LengthOf(ink, a) < LengthOf(ink, b);
    });
}

/// L line, A arc; | corner, ~ tangent joint, - bend.
std::string Describe(const Chain& chain) {
    std::string text;
    for (const ChainPiece& piece : chain.pieces) {
        if (!text.empty())
            text += piece.joint == JointSight::Corner ? '|' : piece.joint == JointSight::Tangent ? '~' : '-';
        text += piece.isArc ? 'A' : 'L';
    }
    return text;
}

const struct Row {
    const char* expected;
    std::vector<Stretch> plan;
} kRows[] = {
    {"L", {{0.3, 200, 0}}},
    {"A", {{0.3, 100, 0.02}}},
    {"L|L", {{0, 100, 0}, {kRight, 70, 0}}},
    {"L|L", {{0, 100, 0}, {0.7, 90, 0}}},
    {"L|L|L|L", {{1, 100, 0}, {kRight, 60, 0}, {-2.2, 80, 0}, {1.2, 60, 0}}},
    {"L~A", {{0.4, 100, 0}, {0, 80, -0.02}}},
    {"A~L", {{0.4, 100, 0.02}, {0, 80, 0}}},
    {"A|L", {{0.4, 100, 0.02}, {1.2, 80, 0}}},
    {"L~A~L", {{0.4, 100, 0}, {0, 80, -0.02}, {0, 90, 0}}},
    {"L~A~L|L", {{0.02, 100, 0}, {0, kRight * 50, 0.02}, {0, 90, 0}, {1.3, 70, 0}}},
    {"A~A", {{0.4, 90, 0.022}, {0, 90, -0.022}}},
};

TEST(ChainSearch, TellsLinesArcsAndTheirJointsEitherWay) {
    for (const Row& row : kRows) {
        InkPath path = Draw(InkPlan(row.plan));
        EXPECT_EQ(Describe(Briefest(PricedPath(path))), row.expected);
        std::reverse(path.pts.begin(), path.pts.end());
        const std::string back = Describe(Briefest(PricedPath(path)));
        EXPECT_EQ(std::string(back.rbegin(), back.rend()), row.expected) << "backwards";
    }
}

// Root mean square distance of the path from the chain.
double SpreadOf(const PricedPath& ink, const Chain& chain) {
    return std::sqrt(MeanSqFrom(ink, chain));
}

TEST(TangentRun, AxesDoNotPullARunOffItsInk) {
    RandomPlans plans(3);
    int turned = 0;
    for (int i = 0; i < 150; ++i) {
        SCOPED_TRACE(i);
        const InkPath path = MakeInkPath(plans.Smooth().Draw(plans.Rng(), plans.CarefulHand()).ink.samples);
        const PricedPath ink(path);
        const Chain found = SearchChains(ink).front();
        Chain free = found;
        FitTangentRuns(ink, 0.0, free);
        Chain snapped = found;
        FitTangentRuns(ink, 0.15, snapped);
        EXPECT_LE(SpreadOf(ink, snapped), SpreadOf(ink, free) + 0.03);
        turned += std::fabs(SpreadOf(ink, snapped) - SpreadOf(ink, free)) > 1e-6 ? 1 : 0;
    }
    EXPECT_GT(turned, 5);
}

// Whatever a fit makes of the joints, the chain costs what its pieces and joints do, and a smooth joint costs
// what its kind does.
TEST(TangentRun, TheChainsAccountsBalance) {
    RandomPlans plans(5);
    int bends = 0;
    for (int i = 0; i < 90; ++i) {
        SCOPED_TRACE(i);
        const InkPlan plan = i % 3 == 0 ? plans.Mixed() : i % 3 == 1 ? plans.Smooth() : plans.Polyline();
        const InkPath path = MakeInkPath(plan.Draw(plans.Rng(), plans.AnyHand()).ink.samples);
        const PricedPath ink(path);
        for (Chain& chain : SearchChains(ink)) {
            FitTangentRuns(ink, 0.0, chain);
            double price = 2.0 * kNumberPrice;
            double sumSq = 0.0;
            for (const ChainPiece& piece : chain.pieces) {
                price += piece.price + piece.jointPrice;
                sumSq += piece.sumSq;
                if (piece.joint == JointSight::Bend) {
                    EXPECT_GT(piece.jointPrice, 0.0);
                    ++bends;
                }
            }
            EXPECT_NEAR(chain.price, price, 1e-9);
            EXPECT_NEAR(chain.sumSq, sumSq, 1e-9);
        }
    }
    EXPECT_GT(bends, 20);
}

// A corner in place of any tangent joint, with the run that it cuts fitted anew: as good as fitting them all.
TEST(TangentRun, ACornerCutsOneRun) {
    RandomPlans plans(8);
    int cuts = 0;
    for (int i = 0; i < 60; ++i) {
        const InkPlan plan = i % 2 == 0 ? plans.Slot() : plans.Mixed();
        const InkPath path = MakeInkPath(plan.Draw(plans.Rng(), plans.AnyHand()).ink.samples);
        const PricedPath ink(path);
        Chain chain = SearchChains(ink).front();
        if (i % 2 == 0)
            chain = CloseChain(ink, chain);
        Chain fitted = chain;
        FitTangentRuns(ink, 0.0, fitted);
        for (std::size_t k = 1; k < chain.pieces.size(); ++k) {
            if (chain.pieces[k].joint != JointSight::Tangent)
                continue;
            SCOPED_TRACE(testing::Message() << i << ", " << k);
            Chain cut = fitted;
            CutTangentRun(ink, chain, k, cut);
            Chain whole = WithCorner(ink, chain, k);
            FitTangentRuns(ink, 0.0, whole);
            EXPECT_NEAR(cut.price, whole.price, 1e-9);
            EXPECT_NEAR(cut.sumSq, whole.sumSq, 1e-9);
            EXPECT_EQ(Describe(cut), Describe(whole));
            ++cuts;
        }
    }
    EXPECT_GT(cuts, 60);
}

TEST(TangentRun, LinesNearAnAxisLieAlongIt) {
    const InkPath path = Draw(InkPlan({{0.03, 100, 0}, {0, (kRight - 0.06) * 50, 0.02}, {0, 90, 0}}));
    const PricedPath ink(path);
    Chain chain = Briefest(ink);
    ASSERT_EQ(Describe(chain), "L~A~L");
    FitTangentRuns(ink, 0.05, chain);
    EXPECT_NEAR(chain.pieces[0].line.direction.y, 0.0, 1e-12);
    EXPECT_NEAR(chain.pieces[2].line.direction.x, 0.0, 1e-12);
}

// A free form all round stands for the whole stroke wherever the path begins, and begins at its corner if
// any.
TEST(ChainSearch, FreeFormsGoOnceRound) {
    std::vector<InkSample> samples;
    for (int i = 0; i < 200; ++i) {
        const double a = 2.0 * std::numbers::pi * i / 200;
        samples.push_back({(5.0 + std::cos(3.0 * a)) * std::cos(a), (5.0 + std::cos(3.0 * a)) * std::sin(a)});
    }
    const InkPath path = BegunAt(MakeInkPath(samples), {}, 30);
    const PricedPath ink(path);
    Chain chain;
    chain.isClosed = true;
    chain.pieces = {{50, 70, true}, {70, 50, true}};
    chain.pieces[1].joint = JointSight::Bend;
    for (const JointSight seam : {JointSight::Bend, JointSight::Corner}) {
        chain.pieces[0].joint = seam;
        const ExactChain exact = MakeExact(ink, chain);
        ASSERT_EQ(exact.pieces.size(), 1U);
        EXPECT_EQ(exact.pieces[0].from, path.At(seam == JointSight::Corner ? 50 : 0));
        InkReading reading;
        AppendChain(path, exact, reading);
        std::vector<Vex::Math::Point2> taken;
        TakeInk(samples, reading.curves[0], taken);
        EXPECT_EQ(taken.size(), samples.size());
    }
    // A line and an arc that both joints see meet in the same place stay two curves.
    chain.pieces = {{0, 10, false}, {10, path.Size() - 1, true}};
    chain.pieces[1].circle.radius = 1.02 * path.At(10).Length();
    chain.pieces[0].line.direction = path.At(10) / path.At(10).Length();
    for (const ExactPiece& piece : MakeExact(ink, chain).pieces)
        EXPECT_GT(piece.from.Distance(piece.to), 0.0);
}

} // namespace
} // namespace Tessera::Geometry
