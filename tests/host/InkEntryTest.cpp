// ConvertInkingStrokeToGeometry over the reference host: what strokes become, and that a failure anywhere
// leaves the document as it was and is reported once.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "tessera/host/ScriptorRecog.h"
#include "tessera/recognition/InkInterpretation.h"
#include "tests/support/HostProbe.h"

namespace {

using namespace Tessera::Testing;

constexpr double kPi = std::numbers::pi;
using Ink = std::vector<tagGPosition2d>;

/// A pen path through corners, evenly sampled.
Ink Path(std::initializer_list<tagGPosition2d> corners, double step = 2.0) {
    Ink ink(corners.begin(), corners.begin() + 1);
    for (const tagGPosition2d& to : corners) {
        const tagGPosition2d from = ink.back();
        const int n = static_cast<int>(std::ceil(std::hypot(to.x - from.x, to.y - from.y) / step));
        for (int i = 1; i <= n; ++i) {
            const double t = static_cast<double>(i) / n;
            ink.push_back({from.x + t * (to.x - from.x), from.y + t * (to.y - from.y)});
        }
    }
    return ink;
}

/// A round pen path; angles in radians.
Ink Round(tagGPosition2d centre, double a, double b, double from, double to, int n = 120) {
    Ink ink;
    for (int i = 0; i <= n; ++i) {
        const double t = from + (to - from) * i / n;
        ink.push_back({centre.x + a * std::cos(t), centre.y + b * std::sin(t)});
    }
    return ink;
}

Ink Rectangle(double x = 0, double y = 0) {
    return Path({{x, y}, {x + 200, y + 2}, {x + 198, y + 120}, {x + 1, y + 118}, {x + 1, y + 1}});
}
Ink Triangle() {
    return Path({{0, 0}, {200, 3}, {90, 150}, {1, 1}});
}
Ink LineThenArc() {
    Ink ink = Path({{0, 0}, {150, 0}});
    const Ink arc = Round({220, 0}, 70, 70, kPi, 0, 80);
    ink.insert(ink.end(), arc.begin() + 1, arc.end());
    return ink;
}
/// Scratching over x0 to x1 about y.
Ink Scratch(double x0, double x1, double y, double height = 30, int legs = 12) {
    Ink corners;
    for (int i = 0; i <= legs; ++i) {
        corners.push_back({x0 + (x1 - x0) * i / legs, i % 2 == 0 ? y - height : y + height});
    }
    Ink ink{corners[0]};
    for (std::size_t i = 1; i < corners.size(); ++i) {
        const Ink leg = Path({corners[i - 1], corners[i]});
        ink.insert(ink.end(), leg.begin() + 1, leg.end());
    }
    return ink;
}

/// One call with its result.
class Conversion {
public:
    Conversion(const Document& document, const Ink& ink, HostInkOptions options = DefaultOptions()) {
        std::vector<double> times;
        for (std::size_t i = 0; i < ink.size(); ++i) {
            times.push_back(0.01 * static_cast<double>(i));
        }
        const HostInkStroke stroke{sizeof(stroke), static_cast<std::int32_t>(ink.size()), 0, ink.data(),
                                   times.data()};
        result.size = sizeof(result);
        code = ConvertInkingStrokeToGeometry(&stroke, document.get(), &options, &result);
    }
    ~Conversion() { TesseraHost_ReleaseInkResult(&result); }
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;

    static HostInkOptions DefaultOptions() {
        HostInkOptions options{};
        options.size = sizeof(options);
        return options;
    }

    std::int32_t code = 0;
    HostInkResult result{};
};

std::vector<std::int32_t> KindsIn(const Document& document) {
    std::vector<std::int32_t> kinds;
    for (int i = 0; i < TesseraHost_AskElementCount(document.get()); ++i) {
        HostElement2d e{};
        EXPECT_EQ(TesseraHost_AskElementAt(document.get(), i, &e), 0);
        kinds.push_back(e.kind);
    }
    return kinds;
}

int CountOf(const Document& document, std::int32_t kind) {
    int count = 0;
    for (int i = 0; i < TesseraHost_AskConstraintCount(document.get()); ++i) {
        HostConstraint2d c{};
        EXPECT_EQ(TesseraHost_AskConstraintAt(document.get(), i, &c), 0);
        count += c.kind == kind ? 1 : 0;
    }
    return count;
}

/// Largest error of all constraints of the document.
double WorstError(const Document& document) {
    double worst = 0;
    for (int i = 0; i < TesseraHost_AskConstraintCount(document.get()); ++i) {
        HostConstraint2d c{};
        double error = 0;
        EXPECT_EQ(TesseraHost_AskConstraintAt(document.get(), i, &c), 0);
        EXPECT_EQ(TesseraHost_AskConstraintError(document.get(), c.id, &error), 0);
        worst = std::max(worst, error);
    }
    return worst;
}

/// All numbers of the document, to see whether anything has changed.
std::vector<double> Contents(const Document& document) {
    std::vector<double> numbers;
    for (int i = 0; i < TesseraHost_AskElementCount(document.get()); ++i) {
        HostElement2d e{};
        EXPECT_EQ(TesseraHost_AskElementAt(document.get(), i, &e), 0);
        numbers.insert(numbers.end(), {static_cast<double>(e.id), static_cast<double>(e.kind), e.radius});
        for (const tagGPosition2d& p : e.points) {
            numbers.insert(numbers.end(), {p.x, p.y});
        }
    }
    for (int i = 0; i < TesseraHost_AskConstraintCount(document.get()); ++i) {
        HostConstraint2d c{};
        EXPECT_EQ(TesseraHost_AskConstraintAt(document.get(), i, &c), 0);
        numbers.insert(numbers.end(), {static_cast<double>(c.id), static_cast<double>(c.kind)});
        for (const HostConstraintMember& m : c.members) {
            numbers.insert(numbers.end(), {static_cast<double>(m.element), static_cast<double>(m.point)});
        }
    }
    return numbers;
}

TEST(InkEntry, StrokesBecomeElementsWithConstraints) {
    struct Row {
        const char* name;
        Ink ink;
        std::int32_t outcome;
        std::vector<std::int32_t> kinds;
        int coincident, horizontal, vertical, tangent;
    };
    const Row rows[] = {
        {"rectangle", Rectangle(), kHostInkRectangle, {1, 1, 1, 1}, 4, 2, 2, 0},
        {"triangle", Triangle(), kHostInkCurves, {1, 1, 1}, 3, 1, 0, 0},
        {"line and arc", LineThenArc(), kHostInkCurves, {1, 2}, 1, 1, 0, 0},
        {"circle", Round({0, 0}, 80, 80, 0.1, 0.1 + 2 * kPi), kHostInkCurves, {8}, 0, 0, 0, 0},
        {"ellipse", Round({0, 0}, 120, 50, 0.1, 0.1 + 2 * kPi), kHostInkCurves, {16}, 0, 0, 0, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Document document = NewDocument();
        const Conversion converted(document, row.ink);
        EXPECT_EQ(converted.code, 0);
        EXPECT_EQ(converted.result.outcome, row.outcome);
        EXPECT_EQ(KindsIn(document), row.kinds);
        EXPECT_EQ(converted.result.elementCount, static_cast<std::int32_t>(row.kinds.size()));
        EXPECT_EQ(converted.result.constraintCount, TesseraHost_AskConstraintCount(document.get()));
        EXPECT_EQ(CountOf(document, kHostConstraintCoincident), row.coincident);
        EXPECT_LE(CountOf(document, kHostConstraintHorizontal), row.horizontal);
        EXPECT_LE(CountOf(document, kHostConstraintVertical), row.vertical);
        EXPECT_EQ(CountOf(document, kHostConstraintTangent), row.tangent);
        EXPECT_LT(WorstError(document), 1e-7);
    }
}

TEST(InkEntry, TheViewDecidesWhereThingsAre) {
    const Document document = NewDocument();
    const HostView view{{1000, 500}, 4, 1, 0};
    ASSERT_EQ(TesseraHost_SetView(document.get(), &view), 0);
    const Conversion converted(document, Round({200, 100}, 80, 80, 0.1, 0.1 + 2 * kPi));
    HostElement2d circle{};
    ASSERT_EQ(converted.result.elementCount, 1);
    ASSERT_EQ(TesseraHost_AskElement(document.get(), converted.result.elements[0], &circle), 0);
    EXPECT_NEAR(circle.points[0].x, 1050, 0.5);
    EXPECT_NEAR(circle.points[0].y, 475, 0.5);
    EXPECT_NEAR(circle.radius, 20, 0.5);
}

TEST(InkEntry, RelationshipsComeAsTheHostShowsThemOrTheStrokeAsks) {
    struct Row {
        int shown;
        std::int32_t asked;
        std::uint32_t excluded;
        bool hasAny;
    };
    const std::uint32_t noCoincident = 1u << kHostConstraintCoincident;
    for (const Row& row : {Row{1, kHostInkAsShown, 0, true}, Row{0, kHostInkAsShown, 0, false},
                           Row{0, kHostInkAlways, 0, true}, Row{1, kHostInkNever, 0, false},
                           Row{1, kHostInkAsShown, noCoincident, true}}) {
        const Document document = NewDocument();
        ASSERT_EQ(TesseraHost_SetPreferences(document.get(), row.shown, 10), 0);
        HostInkOptions options = Conversion::DefaultOptions();
        options.relationships = row.asked;
        options.excludedRelations = row.excluded;
        const Conversion converted(document, Rectangle(), options);
        EXPECT_EQ(converted.result.elementCount, 4);
        EXPECT_EQ(converted.result.constraintCount > 0, row.hasAny);
        EXPECT_EQ(CountOf(document, kHostConstraintCoincident), row.hasAny && row.excluded == 0 ? 4 : 0);
    }
}

TEST(InkEntry, NewElementsFitToWhatIsThere) {
    const Document document = NewDocument();
    const HostElementId old = AddTo(document, LineElement({0, 0}, {150, 40}));
    const std::vector<double> before = Contents(document);
    const Conversion converted(document, Path({{152, 43}, {152, 200}}));
    ASSERT_EQ(converted.result.elementCount, 1);
    const std::vector<double> after = Contents(document);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), after.begin())) << "the old line stays";
    HostConstraint2d c{};
    bool isJoined = false;
    for (int i = 0; i < TesseraHost_AskConstraintCount(document.get()); ++i) {
        ASSERT_EQ(TesseraHost_AskConstraintAt(document.get(), i, &c), 0);
        isJoined = isJoined || (c.kind == kHostConstraintCoincident &&
                                (c.members[0].element == old || c.members[1].element == old));
    }
    EXPECT_TRUE(isJoined);
    EXPECT_LT(WorstError(document), 1e-7);
}

TEST(InkEntry, AScribbleErasesAndTrims) {
    const Document document = NewDocument();
    const HostElementId gone = AddTo(document, LineElement({110, 0}, {190, 0}));
    const HostElementId cut = AddTo(document, LineElement({0, 10}, {250, 10}));
    const HostElementId far = AddTo(document, LineElement({0, 300}, {250, 300}));
    const HostElementId atEnd = AddTo(document, LineElement({250, 10}, {250, 200}));
    const HostServices services = Tessera::Host::ReferenceHostServices();
    HostConstraint2d joint{};
    joint.kind = kHostConstraintCoincident;
    joint.memberCount = 2;
    joint.members[0] = {cut, kHostPointEnd, 0};
    joint.members[1] = {atEnd, kHostPointStart, 0};
    HostConstraintId made = 0;
    ASSERT_EQ(services.createConstraint(nullptr, document.get(), &joint, &made), 0);

    const Conversion converted(document, Scratch(100, 200, 0));
    const HostInkResult& result = converted.result;
    ASSERT_EQ(converted.code, 0);
    EXPECT_EQ(result.outcome, kHostInkScribble);
    ASSERT_EQ(result.erasedCount, 1);
    EXPECT_EQ(result.erased[0], gone);
    ASSERT_EQ(result.trimmedCount, 1);
    EXPECT_EQ(result.trimmed[0], cut);
    ASSERT_EQ(result.elementCount, 1);
    HostElement2d first{};
    HostElement2d second{};
    HostElement2d untouched{};
    ASSERT_EQ(TesseraHost_AskElement(document.get(), cut, &first), 0);
    ASSERT_EQ(TesseraHost_AskElement(document.get(), result.elements[0], &second), 0);
    ASSERT_EQ(TesseraHost_AskElement(document.get(), far, &untouched), 0);
    EXPECT_EQ(first.points[0].x, 0);
    EXPECT_NEAR(first.points[1].x, 100, 12);
    EXPECT_NEAR(second.points[0].x, 200, 12);
    EXPECT_EQ(second.points[1].x, 250);
    // The joint at the far end went over to the new piece.
    ASSERT_EQ(TesseraHost_AskConstraintCount(document.get()), 1);
    ASSERT_EQ(TesseraHost_AskConstraintAt(document.get(), 0, &joint), 0);
    EXPECT_EQ(joint.members[0].element, result.elements[0]);
    EXPECT_LT(WorstError(document), 1e-9);
}

TEST(InkEntry, ACircleIsTrimmedToOneArc) {
    const Document document = NewDocument();
    const HostElementId circle = AddTo(document, CircleElement({0, 0}, 200));
    const Conversion converted(document, Scratch(-150, 150, 200, 90));
    ASSERT_EQ(converted.result.outcome, kHostInkScribble);
    ASSERT_EQ(converted.result.trimmedCount, 1);
    EXPECT_EQ(converted.result.elementCount, 0);
    HostElement2d arc{};
    ASSERT_EQ(TesseraHost_AskElement(document.get(), circle, &arc), 0);
    EXPECT_EQ(arc.kind, kHostElementArc);
    for (int i = 0; i <= 20; ++i) {
        tagGPosition2d p{};
        ASSERT_EQ(TesseraHost_EvaluateElement(document.get(), circle, i / 20.0, &p), 0);
        EXPECT_NEAR(std::hypot(p.x, p.y), 200, 1e-9);
        EXPECT_LT(p.y, 175);
    }
}

TEST(InkEntry, InkWithoutExtentIsNothing) {
    HostProbe host;
    const Document document = NewDocument();
    for (const Ink& ink : {Ink{}, Ink{{3, 4}}, Ink{{3, 4}, {3, 4}, {3, 4}}}) {
        const Conversion converted(document, ink);
        EXPECT_EQ(converted.code, 0);
        EXPECT_EQ(converted.result.outcome, kHostInkNothing);
        EXPECT_EQ(converted.result.elements, nullptr);
    }
    EXPECT_TRUE(host.reports.empty());
    EXPECT_EQ(TesseraHost_AskElementCount(document.get()), 0);
}

// --- Failures

void ExpectOneReport(const HostProbe& host, std::int32_t code) {
    ASSERT_EQ(host.reports.size(), 1u);
    EXPECT_EQ(host.reports[0].code, code);
    EXPECT_NE(host.reports[0].file.find("tessera/host/"), std::string::npos);
    EXPECT_GT(host.reports[0].line, 0);
    EXPECT_FALSE(host.reports[0].function.empty());
}

TEST(InkEntry, MissingPointersAreReportedOnce) {
    const auto pointer = static_cast<std::int32_t>(0x80004003);
    const Document document = NewDocument();
    const tagGPosition2d points[] = {{0, 0}, {9, 9}};
    for (int missing = 0; missing < 5; ++missing) {
        SCOPED_TRACE(missing);
        HostProbe host;
        const HostInkStroke ink{sizeof(ink), 2, 0, missing == 4 ? nullptr : points, nullptr};
        const HostInkOptions options = Conversion::DefaultOptions();
        HostInkResult result{};
        result.size = sizeof(result);
        EXPECT_EQ(ConvertInkingStrokeToGeometry(
                      missing == 0 ? nullptr : &ink, missing == 1 ? nullptr : document.get(),
                      missing == 2 ? nullptr : &options, missing == 3 ? nullptr : &result),
                  pointer);
        ExpectOneReport(host, pointer);
        EXPECT_EQ(host.reports[0].function, "ConvertInkingStrokeToGeometry");
    }
    for (int service = 0; service < 22; ++service) {
        SCOPED_TRACE(service);
        HostProbe host;
        host.InstallWithout(service);
        EXPECT_EQ(Conversion(document, Rectangle()).code, pointer);
        ExpectOneReport(host, pointer);
    }
    EXPECT_EQ(TesseraHost_AskElementCount(document.get()), 0);
}

TEST(InkEntry, BadInputIsRefused) {
    const double nan = std::nan("");
    const tagGPosition2d good[] = {{0, 0}, {50, 1}, {100, 0}};
    const tagGPosition2d bad[] = {{0, 0}, {nan, 1}, {100, 0}};
    const double times[] = {0, 1, 2};
    const double falling[] = {0, 2, 1};
    const double lost[] = {0, nan, 1};
    struct Row {
        const char* name;
        std::size_t inkSize, optionsSize, resultSize;
        std::int32_t count;
        const tagGPosition2d* points;
        const double* times;
        std::int32_t relationships;
        double zone;
    };
    const std::size_t i = sizeof(HostInkStroke);
    const std::size_t o = sizeof(HostInkOptions);
    const std::size_t r = sizeof(HostInkResult);
    const Row rows[] = {
        {"small stroke", i - 1, o, r, 3, good, times, 0, 0},
        {"small options", i, o - 1, r, 3, good, times, 0, 0},
        {"small result", i, o, r - 1, 3, good, times, 0, 0},
        {"negative count", i, o, r, -1, good, times, 0, 0},
        {"not finite", i, o, r, 3, bad, times, 0, 0},
        {"falling times", i, o, r, 3, good, falling, 0, 0},
        {"times not finite", i, o, r, 3, good, lost, 0, 0},
        {"unknown choice", i, o, r, 3, good, times, 3, 0},
        {"negative zone", i, o, r, 3, good, times, 0, -1},
        {"zone not finite", i, o, r, 3, good, times, 0, nan},
    };
    const Document document = NewDocument();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        HostProbe host;
        const HostInkStroke ink{row.inkSize, row.count, 0, row.points, row.times};
        HostInkOptions options{};
        options.size = row.optionsSize;
        options.relationships = row.relationships;
        options.toleranceZone = row.zone;
        HostInkResult result{};
        result.size = row.resultSize;
        const auto invalid = static_cast<std::int32_t>(0x80070057);
        EXPECT_EQ(ConvertInkingStrokeToGeometry(&ink, document.get(), &options, &result), invalid);
        ExpectOneReport(host, invalid);
    }
    EXPECT_EQ(TesseraHost_AskElementCount(document.get()), 0);
}

// Every call of every service fails in turn, for strokes that between them use all of them. The last element
// is there for the scribble and for the ends to be joined to.
TEST(InkEntry, AFailingServiceLeavesTheDocumentAsItWas) {
    const Ink strokes[] = {Rectangle(300, 300),
                           Triangle(),
                           LineThenArc(),
                           Round({0, 0}, 80, 80, 0.1, 0.1 + 2 * kPi),
                           Round({0, 0}, 120, 50, 0.1, 0.1 + 2 * kPi),

                           Scratch(100, 200, 0),
                           Path({{2, -403}, {198, -404}}),
                           Round({0, 900}, 200, 80, 0.3, 2.8)};
    int failures[22] = {};
    for (const Ink& ink : strokes) {
        SCOPED_TRACE(&ink - strokes);
        for (int service = 0; service < 22; ++service) {
            for (int call = 1;; call = call < 6 ? call + 1 : 2 * call) {
                HostProbe host;
                const Document document = NewDocument();
                AddTo(document, LineElement({110, 0}, {190, 0}));
                AddTo(document, LineElement({0, 10}, {250, 10}));
                AddTo(document, LineElement({0, -400}, {200, -400}));
                const std::vector<double> before = Contents(document);
                host.FailAt(service, call);
                const Conversion converted(document, ink);
                if (host.calls[service] < call) {
                    EXPECT_EQ(converted.code, 0);
                    break;
                }
                SCOPED_TRACE(testing::Message() << "service " << service << " call " << call);
                ++failures[service];
                EXPECT_EQ(converted.code, HostProbe::kFailure);
                EXPECT_EQ(converted.result.outcome, kHostInkNothing);
                EXPECT_EQ(converted.result.elements, nullptr);
                EXPECT_EQ(Contents(document), before);
                ExpectOneReport(host, HostProbe::kFailure);
            }
        }
    }
    // Removal serves the scribble; restoring and removing constraints only serve the way back.
    for (const int service : {0, 1, 2, 3, 6, 7, 8, 10, 11, 12, 13, 14, 15, 17, 18, 19, 20, 21}) {
        EXPECT_GT(failures[service], 0) << service;
    }
}

} // namespace
