#include "tessera/recognition/internal/InkPath.h"

#include "tests/support/SyntheticInk.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

std::vector<InkSample> SomeInk() {
    RandomPlans plans(3);
    return plans.Mixed().Draw(plans.Rng(), {}).ink.samples;
}

TEST(InkPath, PointsAreEvenlySpacedAndOfUnitSize) {
    const InkPath path = MakeInkPath(SomeInk());
    ASSERT_GE(path.Size(), 48);
    double secondMoment = 0.0;
    for (const Point& p : path.pts)
        secondMoment += p.Dot(p) / path.Size();
    EXPECT_NEAR(secondMoment, 1.0, 0.05);
    for (std::size_t i = 1; i < path.pts.size(); ++i) {
        const double chord = path.pts[i].Distance(path.pts[i - 1]);
        EXPECT_LE(chord, path.step * (1.0 + 1e-9));
        EXPECT_GE(chord, 0.6 * path.step); // only a corner between two points shortens the chord
    }
}

TEST(InkPath, SizePlaceAndSamplingDoNotMatter) {
    const std::vector<InkSample> ink = SomeInk();
    const InkPath path = MakeInkPath(ink);
    std::vector<InkSample> moved;
    const auto add = [&](double x, double y) { moved.push_back({1e6 + 250.0 * x, 250.0 * y - 1e6, 0.0}); };
    for (std::size_t i = 0; i < ink.size(); ++i) {
        add(ink[i].x, ink[i].y);
        if (i % 3 == 0)
            moved.push_back(moved.back());    // the pen rests
        if (i % 5 == 0 && i + 1 < ink.size()) // a sample more on the same segment
            add(0.5 * (ink[i].x + ink[i + 1].x), 0.5 * (ink[i].y + ink[i + 1].y));
    }
    const InkPath other = MakeInkPath(moved);
    ASSERT_EQ(other.pts.size(), path.pts.size());
    for (std::size_t i = 0; i < path.pts.size(); ++i)
        EXPECT_LT(path.pts[i].Distance(other.pts[i]), 1e-7);
}

// Sides of stairs take up as much of the frame as those of a square, whatever their number; the frame still
// maps back to the ink. Few sides keep the whole drawing as the unit, jitter tells nothing.
TEST(InkPath, UnitFitsThePiecesOfLongDrawings) {
    std::mt19937 rng(5);
    const auto stairs = [&](int sides, const Hand& hand) {
        std::vector<Stretch> stretches{{0.4, 100.0, 0.0}};
        while (static_cast<int>(stretches.size()) < sides)
            stretches.push_back({stretches.size() % 2 == 0 ? 1.5707963 : -1.5707963, 100.0, 0.0});
        return InkPlan(std::move(stretches), false, 2.5).Draw(rng, hand).ink.samples;
    };
    Hand rough;
    rough.tremor = 0.1;
    const struct {
        int sides;
        Hand hand;
        bool isFitted;
    } rows[] = {{3, {}, false}, {7, {}, false}, {14, {}, true}, {150, {}, true}, {40, rough, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sides);
        const std::vector<InkSample> ink = stairs(row.sides, row.hand);
        const InkPath whole = MakeInkPath(ink);
        const InkPath fitted = FitToPieces(ink, whole);
        if (!row.isFitted) {
            EXPECT_EQ(fitted.Size(), whole.Size());
            EXPECT_EQ(fitted.scale, whole.scale);
            continue;
        }
        EXPECT_NEAR(100.0 / fitted.scale, std::sqrt(3.0), 0.25);
        EXPECT_NEAR(fitted.step, 0.07, 0.01);
        for (std::size_t i = 0; i < fitted.pts.size(); i += 7) {
            const auto k = static_cast<std::size_t>(fitted.source[i]);
            const Point p = fitted.ToModel(fitted.pts[i]);
            EXPECT_LT(p.Distance({ink[k].x, ink[k].y}), 10.0);
        }
    }
}

TEST(InkPath, PaceIsTheSpeedAgainstTheUsualOne) {
    std::vector<InkSample> ink; // along a line; the middle third takes four times as long
    double t = 0.0;
    for (int i = 0; i <= 90; ++i) {
        ink.push_back({2.0 * i, 1.0 * i, t});
        t += i >= 30 && i < 60 ? 4.0 : 1.0;
    }
    const InkPath path = MakeInkPath(ink);
    const PenPace even = PaceAlong(path, ink);
    for (const std::vector<double>& pace : {even.wide, even.close}) {
        ASSERT_EQ(pace.size(), path.pts.size());
        EXPECT_NEAR(pace.front(), 1.0, 1e-9);
        EXPECT_NEAR(pace[pace.size() / 2], 0.25, 1e-9);
        EXPECT_NEAR(pace.back(), 1.0, 1e-9);
    }
    for (InkSample& s : ink)
        s.t = 3.0 * std::floor(s.t / 3.0); // longer than the pen takes from a point to the next but one
    const PenPace coarse = PaceAlong(path, ink);
    EXPECT_EQ(coarse.wide.size(), path.pts.size());
    EXPECT_EQ(coarse.close, coarse.wide);
    for (InkSample& s : ink)
        s.t = 5.0;
    EXPECT_TRUE(PaceAlong(path, ink).wide.empty());
}

// A slow hand that trembles draws few pieces with many small turns.
TEST(InkPath, TremorMakesNoPieces) {
    RandomPlans plans(23);
    Hand slow;
    slow.rateHz = 240.0;
    slow.speed = 0.8;
    slow.tremor = 0.002;
    for (int i = 0; i < 300; ++i) {
        const std::vector<InkSample> ink = plans.Mixed().Draw(plans.Rng(), slow).ink.samples;
        const InkPath fitted = FitToPieces(ink, MakeInkPath(ink));
        EXPECT_EQ(fitted.closingLength, fitted.length) << i; // in no units of pieces, but for a narrow one's
    }
}

TEST(InkPath, NothingToReadGivesNoPoints) {
    EXPECT_TRUE(MakeInkPath({}).pts.empty());
    EXPECT_TRUE(MakeInkPath(std::vector<InkSample>(7, {3.0, 4.0, 0.0})).pts.empty());
}

} // namespace
} // namespace Tessera::Geometry
