// Horizontal and vertical dimensions: what they measure, in which frame, and which curves follow an edit.

#include "tests/support/DimensionProbes.h"

using namespace Tessera::Testing;
using DimensionPtr = std::unique_ptr<LengthDimension>;

namespace {

constexpr double kQuarter = std::numbers::pi / 2;

DimensionPtr Make(DimensionType_e type, Line* line, double heightOffset = 10.0) {
    if (type == Horizontal)
        return std::make_unique<HorizontalDimension>(line, heightOffset, 4.0);
    return std::make_unique<VerticalDimension>(line, heightOffset, 4.0);
}

} // namespace

TEST(ProjectedDimension, MeasuredExtentAndTips) {
    const struct {
        const char* name;
        DimensionType_e type;
        Point start, end;
        double rotate, value;
        Point tip1, tip2, foot1, foot2; // font height 4, offset 10
    } rows[] = {
        {"rising", Horizontal, {0, 0}, {30, 40}, 0, 30, {0, 12}, {30, 12}, {0, 1}, {30, 39}},
        {"rising, reversed", Horizontal, {30, 40}, {0, 0}, 0, 30, {30, 12}, {0, 12}, {30, 39}, {0, 1}},
        {"falling", Horizontal, {0, 40}, {30, 0}, 0, 30, {0, 12}, {30, 12}, {0, 39}, {30, 1}},
        {"level", Horizontal, {0, 0}, {30, 0}, 0, 30, {0, 12}, {30, 12}, {0, 1}, {30, 1}},
        {"level, reversed", Horizontal, {30, 0}, {0, 0}, 0, 30, {30, 12}, {0, 12}, {30, 1}, {0, 1}},
        {"end at the tip", Horizontal, {0, 0}, {30, 12.5}, 0, 30, {0, 12}, {30, 12}, {0, 1}, {30, 12}},
        {"rising", Vertical, {0, 0}, {30, 40}, 0, 40, {12, 0}, {12, 40}, {1, 0}, {29, 40}},
        {"falling", Vertical, {0, 40}, {30, 0}, 0, 40, {12, 40}, {12, 0}, {1, 40}, {29, 0}},
        {"upright, downwards", Vertical, {5, 40}, {5, 0}, 0, 40, {17, 40}, {17, 0}, {6, 40}, {6, 0}},
        // The turned axes are (0, 1) and (-1, 0): the end on the right comes first.
        {"quarter turn", Horizontal, {0, 0}, {30, 40}, kQuarter, 40, {42, 0}, {42, 40}, {1, 0}, {31, 40}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.name) + (row.type == Horizontal ? " horizontal" : " vertical"));
        Line line(row.start, row.end);
        const DimensionPtr dim = Make(row.type, &line);
        dim->SetRotateAngle(0.3);
        dim->SetCachedRotateAngle(1.0); // takes the one that is set
        dim->Rotate(row.rotate);
        EXPECT_EQ(dim->GetCachedRotateAngle(), 0.3) << "until the rotation is final";
        EXPECT_NEAR(dim->GetAnnotation(), row.value, 1e-12);
        const Points side1 = DecorationOf(*dim, 1), side2 = DecorationOf(*dim, 2);
        ExpectNear(side1[1], row.tip1);
        ExpectNear(side2[1], row.tip2);
        ExpectNear(side1[2], row.foot1, std::string(row.name) == "end at the tip" ? 1.0 : 1e-9);
        ExpectNear(side2[2], row.foot2, 1e-9);
        EXPECT_EQ(dim->GetTextHeightOffset(), 10.0);
        EXPECT_NEAR(dynamic_cast<ProjectedDimension&>(*dim).ComputeTextHeightOffset(), 10.0, 1e-9);
        EXPECT_EQ(dim->GetLine(), &line) << "the parent, whatever was measured";
        dim->FinalizeRotate();
        EXPECT_EQ(dim->GetCachedRotateAngle(), row.rotate);
    }
}

TEST(ProjectedDimension, EndsInTheirOrderAcrossTheAxis) {
    const struct {
        Point end; // of a line from the origin
        int lower, left;
    } rows[] = {{{3, 4}, 1, 1}, {{-3, 4}, 1, -1},  {{3, -4}, -1, 1}, {{-3, -4}, -1, -1},
                {{5, 0}, 1, 1}, {{-5, 0}, -1, -1}, {{0, 5}, 1, 1},   {{0, -5}, -1, -1}};
    const HorizontalDimension horizontal;
    const VerticalDimension vertical;
    for (const auto& row : rows) {
        const Line line(Point(0, 0), row.end);
        Point a, b;
        int order = 0;
        horizontal.GetYorderPoints(&line, a, b, order);
        EXPECT_EQ(order, row.lower) << row.end.x << " " << row.end.y;
        EXPECT_EQ(a, order == 1 ? Point(0, 0) : row.end);
        vertical.GetXorderPoints(&line, a, b, order);
        EXPECT_EQ(order, row.left) << row.end.x << " " << row.end.y;
        EXPECT_EQ(b, order == 1 ? row.end : Point(0, 0));
    }
}

TEST(ProjectedDimension, SquareToTheAxisMeasuresNothing) {
    Line line(Point(3, 0), Point(3, 10)), level(Point(3, 0), Point(13, 0));
    const DimensionPtr dim = Make(Vertical, &line);
    EXPECT_EQ(dim->GetOrientation(), Vector(0, 1));
    ASSERT_TRUE(line.CopyCurveData(&level));
    dim->UpdateDimension();
    EXPECT_EQ(dim->GetAnnotation(), 0.0);
    EXPECT_EQ(dim->GetOrientation(), Vector(1, 0));
    const std::unique_ptr<Line> measured(dim->ComputeTempDimensionLine());
    EXPECT_TRUE(measured->IsZeroLength());
}

TEST(ProjectedDimension, TwoCurves) {
    Line line(Point(0, 0), Point(10, 3));
    Arc circle(Point(25, 30), 2.0), arc(Point(-5, 6), Point(-9, 2), Point(-5, 2));
    const std::unique_ptr<HorizontalDimension> lineArc(
        HorizontalDimension::MakeDimension(&line, &circle, 8.0, 4.0));
    const std::unique_ptr<VerticalDimension> arcs(VerticalDimension::MakeDimension(&circle, &arc, 8.0, 4.0));
    EXPECT_DOUBLE_EQ(lineArc->GetAnnotation(), 15.0) << "from the nearer end to the centre";
    EXPECT_DOUBLE_EQ(arcs->GetAnnotation(), 28.0);
    EXPECT_EQ(HorizontalDimension::MakeDimension(&line, &circle, 1.0, 1.0), lineArc.get());
    EXPECT_EQ(VerticalDimension::MakeDimension(&arc, &circle, 1.0, 1.0), arcs.get()) << "in either order";
    EXPECT_EQ(HorizontalDimension::MakeDimension(&line, nullptr, 1.0, 1.0), nullptr);
    EXPECT_EQ(VerticalDimension::MakeDimension(nullptr, 1.0), nullptr);
    const std::unique_ptr<HorizontalDimension> alone(HorizontalDimension::MakeDimension(&line, 4.0));
    EXPECT_NE(alone.get(), lineArc.get()) << "the line with a partner is another measure";
    EXPECT_EQ(HorizontalDimension::MakeDimension(&line, 9.0), alone.get());
    EXPECT_EQ(line.GetNumDimensions(), 2);
    EXPECT_EQ(circle.GetNumDimensions(), 2);

    const struct {
        int side;
        CurveList changing;
    } rows[] = {{1, {&line}}, {2, {&circle}}, {0, {&line, &circle}}, {-1, {}}};
    for (const auto& row : rows) {
        const CurveList changing = UpdateCurvesOf(*lineArc, row.side);
        EXPECT_EQ(changing, row.changing) << row.side;
    }
    TypeValue(*lineArc, 0, 20.0);
    EXPECT_NEAR(lineArc->GetAnnotation(), 20.0, 1e-12);
    ExpectNear(line.GetEnd(), {7.5, 3});
    ExpectNear(circle.GetCenter(), {27.5, 30});
    TypeValue(*arcs, 2, 30.0);
    ExpectNear(arc.GetCenter(), {-5, 0});
    ExpectNear(arc.GetStart(), {-5, 4});
    TypeValue(*arcs, 1, 31.0);
    ExpectNear(circle.GetCenter(), {27.5, 31});
    ExpectNear(arc.GetCenter(), {-5, 0});
}

TEST(ProjectedDimension, TypedExtentsMoveAlongTheAxisOnly) {
    const struct {
        DimensionType_e type;
        double rotate;
        int side;
        double value;
        Point start, end; // of a line from (30, 40) to (0, 0)
    } rows[] = {
        {Horizontal, 0, 2, 50, {30, 40}, {-20, 0}}, {Horizontal, 0, 1, 50, {50, 40}, {0, 0}},
        {Horizontal, 0, 0, 10, {20, 40}, {10, 0}},  {Vertical, 0, 1, 50, {30, 50}, {0, 0}},
        {Vertical, 0, 0, 60, {30, 50}, {0, -10}},   {Vertical, kQuarter, 2, 40, {30, 40}, {-10, 0}},
        {Horizontal, 0, 2, -1, {30, 40}, {0, 0}},
    };
    for (const auto& row : rows) {
        Line line(Point(30, 40), Point(0, 0));
        const DimensionPtr dim = Make(row.type, &line);
        dim->Rotate(row.rotate);
        TypeValue(*dim, row.side, row.value);
        ExpectNear(line.GetStart(), row.start);
        ExpectNear(line.GetEnd(), row.end);
        EXPECT_NEAR(dim->GetAnnotation(), row.value > 0 ? row.value : 30.0, 1e-12);
    }
}

TEST(ProjectedDimension, GeometryIsAddedAndReplaced) {
    Line line(Point(0, 0), Point(10, 3)), other(Point(1, 1), Point(5, 5));
    Arc arc(Point(25, 30), 2.0), moved(Point(35, 30), 2.0);
    HorizontalDimension dim;
    EXPECT_DOUBLE_EQ(dim.GetTextHeightOffset(), 15.0);
    dim.SetIsFinalized(true);
    ChangeLog log;
    for (Curve* curve :
         {static_cast<Curve*>(&line), static_cast<Curve*>(&other), static_cast<Curve*>(&arc)}) {
        dim.AddGeometry(curve);
        EXPECT_EQ(log.Take(dim), 1) << "whether it is taken or not";
    }
    dim.AddGeometry(nullptr);
    dim.AddArc(nullptr);
    EXPECT_EQ(log.Take(dim), 0);
    EXPECT_EQ(dim.GetLine(), &line) << "the first one stays";
    HorizontalDimension twin;
    twin.SetIsFinalized(true);
    twin.AddArc(&arc);
    EXPECT_EQ(log.Take(twin), 1);
    for (const HorizontalDimension* each : {&dim, &twin}) {
        std::vector<Arc*> arcs;
        each->GetArcs(arcs);
        EXPECT_EQ(arcs, std::vector<Arc*>{&arc});
    }
    EXPECT_EQ(line.GetNumDimensions(), 0) << "adding does not attach";
    arc.AddDimension(&dim);
    line.AddDimension(&dim);
    dim.ReplaceCurve(&moved);
    dim.UpdateDimension();
    EXPECT_DOUBLE_EQ(dim.GetAnnotation(), 25.0);
    EXPECT_FALSE(arc.HasDimension(&dim));
    EXPECT_TRUE(moved.HasDimension(&dim));
    dim.ReplaceCurve(nullptr);
    const CurveList parents = ParentsOf(dim);
    EXPECT_EQ(parents, (CurveList{&line, &moved}));
}
