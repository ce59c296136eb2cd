#include "tessera/recognition/internal/InkConnections.h"

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tests/support/PenPaths.h"

namespace Tessera::Geometry {
namespace {

using namespace Testing;

// A stroke from far away that ends at the given place, beside a line and a circle.
std::vector<InkConnection> EndAt(const Point& end, const SketchRecognizerPreferences& preferences,
                                 InkReading& reading, const Point& start = {120, 260}) {
    Line line({0, 0}, {400, 0});
    Arc circle({-300, 300}, 60.0);
    Curve* const earlier[] = {nullptr, &line, &circle};
    reading = InterpretInk(InkOf(PointsOf(Straight(start, end))), preferences, earlier);
    return std::move(reading.connections);
}

// Distances from the end (0, 0), the mid point (200, 0) and the line's inside, just inside and outside the
// snap distance (10) and the closing tolerance (20).
TEST(InkConnections, EndsMeetKeyPointsOrEnds) {
    SketchRecognizerPreferences usual;
    SketchRecognizerPreferences noSnapping = usual;
    noSnapping.SetSnapping(false);
    SketchRecognizerPreferences untidy = usual;
    untidy.SetCurveTidy(false);
    SketchRecognizerPreferences tight = usual;
    tight.SetCloseStrokeTolerances(12.0, 0.125);
    const struct {
        const char* name;
        Point end;
        const SketchRecognizerPreferences* preferences;
        SnapPointType_e type;
    } rows[] = {
        {"at the mid point", {200, 9.5}, &usual, SnapPointType_Mid},
        {"off the mid point", {200, 10.5}, &usual, SnapPointType_None},
        {"near the start", {0, 9.5}, &usual, SnapPointType_Start},
        {"within the closing tolerance", {400, 19.5}, &usual, SnapPointType_End},
        {"beyond it", {0, 20.5}, &usual, SnapPointType_None},
        {"at the centre", {-297, 304}, &usual, SnapPointType_Center},
        {"on the circle", {-300, 239}, &usual, SnapPointType_None},
        {"near the circle's seam", {-228, 300}, &usual, SnapPointType_None},
        {"inside the line", {100, 1}, &usual, SnapPointType_None},
        {"without snapping", {0, 9.5}, &noSnapping, SnapPointType_Start},
        {"without snapping, mid point", {200, 2}, &noSnapping, SnapPointType_None},
        {"untidy, near", {0, 9.5}, &untidy, SnapPointType_Start},
        {"untidy, farther", {0, 19.5}, &untidy, SnapPointType_None},
        {"inside a tighter one", {0, 11.5}, &tight, SnapPointType_Start},
        {"outside a tighter one", {0, 12.5}, &tight, SnapPointType_None},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        InkReading reading;
        const std::vector<InkConnection> found = EndAt(row.end, *row.preferences, reading);
        ASSERT_EQ(found.size(), row.type == SnapPointType_None ? 0U : 1U);
        const InterpretedCurve& made = reading.curves[0];
        const Point end = EndOf(*made.curve, made.Last());
        EXPECT_LT(end.Distance(found.empty() ? row.end : found[0].position), found.empty() ? 12.0 : 1e-9);
        if (found.empty())
            continue;
        EXPECT_EQ(found[0].keyPoint, row.type);
        EXPECT_EQ(found[0].earlier, row.type == SnapPointType_Center ? 2 : 1);
        EXPECT_EQ(found[0].end, made.Last());
    }
}

// A line near an axis is turned onto it about the end that belongs on a key point, if the other end is near
// the axis from there: within a twentieth of the length.
TEST(InkConnections, AJoinedLineNearAnAxisLiesAlongIt) {
    for (const double off : {-15.0, 2.0, 9.0}) {
        InkReading reading;
        const bool isJoined = EndAt({203, 6}, {}, reading, {203 + off, 306}).size() == 1U;
        const Curve& line = *reading.curves[0].curve;
        EXPECT_TRUE(isJoined);
        EXPECT_EQ(line.GetStart().x, line.GetEnd().x) << off;
        EXPECT_LT(line.GetEnd().Distance({200, 0}), 1e-9);
    }
    InkReading tilted;
    EXPECT_EQ(EndAt({203, 6}, {}, tilted, {220, 306}).size(), 1U);
    EXPECT_NEAR(tilted.curves[0].curve->GetStart().x, 220, 1.0);
}

TEST(InkConnections, AShortStrokeKeepsItsShape) {
    InkReading reading;
    EXPECT_TRUE(EndAt({-9, 0}, {}, reading, {-9, 50}).empty()); // a fifth of its length away
    EXPECT_EQ(EndAt({-8, 0}, {}, reading, {-8, 50}).size(), 1U);
}

// Both ends of a curve of any kind move onto ends; the curve stays of its kind.
TEST(InkConnections, CurvesOfEveryKindAreJoined) {
    const struct {
        const char* name;
        Path path;
        InkShape shape;
    } rows[] = {
        {"line", Straight({0, 0}, {220, 150}), InkShape::Line},
        {"arc", Round({100, 100}, 100, 100, 0.1, 3.0), InkShape::Arc},
        {"elliptic arc", Round({100, 100}, 130, 60, 3.3, 0.2), InkShape::EllipticArc},
        {"free form", [](double u) { return Point(220 * u - 110, 0.0166 * std::pow(220 * u - 110, 2)); },
         InkShape::Spline},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Line before(row.path(0.0) + Point(-150, -30), row.path(0.0) + Point(5, 6));
        Line after(row.path(1.0) + Point(-4, 5), row.path(1.0) + Point(200, -100));
        Curve* const earlier[] = {&before, &after};
        const InkReading reading = InterpretInk(InkOf(PointsOf(row.path)), {}, earlier);
        EXPECT_EQ(reading.shape, row.shape);
        ASSERT_EQ(reading.connections.size(), 2U);
        const InterpretedCurve& made = reading.curves[0];
        EXPECT_LT(EndOf(*made.curve, reading.connections[0].end).Distance(before.GetEnd()), 1e-6);
        EXPECT_LT(EndOf(*made.curve, reading.connections[1].end).Distance(after.GetStart()), 1e-6);
        EXPECT_LT(made.maxDeviation, 12.0);
    }
}

} // namespace
} // namespace Tessera::Geometry
