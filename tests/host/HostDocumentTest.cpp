#include "tessera/host/HostDocument.h"

#include "tessera/host/internal/ReferenceDocument.h"
#include "tests/support/HostProbe.h"

namespace {

using namespace Tessera::Testing;

constexpr std::uint32_t kPointer = 0x80004003u;
constexpr std::uint32_t kInvalid = 0x80070057u;
constexpr double kQuarter = std::numbers::pi / 2;

HostElement2d Bspline(const std::vector<tagGPosition2d>& poles, const std::vector<double>& knots,
                      const std::vector<double>& weights = {}) {
    HostElement2d e{};
    e.kind = kHostElementBSpline;
    e.poleCount = static_cast<std::int32_t>(poles.size());
    e.degree = static_cast<std::int32_t>(knots.size() - poles.size()) - 1;
    e.poles = poles.data();
    e.knots = knots.data();
    e.weights = weights.empty() ? nullptr : weights.data();
    return e;
}

// Each kind runs from its start to its end, whichever way round it was given.
TEST(HostDocument, ElementsRunFromStartToEnd) {
    const double r = std::sqrt(0.5);
    const struct {
        const char* name;
        HostElement2d element;
        tagGPosition2d at[3]; // start, middle, end
    } rows[] = {
        {"line", LineElement({1, 2}, {5, 4}), {{1, 2}, {3, 3}, {5, 4}}},
        {"arc", ArcElement({1, 0}, {0, 1}, {r, r}), {{1, 0}, {r, r}, {0, 1}}},
        {"clockwise arc", ArcElement({0, 1}, {1, 0}, {r, r}), {{0, 1}, {r, r}, {1, 0}}},
        {"major arc", ArcElement({1, 0}, {0, 1}, {-r, -r}), {{1, 0}, {-r, -r}, {0, 1}}},
        {"circle", CircleElement({3, 1}, 2), {{5, 1}, {1, 1}, {5, 1}}},
        {"ellipse", Element(kHostElementEllipse, {{1, 1}, {4, 1}, {1, 2}}), {{4, 1}, {-2, 1}, {4, 1}}},
        {"elliptic arc",
         Element(kHostElementEllipticArc, {{0, 0}, {4, 0}, {0, 2}, {4, 0}, {-4, 0}}),
         {{4, 0}, {0, 2}, {-4, 0}}},
        {"clockwise elliptic arc",
         Element(kHostElementEllipticArc, {{0, 0}, {4, 0}, {0, -2}, {4, 0}, {-4, 0}}),
         {{4, 0}, {0, -2}, {-4, 0}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Document document = NewDocument();
        const HostElementId id = AddTo(document, row.element);
        for (int i = 0; i < 3; ++i) {
            tagGPosition2d p{};
            ASSERT_EQ(TesseraHost_EvaluateElement(document.get(), id, 0.5 * i, &p), 0);
            ExpectNear(p, row.at[i], 1e-12);
        }
    }
}

TEST(HostDocument, ARationalBSplineIsTheCircleItDescribes) {
    const Document document = NewDocument();
    const std::vector<tagGPosition2d> poles{{1, 0}, {1, 1}, {0, 1}};
    const std::vector<double> knots{2, 2, 2, 5, 5, 5}, weights{1, std::sqrt(0.5), 1};
    const HostElementId id = AddTo(document, Bspline(poles, knots, weights));
    for (int i = 0; i <= 8; ++i) {
        tagGPosition2d p{};
        ASSERT_EQ(TesseraHost_EvaluateElement(document.get(), id, i / 8.0, &p), 0);
        EXPECT_NEAR(std::hypot(p.x, p.y), 1, 1e-12);
    }
    HostElement2d read{};
    ASSERT_EQ(TesseraHost_AskElement(document.get(), id, &read), 0);
    EXPECT_NE(read.poles, poles.data()) << "the document keeps copies";
    EXPECT_EQ(read.weights[1], weights[1]);
    EXPECT_EQ(read.knots[3], 5);
}

TEST(HostDocument, RefusesElementsThatAreNone) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<tagGPosition2d> poles{{0, 0}, {1, 1}, {2, 0}};
    const std::vector<double> falling{0, 0, 0, 1, 1, 0.5}, empty{1, 1, 1, 1, 1, 1};
    const std::vector<double> good{0, 0, 0, 1, 1, 1}, badWeights{1, 0, 1};
    const HostElement2d bad[] = {
        Element(kHostElementNone, {}),
        Element(77, {{0, 0}, {1, 1}}),
        LineElement({1, 1}, {1, 1}),
        LineElement({1, 1}, {nan, 1}),
        ArcElement({0, 0}, {2, 2}, {1, 1}),
        CircleElement({0, 0}, 0),
        CircleElement({0, 0}, std::numeric_limits<double>::infinity()),
        Element(kHostElementEllipse, {{0, 0}, {2, 0}, {1, 1}}),
        Element(kHostElementEllipse, {{0, 0}, {2, 0}, {0, 0}}),
        Bspline(poles, falling),
        Bspline(poles, empty),
        Bspline(poles, good, badWeights),
        Bspline({}, good),
    };
    HostProbe host;
    const Document document = NewDocument();
    int reports = 0;
    for (const HostElement2d& element : bad) {
        SCOPED_TRACE(reports);
        HostElementId made = 5;
        EXPECT_EQ(static_cast<std::uint32_t>(TesseraHost_CreateElement(document.get(), &element, &made)),
                  kInvalid);
        EXPECT_EQ(made, 5);
        EXPECT_EQ(static_cast<int>(host.reports.size()), ++reports);
    }
    EXPECT_EQ(TesseraHost_AskElementCount(document.get()), 0);
}

TEST(HostDocument, EveryFunctionChecksItsArguments) {
    HostProbe host;
    const Document document = NewDocument();
    HostDocument* d = document.get();
    const HostElementId line = AddTo(document, LineElement({0, 0}, {1, 0}));
    HostElement2d element{};
    HostConstraint2d constraint{};
    HostElementId made = 0;
    tagGPosition2d p{};
    double error = 0;
    HostView view{{0, 0}, 1, 0, 0};
    const HostView flat{{0, 0}, 0, 0, 0};
    std::size_t reports = 0;
    const auto refused = [&](std::uint32_t code, auto... answers) {
        for (const std::int32_t answer : {answers...}) {
            EXPECT_EQ(static_cast<std::uint32_t>(answer), code) << reports;
            ++reports;
        }
    };
    refused(kPointer, TesseraHost_SetView(nullptr, &view), TesseraHost_SetView(d, nullptr),
            TesseraHost_SetPreferences(nullptr, 1, 5), TesseraHost_CreateElement(d, nullptr, &made),
            TesseraHost_CreateElement(d, &element, nullptr), TesseraHost_RemoveElement(nullptr, line),
            TesseraHost_AskElementCount(nullptr), TesseraHost_AskElementAt(d, 0, nullptr),
            TesseraHost_AskElement(d, line, nullptr), TesseraHost_EvaluateElement(d, line, 0, nullptr),
            TesseraHost_AskConstraintCount(nullptr), TesseraHost_AskConstraintAt(d, 0, nullptr),
            TesseraHost_AskConstraintError(d, 0, nullptr));
    refused(kInvalid, TesseraHost_SetView(d, &flat), TesseraHost_SetPreferences(d, 1, 0),
            TesseraHost_RemoveElement(d, line + 1), TesseraHost_AskElementAt(d, 1, &element),
            TesseraHost_AskElementAt(d, -1, &element), TesseraHost_AskElement(d, line + 1, &element),
            TesseraHost_EvaluateElement(d, line, 1.01, &p), TesseraHost_AskConstraintAt(d, 0, &constraint),
            TesseraHost_AskConstraintError(d, line, &error));
    EXPECT_EQ(host.reports.size(), reports);
    TesseraHost_DeleteDocument(nullptr);
}

// Errors against distances and angles known from the construction.
TEST(HostDocument, ConstraintErrorsAreDistances) {
    const Document document = NewDocument();
    const HostElementId flat = AddTo(document, LineElement({0, 0}, {10, 0}));
    const HostElementId tilted = AddTo(document, LineElement({10, 3}, {18, 9}));
    const HostElementId circle = AddTo(document, CircleElement({5, 4}, 3));
    const HostElementId small = AddTo(document, CircleElement({5, 9}, 1));
    const HostElementId arc =
        AddTo(document, ArcElement({10, 1}, {11, 2}, {10 + std::sqrt(0.5), 2 - std::sqrt(0.5)}));
    const HostElementId drop =
        AddTo(document, Bspline({{0, 0}, {2, 3}, {4, 0}, {0, 0}}, {0, 0, 0, 0.5, 1, 1, 1}));
    struct Row {
        std::int32_t kind;
        std::vector<HostConstraintMember> members;
        std::int32_t side;
        double error;
    };
    const auto end = [](HostElementId id, std::int32_t point = kHostPointNone) {
        return HostConstraintMember{id, point, 0};
    };
    const Row rows[] = {
        {kHostConstraintCoincident, {end(flat, kHostPointEnd), end(tilted, kHostPointStart)}, 0, 3},
        {kHostConstraintCoincident, {end(drop, kHostPointStart), end(drop, kHostPointEnd)}, 0, 0},
        {kHostConstraintHorizontal, {end(tilted)}, 0, 6},
        {kHostConstraintVertical, {end(tilted)}, 0, 8},
        {kHostConstraintParallel, {end(flat), end(tilted)}, 0, 6},
        {kHostConstraintPerpendicular, {end(flat), end(tilted)}, 0, 8},
        {kHostConstraintCollinear, {end(flat), end(tilted)}, 0, 9},
        {kHostConstraintEqualLength, {end(flat), end(tilted)}, 0, 0},
        {kHostConstraintConcentric, {end(circle, kHostPointCentre), end(small, kHostPointCentre)}, 0, 5},
        {kHostConstraintEqualRadius, {end(circle), end(small)}, 0, 2},
        {kHostConstraintTangent, {end(flat), end(circle)}, 1, 1},
        {kHostConstraintTangent, {end(circle), end(small)}, 1, 1},
        {kHostConstraintTangent, {end(circle), end(small)}, -1, 3},
        {kHostConstraintTangent, {end(flat, kHostPointEnd), end(arc, kHostPointStart)}, 0, 0},
        {kHostConstraintTangent, {end(flat, kHostPointEnd), end(arc, kHostPointEnd)}, 0, kQuarter},
        {kHostConstraintPointOnCurve, {end(tilted, kHostPointStart), end(flat)}, 0, 3},
        {kHostConstraintMidPoint, {end(circle, kHostPointCentre), end(flat, kHostPointMid)}, 0, 4},
        {kHostConstraintSymmetric,
         {end(circle, kHostPointCentre), end(tilted, kHostPointStart), end(flat)},
         0,
         std::hypot(5, 7)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.kind);
        HostConstraintId made = 0;
        ASSERT_EQ(Constrain(document, row.kind, row.members, row.side, &made), 0);
        double error = -1;
        ASSERT_EQ(TesseraHost_AskConstraintError(document.get(), made, &error), 0);
        EXPECT_NEAR(error, row.error, 1e-12);
    }
    const Row impossible[] = {
        {kHostConstraintHorizontal, {end(circle)}, 0, 0},
        {kHostConstraintEqualRadius, {end(circle), end(flat)}, 0, 0},
        {kHostConstraintCoincident, {end(circle, kHostPointStart), end(flat, kHostPointEnd)}, 0, 0},
        {kHostConstraintParallel, {end(flat)}, 0, 0},
        {kHostConstraintParallel, {end(flat), end(999)}, 0, 0},
        {99, {end(flat), end(tilted)}, 0, 0},
    };
    for (const Row& row : impossible)
        EXPECT_LT(Constrain(document, row.kind, row.members), 0) << row.kind;
    EXPECT_EQ(TesseraHost_AskConstraintCount(document.get()), static_cast<std::int32_t>(std::size(rows)));
}

TEST(HostDocument, RemovedElementsComeBackUntilTheCommit) {
    const HostServices& services = Tessera::Host::ReferenceHostServices();
    const Document document = NewDocument();
    HostDocument* d = document.get();
    const HostElementId line = AddTo(document, LineElement({0, 0}, {10, 0}));
    ASSERT_EQ(Constrain(document, kHostConstraintHorizontal, {{line, kHostPointNone, 0}}), 0);

    ASSERT_EQ(services.HRemoveElement2d(nullptr, d, line), 0);
    EXPECT_EQ(TesseraHost_AskElementCount(d), 0);
    EXPECT_EQ(TesseraHost_AskConstraintCount(d), 0);
    EXPECT_LT(services.HRemoveElement2d(nullptr, d, line), 0);
    ASSERT_EQ(services.HRestoreElement2d(nullptr, d, line), 0);
    EXPECT_EQ(TesseraHost_AskElementCount(d), 1);
    EXPECT_EQ(TesseraHost_AskConstraintCount(d), 1);

    HostElement2d moved = LineElement({0, 0}, {10, 1});
    moved.id = line;
    ASSERT_EQ(services.HModifyElement2d(nullptr, d, &moved), 0);
    EXPECT_EQ(TesseraHost_AskConstraintCount(d), 1);
    ASSERT_EQ(services.commitConstraints(nullptr, d), 0);
    EXPECT_EQ(TesseraHost_AskConstraintCount(d), 0) << "no longer satisfied";

    ASSERT_EQ(services.HRemoveElement2d(nullptr, d, line), 0);
    ASSERT_EQ(services.commitConstraints(nullptr, d), 0);
    EXPECT_LT(services.HRestoreElement2d(nullptr, d, line), 0);
}

TEST(HostDocument, TheViewTurnsThereAndBack) {
    const HostServices& services = Tessera::Host::ReferenceHostServices();
    const Document document = NewDocument();
    const HostView view{{100, 50}, 4, 1, 0};
    ASSERT_EQ(TesseraHost_SetView(document.get(), &view), 0);
    const tagGPosition2d device{8, 20};
    tagGPosition2d model{}, back{};
    ASSERT_EQ(services.DCToModel(nullptr, document.get(), &device, &model), 0);
    ExpectNear(model, {102, 45}, 0.0);
    ASSERT_EQ(services.ModelToDC(nullptr, document.get(), &model, &back), 0);
    ExpectNear(back, device, 0.0);
}

} // namespace
