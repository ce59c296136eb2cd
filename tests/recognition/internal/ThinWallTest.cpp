#include "tessera/recognition/internal/ThinWall.h"

#include "tessera/geometry/Arc.h"
#include "tests/support/PenPaths.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

/// Along the path and back, `gap` apart: on the way forth half of it to the left.
std::vector<Point> ForthAndBack(const Path& path, double gap) {
    const Path back = Bulging(path, 0.0, 1.0, -0.5 * gap, 0.0);
    return Joined({Bulging(path, 0.0, 1.0, 0.5 * gap, 0.0), [&](double u) { return back(1.0 - u); }});
}

InkReading Read(const std::vector<Point>& pts, bool asSides) {
    SketchRecognizerPreferences preferences;
    preferences.SetThinWallRecognition(asSides);
    return InterpretInk(InkOf(pts), preferences);
}

TEST(ThinWall, CentreLineAndSides) {
    struct Row {
        const char* name;
        Path path;
        std::size_t pieces;
        CurveType_e kind;
    };
    const Row rows[] = {
        {"line", Straight({10, 20}, {230, 90}), 1, CurveType_Line},
        {"arc", Round({0, 0}, 110, 110, 0.4, 2.7), 1, CurveType_Arc},
        {"arc, clockwise", Round({0, 0}, 110, 110, 2.7, 0.4), 1, CurveType_Arc},
        {"elliptic arc", Round({0, 0}, 160, 70, 0.2, 3.0), 1, CurveType_Ellipse},
        {"hook", [](double u) { return u < 0.5 ? Point(300 * u, 0) : Point(150, 150 - 300 * u); }, 2,
         CurveType_Line},
    };
    constexpr double kGap = 9.0;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::vector<Point> ink = ForthAndBack(row.path, kGap);
        const InkReading centre = Read(ink, false);
        ASSERT_EQ(centre.curves.size(), row.pieces);
        const InkReading wall = Read(ink, true);
        EXPECT_EQ(wall.shape, InkShape::ThinWall);
        ASSERT_EQ(wall.curves.size(), 2 * row.pieces);
        const auto nearest = [&](const Point& p, std::size_t first, std::size_t count,
                                 const InkReading& reading) {
            double least = 1e9;
            for (std::size_t i = first; i < first + count; ++i)
                least = std::min(least, reading.curves[i].curve->DistanceBounded(p));
            return least;
        };
        for (const double u : {0.1, 0.3, 0.45, 0.6, 0.9}) {
            const Point middle = row.path(u);
            EXPECT_LT(nearest(middle, 0, row.pieces, centre), 0.2 * kGap);
            for (const std::size_t side : {std::size_t{0}, row.pieces}) {
                const double off = side == 0 ? 0.5 * kGap : -0.5 * kGap;
                const Point p = Bulging(row.path, 0.0, 1.0, off, 0.0)(u);
                EXPECT_LT(nearest(p, side, row.pieces, wall), 0.2 * kGap);
            }
        }
        for (std::size_t i = 0; i < row.pieces; ++i) {
            EXPECT_EQ(centre.curves[i].curve->GetType(), row.kind);
            EXPECT_NE(wall.curves[i].isReversed, wall.curves[2 * row.pieces - 1 - i].isReversed);
            EXPECT_LE(wall.curves[i].lastSample, wall.curves[row.pieces].firstSample + 2);
        }
    }
}

TEST(ThinWall, WhatIsNone) {
    const Path out = Straight({0, 0}, {200, 0});
    const struct {
        const char* name;
        Path forth, back;
        bool isWall;
    } rows[] = {
        {"too wide at its open end", out, Straight({200, 0}, {2, 26}), false},
        {"just narrow enough", out, Straight({200, 0}, {2, 22}), true},
        {"comes back too short a way", out, Straight({200, 0}, {45, 3}), false},
        {"comes back most of the way", out, Straight({200, 0}, {35, 3}), true},
        {"corner", out, Straight({200, 0}, {150, 180}), false},
        {"lens", Round({0, 0}, 100, 30, kTurn / 2, 0.0), Round({0, 0}, 100, 30, 0.0, -kTurn / 2), false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Read(Joined({row.forth, row.back}), true).shape == InkShape::ThinWall, row.isWall)
            << row.name;
}

TEST(ThinWall, NoArcParallelBeyondItsCentre) {
    const Arc arc(Point(50, 0), Point(0, 50), Point(0, 0));
    EXPECT_EQ(ParallelCurve(arc, 51.0), nullptr);
    const auto inner = ParallelCurve(arc, 20.0);
    ASSERT_NE(inner, nullptr);
    EXPECT_LT(inner->GetEnd().Distance({0, 30}), 1e-9);
}

} // namespace
} // namespace Tessera::Geometry
