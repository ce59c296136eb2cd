// Sectors, decoration and updates of angular dimensions.
#include "tessera/dimension/AngularDimension.h"

#include "tessera/dimension/internal/TempDecoration.h"
#include "tessera/kernel/EQ.h"
#include "tests/support/DimensionProbes.h"
#include "tests/support/SampleCurves.h"

using namespace Tessera::Testing;
using DimPtr = std::unique_ptr<AngularDimension>;

namespace {

/// Where the lines begin and end on their rays, seen from the centre, and what is drawn then.
struct Layout {
    const char* name;
    double from, to, reach;
    double lineEndDeg, foot, extensionEnd,
        base; // of the first side: point 0, points 2 and 3, base of the arrow
};

const Layout kLayouts[] = {{"arrowheads inside", 0, 50, 20, 45 - 0.25 * kDeg, 20, 20, 3},
                           {"arrowheads outside", 0, 50, 6, -kDeg, 6, 6, -3},
                           {"lines too short", 2, 15, 20, 45 - 0.25 * kDeg, 16, 22, 3},
                           {"lines too far out", 30, 60, 20, 45 - 0.25 * kDeg, 29, 18, 3}};

/// Angle of the corner, and how the text in the middle of its arc must stand.
const struct {
    double at, textAngle, heightOffset;
} kOrientations[] = {{0, 315, -2},   {45, 0, -2},  {90, 45, 2},  {135, 90, 2},
                     {180, 315, -2}, {225, 0, -2}, {270, 45, 2}, {315, 90, 2}};

/// Font height 4. The second side is the first one mirrored in the middle of the right angle.
void ExpectDecoration(const AngularDimension& dim, const Layout& layout, double at) {
    const double r = layout.reach;
    const Point tip(r, 0);
    const Points first = {Polar(r, layout.lineEndDeg), tip, {layout.foot, 0},
                          {layout.extensionEnd, 0},    tip, {r - 0.75, layout.base},
                          {r + 0.75, layout.base},     tip, {r - 2, 0}};
    for (const int side : {1, 2}) {
        Points expected;
        for (const Point& p : first) {
            const double turn = std::atan2(p.y, p.x) * kDeg;
            expected.push_back(FromCentre(p.Length(), at + (side == 1 ? turn : 90.0 - turn)));
        }
        ExpectSamePoints(DecorationOf(dim, side), expected, 1e-9, "side " + std::to_string(side));
    }
}

} // namespace

TEST(AngularDimension, DecorationInEightOrientations) {
    for (const Layout& layout : kLayouts)
        for (const auto& o : kOrientations) {
            SCOPED_TRACE(std::string(layout.name) + " at " + std::to_string(o.at));
            const Corner corner(o.at, 90, layout.reach, layout.from, layout.to);
            const AngularDimension& dim = corner.dim;
            EXPECT_NEAR(dim.GetAnnotation(), 90.0, 1e-12);
            EXPECT_DOUBLE_EQ(dim.ComputeAnnotationStringLength(), 6.0) << "two digits and the degree sign";
            EXPECT_NEAR(dim.GetTextAngle(), o.textAngle, 1e-9);
            EXPECT_EQ(dim.GetTextHeightOffset(), o.heightOffset);
            ExpectDecoration(dim, layout, o.at);
            const Point middle = FromCentre(layout.reach, o.at + 45);
            ExpectNear(TextMiddle(dim), middle, 1e-9, "text centred on the arc");
            ExpectNear(dim.GetReferencePoint(), middle);
            EXPECT_EQ(dim.ArrowheadFlipped(), layout.reach == 6);
            EXPECT_EQ(dim.CenterAtLineEnds(), layout.from == 0);
        }
}

TEST(AngularDimension, PicksChooseOneOfFourSectors) {
    const Line level(FromCentre(40, 180), FromCentre(60, 0));
    const Line steep(FromCentre(30, 240), FromCentre(70, 60));
    const struct {
        double pick1, pick2, value;
        bool isSwapped;
    } rows[] = {{0, 60, 60, false}, {180, 60, 120, true}, {180, 240, 60, false}, {0, 240, 120, true}};
    std::vector<DimPtr> made;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pick1);
        const Point p1 = FromCentre(10, row.pick1), p2 = FromCentre(15, row.pick2);
        EXPECT_EQ(AngularDimension::FindDimension(&level, &steep, p1, p2), nullptr);
        made.emplace_back(AngularDimension::MakeDimension(&level, &steep, p1, p2, 9.0, 4.0));
        AngularDimension& dim = *made.back();
        EXPECT_NEAR(dim.GetAnnotation(), row.value, 1e-9);
        EXPECT_EQ(dim.GetLine(0), row.isSwapped ? &steep : &level);
        EXPECT_EQ(dim.GetLine(1), row.isSwapped ? &level : &steep);
        EXPECT_NEAR(dim.GetDimensionArc()->GetRadius(), 10.0, 1e-9) << "the nearer pick";
        EXPECT_EQ(dim.GetOutsideSide(), 0);
        // Found again from elsewhere in the sector, in either order.
        const Point q1 = FromCentre(33, row.pick1), q2 = FromCentre(4, row.pick2);
        EXPECT_EQ(AngularDimension::FindDimension(&level, &steep, q1, q2), &dim);
        EXPECT_EQ(AngularDimension::MakeDimension(&steep, &level, q2, q1, 1.0, 2.0), &dim);
    }
    // A pick where the lines meet stands for the farther end.
    EXPECT_EQ(AngularDimension::FindDimension(&level, &steep, kCentre, kCentre), made[0].get());
    AngularDimension fromCentre(&level, &steep, kCentre, kCentre, 9.0, 4.0);
    EXPECT_NEAR(fromCentre.GetDimensionArc()->GetRadius(), 60.0, 1e-9);
}

TEST(AngularDimension, LinesThatHaveNoAngle) {
    const Line line(Point(0, 0), Point(10, 0)), parallel(Point(0, 5), Point(-10, 5));
    const Line point(Point(1, 1), Point(1, 1));
    const Point p(1, 1);
    for (const auto& [first, second] :
         {std::pair<const Line*, const Line*>{nullptr, &line}, {&line, nullptr}, {&line, &point}})
        EXPECT_EQ(AngularDimension::MakeDimension(first, second, p, p, 9, 4), nullptr);
    EXPECT_EQ(AngularDimension::FindDimension(nullptr, &line, p, p), nullptr);
    for (const Line* second : {&parallel, &line}) {
        const DimPtr dim(AngularDimension::MakeDimension(&line, second, p, p, 9, 4));
        ASSERT_NE(dim, nullptr);
        EXPECT_EQ(dim->GetDimensionArc(), nullptr);
        dim->UpdateDimension();
        EXPECT_FALSE(dim->IsValid() || dim->CenterAtLineEnds());
        EXPECT_EQ(dim->ComputeUpdateSide(p), -1);
    }
}

TEST(AngularDimension, LinesThatBecomeParallelKeepWhatWasDrawn) {
    Corner corner(30, 60);
    const Points points = DecorationOf(corner.dim, 1);
    Line parallel(FromCentre(0, 30) + Point(0, 5), FromCentre(50, 30) + Point(0, 5));
    Line original(corner.second);
    ASSERT_TRUE(corner.second.CopyCurveData(&parallel));
    corner.dim.UpdateDimension();
    EXPECT_FALSE(corner.dim.IsValid());
    EXPECT_FALSE(corner.dim.CanUpdate());
    ASSERT_NE(corner.dim.GetDimensionArc(), nullptr);
    std::vector<DimensionBase*> invalid;
    corner.first.GetInvalidDimensions(invalid);
    EXPECT_EQ(invalid.size(), 1U);
    ASSERT_TRUE(corner.second.CopyCurveData(&original));
    corner.dim.UpdateDimension();
    EXPECT_TRUE(corner.dim.IsValid());
    ExpectSamePoints(DecorationOf(corner.dim, 1), points);
}

TEST(AngularDimension, TextKeepsTheSmallerOfItsTwoOffsets) {
    // Offsets in angle and distance, then the radius; where the text must stand from the middle.
    const struct {
        double paramOffset, distOffset, radius, expected;
    } rows[] = {{0.2, 100, 20, 0.2},   {0.2, 2, 20, 0.1}, {-0.2, 2, 20, -0.1}, {-0.2, -2, 20, -0.1},
                {0.2, 4, 20, 0.2},     {0, 5, 20, 0},     {-1e-11, 0, 20, 0},  {0.3, 0, 20, 0},
                {-0.2, 100, 50, -0.2}, {0.2, 2, 5, 0.2}};
    for (const auto& row : rows) {
        Corner corner(170, 80, row.radius, 0, 90);
        AngularDimension& dim = corner.dim;
        dim.SetAnnotCenterParamOffset(row.paramOffset);
        dim.SetAnnotCenterDistOffset(row.distOffset);
        dim.SetParam(dim.GetParam() + 2e-10); // not centred any more
        dim.UpdateDimension();
        EXPECT_NEAR(dim.GetParam() - dim.GetDimensionArc()->GetMidParam(), row.expected, 1e-12);
        for (const double turns : {-1.0, 0.0, 1.0}) {
            dim.SetParam(dim.GetDimensionArc()->GetMidParam() + turns * 2 * std::numbers::pi);
            dim.UpdateDimension();
            EXPECT_EQ(dim.GetParam(), dim.GetDimensionArc()->GetMidParam()) << "centred text stays so";
        }
    }
}

TEST(AngularDimension, SidesInAllDirections) {
    // Angles from the start of a 60 degree sector: text, pick, side of the pick. The text is 8.6 degrees wide
    // to each side at radius 20 with half a letter of air: (2 + 3) / 20 is 14.3 degrees.
    const struct {
        double text, pick;
        int outsideSide, side;
    } rows[] = {
        {30, 30, 0, 0},  {30, 44, 0, 0},  {30, 45, 0, 2},     {30, 16, 0, 0},     {30, 15, 0, 1},
        {30, 0.5, 0, 1}, {30, 59, 0, 2},  {30, -20, 0, 1},    {30, 80, 0, 2},     {30, 205, 0, 2},
        {30, 215, 0, 1}, {30, 210, 0, 2}, {-40, 10, 1, 2},    {-40, -10, 1, 1},   {-40, -40, 1, 0},
        {-40, 70, 1, 2}, {100, 10, 2, 1}, {100, 80, 2, 2},    {209, 30, 2, 1},    {211, 30, 1, 2},
        {0, 30, 0, 2},   {60, 30, 0, 1},  {-0.001, 30, 1, 2}, {60.001, 30, 2, 1},
    };
    for (const auto& row : rows)
        for (int at = -180; at < 180; at += 45)
            for (const int turns : {-1, 0, 1}) {
                Corner corner(at, 60);
                corner.dim.SetParam((at + row.text + 360.0 * turns) / kDeg);
                SCOPED_TRACE(std::to_string(row.text) + " " + std::to_string(row.pick) + " at " +
                             std::to_string(at));
                EXPECT_EQ(corner.dim.GetOutsideSide(), row.outsideSide);
                EXPECT_EQ(corner.dim.ComputeUpdateSide(FromCentre(17, at + row.pick)), row.side);
            }
}

TEST(AngularDimension, TipsAreBroughtBack) {
    for (const double to : {50.0, 15.0}) { // with an extension line from 15 on
        Corner corner(0, 90, 20, 0, to);
        Points expected = DecorationOf(corner.dim, 1);
        for (Point& p : corner.dim.GetAngularDimDeco(1)->GetPoints())
            p += Point(3, 1);
        corner.dim.AdjustPoint1s();
        for (const std::size_t i : to < 20 ? std::vector<std::size_t>{0, 2} : std::vector<std::size_t>{0})
            expected[i] += Point(3, 1);
        ExpectSamePoints(DecorationOf(corner.dim, 1), expected, 1e-12);
    }
    const double t = EQ_ask_length_tolerance();
    EXPECT_TRUE(Corner(0, 90, 20, 9.9 * t).dim.CenterAtLineEnds());
    EXPECT_FALSE(Corner(0, 90, 20, 10.1 * t).dim.CenterAtLineEnds());
}

TEST(AngularDimension, DistanceAlongTheArcToTheNearerEnd) {
    const Corner corner(170, 60);
    const double rows[][2] = {{30, 20 * 30 / kDeg}, {50, 20 * 10 / kDeg}, {-5, -20 * 5 / kDeg}};
    for (const auto& row : rows)
        for (const double turn : {-360.0, 0.0})
            EXPECT_NEAR(corner.dim.ComputeDecoEndDistance((170 + row[0] + turn) / kDeg), row[1], 1e-9);
}

TEST(AngularDimension, DrawnFormExtentAndDistance) {
    // Text on the arc, beyond its end, and arrowheads outside.
    const struct {
        double reach, text;
        std::size_t curves;
    } rows[] = {{20, 50, 2}, {20, 130, 2}, {20, -20, 2}, {6, 50, 2}, {6, 160, 2}, {20, 99, 1}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        Corner corner(250, 100, row.reach);
        AngularDimension& dim = corner.dim;
        const double offset = (row.text - 50) / kDeg;
        dim.SetAnnotCenterParamOffset(offset);
        dim.SetAnnotCenterDistOffset(std::fabs(offset) * row.reach);
        if (offset != 0.0)
            dim.SetParam(0.123);
        dim.UpdateDimension();
        const TempDecoration drawn(dim);
        EXPECT_EQ(drawn.curves.size(), row.curves);
        XYBox box;
        ASSERT_TRUE(dim.AskXYBox(box));
        for (int i = 0; i <= 20; ++i)
            EXPECT_TRUE(box.ContainPoint(FromCentre(row.reach, 250 + 5 * i))) << "the arc under the text too";
        std::vector<Line> outlines; // of the text box and of both arrowheads
        for (std::size_t k = 0; k < 4; ++k)
            outlines.emplace_back(drawn.textBox[k], drawn.textBox[(k + 1) % 4]);
        for (std::size_t k = 0; k < 6; ++k)
            outlines.emplace_back(drawn.arrowPoints[k], drawn.arrowPoints[k % 3 == 2 ? k - 2 : k + 1]);
        Points points;
        for (const Curve* curve : drawn.curves)
            for (const Point& p : DensePoints(*curve, 2000)) {
                EXPECT_FALSE(dim.AnnotationSelected(p, -1e-3)) << "nothing runs under the text";
                EXPECT_TRUE(box.ContainPoint(p)) << p.x << " " << p.y;
                points.push_back(p);
            }
        for (const Point& probe : {FromCentre(31, 260), FromCentre(3, 340), FromCentre(25, 120)}) {
            double least = std::numeric_limits<double>::max();
            for (const Line& side : outlines)
                least = std::min(least, side.DistanceBounded(probe));
            for (const Point& p : points)
                least = std::min(least, p.Distance(probe));
            int part = -7;
            EXPECT_NEAR(dim.GetDistanceToPoint(probe, part), least, 1e-3);
        }
    }
}
