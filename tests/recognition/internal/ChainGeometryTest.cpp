#include "tessera/recognition/internal/ChainGeometry.h"

#include "tessera/recognition/internal/ChainSearch.h"
#include "tessera/recognition/internal/TangentRun.h"
#include "tests/support/PenPaths.h"
#include "tests/support/SyntheticInk.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

// After the fit neighbours that were seen to touch do: one point on both carriers, one direction there.
TEST(ChainGeometry, TangentPiecesTouchExactly) {
    RandomPlans plans(31);
    int touching = 0;
    for (int i = 0; i < 60; ++i) {
        const InkPath path = MakeInkPath(
            (i % 2 == 0 ? plans.Mixed() : plans.Slot()).Draw(plans.Rng(), plans.CarefulHand()).ink.samples);
        const PricedPath ink(path);
        Chain chain = SearchChains(ink)[kUsualHand];
        FitTangentRuns(ink, i % 3 == 0 ? 0.05 : 0.0, chain);
        const ExactChain exact = MakeExact(ink, chain);
        for (std::size_t k = 1; k < exact.pieces.size() && exact.pieces.size() == chain.pieces.size(); ++k) {
            const ChainPiece& before = chain.pieces[k - 1];
            const ChainPiece& after = chain.pieces[k];
            EXPECT_EQ(exact.pieces[k].from.Distance(exact.pieces[k - 1].to), 0.0);
            if (after.joint != JointSight::Tangent)
                continue;
            ++touching;
            const Point& meet = exact.pieces[k].from;
            const auto normal = [&](const ChainPiece& piece) {
                const Point along = piece.line.direction;
                return piece.isArc ? (meet - piece.circle.centre) / piece.circle.radius
                                   : Point(-along.y, along.x);
            };
            EXPECT_LT(std::fabs(DistanceFrom(before, meet)) + std::fabs(DistanceFrom(after, meet)), 1e-9);
            EXPECT_LT(std::fabs(normal(before).Cross(normal(after))), 1e-9);
        }
        const ExactChain loose = MakeLoose(ink, chain);
        EXPECT_FALSE(loose.isJoined || loose.isClosed);
        for (const ExactPiece& piece : loose.pieces)
            EXPECT_LT(piece.from.Distance(path.At(piece.first)) + piece.to.Distance(path.At(piece.last)),
                      0.3);
    }
    EXPECT_GT(touching, 60);
}

TEST(ChainGeometry, LinesNearAnAxisAreTurnedOntoIt) {
    const Point start(1, 2);
    const Point end = start + Point(-4.0, 4.0 * std::tan(0.08));
    const struct {
        const char* name;
        double angle;
        bool isStartPlaced, isEndPlaced;
        Point fixed; ///< stays where it is
    } rows[] = {
        {"about its middle", 0.081, false, false, 0.5 * (start + end)},
        {"about its start", 0.081, true, false, start},
        {"about its end", 0.081, false, true, end},
        {"too far off", 0.079, false, false, start},
        {"between two places", 0.081, true, true, start},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ExactPiece line{PieceKind::Line, start, end, {}, 0, 0};
        SnapToAxis(row.angle, row.isStartPlaced ? std::optional<Point>(start) : std::nullopt,
                   row.isEndPlaced ? std::optional<Point>(end) : std::nullopt, line);
        const bool isTurned = row.angle > 0.08 && !(row.isStartPlaced && row.isEndPlaced);
        EXPECT_EQ(line.from.y == line.to.y, isTurned);
        EXPECT_NEAR(line.from.Distance(line.to), start.Distance(end), 1e-12);
        const double nearest = std::min({row.fixed.Distance(line.from), row.fixed.Distance(line.to),
                                         row.fixed.Distance(0.5 * (line.from + line.to))});
        EXPECT_LT(nearest, 1e-12);
    }
}

} // namespace
} // namespace Tessera::Geometry
