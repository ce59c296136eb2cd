// Distances between two curves.
#include "tessera/dimension/LinearDimension.h"

#include "tessera/geometry/Ellipse.h"
#include "tests/support/DimensionProbes.h"
#include "tests/support/SampleCurves.h"

using namespace Tessera::Testing;
using Tessera::Geometry::Ellipse;
using LinearPtr = std::unique_ptr<LinearDimension>;

namespace {

LinearPtr Own(LinearDimension* dim) {
    return LinearPtr(dim);
}

const Point kPick(20, 3);

struct Curves {
    Line a{Point(0, 0), Point(40, 0)}, b{Point(30, 10), Point(0, 10)};
    Arc c{Point(60, 30), Point(50, 40), Point(50, 30)}, d{Point(50, 42), 3.0};
    CurvePtr e = MakeEllipse({70, 5}, 4, 2, 0.3, 0.0, 6.283185307179586);
    CurvePtr f = MakeEllipse({74, 8}, 3, 1, 1.0, 0.5, 4.0);

    const Ellipse* E() const { return static_cast<const Ellipse*>(e.get()); }
    const Ellipse* F() const { return static_cast<const Ellipse*>(f.get()); }
};

struct Pair {
    const char* name;
    char first, second; // members of Curves
    double value;
    Point from, to; // ends of the measured line

    LinearDimension* Ask(const Curves& s) const {
        using L = LinearDimension;
        if (first == 'a')
            return second == 'b'   ? L::MakeDimension(&s.a, &s.b, &kPick, 8, 4)
                   : second == 'c' ? L::MakeDimension(&s.a, &s.c, 8, 4)
                                   : L::MakeDimension(&s.a, s.E(), 8, 4);
        if (first == 'c')
            return second == 'd' ? L::MakeDimension(&s.c, &s.d, 8, 4) : L::MakeDimension(&s.c, s.E(), 8, 4);
        return L::MakeDimension(s.E(), s.F(), 8, 4);
    }
    LinearPtr Make(const Curves& s) const { return Own(Ask(s)); }
};

const Pair kLines = {"lines", 'a', 'b', 10, {20, 0}, {20, 10}};
const Pair kArcs = {"arcs", 'c', 'd', 12, {50, 30}, {50, 42}};
const Pair kPairs[] = {kLines,
                       kArcs,
                       {"line and arc", 'a', 'c', 30, {50, 0}, {50, 30}},
                       {"line and ellipse", 'a', 'e', 5, {70, 0}, {70, 5}},
                       {"arc and ellipse", 'c', 'e', std::hypot(20, 25), {50, 30}, {70, 5}},
                       {"ellipses", 'e', 'f', 5, {70, 5}, {74, 8}}};

} // namespace

TEST(LinearDimension, FeetLieOnTheCurves) {
    Curves curves;
    // Upright text beside the lines: n = (1, 0), tips 8 + 2 to the right of the pick at 20.
    const LinearPtr lines = kLines.Make(curves);
    ExpectNear(DecorationOf(*lines, 1)[1], {30, 0});
    ExpectNear(DecorationOf(*lines, 1)[2], {30, 0}, 1e-9, "the line reaches the tip");
    ExpectNear(DecorationOf(*lines, 2)[2], {30, 10});
    lines->SetTextHeightOffset(18);
    lines->UpdateDimension();
    ExpectNear(DecorationOf(*lines, 1)[2], {40, 0});
    ExpectNear(DecorationOf(*lines, 2)[2], {30, 10}, 1e-9, "from the end of the line on");
    ExpectNear(DecorationOf(*lines, 2)[3], {42, 10});
    const LinearPtr arcs = kArcs.Make(curves);
    ExpectNear(DecorationOf(*arcs, 1)[2], {50, 30});
    ExpectNear(DecorationOf(*arcs, 2)[2], {50, 42});
    Drag(*arcs, {{0, 0}, {4, 1}});
    ExpectNear(DecorationOf(*arcs, 1)[2], {50, 30}, 1e-9, "after a drag too");
    arcs->AdjustDimExtension(Point(50, 41));
    ExpectNear(DecorationOf(*arcs, 2)[2], {50, 41});
}

TEST(LinearDimension, EveryPairIsMeasuredAndATypedDistanceTranslatesTheSide) {
    const struct {
        int side;
        double first, second; // shift of the curves, times the direction of the measured line
    } rows[] = {{1, -1.0, 0.0}, {2, 0.0, 1.0}, {0, -0.5, 0.5}, {-1, 0.0, 0.0}};
    for (const Pair& pair : kPairs)
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(pair.name) + " side " + std::to_string(row.side));
            Curves curves;
            const LinearPtr dim = pair.Make(curves);
            EXPECT_EQ(pair.Ask(curves), dim.get()) << "used again";
            EXPECT_NEAR(dim->GetAnnotation(), pair.value, 1e-12);
            const std::unique_ptr<Line> measured(dim->GetDimensionLine());
            ExpectNear(measured->GetStart(), pair.from);
            ExpectNear(measured->GetEnd(), pair.to);
            const CurveList parents = ParentsOf(*dim);
            const Point first = parents[0]->GetStart(), second = parents[1]->GetStart();
            const double length = parents[1]->Length();
            Vector along(pair.from, pair.to);
            along.Normalize();
            const CurveList changing = UpdateCurvesOf(*dim, row.side);
            EXPECT_EQ(changing.size(), row.side == 0 ? 2U : row.side < 0 ? 0U : 1U);
            TypeValue(*dim, row.side, pair.value + 3.0);
            EXPECT_NEAR(dim->GetAnnotation(), pair.value + (row.side < 0 ? 0.0 : 3.0), 1e-9);
            ExpectNear(parents[0]->GetStart(), first.AffineCombine(3.0 * row.first, along));
            ExpectNear(parents[1]->GetStart(), second.AffineCombine(3.0 * row.second, along));
            EXPECT_NEAR(parents[1]->Length(), length, 1e-9);
        }
}

TEST(LinearDimension, LinesThatAreNotParallelHaveNoDistance) {
    Curves curves;
    const LinearPtr dim = kLines.Make(curves);
    Line turned(Point(30, 10), Point(0, 11));
    curves.b.CopyCurveData(&turned);
    EXPECT_FALSE(dim->IsValid() || dim->CanUpdate());
    TypeValue(*dim, 2, 25.0);
    ExpectNear(curves.b.GetStart(), {30, 10}, 0.0, "nothing moves");
    const Line* none = nullptr;
    EXPECT_EQ(LinearDimension::MakeDimension(&curves.a, none, &kPick, 1, 1), nullptr);
}

TEST(LinearDimension, CoincidentCurvesKeepTheDirection) {
    Arc a(Point(0, 0), 2.0), b(Point(0, 9), 3.0);
    LinearDimension dim(&a, &b, 8.0, 4.0);
    EXPECT_EQ(dim.GetOrientation(), Vector(0, 1));
    b.SetCenter(Point(0, 0));
    dim.UpdateDimension();
    EXPECT_EQ(dim.GetAnnotation(), 0.0);
    EXPECT_EQ(dim.GetOrientation(), Vector(0, 1));
    const CurveList changing = UpdateCurvesOf(dim, 2);
    EXPECT_EQ(changing, CurveList{&a}) << "of equally near ones the first";
    TypeValue(dim, 2, 6.0);
    ExpectNear(b.GetCenter(), {0, 6});
    // Lines that never were apart: the default direction runs along them. Else they part as they stood.
    for (const double apart : {0.0, 5.0})
        for (const double end : {-40.0, 40.0}) {
            Line lower(Point(0, 0), Point(end, 0)), upper(Point(5, apart), Point(35, apart));
            LinearDimension lines(&lower, &upper, nullptr, 8.0, 4.0);
            Line onLower(Point(5, 0), Point(35, 0));
            upper.CopyCurveData(&onLower);
            TypeValue(lines, 2, 7.0);
            EXPECT_DOUBLE_EQ(lines.GetAnnotation(), 7.0);
            EXPECT_DOUBLE_EQ(upper.GetStart().x, 5.0);
            EXPECT_TRUE(apart == 0.0 || upper.GetStart().y == 7.0);
        }
}

TEST(LinearDimension, PickAndParentsCanBeExchanged) {
    Curves curves;
    const LinearPtr dim = kLines.Make(curves);
    EXPECT_DOUBLE_EQ(dim->GetPickPointParam(), 0.5);
    dim->SetPickPointParam(-0.25);
    const std::unique_ptr<Line> beyond(dim->GetDimensionLine());
    ExpectNear(beyond->GetStart(), {-10, 0}, 1e-9, "beyond the end");
    Line replacement(Point(0, -7), Point(5, -7));
    dim->ReplaceCurve(&replacement); // no such identifier: the first line
    dim->UpdateDimension();
    EXPECT_DOUBLE_EQ(dim->GetAnnotation(), 17.0);
    EXPECT_FALSE(curves.a.HasDimension(dim.get()));
    EXPECT_TRUE(replacement.HasDimension(dim.get()));
    dim->ReplaceCurve(&curves.c); // no arc among the parents
    EXPECT_FALSE(curves.c.HasDimension(dim.get()));
    const LinearPtr taker = kArcs.Make(curves);
    for (const LinearDimension* source : {dim.get(), taker.get(), static_cast<LinearDimension*>(nullptr)}) {
        taker->AssignDimension(source);
        ExpectSamePlacement(*taker, *dim, 0.0);
        EXPECT_TRUE(replacement.HasDimension(taker.get()));
        EXPECT_FALSE(curves.c.HasDimension(taker.get()));
    }
    LinearDimension made;
    made.AddGeometry(curves.f.get());
    made.AddGeometry(&curves.c);
    made.AddGeometry(&curves.a);
    made.UpdateDimension();
    EXPECT_NEAR(made.GetAnnotation(), std::hypot(24, 22), 1e-12) << "two places only";
}
