#include "tessera/recognition/internal/ChainGeometry.h"

#include "tests/support/Test.h"

namespace Tessera::Geometry {
namespace {

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
