// Placement, decoration and value edits of length dimensions.
#include "tessera/dimension/LengthDimension.h"

#include "tests/support/DimensionProbes.h"

using namespace Tessera::Testing;

namespace {

const double kDiagonal = std::sqrt(0.5);

/// A direction of the line and the frame in which it must be dimensioned.
struct Orientation {
    double angleDeg;
    Vector d, n;
    double textAngleDeg;
    bool isReversed; // the line runs against d
};

const Orientation kOrientations[] = {
    {0, {1, 0}, {0, 1}, 0, false},   {45, {kDiagonal, kDiagonal}, {kDiagonal, -kDiagonal}, 45, false},
    {90, {0, 1}, {1, 0}, 90, false}, {135, {kDiagonal, -kDiagonal}, {kDiagonal, kDiagonal}, 315, true},
    {180, {1, 0}, {0, 1}, 0, true},  {225, {kDiagonal, kDiagonal}, {kDiagonal, -kDiagonal}, 45, true},
    {270, {0, 1}, {1, 0}, 90, true}, {315, {kDiagonal, -kDiagonal}, {kDiagonal, kDiagonal}, 315, false},
};

/// Points of the end that comes first along d, as (along d, along n) for an offset above; font height 4.
struct Layout {
    const char* name;
    double length, heightOffset;
    Points points;
};

const Points kInside = {{45, 12},   {0, 12},    {0, 1},  {0, 14}, {0, 12},
                        {3, 11.25}, {3, 12.75}, {0, 12}, {0, 10}};
const Points kOutside = {{-6, 12},    {0, 12},     {0, 1},  {0, 14}, {0, 12},
                         {-3, 11.25}, {-3, 12.75}, {0, 12}, {0, 10}};
const Layout kLayouts[] = {{"above", 100, 10, kInside},
                           {"below", 100, -10, kInside},
                           {"arrowheads outside, above", 8, 10, kOutside},
                           {"arrowheads outside, below", 8, -10, kOutside}};

const Point kStart(7, -3);

void ExpectDecoration(const LengthDimension& dim, const Layout& layout, const Orientation& o) {
    const Point first = o.isReversed ? kStart.AffineCombine(-layout.length, o.d) : kStart;
    const auto place = [&](const Point& p) { return first.AffineCombine(p.x, o.d).AffineCombine(p.y, o.n); };
    const bool isBelow = layout.heightOffset < 0.0;
    for (const int side : {1, 2}) {
        const bool isFirst = (side == 1) != o.isReversed;
        Points expected = layout.points;
        if (isBelow)
            std::swap(expected[5], expected[6]); // the base corners keep their sides of n
        for (Point& p : expected)
            p = place({isFirst ? p.x : layout.length - p.x, isBelow ? -p.y : p.y});
        ExpectSamePoints(DecorationOf(dim, side), expected, 1e-9, "side " + std::to_string(side));
        EXPECT_EQ(dim.GetLengthDimDeco(side)->GetExtensionStartIndex(), 2);
        EXPECT_EQ(dim.GetLengthDimDeco(side)->GetExtensionEndIndex(), 3);
    }
    ExpectNear(TextMiddle(dim), place({layout.length / 2, isBelow ? -12.0 : 12.0}), 1e-9,
               "text in the break");
}

} // namespace

TEST(LengthDimension, DecorationInEightOrientations) {
    for (const Layout& layout : kLayouts)
        for (const Orientation& o : kOrientations) {
            SCOPED_TRACE(std::string(layout.name) + " at " + std::to_string(o.angleDeg));
            Line line(kStart, kStart + Polar(layout.length, o.angleDeg));
            const LengthDimension dim(&line, layout.heightOffset, 4.0);
            EXPECT_NEAR(dim.GetAnnotation(), layout.length, 1e-12);
            EXPECT_NEAR(dim.GetTextAngle(), o.textAngleDeg, 1e-9);
            EXPECT_EQ(dim.GetOrientation(), o.d);
            EXPECT_EQ(dim.GetTextHeightOffset(), layout.heightOffset) << "the update leaves it alone";
            ExpectDecoration(dim, layout, o);
        }
}

TEST(LengthDimension, TextStaysBetweenTheExtensionLines) {
    auto [line, dim] = Level();
    // Half a text of "100" and half a letter of air, then an arrowhead: 8 from either end.
    const double rows[][2] = {{-3, 0.08}, {0.0799, 0.08}, {0.0801, 0.0801}, {0.9201, 0.92}, {7, 0.92}};
    for (const auto& row : rows) {
        dim.SetRelativeParam(row[0]);
        dim.UpdateDimension();
        EXPECT_DOUBLE_EQ(dim.GetRelativeParam(), row[1]);
        EXPECT_FALSE(dim.FlipArrowhead());
    }
    Line shorter(Point(0, 0), Point(17.99, 0)); // "17.99": 2 x (5 + 2 + 3) do not fit
    LengthDimension tight(&shorter, 10.0, 4.0);
    tight.SetRelativeParam(0.97);
    tight.UpdateDimension();
    EXPECT_TRUE(tight.FlipArrowhead());
    EXPECT_DOUBLE_EQ(tight.GetRelativeParam(), 0.97);
}

TEST(LengthDimension, ArrowheadsTurnExactlyWhenTheTextDoesNotFit) {
    // Two figures are 4 wide: 2 x (2 + 2 + 3) is 14.
    for (const double length : {13.0, 14.0 - 1e-6, 14.0, 15.0}) {
        Line line(Point(0, 0), Point(length, 0));
        EXPECT_EQ(LengthDimension(&line, 10.0, 4.0).FlipArrowhead(), length < 14.0) << length;
    }
}

TEST(LengthDimension, ExtentDrawingAndDistance) {
    auto [line, dim] = Level();
    XYBox box;
    ASSERT_TRUE(dim.AskXYBox(box));
    ExpectNear(box.min, {0, 1});
    ExpectNear(box.max, {100, 14});
    const struct {
        Point p;
        double distance;
        int part;
    } rows[] = {{{50, 12}, 0, 0}, {{50, 10}, 0, 0}, {{50, 9}, 1, 0},     {{20, 13}, 1, 1},
                {{80, 11}, 1, 2}, {{103, 5}, 3, 2}, {{-2, 14}, 2, 1},    {{50, 100}, 86, 0},
                {{0, -1}, 2, 1},  {{98, 12}, 0, 2}, {{53.5, 12}, 0.5, 0}};
    for (const auto& row : rows) {
        int part = -7;
        EXPECT_NEAR(dim.GetDistanceToPoint(row.p, part), row.distance, 1e-12) << row.p.x << " " << row.p.y;
        EXPECT_EQ(part, row.part) << row.p.x << " " << row.p.y;
    }
    Line shorter(Point(0, 0), Point(8, 0));
    int part = -7;
    EXPECT_NEAR(LengthDimension(&shorter, 10.0, 4.0).GetDistanceToPoint(Point(4, 0), part), std::sqrt(17),
                1e-12);
    EXPECT_EQ(part, 2) << "of equally near sides the second";
    Point a, b;
    dim.GetAnnotationBoundingPoints(a, b);
    ExpectNear(a, {47, 12});
    ExpectNear(b, {53, 12});
    ExpectNear(dim.GetReferencePoint(), {50, 12});
    EXPECT_DOUBLE_EQ(dim.ComputeDecoEndDistance(0.25), 25.0);
    EXPECT_NEAR(dim.ComputeDecoEndDistance(1.1), -10.0, 1e-12);
}

TEST(LengthDimension, SidesFollowTheLineNotTheReading) {
    for (const bool isReversed : {false, true}) {
        Line line(Point(isReversed ? 100 : 0, 0), Point(isReversed ? 0 : 100, 0));
        const LengthDimension dim(&line, 10.0, 4.0);
        const int left = isReversed ? 2 : 1, right = 3 - left;
        const struct {
            Point p;
            int side;
        } rows[] = {{{50, 12}, 0},    {{52.99, 12}, 0},  {{53.01, 12}, right}, {{46.9, 12}, left},
                    {{50, 15.01}, 2}, {{-50, 12}, left}, {{150, -40}, right},  {{20, 500}, left}};
        for (const auto& row : rows)
            EXPECT_EQ(dim.ComputeUpdateSide(row.p), row.side) << row.p.x << " " << row.p.y;
        EXPECT_DOUBLE_EQ(dim.ComputeNewValue(Point(110, 30), right), 110);
        EXPECT_DOUBLE_EQ(dim.ComputeNewValue(Point(30, -9), right), 30);
        EXPECT_DOUBLE_EQ(dim.ComputeNewValue(Point(-1, 12), right), 100) << "behind the fixed end";
        EXPECT_DOUBLE_EQ(dim.ComputeNewValue(Point(-10, 0), left), 110);
        EXPECT_DOUBLE_EQ(dim.ComputeNewValue(Point(-10, 0), 0), 100);
        EXPECT_DOUBLE_EQ(dim.ComputeNewValue(Point(-10, 0), 3), 100);
    }
}

TEST(LengthDimension, TypedValuesMoveTheChosenSide) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const struct {
        int side;
        double value;
        Point start, end; // of a line from (0, 0) to (6, 8)
    } rows[] = {
        {2, 15, {0, 0}, {9, 12}}, {1, 15, {-3, -4}, {6, 8}},   {0, 20, {-3, -4}, {9, 12}},
        {2, 5, {0, 0}, {3, 4}},   {1, 5, {3, 4}, {6, 8}},      {0, 5, {1.5, 2}, {4.5, 6}},
        {-1, 15, {0, 0}, {6, 8}}, {3, 15, {0, 0}, {6, 8}},     {2, 0, {0, 0}, {6, 8}},
        {2, -5, {0, 0}, {6, 8}},  {2, 2.5e-9, {0, 0}, {6, 8}}, {2, nan, {0, 0}, {6, 8}},
        {0, inf, {0, 0}, {6, 8}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.side) + ": " + std::to_string(row.value));
        Line line(Point(0, 0), Point(6, 8));
        LengthDimension dim(&line, 10.0, 4.0);
        const CurveList changing = UpdateCurvesOf(dim, row.side);
        EXPECT_EQ(changing, CurveList{&line});
        TypeValue(dim, row.side, row.value);
        ExpectNear(line.GetStart(), row.start, 1e-12);
        ExpectNear(line.GetEnd(), row.end, 1e-12);
        EXPECT_NEAR(dim.GetAnnotation(), row.start.Distance(row.end), 1e-12);
        ExpectNear(line.GetCachedBasePoint(), (row.start + row.end) / 2.0, 1e-12);
    }
}

TEST(LengthDimension, ALineWithoutLengthIsHarmless) {
    Line line(Point(5, 5), Point(5, 5));
    LengthDimension dim(&line, 10.0, 4.0);
    EXPECT_EQ(dim.GetAnnotation(), 0.0);
    EXPECT_EQ(dim.GetRelativeParam(), 0.5);
    for (const int side : {1, 2})
        for (const Point& p : DecorationOf(dim, side))
            EXPECT_TRUE(std::isfinite(p.x) && std::isfinite(p.y));
    EXPECT_LT(DecorationOf(dim, 1)[0].x, 5.0) << "as if along the reading direction";
    EXPECT_GT(DecorationOf(dim, 2)[0].x, 5.0);
    EXPECT_NE(dim.ComputeUpdateSide(Point(9, 9)), -1);
    EXPECT_EQ(dim.ComputeNewValue(Point(9, 9), 2), 0.0);
    Drag(dim, {{0, 0}, {3, 3}});
    TypeValue(dim, 2, 7.0);
    ExpectNear(line.GetEnd(), {12, 5});
}

TEST(LengthDimension, ALineIsAddedInPlaceOfTheOther) {
    Line line(Point(0, 0), Point(10, 0)), other(Point(0, 0), Point(0, 7));
    const Arc arc(Point(0, 0), 3.0);
    LengthDimension dim(&line, 4.0);
    dim.AddGeometry(&other);
    dim.AddGeometry(const_cast<Arc*>(&arc));
    dim.AddGeometry(nullptr);
    EXPECT_EQ(dim.GetLine(), &other);
    EXPECT_FALSE(other.HasDimension(&dim)) << "adding does not attach";
}

TEST(LengthDimension, SinglePointsAreBroughtBack) {
    auto [line, dim] = Level();
    Points& points = dim.GetLengthDimDeco(1)->GetPoints();
    const Points before = points;
    for (Point& p : points)
        p += Point(3, 1);
    points[0] = before[0];
    points[2] = Point(99, 99);
    dim.AdjustPoint3(&line, line.GetStart());
    ExpectNear(points[2], Point(0, 0).AffineCombine(1.0, Vector(3, 13) / std::hypot(3, 13)));
    dim.AdjustPoint1s();
    dim.AdjustPoint4(&line, line.GetStart());
    for (std::size_t i = 0; i < points.size(); ++i)
        ExpectNear(points[i], before[i] + Point(0, i == 0 || i == 2 ? 0 : 1), 1e-12, std::to_string(i));
    // Base corners outside: the arrowhead is turned back over, the line end with it.
    points[5] = Point(-3, 12.25);
    points[6] = Point(-3, 13.75);
    points[0] = Point(-6, 13);
    dim.AdjustArrowheadFlip(1);
    ExpectNear(points[0], {45, 13});
    ExpectNear(points[5], {3, 12.25});
    ExpectNear(points[6], {3, 13.75});
}

TEST(LengthDimension, AnEmptyRecordIsNoDecoration) {
    auto [line, dim] = Level();
    Points outline;
    dim.GetLengthDimDecoPolygon(1, outline);
    ASSERT_EQ(outline.size(), 5U);
    ExpectNear(outline[2], {3, 11.25});
    auto empty = std::make_unique<LengthDimDeco>();
    EXPECT_EQ(empty->GetExtensionStartIndex(), -1);
    EXPECT_EQ(empty->GetExtensionEndIndex(), -1);
    dim.SetLengthDimDeco(3, empty.get()); // no such side: not taken
    dim.SetLengthDimDeco(2, empty.release());
    EXPECT_EQ(dim.ComputeUpdateSide(Point(50, 12)), -1);
    EXPECT_EQ(dim.ComputeNewValue(Point(110, 0), 2), 100.0);
}
