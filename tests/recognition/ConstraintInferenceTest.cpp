#include <map>
#include <numeric>

#include "tessera/recognition/internal/ConstraintBasis.h"
#include "tessera/recognition/internal/ConstraintSolver.h"
#include "tests/support/ConstraintOracle.h"
#include "tests/support/GeneratedSketches.h"
#include "tests/support/ThrownMessage.h"

namespace {

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

CurvePtr MakeLine(double x0, double y0, double x1, double y1) {
    return Tessera::Testing::MakeLine({x0, y0}, {x1, y1});
}
CurvePtr MakeLineAt(Point start, double length, double deg) {
    return std::make_unique<Line>(start, length, deg * kPi / 180.0);
}

ConstraintOptions Zone(double zone = kSketchZone) {
    ConstraintOptions options;
    options.toleranceZone = zone;
    return options;
}

template <class... Curves>
CurveList List(Curves... curves) {
    CurveList list;
    (list.push_back(std::move(curves)), ...);
    return list;
}

struct Share {
    int good = 0, all = 0;
    void Add(bool isGood) {
        ++all;
        good += isGood ? 1 : 0;
    }
};

int CountOf(const InferredConstraints& inferred, ConstraintKind_e kind) {
    return static_cast<int>(std::count_if(inferred.constraints.begin(), inferred.constraints.end(),
                                          [&](const InferredConstraint& c) { return c.kind == kind; }));
}

void ExpectSatisfied(const InferredConstraints& inferred) {
    for (const InferredConstraint& c : inferred.constraints)
        EXPECT_LT(MissOf(c, inferred.adjusted), 1e-6) << c.kind;
}

/// Whether the set makes the sketch satisfy c and every small motion that it allows keep it so.
bool Implies(const std::vector<std::vector<double>>& rows, const CurveList& adjusted,
             const InferredConstraint& c, double size) {
    if (MissOf(c, adjusted) > 1e-7 * size)
        return false;
    for (const std::vector<double>& row : DenseRows({c}, adjusted)) {
        std::vector<std::vector<double>> more = rows;
        more.push_back(row);
        if (LeastSine(more) > 1e-4)
            return false;
    }
    return true;
}

// What the sets are worth: independent, satisfied, nothing moved beyond the zone; what was found holds in the
// exact shape, and what was meant follows from the set. Of shapes side by side nothing is read into their
// chance arrangement.
TEST(ConstraintInference, FindsWhatWasMeantAndNothingElse) {
    constexpr int kSingle = 25 * SketchMaker::kFamilyCount;
    std::mt19937 rng(20240801);
    SketchMaker maker(rng);
    Share right, implied, satisfied;
    for (int k = 0; k < kSingle + 30; ++k) {
        const bool isSingle = k < kSingle;
        const GeneratedSketch sketch =
            isSingle ? maker.Make(k, {}) : maker.MakeDrawing({k, 5 * k + 1, 7 * k + 4, k + 6}, {});
        SCOPED_TRACE(std::string(sketch.name) + " " + std::to_string(k));
        const InferredConstraints inferred = InferConstraints(sketch.Drawn(), Zone());
        const auto rows = DenseRows(inferred.constraints, inferred.adjusted);
        ASSERT_FALSE(rows.empty());
        EXPECT_GT(LeastSine(rows), 1e-3);
        for (const InferredConstraint& c : inferred.constraints) {
            right.Add(MissOf(c, sketch.exact) < 1e-5);
            EXPECT_LT(MissOf(c, inferred.adjusted), 1e-6);
            EXPECT_TRUE(c.confidence >= std::exp(-4.5) && c.confidence <= 1.0);
        }
        for (const InferredConstraint& c : sketch.intended)
            if (isSingle)
                implied.Add(Implies(rows, inferred.adjusted, c, 100.0));
            else
                satisfied.Add(MissOf(c, inferred.adjusted) < 1e-5);
        EXPECT_LT(inferred.largestMotion, kSketchZone);
        for (std::size_t i = 0; i < sketch.drawn.size(); ++i) {
            const std::vector<Point> before = DensePoints(*sketch.drawn[i], 8);
            const std::vector<Point> after = DensePoints(*inferred.adjusted[i], 8);
            for (std::size_t p = 0; p < before.size(); ++p)
                EXPECT_LT(before[p].Distance(after[p]), kSketchZone + 1e-9);
        }
    }
    EXPECT_GE(right.good, 0.995 * right.all);
    EXPECT_GE(implied.good, 0.98 * implied.all);
    EXPECT_GE(satisfied.good, 0.98 * satisfied.all);
}

/// Kinds and elements, to compare sets.
std::vector<std::array<int, 8>> Keys(const std::vector<InferredConstraint>& constraints) {
    std::vector<std::array<int, 8>> keys;
    for (const InferredConstraint& c : constraints) {
        std::array<int, 8> key{c.kind, c.elementCount};
        for (int e = 0; e < c.elementCount; ++e) {
            key[2 + 2 * e] = c.elements[e].curve;
            key[3 + 2 * e] = c.elements[e].point;
        }
        keys.push_back(key);
    }
    return keys;
}

// What lies apart shares nothing: shape by shape the same constraints in the same order, and the same curves,
// as long as no kind is asked for that compares shapes.
TEST(ConstraintInference, ShapesApartAreSolvedApart) {
    std::mt19937 rng(20240808);
    SketchMaker maker(rng);
    std::vector<int> families(24);
    std::iota(families.begin(), families.end(), 0);
    const GeneratedSketch sketch = maker.MakeDrawing(families, {});
    ConstraintOptions options = Zone();
    for (ConstraintKind_e kind :
         {ConstraintKind_Parallel, ConstraintKind_Perpendicular, ConstraintKind_Collinear,
          ConstraintKind_EqualRadius, ConstraintKind_Symmetric})
        options.kinds &= ~ConstraintKindBit(kind);
    const InferredConstraints whole = InferConstraints(sketch.Drawn(), options);
    std::map<std::pair<long, long>, std::vector<int>> shapes; // by place: shapes stand 400 apart
    for (int i = 0; i < static_cast<int>(sketch.drawn.size()); ++i) {
        const Point at = sketch.drawn[i]->GetMidPoint();
        shapes[{std::lround((at.x - 30) / 400), std::lround((at.y - 30) / 400)}].push_back(i);
    }
    EXPECT_EQ(shapes.size(), families.size());
    for (const auto& [place, members] : shapes) {
        std::vector<const Curve*> curves;
        for (int i : members)
            curves.push_back(sketch.drawn[i].get());
        const InferredConstraints alone = InferConstraints(curves, options);
        std::vector<InferredConstraint> part;
        for (InferredConstraint c : whole.constraints) {
            const auto at = std::find(members.begin(), members.end(), c.elements[0].curve);
            if (at == members.end())
                continue;
            for (int e = 0; e < c.elementCount; ++e)
                c.elements[e].curve -= members[0];
            part.push_back(c);
        }
        EXPECT_EQ(Keys(part), Keys(alone.constraints));
        for (std::size_t k = 0; k < members.size(); ++k)
            EXPECT_LT(whole.adjusted[members[k]]->GetMidPoint().Distance(alone.adjusted[k]->GetMidPoint()),
                      1e-5);
    }
}

CurvePtr Scaled(const Curve& curve, double s, const Point& shift) {
    double m[3][3] = {{1, 0, shift.x / s}, {0, 1, shift.y / s}, {0, 0, 1 / s}};
    CurvePtr copy(curve.CopyCurveOnly());
    copy->Transform(m);
    return copy;
}

// The same sketch elsewhere, in other units: the same constraints in the same order.
TEST(ConstraintInference, FollowsScaleAndPlace) {
    std::mt19937 rng(20240803);
    SketchMaker maker(rng);
    for (int k = 0; k < 3 * SketchMaker::kFamilyCount; ++k) {
        const GeneratedSketch sketch = maker.Make(k, {});
        const auto expected = Keys(InferConstraints(sketch.Drawn(), Zone()).constraints);
        for (const auto& [s, shift] : {std::pair{0.01, 0.0}, {1.0, 1e5}, {1000.0, -1e4}}) {
            SCOPED_TRACE(std::string(sketch.name) + " x " + std::to_string(s));
            CurveList moved;
            for (const CurvePtr& c : sketch.drawn)
                moved.push_back(Scaled(*c, s, {shift, 0.7 * shift}));
            EXPECT_EQ(Keys(InferConstraints(Borrow(moved), Zone(s * kSketchZone)).constraints), expected);
        }
    }
}

TEST(ConstraintInference, EachKindCanBeSwitchedOff) {
    std::mt19937 rng(20240804);
    SketchMaker maker(rng);
    std::vector<GeneratedSketch> sketches;
    for (int k = 0; k < SketchMaker::kFamilyCount; ++k)
        sketches.push_back(maker.Make(k, {}));
    for (int kind = 0; kind < kConstraintKindCount; ++kind) {
        const auto chosen = static_cast<ConstraintKind_e>(kind);
        std::size_t found = 0;
        for (const GeneratedSketch& sketch : sketches) {
            ConstraintOptions options = Zone();
            options.kinds = ConstraintKindBit(chosen);
            const InferredConstraints only = InferConstraints(sketch.Drawn(), options);
            found += only.constraints.size();
            EXPECT_EQ(CountOf(only, chosen), static_cast<int>(only.constraints.size()));
            options.kinds = ~options.kinds;
            EXPECT_EQ(CountOf(InferConstraints(sketch.Drawn(), options), chosen), 0);
        }
        EXPECT_GT(found, 0u) << "kind " << kind;
    }
}

// However horizontal the rest of the outline is, a line that is clearly tilted stays tilted.
TEST(ConstraintInference, TiltedLinesStayTilted) {
    for (double deg : {3.4, 4.0, 6.0, -10.0, 80.0}) {
        SCOPED_TRACE(deg);
        const double rise = 60.0 * std::sin(deg * kPi / 180.0);
        const double run = 60.0 * std::cos(deg * kPi / 180.0);
        const CurveList list = List(MakeLine(0, 0, run, 0.5), MakeLine(run, 0, run + 0.6, 70 + rise),
                                    MakeLine(run, 70 + rise, 0, 70), MakeLine(0, 70, 0.4, 0));
        const InferredConstraints inferred = InferConstraints(Borrow(list), Zone());
        EXPECT_EQ(CountOf(inferred, ConstraintKind_Horizontal), 1);
        EXPECT_EQ(CountOf(inferred, ConstraintKind_Vertical), 2);
        const Point roof = inferred.adjusted[2]->GetStart() - inferred.adjusted[2]->GetEnd();
        EXPECT_NEAR(std::atan2(roof.y, roof.x) * 180.0 / kPi, deg, 1.5);
    }
}

// Two bundles whose nearest lines are 3 degrees apart by their errors: each becomes one direction, 4.6 apart.
TEST(ConstraintInference, BundlesStayApart) {
    CurveList list;
    for (double deg : {39.2, 40.0, 40.6, 43.6, 44.8, 45.4})
        list.push_back(MakeLineAt({90.0 * static_cast<double>(list.size()), 0}, 50, deg));
    const InferredConstraints inferred = InferConstraints(Borrow(list), Zone());
    EXPECT_EQ(CountOf(inferred, ConstraintKind_Parallel), 4);
    EXPECT_GT(std::fabs((inferred.adjusted[0]->GetEnd() - inferred.adjusted[0]->GetStart())
                            .Cross(inferred.adjusted[5]->GetEnd() - inferred.adjusted[5]->GetStart())),
              2500 * std::sin(4.3 * kPi / 180));
}

// However narrow, a wall keeps its two sides.
TEST(ConstraintInference, SidesOfAWallStayApart) {
    for (const double gap : {0.3, 0.9, 1.6}) {
        const CurveList wall = List(MakeLine(0, 0, 80, 20), MakeLine(80 - gap, 20 + 4 * gap, -gap, 4 * gap));
        const InferredConstraints inferred = InferConstraints(Borrow(wall), Zone());
        EXPECT_NEAR(inferred.adjusted[0]->DistanceBounded(inferred.adjusted[1]->GetMidPoint()),
                    std::sqrt(17.0) * gap, 0.1 * gap);
    }
}

// Just inside and just outside of what each kind allows.
TEST(ConstraintInference, LimitsOfEachKind) {
    const auto circle = [](double x, double y, double r) { return MakeCircle({x, y}, r); };
    const auto sloping = [](double deg) { return List(MakeLineAt({3, 4}, 50, deg)); };
    struct Row {
        const char* name;
        ConstraintKind_e kind;
        double inside, outside;
        std::function<CurveList(double)> make;
    };
    const Row rows[] = {
        {"rising", ConstraintKind_Horizontal, 2.99, 3.01, sloping},
        {"falling", ConstraintKind_Horizontal, -2.99, -3.01, sloping},
        {"backwards", ConstraintKind_Horizontal, 177.01, 176.99, sloping},
        {"upright", ConstraintKind_Vertical, 87.01, 86.99, sloping},
        {"downwards", ConstraintKind_Vertical, -92.99, -93.01, sloping},
        // Either end would have to move by half of the length times the sine.
        {"beyond the zone", ConstraintKind_Horizontal, 158.1, 158.2,
         [](double d) {
             return List(MakeLineAt({0, 0}, d, 2.9));
         }},
        {"gap", ConstraintKind_Coincident, 3.99, 4.01,
         [](double d) { return List(MakeLine(0, 0, 50, 20), MakeLine(50 + d, 20, 90, -30)); }},
        {"gap at a short line", ConstraintKind_Coincident, 2.99, 3.01,
         [](double d) {
             return List(MakeLine(0, 0, 50, 20), MakeLineAt({50 + d, 20}, 10, -50));
         }},
        {"parallel", ConstraintKind_Parallel, 4.23, 4.26,
         [](double d) {
             return List(MakeLineAt({0, 0}, 50, 40), MakeLineAt({0, 60}, 50, 40 + d));
         }},
        {"perpendicular", ConstraintKind_Perpendicular, 4.23, 4.26,
         [](double d) {
             return List(MakeLineAt({0, 0}, 50, 40), MakeLineAt({90, 60}, 50, 130 + d));
         }},
        {"line beside a circle", ConstraintKind_Tangent, 1.99, 2.01,
         [&](double d) { return List(MakeLine(-40, 0, 60, 0), circle(0, 10 + d, 10)); }},
        {"radii", ConstraintKind_EqualRadius, 22.7, 22.75,
         [&](double d) { return List(circle(0, 0, 20), circle(90, 33, d)); }},
        {"centres", ConstraintKind_Concentric, 2.99, 3.01,
         [&](double d) { return List(circle(0, 0, 6), circle(d, 0, 3)); }},
        {"centre on a line", ConstraintKind_PointOnCurve, 1.49, 1.51,
         [&](double d) { return List(MakeLine(-50, 20, 50, 21), circle(10, 20.6 + d, 5)); }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        for (const double d : {row.inside, row.outside}) {
            const CurveList list = row.make(d);
            EXPECT_EQ(CountOf(InferConstraints(Borrow(list), Zone()), row.kind), d == row.inside ? 1 : 0)
                << d;
        }
    }
}

// A constraint that is refused, whatever for, leaves every number as it was.
TEST(ConstraintSolver, RefusalsLeaveTheSketchAsItWas) {
    const CurveList list = List(MakeLine(0, 0, 100, 1), MakeLine(101, 0, 100, 80), MakeLine(0, 90, 100, 95));
    const std::vector<const Curve*> curves = Borrow(list);
    SketchParameters sketch(curves);
    ConstraintSolver solver(sketch, kSketchZone, 0.05);
    solver.Begin(0);
    const auto taken = ConstraintSolver::Verdict::Taken;
    const auto whole = [](int curve) { return SketchElement{curve, SnapPointType_None}; };
    const auto join =
        MakeConstraint(ConstraintKind_Coincident, {{0, SnapPointType_End}, {1, SnapPointType_Start}});
    EXPECT_EQ(solver.TryAdd(join), taken);
    EXPECT_EQ(solver.TryAdd(MakeConstraint(ConstraintKind_Horizontal, {whole(0)})), taken);
    EXPECT_EQ(solver.TryAdd(MakeConstraint(ConstraintKind_Vertical, {whole(1)})), taken);
    const std::vector<double> before(sketch.Of(0), sketch.Of(0) + sketch.ParameterCount());
    const InferredConstraint refused[] = {
        join,
        MakeConstraint(ConstraintKind_Perpendicular, {whole(0), whole(1)}),
        MakeConstraint(ConstraintKind_Vertical, {whole(0)}),
        MakeConstraint(ConstraintKind_EqualLength, {whole(0), whole(1)}),
        MakeConstraint(ConstraintKind_Coincident, {{0, SnapPointType_Start}, {2, SnapPointType_Start}}),
        MakeConstraint(ConstraintKind_PointOnCurve, {{1, SnapPointType_End}, whole(2)}),
    };
    for (const InferredConstraint& c : refused) {
        EXPECT_NE(solver.TryAdd(c), taken) << c.kind;
        EXPECT_EQ(std::vector<double>(sketch.Of(0), sketch.Of(0) + sketch.ParameterCount()), before)
            << c.kind;
    }
    EXPECT_EQ(solver.Accepted().size(), 3u);
}

// A circle a little too far out or too far in, of a line on its left or right, or of another circle: what
// touches stays on the side on which it was drawn.
TEST(ConstraintInference, TangentsKeepTheirSide) {
    const struct {
        bool touchesLine;
        Point centre;
        int side;
    } rows[] = {{true, {0, 10.4}, 1},  {true, {0, -10.4}, -1}, {true, {0, 9.7}, 1},
                {true, {0, -9.7}, -1}, {false, {40.3, 3}, 1},  {false, {19.8, 3}, -1}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.centre.x << ' ' << row.centre.y);
        const CurveList list = List(row.touchesLine ? MakeLine(-40, 0, 60, 0) : MakeCircle({0, 3}, 30),
                                    MakeCircle(row.centre, 10));
        const InferredConstraints inferred = InferConstraints(Borrow(list), Zone());
        ASSERT_EQ(CountOf(inferred, ConstraintKind_Tangent), 1);
        for (const InferredConstraint& c : inferred.constraints) {
            EXPECT_EQ(c.side, c.kind == ConstraintKind_Tangent ? row.side : 0);
            EXPECT_LT(MissOf(c, inferred.adjusted), 1e-7);
        }
    }
}

// A spline joined smoothly to a line, an elliptic arc to another line: ends and tangents of every kind of
// curve.
TEST(ConstraintInference, SplinesAndEllipsesJoinToo) {
    const CurveList list = List(MakeSpline(4, {{0, 0}, {20, 1}, {40, 30}, {70, 40}, {90, 20}, {120, 20}}),
                                MakeLine(121, 21, 180, 23), MakeEllipse({181, 63}, 60, 40, 0, -kPi / 2, 0.3));
    const InferredConstraints inferred = InferConstraints(Borrow(list), Zone());
    EXPECT_EQ(CountOf(inferred, ConstraintKind_Coincident), 2);
    EXPECT_EQ(CountOf(inferred, ConstraintKind_Tangent), 2);
    ExpectSatisfied(inferred);
}

TEST(ConstraintInference, AppliedGeometryKeepsIdentity) {
    Line line(Point(0, 0), Point(80, 1));
    Arc open(Point(80, 31), Point(110, 61), Point(80, 61));
    Curve* curves[] = {&line, &open};
    const Curve* drawn[] = {&line, &open};
    const int id = line.GetId();
    const InferredConstraints inferred = InferConstraints(drawn, Zone());
    ASSERT_GE(inferred.constraints.size(), 1u);
    Curve* wrong[] = {&line, &line};
    EXPECT_EQ(ThrownMessage([&] { ApplyConstraints(inferred, wrong); }),
              "ApplyConstraints - curves do not match");
    EXPECT_EQ(ThrownMessage([&] { ApplyConstraints(inferred, std::span(curves, 1)); }),
              "ApplyConstraints - curves do not match");
    EXPECT_EQ(line.GetEnd().y, 1.0);
    ApplyConstraints(inferred, curves);
    EXPECT_EQ(line.GetId(), id);
    EXPECT_NEAR(line.GetEnd().y, line.GetStart().y, 1e-9);
    EXPECT_TRUE(line.GetCachedBasePoint() == line.Bisect());
}

/// A random walk of lines that goes on as a row of teeth, as a hand draws it: one connected outline.
CurveList TangleWithTeeth(std::mt19937& rng, int tangled, int teeth) {
    CurveList list;
    Point at(0, 0);
    for (int i = 0; i < tangled + teeth; ++i) {
        const auto in = [&](double low, double high) {
            return std::uniform_real_distribution<>(low, high)(rng);
        };
        const double deg = i < tangled ? in(0, 360) : i % 2 == 0 ? 20 : i % 4 == 1 ? 110 : -70;
        const double length = i < tangled ? in(30, 110) : 45;
        const Point along = Point(std::cos(deg * kPi / 180), std::sin(deg * kPi / 180));
        const double turned = (deg + in(-1, 1)) * kPi / 180;
        const Point half = Point(std::cos(turned), std::sin(turned)) * (length / 2);
        const Point middle = at + along * (length / 2) + Point(in(-0.9, 0.9), in(-0.9, 0.9));
        list.push_back(std::make_unique<Line>(middle - half, middle + half));
        at = at + along * length;
    }
    return list;
}

// A large sketch that hangs together, the smaller ones solved whole, the larger ones in parts, and then
// whole: whatever chance made of the tangle, what is meant in the teeth is found, and the set is sound. So is
// the basis that stands for it.
TEST(ConstraintInference, LargeConnectedSketchesLoseNothing) {
    struct Row {
        unsigned seed;
        int tangled, teeth;
    };
    for (const Row& row : {Row{2, 100, 60}, {4, 100, 60}, {4, 150, 70}, {7, 150, 70}, {9, 0, 400}}) {
        SCOPED_TRACE(testing::Message() << row.seed << ": " << row.tangled << " and " << row.teeth);
        std::mt19937 rng(row.seed);
        const CurveList list = TangleWithTeeth(rng, row.tangled, row.teeth);
        const InferredConstraints inferred = InferConstraints(Borrow(list), Zone());
        EXPECT_LT(inferred.largestMotion, kSketchZone);
        ExpectSatisfied(inferred);
        const double leastSine = row.tangled == 0 ? 1e-3 : 0.015; // hundreds of teeth give way as one
        EXPECT_GT(LeastSine(DenseRows(inferred.constraints, inferred.adjusted)), leastSine);
        const SketchParameters adjusted(Borrow(inferred.adjusted));
        const std::vector<InferredConstraint> basis = EquivalentBasis(inferred.constraints, adjusted, 0);
        EXPECT_EQ(basis.size(), inferred.constraints.size());
        for (const InferredConstraint& c : basis)
            EXPECT_LT(MissOf(c, inferred.adjusted), 1e-6) << c.kind;
        int joined = 0, square = 0, equal = 0;
        for (int i = row.tangled + 1; i < row.tangled + row.teeth; ++i) {
            const Curve& a = *inferred.adjusted[i - 1];
            const Curve& b = *inferred.adjusted[i];
            const Point u = a.GetEnd() - a.GetStart();
            const Point v = b.GetEnd() - b.GetStart();
            joined += a.GetEnd().Distance(b.GetStart()) < 1e-6 ? 1 : 0;
            square += std::fabs(u.Dot(v)) < 1e-6 * u.Length() * v.Length() ? 1 : 0;
            equal += std::fabs(u.Length() - v.Length()) < 1e-6 ? 1 : 0;
        }
        EXPECT_EQ(joined, row.teeth - 1);
        EXPECT_GE(square, 0.98 * (row.teeth - 1));
        EXPECT_GE(equal, 0.98 * (row.teeth - 1));
    }
}

// New lines fit to what is fixed: nothing fixed moves, or gets constraints of its own, however nearly it
// satisfies them.
TEST(ConstraintInference, FixedCurvesStayAndTheOthersFitToThem) {
    // The first is nearly horizontal, and meant to stay so.
    const CurveList list = List(MakeLine(0, 0, 80, 0.6), MakeLine(0.8, 0.4, 1, 60),
                                MakeLine(80.9, 1.2, 81.5, 60), MakeLine(81, 60.8, 0.5, 60.3));
    ConstraintOptions options = Zone();
    options.fixedCount = 2;
    const InferredConstraints inferred = InferConstraints(Borrow(list), options);
    EXPECT_EQ(CountOf(inferred, ConstraintKind_Coincident), 3);
    for (const InferredConstraint& c : inferred.constraints) {
        EXPECT_LT(MissOf(c, inferred.adjusted), 1e-6) << c.kind;
        EXPECT_TRUE(std::any_of(c.elements.begin(), c.elements.begin() + c.elementCount,
                                [&](const SketchElement& e) { return e.curve >= options.fixedCount; }));
    }
    for (int i = 0; i < options.fixedCount; ++i) {
        EXPECT_EQ(inferred.adjusted[i]->GetStart().Distance(list[i]->GetStart()), 0.0);
        EXPECT_EQ(inferred.adjusted[i]->GetEnd().Distance(list[i]->GetEnd()), 0.0);
    }
    options.fixedCount = static_cast<int>(list.size());
    EXPECT_TRUE(InferConstraints(Borrow(list), options).constraints.empty());
    for (int count : {-1, static_cast<int>(list.size()) + 1}) {
        options.fixedCount = count;
        EXPECT_EQ(ThrownMessage([&] { InferConstraints(Borrow(list), options); }),
                  "InferConstraints - fixed count is out of range");
    }
}

// The same in a large sketch whose first teeth are fixed: all others take their size.
TEST(ConstraintInference, LargeSketchesFitToWhatIsFixed) {
    std::mt19937 rng(10);
    CurveList list = TangleWithTeeth(rng, 0, 300);
    const InferredConstraints ideal = InferConstraints(Borrow(list), Zone());
    ConstraintOptions options = Zone();
    options.fixedCount = 24;
    for (int i = 0; i < options.fixedCount; ++i)
        list[i] = Scaled(*ideal.adjusted[i], 1.0, Point(0, 0));
    const InferredConstraints inferred = InferConstraints(Borrow(list), options);
    EXPECT_LT(inferred.largestMotion, kSketchZone);
    const double length = list[0]->Length();
    for (std::size_t i = 0; i < list.size(); ++i) {
        const bool isFixed = static_cast<int>(i) < options.fixedCount;
        const double moved = inferred.adjusted[i]->GetEnd().Distance(list[i]->GetEnd());
        EXPECT_NEAR(inferred.adjusted[i]->Length(), length, 1e-6) << i;
        EXPECT_EQ(moved == 0.0, isFixed) << i;
    }
    ExpectSatisfied(inferred);
}

TEST(ConstraintInference, RefusesBadInput) {
    Line line(Point(0, 0), Point(80, 1));
    const Curve* good[] = {&line};
    const Curve* bad[] = {&line, nullptr};
    EXPECT_EQ(ThrownMessage([&] { InferConstraints(bad, Zone()); }),
              "InferConstraints - curve cannot be NULL");
    for (double zone : {0.0, -1.0, std::nan("")})
        EXPECT_EQ(ThrownMessage([&] { InferConstraints(good, Zone(zone)); }),
                  "InferConstraints - tolerance zone must be positive");
    ConstraintOptions options = Zone();
    options.sizeSpread = 0.0;
    EXPECT_EQ(ThrownMessage([&] { InferConstraints(good, options); }),
              "InferConstraints - spreads must be positive");
    options = Zone();
    options.drawn = bad;
    EXPECT_EQ(ThrownMessage([&] { InferConstraints(good, options); }),
              "InferConstraints - drawn curves do not match");
    EXPECT_TRUE(InferConstraints({}, Zone()).constraints.empty());
}

} // namespace
