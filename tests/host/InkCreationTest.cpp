// The steps behind the ink entry, on readings made by hand: curves of every kind become the same elements,
// with the constraints between them, and an element that was drawn over keeps its identifier.
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tessera/host/internal/InkConversion.h"
#include "tessera/host/internal/InkingCnstrHelper.h"
#include "tests/support/HostInk.h"
#include "tests/support/SampleCurves.h"

namespace {

using namespace Tessera::Geometry;
using namespace Tessera::Host;
using namespace Tessera::Testing;

constexpr double kPi = std::numbers::pi;

/// A reading by hand, and what becomes of it in a document.
struct Created {
    explicit Created(InkShape shape, std::uint32_t relations = 0) {
        reading.shape = shape;
        scene.document = document.get();
        scene.toleranceZone = 5.0;
        scene.relations = relations;
    }
    void Add(std::unique_ptr<Curve> curve) { reading.curves.emplace_back().curve = std::move(curve); }
    void Create(bool isCommitted = true) {
        DocumentChange change(document.get());
        ASSERT_EQ(CreateReading(scene, reading, change, outcome), 0);
        if (isCommitted) {
            ASSERT_EQ(change.Commit(), 0);
        }
    }

    Document document = NewDocument();
    InkReading reading;
    InkScene scene;
    InkOutcome outcome;
};

TEST(InkScene, IsInModelUnits) {
    const Document document = NewDocument();
    const HostView view{{0, 0}, 4, 0, 0};
    ASSERT_EQ(TesseraHost_SetView(document.get(), &view), 0);
    ASSERT_EQ(TesseraHost_SetPreferences(document.get(), 1, 10), 0);
    const tagGPosition2d points[] = {{0, 0}, {40, 20}, {80, 60}};
    const HostInkStroke ink{sizeof(ink), 3, 0, points, nullptr};
    for (const double zone : {0.0, 6.0}) {
        HostInkOptions options{};
        options.size = sizeof(options);
        options.toleranceZone = zone;
        options.excludedRelations = 5;
        InkScene scene;
        ASSERT_EQ(SetScene(ink, document.get(), options, scene), 0);
        EXPECT_NEAR(scene.toleranceZone, zone == 0.0 ? 2.5 : 1.5, 1e-12);
        EXPECT_EQ(scene.relations, ((1u << kConstraintKindCount) - 1) & ~5u);
        EXPECT_EQ(scene.ink.samples[1].x, 10);
        EXPECT_FALSE(scene.ink.hasTimes);
    }
}

TEST(InkCreation, ElementsAreTheCurves) {
    Created made(InkShape::Pieces);
    made.Add(std::make_unique<Line>(Point(1, 2), Point(30, -4)));
    made.Add(std::make_unique<Arc>(Point(80, 0), Point(30, 50), Point(30, 0)));
    made.Add(std::make_unique<Arc>(Point(-30, 50), Point(-80, 0), Point(-30, 0)));
    made.Add(std::make_unique<Arc>(Point(7, 8), 20.0));
    made.Add(MakeEllipse({5, 5}, 40, 20, 0.4, 0, 2 * kPi));
    made.Add(MakeEllipse({5, 5}, 40, 20, 0.4, 0.5, 0.5 + kPi)); // ends opposite: three points would not do
    for (double weight : {1.0, 2.0}) {
        double knots[] = {0, 0, 0, 0, 0.3, 1, 1, 1, 1};
        double poles[][4] = {
            {0, 0, 0, 1}, {10, 40, 0, weight}, {50, 60, 0, 1}, {90, -20, 0, 1}, {120, 5, 0, 1}};
        made.Add(std::make_unique<Spline>(5, 4, 0, knots, poles));
    }
    made.Add(std::make_unique<Line>(Point(3, 3), Point(3, 3))); // nothing
    made.Create();
    ASSERT_EQ(made.outcome.elements.size(), 8u);
    EXPECT_EQ(made.outcome.outcome, kHostInkCurves);
    EXPECT_TRUE(made.outcome.constraints.empty());
    for (std::size_t i = 0; i < made.outcome.elements.size(); ++i) {
        SCOPED_TRACE(i);
        const Curve& curve = *made.reading.curves[i].curve;
        double limits[2];
        curve.AskRange(limits);
        for (int k = 0; k <= 16; ++k) {
            const tagGPosition2d p = PointOf(made.document, made.outcome.elements[i], k / 16.0);
            const Point q = curve.GetPointAtParameter(limits[0] + k / 16.0 * (limits[1] - limits[0]), true);
            const Point r = curve.GetPointAtParameter(limits[1] - k / 16.0 * (limits[1] - limits[0]), true);
            EXPECT_LT(std::min(q.Distance({p.x, p.y}), r.Distance({p.x, p.y})), 1e-9);
        }
    }
}

// Arcs may run the other way in the document: the joint names the element's own end.
TEST(InkCreation, JointsNameTheEndsThatMeet) {
    for (const double x : {0.0, 500.0, -500.0})
        for (const bool isMirrored : {false, true}) {
            SCOPED_TRACE(testing::Message() << x << isMirrored);
            const double s = isMirrored ? -1 : 1;
            Created made(InkShape::Chain, ~0u);
            made.Add(std::make_unique<Line>(Point(x, 0), Point(x + s * 100, 0.5)));
            const Point foot(x + s * 100.5, 0), top(x + s * 100.5, 80);
            made.Add(isMirrored ? std::make_unique<Arc>(top, foot, Point(foot.x, 40))
                                : std::make_unique<Arc>(foot, top, Point(foot.x, 40)));
            made.Create();
            EXPECT_LT(WorstError(made.document), 1e-7);
            EXPECT_EQ(CountOf(made.document, kHostConstraintCoincident), 1);
            EXPECT_EQ(CountOf(made.document, kHostConstraintTangent), 1);
        }
}

TEST(InkCreation, ARectangleIsOneOnlyWhileItsLinesAreSquare) {
    for (const double off : {0.0, 1e-3}) {
        Created made(InkShape::Rectangle);
        const Point corners[] = {{0, 0}, {80, 0}, {80 + off, 50}, {0, 50}};
        for (int i = 0; i < 4; ++i) {
            // The third side was drawn against its curve's direction.
            const Point& from = corners[i];
            const Point& to = corners[(i + 1) % 4];
            made.Add(i == 2 ? std::make_unique<Line>(to, from) : std::make_unique<Line>(from, to));
            made.reading.curves.back().isReversed = i == 2;
        }
        made.Create();
        EXPECT_EQ(made.outcome.outcome, off == 0.0 ? kHostInkRectangle : kHostInkCurves);
        ASSERT_EQ(made.outcome.elements.size(), 4u);
        EXPECT_NEAR(PointOf(made.document, made.outcome.elements[2], 0).x, off == 0.0 ? 80 : 0, 0.01);
    }
}

TEST(InkCreation, AChangeThatIsNotCommittedLeavesNothing) {
    Created made(InkShape::Line, ~0u);
    made.Add(std::make_unique<Line>(Point(0, 0), Point(90, 0.2)));
    made.Create(false);
    EXPECT_EQ(made.outcome.constraints.size(), 1u);
    EXPECT_TRUE(Contents(made.document).empty());
}

TEST(InkCreation, ARetracedElementKeepsItsIdentifierAndDirection) {
    const double r = std::sqrt(0.5) * 100;
    for (const bool isClockwise : {false, true})
        for (const bool isKept : {false, true}) {
            Created made(InkShape::Retrace);
            const tagGPosition2d a{100, 0}, b{0, 100};
            const HostElementId id =
                AddTo(made.document, isClockwise ? ArcElement(b, a, {r, r}) : ArcElement(a, b, {r, r}));
            const HostElement2d drawn = ElementsOf(made.document)[0];
            made.scene.neighbours.push_back(CurveOf(drawn));
            made.scene.elements.emplace_back(drawn);
            made.Add(std::make_unique<Arc>(Point(110, 0), Point(0, 110), Point(0, 0)));
            made.reading.retraced = 0;
            {
                DocumentChange change(made.document.get());
                ASSERT_EQ(RetraceElement(made.scene, made.reading, change, made.outcome), 0);
                EXPECT_EQ(made.outcome.outcome, kHostInkRetrace);
                ASSERT_EQ(made.outcome.elements, std::vector<HostElementId>{id});
                if (isKept) {
                    ASSERT_EQ(change.Commit(), 0);
                }
            }
            const double size = isKept ? 110 : 100;
            EXPECT_NEAR(PointOf(made.document, id, isClockwise ? 1 : 0).x, size, 1e-9);
            EXPECT_NEAR(PointOf(made.document, id, isClockwise ? 0 : 1).y, size, 1e-9);
        }
}

} // namespace
