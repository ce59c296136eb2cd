// Value edits and drags of angular dimensions.
#include "tests/support/DimensionProbes.h"

using namespace Tessera::Testing;

namespace {

double AngleOf(const Point& p) {
    return Arc::ComputeAngleFromPoint(p, kCentre) * kDeg;
}

} // namespace

TEST(AngularEdit, ValueThatADragGives) {
    const struct {
        double angle;
        int side;
        double pick; // from the start of the sector
        double expected;
    } rows[] = {
        {60, 2, 70, 60 + std::atan(std::sin(10 / kDeg)) * kDeg},
        {60, 2, 40, 60 - std::atan(std::sin(20 / kDeg)) * kDeg},
        {60, 1, -30, 60 + std::atan(0.5) * kDeg},
        {60, 1, 30, 60 - std::atan(0.5) * kDeg},
        {60, 2, 60, 60},
        {60, 2, 240, 60},   // straight across: the sine is 0
        {60, 2, 150, 105},  // square to it: arctan 1
        {60, 0, 150, 60},   // the text
        {60, 3, 150, 60},   //
        {40, 2, -50, 40},   // would be -5
        {140, 2, 230, 140}, // would be 185
        {140, 2, 180, 140 + std::atan(std::sin(40 / kDeg)) * kDeg},
    };
    for (const auto& row : rows)
        for (const double at : {0.0, 135.0, -160.0}) {
            SCOPED_TRACE(std::to_string(row.angle) + " " + std::to_string(row.pick));
            const Corner corner(at, row.angle);
            EXPECT_NEAR(corner.dim.ComputeNewValue(FromCentre(33, at + row.pick), row.side), row.expected,
                        1e-9);
            EXPECT_EQ(corner.dim.ComputeNewValue(kCentre, row.side), corner.dim.GetAnnotation());
        }
}

// Between 0 and 180 degrees; what is no angle, or no side, moves nothing.
TEST(AngularEdit, TypedValuesTurnTheLines) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double value :
         {1e-3, 30.0, 90.0, 141.25, 179.9, 9e-11, 179.99999999995, 0.0, -30.0, 250.0, nan})
        for (const int side : {-1, 0, 1, 2, 3}) {
            SCOPED_TRACE(std::to_string(value) + " side " + std::to_string(side));
            Corner corner(165, 70);
            AngularDimension& dim = corner.dim;
            dim.SetIsFinalized(true);
            const CurveList all = {&corner.first, &corner.second}, curves = UpdateCurvesOf(dim, side);
            EXPECT_EQ(curves, side == 0   ? all
                              : side == 1 ? CurveList{all[0]}
                              : side == 2 ? CurveList{all[1]}
                                          : CurveList{});
            ChangeLog log;
            TypeValue(dim, side, value);
            const bool isTaken = value > 1e-4 && value < 179.95 && !curves.empty();
            const double growth = isTaken ? value - 70 : 0.0;
            EXPECT_NEAR(dim.GetAnnotation(), 70 + growth, 1e-9);
            const double start = side == 1 ? 165 - growth : side == 0 ? 165 - growth / 2 : 165;
            EXPECT_NEAR(std::remainder(AngleOf(corner.first.GetEnd()) - start, 360), 0, 1e-9);
            EXPECT_NEAR(std::remainder(AngleOf(corner.second.GetStart()) - start - 70 - growth, 360), 0,
                        1e-9);
            ExpectNear(corner.first.GetStart(), kCentre);
            ExpectNear(corner.second.GetEnd(), kCentre);
            EXPECT_NEAR(corner.first.Length(), 50, 1e-9);
            std::size_t reports = 0;
            for (const auto& entry : log.entries)
                reports += entry.object == all[0] || entry.object == all[1] ? 1 : 0;
            EXPECT_EQ(reports, isTaken ? curves.size() : 0U) << "lines report themselves";
            dim.UpdateDimension(); // the value was taken once
            EXPECT_NEAR(dim.GetAnnotation(), 70 + growth, 1e-9);
        }
}

TEST(AngularEdit, TypedValuesMeasureMovedLines) {
    Corner corner(0, 40);
    Line moved(FromCentre(0, 0), FromCentre(50, 15));
    ASSERT_TRUE(corner.first.CopyCurveData(&moved));
    TypeValue(corner.dim, 2, 60.0);
    EXPECT_NEAR(corner.dim.GetAnnotation(), 60.0, 1e-9);
    EXPECT_NEAR(AngleOf(corner.first.GetEnd()), 15.0, 1e-9);
}

TEST(AngularEdit, TheTextFollowsThePointer) {
    std::mt19937 rng(4711);
    std::uniform_real_distribution<double> at(-60, 60);
    for (int trial = 0; trial < 200; ++trial) {
        SCOPED_TRACE(trial);
        Corner corner(3.0 * at(rng), 20 + std::fabs(at(rng)) * 2);
        AngularDimension& dim = corner.dim;
        const double value = dim.GetAnnotation();
        const Line* first = dim.GetLine(0);
        Points path = {TextMiddle(dim)};
        for (int i = 0; i < 6; ++i) {
            path.push_back(FromCentre(5 + std::fabs(at(rng)), 3 * at(rng)));
            Drag(dim, {path[i], path[i + 1]});
            ExpectNear(TextMiddle(dim), path[i + 1], 1e-8);
            EXPECT_NEAR(dim.GetAnnotation(), value, 1e-9);
            EXPECT_EQ(dim.GetLine(0), first);
            const Arc& arc = *dim.GetDimensionArc();
            EXPECT_NEAR(arc.GetRadius(), path[i + 1].Distance(kCentre), 1e-9);
            EXPECT_NEAR(dim.GetAnnotCenterDistOffset(),
                        std::fabs(dim.GetAnnotCenterParamOffset()) * arc.GetRadius(), 1e-9);
            EXPECT_NEAR(dim.GetDecoEndDistance(), dim.ComputeDecoEndDistance(dim.GetParam()), 1e-12);
            ExpectNear(first->GetStart().AffineCombine(dim.GetLineParam(1), first->GetDirection()),
                       arc.GetStart(), 1e-8);
            const Points points = DecorationOf(dim, 1);
            dim.UpdateDimension();
            ExpectSamePoints(DecorationOf(dim, 1), points, 1e-8, "an update changes nothing");
        }
        Drag(dim, {path.back(), path.front()});
        ExpectNear(TextMiddle(dim), path.front(), 1e-8);
        ExpectNear(DecorationOf(dim, 2)[1], FromCentre(20, AngleOf(dim.GetDimensionArc()->GetEnd())), 1e-8);
    }
}

TEST(AngularEdit, TextSnapsToTheMiddleOnApproachOnly) {
    // Along the arc from the middle: start, steps, where the text ends up. The radius is 20.
    const struct {
        double start;
        std::vector<double> steps;
        double end;
    } rows[] = {{5, {-4.5}, 0},  {5, {-3.5}, 1.5},          {5, {-5.9}, 0},
                {0, {0.5}, 0.5}, {0, {0.5, 0.4, 0.4}, 1.3}, {-3, {1, 1.1, 0.3}, 0.3}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.start);
        Corner corner(150, 80);
        const auto drag = [&](double step, double snap) {
            const double from = corner.dim.GetAnnotCenterParamOffset() * 20;
            Drag(corner.dim,
                 {FromCentre(20, 190 + from / 20 * kDeg), FromCentre(20, 190 + (from + step) / 20 * kDeg)},
                 snap);
        };
        drag(row.start, 0.0);
        for (const double step : row.steps)
            drag(step, 1.0);
        EXPECT_NEAR(corner.dim.GetAnnotCenterParamOffset() * 20, row.end, 1e-9);
        EXPECT_EQ(corner.dim.GetParam() == corner.dim.GetDimensionArc()->GetMidParam(), row.end == 0.0);
    }
}

TEST(AngularEdit, LinesCanBeExchanged) {
    Corner corner(0, 50);
    Line other(FromCentre(0, 0), FromCentre(30, 80));
    corner.dim.ReplaceCurve(&other); // by kind: in place of the first
    EXPECT_EQ(corner.dim.GetLine(0), &other);
    EXPECT_FALSE(corner.first.HasDimension(&corner.dim));
    EXPECT_TRUE(other.HasDimension(&corner.dim));
    corner.dim.UpdateDimension();
    EXPECT_NEAR(corner.dim.GetAnnotation(), 30.0, 1e-9);
    AngularDimension read;
    for (Line* line : {&other, &other, &corner.second, &corner.first})
        read.AddGeometry(line);
    EXPECT_EQ(read.GetLine(0), &other);
    EXPECT_EQ(read.GetLine(1), &corner.second) << "two places only";
    EXPECT_EQ(read.GetLine(2), nullptr);
    EXPECT_FALSE(other.HasDimension(&read));
}

TEST(AngularEdit, ReflectionsKeepTheTextWhereItWas) {
    Corner corner(10, 70);
    Drag(corner.dim, {TextMiddle(corner.dim), FromCentre(25, 60)});
    double m[3][3] = {{-1, 0, 3}, {0, 1, 2}, {0, 0, 0.5}};
    Point middle = TextMiddle(corner.dim);
    middle.Transform(m);
    corner.first.Transform(m);
    corner.second.Transform(m);
    corner.dim.Transform(m);
    corner.dim.UpdateDimension();
    EXPECT_NEAR(corner.dim.GetAnnotation(), 70.0, 1e-9);
    EXPECT_EQ(corner.dim.GetLine(0), &corner.second);
    ExpectNear(TextMiddle(corner.dim), middle, 1e-8);
}
