// Placement, decoration, value edits and drags of radial dimensions.
#include "tessera/dimension/RadialDimension.h"

#include "tests/support/DimensionProbes.h"

using namespace Tessera::Testing;
using DimPtr = std::unique_ptr<RadialDimension>;

namespace {

Arc ArcOf(double radius, double startDeg, double endDeg) {
    double centre[3] = {kCentre.x, kCentre.y, 0.0};
    return Arc(centre, radius, startDeg / kDeg, endDeg / kDeg);
}

/// Leader direction, and how text outside the arc must stand: its side of the leader, counter-clockwise
/// positive.
const struct {
    double at, textAngle;
    int side;
} kOrientations[] = {{0, 0, 1},    {45, 45, -1}, {90, 90, -1}, {135, 315, 1},
                     {180, 0, -1}, {225, 45, 1}, {270, 90, 1}, {315, 315, 1}};

} // namespace

TEST(RadialDimension, DecorationInEightOrientations) {
    // Along the leader from the centre, across it counter-clockwise; radius 10, font height 4.
    const struct {
        const char* name;
        double textOffset; // 0: as made
        double textMiddle;
        Points points;
    } layouts[] = {
        {"outside", 0, 17.5, {{20, 0}, {10, 0}, {10, 0}, {13, -0.75}, {13, 0.75}, {10, 0}}},
        {"inside", -10, -2.5, {{0, 0}, {10, 0}, {10, 0}, {7, -0.75}, {7, 0.75}, {10, 0}}},
    };
    for (const auto& layout : layouts)
        for (const auto& o : kOrientations) {
            SCOPED_TRACE(std::string(layout.name) + " at " + std::to_string(o.at));
            Arc arc = ArcOf(10, o.at - 45, o.at + 45);
            RadialDimension dim(&arc, 4.0);
            EXPECT_EQ(dim.GetTextOffset(), 10.0);
            if (layout.textOffset != 0) {
                dim.SetTextOffset(layout.textOffset);
                dim.UpdateDimension();
            }
            const Vector along(kCentre, FromCentre(1, o.at)), perp(-along.y, along.x);
            const auto place = [&](double u, double v) {
                return kCentre.AffineCombine(u, along).AffineCombine(v, perp);
            };
            Points expected;
            for (const Point& p : layout.points)
                expected.push_back(place(p.x, p.y));
            const Points points = DecorationOf(dim, 1);
            ExpectSamePoints(points, expected);
            EXPECT_EQ(dim.GetAnnotation(), 10.0);
            EXPECT_EQ(dim.GetTextWidthOffset(), 5.0) << "two digits and the R";
            EXPECT_EQ(dim.GetTextHeightOffset(), 1.0);
            EXPECT_NEAR(dim.GetTextAngle(), o.textAngle, 1e-9);
            // A quarter letter clear of the leader, heads up.
            const Point middle = place(layout.textMiddle, 3.0 * o.side);
            ExpectNear(TextMiddle(dim), middle);
            ExpectNear(dim.GetReferencePoint(), middle);
            ExpectNear(dim.GetAnnotationMidPoint(), middle);
            Points box;
            dim.GetOrientedTextBox(box);
            ExpectNear(Point(box[1] - box[0]), Polar(5, o.textAngle));
            ExpectNear(Point(box[2] - box[1]), Polar(4, o.textAngle + 90));
            Points outline;
            dim.GetRadialDimDecoPolygon(outline);
            EXPECT_EQ(outline, (Points{points[0], points[1], points[3], points[4], points[1]}));
        }
}

TEST(RadialDimension, RadiusOrDiameter) {
    const struct {
        double sweep, displayed, width;
        bool isRadius;
    } rows[] = {
        {90, 10, 5, true}, {180, 10, 5, true}, {181, 20, 6, false}, {270, 20, 6, false}, {360, 20, 6, false}};
    for (const auto& row : rows) {
        Arc arc = ArcOf(10, 15, 15 + row.sweep);
        const RadialDimension dim(&arc, 4.0);
        EXPECT_EQ(dim.DisplayR(), row.isRadius);
        EXPECT_EQ(dim.GetDisplayedValue(), row.displayed);
        EXPECT_EQ(dim.GetAnnotation(), 10.0);
        EXPECT_EQ(dim.GetAnnotationText(), "10.000000");
        EXPECT_EQ(dim.ComputeAnnotationStringLength(), row.width);
        EXPECT_EQ(dim.DimensionBase::ComputeAnnotationStringLength(), 4.0) << "without the prefix";
        EXPECT_EQ(dim.GetTextWidthOffset(), row.width);
        EXPECT_EQ(static_cast<const DimensionBase&>(dim).GetTextOffset(), 2 * row.width);
        EXPECT_EQ(dim.GetAnnotationOffsetFromDecoEnd(1.5), 2 * row.width - 1.5);
    }
}

// On the arc, or at the nearer end; a coordinate that is not above the tolerance means no pick.
TEST(RadialDimension, PicksOnAndBesideTheArc) {
    const std::pair<Point, double> rows[] = {{kCentre + Polar(60, 40), 40},
                                             {kCentre + Polar(9, 128), 128},
                                             {kCentre + Polar(9, 140), 130},
                                             {kCentre + Polar(60, 7), 10},
                                             {{-5, 3}, 70},
                                             {{3, -5}, 70},
                                             {{0, 50}, 70},
                                             {{2e-9, 50}, 70}};
    for (const auto& [pick, footDeg] : rows) {
        Arc arc = ArcOf(10, 10, 130);
        const RadialDimension dim(&arc, pick, 4.0);
        EXPECT_NEAR(dim.GetRelativeParam(), (footDeg - 10) / 120, 1e-9) << pick.x << " " << pick.y;
        ExpectNear(DecorationOf(dim, 1)[1], FromCentre(10, footDeg));
    }
}

TEST(RadialDimension, ReusedPerArc) {
    Arc arc = ArcOf(10, 0, 90);
    EXPECT_EQ(RadialDimension::MakeDimension(nullptr, 4.0), nullptr);
    EXPECT_EQ(RadialDimension::MakeDimension(nullptr, Point(1, 1), 4.0), nullptr);
    const DimPtr dim(RadialDimension::MakeDimension(&arc, 4.0));
    EXPECT_EQ(RadialDimension::MakeDimension(&arc, 9.0), dim.get());
    EXPECT_EQ(RadialDimension::MakeDimension(&arc, Point(1, 1), 4.0), dim.get());
    EXPECT_EQ(arc.CreateUpdateDimension(Radial, true, 1.0, 2.0), dim.get());
    EXPECT_EQ(arc.GetNumDimensions(), 1);
    Arc twin = ArcOf(5, 0, 90);
    twin.CreateSameDimensions(&arc);
    std::vector<DimensionBase*> made;
    twin.FindDimensions(Radial, made);
    ASSERT_EQ(made.size(), 1U);
    const std::unique_ptr<DimensionBase> owned(made.front());
    EXPECT_EQ(owned->GetAnnotation(), 5.0);
    EXPECT_EQ(owned->GetFontHeight(), 4.0);
}

TEST(RadialDimension, ValueThatADragGives) {
    const struct {
        double radius;
        Point p; // along the leader and across it, from the foot
        double expected;
    } rows[] = {{10, {3, 8}, 13},         {10, {-3, -2}, 7},          {10, {0, 5}, 10},
                {10, {-9.9501, 0}, 10},   {10, {-9.9499, 0}, 0.0501}, {10, {-20, 0}, 10},
                {0.0499, {5, 0}, 0.0499}, {0.06, {5, 0}, 5.06}};
    for (const auto& row : rows)
        for (const double at : {20.0, 200.0}) {
            Arc arc = ArcOf(row.radius, at - 30, at + 30);
            const RadialDimension dim(&arc, 4.0);
            const Vector along(kCentre, FromCentre(1, at));
            const Point p = FromCentre(row.radius, at)
                                .AffineCombine(row.p.x, along)
                                .AffineCombine(row.p.y, Vector(-along.y, along.x));
            for (const int side : {-1, 0, 1, 2})
                EXPECT_NEAR(dim.ComputeNewValue(p, side), row.expected, 1e-9) << row.p.x;
        }
}

TEST(RadialDimension, TypedValues) {
    const double kNan = std::numeric_limits<double>::quiet_NaN();
    const double kInf = std::numeric_limits<double>::infinity();
    const struct {
        double value;
        int side;
        double radius; // afterwards
    } rows[] = {{25, 1, 25}, {0.01, 0, 0.01}, {3e-9, 2, 3e-9}, {2e-9, 1, 10}, {0, 1, 10},
                {-4, 1, 10}, {kNan, 1, 10},   {kInf, 1, 10},   {25, -1, 10},  {25, 3, 10}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        Arc arc = ArcOf(10, 30, 100);
        double m[3][3] = {{0, -1, 5}, {1, 0, 2}, {0, 0, 1}};
        arc.Transform(m); // turned: a typed radius must not turn it back
        const Point centre = arc.GetCenter();
        RadialDimension dim(&arc, 4.0);
        dim.SetIsFinalized(true);
        ChangeLog log;
        TypeValue(dim, row.side, row.value);
        EXPECT_EQ(arc.GetRadius(), row.radius);
        EXPECT_EQ(dim.GetAnnotation(), row.radius);
        ExpectNear(arc.GetStart(), centre + Polar(row.radius, 120));
        ExpectNear(DecorationOf(dim, 1)[1], centre + Polar(row.radius, 155));
        EXPECT_EQ(log.Take(arc), row.radius == 10 ? 0 : 1) << "the arc reports itself";
    }
}

TEST(RadialDimension, SidesAndDistance) {
    Arc arc = ArcOf(10, -45, 45);
    RadialDimension dim(&arc, 4.0);
    // Leader from (10, 0) to (20, 0), text over (15..20, 1..5), arrow base at 13; seen from the centre.
    const struct {
        Point p;
        double distance;
        int part, side;
    } rows[] = {{{17, 3}, 0, 0, 0},       {{15, 1}, 0, 0, 0},     {{17, 7}, 2, 0, 1},
                {{17, 0.25}, 0.25, 1, 1}, {{17, -2}, 2, 1, 1},    {{24, 0}, 4, 1, 1},
                {{8, 0}, 2, 1, 1},        {{13, -1.75}, 1, 1, 1}, {{17, 0.5}, 0.5, 0, 1}};
    for (const auto& row : rows) {
        int part = -7;
        EXPECT_NEAR(dim.GetDistanceToPoint(kCentre + row.p, part), row.distance, 1e-9);
        EXPECT_EQ(part, row.part) << row.p.x << " " << row.p.y;
        EXPECT_EQ(dim.ComputeUpdateSide(kCentre + row.p), row.side) << row.p.x << " " << row.p.y;
    }
    XYBox box;
    ASSERT_TRUE(dim.AskXYBox(box));
    ExpectNear(box.min, kCentre + Point(10, -0.75));
    ExpectNear(box.max, kCentre + Point(20, 0.75));
    const CurveList changed = UpdateCurvesOf(dim, 1);
    EXPECT_EQ(changed, CurveList{&arc});
    dim.SetRelativeParam(1.5);
    dim.UpdateDimension();
    Points points;
    dim.GetRadialDimDecoPoints(points);
    ASSERT_EQ(points.size(), 6U);
    ExpectNear(points[1], arc.GetEnd(), 1e-9, "never beyond the arc");
}

TEST(RadialDimension, TheLeaderFollowsThePointer) {
    // An arc from 150 to 240 degrees, radius 30, leader 40 long at 195; W is 5, so leaders are at least 11.
    // Where the leader's end is dragged to, and the angle and distance from the centre at which it stays.
    const struct {
        double radius, angle, endRadius, endAngle;
    } rows[] = {{50, 200, 50, 200}, {50, 160, 50, 160}, {50, -160, 50, 200},    {55, 250, 55, 240},
                {55, 120, 55, 150}, {33, 200, 41, 200}, {41.5, 200, 41.5, 200}, {28, 200, 19, 200},
                {18, 200, 18, 200}, {2, 235, 2, 235},   {50, 14, 50, 240},      {50, 16, 50, 150}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.radius);
        SCOPED_TRACE(row.angle);
        Arc arc = ArcOf(30, 150, 240);
        RadialDimension dim(&arc, 4.0);
        dim.SetTextOffset(40);
        dim.UpdateDimension();
        // The pointer holds the text anywhere; on the way it visits a place beyond all limits.
        const Point grip(3, -8);
        const Vector shift(FromCentre(70, 195), FromCentre(row.radius, row.angle));
        Drag(dim, {grip, grip + Polar(300, 20), grip.AffineCombine(1.0, shift)});
        ExpectNear(DecorationOf(dim, 1)[0], FromCentre(row.endRadius, row.endAngle), 1e-8);
        EXPECT_NEAR(dim.GetRelativeParam(), (row.endAngle - 150) / 90, 1e-9);
        EXPECT_NEAR(dim.GetTextOffset(), row.endRadius - 30, 1e-9);
        EXPECT_EQ(dim.GetAnnotation(), 30.0);
        Drag(dim, {FromCentre(row.endRadius, row.endAngle), FromCentre(70, 195)});
        ExpectNear(DecorationOf(dim, 1)[0], FromCentre(70, 195), 1e-8, "and back");
    }
}

TEST(RadialDimension, ReflectionsKeepTheTextWhereItWas) {
    Arc arc = ArcOf(10, 0, 120);
    RadialDimension dim(&arc, Point(30, 5), 4.0);
    Point foot = DecorationOf(dim, 1)[1];
    double m[3][3] = {{1, 0, 3}, {0, -1, 2}, {0, 0, 0.5}};
    foot.Transform(m);
    arc.Transform(m);
    dim.Transform(m);
    dim.UpdateDimension();
    EXPECT_NEAR(dim.GetAnnotation(), 20.0, 1e-9);
    ExpectNear(DecorationOf(dim, 1)[1], foot);
    EXPECT_EQ(dim.GetTextOffset(), 20.0);
}
