#include "tessera/recognition/internal/RulesRuns.h"

#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tests/support/PenPaths.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

struct Drawn {
    explicit Drawn(const std::vector<Point>& pts)
        : path(MakeInkPath(Trembling(pts, 0.3, 4).samples)), ink(path) {}
    InkPath path;
    PricedPath ink;
};

// Two halves of an ink, each taken for a line (L), an arc (A) or an elliptic one (E); kept ones (K) are no
// business of the prices.
TEST(RulesRuns, NeighboursThatAreOneCurveAreMerged) {
    const std::vector<Point> straight = PointsOf(Straight({0, 0}, {200, 80}));
    const std::vector<Point> bent = PointsOf(Round({0, 0}, 100, 100, 0.0, 0.45 * kTurn));
    const std::vector<Point> corner = Joined({Straight({0, 0}, {100, 0}), Straight({100, 0}, {150, 86})});
    const std::vector<Point> wave =
        Joined({Round({0, 0}, 60, 60, 0.5 * kTurn, 0.0), Round({120, 0}, 60, 60, 0.5 * kTurn, kTurn)});
    const Path round = Round({0, 0}, 100, 45, 0.25 * kTurn, 0.75 * kTurn);
    const std::vector<Point> oblong = PointsOf(round);
    const std::vector<Point> hook = Joined({Straight({200, 45}, {0, 45}), round});
    double centre[2] = {0.0, 0.0};
    double radii[2] = {2.0, 1.0};
    InterpretedCurve elliptic;
    elliptic.curve = std::make_unique<Ellipse>(centre, radii, 0.0, 0.0, 2.0);
    const struct {
        const char* name;
        const std::vector<Point>& pts;
        const char* taken;
        const char* merged; ///< if kinds may change
        const char* stays;  ///< if not
    } rows[] = {
        {"straight", straight, "LL", "L", "L"},
        {"bent", bent, "AA", "A", "A"},
        {"corner", corner, "LL", "LL", "LL"},
        {"wave", wave, "AA", "AA", "AA"},
        {"bent, of two kinds", bent, "LA", "A", "LA"},
        {"kept", straight, "KL", "KL", "KL"},
        {"oblong", oblong, "EE", "E", "E"},
        {"oblong, of two kinds", oblong, "AE", "E", "AE"},
        {"oblong, begun straight", hook, "LE", "LE", "LE"},
    };
    for (const auto& row : rows)
        for (const bool mayChangeKinds : {true, false}) {
            const Drawn drawn(row.pts);
            std::vector<RulesRun> runs(2);
            runs[0].last = runs[1].first = drawn.path.Size() / 2;
            runs[1].last = drawn.path.Size() - 1;
            for (std::size_t i = 0; i < 2; ++i) {
                runs[i].isArc = row.taken[i] == 'A';
                runs[i].own = row.taken[i] == 'E' ? &elliptic : nullptr;
                runs[i].isKept = row.taken[i] == 'K' || row.taken[i] == 'E';
            }
            MergeNeighbours(drawn.ink, 0.2, mayChangeKinds, runs);
            std::string kinds;
            for (const RulesRun& run : runs)
                kinds += run.own != nullptr ? 'E' : run.isKept ? 'K' : run.isArc ? 'A' : 'L';
            EXPECT_EQ(kinds, mayChangeKinds ? row.merged : row.stays) << row.name;
            EXPECT_TRUE(runs.front().first == 0 && runs.back().last == drawn.path.Size() - 1);
        }
}

TEST(RulesRuns, ALineTakesThePlaceOfAnArcThatItDescribesAsWell) {
    const struct {
        double bow, tolerance;
        bool isArc;
    } rows[] = {{0.1, 0.3, false}, {0.1, 0.1, true}, {0.3, 0.9, true}};
    for (const auto& row : rows) {
        const Drawn drawn(PointsOf(Bowed({0, 0}, {200, 60}, row.bow)));
        std::vector<RulesRun> runs(1);
        runs[0].last = drawn.path.Size() - 1;
        runs[0].isArc = true;
        SimplifyKinds(drawn.ink, row.tolerance, runs);
        EXPECT_EQ(runs[0].isArc, row.isArc) << row.bow << ' ' << row.tolerance;
    }
}

TEST(RulesRuns, NeighboursShareTheInkOfACrumb) {
    const Drawn drawn(PointsOf(Straight({0, 0}, {200, 0}), 0.0, 1.0, 101));
    const auto runs = [&](int last, int first) {
        std::vector<InterpretedCurve> curves(2);
        for (InterpretedCurve& made : curves)
            made.curve = std::make_unique<Line>(Point(0, 0), Point(200, 0));
        curves[0].lastSample = last;
        curves[1].firstSample = first;
        curves[1].lastSample = 100;
        return RunsOf(drawn.ink, {&curves[0], &curves[1]});
    };
    ASSERT_EQ(runs(40, 46).size(), 2U);
    EXPECT_EQ(runs(40, 46)[0].last, runs(40, 46)[1].first);
    EXPECT_EQ(runs(40, 46)[0].last, runs(43, 43)[0].last);
    EXPECT_EQ(runs(40, 46)[1].last, drawn.path.Size() - 1);
    EXPECT_TRUE(runs(1, 1).empty());
}

} // namespace
} // namespace Tessera::Geometry
