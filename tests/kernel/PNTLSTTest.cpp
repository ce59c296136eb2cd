#include "tessera/kernel/PNTLST.h"

#include "tessera/kernel/MTX4.h"
#include "tests/support/SegmentDistance.h"

using Tessera::Testing::SegmentDistance;
using Vex::Math::Point3;
using Vex::Math::TransformMatrix;

namespace {

std::vector<Point3> Thin(std::vector<Point3> pts, int window, double tol) {
    pts.resize(PNTLST_thin(static_cast<int>(pts.size()), pts.data(), window, tol, pts.data()));
    return pts;
}

TEST(PNTLST, MeasuresAndTransforms) {
    std::vector<Point3> pts = {{1e6, 0, 0}, {1e6 + 3, 4, 0}, {1e6 + 3, 4, -12}};
    Point3 lo{7, 7, 7}, hi = lo, mean = lo;
    EXPECT_TRUE(PNTLST_ask_extent(0, pts.data(), &lo, &hi) == 0 &&
                PNTLST_ask_centroid(0, pts.data(), &mean) == 0);
    EXPECT_EQ(lo.x + mean.x, 14);
    EXPECT_TRUE(PNTLST_ask_extent(3, pts.data(), &lo, &hi) == 1 && lo.z == -12 && hi.y == 4);
    EXPECT_TRUE(PNTLST_ask_centroid(3, pts.data(), &mean) == 1 && mean.x == 1e6 + 2);
    EXPECT_TRUE(PNTLST_ask_length(3, pts.data()) == 17 && PNTLST_ask_length(1, pts.data()) == 0);
    TransformMatrix scale;
    MTX4_make_scale(&pts[0], 0.5, &scale);
    PNTLST_transform(3, pts.data(), &scale);
    EXPECT_NEAR(PNTLST_ask_length(3, pts.data()), 8.5, 1e-9);
}

TEST(PNTLST, ThinningKeepsEndsExtremesAndTurns) {
    std::vector<Point3> line, thereAndBack;
    for (int i = 0; i <= 10; ++i)
        line.push_back({1.0 * i, 0.5 * i, 0.1 * i});
    for (int i = 0; i <= 10; ++i)
        thereAndBack.push_back({i <= 6 ? 1.0 * i : 12.0 - i, 0, 0});
    const struct {
        const char* name;
        std::vector<Point3> points;
        int window;
        double tol;
        std::size_t kept;
    } rows[] = {{"ends of a line", line, 100, 0.0, 2},
                {"every second one", line, 3, 0.1, 6},
                {"turning point", thereAndBack, 100, 0.1, 3},
                {"turning points inside the extent",
                 {{0, 0, 0}, {10, 0, 0}, {-5, 0, 0}, {3, 0, 0}, {-20, 0, 0}},
                 9,
                 0.0,
                 5},
                {"nothing", {}, 5, 1, 0},
                {"one", {{1, 1, 1}}, 5, 1, 1},
                {"both ends, though equal", {{1, 1, 1}, {1, 1, 1}}, 5, 1, 2},
                {"the bump is the highest point", {{0, 0, 0}, {1, 0.5, 0}, {2, 0, 0}}, 5, 0.6, 3}};
    for (const auto& row : rows)
        EXPECT_EQ(Thin(row.points, row.window, row.tol).size(), row.kept) << row.name;
    EXPECT_TRUE(Thin(line, 3, 0.1)[1].z == 0.2 && Thin(thereAndBack, 100, 0.1)[1].x == 6);
}

TEST(PNTLST, EveryDroppedPointLiesWithinTheTolerance) {
    std::mt19937 rng(41);
    std::normal_distribution<double> noise(0.0, 1.0);
    for (int trial = 0; trial < 40; ++trial)
        for (const double tol : {0.01, 0.3, 3.0})
            for (const int window : {2, 7, 1000}) {
                SCOPED_TRACE(testing::Message() << trial << " " << tol << " " << window);
                std::vector<Point3> pts;
                double x = 0, y = 0, heading = 0;
                for (int i = 0; i < 300; ++i) {
                    heading += 0.2 * noise(rng);
                    x += std::cos(heading) + 0.02 * trial * noise(rng);
                    y += std::sin(heading) + 0.02 * trial * noise(rng);
                    pts.push_back({x, y, 1.0 * i}); // z tells which point this is
                }
                const std::vector<Point3> kept = Thin(pts, window, tol);
                ASSERT_TRUE(kept.front().z == 0 && kept.back().z == 299);
                for (std::size_t k = 1; k < kept.size(); ++k) {
                    const int from = static_cast<int>(kept[k - 1].z), to = static_cast<int>(kept[k].z);
                    ASSERT_TRUE(from < to && to - from < window);
                    for (int i = from + 1; i < to; ++i)
                        EXPECT_LE(SegmentDistance(pts[i], kept[k - 1], kept[k]),
                                  tol * std::sqrt(2.0) + 1e-12);
                }
                const std::size_t most = window == 2 ? 300 : 299;
                EXPECT_LE(kept.size(), tol == 3.0 && window == 1000 ? 150u : most);
            }
}

} // namespace
