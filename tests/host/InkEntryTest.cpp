// ConvertInkingStrokeToGeometry over the reference host: what strokes become, and that a failure anywhere
// leaves the document as it was and is reported once.
#include "tessera/host/ScriptorRecog.h"
#include "tests/support/HostInk.h"

namespace {

using namespace Tessera::Testing;

struct Counts {
    int coincident = 0, tangent = 0;  ///< exactly
    int horizontal = 0, vertical = 0; ///< at most
};

/// A stroke drawn into what is there already.
struct Drawing {
    const char* name;
    Ink ink;
    std::int32_t outcome;
    std::vector<std::int32_t> kinds; ///< of all elements afterwards
    Counts constraints;
    std::vector<HostElement2d> there;
};

std::vector<Drawing> Drawings() {
    const Ink triangle = Pen(0, 0).To(200, 3).To(90, 150).To(1, 1).ink;
    const Ink corner = Pen(0, 0).To(150, 0).Round(220, 0, 70, 70, 180, 0).ink;
    const Ink chain = Pen(0, 0).To(150, 0).Round(150, 70, 70, 70, -90, 90).To(0, 140).ink;
    const Ink slot =
        Pen(0, 0).To(150, 0).Round(150, 50, 50, 50, -90, 90).To(0, 100).Round(0, 50, 50, 50, 90, 270).ink;
    const double r = std::sqrt(5000.0);
    const HostElement2d arc = ArcElement({100, 0}, {0, 100}, {r, r});
    const HostElement2d flat = LineElement({0, -400}, {200, -400});
    const HostElement2d under = LineElement({110, 0}, {190, 0});
    const HostElement2d across = LineElement({0, 10}, {250, 10});
    return {
        {"rectangle", RectangleInk(), kHostInkRectangle, {1, 1, 1, 1}, {4, 0, 2, 2}, {}},
        {"triangle", triangle, kHostInkCurves, {1, 1, 1}, {3, 0, 1, 0}, {}},
        {"line and arc with a corner", corner, kHostInkCurves, {1, 2}, {1, 0, 1, 0}, {}},
        {"tangent chain", chain, kHostInkCurves, {1, 2, 1}, {2, 2, 2, 0}, {}},
        {"slot", slot, kHostInkCurves, {1, 2, 1, 2}, {4, 4, 2, 0}, {}},
        {"circle", RoundInk(0, 0, 80, 80, 6, 366), kHostInkCurves, {8}, {}, {}},
        {"ellipse", RoundInk(0, 0, 120, 50, 6, 366), kHostInkCurves, {16}, {}, {}},
        {"elliptic arc", RoundInk(0, 900, 200, 80, 17, 160), kHostInkCurves, {64}, {}, {}},
        {"wave", WaveInk(), kHostInkCurves, {128}, {}, {}},
        {"line drawn over", Pen(2, -403).To(198, -404).ink, kHostInkRetrace, {1}, {}, {flat}},
        {"arc drawn over", RoundInk(0, 0, 104, 104, 2, 88), kHostInkRetrace, {2}, {}, {arc}},
        {"scribble", ScratchInk(100, 200, 0), kHostInkScribble, {1, 1, 1}, {}, {under, across, flat}},
    };
}

Document DocumentOf(const Drawing& drawing) {
    Document document = NewDocument();
    for (const HostElement2d& element : drawing.there)
        AddTo(document, element);
    return document;
}

TEST(InkEntry, StrokesBecomeElementsWithConstraints) {
    for (const Drawing& drawing : Drawings()) {
        SCOPED_TRACE(drawing.name);
        const Document document = DocumentOf(drawing);
        const Conversion converted(document, drawing.ink);
        EXPECT_EQ(converted.code, 0);
        EXPECT_EQ(converted.result.outcome, drawing.outcome);
        std::vector<std::int32_t> kinds;
        for (const HostElement2d& e : ElementsOf(document))
            kinds.push_back(e.kind);
        EXPECT_EQ(kinds, drawing.kinds);
        EXPECT_EQ(converted.result.constraintCount, TesseraHost_AskConstraintCount(document.get()));
        EXPECT_EQ(CountOf(document, kHostConstraintCoincident), drawing.constraints.coincident);
        EXPECT_EQ(CountOf(document, kHostConstraintTangent), drawing.constraints.tangent);
        EXPECT_LE(CountOf(document, kHostConstraintHorizontal), drawing.constraints.horizontal);
        EXPECT_LE(CountOf(document, kHostConstraintVertical), drawing.constraints.vertical);
        EXPECT_LT(WorstError(document), 1e-7);
    }
}

// As the host shows them, or as the one stroke asks: none at all, all, or all but some kinds.
TEST(InkEntry, RelationshipsCanBeChosenForOneStroke) {
    struct Row {
        int shown;
        std::int32_t asked;
        std::uint32_t excluded;
        bool hasAny;
    };
    const std::uint32_t noCoincident = 1u << kHostConstraintCoincident;
    for (const Row& row : {Row{1, kHostInkAsShown, 0, true}, Row{0, kHostInkAsShown, 0, false},
                           Row{0, kHostInkAlways, 0, true}, Row{1, kHostInkNever, 0, false},
                           Row{1, kHostInkAsShown, noCoincident, true}, Row{1, kHostInkAlways, ~0u, false}}) {
        const Document document = NewDocument();
        ASSERT_EQ(TesseraHost_SetPreferences(document.get(), row.shown, 10), 0);
        HostInkOptions options = Conversion::DefaultOptions();
        options.relationships = row.asked;
        options.excludedRelations = row.excluded;
        const Conversion converted(document, RectangleInk(), options);
        EXPECT_EQ(converted.result.elementCount, 4);
        EXPECT_EQ(converted.result.constraintCount > 0, row.hasAny);
        EXPECT_EQ(CountOf(document, kHostConstraintCoincident), row.hasAny && row.excluded == 0 ? 4 : 0);
        // The next stroke asks anew.
        const Conversion next(document, RectangleInk(0, 900));
        EXPECT_EQ(next.result.constraintCount > 0, row.shown != 0);
    }
}

TEST(InkEntry, NewElementsFitToWhatIsThere) {
    const Document document = NewDocument();
    const HostElementId old = AddTo(document, LineElement({0, 0}, {150, 40}));
    const std::vector<double> before = Contents(document);
    const Conversion converted(document, Pen(152, 43).To(152, 200).ink);
    ASSERT_EQ(converted.result.elementCount, 1);
    const std::vector<double> after = Contents(document);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), after.begin())) << "the old line stays";
    const std::vector<HostConstraint2d> all = ConstraintsOf(document);
    EXPECT_TRUE(std::any_of(all.begin(), all.end(), [&](const HostConstraint2d& c) {
        return c.kind == kHostConstraintCoincident &&
               (c.members[0].element == old || c.members[1].element == old);
    }));
    EXPECT_LT(WorstError(document), 1e-7);
}

TEST(InkEntry, AScribbleErasesAndTrims) {
    const Document document = NewDocument();
    const HostElementId gone = AddTo(document, LineElement({110, 0}, {190, 0}));
    const HostElementId cut = AddTo(document, LineElement({0, 10}, {250, 10}));
    AddTo(document, LineElement({0, 300}, {250, 300}));
    const HostElementId atEnd = AddTo(document, LineElement({250, 10}, {250, 200}));
    ASSERT_EQ(Constrain(document, kHostConstraintCoincident,
                        {{cut, kHostPointEnd, 0}, {atEnd, kHostPointStart, 0}}),
              0);
    const Conversion converted(document, ScratchInk(100, 200, 0));
    const HostInkResult& result = converted.result;
    ASSERT_EQ(converted.code, 0);
    EXPECT_EQ(result.outcome, kHostInkScribble);
    ASSERT_EQ(result.erasedCount, 1);
    EXPECT_EQ(result.erased[0], gone);
    ASSERT_EQ(result.trimmedCount, 1);
    EXPECT_EQ(result.trimmed[0], cut);
    ASSERT_EQ(result.elementCount, 1);
    EXPECT_EQ(PointOf(document, cut, 0).x, 0);
    EXPECT_NEAR(PointOf(document, cut, 1).x, 100, 12);
    EXPECT_NEAR(PointOf(document, result.elements[0], 0).x, 200, 12);
    EXPECT_EQ(PointOf(document, result.elements[0], 1).x, 250);
    EXPECT_EQ(TesseraHost_AskElementCount(document.get()), 4);
    // The joint at the far end went over to the new piece.
    ASSERT_EQ(ConstraintsOf(document).size(), 1u);
    EXPECT_EQ(ConstraintsOf(document)[0].members[0].element, result.elements[0]);
    EXPECT_LT(WorstError(document), 1e-9);
}

TEST(InkEntry, ACircleIsTrimmedToOneArc) {
    const Document document = NewDocument();
    const HostElementId circle = AddTo(document, CircleElement({0, 0}, 200));
    const Conversion converted(document, ScratchInk(-150, 150, 200, 90));
    ASSERT_EQ(converted.result.outcome, kHostInkScribble);
    ASSERT_EQ(converted.result.trimmedCount, 1);
    EXPECT_EQ(converted.result.elementCount, 0);
    EXPECT_EQ(ElementsOf(document)[0].kind, kHostElementArc);
    for (int i = 0; i <= 20; ++i) {
        const tagGPosition2d p = PointOf(document, circle, i / 20.0);
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

void ExpectOneReport(const HostProbe& host, std::int32_t code, const char* function = nullptr) {
    ASSERT_EQ(host.reports.size(), 1u);
    EXPECT_EQ(host.reports[0].code, code);
    EXPECT_NE(host.reports[0].file.find("tessera/host/"), std::string::npos);
    EXPECT_GT(host.reports[0].line, 0);
    EXPECT_FALSE(host.reports[0].function.empty());
    if (function != nullptr) {
        EXPECT_EQ(host.reports[0].function, function);
    }
}

TEST(InkEntry, MissingPointersAreReportedOnce) {
    const auto pointer = static_cast<std::int32_t>(0x80004003);
    const Document document = NewDocument();
    const tagGPosition2d points[] = {{0, 0}, {9, 9}};
    const HostInkOptions options = Conversion::DefaultOptions();
    for (int missing = 0; missing < 5; ++missing) {
        SCOPED_TRACE(missing);
        HostProbe host;
        const HostInkStroke ink{sizeof(ink), 2, 0, missing == 4 ? nullptr : points, nullptr};
        HostInkResult result{};
        result.size = sizeof(result);
        EXPECT_EQ(ConvertInkingStrokeToGeometry(
                      missing == 0 ? nullptr : &ink, missing == 1 ? nullptr : document.get(),
                      missing == 2 ? nullptr : &options, missing == 3 ? nullptr : &result),
                  pointer);
        ExpectOneReport(host, pointer, "ConvertInkingStrokeToGeometry");
    }
    for (int service = 0; service < HostProbe::kServiceCount; ++service) {
        SCOPED_TRACE(service);
        HostProbe host;
        host.InstallWithout(service);
        EXPECT_EQ(Conversion(document, RectangleInk()).code, pointer);
        ExpectOneReport(host, pointer, "ConvertInkingStrokeToGeometry");
    }
    EXPECT_EQ(TesseraHost_AskElementCount(document.get()), 0);
}

TEST(InkEntry, BadInputIsRefused) {
    static const double nan = std::nan("");
    static const tagGPosition2d good[] = {{0, 0}, {50, 1}, {100, 0}}, bad[] = {{0, 0}, {nan, 1}, {100, 0}};
    static const double times[] = {0, 1, 2}, falling[] = {0, 2, 1}, lost[] = {0, nan, 1};
    using Change = void (*)(HostInkStroke&, HostInkOptions&, HostInkResult&);
    const std::pair<const char*, Change> rows[] = {
        {"small stroke", [](auto& ink, auto&, auto&) { --ink.size; }},
        {"small options", [](auto&, auto& options, auto&) { --options.size; }},
        {"small result", [](auto&, auto&, auto& result) { --result.size; }},
        {"negative count", [](auto& ink, auto&, auto&) { ink.pointCount = -1; }},
        {"not finite", [](auto& ink, auto&, auto&) { ink.points = bad; }},
        {"falling times", [](auto& ink, auto&, auto&) { ink.times = falling; }},
        {"times not finite", [](auto& ink, auto&, auto&) { ink.times = lost; }},
        {"unknown choice", [](auto&, auto& options, auto&) { options.relationships = 3; }},
        {"choice below all", [](auto&, auto& options, auto&) { options.relationships = -1; }},
        {"negative zone", [](auto&, auto& options, auto&) { options.toleranceZone = -1; }},
        {"zone not finite", [](auto&, auto& options, auto&) { options.toleranceZone = nan; }},
    };
    const Document document = NewDocument();
    for (const auto& [name, change] : rows) {
        SCOPED_TRACE(name);
        HostProbe host;
        HostInkStroke ink{sizeof(ink), 3, 0, good, times};
        HostInkOptions options = Conversion::DefaultOptions();
        HostInkResult result{};
        result.size = sizeof(result);
        change(ink, options, result);
        const auto invalid = static_cast<std::int32_t>(0x80070057);
        EXPECT_EQ(ConvertInkingStrokeToGeometry(&ink, document.get(), &options, &result), invalid);
        ExpectOneReport(host, invalid);
    }
    EXPECT_EQ(TesseraHost_AskElementCount(document.get()), 0);
}

// Every call of every service fails in turn, for strokes that between them use all of them.
TEST(InkEntry, AFailingServiceLeavesTheDocumentAsItWas) {
    std::string reporters[HostProbe::kServiceCount];
    for (const Drawing& drawing : Drawings()) {
        SCOPED_TRACE(drawing.name);
        for (int service = 0; service < HostProbe::kServiceCount; ++service)
            for (int call = 1;; call = call < 12 ? call + 1 : 2 * call) {
                HostProbe host;
                const Document document = DocumentOf(drawing);
                const std::vector<double> before = Contents(document);
                host.FailAt(service, call);
                const Conversion converted(document, drawing.ink);
                if (host.calls[service] < call) {
                    EXPECT_EQ(converted.code, 0);
                    break;
                }
                SCOPED_TRACE(testing::Message() << "service " << service << " call " << call);
                EXPECT_EQ(converted.code, HostProbe::kFailure);
                EXPECT_EQ(converted.result.outcome, kHostInkNothing);
                EXPECT_EQ(converted.result.elements, nullptr);
                EXPECT_EQ(Contents(document), before);
                ExpectOneReport(host, HostProbe::kFailure);
                if (!host.reports.empty())
                    reporters[service] = host.reports[0].function;
            }
    }
    // Restoring elements and removing constraints only serve the way back.
    std::string told;
    for (const std::string& reporter : reporters)
        told += reporter + ' ';
    EXPECT_EQ(told, "DocumentChange::CreateElement DocumentChange::CreateElement "
                    "DocumentChange::CreateElement DocumentChange::CreateElement "
                    "DocumentChange::CreateElement DocumentChange::CreateElement "
                    "DocumentChange::CreateRectangle DocumentChange::Modify DocumentChange::Erase  "
                    "FFMGEOM::InkToModel FFMGEOM::AskViewScale SkPrefsRelator::GetShowRelationship "
                    "SkPrefsRelator::GetToleranceZone JConstraintHelper2d::Create "
                    "JConstraintHelper2d::Retarget  JConstraintHelper2d::Commit JSMHelper2d::Locate "
                    "JSMHelper2d::SetTarget JSMHelper2d::Evaluate JSMHelper2d::Clear ");
}

} // namespace
