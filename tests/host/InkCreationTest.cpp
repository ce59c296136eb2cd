// The steps behind the ink entry, on readings made by hand: curves of every kind become the same elements,
// with the constraints between them, and an element that was drawn over keeps its identifier.
#include <cmath>
#include <memory>
#include <numbers>

#include <gtest/gtest.h>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/Spline.h"
#include "tessera/host/internal/InkConversion.h"
#include "tessera/host/internal/InkingCnstrHelper.h"
#include "tests/support/HostProbe.h"

namespace {

using namespace Tessera::Geometry;
using namespace Tessera::Host;
using namespace Tessera::Testing;

constexpr double kPi = std::numbers::pi;

std::unique_ptr<Ellipse> MakeEllipse(double cx, double cy, double a, double b, double turn, double from,
                                     double to) {
    double centre[2] = {cx, cy};
    double radii[2] = {a, b};
    return std::make_unique<Ellipse>(centre, radii, turn, from, to);
}

std::unique_ptr<Spline> MakeSpline(bool isRational) {
    double knots[] = {0, 0, 0, 0, 0.3, 1, 1, 1, 1};
    const double weight = isRational ? 2.0 : 1.0;
    double poles[][4] = {{0, 0, 0, 1}, {10, 40, 0, weight}, {50, 60, 0, 1}, {90, -20, 0, 1}, {120, 5, 0, 1}};
    return std::make_unique<Spline>(5, 4, 0, knots, poles);
}

template <class... Curves>
InkReading Reading(InkShape shape, Curves... curves) {
    InkReading reading;
    reading.shape = shape;
    ((reading.curves.emplace_back().curve = std::move(curves)), ...);
    return reading;
}

/// Adds one curve to a reading.
void Add(InkReading& reading, std::unique_ptr<Curve> curve) {
    reading.curves.emplace_back().curve = std::move(curve);
}

InkScene SceneOf(const Document& document, std::uint32_t relations = 0) {
    InkScene scene;
    scene.document = document.get();
    scene.toleranceZone = 5.0;
    scene.relations = relations;
    return scene;
}

TEST(InkCreation, ElementsAreTheCurves) {
    InkReading reading;
    reading.shape = InkShape::Pieces;
    Add(reading, std::make_unique<Line>(Point(1, 2), Point(30, -4)));
    Add(reading, std::make_unique<Arc>(Point(80, 0), Point(30, 50), Point(30, 0)));
    Add(reading, std::make_unique<Arc>(Point(-30, 50), Point(-80, 0), Point(-30, 0)));
    Add(reading, std::make_unique<Arc>(Point(7, 8), 20.0));
    Add(reading, MakeEllipse(5, 5, 40, 20, 0.4, 0, 2 * kPi));
    Add(reading, MakeEllipse(5, 5, 40, 20, 0.4, 0.5, 0.5 + kPi)); // ends opposite: three points would not do
    Add(reading, MakeSpline(false));
    Add(reading, MakeSpline(true));
    Add(reading, std::make_unique<Line>(Point(3, 3), Point(3, 3))); // nothing
    const Document document = NewDocument();
    InkOutcome outcome;
    DocumentChange change(document.get());
    ASSERT_EQ(CreateReading(SceneOf(document), reading, change, outcome), 0);
    ASSERT_EQ(change.Commit(), 0);
    ASSERT_EQ(outcome.elements.size(), 8u);
    EXPECT_EQ(outcome.outcome, kHostInkCurves);
    EXPECT_TRUE(outcome.constraints.empty());
    for (std::size_t i = 0; i < outcome.elements.size(); ++i) {
        SCOPED_TRACE(i);
        const Curve& curve = *reading.curves[i].curve;
        double limits[2];
        curve.AskRange(limits);
        for (int k = 0; k <= 16; ++k) {
            tagGPosition2d p{};
            ASSERT_EQ(TesseraHost_EvaluateElement(document.get(), outcome.elements[i], k / 16.0, &p), 0);
            EXPECT_LT(curve.DistanceBounded({p.x, p.y}), 1e-9);
            const Point q = curve.GetPointAtParameter(limits[0] + k / 16.0 * (limits[1] - limits[0]), true);
            const Point r = curve.GetPointAtParameter(limits[1] - k / 16.0 * (limits[1] - limits[0]), true);
            EXPECT_LT(std::min(q.Distance({p.x, p.y}), r.Distance({p.x, p.y})), 1e-9);
        }
    }
}

// Arcs may run the other way in the document: the joint names the element's own end.
TEST(InkCreation, JointsNameTheEndsThatMeet) {
    for (const double x : {0.0, 500.0, -500.0}) {
        for (const bool isMirrored : {false, true}) {
            SCOPED_TRACE(testing::Message() << x << isMirrored);
            const double s = isMirrored ? -1 : 1;
            InkReading reading;
            reading.shape = InkShape::Chain;
            Add(reading, std::make_unique<Line>(Point(x, 0), Point(x + s * 100, 0.5)));
            const Point foot(x + s * 100.5, 0);
            const Point top(x + s * 100.5, 80);
            Add(reading, isMirrored ? std::make_unique<Arc>(top, foot, Point(foot.x, 40))
                                    : std::make_unique<Arc>(foot, top, Point(foot.x, 40)));
            const Document document = NewDocument();
            InkOutcome outcome;
            DocumentChange change(document.get());
            ASSERT_EQ(CreateReading(SceneOf(document, ~0u), reading, change, outcome), 0);
            ASSERT_EQ(change.Commit(), 0);
            bool isJoined = false;
            bool isTangent = false;
            for (const HostConstraintId id : outcome.constraints) {
                double error = 1;
                ASSERT_EQ(TesseraHost_AskConstraintError(document.get(), id, &error), 0);
                EXPECT_LT(error, 1e-7);
            }
            for (int i = 0; i < TesseraHost_AskConstraintCount(document.get()); ++i) {
                HostConstraint2d c{};
                ASSERT_EQ(TesseraHost_AskConstraintAt(document.get(), i, &c), 0);
                isJoined = isJoined || c.kind == kHostConstraintCoincident;
                isTangent = isTangent || c.kind == kHostConstraintTangent;
            }
            EXPECT_TRUE(isJoined);
            EXPECT_TRUE(isTangent);
        }
    }
}

TEST(InkCreation, ARectangleIsOneOnlyWhileItsLinesAreSquare) {
    for (const double off : {0.0, 1e-3}) {
        InkReading reading;
        reading.shape = InkShape::Rectangle;
        const Point corners[] = {{0, 0}, {80, 0}, {80 + off, 50}, {0, 50}};
        for (int i = 0; i < 4; ++i) {
            // The third side was drawn against its curve's direction.
            const Point& from = corners[i];
            const Point& to = corners[(i + 1) % 4];
            Add(reading, i == 2 ? std::make_unique<Line>(to, from) : std::make_unique<Line>(from, to));
            reading.curves.back().isReversed = i == 2;
        }
        const Document document = NewDocument();
        InkOutcome outcome;
        DocumentChange change(document.get());
        ASSERT_EQ(CreateReading(SceneOf(document), reading, change, outcome), 0);
        EXPECT_EQ(outcome.outcome, off == 0.0 ? kHostInkRectangle : kHostInkCurves);
        ASSERT_EQ(outcome.elements.size(), 4u);
        HostElement2d third{};
        ASSERT_EQ(TesseraHost_AskElement(document.get(), outcome.elements[2], &third), 0);
        EXPECT_NEAR(third.points[0].x, off == 0.0 ? 80 : 0, 0.01);
    }
}

TEST(InkCreation, AChangeThatIsNotCommittedLeavesNothing) {
    const Document document = NewDocument();
    {
        InkReading reading = Reading(InkShape::Line, std::make_unique<Line>(Point(0, 0), Point(90, 0.2)));
        InkOutcome outcome;
        DocumentChange change(document.get());
        ASSERT_EQ(CreateReading(SceneOf(document, ~0u), reading, change, outcome), 0);
        EXPECT_EQ(outcome.constraints.size(), 1u);
        EXPECT_EQ(TesseraHost_AskElementCount(document.get()), 1);
    }
    EXPECT_EQ(TesseraHost_AskElementCount(document.get()), 0);
    EXPECT_EQ(TesseraHost_AskConstraintCount(document.get()), 0);
}

TEST(InkCreation, ARetracedElementKeepsItsIdentifierAndDirection) {
    const double r = std::sqrt(0.5) * 100;
    for (const bool isClockwise : {false, true}) {
        for (const bool isKept : {false, true}) {
            const Document document = NewDocument();
            const tagGPosition2d a{100, 0};
            const tagGPosition2d b{0, 100};
            const HostElement2d drawn = isClockwise ? ArcElement(b, a, {r, r}) : ArcElement(a, b, {r, r});
            const HostElementId id = AddTo(document, drawn);
            InkScene scene = SceneOf(document);
            HostElement2d element{};
            ASSERT_EQ(TesseraHost_AskElement(document.get(), id, &element), 0);
            scene.neighbours.push_back(CurveOf(element));
            scene.elements.emplace_back(element);
            InkReading reading =
                Reading(InkShape::Retrace, std::make_unique<Arc>(Point(110, 0), Point(0, 110), Point(0, 0)));
            reading.retraced = 0;
            {
                InkOutcome outcome;
                DocumentChange change(document.get());
                ASSERT_EQ(RetraceElement(scene, reading, change, outcome), 0);
                EXPECT_EQ(outcome.outcome, kHostInkRetrace);
                ASSERT_EQ(outcome.elements, std::vector<HostElementId>{id});
                if (isKept) {
                    ASSERT_EQ(change.Commit(), 0);
                }
            }
            ASSERT_EQ(TesseraHost_AskElement(document.get(), id, &element), 0);
            const double size = isKept ? 110 : 100;
            EXPECT_NEAR(element.points[isClockwise ? 1 : 0].x, size, 1e-9);
            EXPECT_NEAR(element.points[isClockwise ? 0 : 1].y, size, 1e-9);
        }
    }
}

} // namespace
