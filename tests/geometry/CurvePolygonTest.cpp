// Curves against polygons: hand-made traps first, then random polygons against dense sampling.
#include "tessera/core/NumericHelpers.h"
#include "tests/support/SampleCurves.h"

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

namespace {

struct Polygon {
    std::vector<double> xs, ys;

    Polygon(std::initializer_list<Point> points) {
        for (const Point& p : points)
            Add(p);
    }
    void Add(const Point& p) {
        xs.push_back(p.x);
        ys.push_back(p.y);
    }
    int Count() const { return static_cast<int>(xs.size()); }
    bool Holds(Curve& curve) { return curve.IsInPolygon(Count(), xs.data(), ys.data()); }
    bool Crosses(Curve& curve) { return curve.IsCrossPolygon(Count(), xs.data(), ys.data()); }
    bool Holds(const Point& p) {
        return Tessera::Core::PointInPolygon(p.x, p.y, Count(), xs.data(), ys.data());
    }
    std::vector<Point> Border() const {
        std::vector<Point> border;
        for (int i = 0; i <= Count(); ++i)
            border.emplace_back(xs[i % Count()], ys[i % Count()]);
        return border;
    }
};

enum Side { kInside, kOutside, kCrossing };

} // namespace

TEST(CurvePolygon, Traps) {
    const Polygon square = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    const Polygon notch = {{0, 0}, {10, 0}, {10, 10}, {5, 2}, {0, 10}};
    // A spike from below, 2e-7 wide, whose tip ends inside the curves above it.
    const Polygon needle = {{-9, -9}, {4.9999999, -9}, {5, 6},   {5.0000001, -9},
                            {20, -9}, {20, -20},       {-9, -20}};
    // The square with a slit of no width down to its middle.
    const Polygon slit = {{0, 0}, {10, 0}, {10, 10}, {5, 10}, {5, 5}, {5, 10}, {0, 10}};
    const double turn = 2 * std::numbers::pi;
    const struct {
        const char* name;
        const Polygon& polygon;
        CurvePtr curve;
        Side side;
    } rows[] = {
        {"line ending on the border", square, MakeLine({5, 5}, {10, 5}), kCrossing},
        {"line ending just before it", square, MakeLine({5, 5}, {10 - 1e-8, 5}), kInside},
        {"line along the border", square, MakeLine({2, 0}, {4, 0}), kCrossing},
        {"both ends inside, over the notch", notch, MakeLine({1, 5}, {9, 5}), kCrossing},
        {"in the notch", notch, MakeLine({4.9, 8}, {5.1, 8}), kOutside},
        {"arc bulging over an edge", square, std::make_unique<Arc>(Point(8, 9.5), Point(2, 9.5), Point(5, 8)),
         kCrossing},
        {"arc bulging up to just below it", square,
         std::make_unique<Arc>(Point(8, 5), Point(2, 5), Point(5, 5 - 1e-6)), kInside},
        {"circle touching the border from inside", square, MakeCircle({5, 5}, 5.0), kCrossing},
        {"ellipse around the polygon", square, MakeEllipse({5, 5}, 9, 8, 0.3, 0, turn), kOutside},
        {"elliptic arc whose missing part would cross", square, MakeEllipse({5, 9}, 4, 2, 0, 3.2, 6.2),
         kInside},
        {"circle pierced by a needle", needle, MakeCircle({5, 6}, 3.0), kCrossing},
        {"line pierced by a needle", needle, MakeLine({0, 5}, {10, 5}), kCrossing},
        {"line just above its tip", needle, MakeLine({0, 6.001}, {10, 6.001}), kOutside},
        {"ellipse pierced by a needle", needle, MakeEllipse({5, 6}, 6, 3, 0.2, 0, turn), kCrossing},
        {"spline pierced by a needle", needle, MakeSpline(4, {{0, 5}, {3, 4}, {7, 6}, {10, 5}}), kCrossing},
        {"line across a slit", slit, MakeLine({2, 8}, {8, 8}), kCrossing},
        {"line below a slit", slit, MakeLine({2, 4}, {8, 4}), kInside},
        // Comes down, runs along the bottom edge and goes up again: the edge holds none of its ends.
        {"spline along an edge", square, MakeSpline(2, {{2, 4}, {3, 0}, {6, 0}, {7, 4}}), kCrossing},
        {"spline with poles outside only", square, MakeSpline(3, {{1, 5}, {5, 13}, {9, 5}}), kInside},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Polygon polygon = row.polygon;
        EXPECT_EQ(polygon.Holds(*row.curve), row.side == kInside);
        EXPECT_EQ(polygon.Crosses(*row.curve), row.side == kCrossing);
    }
}

TEST(CurvePolygon, RandomPolygonsAgainstSamples) {
    std::mt19937 rng(404);
    std::uniform_real_distribution<double> radius(1.5, 9.0);
    int inside = 0, crossing = 0;
    for (int trial = 0; trial < 400; ++trial) {
        SCOPED_TRACE(trial);
        Polygon polygon = {};
        for (int i = 0; i < 9; ++i) {
            const double r = radius(rng);
            polygon.Add(Point(r * std::cos(i * 0.698), r * std::sin(i * 0.698)));
        }
        const CurvePtr curve = RandomCurve(rng, trial);
        const std::vector<Point> points = DensePoints(*curve, 500), border = polygon.Border();
        bool someIn = false, someOut = false;
        double gap = 1e300;
        for (const Point& p : points) {
            (polygon.Holds(p) ? someIn : someOut) = true;
            gap = std::min(gap, PolylineDistance(border, p));
        }
        if (someIn && someOut) {
            EXPECT_TRUE(polygon.Crosses(*curve));
            EXPECT_FALSE(polygon.Holds(*curve));
            ++crossing;
        } else if (gap > 0.1) { // far enough that no crossing hides between two samples
            EXPECT_FALSE(polygon.Crosses(*curve));
            EXPECT_EQ(polygon.Holds(*curve), someIn);
            inside += someIn;
        }
    }
    EXPECT_GT(inside, 20);
    EXPECT_GT(crossing, 100);
}
